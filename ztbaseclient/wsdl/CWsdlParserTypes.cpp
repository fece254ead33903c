// Questions about types: of parts, of members, of names in a schema.
#include "tovinCore/Guard.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/wsdl/CPart.h"
#include "ztbaseclient/wsdl/TypeBuilder.h"
#include "ztbaseclient/wsdl/WsdlParserState.h"

using tovin::guarded;
using tovin::iNode;
using Kind = SchemaSet::Kind;

namespace {

// "base64binary" is written so on purpose: the search ignores case, and this form is what callers are told.
constexpr const wchar_t* atomicTypes[] = {L"boolean",      L"string", L"integer",  L"long",  L"int",
                                          L"short",        L"byte",   L"decimal",  L"float", L"double",
                                          L"base64binary", L"anyURI", L"dateTime", L"date",  L"unsignedInt"};

constexpr wchar_t arraySuffix[] = L"[]";

// The namespaces whose types are atomic, or else not understood.
bool isOfBuiltInTypes(const tovin::WideString& uri) {
  CWsdlParser::CNamespace space;
  space.setUrl(uri);
  return space.isXmlSchemaNs() || space.isSoapEncodingNs();
}

bool isElement(const CWsdlParser::CElement& element) {
  return element.node && isNamed(element.node.get(), L"element");
}

iNode* findType(const SchemaSet& schemas, const CWsdlParser::CSchema& schema, const tovin::WideString& name) {
  return schemas.findIn(schema, {Kind::complexType, Kind::simpleType}, QualifiedName(name).local);
}

}  // namespace

const tovin::WideString& CWsdlParser::GetLastAtomicTypeQueried() const noexcept {
  return state_->lastAtomicType;
}

bool CWsdlParser::isInAtomicTypeList(const wchar_t* localName) {
  for (const wchar_t* entry : atomicTypes) {
    if (!tovin::equalFolded(entry, localName)) continue;
    state_->lastAtomicType = tovin::WideString(entry);
    return true;
  }
  return false;
}

bool CWsdlParser::isOfAtomicType(const Origin& origin, const tovin::WideString& typeName) {
  const QualifiedName name(typeName);
  if (!name.wellFormed) return false;
  return isOfBuiltInTypes(state_->schemas.boundAt(origin, name.prefix)) &&
         isInAtomicTypeList(name.local.c_str());
}

// The text of a member whose type is written inside it is no reference.
bool CWsdlParser::IsOfAtomicType(const CElement& element, Style) {
  return guarded({ClassName, "IsOfAtomicType"}, [&] {
    if (isElement(element) && attributeText(element.node.get(), L"type").isEmpty()) return false;
    return isOfAtomicType(Origin::of(element), element.type);
  });
}

bool CWsdlParser::IsOfAtomicType(const CPart& part) {
  return guarded({ClassName, "IsOfAtomicType"}, [&] {
    if (part.element.isEmpty()) return isOfAtomicType(Origin::of(part), part.type);
    const iNode* element = requireElement(part).node;
    return isOfAtomicType(element, attributeText(element, L"type"));
  });
}

bool CWsdlParser::GetCustomTypeInfoRPC(const CPart& part, CCustomType& type) {
  return guarded({ClassName, "GetCustomTypeInfoRPC"}, [&] { return resolvePart(RPC, part, type); });
}

bool CWsdlParser::GetCustomTypeInfoDoc(const CPart& part, CCustomType& type) {
  return guarded({ClassName, "GetCustomTypeInfoDoc"}, [&] { return resolvePart(DOC, part, type); });
}

bool CWsdlParser::resolvePart(Style style, const CPart& part, CCustomType& type) {
  state_->style = style;
  return resolve(definitionOf(part), type);
}

bool CWsdlParser::GetElementsCustomType(const CElement& element, CCustomType& type) {
  return guarded({ClassName, "GetElementsCustomType"}, [&] {
    if (isElement(element)) return resolve(definitionOfElement(element.node.get(), {}), type);
    return resolve(definitionOfType(Origin::of(element), element.type, {}), type);
  });
}

iNode* CWsdlParser::FindTypeDefinition(const CPart& part, CNamespace& typeNamespace) {
  return guarded({ClassName, "FindTypeDefinition"}, [&] {
    const Definition definition = definitionOf(part);
    typeNamespace.setUrl(definition.node ? namespaceAround(definition) : definition.space);
    return definition.node;
  });
}

CWsdlParser::Definition CWsdlParser::definitionOf(const CPart& part) {
  if (part.element.isEmpty()) return definitionOfType(Origin::of(part), part.type, {});
  const Definition element = requireElement(part);
  return definitionOfElement(element.node, element.space);
}

// The type that an element names, else the one that is written inside it; with neither it is a structure
// without members.
CWsdlParser::Definition CWsdlParser::definitionOfElement(iNode* element, const tovin::WideString& space) {
  const tovin::WideString typeName = attributeText(element, L"type");
  if (!typeName.isEmpty()) return definitionOfType(element, typeName, space);
  iNode* inside = childNamed(element, L"complexType");
  if (!inside) inside = childNamed(element, L"simpleType");
  return {inside ? inside : element, space, findAttrVal(element, L"name")};
}

