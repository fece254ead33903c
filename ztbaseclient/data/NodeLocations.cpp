#include "ztbaseclient/data/NodeLocations.h"

#include "tovinCore/Units.h"

namespace {

struct FoldedHash {
  size_t operator()(const wchar_t* name) const noexcept { return name ? tovin::hashKeyedFolded(name) : 0; }
};

struct FoldedEqual {
  bool operator()(const wchar_t* a, const wchar_t* b) const noexcept { return tovin::equalFolded(a, b); }
};

}  // namespace

tovin::WideString NodeLocations::get(const tovin::iNode& node) {
  tovin::WideString path;
  write(
      node, true, [this](const tovin::iNode& step) { return positionOf(step); }, path);
  return path;
}

unsigned NodeLocations::positionOf(const tovin::iNode& node) {
  const tovin::iNode* parent = node.findParent();
  if (!parent) return 0;
  const auto known = positions_.find(&node);
  if (known != positions_.end()) return known->second;
  count(*parent);
  return positions_[&node];
}

void NodeLocations::count(const tovin::iNode& parent) {
  std::unordered_map<const wchar_t*, unsigned, FoldedHash, FoldedEqual> namesakes;
  for (const tovin::iNode* child : parent.getChildren()) {
    positions_[child] = ++namesakes[child->getName()];
  }
  for (const tovin::iNode* child : parent.getChildren()) {
    if (namesakes[child->getName()] == 1) positions_[child] = 0;
  }
}
