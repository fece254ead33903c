#include "tovin/xpath/DocumentOrder.h"

#include <algorithm>

namespace tovin::xpath {
namespace {

// Numbers the elements that items stand at, and their ancestors, on one walk over just these.
class Numbering {
 public:
  Numbering(const Tree& tree, const std::vector<Item>& items) : tree_(tree) {
    for (const Item& item : items) mark(item.element);
    looks_ = items.size() + marked_.size();
    walk();
  }

  uint32_t numberOf(const iNode* element) const { return marked_[indexes_.find(element)].number; }
  /// How many nodes were looked at.
  uint64_t looks() const noexcept { return looks_; }

 private:
  struct Marked {
    const iNode* element;
    // Marked children: how many, and the last one found.
    uint32_t count = 0;
    uint32_t child = 0;
    uint32_t number = UINT32_MAX;
  };
  struct Visit {
    uint32_t marked;
    size_t next;
    uint32_t left;
  };

  // The element and the ancestors that are not marked yet.
  void mark(const iNode* element) {
    uint32_t child = NodeTable::none;
    for (; element; element = element->findParent()) {
      uint32_t& index = indexes_.at(element);
      const bool known = index != NodeTable::none;
      if (!known) {
        index = static_cast<uint32_t>(marked_.size());
        marked_.push_back({element});
      }
      if (child != NodeTable::none) {
        ++marked_[index].count;
        marked_[index].child = child;
      }
      if (known) return;
      child = index;
    }
  }

  void enter(uint32_t marked, std::vector<Visit>& visits) {
    marked_[marked].number = ++last_;
    if (marked_[marked].count > 0) visits.push_back({marked, 0, marked_[marked].count});
  }

  void walk() {
    std::vector<Visit> visits;
    const uint32_t top = indexes_.find(&tree_.top());
    if (top == NodeTable::none) return;
    enter(top, visits);
    while (!visits.empty()) {
      const uint32_t child = nextMarkedChild(visits.back());
      if (child != NodeTable::none) {
        enter(child, visits);
        continue;
      }
      looks_ += visits.back().next;
      visits.pop_back();
    }
  }

  // An only one is known; several are looked for among the children.
  uint32_t nextMarkedChild(Visit& visit) const {
    if (visit.left == 0) return NodeTable::none;
    const Marked& parent = marked_[visit.marked];
    if (parent.count == 1) {
      visit.left = 0;
      return parent.child;
    }
    const Children children = parent.element->getChildren();
    while (visit.next < children.size()) {
      const uint32_t child = indexes_.find(children[visit.next++]);
      if (child == NodeTable::none) continue;
      --visit.left;
      return child;
    }
    return NodeTable::none;
  }

  const Tree& tree_;
  NodeTable indexes_;
  std::vector<Marked> marked_;
  uint32_t last_ = 0;
  uint64_t looks_ = 0;
};

struct Keyed {
  uint64_t key;
  Item item;
};

}  // namespace

template <class NumberOf>
void DocumentOrder::sortBy(NumberOf&& numberOf, std::vector<Item>& items) {
  std::vector<Keyed> keyed;
  keyed.reserve(items.size());
  for (const Item& item : items) {
    const uint64_t number = item.element ? numberOf(item.element) : 0;
    // An element stands before its attributes: its index wraps to 0.
    keyed.push_back({number << 32 | (item.attribute + 1), item});
  }
  if (!std::ranges::is_sorted(keyed, {}, &Keyed::key)) std::ranges::stable_sort(keyed, {}, &Keyed::key);
  items.clear();
  for (const Keyed& each : keyed) {
    if (items.empty() || items.back() != each.item) items.push_back(each.item);
  }
}

void DocumentOrder::sort(std::vector<Item>& items) {
  constexpr unsigned fewSorts = 16;
  if (items.size() < 2) return;
  if (!numbered_ && ++sorts_ > fewSorts && looks_ >= 2 * tried_) numberTree();
  if (numbered_) return sortBy([this](const iNode* element) { return numbers_.find(element); }, items);
  const Numbering numbering(tree_, items);
  looks_ += numbering.looks();
  axes_.allowance().spend(numbering.looks());
  sortBy([&](const iNode* element) { return numbering.numberOf(element); }, items);
}

// Gives up where the tree turns out to be larger than all that was looked at, to try again when that has
// doubled.
void DocumentOrder::numberTree() {
  tried_ = looks_;
  uint32_t last = 0;
  uint64_t visited = 0;
  numbered_ = axes_.visit(Axis::descendant, {}, [&](const Item& item) {
    uint32_t& number = numbers_.at(item.element);
    if (number == NodeTable::none) number = ++last;
    return ++visited < tried_;
  });
  if (!numbered_) numbers_ = {};
}

}  // namespace tovin::xpath
