#include "ztservice/load/Node.h"

#include <algorithm>

namespace ztservice::parse {

const Attribute* Node::find(Word ofWord, Space ofSpace) const noexcept {
  for (const Attribute& attribute : attributes) {
    if (attribute.word == ofWord && attribute.space == ofSpace) return &attribute;
  }
  return nullptr;
}

std::string_view Node::get(Word ofWord, Space ofSpace) const noexcept {
  const Attribute* found = find(ofWord, ofSpace);
  return found ? trimmed(found->value) : std::string_view();
}

std::optional<std::string_view> Node::raw(Word ofWord) const noexcept {
  const Attribute* found = find(ofWord);
  return found ? std::optional(found->value) : std::nullopt;
}

bool Node::flag(Word ofWord) const noexcept {
  const std::string_view value = get(ofWord);
  return value == "true" || value == "1";
}

const Node* Node::child(Space ofSpace, Word ofWord) const noexcept {
  const Node* at = first;
  while (at && !at->is(ofSpace, ofWord)) at = at->next;
  return at;
}

Written written(std::string_view text) noexcept {
  const size_t colon = text.find(':');
  if (colon == text.npos) return {{}, text};
  const std::string_view prefix(text.data(), colon);
  text.remove_prefix(colon + 1);
  return {prefix, text};
}

std::optional<std::string_view> namespaceOf(const Node& node, std::string_view prefix) noexcept {
  for (const Scope* scope = node.scope; scope; scope = scope->outer) {
    if (scope->prefix == prefix) return scope->uri;
  }
  if (prefix == "xml") return "http://www.w3.org/XML/1998/namespace";
  return prefix.empty() ? std::optional<std::string_view>(std::string_view()) : std::nullopt;
}

}  // namespace ztservice::parse
