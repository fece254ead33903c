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

// The message of the exception that a body ends with; nothing when it ends well.
template <class Body>
std::optional<std::wstring> faultOf(Body&& body) {
  try {
    body();
    return std::nullopt;
  } catch (const tovin::MemoryException&) {
    throw;
  } catch (const tovin::Exception& e) {
    return e.getMessage();
  }
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

CCustomType TypeBuilder::build(iNode* definition, const tovin::WideString& name, bool arrays) {
  type_ = CCustomType();
  type_.node = tovin::Ptr<iNode>(definition);
  type_.name = name;
  arrays_ = arrays;
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
  Known& known = require(definition);
  if (known.fault) throw tovin::Exception(known.fault->c_str());
  if (!known.counted) countBorrowed(known.inheritedCount, type_.name);
  known.counted = true;
  if (isNamed(known.level.content, L"extension")) {
    type_.superClass = orEmpty(attributeText(known.level.content, L"base"));
  }
  std::vector<const Known*> types;
  for (const Known* type = &known; type; type = type->inherited) types.push_back(type);
  std::vector<const Member*> members;
  for (size_t i = types.size(); i > 0; --i) {
    for (const Member& member : types[i - 1]->members) members.push_back(&member);
  }
  processMembers(members);
}

// Types that inherit from one another, or open the same groups, multiply: no real document comes near this.
void TypeBuilder::countBorrowed(size_t count, const tovin::WideString& name) {
  constexpr size_t mostBorrowed = 500'000;
  if (count > mostBorrowed - borrowed_) {
    throw tovin::Exception(L"Too many members are inherited or come out of groups, at type %ls", name);
  }
  borrowed_ += count;
}

// Reads the type and those that it extends, as far as they are not known.
TypeBuilder::Known& TypeBuilder::require(iNode* definition) {
  const auto found = known_.find(definition);
  if (found != known_.end()) return found->second;
  Levels levels;
  const auto fault = findLevels(definition, levels);
  if (fault) {
    for (const auto& [type, level] : levels) learn(type, level, fault);
  }
  const iNode* last = levels.back().second.base;
  if (!fault && last && !known_.count(last)) learnCircle(levels, last);
  for (size_t i = levels.size(); i > 0; --i) {
    const auto& [type, level] = levels[i - 1];
    if (!known_.count(type)) learn(type, level, std::nullopt);
  }
  return known_.at(definition);
}

// The types outward up to one that is known or met again; the last one may have a fault.
std::optional<std::wstring> TypeBuilder::findLevels(iNode* definition, Levels& levels) const {
  std::unordered_set<const iNode*> met;
  for (iNode* type = definition; type && !known_.count(type); type = levels.back().second.base) {
    if (!met.insert(type).second) break;
    levels.emplace_back(type, Level());
    const auto fault = faultOf([&] { levels.back().second = levelOf(type); });
    if (fault) return fault;
  }
  return std::nullopt;
}

// A type that inherits from itself has no end: each is told the name that leads back to where it was met
// first.
void TypeBuilder::learnCircle(const Levels& levels, const iNode* entry) {
  bool inside = false;
  for (size_t i = 0; i < levels.size(); ++i) {
    const Level& back = inside ? levels[i - 1].second : levels.back().second;
    inside = inside || levels[i].first == entry;
    learn(levels[i].first, levels[i].second, faultOf([&] { refuse(attributeText(back.content, L"base")); }));
  }
}

void TypeBuilder::learn(iNode* definition, const Level& level, const std::optional<std::wstring>& fault) {
  Known known;
  known.definition = tovin::Ptr<iNode>(definition);
  known.level = level;
  known.fault = fault;
  if (level.base && !fault) {
    const Known& base = known_.at(level.base);
    known.fault = base.fault;
    known.inherited = base.members.empty() ? base.inherited : &base;
    known.inheritedCount = base.members.size() + base.inheritedCount;
  }
  const bool asked = type_.node.get() == definition;
  const tovin::WideString name = asked ? type_.name : orEmpty(attributeText(definition, L"name"));
  if (!known.fault) known.fault = faultOf([&] { readMembers(known, name); });
  known_.emplace(definition, std::move(known));
}

void TypeBuilder::readMembers(Known& known, const tovin::WideString& name) {
  iNode* content = known.level.content;
  refuseAttributes(content);
  MemberCollector collector(schemas_, name);
  std::vector<Member> members = collector.collect(content);
  countBorrowed(collector.opened(), name);
  if (known.level.isArray) members = {arrayItem(content, std::move(members))};
  known.members = std::move(members);
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
Member TypeBuilder::arrayItem(iNode* restriction, std::vector<Member> members) const {
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
void TypeBuilder::processMembers(const std::vector<const Member*>& members) {
  if (members.size() == 1 && members.front()->repeats) return processArrayType(*members.front());
  type_.kind = CWsdlParser::KindComplex;
  type_.elements.reserve(members.size());
  for (const Member* member : members) type_.elements.add(repeatedElement(*member));
}

// As an array it has an item, which is there by its nature; as a structure it has a member with its own
// bounds.
void TypeBuilder::processArrayType(const Member& item) {
  type_.kind = arrays_ ? CWsdlParser::KindArray : CWsdlParser::KindComplex;
  if (!arrays_) return static_cast<void>(type_.elements.add(repeatedElement(item)));
  type_.itemName = item.element.name;
  type_.elements.add(item.element).required = true;
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
