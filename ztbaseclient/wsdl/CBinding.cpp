#include "ztbaseclient/wsdl/CBinding.h"

tovin::LeakDetector CWsdlParser::CBinding::m_leakDetector(CBinding::ClassName);
