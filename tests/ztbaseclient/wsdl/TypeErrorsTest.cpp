#include "tests/ztbaseclient/wsdl/Wsdl.h"

namespace {

using namespace testsupport;
using wsdl::resolved;
using wsdl::schema;
using wsdl::withPart;

std::string complexType(const std::string& inside, const std::string& name = "T") {
  return "<xs:complexType name='" + name + "'>" + inside + "</xs:complexType>";
}

std::string extension(const std::string& base, const std::string& inside = {}) {
  return "<xs:complexContent><xs:extension base='" + base + "'>" + inside +
         "</xs:extension></xs:complexContent>";
}

std::string member(const std::string& reference) { return "<xs:sequence>" + reference + "</xs:sequence>"; }

TEST(TypeErrors, OfNames) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"type='t:T'", "", "Can't find <schema> node in wsdl, needed for definition of type t:T"},
      {"element='t:T'", "", "Can't find schema with targetNamespace=urn:t"},
      {"type='o:T' xmlns:o='ftp://O'", "<xs:schema/>", "Can't find schema with targetNamespace=ftp://O"},
      {"element='o:T' xmlns:o='urn:o'", "<xs:schema/>", "Can't find schema with targetNamespace=urn:o"},
      {"type='t:T'", "<xs:schema targetNamespace='urn:t'/>",
       "Cannot find a schema with targetNamespace=urn:t and customType=t:T"},
      {"element='t:T'", "<xs:schema targetNamespace='urn:t'/>",
       "Cannot find a schema with targetNamespace = urn:t and element = t:T"},
      {"type='no:T'", "<xs:schema/>", "Can't find namespace no\n"},
      {"element='no:T'", "<xs:schema/>", "Can't find namespace no\n"},
      {"type='e:T' xmlns:e=''", "<xs:schema/>", "Can't derive target namespace from ns-name e:T"},
      {"type='t:'", "<xs:schema/>", "Can't understand custom type: \"t:\""},
      {"type='a:b:c'", "<xs:schema/>", "Can't understand custom type: \"a:b:c\""},
      {"", "<xs:schema/>", "Can't understand custom type: \"\""}};
  for (const auto& [part, types, message] : rows) EXPECT_EQ(resolved(withPart(part, types)), message) << part;
}

TEST(TypeErrors, OfLookUpsInSchemas) {
  CWsdlParser parser;
  wsdl::parse(parser, wsdl::withPart("type='T' xmlns=''",
                                     "<xs:schema>" + complexType("") + "</xs:schema>" +
                                         schema("<xs:element name='e'/>", "targetNamespace='urn:S'")));
  const CWsdlParser::CSchema& found = parser.GetSchemaByTargetNS(L"URN:s");
  EXPECT_EQ(&parser.FindSchemaContainingElement(L"urn:S", L"E"), &found);
  EXPECT_EQ(parser.GetMatchingSchemaElementDoc(found, L"e").name, L"e");
  EXPECT_EQ(&parser.FindSchemaContainingCustomType(L"urn:t", L"T"), &parser.GetSchemaInfo()[0]);
  expectMessage(L"Can't find schema with targetNamespace=x", [&] { parser.GetSchemaByTargetNS(L"x"); });
  for (const wchar_t* none : {L"x", static_cast<const wchar_t*>(nullptr)}) {
    const std::wstring name = none ? none : L"";
    expectMessage(L"Cannot find a schema with targetNamespace = urn:S and element = " + name,
                  [&] { parser.FindSchemaContainingElement(L"urn:S", none); });
    expectMessage(L"Cannot find a schema with targetNamespace=urn:S and customType=" + name,
                  [&] { parser.FindSchemaContainingCustomType(L"urn:S", none); });
  }
  CWsdlParser::CCustomType type;
  expectMessage(L"Unknown node type defines type with name x[]",
                [&] { parser.GetCustomTypeOutOfSchema(found, L"x[][]", type); });
  parser.GetCustomTypeOutOfSchema(parser.GetSchemaInfo()[0], L"T[]", type);
  EXPECT_EQ(type.name, L"T");
  tovin::WideString name(L"t:T[]");
  EXPECT_TRUE(parser.IsCustomTypeInSchema(parser.GetSchemaInfo()[0], name));
  EXPECT_EQ(name, L"t:T");
}

