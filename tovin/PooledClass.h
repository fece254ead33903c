#pragma once

#include <cstddef>
#include <exception>

#include "tovin/Object.h"
#include "tovinCore/CriticalSection.h"

namespace tovin {

/// What every pool shares, whatever its class: the lock, the counts, the free objects and the blocks they lie
/// in.
///
/// - Threads: any; every step holds the critical section, with a time-out of 60 000 ms.
/// - Memory: objects lie in blocks of 64, which stay with the pool for the life of the process.
class TOVIN_API Pool {
 public:
  Pool(size_t objectSize, long limit, LeakDetector& leaks)
      : objectSize_(objectSize), limit_(limit), leaks_(leaks) {}
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;

  long getOutstanding() const noexcept { return outstanding_; }
  long getFree() const noexcept { return free_; }

 protected:
  static constexpr long lockTimeout = 60'000;
  static constexpr size_t objectsPerBlock = 64;

  /// Counts one object out: a free one, or null and memory to build one in.
  PooledObject* take(void*& memory);
  /// Building failed: the memory goes back and the count down.
  void undoTake(void* memory);
  /// Tells the object that take() gave memory for where that came from.
  static void adopt(PooledObject& object, void* memory);
  /// Takes an object back. True: it was kept. False: it is counted out no more, and the caller destroys it.
  /// \param failure out: what its onDeactivate threw; an object that could not put its things away is not
  /// kept.
  bool giveBack(PooledObject& object, std::exception_ptr& failure);
  /// Where the memory of an object that giveBack() refused goes after its destructor ran.
  void recycle(void* memory);
  static bool liesInBlock(const PooledObject& object) {
    return object.origin_ == PooledObject::Origin::block;
  }

 private:
  // A piece of a block that holds no object.
  struct Slot {
    Slot* next;
  };
  void* takeSlot();

  CriticalSection lock_;
  const size_t objectSize_;
  const long limit_;
  LeakDetector& leaks_;
  long outstanding_ = 0;
  long free_ = 0;
  PooledObject* firstFree_ = nullptr;
  Slot* firstSlot_ = nullptr;
  std::byte* unused_ = nullptr;
  std::byte* unusedEnd_ = nullptr;
};

/// The registration object of a pooled class. Limit: up to so many outstanding objects are kept on their
/// return; -1 keeps all.
template <class T, long Limit = -1>
class PooledClassImp : public Class, public Pool {
  static_assert(alignof(T) <= alignof(std::max_align_t));

 public:
  PooledClassImp(const ClassTag& tag, LeakDetector& leaks)
      : Class(tag, leaks), Pool(sizeof(T), Limit, leaks) {
    if constexpr (requires { T::partDetector(); }) {
      if (LeakDetector* part = T::partDetector()) leaks.setPart(*part);
    }
  }

  Object* newInstance() override { return allocate(); }

  T* allocate() {
    T* object = takeOrMake();
    try {
      static_cast<PooledObject*>(object)->onActivate();
    } catch (...) {
      deallocate(object);
      throw;
    }
    return object;
  }
  T* allocateCopy(const T& source) {
    T* object = allocate();
    try {
      *object = source;
    } catch (...) {
      deallocate(object);
      throw;
    }
    return object;
  }
  /// Returns an object to the pool and clears the caller's pointer; nothing for null. What its onDeactivate
  /// throws comes out when the object is gone.
  void deallocate(T*& object) {
    T* given = std::exchange(object, nullptr);
    std::exception_ptr failure;
    if (!given || giveBack(*given, failure)) return;
    if (liesInBlock(*given)) {
      given->~T();
      recycle(given);
    } else {
      delete given;
    }
    if (failure) std::rethrow_exception(std::move(failure));
  }

 private:
  T* takeOrMake() {
    void* memory = nullptr;
    if (PooledObject* free = take(memory)) return static_cast<T*>(free);
    try {
      T* object = constructed([&] { return memory ? new (memory) T : new T; });
      adopt(*object, memory);
      return object;
    } catch (...) {
      undoTake(memory);
      throw;
    }
  }
};

}  // namespace tovin
