#include "ztservice/schema/Declarations.h"

#include <limits>
#include <optional>

namespace ztservice::schema {

using parse::Node;
using parse::Schema;
using parse::Word;

namespace {

constexpr std::array<const char*, kinds> kindNames = {"type", "element", "attribute", "group",
                                                      "attributeGroup"};

std::optional<Kind> kindOf(const Node& node) {
  if (node.space != parse::Space::schema) return std::nullopt;
  switch (node.word) {
    case Word::complexType:
    case Word::simpleType:
      return Kind::type;
    case Word::element:
      return Kind::element;
    case Word::attribute:
      return Kind::attribute;
    case Word::group:
      return Kind::group;
    case Word::attributeGroup:
      return Kind::attributeGroup;
    default:
      return std::nullopt;
  }
}

// How near each schema is that one includes over any number of steps, itself first.
using Nearness = std::unordered_map<const Schema*, size_t>;

Nearness nearness(const Schema& schema) {
  Nearness out{{&schema, 0}};
  std::vector<const Schema*> order{&schema};
  for (size_t i = 0; i < order.size(); ++i) {
    for (const Schema* included : order[i]->included) {
      if (out.emplace(included, out.size()).second) order.push_back(included);
    }
  }
  return out;
}

// Says of redefinitions what they replace, and of all components of one name which counts.
class Settling {
 public:
  Declaration* settle(Declaration& first) {
    replacing_.clear();
    for (Declaration* at = &first; at; at = at->next) {
      if (!at->redefines || !at->redefined) continue;
      at->replaced = replacedBy(*at, first);
      if (at->replaced) replacing_.emplace(at->replaced, at);
    }
    Declaration* counts = &first;
    for (auto over = replacing_.find(counts); over != replacing_.end(); over = replacing_.find(counts)) {
      counts = over->second;
      replacing_.erase(over);
    }
    return counts;
  }

 private:
  Declaration* replacedBy(const Declaration& redefinition, Declaration& first) {
    const auto [known, isNew] = near_.try_emplace(redefinition.redefined);
    if (isNew) known->second = nearness(*redefinition.redefined);
    Declaration* nearest = nullptr;
    size_t least = std::numeric_limits<size_t>::max();
    for (Declaration* at = &first; at; at = at->next) {
      const auto found = at == &redefinition ? known->second.end() : known->second.find(at->schema);
      if (found == known->second.end() || found->second >= least) continue;
      nearest = at;
      least = found->second;
    }
    return nearest;
  }

  std::unordered_map<const Schema*, Nearness> near_;
  std::unordered_map<const Declaration*, Declaration*> replacing_;
};

// Circles are cut, so that whoever follows what is replaced comes to an end.
void markReplaced(Declaration& counts) {
  for (Declaration* at = &counts; at->replaced; at = at->replaced) {
    if (at->replaced == &counts || at->replaced->isReplaced) {
      at->replaced = nullptr;
      return;
    }
    at->replaced->isReplaced = true;
  }
}

}  // namespace

Asked askedName(const Node& node, std::string_view text) {
  const auto [prefix, local] = parse::written(text);
  const auto space = parse::namespaceOf(node, prefix);
  return {space.has_value(), {space.value_or(std::string_view()), local}, text};
}

std::string notFound(std::string_view what, const Asked& asked) {
  if (!asked.declared) return "the prefix of " + std::string(asked.text) + " is not declared";
  std::string out = "no " + std::string(what) + ' ';
  if (!asked.name.space.empty()) out += '{' + std::string(asked.name.space) + '}';
  return out + std::string(asked.name.local);
}

Declarations::Declarations(parse::Loaded& loaded) {
  std::unordered_map<const Schema*, std::vector<const parse::Redefinition*>> redefinitions;
  for (const parse::Redefinition& redefinition : loaded.redefinitions)
    redefinitions[redefinition.by].push_back(&redefinition);
  for (const Schema& schema : loaded.schemas) declare(schema, redefinitions[&schema]);
  settle(loaded);
}

void Declarations::declare(const Schema& schema,
                           const std::vector<const parse::Redefinition*>& redefinitions) {
  size_t redefined = 0;
  for (const Node* child = schema.root->first; child; child = child->next) {
    if (!child->isSchema(Word::redefine)) {
      add(*child, schema, nullptr);
      continue;
    }
    const parse::Redefinition* redefinition = redefinitions[redefined++];
    for (const Node* inside = child->first; inside; inside = inside->next) add(*inside, schema, redefinition);
  }
}

void Declarations::add(const Node& node, const Schema& schema, const parse::Redefinition* redefinition) {
  const std::optional<Kind> kind = kindOf(node);
  const std::string_view local = node.get(Word::name);
  if (!kind || local.empty()) return;
  Declaration& added = declarations_.emplace_back();
  added.kind = *kind;
  added.name = {schema.targetNamespace, local};
  added.node = &node;
  added.schema = &schema;
  added.redefines = redefinition != nullptr;
  if (redefinition) added.redefined = redefinition->of;
  const auto [entry, isNew] =
      tables_[static_cast<size_t>(*kind)].emplace(added.name, Same{&added, &added, &added});
  if (isNew) return;
  entry->second.last->next = &added;
  entry->second.last = &added;
}

void Declarations::settle(parse::Loaded& loaded) {
  Settling settling;
  for (const Declaration& declaration : declarations_) {
    const auto kind = static_cast<size_t>(declaration.kind);
    Same& same = tables_[kind].find(declaration.name)->second;
    if (same.first == &declaration) {
      if (same.first->next) same.counts = settling.settle(*same.first);
      markReplaced(*same.counts);
      all_[kind].push_back(same.counts);
    }
    if (same.counts == &declaration || declaration.isReplaced) continue;
    loaded.warnings.push_back({loaded.placeOf(*declaration.schema->document, *declaration.node),
                               std::string(kindNames[kind]) + ' ' + std::string(declaration.name.local) +
                                   " stands twice; the first one counts"});
  }
}

const Declaration* Declarations::find(Kind kind, const Name& name) const {
  const Table& table = tables_[static_cast<size_t>(kind)];
  const auto found = table.find(name);
  return found == table.end() ? nullptr : found->second.counts;
}

const Declaration* Declarations::find(Kind kind, const Context& context, const Asked& asked) const {
  if (!asked.declared) return nullptr;
  const Declaration* found = nullptr;
  if (!asked.name.space.empty()) {
    found = find(kind, asked.name);
  } else {
    const Schema& schema = *context.schema;
    const bool ownFirst = schema.tookNamespaceOn;
    const std::string_view spaces[] = {ownFirst ? schema.targetNamespace : std::string_view(),
                                       ownFirst ? std::string_view() : schema.targetNamespace, schema.around};
    for (const std::string_view space : spaces) {
      found = find(kind, {space, asked.name.local});
      if (found) break;
    }
  }
  const Declaration* owner = context.owner;
  const bool isOwn = found && owner && owner->redefines && owner->kind == kind && owner->name == found->name;
  return isOwn ? owner->replaced : found;
}

}  // namespace ztservice::schema
