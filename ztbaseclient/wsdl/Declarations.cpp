#include "ztbaseclient/wsdl/Declarations.h"

std::wstring_view trimmed(std::wstring_view text) {
  constexpr std::wstring_view blanks = L" \t\r\n";
  const size_t from = text.find_first_not_of(blanks);
  if (from == std::wstring_view::npos) return {};
  return text.substr(from, text.find_last_not_of(blanks) + 1 - from);
}

tovin::Array<CWsdlParser::CNamespace> declarationsOn(const tovin::iNode* node) {
  tovin::Array<CWsdlParser::CNamespace> found;
  forDeclarations(node, [&](std::wstring_view prefix, const tovin::WideString& uri) {
    CWsdlParser::CNamespace& space = found.add(CWsdlParser::CNamespace());
    space.name = prefix;
    space.setUrl(uri);
  });
  return found;
}

tovin::WideString declaredOn(const tovin::iNode* node, std::wstring_view prefix) {
  if (prefix.empty()) return attributeText(node, L"xmlns");
  return attributeText(node, (L"xmlns:" + std::wstring(prefix)).c_str());
}

QualifiedName::QualifiedName(const tovin::WideString& written) : text(written) {
  const NameParts parts(trimmed(text.view()));
  prefix = parts.prefix;
  local = parts.local;
  hasPrefix = parts.hasPrefix;
  wellFormed = !local.empty() && local.find(L':') == std::wstring::npos && (!hasPrefix || !prefix.empty());
}