CWsdlParser::Definition CWsdlParser::definitionOfType(const Origin& origin, const tovin::WideString& typeName,
                                                      const tovin::WideString& space) {
  tovin::WideString text = typeName.isNull() ? tovin::WideString(L"") : typeName;
  StripArrayFromTypeName(text);
  const QualifiedName name(text);
  if (!name.wellFormed) throw tovin::Exception(L"Can't understand custom type: \"%ls\"", text);
  const tovin::WideString uri = state_->schemas.namespaceOf(origin, name);
  if (isOfBuiltInTypes(uri)) {
    if (!isInAtomicTypeList(name.local.c_str())) {
      throw tovin::Exception(L"Can't understand custom type: \"%ls\"", text);
    }
    return {nullptr, uri, state_->lastAtomicType};
  }
  if (GetSchemaInfo().isEmpty()) {
    throw tovin::Exception(L"Can't find <schema> node in wsdl, needed for definition of type %ls", text);
  }
  const SchemaSet::Place place = state_->schemas.placeOf(origin, name);
  iNode* definition = requireDeclaredType(state_->schemas, place, name.local, text);
  return {definition, place.uri.isNull() ? space : place.uri, attributeText(definition, L"name")};
}

bool CWsdlParser::resolve(const Definition& definition, CCustomType& type) {
  CCustomType built;
  if (!definition.node) {
    built.name = definition.name;
    built.kind = KindSimple;
    built.typeNamespace.setUrl(definition.space);
    type = std::move(built);
    return false;
  }
  const bool arrays = state_->style == RPC || state_->backwardCompatible;
  if (state_->root) GetSchemaInfo();
  if (!state_->types) state_->types = std::make_unique<TypeBuilder>(state_->schemas);
  built = state_->types->build(definition.node, definition.name, arrays);
  const tovin::WideString uri = namespaceAround(definition);
  if (uri.isEmpty()) throw tovin::Exception(L"Can't find target namespace for type %ls", definition.name);
  built.typeNamespace.setUrl(uri);
  if (const CSchema* schema = state_->schemas.enclosing(definition.node)) built.schema = *schema;
  type = std::move(built);
  return true;
}

// The namespace that the definition was asked for in, where it belongs to that one among others.
tovin::WideString CWsdlParser::namespaceAround(const Definition& definition) {
  const std::vector<tovin::WideString> spaces = state_->schemas.namespacesAround(definition.node);
  for (const tovin::WideString& space : spaces) {
    if (tovin::equalFolded(space.c_str(), definition.space.c_str())) return space;
  }
  return spaces.front();
}

// Before a schema is searched: it may have been kept from a document that is gone.
void CWsdlParser::requireSearchable(const CSchema& schema) {
  if (!schema.node) throw tovin::Exception(L"Cannot dereference a NULL pointer");
  if (state_->root) GetSchemaInfo();
}

void CWsdlParser::GetCustomTypeOutOfSchema(const CSchema& schema, const tovin::WideString& typeName,
                                           CCustomType& type) {
  guarded({ClassName, "GetCustomTypeOutOfSchema"}, [&] {
    tovin::WideString text = typeName.isNull() ? tovin::WideString(L"") : typeName;
    StripArrayFromTypeName(text);
    requireSearchable(schema);
    iNode* definition = findType(state_->schemas, schema, text);
    if (!definition) throw tovin::Exception(L"Unknown node type defines type with name %ls", text);
    resolve({definition, {}, attributeText(definition, L"name")}, type);
    type.schema = schema;
  });
}

bool CWsdlParser::IsCustomTypeInSchema(const CSchema& schema, tovin::WideString& typeName) {
  return guarded({ClassName, "IsCustomTypeInSchema"}, [&] {
    requireSearchable(schema);
    StripArrayFromTypeName(typeName);
    return findType(state_->schemas, schema, typeName) != nullptr;
  });
}

bool CWsdlParser::IsArrayType(iNode* element) {
  return guarded({ClassName, "IsArrayType"}, [&] {
    if (!element) throw tovin::Exception(L"Cannot dereference a NULL pointer");
    return mayRepeat(element);
  });
}

void CWsdlParser::StripArrayFromTypeName(tovin::WideString& typeName) {
  guarded({ClassName, "StripArrayFromTypeName"}, [&] {
    const size_t at = typeName.find(arraySuffix);
    if (at == tovin::WideString::npos) return;
    tovin::WideString rest = typeName.subString(0, at);
    rest += typeName.view().substr(at + 2);
    typeName = rest;
  });
}

tovin::WideString CWsdlParser::FindTypeNamespace(const CElement& element) {
  return guarded({ClassName, "FindTypeNamespace"}, [&] {
    const bool refers = !isElement(element) || !attributeText(element.node.get(), L"type").isEmpty();
    tovin::WideString text = element.type;
    StripArrayFromTypeName(text);
    const QualifiedName type(text);
    if (!refers || !type.wellFormed) return tovin::WideString(L"");
    const tovin::WideString uri = state_->schemas.boundAt(Origin::of(element), type.prefix);
    return uri.isNull() ? tovin::WideString(L"") : uri;
  });
}
