#include "ztbaseclient/wsdl/CNodeHolder.h"

tovin::LeakDetector CWsdlParser::CNodeHolder::m_leakDetector(CNodeHolder::ClassName);

CWsdlParser::CNodeHolder::~CNodeHolder() = default;
