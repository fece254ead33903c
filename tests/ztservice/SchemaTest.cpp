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

struct Case {
  const char* schema;
  const char* expected;  // of the type T
};

void check(const std::vector<Case>& cases, const std::string& attributes = "") {
  for (const Case& one : cases) {
    const Json answer = answerOf(loadFiles({{"main.wsdl", definitionsOf(one.schema, attributes)}}));
    EXPECT_EQ(told(answer), one.expected) << one.schema;
  }
}

#define SEQ(inside) "<xs:complexType name='T'><xs:sequence>" inside "</xs:sequence></xs:complexType>"
#define EL(name, rest) "<xs:element name='" name "' type='xs:int' " rest "/>"

TEST(Members, HaveTheBoundsOfAllGroupsAroundThem) {
  check({
      {SEQ(EL("a", "") EL("b", "minOccurs='0' maxOccurs='unbounded'") EL("c", "maxOccurs='0'")),
       "complex T {a:int 1..1; b:int 0..*}"},
      {SEQ("<xs:sequence minOccurs='2' maxOccurs='3'>" EL("a", "minOccurs='0' maxOccurs='4'")
               EL("b", "") "</xs:sequence>" EL("c", "")),
       "complex T {a:int 0..12 group=1; b:int 2..3 group=1; c:int 1..1}"},
      {SEQ("<xs:choice minOccurs='0'>" EL("a", "")
               EL("b", "maxOccurs='0'") "<xs:sequence>" EL("c", "") "</xs:sequence></xs:choice>"),
       "complex T {a:int 0..1 choice=1.1; c:int 0..1 choice=1.3}"},
      {SEQ("<xs:choice>" EL("a", "") "</xs:choice><xs:choice maxOccurs='9'>" EL("b", "") "<xs:choice>" EL(
           "c", "") EL("d", "") "</xs:choice><xs:any/></xs:choice>"),
       "complex T {a:int 1..1; b:int 1..9 choice=1.1 group=1; c:int 1..9 choice=1.2/2.1 group=1; d:int 1..9 "
       "choice=1.2/2.2 group=1; *##any/strict 1..9 choice=1.3 group=1}"},
      {SEQ(EL("a", "minOccurs='x'") EL("b", "maxOccurs=' 2 '") EL("c", "maxOccurs='-1'") "<xs:element/>"),
       "complex T {!; b:int 1..2; !; !}"},
  });
}

#define TYPE(name, inside) "<xs:complexType name='" name "'>" inside "</xs:complexType>"
#define CC(how, base, inside) \
  "<xs:complexContent><xs:" how " base='" base "'>" inside "</xs:" how "></xs:complexContent>"
#define SC(how, base, inside) \
  "<xs:simpleContent><xs:" how " base='" base "'>" inside "</xs:" how "></xs:simpleContent>"
#define ONE_OF(inside) "<xs:choice>" inside "</xs:choice>"
#define ATT(name, rest) "<xs:attribute name='" name "' " rest "/>"

TEST(Groups, OpenWhereTheyAreReferredTo) {
  check({
      {"<xs:group name='g'>" ONE_OF(EL("a", "") EL("b", "")) "</xs:group>" SEQ(
           "<xs:group ref='t:g'/><xs:group ref='t:g' minOccurs='0' maxOccurs='2'/>"),
       "complex T {a:int 1..1 choice=1.1; b:int 1..1 choice=1.2; a:int 0..2 choice=2.1 group=1; b:int 0..2 "
       "choice=2.2 group=1}"},
      {"<xs:group name='g'><xs:sequence><xs:group ref='t:g'/></xs:sequence></xs:group>" TYPE(
           "T", "<xs:group ref='t:g'/>"),
       "complex T!"},
      {TYPE("T", "<xs:group ref='t:gone'/>"), "complex T!"},
      {TYPE("T", "<xs:sequence><xs:group ref='enc:Struct'/>" EL(
                     "a", "") "</xs:sequence><xs:attributeGroup ref='enc:commonAttributes'/><xs:attribute "
                              "ref='enc:root'/>"),
       "complex T {a:int 1..1}"},
      {SEQ("<xs:element name='a' type='t:gone'/><xs:element name='b' type='u:X'/><xs:element "
           "ref='t:gone'/><xs:element name='c' type='xs:nothing'/>"),
       "complex T {a!; b!; gone!; c!}"},
  });
}

