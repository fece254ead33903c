// Global elements, and what can stand in for elements and types.
#include <algorithm>

#include "ztservice/schema/Builtins.h"
#include "ztservice/schema/Resolver.h"

namespace ztservice::schema {

using parse::Node;
using parse::Word;

ElementEntry* Resolver::findElement(const Name& name) {
  if (const Declaration* found = declarations_.find(Kind::element, name)) return &elementOf(*found);
  if (name != Name{schemaNamespace, "schema"}) return nullptr;
  if (!schemaElement_) {
    schemaElement_ = &elements_.emplace_back();
    schemaElement_->name = {schemaNamespace, "schema"};
    schemaElement_->type.name = anyType;
    schemaElement_->isSettled = true;
  }
  return schemaElement_;
}

ElementEntry* Resolver::findElement(const Context& context, const Asked& asked) {
  const Declaration* found = declarations_.find(Kind::element, context, asked);
  if (found) return &elementOf(*found);
  return asked.declared ? findElement(asked.name) : nullptr;
}

// The head whose type an element without one has; empty for any other.
std::string_view Resolver::headOf(const ElementEntry& element) const {
  const Node& node = *element.at.node;
  const bool hasType = node.has(Word::type) || node.child(Word::simpleType) || node.child(Word::complexType);
  return hasType ? std::string_view() : node.get(Word::substitutionGroup);
}

const ElementEntry& Resolver::settle(ElementEntry& element) {
  std::vector<ElementEntry*> chain;
  std::unordered_set<const ElementEntry*> seen;
  ElementEntry* at = &element;
  std::string reason;
  while (!at->isSettled) {
    if (!seen.insert(at).second) {
      reason = "the substitution group of " + std::string(at->name.local) + " comes back to itself";
      break;
    }
    chain.push_back(at);
    const std::string_view head = headOf(*at);
    if (head.empty()) break;
    const Asked asked = askedName(*at->at.node, head);
    ElementEntry* next = findElement(at->at, asked);
    if (!next) {
      reason = notFound("element", asked);
      break;
    }
    at = next;
  }
  // From the head on.
  const ElementEntry* head = at->isSettled ? at : nullptr;
  for (auto entry = chain.rbegin(); entry != chain.rend(); head = *entry++) {
    ElementEntry& one = **entry;
    try {
      if (!reason.empty()) throw Unresolved{reason};
      if (head && !head->error.empty()) throw Unresolved{std::string(head->error)};
      if (head) {
        one.type = head->type;
      } else {
        one.type = typeOf(*one.at.node, one.at, 0, anyType);
      }
    } catch (const Unresolved& e) {
      one.error = keep(e.reason);
    }
    const Node& node = *one.at.node;
    one.nillable = node.flag(Word::nillable);
    one.isAbstract = node.flag(Word::abstract);
    one.defaultValue = node.raw(Word::defaultValue);
    one.fixedValue = node.raw(Word::fixed);
    one.isSettled = true;
  }
  return element;
}

std::vector<Name> Resolver::followersOf(const Followers& index, const Name& name) {
  std::vector<Name> out;
  std::vector<Name> open{name};
  std::unordered_set<Name, NameHash> seen{name};
  while (!open.empty()) {
    const auto found = index.find(open.back());
    open.pop_back();
    if (found == index.end()) continue;
    for (const Declaration* follower : found->second) {
      spend(1);
      if (!seen.insert(follower->name).second) continue;
      open.push_back(follower->name);
      if (!follower->node->flag(Word::abstract)) out.push_back(follower->name);
    }
  }
  std::sort(out.begin(), out.end());
  return out;
}

const Element& Resolver::complete(ElementEntry& element) {
  settle(element);
  if (element.isComplete || !element.error.empty()) return element;
  if (!substitutes_) indexSubstitutes();
  try {
    element.substitutes = followersOf(*substitutes_, element.name);
  } catch (const Unresolved& e) {
    element.error = keep(e.reason);
  }
  element.isComplete = true;
  return element;
}

void Resolver::indexSubstitutes() {
  substitutes_.emplace();
  for (const Declaration* element : declarations_.all(Kind::element)) {
    const std::string_view head = element->node->get(Word::substitutionGroup);
    if (head.empty()) continue;
    const Context at{element->node, element->schema, element};
    const Declaration* found = declarations_.find(Kind::element, at, askedName(*element->node, head));
    if (found) (*substitutes_)[found->name].push_back(element);
  }
}

void Resolver::addDerived(TypeEntry& type) {
  if (!derived_) indexDerived();
  type.derived = followersOf(*derived_, type.name);
}

void Resolver::indexDerived() {
  derived_.emplace();
  for (const Declaration* type : declarations_.all(Kind::type)) {
    // What a redefinition replaces is derived from something too.
    const Declaration* at = type;
    const Declaration* base = baseOf(*at);
    while (base && base == at->replaced) {
      at = base;
      base = baseOf(*at);
    }
    if (base && base->name != type->name) (*derived_)[base->name].push_back(type);
  }
}

const Declaration* Resolver::baseOf(const Declaration& type) const {
  for (const Word content : {Word::complexContent, Word::simpleContent}) {
    const Node* inside = type.node->child(content);
    for (const Node* child = inside ? inside->first : nullptr; child; child = child->next) {
      if (!child->isSchema(Word::extension) && !child->isSchema(Word::restriction)) continue;
      return declarations_.find(Kind::type, {child, type.schema, &type},
                                askedName(*child, child->get(Word::base)));
    }
  }
  return nullptr;
}

}  // namespace ztservice::schema
