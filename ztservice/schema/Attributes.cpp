#include "ztservice/schema/Attributes.h"

#include <algorithm>

#include "ztservice/schema/Builtins.h"

namespace ztservice::schema {

using parse::Node;
using parse::Word;

void Attributes::read(const Node& parent) {
  frames_ = {{parent.first, {&parent, type_.at.schema, type_.at.owner}}};
  while (!frames_.empty()) readNext();
}

void Attributes::readNext() {
  Frame& top = frames_.back();
  const Node* node = top.next;
  if (!node) {
    if (top.body) bodies_.erase(top.body);
    frames_.pop_back();
    return;
  }
  top.next = node->next;
  if (node->isSchema(Word::attribute)) {
    const Asked asked = askedName(*node, node->get(Word::ref));
    if (node->has(Word::ref) && asked.declared && isSoapEncoding(asked.name.space)) return;
    resolver_.spend(1);
    uses_.push_back(use(*node, top.at));
  } else if (node->isSchema(Word::attributeGroup)) {
    resolver_.spend(1);
    const Context at = top.at;
    open(*node, at);
  } else if (node->isSchema(Word::anyAttribute)) {
    const bool isOwn = frames_.size() == 1;
    if (any_ && (!isOwn || ownAny_)) return;
    ownAny_ = isOwn;
    const auto* space = node->find(Word::nameSpace);
    const std::string_view process = node->get(Word::processContents);
    any_ = Wildcard{space ? parse::trimmed(space->value) : "##any", process.empty() ? "strict" : process};
  }
}

void Attributes::open(const Node& node, const Context& at) {
  const Asked asked = askedName(node, node.get(Word::ref));
  if (asked.declared && isSoapEncoding(asked.name.space)) return;
  const Declaration* group =
      resolver_.declarations_.find(Kind::attributeGroup, {&node, at.schema, at.owner}, asked);
  if (!group && asked.declared && asked.name == Name{xmlNamespace, "specialAttrs"}) {
    addSpecial();
    return;
  }
  if (!group) throw Unresolved{notFound("attribute group", asked)};
  if (!bodies_.insert(group).second)
    throw Unresolved{"the attribute group " + std::string(group->name.local) + " contains itself"};
  frames_.push_back({group->node->first, {group->node, group->schema, group}, group});
}

void Attributes::addSpecial() {
  for (const XmlAttribute& known : xmlAttributes()) {
    Use added;
    added.attribute.name = known.name;
    added.attribute.type.name = known.type;
    uses_.push_back(added);
  }
}

Attributes::Use Attributes::use(const Node& node, const Context& at) {
  Use out;
  Attribute& attribute = out.attribute;
  const std::string_view how = node.get(Word::use);
  attribute.required = how == "required";
  out.prohibited = how == "prohibited";
  try {
    if (node.has(Word::ref)) {
      refer(attribute, node, at, askedName(node, node.get(Word::ref)));
    } else {
      const std::string_view form = node.get(Word::form);
      const bool qualified = form == "qualified" || (form != "unqualified" && at.schema->qualifiesAttributes);
      attribute.name = {qualified ? at.schema->targetNamespace : std::string_view(), node.get(Word::name)};
      attribute.type = resolver_.typeOf(node, at, type_.depth, anySimpleType);
      attribute.defaultValue = node.raw(Word::defaultValue);
      attribute.fixedValue = node.raw(Word::fixed);
    }
  } catch (const Unresolved& e) {
    attribute.error = resolver_.keep(e.reason);
  }
  return out;
}

void Attributes::refer(Attribute& attribute, const Node& node, const Context& at, const Asked& asked) {
  attribute.name = asked.name;
  attribute.defaultValue = node.raw(Word::defaultValue);
  attribute.fixedValue = node.raw(Word::fixed);
  const Declaration* found =
      resolver_.declarations_.find(Kind::attribute, {&node, at.schema, at.owner}, asked);
  if (!found) {
    referKnown(attribute, asked);
    return;
  }
  const Node& global = *found->node;
  attribute.name = found->name;
  attribute.type = resolver_.typeOf(global, {&global, found->schema, found}, type_.depth, anySimpleType);
  if (attribute.defaultValue || attribute.fixedValue) return;
  attribute.defaultValue = global.raw(Word::defaultValue);
  attribute.fixedValue = global.raw(Word::fixed);
}

void Attributes::referKnown(Attribute& attribute, const Asked& asked) {
  const auto known = xmlAttributes();
  const auto found = std::find_if(known.begin(), known.end(),
                                  [&](const XmlAttribute& one) { return one.name == asked.name; });
  if (!asked.declared || found == known.end()) throw Unresolved{notFound("attribute", asked)};
  attribute.type.name = found->type;
}

void Attributes::append(std::vector<Attribute>& out) const {
  for (const Use& one : uses_) {
    if (!one.prohibited) out.push_back(one.attribute);
  }
}

void Attributes::replace(std::vector<Attribute>& out) const {
  std::unordered_map<Name, size_t, NameHash> places;
  for (size_t i = 0; i < out.size(); ++i) places.emplace(out[i].name, i);
  std::vector<bool> gone(out.size());
  for (const Use& one : uses_) {
    const auto place = places.find(one.attribute.name);
    if (place == places.end()) {
      if (!one.prohibited) out.push_back(one.attribute);
      continue;
    }
    gone[place->second] = one.prohibited;
    if (!one.prohibited) out[place->second] = one.attribute;
  }
  size_t kept = 0;
  for (size_t i = 0; i < out.size(); ++i) {
    if (i < gone.size() && gone[i]) continue;
    if (kept != i) out[kept] = out[i];
    ++kept;
  }
  out.resize(kept);
}

}  // namespace ztservice::schema
