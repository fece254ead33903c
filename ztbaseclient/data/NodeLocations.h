#pragma once

#include <unordered_map>
#include <vector>

#include "tovin/iNode.h"
#include "tovinCore/Numbers.h"
#include "ztbaseclient/Export.h"

/// The places of many nodes of one tree by names, as DeepPropertyUtils::NodeLocation writes them: the
/// children of a parent are counted once, however many of them are asked for.
///
///     NodeLocations locations;
///     for (size_t i = 0; i < found.getSize(); ++i) print(locations.get(*found[i]));
///
/// - The tree must not change meanwhile.
class ZTBASECLIENT_API NodeLocations {
 public:
  tovin::WideString get(const tovin::iNode& node);

  /// Writes a location: each step by name, or as '*', with what position(node) says, 0 for no position.
  template <class Position>
  static void write(const tovin::iNode& node, bool useNames, Position&& position, tovin::WideString& path);

 private:
  unsigned positionOf(const tovin::iNode& node);
  void count(const tovin::iNode& parent);

  std::unordered_map<const tovin::iNode*, unsigned> positions_;
};

template <class Position>
void NodeLocations::write(const tovin::iNode& node, bool useNames, Position&& position,
                          tovin::WideString& path) {
  std::vector<const tovin::iNode*> steps;
  for (const tovin::iNode* at = &node; at; at = at->findParent()) steps.push_back(at);
  path = L"/";
  for (size_t i = steps.size(); i-- > 0;) {
    path += useNames ? steps[i]->getName() : L"*";
    if (const unsigned counted = position(*steps[i]))
      ((path += L'[') += tovin::util::integerToString(counted)) += L']';
    path += L'/';
  }
}
