#include "ztservice/schema/Resolver.h"

#include <algorithm>

#include "ztservice/schema/Builtins.h"

namespace ztservice::schema {

using parse::Node;
using parse::Word;

namespace {

// Types that are written inside each other nest in the answer too.
constexpr unsigned deepest = 100;

template <class Entry>
void stand(Entry& entry, const Node& node, const parse::Schema* schema, const Declaration* owner) {
  entry.at = {&node, schema, owner};
  entry.file = schema->document->shown;
  entry.line = node.line;
  entry.column = node.column;
}

}  // namespace

Resolver::Resolver(const parse::Loaded& loaded, const Declarations& declarations, const Limits& limits)
    : loaded_(loaded), declarations_(declarations), membersLeft_(limits.members) {}

TypeEntry* Resolver::builtin(const Name& name) {
  if (!isBuiltinNamespace(name.space)) return nullptr;
  const auto known = builtins_.find(name);
  if (known != builtins_.end()) return known->second;
  TypeEntry type;
  type.name = name;
  if (!fillBuiltin(type)) return nullptr;
  // Whoever asks may give the name up; what there is no type of is not remembered, there is no end of it.
  type.name = {keep(name.space), keep(name.local)};
  type.state = TypeEntry::State::settled;
  TypeEntry& added = types_.emplace_back(std::move(type));
  builtins_.emplace(added.name, &added);
  return &added;
}

TypeEntry& Resolver::entryOf(const Declaration& declaration) {
  TypeEntry*& entry = declaredTypes_[&declaration];
  if (entry) return *entry;
  entry = &types_.emplace_back();
  entry->name = declaration.name;
  stand(*entry, *declaration.node, declaration.schema, &declaration);
  return *entry;
}

ElementEntry& Resolver::elementOf(const Declaration& declaration) {
  ElementEntry*& entry = declaredElements_[&declaration];
  if (entry) return *entry;
  entry = &elements_.emplace_back();
  entry->name = declaration.name;
  stand(*entry, *declaration.node, declaration.schema, &declaration);
  return *entry;
}

TypeEntry& Resolver::anonymous(const Node& node, const Context& context, unsigned depth) {
  TypeEntry& entry = types_.emplace_back();
  stand(entry, node, context.schema, context.owner);
  entry.depth = depth + 1;
  return entry;
}

TypeEntry* Resolver::findType(const Context& context, const Asked& asked) {
  if (!asked.declared) return nullptr;
  if (TypeEntry* known = builtin(asked.name)) return known;
  const Declaration* found = declarations_.find(Kind::type, context, asked);
  return found ? &entryOf(*found) : nullptr;
}

TypeEntry* Resolver::findType(const Name& name) {
  if (TypeEntry* known = builtin(name)) return known;
  const Declaration* found = declarations_.find(Kind::type, name);
  return found ? &entryOf(*found) : nullptr;
}

TypeEntry& Resolver::neededType(const Node& node, std::string_view text, const Context& context) {
  const Asked asked = askedName(node, text);
  if (TypeEntry* found = findType(context, asked)) return *found;
  throw Unresolved{notFound("type", asked)};
}

TypeReference Resolver::typeOf(const Node& node, const Context& context, unsigned depth,
                               const Name& otherwise) {
  if (node.has(Word::type)) return {neededType(node, node.get(Word::type), context).name};
  for (const Node* child = node.first; child; child = child->next) {
    if (child->isSchema(Word::simpleType) || child->isSchema(Word::complexType))
      return {{}, &anonymous(*child, context, depth)};
  }
  return {otherwise};
}

void Resolver::spend(size_t members) {
  if (members > membersLeft_) throw Unresolved{"the types have more members than the limit allows"};
  membersLeft_ -= members;
}

void Resolver::fail(TypeEntry& type, std::string_view reason) {
  // What was known of it by then is not shown.
  Type left;
  left.kind = type.at.node->word == Word::complexType ? Type::Kind::complex : Type::Kind::simple;
  left.name = type.name;
  left.file = type.file;
  left.line = type.line;
  left.column = type.column;
  left.error = reason;
  static_cast<Type&>(type) = std::move(left);
  type.textType = nullptr;
}

const TypeEntry& Resolver::settle(TypeEntry& type) {
  using State = TypeEntry::State;
  std::vector<TypeEntry*> chain{&type};
  while (!chain.empty()) {
    TypeEntry& top = *chain.back();
    if (top.state == State::fresh) {
      top.state = State::working;
      try {
        prepare(top);
      } catch (const Unresolved& e) {
        fail(top, keep(e.reason));
      }
      if (top.error.empty() && top.basis && top.basis->state == State::fresh) {
        chain.push_back(top.basis);
        continue;
      }
    }
    if (top.state == State::working) {
      try {
        if (top.error.empty()) build(top);
      } catch (const Unresolved& e) {
        fail(top, keep(e.reason));
      }
      top.state = State::settled;
    }
    chain.pop_back();
  }
  return type;
}

void Resolver::prepare(TypeEntry& type) {
  if (type.depth > deepest) throw Unresolved{"more types are written inside each other than can be shown"};
  if (type.narrows) return;
  const Node& node = *type.at.node;
  if (node.has(Word::base)) throw Unresolved{"derived by an attribute base, as a draft of XML Schema had it"};
  node.word == Word::complexType ? prepareComplex(type) : prepareSimple(type);
}

void Resolver::build(TypeEntry& type) {
  const bool isComplex = type.at.node->word == Word::complexType;
  if (type.basis && type.derivation->word != Word::list) {
    if (type.basis->state == TypeEntry::State::working)
      throw Unresolved{"derived from itself, over " + std::string(type.basis->name.local)};
    // As it stands: what a long chain lacks is told once.
    if (!type.basis->error.empty()) {
      fail(type, type.basis->error);
      return;
    }
  }
  isComplex ? buildComplex(type) : buildSimple(type);
}

}  // namespace ztservice::schema
