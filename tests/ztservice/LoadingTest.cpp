#include <gtest/gtest.h>

#include <regex>

#include "tests/ztservice/Answers.h"

using testsupport::answerOf;
using testsupport::definitionsOf;
using testsupport::Files;
using testsupport::loadFiles;
using testsupport::summaryOf;

namespace {

std::string schemaOf(const std::string& inside, const std::string& attributes = "") {
  return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' " + attributes + '>' + inside +
         "</xs:schema>";
}

std::string sequence(const std::string& name, const std::string& inside) {
  return "<xs:complexType name='" + name + "'><xs:sequence>" + inside + "</xs:sequence></xs:complexType>";
}

std::string element(const std::string& name, const std::string& type) {
  return "<xs:element name='" + name + "' type='" + type + "'/>";
}

// All types but the built-in ones, in one line each.
std::string told(const Json& answer) {
  std::string out;
  for (const Json& type : answer["types"]) {
    if (type["namespace"].get<std::string>().starts_with("http")) continue;
    out += (type["namespace"] == "urn:t" ? "" : type["namespace"].get<std::string>() + ' ') +
           summaryOf(type) + '\n';
  }
  return out;
}

struct Case {
  const char* name;
  Files files;
  std::string expected;
  // In one document, where that is something else: what a redefinition replaces has another name there.
  std::string flat = {};
};

const std::string main = "main.wsdl";
const std::string inT = "targetNamespace='urn:t' xmlns='urn:t'";

TEST(Documents, AreOneSetOfComponents) {
  const std::vector<Case> cases = {
      {"an import of a namespace that is not declared to be imported, and one without location",
       {{main, definitionsOf("<xs:include schemaLocation='a%20b.xsd#x'/><xs:import namespace='urn:z'/>" +
                             sequence("T", element("a", "t:A")))},
        {"a b.xsd", schemaOf("<xs:import schemaLocation='d\\u.xsd'/>" +
                                 sequence("A", "<xs:element name='u' type='u:U' xmlns:u='urn:u'/>"),
                             inT)},
        {"d/u.xsd", schemaOf(sequence("U", ""), "targetNamespace='urn:u'")}},
       "complex A {u:U 1..1}\ncomplex T {a:A 1..1}\nurn:u complex U {}\n0"},
      {"what is missing is a warning, and an error where it is needed",
       {{main, definitionsOf("<xs:include schemaLocation='gone.xsd'/><xs:include schemaLocation='gone.xsd'/>"
                             "<xs:import namespace='urn:n' schemaLocation='http://n/n.xsd'/>" +
                             sequence("T", element("a", "t:A")))}},
       "complex T {a!}\n3"},
      {"an included schema takes a namespace on, one for each that includes it, and looks there first",
       {{main, definitionsOf(
                   "<xs:include schemaLocation='c.xsd'/><xs:import schemaLocation='u.xsd'/>" +
                   sequence("T", element("a", "t:C") + "<xs:element name='b' type='u:C' xmlns:u='urn:u'/>"))},
        {"u.xsd", schemaOf("<xs:include schemaLocation='c.xsd'/>", "targetNamespace='urn:u'")},
        {"c.xsd", schemaOf("<xs:include schemaLocation='e.xsd'/>" + sequence("C", element("d", "D")),
                           "elementFormDefault='qualified'")},
        {"e.xsd", schemaOf("<xs:simpleType name='D'><xs:restriction base='xs:int'/></xs:simpleType>")}},
       "complex C {q:d:D 1..1}\nsimple D(int) atomic/decimal\ncomplex T {a:C 1..1; b:C 1..1}\n"
       "urn:u complex C {q:d:D 1..1}\nurn:u simple D(int) atomic/decimal\n0"},
      {"a redefinition replaces, and means what it replaces by its own name",
       {{main,
         definitionsOf("<xs:include schemaLocation='r.xsd'/>" +
                       sequence("T", element("a", "t:A") + element("s", "t:S") + "<xs:group ref='t:G'/>"))},
        {"r.xsd", schemaOf("<xs:redefine schemaLocation='b.xsd'><xs:complexType "
                           "name='A'><xs:complexContent><xs:extension base='A'><xs:sequence>" +
                               element("y", "A") +
                               "</xs:sequence></xs:extension></xs:complexContent></xs:complexType>"
                               "<xs:simpleType name='S'><xs:restriction base='S'><xs:minLength "
                               "value='1'/></xs:restriction></xs:simpleType>"
                               "<xs:group name='G'><xs:sequence><xs:group ref='G'/>" +
                               element("h", "xs:int") + "</xs:sequence></xs:group></xs:redefine>",
                           inT)},
        {"b.xsd", schemaOf(sequence("A", element("x", "S")) +
                               "<xs:simpleType name='S'><xs:restriction base='xs:string'><xs:maxLength "
                               "value='9'/></xs:restriction></xs:simpleType>"
                               "<xs:group name='G'><xs:sequence>" +
                               element("g", "xs:int") + "</xs:sequence></xs:group>",
                           inT)}},
       "complex A(A) {x:S 1..1; y:A 1..1}\nsimple S(S) atomic/string maxLength=9 minLength=1\ncomplex T {a:A "
       "1..1; s:S 1..1; g:int 1..1; h:int 1..1}\n0",
       "complex A(A_1) {x:S 1..1; y:A_1 1..1}\ncomplex A_1 {x:S 1..1}\nsimple S(S_1) atomic/string "
       "minLength=1\nsimple S_1(string) atomic/string maxLength=9\ncomplex T {a:A 1..1; s:S 1..1; g:int "
       "1..1; "
       "h:int 1..1}\n"},
      {"a redefinition of a redefinition, of a file that is there already",
       {{main, definitionsOf("<xs:include schemaLocation='c.xsd'/><xs:include schemaLocation='a.xsd'/>" +
                             sequence("T", element("a", "t:A")))},
        {"a.xsd",
         schemaOf("<xs:redefine schemaLocation='b.xsd'><xs:complexType "
                  "name='A'><xs:complexContent><xs:extension base='A'><xs:sequence>" +
                      element("z", "xs:int") +
                      "</xs:sequence></xs:extension></xs:complexContent></xs:complexType></xs:redefine>",
                  inT)},
        {"b.xsd",
         schemaOf("<xs:redefine schemaLocation='c.xsd'><xs:complexType "
                  "name='A'><xs:complexContent><xs:extension base='A'><xs:sequence>" +
                      element("y", "xs:int") +
                      "</xs:sequence></xs:extension></xs:complexContent></xs:complexType></xs:redefine>",
                  inT)},
        {"c.xsd", schemaOf(sequence("A", element("x", "xs:int")), inT)}},
       "complex A(A) {x:int 1..1; y:int 1..1; z:int 1..1}\ncomplex T {a:A 1..1}\n0",
       "complex A(A_1) {x:int 1..1; y:int 1..1; z:int 1..1}\ncomplex A_1(A_2) {x:int 1..1; y:int 1..1}\n"
       "complex A_2 {x:int 1..1}\ncomplex T {a:A 1..1}\n"},
      {"files that redefine each other",
       {{main,
         definitionsOf(
             "<xs:redefine schemaLocation='b.xsd'><xs:complexType name='T'><xs:complexContent><xs:extension "
             "base='t:T'/></xs:complexContent></xs:complexType></xs:redefine>")},
        {"b.xsd",
         schemaOf(
             "<xs:redefine schemaLocation='c.xsd'><xs:complexType name='T'><xs:complexContent><xs:extension "
             "base='T'/></xs:complexContent></xs:complexType></xs:redefine>",
             inT)},
        {"c.xsd",
         schemaOf(
             "<xs:redefine schemaLocation='b.xsd'><xs:complexType name='T'><xs:complexContent><xs:extension "
             "base='T'/></xs:complexContent></xs:complexType></xs:redefine>",
             inT)}},
       "complex T!\n0"},
      {"of two of one name the first counts: the document's own before what it refers to, and that in order",
       {{main, definitionsOf("<xs:include schemaLocation='1.xsd'/><xs:include schemaLocation='2.xsd'/>" +
                             sequence("T", element("a", "t:A") + element("b", "t:B")) + sequence("T", ""))},
        {"1.xsd", schemaOf("<xs:include schemaLocation='3.xsd'/><xs:simpleType name='T'/>", inT)},
        {"2.xsd",
         schemaOf(sequence("A", element("from2", "xs:int")) + sequence("B", element("from2", "xs:int")),
                  inT)},
        {"3.xsd", schemaOf("<xs:include schemaLocation='1.xsd'/><xs:include schemaLocation='../main.wsdl'/>" +
                               sequence("A", element("from3", "xs:int")),
                           inT)}},
       "complex A {from3:int 1..1}\ncomplex B {from2:int 1..1}\ncomplex T {a:A 1..1; b:B 1..1}\n4"},
      {"a name without namespace is looked for in none, in the schema's, in that of the definitions",
       {{main, definitionsOf("<xs:import schemaLocation='n.xsd'/>" +
                             sequence("T", element("a", "N") + element("b", "B")) + sequence("N", "") +
                             sequence("B", ""))},
        {"n.xsd", schemaOf(sequence("N", element("inNone", "xs:int")))}},
       " complex N {inNone:int 1..1}\ncomplex B {}\ncomplex T {a:N 1..1; b:B 1..1}\n0"},
      {"a prefix that nobody declares spoils the file, and what is no XML too",
       {{main, definitionsOf("<xs:include schemaLocation='p.xsd'/><xs:include "
                             "schemaLocation='x.xsd'/><xs:include schemaLocation='o.xsd'/>" +
                             sequence("T", ""))},
        {"p.xsd", schemaOf("<xs:annotation><p:a/></xs:annotation>", inT)},
        {"x.xsd", "<xs:schema"},
        {"o.xsd", "<other/>"}},
       "complex T {}\n3"},
      {"schemas of older drafts",
       {{main, definitionsOf("<xs:include schemaLocation='9.xsd'/><xs:include schemaLocation='0.xsd'/>" +
                             sequence("T", element("a", "t:A") + element("b", "t:B")))},
        {"9.xsd",
         "<schema xmlns='http://www.w3.org/1999/XMLSchema' targetNamespace='urn:t'><simpleType "
         "name='A'><restriction base='timeInstant'><precision "
         "value='3'/></restriction></simpleType></schema>"},
        {"0.xsd",
         "<schema xmlns='http://www.w3.org/2000/10/XMLSchema' targetNamespace='urn:t'><complexType "
         "name='B'><all><element name='c' type='CDATA'/></all></complexType></schema>"}},
       "simple A(timeInstant) atomic/dateTime precision=3\ncomplex B {c:CDATA 1..1}\ncomplex T {a:A 1..1; "
       "b:B 1..1}\n0"},
  };
  for (const Case& one : cases) {
    const Json answer = answerOf(loadFiles(one.files));
    EXPECT_EQ(told(answer) + std::to_string(answer["warnings"].size()), one.expected) << one.name;
    const std::string flat = testsupport::flatten(one.files);
    EXPECT_EQ(told(answerOf(loadFiles({{main, flat}}))), one.flat.empty() ? told(answer) : one.flat) << flat;
  }
}

TEST(Definitions, OfSeveralNamespacesHaveOneInOneDocument) {
  const std::string second = std::regex_replace(
      std::regex_replace(definitionsOf(sequence("T", element("a", "A")) + sequence("A", "")),
                         std::regex("urn:t"), "urn:b"),
      std::regex("type=\"t:T\"/>|<s:body/>"), "type='T' xmlns=''/>");
  const std::string body = "type='T' xmlns=''/></wsdl:input>";
  std::string other = second;
  other.replace(other.find(body), body.size(),
                "<s:body/><s:header message='t:m' part='p'><s:headerfault message='t:m' part='p'/></s:header>"
                "</wsdl:input>");
  std::string first = definitionsOf(sequence("T", "") + "<xs:element name='x' xmlns:flat_1='urn:x'/>");
  first.insert(first.find("<wsdl:types>"), "<wsdl:import namespace='urn:b' location='b.wsdl'/>");
  const std::string flat = testsupport::flatten({{main, first}, {"b.wsdl", other}});
  const auto service = loadFiles({{main, flat}});
  EXPECT_TRUE(service.warnings().empty()) << flat;
  const Json answer = answerOf(service);
  ASSERT_EQ(answer["services"].size(), 2u);
  const Json& port = answer["services"][1]["ports"][0];
  const Json& input = port["operations"][0]["input"];
  EXPECT_EQ(answer["services"][1]["name"], "S_2");
  EXPECT_EQ(port["binding"], "B_2");
  EXPECT_EQ(port["portType"], "P_2");
  EXPECT_EQ(input["message"], "m_2");
  EXPECT_EQ(input["headers"][0]["part"]["typeNamespace"], "urn:b");
  EXPECT_EQ(told(answer), "urn:b complex A {}\nurn:b complex T {a:A 1..1}\ncomplex T {}\n");
  EXPECT_NE(flat.find("<s:headerfault message=\"flat_2:m_2\""), flat.npos) << flat;
}

TEST(Encodings, AreThoseThatXmlAndItsReaderKnow) {
  const auto withName = [](const std::string& encoding, const std::string& name) {
    std::string text =
        definitionsOf("<xs:element name='" + name +
                      "' type='t:T'/><xs:complexType name='T'><xs:sequence><xs:element ref='t:" + name +
                      "'/></xs:sequence></xs:complexType>");
    return "<?xml version='1.0' encoding='" + encoding + "'?>" + text;
  };
  const std::string utf8 = withName("UTF-8",
                                    "Gr\xC3\xB6\xC3\x9F"
                                    "e");
  std::string utf16 = "\xFF\xFE";
  for (const char32_t c : std::u32string(U"<?xml version='1.0' encoding='UTF-16'?>"))
    utf16 += {static_cast<char>(c), '\0'};
  for (const char c :
       definitionsOf("<xs:element name='G' type='t:T'/><xs:complexType name='T'><xs:sequence><xs:element "
                     "ref='t:G'/></xs:sequence></xs:complexType>"))
    utf16 += {c, '\0'};
  const std::vector<std::pair<std::string, std::string>> cases = {
      {utf8,
       "Gr\xC3\xB6\xC3\x9F"
       "e"},
      {withName("utf8",
                "Gr\xC3\xB6\xC3\x9F"
                "e"),
       "Gr\xC3\xB6\xC3\x9F"
       "e"},
      {utf16, "G"},
      {withName("ISO-8859-1",
                "Gr\xF6\xDF"
                "e"),
       "Gr\xC3\xB6\xC3\x9F"
       "e"},
      {withName("us-ascii", "G"), "G"},
      {withName("Windows-1252", "Gr\xF6\x9C"), "Gr\xC3\xB6\xC5\x93"},
      {withName("cp1251", "\xC0\xE0"), "\xD0\x90\xD0\xB0"},
      {withName("iso-8859-15", "\xBC\xBD"), "\xC5\x92\xC5\x93"},
  };
  for (const auto& [bytes, name] : cases)
    EXPECT_EQ(answerOf(loadFiles({{main, bytes}}))["elements"][0]["name"], name);
  EXPECT_THROW(loadFiles({{main, withName("ebcdic", "G")}}), ztservice::Error);
  EXPECT_THROW(loadFiles({{main, schemaOf("")}}), ztservice::Error);
  EXPECT_THROW(loadFiles({}), ztservice::Error);
}

}  // namespace
