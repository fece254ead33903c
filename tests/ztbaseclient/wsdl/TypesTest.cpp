#include <fstream>

#include "tests/ztbaseclient/wsdl/Wsdl.h"
#include "ztbaseclient/wsdl/NodeSearch.h"

namespace {

using wsdl::resolved;
using wsdl::schema;
using wsdl::withPart;

// The examples of tests/data/wsdl/types.txt, which tells its form.
TEST(Types, ResolveAsTheirExamplesSay) {
  std::ifstream in(ZTB_TEST_DATA "/wsdl/types.txt");
  std::string part, definitions;
  bool asBefore = false;
  int count = 0;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    if (line[0] == '[') {
      part = line.substr(1, line.find_first_of(" ]") - 1);
      asBefore = line.ends_with("as before]");
    } else if (line[0] == '<') {
      definitions = line;
    } else {
      if (line.ends_with("\\n")) line.replace(line.size() - 2, 2, "\n");
      EXPECT_EQ(resolved(withPart(part, schema(definitions)), asBefore), line.substr(2)) << definitions;
      ++count;
    }
  }
  EXPECT_EQ(count, 78);
}

TEST(Types, AtomicOnesBelongToTheirNamespaces) {
  const std::pair<const char*, const char*> rows[] = {
      {"type='xs:dateTime'", "atomic dateTime of http://www.w3.org/2001/XMLSchema"},
      {"type='enc:string'", "atomic string of http://schemas.xmlsoap.org/soap/encoding/"},
      {"type='p:int' xmlns:p='http://www.w3.org/1999/XMLSchema'",
       "atomic int of http://www.w3.org/1999/XMLSchema"},
      {"type='int' xmlns='http://www.w3.org/2001/XMLSchema'",
       "atomic int of http://www.w3.org/2001/XMLSchema"},
      {"type='XS:UNSIGNEDINT'", "atomic unsignedInt of http://www.w3.org/2001/XMLSchema"},
      {"type='xs:anyType'", "Can't understand custom type: \"xs:anyType\""},
      {"type='enc:Array'", "Can't understand custom type: \"enc:Array\""}};
  for (const auto& [part, expected] : rows) EXPECT_EQ(resolved(withPart(part, "")), expected) << part;
}

TEST(Types, WithoutPrefixAreLookedForNearTheName) {
  const std::string plain = "<xs:schema><xs:complexType name='T'/></xs:schema>";
  const std::string useU =
      "<xs:complexType name='T'><xs:complexContent><xs:extension "
      "base='U'/></xs:complexContent></xs:complexType>";
  const std::string bare = "type='T' xmlns=''";
  EXPECT_EQ(resolved(withPart(bare, plain)), "complex T");
  EXPECT_EQ(resolved(withPart(bare, schema(""))), "Can't find schema with targetNamespace=");
  EXPECT_EQ(resolved(withPart(bare, "<xs:schema/>")),
            "Cannot find a schema with targetNamespace= and customType=T");
  // In its own schema, and before that in one without a namespace.
  const std::string own = schema(useU + "<xs:complexType name='U'/>", "targetNamespace='urn:t' xmlns=''");
  EXPECT_EQ(resolved(withPart("type='t:T'", own)), "complex T : U");
  EXPECT_EQ(resolved(withPart("type='t:T'",
                              own + "<xs:schema><xs:complexType name='U'><xs:all><xs:element name='a' "
                                    "type='xs:int'/></xs:all></xs:complexType></xs:schema>")),
            "complex T : U {a: xs:int}");
}

// A question about a member uses its node first; without one its name has to do.
TEST(Types, OfMembersAreAskedOneByOne) {
  CWsdlParser parser;
  wsdl::parse(parser, withPart("element='t:e'", schema("<xs:element name='e'><xs:complexType><xs:sequence>"
                                                       "<xs:element name='in'><xs:complexType/></xs:element>"
                                                       "<xs:element name='many' type='t:M' maxOccurs='2'/>"
                                                       "<xs:element name='n' type='xs:int'/></xs:sequence>"
                                                       "</xs:complexType></xs:element>"
                                                       "<xs:simpleType name='M'/>")));
  CWsdlParser::CMsg message;
  parser.GetMessageInfo(L"M", message);
  CWsdlParser::CCustomType type, member;
  ASSERT_TRUE(parser.GetCustomTypeInfoDoc(message.parts[0], type));
  EXPECT_TRUE(parser.IsDOCStyle());
  EXPECT_FALSE(parser.IsRPCStyle());
  EXPECT_TRUE(parser.GetElementsCustomType(type.elements[0], member));
  EXPECT_EQ(member.name, L"in");
  EXPECT_TRUE(parser.GetElementsCustomType(type.elements[1], member));
  EXPECT_EQ(member.name, L"M");
  EXPECT_EQ(member.schema.node->getName(), std::wstring(L"xs:schema"));
  EXPECT_FALSE(parser.GetElementsCustomType(type.elements[2], member));
  EXPECT_EQ(member.kind, CWsdlParser::KindSimple);
  EXPECT_EQ(parser.GetLastAtomicTypeQueried(), L"int");
  EXPECT_TRUE(parser.IsOfAtomicType(type.elements[2], CWsdlParser::DOC));
  EXPECT_FALSE(parser.IsOfAtomicType(type.elements[0], CWsdlParser::DOC));
  EXPECT_TRUE(parser.IsArrayType(type.elements[1].node.get()));
  EXPECT_EQ(type.elements[1].namespaces[0].name, L"t");
  CWsdlParser::CElement foreign;
  foreign.type = L"t:M[]";
  EXPECT_TRUE(parser.GetElementsCustomType(foreign, member));
}

