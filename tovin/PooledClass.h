#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <new>
#include <vector>

#include "tovin/Object.h"
#include "tovinCore/CriticalSection.h"

namespace tovin {

/// What every pool shares, whatever its class: the lock, the counts, and the blocks with a map of their free
/// slots, which go out from the lowest on.
///
/// - Threads: any; every step holds the critical section, with a time-out of 60 000 ms.
/// - Memory: objects lie in blocks of 64, which stay with the pool for the life of the process.
class TOVIN_API Pool {
 public:
  Pool(size_t objectSize, long limit, LeakDetector& leaks)
      : objectSize_((objectSize + alignment - 1) / alignment * alignment), limit_(limit), leaks_(leaks) {}
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;

  long getOutstanding() const noexcept { return outstanding_; }
  long getFree() const noexcept { return free_; }

 protected:
  /// Where an object lies, or will: a slot of a block, or memory of its own, null until it is made.
  struct Place {
    void* memory = nullptr;
    uint8_t slot = 0;
    /// An object rests there.
    bool resting = false;
  };

  /// Counts one object out: one that rests, or else a place to make one in.
  Place take();
  /// Making it failed: the place goes back and the count down.
  void undoTake(const Place& place);
  /// Tells a new object where it lies.
  static void adopt(PooledObject& object, const Place& place) noexcept;
  /// Takes an object back. True: it was kept. False: it is counted out no more, and the caller destroys it.
  /// \param memory where the whole object begins.
  /// \param failure out: what its onDeactivate threw; an object that could not put its things away is not
  /// kept.
  bool giveBack(PooledObject& object, void* memory, std::exception_ptr& failure);
  /// Takes the place of an object that giveBack() refused, after its destructor ran.
  void recycle(const Place& place);
  static bool liesInBlock(const PooledObject& object) noexcept {
    return object.origin_ == PooledObject::Origin::block;
  }
  static uint8_t slotOf(const PooledObject& object) noexcept { return object.slot_; }

 private:
  static constexpr long lockTimeout = 60'000;
  static constexpr size_t alignment = alignof(std::max_align_t);

  // Stands before 64 objects. A bit of each map is a slot; a block whose map has none is not in that list.
  struct Block;
  struct FreeSlots {
    uint64_t map = 0;
    Block* next = nullptr;
  };
  struct alignas(alignment) Block {
    FreeSlots resting;
    FreeSlots empty;
  };
  static constexpr unsigned objectsPerBlock = 64;

  Place takeResting();
  Place takeFrom(Block*& first, FreeSlots Block::*kind);
  void putInto(Block*& first, FreeSlots Block::*kind, const Place& place) noexcept;
  Block* makeBlock() const;
  void requireOutstanding() const;
  bool isToBeDestroyed(const PooledObject& object);
  bool isUnwanted(const PooledObject& object);
  bool keep(const PooledObject& object, void* memory) noexcept;
  bool keepStray(void* memory) noexcept;

  CriticalSection lock_;
  const size_t objectSize_;
  const long limit_;
  LeakDetector& leaks_;
  long outstanding_ = 0;
  long free_ = 0;
  // The blocks in which objects rest, and those that have slots without one.
  Block* resting_ = nullptr;
  Block* empty_ = nullptr;
  // Resting objects that were made while no pools were used. Never destroyed, as the blocks.
  std::vector<void*>* strays_ = nullptr;
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
    if (!given || giveBack(*given, given, failure)) return;
    if (liesInBlock(*given)) {
      const Place place{given, slotOf(*given)};
      given->~T();
      recycle(place);
    } else {
      delete given;
    }
    if (failure) std::rethrow_exception(std::move(failure));
  }

 private:
  T* takeOrMake() {
    const Place place = take();
    if (place.resting) return std::launder(static_cast<T*>(place.memory));
    try {
      T* object = constructed([&] { return place.memory ? new (place.memory) T : new T; });
      adopt(*object, place);
      return object;
    } catch (...) {
      undoTake(place);
      throw;
    }
  }
};

}  // namespace tovin
