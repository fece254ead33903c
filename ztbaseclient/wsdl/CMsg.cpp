#include "ztbaseclient/wsdl/CMsg.h"

tovin::LeakDetector CWsdlParser::CMsg::m_leakDetector(CMsg::ClassName);
