#include "ztservice/wsdl/DefinitionSet.h"

namespace ztservice::wsdl {

using parse::Node;
using parse::Word;

namespace {

constexpr std::array<const char*, kinds> kindNames = {"message", "portType", "binding", "service"};

}  // namespace

std::optional<Kind> kindOf(const Node& node) {
  if (node.space != parse::Space::wsdl) return std::nullopt;
  switch (node.word) {
    case Word::message:
      return Kind::message;
    case Word::portType:
      return Kind::portType;
    case Word::binding:
      return Kind::binding;
    case Word::service:
      return Kind::service;
    default:
      return std::nullopt;
  }
}

DefinitionSet::DefinitionSet(parse::Loaded& loaded) {
  for (const parse::Definitions& definitions : loaded.definitions) {
    for (const Node* child = definitions.root->first; child; child = child->next) {
      if (const auto kind = kindOf(*child)) add(*kind, *child, definitions, loaded);
    }
  }
}

void DefinitionSet::add(Kind kind, const Node& node, const parse::Definitions& in, parse::Loaded& loaded) {
  const Definition added{{in.targetNamespace, node.get(Word::name)}, &node, &in};
  const auto index = static_cast<size_t>(kind);
  if (tables_[index].emplace(added.name, added).second) {
    if (kind == Kind::service) services_.push_back(added);
    return;
  }
  loaded.warnings.push_back({loaded.placeOf(*in.document, node), std::string(kindNames[index]) + ' ' +
                                                                     std::string(added.name.local) +
                                                                     " stands twice; the first one counts"});
}

const Definition* DefinitionSet::find(Kind kind, const Name& name) const {
  const auto& table = tables_[static_cast<size_t>(kind)];
  const auto found = table.find(name);
  return found == table.end() ? nullptr : &found->second;
}

const Definition* DefinitionSet::find(Kind kind, const Node& node, std::string_view text,
                                      const parse::Definitions& in) const {
  const auto [prefix, local] = parse::written(text);
  const auto space = parse::namespaceOf(node, prefix);
  const Definition* found = space ? find(kind, {*space, local}) : nullptr;
  return found ? found : find(kind, {in.targetNamespace, local});
}

}  // namespace ztservice::wsdl
