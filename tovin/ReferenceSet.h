#pragma once

#include <vector>

#include "tovin/Array.h"
#include "tovin/Ptr.h"

namespace tovin {

class iNode;
class iProperty;

/// An ordered list of counted references: what a query selects.
///
/// - Ownership: holds one reference to each object that is counted when it comes in; one that its tree gives
///   up meanwhile lives on for the set. An object that nobody counts (a root node as it was allocated) stays
///   its maker's, who outlives the set's use of it.
template <class T>
class ReferenceSetImpl {
 public:
  size_t getSize() const noexcept { return items_.size(); }
  bool isEmpty() const noexcept { return items_.empty(); }
  /// Borrowed. InvalidIndexException(index, size - 1).
  T* operator[](size_t index) const {
    if (index >= items_.size()) {
      throw InvalidIndexException(static_cast<long long>(index), static_cast<long long>(items_.size()) - 1);
    }
    return items_[index].get();
  }
  void add(T* object) { items_.emplace_back(object); }
  void reserve(size_t size) { items_.reserve(size); }
  void clear() noexcept { items_.clear(); }
  void swap(ReferenceSetImpl& other) noexcept { items_.swap(other.items_); }

 private:
  std::vector<Held<T>> items_;
};

/// Fills a set anew by fill(set). What it held before lives until that is done, because the filling may stand
/// on it: a query's context may be held by nothing but the set of its result. Empty when fill throws.
template <class T, class Fill>
bool refill(ReferenceSetImpl<T>& result, Fill&& fill) {
  ReferenceSetImpl<T> before, found;
  (result.isEmpty() ? found : before).swap(result);  // an empty one lends its memory
  const bool answer = fill(found);
  result.swap(found);
  return answer;
}

using NodeReferenceSet = ReferenceSetImpl<iNode>;
using PropertyReferenceSet = ReferenceSetImpl<iProperty>;

}  // namespace tovin
