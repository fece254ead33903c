// Brings items into document order.
#pragma once

#include "tovin/xpath/NodeSet.h"

namespace tovin::xpath {

/// Sorts the items and drops duplicates. Looks only at their ancestors and, where more than one child of a
/// node leads to an item, at that node's children: a small set in a large tree costs little, and none is
/// quadratic.
void sortIntoDocumentOrder(const Tree& tree, std::vector<Item>& items);

}  // namespace tovin::xpath
