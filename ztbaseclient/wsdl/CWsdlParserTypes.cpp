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

tovin::WideString localName(const tovin::WideString& name) {
  return tovin::WideString(QualifiedName(name).local);
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

bool CWsdlParser::isOfAtomicType(const iNode* where, const tovin::WideString& typeName) {
  const QualifiedName name(typeName);
  if (!name.wellFormed) return false;
  return isOfBuiltInTypes(state_->schemas.boundAt(where, name.prefix)) &&
         isInAtomicTypeList(name.local.c_str());
}

// The text of a member whose type is written inside it is no reference.
bool CWsdlParser::IsOfAtomicType(const CElement& element, Style) {
  return guarded({ClassName, "IsOfAtomicType"}, [&] {
    const iNode* where = element.node ? element.node.get() : requireRoot();
    if (isElement(element) && attributeText(where, L"type").isEmpty()) return false;
    return isOfAtomicType(where, element.type);
  });
}

bool CWsdlParser::IsOfAtomicType(const CPart& part) {
  return guarded({ClassName, "IsOfAtomicType"}, [&] {
    if (!part.element.isEmpty()) {
      const iNode* element = requireElement(part);
      return isOfAtomicType(element, attributeText(element, L"type"));
    }
    return isOfAtomicType(part.node ? part.node.get() : requireRoot(), part.type);
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
  if (!part.element.isEmpty()) return resolveElement(requireElement(part), type);
  return resolveType(part.node ? part.node.get() : requireRoot(), part.type, type);
}

bool CWsdlParser::GetElementsCustomType(const CElement& element, CCustomType& type) {
  return guarded({ClassName, "GetElementsCustomType"}, [&] {
    if (isElement(element)) return resolveElement(element.node.get(), type);
    return resolveType(element.node ? element.node.get() : requireRoot(), element.type, type);
  });
}

// The type that an element names, else the one that is written inside it; with neither it is a structure
// without members.
bool CWsdlParser::resolveElement(iNode* element, CCustomType& type) {
  const tovin::WideString typeName = attributeText(element, L"type");
  if (!typeName.isEmpty()) return resolveType(element, typeName, type);
  iNode* inside = childNamed(element, L"complexType");
  if (!inside) inside = childNamed(element, L"simpleType");
  build(inside ? inside : element, findAttrVal(element, L"name"), type);
  return true;
}

bool CWsdlParser::resolveType(iNode* where, const tovin::WideString& typeName, CCustomType& type) {
  tovin::WideString text = typeName.isNull() ? tovin::WideString(L"") : typeName;
  StripArrayFromTypeName(text);
  const QualifiedName name(text);
  if (!name.wellFormed) throw tovin::Exception(L"Can't understand custom type: \"%ls\"", text);
  const tovin::WideString uri = state_->schemas.namespaceOf(where, name);
  if (isOfBuiltInTypes(uri)) {
    if (!isInAtomicTypeList(name.local.c_str())) {
      throw tovin::Exception(L"Can't understand custom type: \"%ls\"", text);
    }
    type = CCustomType();
    type.name = state_->lastAtomicType;
    type.kind = KindSimple;
    type.typeNamespace.setUrl(uri);
    return false;
  }
  if (GetSchemaInfo().isEmpty()) {
    throw tovin::Exception(L"Can't find <schema> node in wsdl, needed for definition of type %ls", text);
  }
  const SchemaSet::Place place = state_->schemas.placeOf(where, name);
  iNode* definition = requireDeclaredType(state_->schemas, place, name.local, text);
  build(definition, attributeText(definition, L"name"), type);
  return true;
}

void CWsdlParser::build(iNode* definition, const tovin::WideString& name, CCustomType& type) {
  const bool arrays = state_->style == RPC || state_->backwardCompatible;
  CCustomType built = TypeBuilder(state_->schemas, arrays).build(definition, name);
  const tovin::WideString uri = FindTargetNamespace(definition);
  if (uri.isEmpty()) throw tovin::Exception(L"Can't find target namespace for type %ls", name);
  built.typeNamespace.setUrl(uri);
  if (const CSchema* schema = state_->schemas.enclosing(definition)) built.schema = *schema;
  type = std::move(built);
}

void CWsdlParser::GetCustomTypeOutOfSchema(const CSchema& schema, const tovin::WideString& typeName,
                                           CCustomType& type) {
  guarded({ClassName, "GetCustomTypeOutOfSchema"}, [&] {
    if (!schema.node) throw tovin::Exception(L"Cannot dereference a NULL pointer");
    tovin::WideString text(typeName);
    StripArrayFromTypeName(text);
    const SchemaSet::Place place = state_->schemas.placeOf(schema);
    const tovin::WideString local = localName(text);
    iNode* definition = state_->schemas.find(place, {Kind::complexType, Kind::simpleType}, local.view());
    if (!definition) throw tovin::Exception(L"Unknown node type defines type with name %ls", text);
    build(definition, attributeText(definition, L"name"), type);
  });
}

bool CWsdlParser::IsCustomTypeInSchema(const CSchema& schema, tovin::WideString& typeName) {
  return guarded({ClassName, "IsCustomTypeInSchema"}, [&] {
    if (!schema.node) throw tovin::Exception(L"Cannot dereference a NULL pointer");
    StripArrayFromTypeName(typeName);
    const SchemaSet::Place place = state_->schemas.placeOf(schema);
    const tovin::WideString local = localName(typeName);
    return state_->schemas.find(place, {Kind::complexType, Kind::simpleType}, local.view()) != nullptr;
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
    const iNode* where = element.node ? element.node.get() : requireRoot();
    const bool refers = !isElement(element) || !attributeText(where, L"type").isEmpty();
    const QualifiedName type(element.type);
    const tovin::WideString uri =
        refers && type.wellFormed ? state_->schemas.boundAt(where, type.prefix) : tovin::WideString();
    return uri.isNull() ? tovin::WideString(L"") : uri;
  });
}
