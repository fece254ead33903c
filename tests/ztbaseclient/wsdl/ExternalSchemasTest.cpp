#include "tests/support/TempFolder.h"
#include "tests/ztbaseclient/wsdl/Wsdl.h"
#include "ztbaseclient/wsdl/ExternalSchemaRecord.h"
#include "ztbaseclient/wsdl/XMLParser.h"
#include "ztclient/answers/ByteText.h"

namespace {

using namespace testsupport;
using wsdl::schema;

std::string schemaFile(const std::string& attributes, const std::string& inside) {
  return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' " + attributes + ">" + inside +
         "</xs:schema>";
}

std::string import(const std::string& location, const std::string& kind = "import") {
  return "<xs:" + kind + " schemaLocation='" + location + "'/>";
}

class ExternalSchemas : public FolderTest {
 protected:
  CWsdlParser& read(const std::string& types, const std::string& part = "type='xs:int'") {
    folder_.write("service/main.wsdl", wsdl::withPart(part, types));
    parser_.Reset();
    parser_.Parse(path("service/main.wsdl"));
    return parser_;
  }

  // "leaf namespace" of each record, in order.
  std::string records() {
    parser_.GetSchemaInfo();
    std::string text;
    for (const CWsdlParser::ExternalSchemaRecord& record : parser_.GetExternalSchemas()) {
      text += (text.empty() ? "" : ", ") + pathOf(tovin::wideToUtf8(record.fileName)).filename().string() +
              " " + bytesOf(record.schemaNamespace.getUrl());
    }
    return text;
  }

