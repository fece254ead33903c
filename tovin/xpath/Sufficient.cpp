#include "tovin/xpath/Sufficient.h"

#include <algorithm>

#include "tovin/xpath/NodeTable.h"

namespace tovin::xpath {
namespace {

bool liesInside(const Item& item, const Item& outer) {
  if (outer.isRoot()) return true;
  if (outer.isAttribute()) return false;
  const iNode* at = item.isAttribute() ? item.element : item.element->findParent();
  while (at && at != outer.element) at = at->findParent();
  return at != nullptr;
}

// The one that ends first: everything behind any of the others lies behind it too.
Item firstToEnd(const std::vector<Item>& items) {
  Item first = items.front();
  for (size_t i = 1; i < items.size() && liesInside(items[i], first); ++i) first = items[i];
  return first;
}

template <class Iterator>
std::vector<Item> firstOfEachParent(Iterator at, Iterator end) {
  NodeTable met;
  std::vector<Item> items;
  for (; at != end; ++at) {
    const iNode* parent = at->isElement() ? at->element->findParent() : nullptr;
    if (!parent) continue;
    uint32_t& number = met.at(parent);
    if (number == NodeTable::none) items.push_back(*at);
    number = 0;
  }
  return items;
}

}  // namespace

std::vector<Item> sufficient(Axis axis, const std::vector<Item>& items) {
  switch (axis) {
    case Axis::following:
      return {firstToEnd(items)};
    case Axis::preceding:
      return {items.back()};
    case Axis::followingSibling:
      return firstOfEachParent(items.begin(), items.end());
    case Axis::precedingSibling:
      return firstOfEachParent(items.rbegin(), items.rend());
    default:
      return items;
  }
}

}  // namespace tovin::xpath