// A value's own namespaces count after its node, and before the definitions when it has none.
TEST(Types, OfValuesUseTheirOwnNamespaces) {
  CWsdlParser parser;
  wsdl::parse(parser, wsdl::definitions("<types>" + schema("<xs:simpleType name='T'/>") + "</types>"));
  CWsdlParser::CPart part;
  CWsdlParser::CElement member;
  CWsdlParser::CCustomType type;
  const auto bind = [](auto& value, const wchar_t* prefix, const wchar_t* uri) {
    CWsdlParser::CNamespace& space = value.namespaces.add(CWsdlParser::CNamespace());
    space.name = prefix;
    space.setUrl(uri);
  };
  part.type = L"k:int";
  member.type = L"K:T[]";
  EXPECT_FALSE(parser.IsOfAtomicType(part));
  bind(part, L"k", L"http://www.w3.org/2001/XMLSchema");
  bind(member, L"k", L"urn:t");
  EXPECT_TRUE(parser.IsOfAtomicType(part));
  EXPECT_TRUE(parser.GetElementsCustomType(member, type));
  EXPECT_EQ(parser.FindTypeNamespace(member), L"urn:t");
  // Beside a node that does not bind the prefix, and against definitions that do.
  part.node = tovin::Ptr<tovin::iNode>(type.node);
  EXPECT_TRUE(parser.IsOfAtomicType(part));
  part.node.reset();
  part.type = L"t:int";
  bind(part, L"t", L"http://www.w3.org/2001/XMLSchema");
  EXPECT_TRUE(parser.IsOfAtomicType(part));
  part.node = type.node;
  EXPECT_FALSE(parser.IsOfAtomicType(part));
}

// Kept over a reset, from another reader, or before this one was asked for its schemas.
TEST(Types, OfSchemasThatAreNotInTheSetAreSearchedThere) {
  const std::string document =
      wsdl::definitions("<types>" +
                        schema("<xs:simpleType name='t'/><xs:simpleType name='T'/><xs:complexType name='T'/>"
                               "<xs:element name='T'/>") +
                        "</types>");
  CWsdlParser parser;
  wsdl::parse(parser, document);
  const CWsdlParser::CSchema kept = parser.GetSchemaInfo()[0];
  CWsdlParser none;
  for (CWsdlParser* asked : {&parser, &none}) {
    CWsdlParser::CCustomType type;
    asked->Reset();
    for (const auto& [name, kind] :
         {std::pair(L"T", CWsdlParser::KindComplex), std::pair(L"t", CWsdlParser::KindSimple)}) {
      asked->GetCustomTypeOutOfSchema(kept, name, type);
      EXPECT_EQ(type.kind, kind);
      EXPECT_EQ(type.schema.node, kept.node);
      EXPECT_EQ(type.typeNamespace.getUrl(), std::wstring(L"urn:t"));
    }
    EXPECT_EQ(asked->GetMatchingSchemaElementDoc(kept, L"t").name, L"T");
    tovin::WideString name(L"element");
    EXPECT_FALSE(asked->IsCustomTypeInSchema(kept, name));
  }
}

TEST(SchemaAnnotation, SaysScopeNeedAndForm) {
  CWsdlParser parser;
  wsdl::parse(parser,
              wsdl::definitions("<types>" +
                                schema("<xs:element name='a'><xs:complexType><xs:sequence>"
                                       "<xs:element minOccurs='0' form='x'/></xs:sequence></xs:complexType>"
                                       "</xs:element>",
                                       "targetNamespace='urn:t' elementFormDefault='qualified'") +
                                schema("<xs:element minOccurs='2'/>") + "</types><x:element/>"));
  const tovin::Array<CWsdlParser::CSchema>& schemas = parser.GetSchemaInfo();
  ASSERT_EQ(parser.GetSchemaInfo().getSize(), 2u);  // asked twice, read once
  const auto facts = [](const tovin::iNode* element) {
    std::wstring text(attributeText(element, L"scope").view());
    text += L" " + std::wstring(attributeText(element, L"required").view());
    return tovin::wideToUtf8(text + L" " + std::wstring(attributeText(element, L"form").view()));
  };
  const tovin::iNode* global = schemas[0].node->getChildAt(0);
  EXPECT_EQ(facts(global), "global true qualified");
  EXPECT_EQ(facts(global->getChildAt(0)->getChildAt(0)->getChildAt(0)), " false x");
  EXPECT_EQ(facts(schemas[1].node->getChildAt(0)), "global true unqualified");
  EXPECT_FALSE(schemas[0].node->findParent()->findParent()->getChildAt(1)->hasProperties());
  EXPECT_TRUE(schemas[0].getIsElementFormQualified());
  CWsdlParser without;
  wsdl::parse(without, wsdl::definitions(""));
  EXPECT_TRUE(without.GetSchemaInfo().isEmpty());
}

}  // namespace
