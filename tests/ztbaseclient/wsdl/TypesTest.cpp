#include "tests/ztbaseclient/wsdl/Wsdl.h"
#include "ztbaseclient/wsdl/NodeSearch.h"

namespace {

using wsdl::resolved;
using wsdl::schema;
using wsdl::withPart;

struct Row {
  const char* types;
  const char* expected;
};

template <size_t count>
void expectAll(const char* part, const Row (&rows)[count], bool backwardCompatible = false) {
  for (const Row& row : rows) {
    EXPECT_EQ(resolved(withPart(part, schema(row.types)), backwardCompatible), row.expected) << row.types;
  }
}

#define MEMBERS(inside) "<xs:complexType name='T'>" inside "</xs:complexType>"
#define A "<xs:element name='a' type='xs:int'/>"
#define B "<xs:element name='b' type='t:B' minOccurs='0'/>"

TEST(Types, MembersStandInDocumentOrder) {
  const Row rows[] = {
      {MEMBERS(""), "complex T"},
      {MEMBERS("<xs:sequence>" A B "</xs:sequence>"), "complex T {a: xs:int, b: t:B optional}"},
      {MEMBERS("<xs:all>" A B "<xs:any/></xs:all>"), "complex T {a: xs:int, b: t:B optional}"},
      {MEMBERS("<xs:sequence>" A "<xs:choice>" A B "</xs:choice>" A "</xs:sequence>"),
       "complex T {a: xs:int, a: xs:int optional, b: t:B optional, a: xs:int}"},
      {MEMBERS("<xs:choice>" A "</xs:choice>"), "complex T {a: xs:int}"},
      {MEMBERS("<xs:choice>" A "<xs:any/></xs:choice>"), "complex T {a: xs:int optional}"},
      {MEMBERS("<xs:choice><xs:sequence>" A A "</xs:sequence>" A "</xs:choice>"),
       "complex T {a: xs:int optional, a: xs:int optional, a: xs:int optional}"},
      {MEMBERS("<xs:sequence maxOccurs='2'>" A B "</xs:sequence>"),
       "complex T {a: xs:int[], b: t:B[] optional}"},
      {MEMBERS("<xs:sequence minOccurs='0'>" A A "</xs:sequence>"),
       "complex T {a: xs:int optional, a: xs:int optional}"},
      {MEMBERS("<xs:sequence><xs:element name='a' type='xs:int' maxOccurs='unbounded'/>" A "</xs:sequence>"),
       "complex T {a: xs:int[], a: xs:int}"},
      {MEMBERS("<xs:sequence><xs:element name='a' type='xs:int' maxOccurs='01' minOccurs='00'/>" A
               "</xs:sequence>"),
       "complex T {a: xs:int optional, a: xs:int}"},
      // Bounds are numbers with blanks around them; what may not occur is no member and no alternative.
      {MEMBERS("<xs:sequence minOccurs='-1'>" A
               "<xs:element name='u' maxOccurs=' unbounded '/></xs:sequence>"),
       "complex T {a: xs:int optional, u:  of '' optional}"},
      {MEMBERS("<xs:all><xs:element name='a' type='t:T' minOccurs=' 0.5 ' maxOccurs=' +2 '/><xs:element "
               "name='b' type='t:T' minOccurs='+0'/></xs:all>"),
       "complex T {a: t:T[] optional, b: t:T}"},
      {MEMBERS("<xs:choice>" A "<xs:element ref='t:none' maxOccurs='0'/><xs:sequence maxOccurs=' +00 '>" B
               "</xs:sequence></xs:choice>"),
       "complex T {a: xs:int}"},
      {MEMBERS("<xs:sequence><xs:element name='a' maxOccurs='99999999999999999999'/>" A "</xs:sequence>"),
       "complex T {a:  of '', a: xs:int}"},
      {MEMBERS("<xs:sequence><xs:element name='a'><xs:simpleType/></xs:element>" A "</xs:sequence>"),
       "complex T {a: a of '', a: xs:int}"},
      {MEMBERS("<xs:sequence><xs:element name='self' type='t:T' minOccurs='0'/></xs:sequence>"),
       "complex T {self: t:T optional}"},
      {"<xs:complexType name='t'/>" MEMBERS("<xs:all>" A "</xs:all>"), "complex T {a: xs:int}"},
      {"<xs:complexType name='t'/>", "complex t"}};
  expectAll("type='t:T'", rows);
}

#define GROUP(name, inside) "<xs:group name='" name "'>" inside "</xs:group>"
#define SEQUENCE(inside) "<xs:sequence>" inside "</xs:sequence>"

TEST(Types, ReferencesAreFollowedInPlace) {
  const Row rows[] = {
      {MEMBERS(SEQUENCE("<xs:element ref='t:g' minOccurs='0' maxOccurs='9'/>" A))  //
       "<xs:element name='g' type='xs:long' nillable='true'/>",
       "complex T {g: xs:long[] optional, a: xs:int}"},
      {MEMBERS(SEQUENCE(A "<xs:group ref='t:g' minOccurs='0' maxOccurs='2'/><xs:group ref='t:h'/>"))  //
       GROUP("g", SEQUENCE(A "<xs:group ref='t:h'/>")) GROUP("h", "<xs:choice>" A B "</xs:choice>"),
       "complex T {a: xs:int, a: xs:int[] optional, a: xs:int[] optional, b: t:B[] optional, "
       "a: xs:int optional, b: t:B optional}"}};
  expectAll("type='t:T'", rows);
}

#define EXTENSION(base, inside) \
  "<xs:complexContent><xs:extension base='" base "'>" inside "</xs:extension></xs:complexContent>"
#define ARRAY(inside) \
  "<xs:complexContent><xs:restriction base='enc:Array'>" inside "</xs:restriction></xs:complexContent>"
#define ARRAY_TYPE(type) ARRAY("<xs:attribute ref='enc:arrayType' w:arrayType='" type "'/>")

#define TYPE(name, inside) "<xs:complexType name='" name "'>" inside "</xs:complexType>"

TEST(Types, ExtensionsBeginWithTheirBase) {
  const Row rows[] = {
      {MEMBERS(EXTENSION("t:U", SEQUENCE(B))) TYPE("U", EXTENSION("t:W", SEQUENCE(A)))  //
       TYPE("W", EXTENSION("t:V", "")) TYPE("V", SEQUENCE("<xs:element name='v' type='xs:int'/>")),
       "complex T : t:U {v: xs:int, a: xs:int, b: t:B optional}"},
      {MEMBERS(EXTENSION("xs:anyType", SEQUENCE(A))), "complex T : xs:anyType {a: xs:int}"},
      {MEMBERS(EXTENSION("t:U", "")) TYPE("U", ARRAY_TYPE("xs:int[]")),
       "array T item item : t:U {item: xs:int}"},
      {MEMBERS(EXTENSION("t:U", SEQUENCE(A))) TYPE("U", ARRAY_TYPE("xs:int[]")),
       "complex T : t:U {item: xs:int[], a: xs:int}"}};
  expectAll("type='t:T'", rows);
}

const Row arrays[] = {
    {MEMBERS(ARRAY_TYPE("xs:int[]")), "array T item item {item: xs:int}"},
    {MEMBERS(ARRAY_TYPE("t:B[][2,3]")), "array T item item {item: t:B[]}"},
    {MEMBERS(ARRAY(
         "<xs:sequence><xs:element name='x' type='t:B' minOccurs='0' maxOccurs='unbounded'/></xs:sequence>"
         "<xs:attribute ref='enc:arrayType' w:arrayType='t:C[]'/>")),
     "array T item x {x: t:B}"},
    {MEMBERS("<xs:complexContent><xs:restriction base='e:Array' "
             "xmlns:e='http://www.w3.org/2003/05/soap-encoding'>"
             "<xs:sequence>" A
             "</xs:sequence><xs:attributeGroup ref='e:x'/></xs:restriction></xs:complexContent>"),
     "array T item a {a: xs:int}"},
    {MEMBERS("<xs:sequence><xs:element name='x' type='t:B' minOccurs='0' maxOccurs='5'/></xs:sequence>"),
     "array T item x {x: t:B}"},
    {MEMBERS("<xs:sequence><xs:element name='x' maxOccurs='5'/></xs:sequence>"),
     "array T item x {x:  of ''}"}};

TEST(Types, ArraysAreArraysInRpcStyle) { expectAll("type='t:T'", arrays); }

// The same types, asked through an element: a member that repeats, unless an older answer is wanted.
TEST(Types, ArraysAreStructuresInDocumentStyle) {
  const char* expected[] = {"complex T {item: xs:int[]}",    "complex T {item: t:B[][]}",
                            "complex T {x: t:B[]}",          "complex T {a: xs:int[]}",
                            "complex T {x: t:B[] optional}", "complex T {x:  of ''}"};
  for (size_t i = 0; i < std::size(arrays); ++i) {
    const std::string types = schema(std::string(arrays[i].types) + "<xs:element name='e' type='t:T'/>");
    EXPECT_EQ(resolved(withPart("element='t:e'", types)), expected[i]) << types;
    EXPECT_EQ(resolved(withPart("element='t:e'", types), true), arrays[i].expected) << types;
  }
}

TEST(Types, OfElementsAreNamedOrWrittenInside) {
  const Row rows[] = {
      {"<xs:element name='e' type='xs:BASE64Binary'/>",
       "atomic base64binary of http://www.w3.org/2001/XMLSchema"},
      {"<xs:element name='e'/>", "complex e"},
      {"<xs:element name='e'><xs:complexType><xs:all>" A "</xs:all></xs:complexType></xs:element>",
       "complex e {a: xs:int}"},
      {"<xs:element name='e'><xs:simpleType><xs:restriction base='xs:int'/></xs:simpleType></xs:element>",
       "simple e"},
      {"<xs:element name='E' type='xs:int'/><xs:element name='e' type='xs:long'/>",
       "atomic long of http://www.w3.org/2001/XMLSchema"}};
  expectAll("element='t:e'", rows);
}

#define SIMPLE(inside) "<xs:simpleType name='T'>" inside "</xs:simpleType>"

TEST(Types, SimpleOnesAreEnumerationsOrOneValue) {
  const Row rows[] = {
      {SIMPLE("<xs:annotation/><xs:restriction base='xs:string'><xs:enumeration value='x'/><xs:maxLength "
              "value='1'/>"
              "<xs:enumeration value=''/><xs:enumeration/></xs:restriction>"),
       "enumeration T {x: xs:string, : xs:string, : xs:string}"},
      {SIMPLE("<xs:restriction "
              "base='xs:int'><xs:annotation/><xs:whiteSpace/><xs:fractionDigits/><xs:totalDigits/>"
              "<xs:maxExclusive/><xs:minExclusive/><xs:maxInclusive/><xs:minInclusive/><xs:maxLength/"
              "><xs:minLength/>"
              "<xs:length/><xs:pattern/></xs:restriction>"),
       "simple T"},
      {SIMPLE(""), "simple T"},
      {MEMBERS("<xs:simpleContent><xs:extension base='nobody:x'/></xs:simpleContent>"), "simple T"}};
  expectAll("type='t:T'", rows);
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
  const std::string useU = "<xs:complexType name='T'>" EXTENSION("U", "") "</xs:complexType>";
  const std::string bare = "type='T' xmlns=''";
  EXPECT_EQ(resolved(withPart(bare, plain)), "complex T");
  EXPECT_EQ(resolved(withPart(bare, schema(""))), "Can't find schema with targetNamespace=");
  EXPECT_EQ(resolved(withPart(bare, "<xs:schema/>")),
            "Cannot find a schema with targetNamespace= and customType=T");
  // In its own schema, and before that in one without a namespace.
  const std::string own = schema(useU + "<xs:complexType name='U'/>", "targetNamespace='urn:t' xmlns=''");
  EXPECT_EQ(resolved(withPart("type='t:T'", own)), "complex T : U");
  EXPECT_EQ(resolved(withPart("type='t:T'", own + "<xs:schema><xs:complexType name='U'><xs:all>" A
                                                  "</xs:all></xs:complexType></xs:schema>")),
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
