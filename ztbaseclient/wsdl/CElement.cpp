#include "ztbaseclient/wsdl/CElement.h"

tovin::LeakDetector CWsdlParser::CElement::m_leakDetector(CElement::ClassName);

bool CWsdlParser::CElement::IsArrayType() const noexcept {
  return type.find(L"[]", 1) != tovin::WideString::npos;
}
