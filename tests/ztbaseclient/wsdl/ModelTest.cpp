#include "tests/ztbaseclient/wsdl/Wsdl.h"
#include "tovinCore/LeakDetector.h"
#include "ztbaseclient/node/CBaseNode.h"

namespace {

using Namespace = CWsdlParser::CNamespace;

Namespace space(const wchar_t* uri, const wchar_t* name = L"") {
  Namespace made;
  made.name = name;
  made.setUrl(uri);
  return made;
}

TEST(Namespace, UriIsTakenApartAtItsScheme) {
  struct Row {
    const wchar_t* uri;
    const wchar_t* url;
    const wchar_t* protocol;
  };
  const Row rows[] = {{L"HTTPS://a/b", L"a/b", L"https://"},
                      {L"http://a", L"a", L"http://"},
                      {L"ftp://h", L"h", L"http://"},
                      {L"ss://h", L"h", L"https://"},
                      {L"://h", L"h", L"http://"},
                      {L"a://b://c", L"b://c", L"http://"},
                      {L"a/b", L"a/b", L""},
                      {L"", L"", L""},
                      {nullptr, nullptr, L""}};
  for (const Row& row : rows) {
    const Namespace made = space(row.uri);
    EXPECT_TRUE(tovin::equalExact(made.getUrl(), row.url)) << tovin::wideToUtf8(row.uri);
    EXPECT_TRUE(tovin::equalExact(made.getProtocol(), row.protocol)) << tovin::wideToUtf8(row.uri);
  }
  EXPECT_EQ(Namespace().getUrl(), nullptr);
  EXPECT_EQ(Namespace().getProtocol(), nullptr);
}

TEST(Namespace, KnownOnesAreToldApart) {
  struct Row {
    const wchar_t* uri;
    bool soap11, soap12, schema99, schema;
  };
  const Row rows[] = {{L"http://schemas.xmlsoap.org/wsdl/soap/", true, false, false, false},
                      {L"https://SCHEMAS.xmlsoap.org/wsdl/soap", true, false, false, false},
                      {L"http://schemas.xmlsoap.org/wsdl/soap//", false, false, false, false},
                      {L"http://schemas.xmlsoap.org/wsdl/soap12/", false, true, false, false},
                      {L"http://www.w3.org/1999/XMLSchema", false, false, true, true},
                      {L"http://www.w3.org/2001/xmlschema/", false, false, false, true},
                      {L"", false, false, false, false},
                      {nullptr, false, false, false, false}};
  for (const Row& row : rows) {
    const Namespace made = space(row.uri);
    EXPECT_EQ(made.isWsdlSoap11SchemaNs(), row.soap11);
    EXPECT_EQ(made.isWsdlSoap12SchemaNs(), row.soap12);
    EXPECT_EQ(made.isXmlSchema99Ns(), row.schema99);
    EXPECT_EQ(made.isXmlSchemaNs(), row.schema);
  }
}

TEST(Namespace, EqualityFoldsAsciiAndPassesOverTheName) {
  EXPECT_TRUE(space(L"http://A/B", L"x") == space(L"http://a/b", L"y"));
  EXPECT_FALSE(space(L"http://a") == space(L"https://a"));
  EXPECT_FALSE(space(L"http://\xC4") == space(L"http://\xE4"));
  EXPECT_FALSE(space(nullptr) == space(L""));
  EXPECT_TRUE(space(nullptr) == space(nullptr));
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

TEST(Model, CopiesShareTheNodeAndCountIt) {
  const tovin::Ptr<tovin::iNode> node(CBaseNode::allocate()), other(CBaseNode::allocate());
  CWsdlParser::COperation operation;
  operation.node = node;
  operation.input.node = node;
  operation.input.parts.add(CWsdlParser::CPart()).node = node;
  EXPECT_EQ(node->getRefCount(), 4);
  CWsdlParser::COperation copy;
  copy.node = other;
  copy = operation;
  EXPECT_EQ(node->getRefCount(), 7);
  EXPECT_EQ(other->getRefCount(), 1);
  copy = static_cast<const CWsdlParser::COperation&>(copy);
  EXPECT_EQ(node->getRefCount(), 7);
  EXPECT_EQ(copy.input.parts.getSize(), 1u);
}

// Each class counts its own, its bases theirs, however the object came about.
TEST(Model, EveryObjectIsCountedByItsClasses) {
  const auto count = [] {
    return std::vector<long>{CWsdlParser::CPart::m_leakDetector.getLive(),
                             CWsdlParser::CMsg::m_leakDetector.getLive(),
                             CWsdlParser::COperation::m_leakDetector.getLive(),
                             CWsdlParser::CNamespaceHolder::m_leakDetector.getLive(),
                             CWsdlParser::CNodeHolder::m_leakDetector.getLive()};
  };
  const std::vector<long> before = count();
  {
    CWsdlParser::COperation operation;
    operation.input.parts.add(CWsdlParser::CPart());
    const CWsdlParser::COperation copy(operation);
    const CWsdlParser::COperation moved(std::move(operation));
    EXPECT_EQ(count(), (std::vector<long>{before[0] + 2, before[1] + 6, before[2] + 3, before[3] + 2,
                                          before[4] + 3 + 6 + 2}));
  }
  EXPECT_EQ(count(), before);
}

}  // namespace
