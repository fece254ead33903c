#include <gtest/gtest.h>

#include "tests/ztservice/Answers.h"

using testsupport::answerOf;
using testsupport::definitionsOf;
using testsupport::Files;
using testsupport::loadFiles;
using testsupport::summaryOf;

namespace {

// The type of urn:t that a name belongs to, in one line; empty where the answer has none.
std::string told(const Json& answer, const std::string& name = "T") {
  for (const Json& type : answer["types"]) {
    if (type["name"] == name && type["namespace"] == "urn:t") return summaryOf(type);
  }
  return {};
}

std::string el(const std::string& name, const std::string& rest = "") {
  return "<xs:element name='" + name + "' type='xs:int' " + rest + "/>";
}
std::string att(const std::string& name, const std::string& rest = "") {
  return "<xs:attribute name='" + name + "' " + rest + "/>";
}
std::string type(const std::string& name, const std::string& inside = "") {
  return "<xs:complexType name='" + name + "'>" + inside + "</xs:complexType>";
}
std::string seq(const std::string& inside) { return type("T", "<xs:sequence>" + inside + "</xs:sequence>"); }
std::string oneOf(const std::string& inside) { return "<xs:choice>" + inside + "</xs:choice>"; }
std::string derived(const std::string& content, const std::string& how, const std::string& base,
                    const std::string& inside) {
  return "<xs:" + content + "><xs:" + how + " base='" + base + "'>" + inside + "</xs:" + how +
         "></xs:" + content + ">";
}
std::string cc(const char* how, const char* base, const std::string& inside = "") {
  return derived("complexContent", how, base, inside);
}
std::string sc(const char* how, const char* base, const std::string& inside = "") {
  return derived("simpleContent", how, base, inside);
}
struct Case {
  std::string schema;
  const char* expected;  // of the type T
};

void check(const std::vector<Case>& cases, const std::string& attributes = "") {
  for (const Case& one : cases) {
    const Json answer = answerOf(loadFiles({{"main.wsdl", definitionsOf(one.schema, attributes)}}));
    EXPECT_EQ(told(answer), one.expected) << one.schema;
  }
}

TEST(Members, HaveTheBoundsOfAllGroupsAroundThem) {
  check({
      {seq(el("a") + el("b", "minOccurs='0' maxOccurs='unbounded'") + el("c", "maxOccurs='0'")),
       "complex T {a:int 1..1; b:int 0..*}"},
      {seq("<xs:sequence minOccurs='2' maxOccurs='3'>" + el("a", "minOccurs='0' maxOccurs='4'") + el("b") +
           "</xs:sequence>" + el("c")),
       "complex T {a:int 0..12 group=1; b:int 2..3 group=1; c:int 1..1}"},
      {seq("<xs:choice minOccurs='0'>" + el("a") + el("b", "maxOccurs='0'") + "<xs:sequence>" + el("c") +
           "</xs:sequence></xs:choice>"),
       "complex T {a:int 0..1 choice=1.1; c:int 0..1 choice=1.3}"},
      {seq("<xs:choice>" + el("a") + "</xs:choice><xs:choice maxOccurs='9'>" + el("b") + "<xs:choice>" +
           el("c") + el("d") + "</xs:choice><xs:any/></xs:choice>"),
       "complex T {a:int 1..1; b:int 1..9 choice=1.1 group=1; c:int 1..9 choice=1.2/2.1 group=1; d:int 1..9 "
       "choice=1.2/2.2 group=1; *##any/strict 1..9 choice=1.3 group=1}"},
      {seq(el("a", "minOccurs='x'") + el("b", "maxOccurs=' 2 '") + el("c", "maxOccurs='-1'") +
           "<xs:element/>"),
       "complex T {!; b:int 1..2; !; !}"},
  });
}

TEST(Groups, OpenWhereTheyAreReferredTo) {
  check({
      {"<xs:group name='g'>" + oneOf(el("a") + el("b")) + "</xs:group>" +
           seq("<xs:group ref='t:g'/><xs:group ref='t:g' minOccurs='0' maxOccurs='2'/>"),
       "complex T {a:int 1..1 choice=1.1; b:int 1..1 choice=1.2; a:int 0..2 choice=2.1 group=1; b:int 0..2 "
       "choice=2.2 group=1}"},
      {"<xs:group name='g'><xs:sequence><xs:group ref='t:g'/></xs:sequence></xs:group>" +
           type("T", "<xs:group ref='t:g'/>"),
       "complex T!"},
      {type("T", "<xs:group ref='t:gone'/>"), "complex T!"},
      {type(
           "T",
           "<xs:sequence><xs:group ref='enc:Struct'/>" + el("a") +
               "</xs:sequence><xs:attributeGroup ref='enc:commonAttributes'/><xs:attribute ref='enc:root'/>"),
       "complex T {a:int 1..1}"},
      {seq("<xs:element name='a' type='t:gone'/><xs:element name='b' type='u:X'/><xs:element "
           "ref='t:gone'/><xs:element name='c' type='xs:nothing'/>"),
       "complex T {a!; b!; gone!; c!}"},
  });
}

TEST(DerivedTypes, HaveWhatTheirBasesHave) {
  check({
      {type("B", "<xs:sequence>" + oneOf(el("a") + el("b")) + "<xs:sequence maxOccurs='2'>" + el("c") +
                     "</xs:sequence></xs:sequence>" + att("x") + att("y", "type='xs:ID'") +
                     "<xs:anyAttribute namespace='##other' processContents='lax'/>") +
           type("T", cc("extension", "t:B",
                        "<xs:sequence maxOccurs='3'>" + oneOf(el("d") + el("e")) + "</xs:sequence>" +
                            att("z", "use='required'"))),
       "complex T(B) {a:int 1..1 choice=1.1; b:int 1..1 choice=1.2; c:int 1..2 group=1; d:int 1..3 "
       "choice=2.1 group=2; e:int 1..3 choice=2.2 group=2; @x:anySimpleType; @y:ID; @z:anySimpleType!; "
       "@*##other/lax}"},
      {type("B", "<xs:sequence>" + el("a") + el("b", "minOccurs='0'") + "</xs:sequence>" + att("x") +
                     att("y") + att("z") + "<xs:anyAttribute/>") +
           type("T", cc("restriction", "t:B",
                        "<xs:sequence>" + el("a") + "</xs:sequence>" + att("w") +
                            att("y", "use='prohibited'") + att("x", "type='xs:int' fixed=' 1 '"))),
       "complex T(B) {a:int 1..1; @x:int fixed= 1 ; @z:anySimpleType; @w:anySimpleType}"},
      {type("T", cc("restriction", "xs:anyType", "<xs:sequence>" + el("a") + "</xs:sequence>")),
       "complex T(anyType) {a:int 1..1}"},
      {"<xs:complexType name='B' mixed='true'/>" + type("T", cc("extension", "t:B")),
       "complex T(B) mixed {}"},
      {"<xs:complexType name='B' mixed='true'/><xs:complexType name='T' mixed='true'><xs:complexContent "
       "mixed='0'><xs:restriction base='t:B'/></xs:complexContent></xs:complexType>",
       "complex T(B) {}"},
      {type("B", cc("extension", "t:T")) + type("T", cc("extension", "t:B")), "complex T!"},
      {type("B", cc("extension", "t:gone")) + type("T", cc("extension", "t:B")), "complex T!"},
      {"<xs:complexType name='T' base='t:B' derivedBy='extension'/>", "complex T!"},
      {"<xs:simpleType name='T' base='xs:string'><xs:enumeration value='a'/></xs:simpleType>", "simple T!"},
      {"<xs:complexType name='T' abstract='true'/>" + type("Z", cc("extension", "t:M")) +
           "<xs:complexType name='M' abstract='1'>" + cc("restriction", "t:T") + "</xs:complexType>" +
           type("A", cc("extension", "t:T")),
       "complex T abstract=A,Z {}"},
  });
}

TEST(SimpleContent, IsTheSimpleTypeAtTheEndOfTheBases) {
  check({
      {"<xs:simpleType name='S'><xs:restriction base='xs:token'/></xs:simpleType>" +
           type("B", sc("extension", "t:S", att("x") + "<xs:anyAttribute/>")) +
           type("T", sc("extension", "t:B", att("y"))),
       "complex T(B) =S {@x:anySimpleType; @y:anySimpleType; @*##any/strict}"},
      {type("B", sc("extension", "xs:string", att("x") + "<xs:anyAttribute/>")) +
           type("T",
                sc("restriction", "t:B",
                   "<xs:maxLength value='5'/><xs:enumeration value=' a'/>" + att("x", "use='prohibited'"))),
       "complex T(B) =[enumeration (string) atomic/string maxLength=5 [\" a\"]] {@*##any/strict}"},
      {type("B", sc("extension", "xs:string")) +
           type("M", sc("restriction", "t:B", "<xs:maxLength value='5'/>")) +
           type("T", sc("restriction", "t:M", "<xs:minLength value='1'/>")),
       "complex T(M) =[simple [simple (string) atomic/string maxLength=5] atomic/string minLength=1] {}"},
      {type("B", sc("extension", "xs:string")) + type("T", sc("restriction", "t:B", att("x"))),
       "complex T(B) =string {@x:anySimpleType}"},
      {type("T", sc("restriction", "xs:string", "<xs:pattern value='a'/>")),
       "complex T(string) =[simple (string) atomic/string pattern=a] {}"},
      {type("B") + type("T", sc("extension", "t:B")), "complex T!"},
  });
}

TEST(SimpleTypes, TellTheirVarietyAndFacets) {
  check({
      {"<xs:simpleType name='B'><xs:restriction base='xs:int'><xs:minInclusive value='1'/><xs:enumeration "
       "value='2'/></xs:restriction></xs:simpleType><xs:simpleType name='T'><xs:restriction "
       "base='t:B'><xs:totalDigits value='3'/></xs:restriction></xs:simpleType>",
       "enumeration T(B) atomic/decimal totalDigits=3 [\"2\"]"},
      {"<xs:simpleType name='T'><xs:list itemType='xs:NMTOKEN'/></xs:simpleType>",
       "simple T list/string of NMTOKEN"},
      {"<xs:simpleType name='T'><xs:list><xs:simpleType><xs:union memberTypes='xs:int "
       "t:U'/></xs:simpleType></xs:list></xs:simpleType><xs:simpleType name='U'><xs:list "
       "itemType='xs:date'/></xs:simpleType>",
       "simple T list/ of [simple  union/ |int |U]"},
      {"<xs:simpleType name='T'><xs:union memberTypes='t:L xs:IDREFS'><xs:simpleType><xs:restriction "
       "base='xs:string'/></xs:simpleType></xs:union></xs:simpleType><xs:simpleType name='L'><xs:list "
       "itemType='xs:date'/></xs:simpleType>",
       "simple T union/ |L |IDREFS |[simple (string) atomic/string]"},
      {"<xs:simpleType name='U'><xs:union memberTypes='xs:int xs:date'/></xs:simpleType><xs:simpleType "
       "name='T'><xs:restriction base='t:U'><xs:enumeration value='1'/></xs:restriction></xs:simpleType>",
       "enumeration T(U) union/ |int |date [\"1\"]"},
      {"<xs:simpleType name='T'><xs:restriction><xs:simpleType><xs:list "
       "itemType='xs:int'/></xs:simpleType><xs:length value='2'/></xs:restriction></xs:simpleType>",
       "simple T[simple  list/decimal of int] list/decimal of int length=2"},
      {"<xs:simpleType name='T'><xs:union memberTypes='xs:int t:gone'/></xs:simpleType>", "simple T!"},
      {"<xs:simpleType name='T'><xs:list itemType='t:T'/></xs:simpleType>", "simple T list/ of T"},
  });
}

TEST(Arrays, AreWhatIsDerivedFromTheArrayOfAnEncoding) {
  check({
      {type("T", cc("restriction", "enc:Array",
                    "<xs:attribute ref='enc:arrayType' wsdl:arrayType='xs:int[,2][]'/>")),
       "array T(Array) item:int[,2][]"},
      {type("T", cc("restriction", "enc12:Array",
                    "<xs:sequence><xs:any/>" + el("e", "maxOccurs='unbounded'") +
                        "</xs:sequence><xs:attribute ref='enc12:arrayType' wsdl:arrayType='t:gone[3]'/>")),
       "complex T!"},
      {type("T", cc("extension", "enc12:Array",
                    "<xs:sequence><xs:any/>" + el("e", "maxOccurs='unbounded'") + "</xs:sequence>")),
       "array T(Array) e:int[]"},
      {type("T", cc("restriction", "enc:Array")), "array T(Array) item:anyType[]"},
      {type("B",
            cc("restriction", "enc:Array", "<xs:attribute ref='enc:arrayType' wsdl:arrayType='t:B[]'/>")) +
           type("T", cc("restriction", "t:B")),
       "array T(B) item:B[]"},
      {seq(el("a", "maxOccurs='unbounded'")), "complex T {a:int 1..*}"},
  });
}

TEST(Attributes, AreThoseOfGroupsInTheirPlace) {
  check({
      {"<xs:attribute name='g' type='xs:int' default='1'/><xs:attribute name='h' "
       "fixed='2'><xs:simpleType><xs:restriction "
       "base='xs:int'/></xs:simpleType></xs:attribute><xs:attributeGroup name='G'>" +
           att("b", "form='qualified'") +
           "<xs:attributeGroup ref='t:H'/><xs:anyAttribute "
           "namespace='urn:x'/></xs:attributeGroup><xs:attributeGroup name='H'>" +
           att("c") + "<xs:anyAttribute/></xs:attributeGroup>" +
           type("T", att("a", "use='prohibited'") +
                         "<xs:attributeGroup ref='t:G'/><xs:attribute ref='t:g' "
                         "use='required'/><xs:attribute ref='t:g' fixed='7'/><xs:attribute "
                         "ref='t:h'/><xs:attribute ref='xml:lang'/><xs:attribute ref='t:gone'/>" +
                         att("d", "type='t:gone'")),
       "complex T {@q:b:anySimpleType; @c:anySimpleType; @q:g:int! default=1; @q:g:int fixed=7; @q:h:[simple "
       "(int) atomic/decimal] fixed=2; @q:lang:language; @gone!; @d!; @*##any/strict}"},
      {type("T", "<xs:attributeGroup ref='xml:specialAttrs'/>"),
       "complex T {@q:lang:language; @q:space:NCName; @q:base:anyURI; @q:id:ID}"},
      {"<xs:attributeGroup name='G'><xs:attributeGroup ref='t:G'/></xs:attributeGroup>" +
           type("T", "<xs:attributeGroup ref='t:G'/>"),
       "complex T!"},
      {type("T", "<xs:attributeGroup ref='t:G'/>"), "complex T!"},
  });
}

TEST(Elements, HaveTheTypeOfTheirHead) {
  const char* schema =
      "<xs:element name='H' type='xs:date' abstract='true'/><xs:element name='M' substitutionGroup='t:H' "
      "abstract='true'/><xs:element name='L' substitutionGroup='t:M' nillable='true' "
      "default='x'/><xs:element name='K' substitutionGroup='t:L' type='xs:string'/><xs:element "
      "name='A'><xs:complexType/></xs:element><xs:element name='A2' substitutionGroup='t:A'/><xs:element "
      "name='N'/><xs:element name='X' substitutionGroup='t:gone'/><xs:element name='Y' "
      "substitutionGroup='t:Z'/><xs:element name='Z' substitutionGroup='t:Y'/><xs:complexType "
      "name='T'><xs:all><xs:element ref='t:H'/><xs:element ref='t:L' minOccurs='0'/><xs:element "
      "ref='t:A'/><xs:element ref='t:A2'/><xs:element ref='t:N'/><xs:element ref='t:X'/><xs:element "
      "ref='t:Z'/><xs:element ref='xs:schema'/><xs:element name='n'/></xs:all></xs:complexType>";
  const Json answer = answerOf(loadFiles({{"main.wsdl", definitionsOf(schema)}}));
  EXPECT_EQ(told(answer),
            "complex T {q:H:date 1..1 ref=true; q:L:date 0..1 nillable=true ref=true default=x; q:A:- 1..1 "
            "ref=true; q:A2:- 1..1 ref=true; q:N:anyType 1..1 ref=true; X!; Z!; q:schema:anyType 1..1 "
            "ref=true; n:anyType 1..1}");
  std::string elements;
  for (const Json& element : answer["elements"]) {
    elements += element["name"].get<std::string>() + (element.contains("error")      ? "!"
                                                      : element.contains("abstract") ? "~"
                                                                                     : "");
    if (element.contains("substitutes")) {
      for (const Json& one : element["substitutes"]) elements += '<' + one["name"].get<std::string>();
    }
    elements += element.contains("anonymous") ? "[] " : " ";
  }
  EXPECT_EQ(elements, "schema A<A2[] A2[] H~<K<L K L<K N X! Z! ");
}

TEST(Forms, DecideTheNamespaceOfWhatIsWrittenInside) {
  check({{seq(el("a") + el("b", "form='unqualified'")), "complex T {q:a:int 1..1; b:int 1..1}"},
         {type("T", att("a") + att("b", "form='unqualified'")),
          "complex T {@q:a:anySimpleType; @b:anySimpleType}"}},
        "elementFormDefault='qualified' attributeFormDefault=' qualified '");
}

}  // namespace
