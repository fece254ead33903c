#include <fstream>

#include "tests/support/TempFolder.h"
#include "tests/ztbaseclient/wsdl/Wsdl.h"
#include "ztbaseclient/wsdl/XMLParser.h"
#include "ztcore/ztCompress.h"

namespace {

using namespace testsupport;
using wsdl::parse;

class Loading : public FolderTest {};

constexpr wchar_t nullPointer[] = L"Cannot dereference a NULL pointer";

std::wstring targetOf(CWsdlParser& parser) {
  tovin::WideString target;
  parser.GetDefinitionsInfo(target);
  return std::wstring(target.view());
}

TEST_F(Loading, AFileIsHandedOutAgainCompressed) {
  std::string document = "<d targetNamespace='a'>";
  document += std::string(2048 - document.size() - 4, ' ') + "</d>";  // exactly one piece
  folder_.write("a.wsdl", document);
  CWsdlParser parser;
  tovin::Array<unsigned char> zipped, bytes;
  EXPECT_FALSE(parser.GetZippedWsdl(zipped));
  parser.Parse(path("a.wsdl"));
  EXPECT_TRUE(parser.HasParsedWsdl());
  EXPECT_EQ(parser.getWsdlUrl(), path("a.wsdl"));
  ASSERT_TRUE(parser.GetZippedWsdl(zipped));
  ztCompress(1, true).Decompress(bytes, zipped);
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), document);

  CWsdlParser second;
  second.ParseZippedWsdl(zipped);
  EXPECT_EQ(targetOf(second), L"a");
  EXPECT_FALSE(second.HasParsedWsdl());
  EXPECT_FALSE(second.GetZippedWsdl(bytes));
}

// In pieces of 2048 bytes: the one with the fault is not kept, nor what follows.
TEST_F(Loading, AFaultKeepsThePiecesBeforeIt) {
  const std::pair<size_t, size_t> rows[] = {{100, 0},     {2043, 0},      {2044, 2048},   {5000, 4096},
                                            {8994, 8192}, {65531, 63488}, {65532, 65536}, {300000, 299008}};
  for (const auto& [faultAt, kept] : rows) {  // where the tag begins that is a fault at its end
    std::string document = "<a b='" + std::string(faultAt - 8, 'x') + "'></bb>";
    document.resize(faultAt + 9000, ' ');
    folder_.write("bad.wsdl", document);
    CWsdlParser::XMLParser parser;
    expectMessage(L"Parse error: mismatched tag", [&] { parser.parse(path("bad.wsdl").c_str()); });
    EXPECT_EQ(parser.getRawBytes().getSize(), kept) << faultAt;
  }
  folder_.write("bad.wsdl", "<a><");
  CWsdlParser::XMLParser parser;
  expectMessage(L"Parse error: unclosed token", [&] { parser.parse(path("bad.wsdl").c_str()); });
  EXPECT_EQ(parser.getRawBytes().getSize(), 4u);
}

TEST_F(Loading, FailuresAreNamedOnce) {
  folder_.write("bad.wsdl", "<a><b></a>");
  CWsdlParser parser;
  expectMessage(L"Unable to open file", [&] { parser.Parse(path("none.wsdl")); });
  expectMessage(L"Unable to open file", [&] { parser.Parse(tovin::WideString()); });
  EXPECT_EQ(trailOf([&] { parser.Parse(path("none.wsdl")); }), "CWsdlParser.parse() ");
  expectMessage(L"Parse error: mismatched tag", [&] { parser.Parse(path("bad.wsdl")); });
  EXPECT_EQ(trailOf([&] { parser.ParseZippedWsdl(arrayOf("x")); }),
            "ztCompress.Decompress CWsdlParser.parseZippedWsdl() ");
  EXPECT_FALSE(parser.HasParsedWsdl());
}

TEST_F(Loading, ASecondParseNeedsAReset) {
  folder_.write("a.wsdl", "<d targetNamespace='a'/>");
  CWsdlParser parser;
  parser.Parse(path("a.wsdl"));
  expectMessage(L"Parse error: parsing finished", [&] { parser.Parse(path("a.wsdl")); });
  parse(parser, "<d targetNamespace='b'/>");
  EXPECT_EQ(targetOf(parser), L"a");
  parser.SetBackwardCompatible70(true);
  parser.Reset();
  EXPECT_FALSE(parser.HasParsedWsdl());
  EXPECT_TRUE(parser.IsBackwardCompatible70());
  EXPECT_EQ(parser.getWsdlUrl(), path("a.wsdl"));
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

// Small documents whose definitions ask for much. A file is refused, of bytes the beginning is kept.
TEST_F(Loading, OfDocumentsThatGrowIsCutOff) {
  std::string elements, attributes, references;
  for (int i = 0; i < 1000; ++i) {
    elements += "<e/>";
    attributes += " a" + std::to_string(i) + " CDATA 'x'";
    references += "&e;";
  }
  const std::pair<std::string, std::string> rows[] = {
      {"<!ATTLIST e a CDATA '" + std::string(20'000, 'x') + "'>", elements},
      {"<!ATTLIST e" + attributes + ">", elements},
      {"<!ENTITY e '" + elements + "'>", references}};
  for (const auto& [definitions, content] : rows) {
    const std::string document =
        "<!DOCTYPE d [" + definitions + "]><d targetNamespace='a'>" + content + "</d>";
    folder_.write("grows.wsdl", document);
    CWsdlParser parser;
    expectMessage(L"Parse error: definitions and entities add too much",
                  [&] { parser.Parse(path("grows.wsdl")); });
    parser.Reset();
    parse(parser, document);
    EXPECT_EQ(targetOf(parser), L"a");
  }
  // In a long document little ones are no burden.
  std::string text = "<!DOCTYPE d [<!ATTLIST e a CDATA 'xxxx'><!ENTITY x '<x/>'>]><d targetNamespace='a'>";
  for (int i = 0; i < 300; ++i) text += elements + "<y/>&x;";
  folder_.write("long.wsdl", text + "</d>");
  CWsdlParser parser;
  parser.Parse(path("long.wsdl"));
  EXPECT_EQ(targetOf(parser), L"a");
}

// A million levels of whatever is looked into: no answer may take stack or time by the depth squared.
TEST(LoadingBytes, NestedDeepAreAnswered) {
  constexpr int levels = 200'000;
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
