#pragma once

#include <algorithm>
#include <cstdint>
#include <new>
#include <span>
#include <utility>

#include "tovin/iNode.h"

/// The children of a node, as borrowed pointers in one block: quick at its front as at its end.
///
/// - Shape: one pointer. The block: where the first child stands, their number, the room, then the pointers.
/// - Sharing: lists that share one see each other's changes.
/// - Room made with makeRoom() is there for the next add() or insert(), which then cannot fail.
class ChildList {
 public:
  ChildList() noexcept = default;
  ChildList(ChildList&& other) noexcept : bits_(std::exchange(other.bits_, 0)) {}
  ChildList(const ChildList&) = delete;
  ChildList& operator=(const ChildList&) = delete;
  ~ChildList() { reset(); }

  uint32_t getSize() const noexcept { return block() ? block()->count : 0; }
  bool isEmpty() const noexcept { return getSize() == 0; }
  std::span<tovin::iNode* const> view() const noexcept {
    const Block* at = block();
    if (!at) return {};
    return {at->items(), at->count};
  }
  tovin::iNode*& operator[](size_t index) noexcept { return block()->items()[index]; }

  /// Room for so many more.
  void makeRoom(uint32_t more = 1) {
    const Block* now = block();
    const uint32_t used = now ? now->first + now->count : 0;
    if (now && now->capacity - used >= more) return;
    if (now && now->first > now->count && now->first >= more) return closeGap();
    resize(std::max(getSize() + more, now ? 2 * getSize() + 1 : 0));
  }
  void add(tovin::iNode* child) {
    makeRoom();
    Block* to = block();
    to->items()[to->count++] = child;
  }
  /// \param index at most the size.
  void insert(size_t index, tovin::iNode* child) {
    makeRoom();
    Block* to = block();
    if (to->first > 0 && index <= to->count / 2) {
      --to->first;
      std::move(to->items() + 1, to->items() + 1 + index, to->items());
    } else {
      std::move_backward(to->items() + index, to->items() + to->count, to->items() + to->count + 1);
    }
    ++to->count;
    to->items()[index] = child;
  }
  void removeAt(size_t index) noexcept {
    Block* from = block();
    if (index < from->count / 2) {
      std::move_backward(from->items(), from->items() + index, from->items() + index + 1);
      ++from->first;
    } else {
      std::move(from->items() + index + 1, from->items() + from->count, from->items() + index);
    }
    --from->count;
  }
  /// The last child, which leaves the list; the list is not empty.
  tovin::iNode* takeLast() noexcept {
    Block* from = block();
    return from->items()[--from->count];
  }
  /// All of them, also for those who share the list.
  ChildList takeAll() noexcept {
    ChildList taken;
    taken.setBlock(block());
    setBlock(nullptr);
    return taken;
  }
  /// Takes over the block of a list of its own, in place of an empty one.
  void adopt(ChildList&& other) noexcept {
    ::operator delete(block());
    setBlock(other.block());
    other.bits_ = 0;
  }
  /// Gives back the room behind the last child; without memory the list stays as it is.
  void shrink() noexcept {
    const Block* now = block();
    if (!now || now->capacity == now->count) return;
    try {
      resize(now->count);
    } catch (...) {
      return;
    }
  }

  void share(const ChildList& other) {
    if (bits_ == other.bits_) return;
    if (other.bits_ && !other.isShared()) {
      other.bits_ = reinterpret_cast<uintptr_t>(new Shared{1, other.block()}) | shared;
    }
    reset();
    bits_ = other.bits_;
    if (bits_) ++sharedPart()->users;
  }
  bool isSame(const ChildList& other) const noexcept { return bits_ == other.bits_; }
  bool hasOtherUsers() const noexcept { return isShared() && sharedPart()->users > 1; }
  void reset() noexcept {
    if (hasOtherUsers()) {
      --sharedPart()->users;
    } else {
      ::operator delete(block());
      if (isShared()) delete sharedPart();
    }
    bits_ = 0;
  }

 private:
  struct Block {
    uint32_t first;
    uint32_t count;
    uint32_t capacity;
    uint32_t unused;

    tovin::iNode** items() noexcept { return reinterpret_cast<tovin::iNode**>(this + 1) + first; }
    tovin::iNode* const* items() const noexcept { return const_cast<Block*>(this)->items(); }
  };
  struct Shared {
    size_t users;
    Block* block;
  };
  // In the lowest bit: it is the shared part that is pointed to.
  static constexpr uintptr_t shared = 1;

  bool isShared() const noexcept { return bits_ & shared; }
  Shared* sharedPart() const noexcept { return reinterpret_cast<Shared*>(bits_ & ~shared); }
  Block* block() const noexcept { return isShared() ? sharedPart()->block : reinterpret_cast<Block*>(bits_); }
  void setBlock(Block* block) noexcept {
    if (isShared())
      sharedPart()->block = block;
    else
      bits_ = reinterpret_cast<uintptr_t>(block);
  }
  void closeGap() noexcept {
    Block* now = block();
    tovin::iNode** from = now->items();
    now->first = 0;
    std::move(from, from + now->count, now->items());
  }
  void resize(uint32_t capacity) {
    Block* now = block();
    auto* made = new (::operator new(sizeof(Block) + capacity * sizeof(tovin::iNode*)))
        Block{0, getSize(), capacity, 0};
    if (now) std::copy_n(now->items(), now->count, made->items());
    ::operator delete(now);
    setBlock(made);
  }

  mutable uintptr_t bits_ = 0;
};
