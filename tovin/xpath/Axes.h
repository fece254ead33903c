// The axes that look around: from one item to others, in the order that the axis counts them.
#pragma once

#include <array>

#include "tovin/xpath/Expression.h"
#include "tovin/xpath/NodeSet.h"

namespace tovin::xpath {

/// Counts down what an evaluation may visit: nested predicates could ask without end.
class Allowance {
 public:
  /// What costs as much as that many visits.
  void spend(uint64_t visits = 1) {
    if (visits > left_) refuse();
    left_ -= visits;
  }

 private:
  [[noreturn]] static void refuse();
  uint64_t left_ = 10'000'000'000;
};

class Axes {
 public:
  explicit Axes(const Tree& tree) : tree_(tree) {}

  /// Every axis but attribute. False when the visitor wanted no more.
  bool visit(Axis axis, const Item& from, Visit visit);
  Allowance& allowance() noexcept { return allowance_; }

 private:
  using Body = bool (Axes::*)(const Item& from, Visit visit);
  static const std::array<Body, 12> bodies;

  bool visitAncestors(const Item& from, Visit visit);
  bool visitAncestorsOrSelf(const Item& from, Visit visit);
  bool visitNothing(const Item&, Visit) { return true; }
  bool visitChildren(const Item& from, Visit visit);
  bool visitDescendants(const Item& from, Visit visit);
  bool visitDescendantsOrSelf(const Item& from, Visit visit);
  bool visitFollowing(const Item& from, Visit visit);
  bool visitFollowingSiblings(const Item& from, Visit visit);
  bool visitParent(const Item& from, Visit visit);
  bool visitPreceding(const Item& from, Visit visit);
  bool visitPrecedingSiblings(const Item& from, Visit visit);
  bool visitSelf(const Item& from, Visit visit) { return visit(from); }

  bool visitSubtree(const iNode& element, Visit visit);
  bool visitSubtreeBackwards(const iNode& element, Visit visit);
  Children siblingsOf(const iNode& element) const;
  size_t indexOf(const iNode& element, Children siblings);

  // Where a child of a parent was found last: the next one asked for is mostly near.
  struct Hint {
    const iNode* const* siblings = nullptr;
    size_t index = 0;
  };

  const Tree& tree_;
  Allowance allowance_;
  std::array<Hint, 64> hints_{};
};

/// The item above; false for the document root.
bool parentOf(const Item& item, Item& parent);

}  // namespace tovin::xpath
