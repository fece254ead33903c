#include "ztbaseclient/wsdl/CPart.h"

tovin::LeakDetector CWsdlParser::CPart::m_leakDetector(CPart::ClassName);
