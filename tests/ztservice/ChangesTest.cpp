#include <gtest/gtest.h>

#include <sstream>

#include "tests/ztservice/Services.h"
#include "ztclient/answers/ServiceChanges.h"

namespace {

std::string told(const std::string& older, const std::string& newer) {
  const auto load = [](const std::string& inside) {
    return testsupport::loadFiles(
        {{"main.wsdl", testsupport::definitionsOf(
                           "<xs:complexType name='T'>" + inside +
                           "</xs:complexType>"
                           "<xs:simpleType name='E'><xs:restriction base='xs:string'><xs:enumeration "
                           "value='a'/></xs:restriction></xs:simpleType>")}});
  };
  std::ostringstream out;
  writeChangesText(changesOf(load(older), load(newer)), out);
  std::string text = out.str();
  for (size_t at; (at = text.find("type {urn:t}T")) != std::string::npos;) text.replace(at, 13, "T");
  return text;
}

#define S(inside) "<xs:sequence>" inside "</xs:sequence>"
#define E(name, type, rest) "<xs:element name='" name "' type='" type "' " rest "/>"
#define LOCAL(inside)                                                            \
  "<xs:element name='l'><xs:simpleType><xs:restriction base='xs:string'>" inside \
  "</xs:restriction></xs:simpleType></xs:element>"

TEST(Changes, SayWhetherTheyBreakCallers) {
  const std::vector<std::array<const char*, 3>> rows = {
      {S(E("a", "xs:int", "")), S(E("a", "xs:int", "")), ""},
      {S(E("a", "xs:int", "")),
       S(E("a", "xs:int", "") E("b", "xs:int", "") E("c", "xs:int", "minOccurs='0'")),
       "breaks callers: T: added member b, required\nharmless: T: added member c\n"},
      {S(E("a", "xs:int", "")), S(""), "breaks callers: T: removed member a\n"},
      {S(E("a", "xs:int", "minOccurs='0' maxOccurs='5'")), S(E("a", "xs:long", "maxOccurs='3'")),
       "breaks callers: T, member a: changed least from 0 to 1\nbreaks callers: T, member a: changed most "
       "from 5 to 3\n"
       "breaks callers: T, member a: changed type from {http://www.w3.org/2001/XMLSchema}int to "
       "{http://www.w3.org/2001/XMLSchema}long\n"},
      {S(E("a", "xs:int", "")), S(E("a", "xs:int", "minOccurs='0' maxOccurs='unbounded' nillable='true'")),
       "harmless: T, member a: changed least from 1 to 0\nharmless: T, member a: changed most from 1 to "
       "many\nharmless: T, member a: changed may be nil\n"},
      {S(LOCAL("<xs:enumeration value='x'/><xs:enumeration value='y'/>")),
       S(LOCAL("<xs:enumeration value='x'/><xs:enumeration value='z'/><xs:length value='1'/>")),
       "breaks callers: T, member l: removed value y\nharmless: T, member l: added value z\nbreaks callers: "
       "T, member l: added limit length 1\n"},
      {"<xs:attribute name='a'/>", "<xs:attribute name='a' use='required'/><xs:attribute name='b'/>",
       "breaks callers: T, attribute a: changed required\nharmless: T: added attribute b\n"},
      {S(E("a", "xs:int", "")), "<xs:choice>" E("a", "xs:int", "") E("b", "xs:int", "") "</xs:choice>",
       "breaks callers: T, member a: changed in a choice\nharmless: T: added member b\n"},
  };
  for (const auto& [older, newer, expected] : rows) EXPECT_EQ(told(older, newer), expected) << older << newer;
}

}  // namespace
