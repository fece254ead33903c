#include "ztbaseclient/wsdl/TypeBuilder.h"

#include <unordered_set>
#include <utility>

#include "tovinCore/Units.h"

using tovin::iNode;
using CCustomType = CWsdlParser::CCustomType;
using Kind = SchemaSet::Kind;

namespace {

// What a restriction of a simple type may say besides its enumeration.
constexpr std::wstring_view facets[] = {L"annotation",   L"whiteSpace",   L"fractionDigits", L"totalDigits",
                                        L"maxExclusive", L"minExclusive", L"maxInclusive",   L"minInclusive",
                                        L"maxLength",    L"minLength",    L"length",         L"pattern"};

bool isFacet(const iNode* node) {
  for (const std::wstring_view facet : facets) {
    if (isNamed(node, facet)) return true;
  }
  return false;
}

tovin::WideString orEmpty(const tovin::WideString& text) {
  return text.isNull() ? tovin::WideString(L"") : text;
}

[[noreturn]] void refuse(const tovin::WideString& typeName) {
  throw tovin::Exception(L"Can't understand custom type: \"%ls\"", orEmpty(typeName));
}

// An array's own bounds are the last pair of brackets: what is left is the type of its item.
tovin::WideString itemType(const tovin::WideString& arrayType) {
  const size_t bracket = arrayType.findLast(L'[');
  return bracket == tovin::WideString::npos ? arrayType : arrayType.subString(0, bracket);
}

CWsdlParser::CElement repeatedElement(const Member& member) {
  CWsdlParser::CElement element = member.element;
  if (member.repeats && !element.type.isEmpty()) element.type += L"[]";
  return element;
}

[[noreturn]] void refuseSimpleContent(const iNode* node) {
  throw tovin::Exception(L"<simpleType> with <%ls> types or restriction is not supported.", node->getName());
}

}  // namespace

iNode* requireDeclaredType(const SchemaSet& schemas, const SchemaSet::Place& place, std::wstring_view name,
                           const wchar_t* text) {
  if (!schemas.findFirst(place)) {
    throw tovin::Exception(L"Can't find schema with targetNamespace=%ls", orEmpty(place.uri));
  }
  iNode* definition = schemas.find(place, {Kind::complexType, Kind::simpleType}, name);
  if (!definition) {
    throw tovin::Exception(L"Cannot find a schema with targetNamespace=%ls and customType=%ls",
                           orEmpty(place.uri), text);
  }
  return definition;
}

iNode* requireDeclaredElement(const SchemaSet& schemas, const SchemaSet::Place& place, std::wstring_view name,
                              const wchar_t* text) {
  if (!schemas.findFirst(place)) {
    throw tovin::Exception(L"Can't find schema with targetNamespace=%ls", orEmpty(place.uri));
  }
  iNode* element = schemas.find(place, {Kind::element}, name);
  if (!element) {
    throw tovin::Exception(L"Cannot find a schema with targetNamespace = %ls and element = %ls",
                           orEmpty(place.uri), text);
  }
  return element;
}

CCustomType TypeBuilder::build(iNode* definition, const tovin::WideString& name) {
  type_ = CCustomType();
  type_.node = tovin::Ptr<iNode>(definition);
  type_.name = name;
  if (isNamed(definition, L"simpleType"))
    processSimpleType(definition);
  else
    processComplexType(definition);
  return std::move(type_);
}

// The faults of a base come before those of the type itself, its attributes' before its members'.
void TypeBuilder::processComplexType(iNode* definition) {
  if (iNode* simpleContent = childNamed(definition, L"simpleContent")) {
    forChildren(simpleContent, [&](iNode* content) { refuseAttributes(content); });
    type_.kind = CWsdlParser::KindSimple;
    return;
  }
  const std::vector<Level> levels = levelsOf(definition);
  MemberCollector collector(schemas_, type_.name);
  std::vector<Member> members;
  for (size_t i = levels.size(); i > 0; --i) {
    const Level& level = levels[i - 1];
    refuseAttributes(level.content);
    if (level.isArray)
      members.push_back(arrayItem(level.content));
    else
      collector.collect(level.content, members);
  }
  processMembers(members);
}

// The type and the types that it extends, itself first.
std::vector<TypeBuilder::Level> TypeBuilder::levelsOf(iNode* definition) {
  std::vector<Level> levels;
  std::unordered_set<const iNode*> met;
  for (iNode* type = definition; type; type = levels.back().base) {
    // A type that inherits from itself has no end.
    if (!met.insert(type).second) refuse(attributeText(levels.back().content, L"base"));
    levels.push_back(levelOf(type));
    if (type == definition && isNamed(levels.back().content, L"extension")) {
      type_.superClass = orEmpty(attributeText(levels.back().content, L"base"));
    }
  }
  return levels;
}

TypeBuilder::Level TypeBuilder::levelOf(iNode* type) const {
  if (iNode* complexContent = childNamed(type, L"complexContent"))
    return processComplexContent(complexContent);
  iNode* simpleContent = childNamed(type, L"simpleContent");
  if (!simpleContent) return {type, false, nullptr};
  iNode* extension = childNamed(simpleContent, L"extension");
  return {extension ? extension : simpleContent, false, nullptr};
}

