#include "tests/ztbaseclient/wsdl/Wsdl.h"
#include "tovinCore/LeakDetector.h"

namespace {

using Namespace = CWsdlParser::CNamespace;

Namespace space(const wchar_t* uri) {
  Namespace made;
  made.setUrl(uri);
  return made;
}

TEST(Namespace, UriIsTakenApartAtItsScheme) {
  const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> rows[] = {
      {L"HTTPS://a/b", L"a/b", L"https://"},
      {L"http://a", L"a", L"http://"},
      {L"ftp://h", L"h", L"http://"},
      {L"ss://h", L"h", L"https://"},
      {L"://h", L"h", L"http://"},
      {L"a://b://c", L"b://c", L"http://"},
      {L"a/b", L"a/b", L""},
      {L"", L"", L""},
      {nullptr, nullptr, L""}};
  for (const auto& [uri, url, protocol] : rows) {
    const Namespace made = space(uri);
    EXPECT_STREQ(made.getUrl(), url) << tovin::wideToUtf8(uri);
    EXPECT_STREQ(made.getProtocol(), protocol) << tovin::wideToUtf8(uri);
  }
}

TEST(Namespace, KnownOnesAreToldApart) {
  const std::tuple<const wchar_t*, bool, bool, bool, bool> rows[] = {
      {L"http://schemas.xmlsoap.org/wsdl/soap/", true, false, false, false},
      {L"https://SCHEMAS.xmlsoap.org/wsdl/soap", true, false, false, false},
      {L"http://schemas.xmlsoap.org/wsdl/soap//", false, false, false, false},
      {L"http://schemas.xmlsoap.org/wsdl/soap12/", false, true, false, false},
      {L"http://www.w3.org/1999/XMLSchema", false, false, true, true},
      {L"http://www.w3.org/2001/xmlschema/", false, false, false, true},
      {L"", false, false, false, false},
      {nullptr, false, false, false, false}};
  for (const auto& [uri, soap11, soap12, schema99, schema] : rows) {
    const Namespace made = space(uri);
    EXPECT_EQ(made.isWsdlSoap11SchemaNs(), soap11);
    EXPECT_EQ(made.isWsdlSoap12SchemaNs(), soap12);
    EXPECT_EQ(made.isXmlSchema99Ns(), schema99);
    EXPECT_EQ(made.isXmlSchemaNs(), schema);
  }
}

TEST(Namespace, EqualityFoldsAsciiAndPassesOverTheName) {
  Namespace named = space(L"http://A/B");
  named.name = L"x";
  EXPECT_TRUE(named == space(L"http://a/b"));
  EXPECT_FALSE(space(L"http://a") == space(L"https://a"));
  EXPECT_FALSE(space(L"http://\xC4") == space(L"http://\xE4"));
  EXPECT_FALSE(space(nullptr) == space(L""));
}

TEST(Element, IsAnArrayWhenBracketsFollowAName) {
  const std::pair<const wchar_t*, bool> rows[] = {
      {L"ns:Item[]", true}, {L"Item[][]", true}, {L"[]", false},  {L"[][]", true},
      {L"Item", false},     {L"Item[", false},   {nullptr, false}};
  for (const auto& [type, array] : rows) {
    CWsdlParser::CElement element;
    element.type = tovin::WideString(type);
    EXPECT_EQ(element.IsArrayType(), array) << tovin::wideToUtf8(type);
  }
}

TEST(Model, EveryObjectIsCountedHoweverItCameAbout) {
  const tovin::LeakDetector& counter = CWsdlParser::CPart::m_leakDetector;
  const long before = counter.getLive();
  {
    CWsdlParser::COperation operation;
    operation.input.parts.add(CWsdlParser::CPart());
    const CWsdlParser::COperation copy(operation);
    const CWsdlParser::COperation moved(std::move(operation));
    EXPECT_EQ(counter.getLive(), before + 2);
  }
  EXPECT_EQ(counter.getLive(), before);
}

}  // namespace
