#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace tovin {

/// An ordered list of borrowed pointers that is as quick at its front as at its end.
///
/// - Room made with makeRoom() is there for the next add() or insert(), which then cannot fail.
template <class T>
class PointerList {
 public:
  size_t getSize() const noexcept { return items_.size() - begin_; }
  bool isEmpty() const noexcept { return getSize() == 0; }
  size_t getCapacity() const noexcept { return items_.capacity(); }
  /// Unchecked.
  T** data() noexcept { return items_.data() + begin_; }
  T* const* data() const noexcept { return items_.data() + begin_; }
  T* const* begin() const noexcept { return data(); }
  T* const* end() const noexcept { return data() + getSize(); }

  void reserve(size_t size) { items_.reserve(begin_ + size); }
  /// Room for one more.
  void makeRoom() {
    if (items_.size() < items_.capacity()) return;
    if (begin_ > items_.size() / 2)
      closeGap();
    else
      items_.reserve(std::max<size_t>(1, items_.size() * 2));
  }
  void add(T* item) {
    makeRoom();
    items_.push_back(item);
  }
  /// \param index at most the size.
  void insert(size_t index, T* item) {
    if (begin_ > 0 && index <= getSize() / 2) {
      --begin_;
      std::move(data() + 1, data() + 1 + index, data());
      data()[index] = item;
      return;
    }
    makeRoom();
    items_.insert(at(index), item);
  }
  void removeAt(size_t index) noexcept {
    if (index < getSize() / 2) {
      std::move_backward(data(), data() + index, data() + index + 1);
      ++begin_;
    } else {
      items_.erase(at(index));
      if (isEmpty()) clear();
    }
  }
  void removeFirst(size_t count) noexcept {
    begin_ += count;
    if (isEmpty()) clear();
  }
  /// The last item, which leaves the list; the list is not empty.
  T* takeLast() noexcept {
    T* last = items_.back();
    items_.pop_back();
    if (isEmpty()) clear();
    return last;
  }
  void clear() noexcept {
    items_.clear();
    begin_ = 0;
  }
  void swap(PointerList& other) noexcept {
    items_.swap(other.items_);
    std::swap(begin_, other.begin_);
  }

 private:
  auto at(size_t index) noexcept { return items_.begin() + static_cast<std::ptrdiff_t>(begin_ + index); }
  void closeGap() noexcept {
    items_.erase(items_.begin(), at(0));
    begin_ = 0;
  }

  std::vector<T*> items_;
  size_t begin_ = 0;
};

}  // namespace tovin