  CWsdlParser parser_;
};

TEST_F(ExternalSchemas, ThatImportEachOtherLoadOnce) {
  folder_.write("service/a.xsd", schemaFile("targetNamespace='urn:a'", import("b.xsd")));
  folder_.write("service/b.xsd", schemaFile("targetNamespace='urn:b'", import("c.xsd")));
  folder_.write("service/c.xsd",
                schemaFile("targetNamespace='urn:c'", import("./A.xsd") + import("a.xsd") + import("b.xsd")));
  read(schema(import("a.xsd") + import("sub/../a.xsd")) + schema(import("c.xsd")));
  EXPECT_EQ(records(), "c.xsd urn:c, b.xsd urn:b, a.xsd urn:a");
  EXPECT_EQ(parser_.GetSchemaInfo().getSize(), 5u);
}

TEST_F(ExternalSchemas, AreFoundFromTheDocumentsFolder) {
  // A schema in another folder includes one that lies beside the document.
  folder_.write("service/sub/a.xsd", schemaFile("targetNamespace='urn:t'", import("b.xsd", "include")));
  folder_.write("service/b.xsd", schemaFile("", "<xs:complexType name='B'/>"));
  folder_.write("\xC3\xBCp.xsd", schemaFile("targetNamespace='urn:up'", ""));
  read(schema(import("sub\\a.xsd") + import("../\xC3\xBCp.xsd") + import(folder_.path("\xC3\xBCp.xsd"))),
       "type='t:B'");
  EXPECT_EQ(wsdl::resolved(parser_), "complex B");
  EXPECT_EQ(records(), "b.xsd , a.xsd urn:t, \xC3\xBCp.xsd urn:up");
}

TEST_F(ExternalSchemas, WithoutLeafAreTheDocumentsSibling) {
  folder_.write("service/main.xsd", schemaFile("targetNamespace='urn:m'", ""));
  read(schema(import("?xsd=1") + import("http://nowhere.invalid/") +
              "<xs:import location='other/'/><xs:import namespace='urn:x'/>"));
  EXPECT_EQ(records(), "main.xsd urn:m");
}

// Each includer has what the file declares; nobody else has, not even a name without a namespace.
TEST_F(ExternalSchemas, WithoutNamespaceBelongToThoseThatIncludeThem) {
  const auto typeT = [](const std::string& member) {
    return "<xs:complexType name='T'><xs:all><xs:element name='" + member + "'/></xs:all></xs:complexType>";
  };
  folder_.write("service/c1.xsd", schemaFile("", import("deep.xsd", "include") + typeT("one")));
  folder_.write("service/c2.xsd", schemaFile("", typeT("two") + "<xs:element name='e' type='T'/>"));
  folder_.write("service/deep.xsd",
                schemaFile("", import("c1.xsd", "include") + "<xs:element name='d' type='T'/>"));
  const std::string a = schema(import("c1.xsd", "include"), "targetNamespace='urn:a'");
  const std::string b = schema(import("c2.xsd", "include"), "targetNamespace='urn:b'");
  const std::string mine =
      schema(typeT("mine") + "<xs:element xmlns='' name='e' type='T'/>", "targetNamespace='urn:b'");
  const std::tuple<std::string, const char*, const char*> rows[] = {
      {a + b, "element='n:e' xmlns:n='urn:b'", "complex T of urn:b {two:  of ''}"},
      {a + mine, "element='n:e' xmlns:n='urn:b'", "complex T of urn:b {mine:  of ''}"},
      {a + b, "type='T' xmlns=''", "Can't find schema with targetNamespace="},
      // Read once, for the second namespace too, and where it was only imported before.
      {a + b + schema(import("c1.xsd", "include")), "element='t:d'", "complex T {one:  of ''}"},
      {a + schema(import("deep.xsd", "include"), "targetNamespace='urn:b'"), "element='n:d' xmlns:n='urn:b'",
       "complex T of urn:b {one:  of ''}"},
      {schema(import("c2.xsd"), "targetNamespace='urn:i'") + b, "type='n:T' xmlns:n='urn:b'",
       "complex T of urn:b {two:  of ''}"},
      {schema(import("c2.xsd"), "targetNamespace='urn:i'"), "type='T' xmlns=''", "complex T {two:  of ''}"}};
  for (const auto& [types, part, expected] : rows) {
    read(types, part);
    EXPECT_EQ(wsdl::resolved(parser_), expected) << types << part;
  }
}

// What is no regular file would be fetched, waited for or read without end.
TEST_F(ExternalSchemas, AreFilesOnly) {
  for (const char* location :
       {"http://nowhere.invalid/a.xsd", "file:///etc/hosts", "/dev/zero", "/dev/stdin", "..", "CON",
        "missing.xsd", "../../../../../../../../../x.xsd", "urn:x", "a\x7f"}) {
    SCOPED_TRACE(location);
    read(schema(import(location)), "type='t:T'");
    expectMessage(L"Unable to open file", [&] { parser_.GetSchemaInfo(); });
    // Once more, and for the part that needs them; an atomic part needs none.
    expectMessage(L"Unable to open file", [&] { parser_.GetSchemaInfo(); });
    EXPECT_EQ(wsdl::resolved(parser_), "Unable to open file");
    read(schema(import(location)));
    EXPECT_EQ(wsdl::resolved(parser_), "atomic int of http://www.w3.org/2001/XMLSchema");
  }
  for (int time = 0; time < 2; ++time) {
    EXPECT_EQ(trailOf([&] { parser_.GetSchemaInfo(); }),
              "CWsdlParser.parse() CWsdlParser.loadExternalSchemata() CWsdlParser.GetSchemaInfo ");
  }
}

TEST_F(ExternalSchemas, ThatAreNoXmlFailAllQuestions) {
  folder_.write("service/bad.xsd", "<a>");
  read(schema(import("bad.xsd")));
  expectMessage(L"Parse error: no element found", [&] { parser_.GetSchemaInfo(); });
}

TEST_F(ExternalSchemas, InAChainOfThousandsTakeNoStack) {
  constexpr int count = 3000;
  for (int i = 0; i < count; ++i) {
    folder_.write("service/" + std::to_string(i) + ".xsd",
                  schemaFile("", import(std::to_string((i + 1) % count) + ".xsd")));
  }
  read(schema(import("0.xsd")));
  EXPECT_EQ(parser_.GetSchemaInfo().getSize(), 1u + count);
}

TEST(SchemaFileName, ComesFromTheLocationAndTheDocument) {
  struct Parser : CWsdlParser {
    using CWsdlParser::buildExternalSchemaFilename;
  };
  const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> rows[] = {
      {L"a/s.wsdl", L"x/y.xsd", L"a/x/y.xsd"},
      {L"s.wsdl", L"y.xsd", L"./y.xsd"},
      {L"/s.wsdl", L"y.xsd", L"/y.xsd"},
      {L"a/s.wsdl", L"/y.xsd", L"/y.xsd"},
      {L"a/s.wsdl", L"?x", L"a/s.xsd"},
      {L"a/s", L"x/", L"a/s.xsd"},
      {L"a/s.", L"", L"a/s.xsd"},
      {L"a.b/s", L"?", L"a.b/s.xsd"},
      {L"a/s.wsdl", L"http://h/y.xsd", L"http://h/y.xsd"}};
  for (const auto& [document, location, file] : rows) {
    EXPECT_EQ(Parser().buildExternalSchemaFilename(document, location).view(), file);
  }
}

// Whatever the first child is.
TEST(ImportOfElements, IsTrueForAnySchemaWithChildren) {
  CWsdlParser parser;
  wsdl::parse(parser,
              wsdl::definitions("<types>" + schema("<xs:element name='a'/>") + schema("") + "</types>"));
  const tovin::Array<CWsdlParser::CSchema>& schemas = parser.GetSchemaInfo();
  EXPECT_TRUE(parser.importExternalSchemaElements(schemas[0]));
  EXPECT_FALSE(parser.importExternalSchemaElements(schemas[1]));
  EXPECT_EQ(trailOf([&] { parser.importExternalSchemaElements(CWsdlParser::CSchema()); }),
            "CWsdlParser.importExternalSchemaElements() ");
}

}  // namespace
