#include "tovinCore/CriticalSection.h"

#include <chrono>

#include "tovinCore/Exception.h"

namespace tovin {

bool CriticalSection::wait(long timeout) noexcept try {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout);
  std::unique_lock<std::mutex> held(mutex_);
  // Whoever gets the lock here leaves it marked contended: other sleepers may still be waiting behind it.
  while (state_.exchange(contended, std::memory_order_acquire) != unlocked) {
    if (woken_.wait_until(held, deadline) == std::cv_status::timeout) {
      return state_.exchange(contended, std::memory_order_acquire) == unlocked;
    }
  }
  return true;
} catch (...) {
  return false;  // the system has no lock to sleep on
}

void CriticalSection::wake() noexcept {
  // Taking the mutex makes sure that a waiter which marked the lock contended is asleep by now.
  try {
    const std::lock_guard<std::mutex> held(mutex_);
  } catch (...) {
    // A waiter that is not asleep yet sleeps until its time-out then.
  }
  woken_.notify_one();
}

void AutoCriticalSection::raiseTimeout() { throw Exception(L"Timed out waiting for a critical section"); }

}  // namespace tovin
