#include "tests/ztbaseclient/wsdl/Wsdl.h"
#include "ztbaseclient/wsdl/NodeSearch.h"
#include "ztbaseclient/wsdl/XMLParser.h"

namespace {

TEST(NodeSearch, NamesMatchByTheirLocalParts) {
  const std::tuple<const wchar_t*, const wchar_t*, bool> rows[] = {{L"soap12:address", L"address", true},
                                                                   {L"ADDRESS", L"x:address", true},
                                                                   {L"tns:B", L"B", true},
                                                                   {L"a:b:c", L"c", false},
                                                                   {L"a:b:c", L"b:c", false},
                                                                   {L"a:b:c", L"x:b:c", true},
                                                                   {L"", L"x:", true},
                                                                   {nullptr, L"", true},
                                                                   {L"address2", L"address", false}};
  for (const auto& [a, b, equal] : rows) {
    EXPECT_EQ(NodeSearch().Equals_NS(a, b, NameMode::plain), equal) << tovin::wideToUtf8(a);
  }
}

TEST(NodeSearch, TokenStandsForTheRecordedPrefixes) {
  NodeSearch search;
  search.addSoapPrefix(L"s");
  search.addSoapPrefix(L"soap12");
  const std::pair<const wchar_t*, bool> rows[] = {{L"s:body", true},
                                                  {L"SOAP12:Body", true},
                                                  {L"soap:body", false},
                                                  {L"body", false},
                                                  {L"s:binding", false}};
  for (const auto& [name, equal] : rows) {
    EXPECT_EQ(search.Equals_NS(name, L"_WSDLSOAPNS_:body", NameMode::token), equal);
    EXPECT_EQ(search.Equals_NS(L"_WSDLSOAPNS_:body", name, NameMode::token), equal);
  }
  testsupport::expectMessage(L"Invalid namespace comparison between 's:body' == 'body'",
                             [&] { search.Equals_NS(L"s:body", L"body", NameMode::token); });
}

TEST(NodeSearch, FindsTheLastChildButTheFirstByAttribute) {
  CWsdlParser::XMLParser xml;
  tovin::iNode* root = xml.parse(testsupport::arrayOf(
      "<r><a name='t:x' n='1'/><b:A name='X' n='2'/><a n='3'/><a w:name='y' name='z' n='4'/></r>"));
  EXPECT_EQ(findAttrVal(NodeSearch().findNode(root, L"a"), L"n"), L"4");
  EXPECT_EQ(NodeSearch().findNode(root, L"c"), nullptr);
  const NamedChildren children(root);
  EXPECT_EQ(findAttrVal(children.findNodeByAttr(L"a", L"q:x"), L"n"), L"1");
  EXPECT_EQ(findAttrVal(children.findNodeByAttr(L"a", L"y"), L"n"), L"4");
  EXPECT_EQ(children.findNodeByAttr(L"a", L"z"), nullptr);
  EXPECT_EQ(children.findNodeByAttr(L"a", L""), nullptr);
}

}  // namespace
