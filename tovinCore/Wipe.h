#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "tovinCore/Export.h"

namespace tovin {

/// Overwrites memory that held a secret with zeros; no optimiser takes the call away. Null is allowed for 0
/// bytes.
TOVINCORE_API void wipe(void* memory, size_t bytes) noexcept;

/// Wipes all that a container gives back: at its end, and each time it moves to a larger block.
template <class T>
struct WipingAllocator {
  using value_type = T;

  WipingAllocator() noexcept = default;
  template <class Other>
  WipingAllocator(const WipingAllocator<Other>&) noexcept {}

  T* allocate(size_t count) { return std::allocator<T>().allocate(count); }
  void deallocate(T* block, size_t count) noexcept {
    wipe(block, count * sizeof(T));
    std::allocator<T>().deallocate(block, count);
  }
  friend bool operator==(const WipingAllocator&, const WipingAllocator&) noexcept { return true; }
};

/// Bytes that leave nothing behind.
using SecretBytes = std::vector<unsigned char, WipingAllocator<unsigned char>>;

}  // namespace tovin
