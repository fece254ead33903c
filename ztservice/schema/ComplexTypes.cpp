// Complex types: what they are derived from, and arrays of the SOAP encodings.
#include <algorithm>

#include "ztservice/schema/Attributes.h"
#include "ztservice/schema/Builtins.h"
#include "ztservice/schema/Particles.h"
#include "ztservice/schema/Resolver.h"

namespace ztservice::schema {

using parse::Node;
using parse::Word;

namespace {

const Node* contentOf(const Node& complexType) {
  const Node* content = complexType.child(Word::complexContent);
  return content ? content : complexType.child(Word::simpleContent);
}

bool isSimple(const Type& type) { return type.kind != Type::Kind::complex && type.kind != Type::Kind::array; }

// Of anyType, whatever its name, nothing is inherited.
bool givesNothing(const TypeEntry& base) { return !base.at.node && base.kind == Type::Kind::complex; }

bool hasFacets(const Node& restriction) {
  const Node* child = restriction.first;
  while (child && !child->isSchema(Word::facet) && !child->isSchema(Word::enumeration)) child = child->next;
  return child != nullptr;
}

TypeReference referenceTo(const TypeEntry& type) { return {type.name, type.name.empty() ? &type : nullptr}; }

}  // namespace

void Resolver::prepareComplex(TypeEntry& type) {
  const Node* content = contentOf(*type.at.node);
  if (!content) return;
  type.derivation = content->child(Word::extension);
  if (!type.derivation) type.derivation = content->child(Word::restriction);
  if (!type.derivation) throw Unresolved{"its content is neither an extension nor a restriction"};
  if (!type.derivation->has(Word::base)) throw Unresolved{"derived without base"};
  type.basis = &neededType(*type.derivation, type.derivation->get(Word::base), type.at);
}

void Resolver::buildComplex(TypeEntry& type) {
  const Node& node = *type.at.node;
  type.mixed = node.flag(Word::mixed);
  type.isAbstract = node.flag(Word::abstract);
  type.basis ? buildDerived(type) : buildPlain(type);
  if (type.isAbstract && !type.name.empty()) addDerived(type);
}

void Resolver::buildPlain(TypeEntry& type) {
  Particles(*this, type).read(*type.at.node, type.members);
  Attributes attributes(*this, type);
  attributes.read(*type.at.node);
  attributes.append(type.attributes);
  type.anyAttribute = attributes.any();
}

void Resolver::buildDerived(TypeEntry& type) {
  const TypeEntry& base = *type.basis;
  const Node& content = *contentOf(*type.at.node);
  const bool extends = type.derivation->word == Word::extension;
  const bool inherits = !givesNothing(base);
  type.base = base.name;
  if (base.kind == Type::Kind::array) {
    buildArray(type);
    return;
  }
  if (content.has(Word::mixed)) type.mixed = content.flag(Word::mixed);
  if (content.word == Word::simpleContent || isSimple(base)) {
    buildText(type);
  } else {
    if (extends && inherits) {
      spend(base.members.size());
      type.members = base.members;
      type.choices = base.choices;
      type.groups = base.groups;
      type.textType = base.textType;
      type.content = base.content;
    }
    Particles(*this, type).read(*type.derivation, type.members);
  }
  if (extends && inherits && base.mixed) type.mixed = true;
  Attributes attributes(*this, type);
  attributes.read(*type.derivation);
  if (inherits) {
    spend(base.attributes.size());
    type.attributes = base.attributes;
  }
  extends ? attributes.append(type.attributes) : attributes.replace(type.attributes);
  type.anyAttribute = attributes.any();
  if (!type.anyAttribute && inherits && (extends || content.word == Word::simpleContent))
    type.anyAttribute = base.anyAttribute;
}

void Resolver::buildText(TypeEntry& type) {
  TypeEntry* text = isSimple(*type.basis) ? type.basis : type.basis->textType;
  const Node& node = *type.derivation;
  if (node.word == Word::restriction) {
    if (const Node* inside = node.child(Word::simpleType)) text = &anonymous(*inside, type.at, type.depth);
    if (text && hasFacets(node)) {
      // What it narrows is shown inside it.
      TypeEntry& narrow = anonymous(node, type.at, text->name.empty() ? text->depth : type.depth);
      narrow.narrows = true;
      narrow.derivation = &node;
      narrow.basis = text;
      text = &narrow;
    }
  }
  if (!text) throw Unresolved{"the base " + std::string(type.basis->name.local) + " has no simple content"};
  type.textType = text;
  type.content = referenceTo(*text);
}

void Resolver::buildArray(TypeEntry& type) {
  const TypeEntry& base = *type.basis;
  std::vector<Member> declared;
  Particles(*this, type).read(*type.derivation, declared);
  type.kind = Type::Kind::array;
  type.mixed = false;
  type.isAbstract = false;
  type.itemName = base.itemName;
  type.item = base.item;
  type.dimensions = base.dimensions;
  for (const Node& attribute : parse::Children(*type.derivation, parse::Space::schema, Word::attribute)) {
    const std::string_view arrayType = attribute.get(Word::arrayType, parse::Space::wsdl);
    if (arrayType.empty()) continue;
    const size_t bracket = arrayType.find('[');
    const std::string_view item = parse::trimmed(arrayType.substr(0, bracket));
    if (bracket != arrayType.npos) type.dimensions = arrayType.substr(bracket);
    type.itemName = "item";
    type.item = TypeReference{neededType(attribute, item, type.at).name};
    break;
  }
  const auto element =
      std::find_if(declared.begin(), declared.end(), [](const Member& member) { return !member.any; });
  if (element == declared.end()) return;
  if (!element->error.empty()) throw Unresolved{std::string(element->error)};
  type.itemName = element->name.local;
  type.item = element->type;
}

}  // namespace ztservice::schema
