#include "ztbaseclient/wsdl/CNamespaceHolder.h"

tovin::LeakDetector CWsdlParser::CNamespaceHolder::m_leakDetector(CNamespaceHolder::ClassName);

CWsdlParser::CNamespaceHolder::~CNamespaceHolder() = default;
