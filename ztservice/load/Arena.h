#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

namespace ztservice::parse {

// Memory that is given back all at once. Holds what needs no destructor.
class Arena {
 public:
  void* take(size_t bytes, size_t alignment) {
    size_t at = (used_ + alignment - 1) & ~(alignment - 1);
    if (blocks_.empty() || at + bytes > capacity_) {
      // Small at first: there may be a hundred thousand documents.
      next_ = next_ < largest ? next_ * 2 : next_;
      capacity_ = std::max(bytes, next_);
      blocks_.push_back(std::make_unique_for_overwrite<std::byte[]>(capacity_));
      at = 0;
    }
    used_ = at + bytes;
    return blocks_.back().get() + at;
  }

  template <class T>
  T* make(const T& value) {
    static_assert(std::is_trivially_destructible_v<T>);
    return new (take(sizeof(T), alignof(T))) T(value);
  }

  template <class T>
  std::span<const T> copy(std::span<const T> values) {
    static_assert(std::is_trivially_destructible_v<T>);
    if (values.empty()) return {};
    T* out = static_cast<T*>(take(values.size_bytes(), alignof(T)));
    std::uninitialized_copy(values.begin(), values.end(), out);
    return {out, values.size()};
  }

  std::string_view text(std::string_view value) {
    if (value.empty()) return {};
    char* out = static_cast<char*>(take(value.size(), 1));
    std::memcpy(out, value.data(), value.size());
    return {out, value.size()};
  }

 private:
  static constexpr size_t largest = 64 * 1024;

  std::vector<std::unique_ptr<std::byte[]>> blocks_;
  size_t used_ = 0;
  size_t capacity_ = 0;
  size_t next_ = 256;
};

}  // namespace ztservice::parse