TypeBuilder::Level TypeBuilder::processComplexContent(iNode* complexContent) const {
  if (iNode* extension = childNamed(complexContent, L"extension")) {
    return {extension, false, findBase(extension)};
  }
  iNode* restriction = childNamed(complexContent, L"restriction");
  if (!restriction) throw tovin::Exception(L"<complexContent> other than an array is not supported");
  requireArrayBase(restriction);
  return {restriction, true, nullptr};
}

// Null for the type that every type extends.
iNode* TypeBuilder::findBase(const iNode* extension) const {
  const QualifiedName name(attributeText(extension, L"base"));
  if (!name.wellFormed) refuse(name.text);
  CWsdlParser::CNamespace space;
  space.setUrl(schemas_.namespaceOf(extension, name));
  if (space.isXmlSchemaNs() &&
      tovin::equalFolded(std::wstring_view(name.local), std::wstring_view(L"anyType"))) {
    return nullptr;
  }
  if (space.isXmlSchemaNs() || space.isSoapEncodingNs()) refuse(name.text);
  iNode* base = requireDeclaredType(schemas_, schemas_.placeOf(extension, name), name.local, name.text);
  if (isNamed(base, L"simpleType")) refuse(name.text);
  return base;
}

void TypeBuilder::requireArrayBase(const iNode* restriction) const {
  const QualifiedName name(attributeText(restriction, L"base"));
  CWsdlParser::CNamespace space;
  if (name.wellFormed) space.setUrl(schemas_.namespaceOf(restriction, name));
  const bool encoding = space.isSoapEncodingNs() || space.isSoap12EncodingNs();
  if (encoding && tovin::equalFolded(std::wstring_view(name.local), std::wstring_view(L"Array"))) return;
  throw tovin::Exception(L"Can't handle <restriction> to base type (%ls)", orEmpty(name.text));
}

void TypeBuilder::refuseAttributes(iNode* content) const {
  forChildren(content, [&](const iNode* child) {
    if (!isNamed(child, L"attribute") && !isNamed(child, L"attributeGroup")) return;
    const tovin::WideString reference = attributeText(child, L"ref");
    CWsdlParser::CNamespace space;
    if (!reference.isEmpty()) space.setUrl(schemas_.boundAt(child, QualifiedName(reference).prefix));
    if (space.isSoapEncodingNs() || space.isSoap12EncodingNs()) return;
    throw tovin::Exception(L"Complex types with custom attributes are not supported");
  });
}

// The element that the array declares, else one of the type that its attribute "arrayType" names.
Member TypeBuilder::arrayItem(iNode* restriction) const {
  std::vector<Member> members;
  MemberCollector(schemas_, type_.name).collect(restriction, members);
  if (members.empty()) {
    forChildren(restriction, [&](iNode* child) {
      const tovin::WideString type =
          isNamed(child, L"attribute") ? itemType(findAttrVal(child, L"arrayType")) : tovin::WideString();
      if (type.isEmpty() || !members.empty()) return;
      Member& item = members.emplace_back();
      item.element.name = L"item";
      item.element.type = type;
      placeAt(schemas_, item.element, child);
    });
  }
  if (members.empty()) throw tovin::Exception(L"Can't have an array with no elements");
  members.front().repeats = true;
  members.front().element.required = true;
  return members.front();
}

// A type whose only member repeats is the wrapper of an array.
void TypeBuilder::processMembers(std::vector<Member>& members) {
  if (members.size() == 1 && members.front().repeats) return processArrayType(members.front());
  type_.kind = CWsdlParser::KindComplex;
  type_.elements.reserve(members.size());
  for (const Member& member : members) type_.elements.add(repeatedElement(member));
}

// As an array it has an item, which is there by its nature; as a structure it has a member with its own
// bounds.
void TypeBuilder::processArrayType(Member& item) {
  type_.kind = arrays_ ? CWsdlParser::KindArray : CWsdlParser::KindComplex;
  if (!arrays_) return static_cast<void>(type_.elements.add(repeatedElement(item)));
  item.element.required = true;
  type_.itemName = item.element.name;
  type_.elements.add(item.element);
}

void TypeBuilder::processSimpleType(iNode* definition) {
  type_.kind = CWsdlParser::KindSimple;
  forChildren(definition, [&](iNode* child) {
    if (isNamed(child, L"restriction"))
      processSimpleTypeRestriction(child);
    else if (!isNamed(child, L"annotation"))
      refuseSimpleContent(child);
  });
}

void TypeBuilder::processSimpleTypeRestriction(iNode* restriction) {
  const tovin::WideString base = orEmpty(attributeText(restriction, L"base"));
  forChildren(restriction, [&](iNode* child) {
    if (isNamed(child, L"enumeration"))
      processEnumeration(child, base);
    else if (!isFacet(child))
      refuseSimpleContent(child);
  });
}

void TypeBuilder::processEnumeration(iNode* enumeration, const tovin::WideString& base) {
  type_.kind = CWsdlParser::KindEnumeration;
  CWsdlParser::CElement& value = type_.elements.add(CWsdlParser::CElement());
  value.name = orEmpty(attributeText(enumeration, L"value"));
  value.type = base;
  placeAt(schemas_, value, enumeration);
}
