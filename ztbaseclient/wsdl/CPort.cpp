#include "ztbaseclient/wsdl/CPort.h"

tovin::LeakDetector CWsdlParser::CPort::m_leakDetector(CPort::ClassName);
