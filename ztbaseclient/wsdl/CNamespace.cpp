#include "ztbaseclient/wsdl/CNamespace.h"

#include "tovinCore/Units.h"
#include "ztbaseclient/wsdl/WsdlNamespaces.h"

tovin::LeakDetector CWsdlParser::CNamespace::m_leakDetector(CNamespace::ClassName);

CWsdlParser::CNamespace::~CNamespace() = default;

// Only the one character before "://" is looked at: "ss://h" counts as https, "ftp://h" as http.
void CWsdlParser::CNamespace::setUrl(const wchar_t* text) {
  constexpr std::wstring_view mark = L"://";
  const tovin::WideString whole(text);  // the text may be this namespace's own
  const size_t at = whole.find(mark);
  if (at == tovin::WideString::npos) {
    url_ = whole;
    protocol_ = L"";
    return;
  }
  url_ = whole.view().substr(at + mark.size());
  protocol_ = at > 0 && tovin::foldAscii(whole[at - 1]) == L's' ? L"https://" : L"http://";
}

bool CWsdlParser::CNamespace::urlIsEqual(const wchar_t* text) const noexcept {
  if (url_.isNull() || !text) return url_.isNull() && !text;
  std::wstring_view url = url_.view();
  if (url.ends_with(L'/')) url.remove_suffix(1);
  return tovin::equalFolded(url, std::wstring_view(text));
}

bool CWsdlParser::CNamespace::operator==(const CNamespace& other) const noexcept {
  return tovin::equalFolded(url_.c_str(), other.url_.c_str()) &&
         tovin::equalFolded(protocol_.c_str(), other.protocol_.c_str());
}

bool CWsdlParser::CNamespace::isWsdlSoap11SchemaNs() const noexcept {
  return urlIsEqual(wsdlnamespaces::WsdlSoap11);
}

bool CWsdlParser::CNamespace::isWsdlSoap12SchemaNs() const noexcept {
  return urlIsEqual(wsdlnamespaces::WsdlSoap12);
}

bool CWsdlParser::CNamespace::isXmlSchema99Ns() const noexcept {
  return urlIsEqual(wsdlnamespaces::XmlSchema99);
}

bool CWsdlParser::CNamespace::isXmlSchemaNs() const noexcept {
  return urlIsEqual(wsdlnamespaces::XmlSchema) || isXmlSchema99Ns();
}

bool CWsdlParser::CNamespace::isSoapEncodingNs() const noexcept {
  return urlIsEqual(wsdlnamespaces::SoapEncoding);
}

bool CWsdlParser::CNamespace::isSoap12EncodingNs() const noexcept {
  return urlIsEqual(wsdlnamespaces::Soap12Encoding);
}
