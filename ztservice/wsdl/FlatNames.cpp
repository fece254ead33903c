#include "ztservice/wsdl/FlatNames.h"

#include <unordered_set>
#include <vector>

namespace ztservice::wsdl {

using parse::Node;
using parse::Space;
using parse::Word;

namespace {

// A node and all below it, in any order.
template <class Visit>
void visitAll(const Node& root, const Visit& visit) {
  std::vector<const Node*> pending{&root};
  while (!pending.empty()) {
    const Node* node = pending.back();
    pending.pop_back();
    visit(*node);
    if (node != &root && node->next) pending.push_back(node->next);
    if (node->first) pending.push_back(node->first);
  }
}

// A name that is not taken: the given one with a number behind it.
template <class IsTaken>
std::string freeName(std::string_view name, size_t& number, const IsTaken& isTaken) {
  std::string out;
  do {
    out = std::string(name) + '_' + std::to_string(++number);
  } while (isTaken(out));
  return out;
}

struct SchemaReference {
  Word element;
  Word attribute;
  schema::Kind kind;
};

constexpr SchemaReference schemaReferences[] = {
    {Word::element, Word::type, schema::Kind::type},
    {Word::element, Word::ref, schema::Kind::element},
    {Word::element, Word::substitutionGroup, schema::Kind::element},
    {Word::attribute, Word::type, schema::Kind::type},
    {Word::attribute, Word::ref, schema::Kind::attribute},
    {Word::group, Word::ref, schema::Kind::group},
    {Word::attributeGroup, Word::ref, schema::Kind::attributeGroup},
    {Word::restriction, Word::base, schema::Kind::type},
    {Word::extension, Word::base, schema::Kind::type},
    {Word::list, Word::itemType, schema::Kind::type},
    {Word::unionOf, Word::memberTypes, schema::Kind::type},
};

// As documents write it.
const char* textOf(Word attribute) {
  switch (attribute) {
    case Word::base:
      return "base";
    case Word::binding:
      return "binding";
    case Word::element:
      return "element";
    case Word::itemType:
      return "itemType";
    case Word::memberTypes:
      return "memberTypes";
    case Word::message:
      return "message";
    case Word::ref:
      return "ref";
    case Word::substitutionGroup:
      return "substitutionGroup";
    default:
      return "type";
  }
}

void change(parse::CopyPlan& plan, const Node& node, const char* attribute, std::string value) {
  plan.changes[{node.line, node.column}][attribute] = std::move(value);
}

}  // namespace

FlatNames::FlatNames(parse::Loaded& loaded) : loaded_(loaded), definitions_(loaded), schemata_(loaded) {
  for (const parse::Definitions& one : loaded.definitions) {
    if (target_.empty()) target_ = one.targetNamespace;
    merges_ = merges_ || one.targetNamespace != loaded.definitions.front().targetNamespace;
  }
  if (!merges_ && loaded.redefinitions.empty()) return;
  std::unordered_set<const parse::Scope*> seen;
  for (const parse::Document& document : loaded.documents) {
    if (!document.root) continue;
    visitAll(*document.root, [&](const Node& node) {
      for (const parse::Scope* at = node.scope; at && seen.insert(at).second; at = at->outer)
        usedPrefixes_.emplace(at->prefix);
    });
  }
  if (merges_) nameDefinitions();
  nameReplaced();
}

void FlatNames::nameDefinitions() {
  struct Names {
    // Those with the first namespace keep the name.
    std::string_view space;
    size_t number = 1;
  };
  std::map<std::pair<Kind, std::string>, Names> taken;
  std::vector<const Definition*> second;
  for (const parse::Definitions& in : loaded_.definitions) {
    for (const Node* child = in.root->first; child; child = child->next) {
      const auto kind = kindOf(*child);
      const Definition* counts =
          kind ? definitions_.find(*kind, Name{in.targetNamespace, child->get(Word::name)}) : nullptr;
      if (!counts || counts->node != child) continue;
      const auto [entry, isFirst] =
          taken.emplace(std::pair(*kind, std::string(counts->name.local)), Names{in.targetNamespace});
      if (!isFirst) second.push_back(counts);
    }
  }
  for (const Definition* one : second) {
    const Kind kind = *kindOf(*one->node);
    size_t& number = taken[{kind, std::string(one->name.local)}].number;
    std::string name = freeName(one->name.local, number, [&](const std::string& candidate) {
      return taken.contains({kind, candidate});
    });
    taken.emplace(std::pair(kind, name), Names{});
    definitionNames_.emplace(one->node, std::move(name));
  }
}

void FlatNames::nameReplaced() {
  for (size_t kind = 0; kind < schema::kinds; ++kind) {
    const auto all = schemata_.all(static_cast<schema::Kind>(kind));
    std::set<std::pair<std::string_view, std::string>> made;
    for (const schema::Declaration* counts : all) {
      size_t number = 0;
      for (const schema::Declaration* at = counts; at && at->redefines; at = at->replaced) {
        redefined_[{at->schema, at->node}] = at;
        if (!at->replaced) break;
        const auto isTaken = [&](const std::string& name) {
          return schemata_.find(at->kind, Name{at->name.space, name}) ||
                 made.contains({at->name.space, name});
        };
        std::string name = freeName(at->name.local, number, isTaken);
        made.emplace(at->name.space, name);
        redefined_[{at->replaced->schema, at->replaced->node}] = at->replaced;
        replacedNames_.emplace(at->replaced, std::move(name));
      }
    }
  }
}

std::string FlatNames::qualified(std::string_view space, std::string_view local) {
  if (space.empty()) return std::string(local);
  auto known = prefixes_.find(space);
  if (known == prefixes_.end()) {
    size_t number = prefixes_.size();
    const std::string prefix = freeName(
        "flat", number, [&](const std::string& candidate) { return usedPrefixes_.contains(candidate); });
    usedPrefixes_.insert(prefix);
    known = prefixes_.emplace(space, prefix).first;
    declarations_.emplace("xmlns:" + prefix, space);
  }
  return known->second + ':' + std::string(local);
}

void FlatNames::plan(parse::CopyPlan& plan, const parse::Definitions& definitions) {
  if (!merges_) return;
  for (const Node* child = definitions.root->first; child; child = child->next) {
    const auto renamed = definitionNames_.find(child);
    if (renamed != definitionNames_.end()) change(plan, *child, "name", renamed->second);
    if (kindOf(*child)) visitAll(*child, [&](const Node& node) { planDefinition(plan, node, definitions); });
  }
}

void FlatNames::planDefinition(parse::CopyPlan& plan, const Node& node, const parse::Definitions& in) {
  if (node.isWsdl(Word::port)) planReference(plan, node, Word::binding, Kind::binding, in);
  if (node.isWsdl(Word::binding)) planReference(plan, node, Word::type, Kind::portType, in);
  planReference(plan, node, Word::message, Kind::message, in);
  if (!node.isWsdl(Word::part)) return;
  planPart(plan, node, Word::element, schema::Kind::element, in);
  planPart(plan, node, Word::type, schema::Kind::type, in);
}

void FlatNames::planReference(parse::CopyPlan& plan, const Node& node, Word attribute, Kind kind,
                              const parse::Definitions& in) {
  if (!node.has(attribute)) return;
  const Definition* found = definitions_.find(kind, node, node.get(attribute), in);
  if (!found) return;
  const auto renamed = definitionNames_.find(found->node);
  const std::string_view local =
      renamed == definitionNames_.end() ? found->name.local : std::string_view(renamed->second);
  change(plan, node, textOf(attribute), qualified(target_, local));
}

// A name without namespace is looked for in none, then in that of the definitions: which will be another.
void FlatNames::planPart(parse::CopyPlan& plan, const Node& part, Word attribute, schema::Kind kind,
                         const parse::Definitions& in) {
  if (!part.has(attribute)) return;
  const schema::Asked asked = schema::askedName(part, part.get(attribute));
  if (!asked.declared || !asked.name.space.empty()) return;
  if (schemata_.find(kind, asked.name) || !schemata_.find(kind, Name{in.targetNamespace, asked.name.local}))
    return;
  change(plan, part, textOf(attribute), qualified(in.targetNamespace, asked.name.local));
}

void FlatNames::plan(parse::CopyPlan& plan, const parse::Schema& schema) {
  if (!merges_ && loaded_.redefinitions.empty()) return;
  for (const Node* child = schema.root->first; child; child = child->next) {
    if (!child->isSchema(Word::redefine)) {
      planComponent(plan, *child, schema);
      continue;
    }
    plan.actions[{child->line, child->column}] = parse::CopyAction::unwrap;
    for (const Node* inside = child->first; inside; inside = inside->next)
      planComponent(plan, *inside, schema);
  }
}

void FlatNames::planComponent(parse::CopyPlan& plan, const Node& component, const parse::Schema& schema) {
  const auto found = redefined_.find({&schema, &component});
  const schema::Declaration* owner = found == redefined_.end() ? nullptr : found->second;
  const auto renamed = replacedNames_.find(owner);
  if (renamed != replacedNames_.end()) change(plan, component, "name", renamed->second);
  visitAll(component, [&](const Node& node) {
    if (node.space != Space::schema) return;
    for (const SchemaReference& reference : schemaReferences) {
      if (node.word != reference.element || !node.has(reference.attribute)) continue;
      std::string value;
      bool changes = false;
      std::string_view list = node.get(reference.attribute);
      for (std::string_view word = parse::takeWord(list); !word.empty(); word = parse::takeWord(list)) {
        const auto name = nameFor(reference.kind, {&node, &schema, owner}, word);
        changes = changes || name;
        value += (value.empty() ? "" : " ") + name.value_or(std::string(word));
      }
      if (changes) change(plan, node, textOf(reference.attribute), std::move(value));
    }
  });
}

std::optional<std::string> FlatNames::nameFor(schema::Kind kind, const schema::Context& context,
                                              std::string_view written) {
  const schema::Asked asked = schema::askedName(*context.node, written);
  const schema::Declaration* found = schemata_.find(kind, context, asked);
  if (!found) return std::nullopt;
  const auto renamed = replacedNames_.find(found);
  if (renamed != replacedNames_.end()) return qualified(found->name.space, renamed->second);
  const bool isNamed = !asked.name.space.empty() || found->name.space.empty() ||
                       found->name.space == context.schema->targetNamespace;
  if (isNamed) return std::nullopt;
  return qualified(found->name.space, found->name.local);
}

}  // namespace ztservice::wsdl
