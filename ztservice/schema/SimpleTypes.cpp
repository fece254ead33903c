// Simple types: what they restrict, list or unite.
#include "ztservice/schema/Resolver.h"

namespace ztservice::schema {

using parse::Node;
using parse::Word;

namespace {

const Node* derivationOf(const Node& simpleType) {
  for (const Node* child = simpleType.first; child; child = child->next) {
    if (child->isSchema(Word::restriction) || child->isSchema(Word::list) || child->isSchema(Word::unionOf))
      return child;
  }
  return nullptr;
}

}  // namespace

void Resolver::prepareSimple(TypeEntry& type) {
  type.kind = Type::Kind::simple;
  type.derivation = derivationOf(*type.at.node);
  if (!type.derivation) throw Unresolved{"neither a restriction nor a list nor a union"};
  const Node& node = *type.derivation;
  if (node.word == Word::unionOf) return;
  const Word byName = node.word == Word::list ? Word::itemType : Word::base;
  if (node.has(byName)) {
    type.basis = &neededType(node, node.get(byName), type.at);
  } else if (const Node* inside = node.child(Word::simpleType)) {
    type.basis = &anonymous(*inside, type.at, type.depth);
  } else {
    throw Unresolved{node.word == Word::list ? "a list without item type" : "a restriction without base"};
  }
}

void Resolver::buildSimple(TypeEntry& type) {
  if (type.derivation->word == Word::restriction) {
    restrictSimple(type);
  } else if (type.derivation->word == Word::unionOf) {
    buildUnion(type);
  } else {
    type.variety = Type::Variety::list;
    type.primitive = type.basis->primitive;
    type.item = TypeReference{type.basis->name, type.basis->name.empty() ? type.basis : nullptr};
  }
}

void Resolver::restrictSimple(TypeEntry& type) {
  const TypeEntry& base = *type.basis;
  if (base.kind == Type::Kind::complex || base.kind == Type::Kind::array)
    throw Unresolved{"the base " + std::string(base.name.local) + " is not simple"};
  type.kind = Type::Kind::simple;
  type.base = base.name;
  if (base.name.empty()) type.anonymousBase = &base;
  type.variety = base.variety;
  type.primitive = base.primitive;
  type.item = base.item;
  type.memberTypes = base.memberTypes;
  // One that is replaced stands in no table, so that its facets are told here.
  if (!type.name.empty() && base.at.owner && base.at.owner == type.at.owner->replaced)
    type.facets = base.facets;
  for (const Node* child = type.derivation->first; child; child = child->next) {
    const std::string_view value = child->raw(Word::value).value_or(std::string_view());
    if (child->isSchema(Word::facet)) type.facets.push_back({child->local, value});
    if (child->isSchema(Word::enumeration)) type.values.push_back(value);
  }
  spend(type.facets.size() + type.values.size() + type.memberTypes.size());
  if (type.values.empty()) {
    spend(base.values.size());
    type.values = base.values;
  }
  if (!type.values.empty()) type.kind = Type::Kind::enumeration;
}

void Resolver::buildUnion(TypeEntry& type) {
  type.variety = Type::Variety::unionOf;
  const Node& node = *type.derivation;
  std::string_view names = node.get(Word::memberTypes);
  for (std::string_view name = parse::takeWord(names); !name.empty(); name = parse::takeWord(names))
    type.memberTypes.push_back({neededType(node, name, type.at).name});
  for (const Node& inside : parse::Children(node, parse::Space::schema, Word::simpleType))
    type.memberTypes.push_back({{}, &anonymous(inside, type.at, type.depth)});
}

}  // namespace ztservice::schema
