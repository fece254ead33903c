#include "ztbaseclient/wsdl/COperation.h"

tovin::LeakDetector CWsdlParser::COperation::m_leakDetector(COperation::ClassName);