// An empty target namespace of the definitions leaves a schema without one nowhere.
TEST(TypeErrors, OfATypeWithoutNamespace) {
  std::string document = withPart("type='T' xmlns=''", "<xs:schema>" + complexType("") + "</xs:schema>");
  document.replace(document.find("targetNamespace='urn:t'"), 23, "targetNamespace=''");
  EXPECT_EQ(resolved(document), "Can't find target namespace for type T");
}

TEST(TypeErrors, OfGroupsThatMultiplyWithoutEnd) {
  std::string groups = complexType("<xs:group ref='t:g0'/>");
  for (int i = 0; i < 64; ++i) {
    const std::string reference = "<xs:group ref='t:g" + std::to_string(i + 1) + "'/>";
    groups += "<xs:group name='g" + std::to_string(i) + "'>" + member(reference + reference) + "</xs:group>";
  }
  groups += "<xs:group name='g64'/>";
  EXPECT_EQ(resolved(withPart("type='t:T'", schema(groups))), "Can't understand custom type: \"T\"");
}

// Whatever was asked before: each type of a circle, and of a way into it, has its own answer.
TEST(TypeErrors, OfCirclesDoNotDependOnTheOrderOfQuestions) {
  const std::string types = complexType(extension("t:U"), "S") + complexType(extension("t:V"), "U") +
                            complexType(extension("t:U"), "V") + complexType(extension("t:none"), "X") +
                            complexType(extension("t:X"), "Y");
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {
      {L"S", L"Can't understand custom type: \"t:U\""},
      {L"U", L"Can't understand custom type: \"t:U\""},
      {L"V", L"Can't understand custom type: \"t:V\""},
      {L"Y", L"Cannot find a schema with targetNamespace=urn:t and customType=t:none"},
      {L"X", L"Cannot find a schema with targetNamespace=urn:t and customType=t:none"}};
  for (const bool backwards : {false, true}) {
    CWsdlParser parser;
    wsdl::parse(parser, withPart("", schema(types)));
    for (size_t i = 0; i < std::size(rows); ++i) {
      const auto& [name, message] = rows[backwards ? std::size(rows) - 1 - i : i];
      CWsdlParser::CCustomType type;
      expectMessage(message, [&, asked = name] {
        parser.GetCustomTypeOutOfSchema(parser.GetSchemaInfo()[0], asked, type);
      });
    }
  }
}

TEST(TypeErrors, OfMembersThatAreInheritedWithoutEnd) {
  std::string members;
  for (int i = 0; i < 100'000; ++i) members += "<xs:element name='m'/>";
  std::string types = complexType(member(members), "T0");
  for (int i = 1; i < 7; ++i) types += complexType(extension("t:T0"), "T" + std::to_string(i));
  CWsdlParser parser;
  wsdl::parse(parser, withPart("", schema(types)));
  CWsdlParser::CCustomType type;
  const CWsdlParser::CSchema& own = parser.GetSchemaInfo()[0];
  for (const wchar_t* name : {L"T1", L"T2", L"T1", L"T3", L"T4", L"T5", L"T0", L"T5"}) {
    parser.GetCustomTypeOutOfSchema(own, name, type);
    EXPECT_EQ(type.elements.getSize(), 100'000u);
  }
  expectMessage(L"Too many members are inherited or come out of groups, at type T6",
                [&] { parser.GetCustomTypeOutOfSchema(own, L"T6", type); });
}

// As long as its author likes, without taking stack.
TEST(TypeErrors, AreNoneForALongInheritance) {
  constexpr int count = 20'000;
  std::string types = complexType("", "T" + std::to_string(count));
  for (int i = 0; i < count; ++i) {
    types += complexType(extension("t:T" + std::to_string(i + 1)), "T" + std::to_string(i));
  }
  EXPECT_EQ(resolved(withPart("type='t:T0'", schema(types))), "complex T0 : t:T1");
}

}  // namespace
