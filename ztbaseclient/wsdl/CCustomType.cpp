#include "ztbaseclient/wsdl/CCustomType.h"

tovin::LeakDetector CWsdlParser::CCustomType::m_leakDetector(CCustomType::ClassName);