TEST(DerivedTypes, HaveWhatTheirBasesHave) {
  check({
      {TYPE("B", "<xs:sequence>" ONE_OF(EL("a", "") EL("b", "")) "<xs:sequence maxOccurs='2'>" EL(
                     "c", "") "</xs:sequence></xs:sequence>" ATT("x", "")
                     ATT("y", "type='xs:ID'") "<xs:anyAttribute namespace='##other' processContents='lax'/>")
           TYPE("T", CC("extension", "t:B",
                        "<xs:sequence maxOccurs='3'>" ONE_OF(EL("d", "") EL("e", "")) "</xs:sequence>" ATT(
                            "z", "use='required'"))),
       "complex T(B) {a:int 1..1 choice=1.1; b:int 1..1 choice=1.2; c:int 1..2 group=1; d:int 1..3 "
       "choice=2.1 group=2; e:int 1..3 choice=2.2 group=2; "
       "@x:anySimpleType; @y:ID; @z:anySimpleType!; @*##other/lax}"},
      {TYPE("B", "<xs:sequence>" EL("a", "") EL("b", "minOccurs='0'") "</xs:sequence>" ATT("x", "")
                     ATT("y", "") ATT("z", "") "<xs:anyAttribute/>")
           TYPE("T", CC("restriction", "t:B",
                        "<xs:sequence>" EL("a", "") "</xs:sequence>" ATT("w", "") ATT("y", "use='prohibited'")
                            ATT("x", "type='xs:int' fixed=' 1 '"))),
       "complex T(B) {a:int 1..1; @x:int fixed= 1 ; @z:anySimpleType; @w:anySimpleType}"},
      {TYPE("T", CC("restriction", "xs:anyType", "<xs:sequence>" EL("a", "") "</xs:sequence>")),
       "complex T(anyType) {a:int 1..1}"},
      {"<xs:complexType name='B' mixed='true'/>" TYPE("T", CC("extension", "t:B", "")),
       "complex T(B) mixed {}"},
      {"<xs:complexType name='B' mixed='true'/><xs:complexType name='T' mixed='true'><xs:complexContent "
       "mixed='0'><xs:restriction base='t:B'/></xs:complexContent></xs:complexType>",
       "complex T(B) {}"},
      {TYPE("B", CC("extension", "t:T", "")) TYPE("T", CC("extension", "t:B", "")), "complex T!"},
      {TYPE("B", CC("extension", "t:gone", "")) TYPE("T", CC("extension", "t:B", "")), "complex T!"},
      {"<xs:complexType name='T' base='t:B' derivedBy='extension'/>", "complex T!"},
      {"<xs:simpleType name='T' base='xs:string'><xs:enumeration value='a'/></xs:simpleType>", "simple T!"},
      {"<xs:complexType name='T' abstract='true'/>" TYPE(
           "Z",
           CC("extension", "t:M",
              "")) "<xs:complexType name='M' abstract='1'>" CC("restriction", "t:T",
                                                               "") "</xs:complexType>" TYPE("A",
                                                                                            CC("extension",
                                                                                               "t:T", "")),
       "complex T abstract=A,Z {}"},
  });
}

TEST(SimpleContent, IsTheSimpleTypeAtTheEndOfTheBases) {
  check({
      {"<xs:simpleType name='S'><xs:restriction base='xs:token'/></xs:simpleType>" TYPE(
           "B", SC("extension", "t:S", ATT("x", "") "<xs:anyAttribute/>"))
           TYPE("T", SC("extension", "t:B", ATT("y", ""))),
       "complex T(B) =S {@x:anySimpleType; @y:anySimpleType; @*##any/strict}"},
      {TYPE("B", SC("extension", "xs:string", ATT("x", "") "<xs:anyAttribute/>")) TYPE(
           "T", SC("restriction", "t:B",
                   "<xs:maxLength value='5'/><xs:enumeration value=' a'/>" ATT("x", "use='prohibited'"))),
       "complex T(B) =[enumeration (string) atomic/string maxLength=5 [\" a\"]] {@*##any/strict}"},
      {TYPE("B", SC("extension", "xs:string", ""))
           TYPE("M", SC("restriction", "t:B", "<xs:maxLength value='5'/>"))
               TYPE("T", SC("restriction", "t:M", "<xs:minLength value='1'/>")),
       "complex T(M) =[simple [simple (string) atomic/string maxLength=5] atomic/string minLength=1] {}"},
      {TYPE("B", SC("extension", "xs:string", "")) TYPE("T", SC("restriction", "t:B", ATT("x", ""))),
       "complex T(B) =string {@x:anySimpleType}"},
      {TYPE("T", SC("restriction", "xs:string", "<xs:pattern value='a'/>")),
       "complex T(string) =[simple (string) atomic/string pattern=a] {}"},
      {TYPE("B", "") TYPE("T", SC("extension", "t:B", "")), "complex T!"},
  });
}

