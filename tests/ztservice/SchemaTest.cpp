#include <gtest/gtest.h>

#include "tests/ztservice/Services.h"

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
      {SEQ("<xs:sequence minOccurs='2' maxOccurs='3'>" EL("a", "minOccurs='0' maxOccurs='4'") EL("b", "") "</xs:sequence>" EL("c", "")),
       "complex T {a:int 0..12 group=1; b:int 2..3 group=1; c:int 1..1}"},
      {SEQ("<xs:choice minOccurs='0'>" EL("a", "") EL("b", "maxOccurs='0'") "<xs:sequence>" EL("c", "") "</xs:sequence></xs:choice>"),
       "complex T {a:int 0..1 choice=1.1; c:int 0..1 choice=1.3}"},
      {SEQ("<xs:choice>" EL("a", "") "</xs:choice><xs:choice maxOccurs='9'>" EL("b", "") "<xs:choice>" EL("c", "") EL("d", "") "</xs:choice><xs:any/></xs:choice>"),
       "complex T {a:int 1..1; b:int 1..9 choice=1.1 group=1; c:int 1..9 choice=1.2/2.1 group=1; d:int 1..9 choice=1.2/2.2 group=1; *##any/strict 1..9 choice=1.3 group=1}"},
      {SEQ(EL("a", "minOccurs='x'") EL("b", "maxOccurs=' 2 '") EL("c", "maxOccurs='-1'") "<xs:element/>"), "complex T {!; b:int 1..2; !; !}"},
  });
}

}  // namespace
