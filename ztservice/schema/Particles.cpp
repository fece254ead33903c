#include "ztservice/schema/Particles.h"

#include <algorithm>

#include "ztservice/schema/Builtins.h"

namespace ztservice::schema {

using parse::Node;
using parse::Word;

namespace {

bool isParticle(const Node& node) {
  if (node.space != parse::Space::schema) return false;
  switch (node.word) {
    case Word::element:
    case Word::any:
    case Word::group:
    case Word::sequence:
    case Word::choice:
    case Word::all:
      return true;
    default:
      return false;
  }
}

bool hasSeveralParticles(const Node& node) {
  const auto isOne = [](const Node* at) { return isParticle(*at); };
  size_t count = 0;
  for (const Node* child = node.first; child && count < 2; child = child->next) count += isOne(child);
  return count > 1;
}

uint64_t countIn(const Node& node, Word word) {
  if (!node.has(word)) return 1;
  std::string_view text = node.get(word);
  if (word == Word::maxOccurs && text == "unbounded") return Member::unbounded;
  const std::string reason = "cannot read the bound \"" + std::string(text) + '"';
  if (text.starts_with('+')) text.remove_prefix(1);
  if (text.empty()) throw Unresolved{reason};
  uint64_t count = 0;
  for (const char c : text) {
    if (c < '0' || c > '9' || count > Member::unbounded / 100) throw Unresolved{reason};
    count = count * 10 + static_cast<uint64_t>(c - '0');
  }
  return count;
}

uint64_t productOf(uint64_t a, uint64_t b) {
  if (a == 0 || b == 0) return 0;
  if (a == Member::unbounded || b == Member::unbounded) return Member::unbounded;
  if (a > (Member::unbounded - 1) / b) throw Unresolved{"the bounds are too large"};
  return a * b;
}

}  // namespace

Particles::Bounds Particles::boundsOf(const Node& node) {
  return {countIn(node, Word::minOccurs), countIn(node, Word::maxOccurs)};
}

Particles::Bounds Particles::product(const Bounds& a, const Bounds& b) {
  return {productOf(a.min, b.min), productOf(a.max, b.max)};
}

void Particles::read(const Node& parent, std::vector<Member>& out) {
  frames_.clear();
  bodies_.clear();
  Frame first;
  first.next = parent.first;
  first.at = {&parent, type_.at.schema, type_.at.owner};
  frames_.push_back(first);
  while (!frames_.empty()) readNext(out);
}

void Particles::readNext(std::vector<Member>& out) {
  Frame& top = frames_.back();
  const Node* node = top.next;
  if (!node) {
    if (top.body) bodies_.erase(top.body);
    frames_.pop_back();
    return;
  }
  top.next = node->next;
  if (!isParticle(*node)) return;
  resolver_.spend(1);
  const std::string_view path = pathOf(top);
  Bounds own{};
  Bounds whole{};
  try {
    own = boundsOf(*node);
    if (own.max == 0) return;
    whole = product(top.bounds, own);
  } catch (const Unresolved& e) {
    out.emplace_back().error = resolver_.keep(e.reason);
    return;
  }
  if (node->word != Word::element && node->word != Word::any) {
    const Frame around = top;
    open(*node, around, own, path);
    return;
  }
  Member member;
  if (node->word == Word::element) {
    member = element(*node, top.at);
  } else {
    const auto space = node->find(Word::nameSpace);
    const std::string_view process = node->get(Word::processContents);
    member.any =
        Wildcard{space ? parse::trimmed(space->value) : "##any", process.empty() ? "strict" : process};
  }
  member.min = whole.min;
  member.max = whole.max;
  member.choice = path;
  member.group = top.group;
  out.push_back(member);
}

// The alternatives of a choice count even where nothing is left of them.
std::string_view Particles::pathOf(Frame& frame) {
  if (frame.choice == 0) return frame.path;
  ++frame.alternative;
  std::string path(frame.path);
  if (!path.empty()) path += '/';
  path += std::to_string(frame.choice) + '.' + std::to_string(frame.alternative);
  resolver_.spend(path.size() / 64);
  return resolver_.keep(path);
}

void Particles::open(const Node& node, const Frame& around, const Bounds& own, std::string_view path) {
  Frame inside;
  inside.next = node.first;
  inside.at = {&node, around.at.schema, around.at.owner};
  inside.bounds = product(around.bounds, own);
  inside.path = path;
  inside.group = own.max > 1 ? ++type_.groups : around.group;
  if (node.word == Word::group) {
    openReference(node, around, inside);
    return;
  }
  if (node.word == Word::choice && hasSeveralParticles(node)) inside.choice = ++type_.choices;
  frames_.push_back(inside);
}

void Particles::openReference(const Node& node, const Frame& around, Frame& inside) {
  const Asked asked = askedName(node, node.get(Word::ref));
  if (asked.declared && isSoapEncoding(asked.name.space)) return;
  const Declaration* group =
      resolver_.declarations_.find(Kind::group, {&node, around.at.schema, around.at.owner}, asked);
  if (!group) throw Unresolved{notFound("group", asked)};
  if (!bodies_.insert(group).second)
    throw Unresolved{"the group " + std::string(group->name.local) + " contains itself"};
  inside.next = group->node->first;
  inside.at = {group->node, group->schema, group};
  inside.body = group;
  frames_.push_back(inside);
}

Member Particles::element(const Node& node, const Context& at) {
  Member member;
  try {
    if (node.has(Word::ref)) {
      refer(member, node, at);
      return member;
    }
    if (!node.has(Word::name)) throw Unresolved{"an element with neither name nor ref"};
    const std::string_view form = node.get(Word::form);
    const bool qualified = form == "qualified" || (form != "unqualified" && at.schema->qualifiesElements);
    member.name = {qualified ? at.schema->targetNamespace : std::string_view(), node.get(Word::name)};
    member.type = resolver_.typeOf(node, at, type_.depth, anyType);
    member.nillable = node.flag(Word::nillable);
    member.defaultValue = node.raw(Word::defaultValue);
    member.fixedValue = node.raw(Word::fixed);
  } catch (const Unresolved& e) {
    member.error = resolver_.keep(e.reason);
  }
  return member;
}

void Particles::refer(Member& member, const Node& node, const Context& at) {
  const Asked asked = askedName(node, node.get(Word::ref));
  member.name = asked.name;
  ElementEntry* found = resolver_.findElement({&node, at.schema, at.owner}, asked);
  if (!found) throw Unresolved{notFound("element", asked)};
  const ElementEntry& element = resolver_.settle(*found);
  member.name = element.name;
  member.type.name = element.type.name;
  member.isReference = true;
  member.nillable = element.nillable;
  member.defaultValue = element.defaultValue;
  member.fixedValue = element.fixedValue;
  member.error = element.error;
}

}  // namespace ztservice::schema
