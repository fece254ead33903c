#include <fstream>

#include "tests/ztbaseclient/wsdl/Wsdl.h"
#include "ztbaseclient/wsdl/NodeSearch.h"
#include "ztcore/ztCompress.h"

namespace {

using testsupport::expectMessage;
using wsdl::parse;

class Loading : public wsdl::Files {};

constexpr wchar_t nullPointer[] = L"Cannot dereference a NULL pointer";

std::wstring targetOf(CWsdlParser& parser) {
  tovin::WideString target;
  parser.GetDefinitionsInfo(target);
  return std::wstring(target.view());
}

TEST_F(Loading, AFileIsHandedOutAgainCompressed) {
  std::string document = "<d targetNamespace='a'>";
  document += std::string(2048 - document.size() - 4, ' ') + "</d>";  // exactly one piece
  write("a.wsdl", document);
  CWsdlParser parser;
  tovin::Array<unsigned char> zipped, bytes;
  EXPECT_FALSE(parser.GetZippedWsdl(zipped));
  parser.Parse(path("a.wsdl"));
  EXPECT_TRUE(parser.HasParsedWsdl());
  EXPECT_EQ(parser.getWsdlUrl(), path("a.wsdl").view());
  ASSERT_TRUE(parser.GetZippedWsdl(zipped));
  ztCompress(1, true).Decompress(bytes, zipped);
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), document);

  CWsdlParser second;
  second.ParseZippedWsdl(zipped);
  EXPECT_EQ(targetOf(second), L"a");
  EXPECT_FALSE(second.HasParsedWsdl());
  EXPECT_FALSE(second.GetZippedWsdl(bytes));
}

TEST_F(Loading, FailuresAreNamedOnce) {
  write("bad.wsdl", "<a><b></a>");
  CWsdlParser parser;
  expectMessage(L"Unable to open file", [&] { parser.Parse(path("none.wsdl")); });
  EXPECT_EQ(wsdl::trailOf([&] { parser.Parse(path("none.wsdl")); }), "CWsdlParser parse()");
  expectMessage(L"Parse error: mismatched tag", [&] { parser.Parse(path("bad.wsdl")); });
  EXPECT_EQ(wsdl::trailOf([&] { parser.ParseZippedWsdl(wsdl::bytesOf("x")); }),
            "ztCompress Decompress, CWsdlParser parseZippedWsdl()");
  EXPECT_FALSE(parser.HasParsedWsdl());
}

TEST_F(Loading, ASecondParseNeedsAReset) {
  write("a.wsdl", "<d targetNamespace='a'/>");
  CWsdlParser parser;
  parser.Parse(path("a.wsdl"));
  expectMessage(L"Parse error: parsing finished", [&] { parser.Parse(path("a.wsdl")); });
  parse(parser, "<d targetNamespace='b'/>");
  EXPECT_EQ(targetOf(parser), L"a");
  parser.SetBackwardCompatible70(true);
  parser.Reset();
  EXPECT_FALSE(parser.HasParsedWsdl());
  EXPECT_TRUE(parser.IsBackwardCompatible70());
  EXPECT_EQ(parser.getWsdlUrl(), path("a.wsdl").view());
  expectMessage(nullPointer, [&] { targetOf(parser); });
  parse(parser, "<d targetNamespace='b'/>");
  EXPECT_EQ(targetOf(parser), L"b");
}

TEST(LoadingBytes, OfNoXmlGiveWhatStoodBeforeTheFault) {
  CWsdlParser parser;
  parse(parser, "<d targetNamespace='a'><service name='s'></d>");
  EXPECT_EQ(targetOf(parser), L"a");
  for (const char* document : {"", "no xml", "<"}) {
    CWsdlParser empty;
    parse(empty, document);
    expectMessage(nullPointer, [&] { targetOf(empty); });
    expectMessage(nullPointer, [&] { empty.GetSchemaInfo(); });
  }
}

TEST(LoadingBytes, KeepElementsAndAttributesOneCharacterAByte) {
  CWsdlParser parser;
  parse(parser,
        "<d targetNamespace='\xC3\xA9'>text<!-- c --><?p i?><message name='\xE2\x82\xAC'>x</message></d>");
  EXPECT_EQ(targetOf(parser), L"\xC3\xA9");
  CWsdlParser::CMsg message;
  parser.GetMessageInfo(L"\xE2\x82\xAC", message);
  EXPECT_FALSE(message.node->hasChildren());
  EXPECT_EQ(message.node->findParent()->getNumberOfChildren(), 1u);
}

TEST(LoadingBytes, OfEntityBombsAreCutOff) {
  std::string bomb = "<!DOCTYPE d [<!ENTITY a0 'xxxxxxxxxx'>";
  for (int i = 1; i < 12; ++i) {
    const std::string inner = "&a" + std::to_string(i - 1) + ";";
    bomb += "<!ENTITY a" + std::to_string(i) + " '";
    for (int j = 0; j < 10; ++j) bomb += inner;
    bomb += "'>";
  }
  CWsdlParser parser;
  parse(parser, bomb + "]><d targetNamespace='&a11;'/>");
  expectMessage(nullPointer, [&] { targetOf(parser); });
}

// A million levels of whatever is looked into: no answer may take stack or time by the depth squared.
TEST(LoadingBytes, NestedAMillionDeepAreAnswered) {
  constexpr int levels = 1'000'000;
  const auto nested = [](const std::string& name, const std::string& inside) {
    std::string text;
    for (int i = 0; i < levels; ++i) text += "<" + name + ">";
    text += inside;
    for (int i = 0; i < levels; ++i) text += "</" + name + ">";
    return text;
  };
  const std::string deepMember = nested("xs:sequence", "<xs:element name='m' type='xs:int'/>");
  EXPECT_EQ(wsdl::resolved(wsdl::withPart(
                "type='t:T'", wsdl::schema("<xs:complexType name='T'>" + deepMember + "</xs:complexType>"))),
            "complex T {m: xs:int}");
  EXPECT_EQ(
      wsdl::resolved(wsdl::withPart(
          "element='t:e'", wsdl::schema(nested("xs:element", "") + "<xs:element name='e' type='xs:int'/>"))),
      "atomic int of http://www.w3.org/2001/XMLSchema");
}

}  // namespace
