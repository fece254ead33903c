// Brings items into document order.
#pragma once

#include "tovin/xpath/Axes.h"
#include "tovin/xpath/NodeSet.h"
#include "tovin/xpath/NodeTable.h"

namespace tovin::xpath {

/// The document order of one tree during one evaluation. A sort looks only at the items' ancestors and, where
/// more than one child of a node leads to an item, at that node's children: a small set in a large tree costs
/// little. Where many sorts together come to cost as much as a walk over the tree, its nodes are numbered
/// once for all that follow.
class DocumentOrder {
 public:
  /// Borrows both.
  DocumentOrder(const Tree& tree, Axes& axes) : tree_(tree), axes_(axes) {}

  /// Sorts the items and drops duplicates.
  void sort(std::vector<Item>& items);

 private:
  void numberTree();
  template <class NumberOf>
  static void sortBy(NumberOf&& numberOf, std::vector<Item>& items);

  const Tree& tree_;
  Axes& axes_;
  unsigned sorts_ = 0;
  uint64_t looks_ = 0;  // at nodes, by all sorts so far
  uint64_t tried_ = 0;  // that many nodes were too few to number the tree
  bool numbered_ = false;
  NodeTable numbers_;
};

}  // namespace tovin::xpath
