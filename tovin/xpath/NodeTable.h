// A table from nodes to numbers: open addressing, for many short-lived entries.
#pragma once

#include <bit>
#include <cstdint>
#include <vector>

namespace tovin {
class iNode;
}

namespace tovin::xpath {

class NodeTable {
 public:
  static constexpr uint32_t none = UINT32_MAX;

  /// The number of a node, none if it has none.
  uint32_t find(const iNode* node) const noexcept {
    return slots_.empty() ? none : slots_[slotOf(node)].number;
  }

  /// The number of a node for reading and writing; `none` where it was not in the table.
  uint32_t& at(const iNode* node) {
    if (used_ * 2 >= slots_.size()) grow();
    Slot& slot = slots_[slotOf(node)];
    if (!slot.node) {
      slot.node = node;
      ++used_;
    }
    return slot.number;
  }

 private:
  struct Slot {
    const iNode* node = nullptr;
    uint32_t number = none;
  };

  size_t slotOf(const iNode* node) const noexcept {
    const uint64_t hash = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(node)) * 0x9E3779B97F4A7C15u;
    size_t slot = static_cast<size_t>(hash >> shift_);
    while (slots_[slot].node && slots_[slot].node != node) slot = (slot + 1) & (slots_.size() - 1);
    return slot;
  }

  void grow() {
    std::vector<Slot> old(slots_.empty() ? 16 : slots_.size() * 2);
    old.swap(slots_);
    shift_ = 64 - std::countr_zero(slots_.size());
    for (const Slot& slot : old) {
      if (slot.node) slots_[slotOf(slot.node)] = slot;
    }
  }

  std::vector<Slot> slots_;
  size_t used_ = 0;
  int shift_ = 64;
};

}  // namespace tovin::xpath
