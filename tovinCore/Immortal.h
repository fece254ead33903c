#pragma once

#include <atomic>

namespace tovin {

/// A lock for a few steps at load and exit: there before any code runs, and nothing in it can fail.
class SmallLock {
 public:
  void lock() noexcept {
    while (taken_.test_and_set(std::memory_order_acquire)) taken_.wait(true, std::memory_order_relaxed);
  }
  void unlock() noexcept {
    taken_.clear(std::memory_order_release);
    taken_.notify_one();
  }

 private:
  std::atomic_flag taken_;
};

/// Holds a T that is there before any code runs and is never destroyed: static objects of other modules may
/// use it to the very end. T's default constructor is constexpr.
template <class T>
union Immortal {
  constexpr Immortal() : object() {}
  ~Immortal() {}
  T object;
};

}  // namespace tovin
