#pragma once

#include <utility>
#include <vector>

#include "tovinCore/Exception.h"

namespace tovin {

/// An ordered, growable array. T may be incomplete where the array is only declared.
///
/// - Errors: InvalidIndexException(index, last valid index) from every checked access.
/// - Ownership: owns its elements; an array of pointers borrows what they point to.
template <class T>
class Array {
 public:
  Array() noexcept = default;
  Array(std::initializer_list<T> items) : items_(items) {}
  explicit Array(std::vector<T> items) noexcept : items_(std::move(items)) {}

  size_t getSize() const noexcept { return items_.size(); }
  bool isEmpty() const noexcept { return items_.empty(); }
  size_t getCapacity() const noexcept { return items_.capacity(); }
  T& operator[](size_t index) { return items_[checked(index)]; }
  const T& operator[](size_t index) const { return items_[checked(index)]; }

  T& add(T item) { return items_.emplace_back(std::move(item)); }
  /// Inserts before index; index may equal the size.
  void insert(size_t index, T item) {
    if (index > items_.size()) raise(index);
    items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(index), std::move(item));
  }
  void removeAt(size_t index) { items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(checked(index))); }
  void setSize(size_t size) { items_.resize(size); }
  void reserve(size_t size) { items_.reserve(size); }
  void clear() noexcept { items_.clear(); }

  /// Unchecked.
  T* data() noexcept { return items_.data(); }
  const T* data() const noexcept { return items_.data(); }
  auto begin() noexcept { return items_.begin(); }
  auto end() noexcept { return items_.end(); }
  auto begin() const noexcept { return items_.begin(); }
  auto end() const noexcept { return items_.end(); }
  /// The elements as the standard container, for algorithms.
  std::vector<T>& items() noexcept { return items_; }
  const std::vector<T>& items() const noexcept { return items_; }

 private:
  [[noreturn]] void raise(size_t index) const {
    throw InvalidIndexException(static_cast<long long>(index), static_cast<long long>(items_.size()) - 1);
  }
  size_t checked(size_t index) const {
    if (index >= items_.size()) raise(index);
    return index;
  }

  std::vector<T> items_;
};

}  // namespace tovin
