#include "ztbaseclient/wsdl/Surroundings.h"

#include <algorithm>

#include "ztbaseclient/wsdl/Declarations.h"

using tovin::iNode;

void Surroundings::add(const iNode* root, const Roots& otherRoots, const Schemas& schemas) {
  enter(root, schemas);
  while (!open_.empty()) {
    Open& open = open_.back();
    if (open.nextChild == open.node->getNumberOfChildren()) {
      leave();
    } else {
      const iNode* child = open.node->getChildAt(open.nextChild++);
      if (!otherRoots.count(child)) enter(child, schemas);
    }
  }
}

void Surroundings::enter(const iNode* node, const Schemas& schemas) {
  open_.push_back({node, 0, undo_.size()});
  forDeclarations(node, [&](std::wstring_view prefix, const tovin::WideString& uri) {
    uris_.push_back(uri);
    change(bindings_[folded(prefix)], uris_.size());
  });
  const auto schema = schemas.find(node);
  if (schema != schemas.end()) change(schemaChanges_, schema->second + 1);
  places_.emplace(node, places_.size());
}

void Surroundings::leave() {
  for (; undo_.size() > open_.back().changesAround; undo_.pop_back()) {
    undo_.back().changes->push_back({places_.size(), undo_.back().value});
  }
  open_.pop_back();
}

void Surroundings::change(Changes& changes, size_t value) {
  undo_.push_back({&changes, changes.empty() ? 0 : changes.back().value});
  changes.push_back({places_.size(), value});
}

size_t Surroundings::valueAt(const iNode* node, const Changes& changes) const {
  const auto isBefore = [](size_t place, const Change& change) { return place < change.from; };
  const auto next = std::upper_bound(changes.begin(), changes.end(), places_.at(node), isBefore);
  return next == changes.begin() ? 0 : std::prev(next)->value;
}

tovin::WideString Surroundings::boundAt(const iNode* node, std::wstring_view prefix) const {
  const auto changes = bindings_.find(folded(prefix));
  const size_t value = changes == bindings_.end() ? 0 : valueAt(node, changes->second);
  return value == 0 ? tovin::WideString() : uris_[value - 1];
}

size_t Surroundings::schemaAround(const iNode* node) const {
  const size_t value = valueAt(node, schemaChanges_);
  return value == 0 ? none : value - 1;
}