TEST(SimpleTypes, TellTheirVarietyAndFacets) {
  check({
      {"<xs:simpleType name='B'><xs:restriction base='xs:int'><xs:minInclusive value='1'/><xs:enumeration "
       "value='2'/></xs:restriction></xs:simpleType>"
       "<xs:simpleType name='T'><xs:restriction base='t:B'><xs:totalDigits "
       "value='3'/></xs:restriction></xs:simpleType>",
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
      {TYPE("T", CC("restriction", "enc:Array",
                    "<xs:attribute ref='enc:arrayType' wsdl:arrayType='xs:int[,2][]'/>")),
       "array T(Array) item:int[,2][]"},
      {TYPE("T", CC("restriction", "enc12:Array",
                    "<xs:sequence><xs:any/>" EL(
                        "e", "maxOccurs='unbounded'") "</xs:sequence><xs:attribute ref='enc12:arrayType' "
                                                      "wsdl:arrayType='t:gone[3]'/>")),
       "complex T!"},
      {TYPE("T", CC("extension", "enc12:Array",
                    "<xs:sequence><xs:any/>" EL("e", "maxOccurs='unbounded'") "</xs:sequence>")),
       "array T(Array) e:int[]"},
      {TYPE("T", CC("restriction", "enc:Array", "")), "array T(Array) item:anyType[]"},
      {TYPE("B", CC("restriction", "enc:Array", "<xs:attribute ref='enc:arrayType' wsdl:arrayType='t:B[]'/>"))
           TYPE("T", CC("restriction", "t:B", "")),
       "array T(B) item:B[]"},
      {SEQ(EL("a", "maxOccurs='unbounded'")), "complex T {a:int 1..*}"},
  });
}

TEST(Attributes, AreThoseOfGroupsInTheirPlace) {
  check({
      {"<xs:attribute name='g' type='xs:int' default='1'/><xs:attribute name='h' "
       "fixed='2'><xs:simpleType><xs:restriction base='xs:int'/></xs:simpleType></xs:attribute>"
       "<xs:attributeGroup name='G'>" ATT(
           "b", "form='qualified'") "<xs:attributeGroup ref='t:H'/><xs:anyAttribute "
                                    "namespace='urn:x'/></xs:attributeGroup><xs:attributeGroup "
                                    "name='H'>" ATT("c", "") "<xs:anyAttribute/></"
                                                             "xs:attributeGroup>" TYPE(
                                                                 "T",
                                                                 ATT("a",
                                                                     "use='"
                                                                     "prohibit"
                                                                     "ed'") "<"
                                                                            "x"
                                                                            "s"
                                                                            ":"
                                                                            "a"
                                                                            "t"
                                                                            "t"
                                                                            "r"
                                                                            "i"
                                                                            "b"
                                                                            "u"
                                                                            "t"
                                                                            "e"
                                                                            "G"
                                                                            "r"
                                                                            "o"
                                                                            "u"
                                                                            "p"
                                                                            " "
                                                                            "r"
                                                                            "e"
                                                                            "f"
                                                                            "="
                                                                            "'"
                                                                            "t"
                                                                            ":"
                                                                            "G"
                                                                            "'"
                                                                            "/"
                                                                            ">"
                                                                            "<"
                                                                            "x"
                                                                            "s"
                                                                            ":"
                                                                            "a"
                                                                            "t"
                                                                            "t"
                                                                            "r"
                                                                            "i"
                                                                            "b"
                                                                            "u"
                                                                            "t"
                                                                            "e"
                                                                            " "
                                                                            "r"
                                                                            "e"
                                                                            "f"
                                                                            "="
                                                                            "'"
                                                                            "t"
                                                                            ":"
                                                                            "g"
                                                                            "'"
                                                                            " "
                                                                            "u"
                                                                            "s"
                                                                            "e"
                                                                            "="
                                                                            "'"
                                                                            "r"
                                                                            "e"
                                                                            "q"
                                                                            "u"
                                                                            "i"
                                                                            "r"
                                                                            "e"
                                                                            "d"
                                                                            "'"
                                                                            "/"
                                                                            ">"
                                                                            "<"
                                                                            "x"
                                                                            "s"
                                                                            ":"
                                                                            "a"
                                                                            "t"
                                                                            "t"
                                                                            "r"
                                                                            "i"
                                                                            "b"
                                                                            "u"
                                                                            "t"
                                                                            "e"
                                                                            " "
                                                                            "r"
                                                                            "e"
                                                                            "f"
                                                                            "="
                                                                            "'"
                                                                            "t"
                                                                            ":"
                                                                            "g"
                                                                            "'"
                                                                            " "
                                                                            "f"
                                                                            "i"
                                                                            "x"
                                                                            "e"
                                                                            "d"
                                                                            "="
                                                                            "'"
                                                                            "7"
                                                                            "'"
                                                                            "/"
                                                                            ">"
                                                                            "<"
                                                                            "x"
                                                                            "s"
                                                                            ":"
                                                                            "a"
                                                                            "t"
                                                                            "t"
                                                                            "r"
                                                                            "i"
                                                                            "b"
                                                                            "u"
                                                                            "t"
                                                                            "e"
                                                                            " "
                                                                            "r"
                                                                            "e"
                                                                            "f"
                                                                            "="
                                                                            "'"
                                                                            "t"
                                                                            ":"
                                                                            "h"
                                                                            "'"
                                                                            "/"
                                                                            ">"
                                                                            "<"
                                                                            "x"
                                                                            "s"
                                                                            ":"
                                                                            "a"
                                                                            "t"
                                                                            "t"
                                                                            "r"
                                                                            "i"
                                                                            "b"
                                                                            "u"
                                                                            "t"
                                                                            "e"
                                                                            " "
                                                                            "r"
                                                                            "e"
                                                                            "f"
                                                                            "="
                                                                            "'"
                                                                            "x"
                                                                            "m"
                                                                            "l"
                                                                            ":"
                                                                            "l"
                                                                            "a"
                                                                            "n"
                                                                            "g"
                                                                            "'"
                                                                            "/"
                                                                            ">"
                                                                            "<"
                                                                            "x"
                                                                            "s"
                                                                            ":"
                                                                            "a"
                                                                            "t"
                                                                            "t"
                                                                            "r"
                                                                            "i"
                                                                            "b"
                                                                            "u"
                                                                            "t"
                                                                            "e"
                                                                            " "
                                                                            "r"
                                                                            "e"
                                                                            "f"
                                                                            "="
                                                                            "'"
                                                                            "t"
                                                                            ":"
                                                                            "g"
                                                                            "o"
                                                                            "n"
                                                                            "e"
                                                                            "'"
                                                                            "/"
                                                                            ">" ATT("d", "type='t:gone'")),
       "complex T {@q:b:anySimpleType; @c:anySimpleType; @q:g:int! default=1; @q:g:int fixed=7; "
       "@q:h:[simple (int) atomic/decimal] fixed=2; @q:lang:language; @gone!; @d!; @*##any/strict}"},
      {TYPE("T", "<xs:attributeGroup ref='xml:specialAttrs'/>"),
       "complex T {@q:lang:language; @q:space:NCName; @q:base:anyURI; @q:id:ID}"},
      {"<xs:attributeGroup name='G'><xs:attributeGroup ref='t:G'/></xs:attributeGroup>" TYPE(
           "T", "<xs:attributeGroup ref='t:G'/>"),
       "complex T!"},
      {TYPE("T", "<xs:attributeGroup ref='t:G'/>"), "complex T!"},
  });
}

TEST(Elements, HaveTheTypeOfTheirHead) {
  const char* schema =
      "<xs:element name='H' type='xs:date' abstract='true'/><xs:element name='M' substitutionGroup='t:H' "
      "abstract='true'/>"
      "<xs:element name='L' substitutionGroup='t:M' nillable='true' default='x'/><xs:element name='K' "
      "substitutionGroup='t:L' type='xs:string'/>"
      "<xs:element name='A'><xs:complexType/></xs:element><xs:element name='A2' "
      "substitutionGroup='t:A'/><xs:element name='N'/>"
      "<xs:element name='X' substitutionGroup='t:gone'/><xs:element name='Y' "
      "substitutionGroup='t:Z'/><xs:element name='Z' substitutionGroup='t:Y'/>"
      "<xs:complexType name='T'><xs:all><xs:element ref='t:H'/><xs:element ref='t:L' "
      "minOccurs='0'/><xs:element ref='t:A'/><xs:element ref='t:A2'/><xs:element ref='t:N'/><xs:element "
      "ref='t:X'/><xs:element ref='t:Z'/>"
      "<xs:element ref='xs:schema'/><xs:element name='n'/></xs:all></xs:complexType>";
  const Json answer = answerOf(loadFiles({{"main.wsdl", definitionsOf(schema)}}));
  EXPECT_EQ(told(answer),
            "complex T {q:H:date 1..1 ref=true; q:L:date 0..1 nillable=true ref=true default=x; q:A:- 1..1 "
            "ref=true; q:A2:- 1..1 ref=true; "
            "q:N:anyType 1..1 ref=true; X!; Z!; q:schema:anyType 1..1 ref=true; n:anyType 1..1}");
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
  check({{SEQ(EL("a", "") EL("b", "form='unqualified'")), "complex T {q:a:int 1..1; b:int 1..1}"},
         {TYPE("T", ATT("a", "") ATT("b", "form='unqualified'")),
          "complex T {@q:a:anySimpleType; @b:anySimpleType}"}},
        "elementFormDefault='qualified' attributeFormDefault=' qualified '");
}

}  // namespace
