#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>

#include "tovinCore/Export.h"

namespace tovin {

/// A lock with a time-out whose uncontended path is one atomic operation each way. Not recursive.
class TOVINCORE_API CriticalSection {
 public:
  CriticalSection() = default;
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  bool tryLock() noexcept {
    int free = unlocked;
    return state_.compare_exchange_strong(free, locked, std::memory_order_acquire, std::memory_order_relaxed);
  }
  /// \param timeout milliseconds. False when the lock was not had in that time.
  bool lock(long timeout) noexcept { return tryLock() || wait(timeout); }
  void unlock() noexcept {
    if (state_.exchange(unlocked, std::memory_order_release) == contended) wake();
  }

 private:
  // `contended` tells the holder that somebody may sleep, so only then does unlocking look for sleepers.
  enum : int { unlocked, locked, contended };
  bool wait(long timeout) noexcept;
  void wake() noexcept;

  std::atomic<int> state_{unlocked};
  std::mutex mutex_;
  std::condition_variable woken_;
};

/// Holds a critical section for a scope, and can let go of it in between.
class TOVINCORE_API AutoCriticalSection {
 public:
  explicit AutoCriticalSection(CriticalSection& section) : section_(section) {}
  AutoCriticalSection(const AutoCriticalSection&) = delete;
  AutoCriticalSection& operator=(const AutoCriticalSection&) = delete;
  ~AutoCriticalSection() { unlock(); }

  /// \param timeout milliseconds; \param raise a time-out is an exception rather than false.
  bool lock(long timeout, bool raise) {
    held_ = section_.lock(timeout);
    if (!held_ && raise) raiseTimeout();
    return held_;
  }
  void unlock() noexcept {
    if (held_) section_.unlock();
    held_ = false;
  }

 private:
  [[noreturn]] static void raiseTimeout();

  CriticalSection& section_;
  bool held_ = false;
};

}  // namespace tovin
