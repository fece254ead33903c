#include "ztbaseclient/wsdl/CSchema.h"

tovin::LeakDetector CWsdlParser::CSchema::m_leakDetector(CSchema::ClassName);

CWsdlParser::CSchema::CSchema() { targetNamespace_.name = L"targetNamespace"; }
