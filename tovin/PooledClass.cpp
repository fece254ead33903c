#include "tovin/PooledClass.h"

#include <bit>

#include "tovin/AllocBase.h"
#include "tovinCore/Exception.h"

namespace tovin {

namespace {

[[noreturn]] void refuseLeak() {
  throw Exception("Object leak, object being returned to pool when none were outstanding...");
}

}  // namespace

inline void Pool::putInto(Block*& first, FreeSlots Block::*kind, const Place& place) noexcept {
  Block* block =
      reinterpret_cast<Block*>(static_cast<std::byte*>(place.memory) - place.slot * objectSize_) - 1;
  FreeSlots& slots = block->*kind;
  if (slots.map == 0) slots.next = std::exchange(first, block);
  slots.map |= uint64_t{1} << place.slot;
}

inline Pool::Place Pool::takeFrom(Block*& first, FreeSlots Block::*kind) {
  Block* block = first;
  FreeSlots& slots = block->*kind;
  const auto slot = static_cast<uint8_t>(std::countr_zero(slots.map));
  slots.map &= slots.map - 1;
  if (slots.map == 0) first = slots.next;
  return {reinterpret_cast<std::byte*>(block + 1) + slot * objectSize_, slot};
}

inline Pool::Place Pool::takeResting() {
  Place place;
  if (resting_) {
    place = takeFrom(resting_, &Block::resting);
  } else {
    place.memory = strays_->back();
    strays_->pop_back();
  }
  place.resting = true;
  return place;
}

Pool::Place Pool::take() {
  AutoCriticalSection held(lock_);
  held.lock(lockTimeout, true);
  Place place;
  if (free_ > 0) {
    place = takeResting();
    leaks_.setResting(--free_);
  } else if (!Object::m_dontUsePools.load(std::memory_order_relaxed)) {
    if (!empty_) empty_ = makeBlock();
    place = takeFrom(empty_, &Block::empty);
  }
  ++outstanding_;
  return place;
}

Pool::Block* Pool::makeBlock() const {
  void* memory = AllocBase::_alloc(sizeof(Block) + objectSize_ * objectsPerBlock);
  if (!memory) throw MemoryException(static_cast<long long>(objectSize_), objectsPerBlock);
  return new (memory) Block{{}, {~uint64_t{0}, nullptr}};
}

void Pool::undoTake(const Place& place) {
  AutoCriticalSection held(lock_);
  held.lock(lockTimeout, true);
  --outstanding_;
  if (place.memory) putInto(empty_, &Block::empty, place);
}

void Pool::adopt(PooledObject& object, const Place& place) noexcept {
  object.origin_ = place.memory ? PooledObject::Origin::block : PooledObject::Origin::heap;
  object.slot_ = place.slot;
}

inline void Pool::requireOutstanding() const {
  if (outstanding_ == 0) refuseLeak();
}

inline bool Pool::isToBeDestroyed(const PooledObject& object) {
  using Origin = PooledObject::Origin;
  const bool counted = object.origin_ == Origin::block || object.origin_ == Origin::heap;
  const bool keptAlways = counted && limit_ == -1 && !Object::m_dontUsePools.load(std::memory_order_relaxed);
  return !keptAlways && isUnwanted(object);
}

// Whether an object is no longer wanted at all; it is then counted out no more.
bool Pool::isUnwanted(const PooledObject& object) {
  using Origin = PooledObject::Origin;
  if (object.origin_ == Origin::plainNew) return true;
  AutoCriticalSection held(lock_);
  held.lock(lockTimeout, true);
  if (object.origin_ == Origin::elsewhere) {
    requireOutstanding();
    throw Exception(L"An object of class %hs that its pool did not make cannot be returned to it",
                    object.getClassTag());
  }
  const bool pooling = !Object::m_dontUsePools.load(std::memory_order_relaxed);
  if (pooling && (limit_ == -1 || outstanding_ < limit_)) return false;
  --outstanding_;
  return true;
}

inline bool Pool::keep(const PooledObject& object, void* memory) noexcept {
  if (!liesInBlock(object)) return keepStray(memory);
  putInto(resting_, &Block::resting, {memory, object.slot_});
  return true;
}

bool Pool::keepStray(void* memory) noexcept {
  try {
    if (!strays_) strays_ = new std::vector<void*>;
    strays_->push_back(memory);
    return true;
  } catch (...) {
    return false;  // no memory to remember it by
  }
}

bool Pool::giveBack(PooledObject& object, void* memory, std::exception_ptr& failure) {
  if (isToBeDestroyed(object)) return false;
  try {
    object.onDeactivate();
  } catch (...) {
    failure = std::current_exception();
  }
  AutoCriticalSection held(lock_);
  held.lock(lockTimeout, true);
  requireOutstanding();
  --outstanding_;
  if (failure || !keep(object, memory)) return false;
  leaks_.setResting(++free_);
  return true;
}

void Pool::recycle(const Place& place) {
  AutoCriticalSection held(lock_);
  held.lock(lockTimeout, true);
  putInto(empty_, &Block::empty, place);
}

}  // namespace tovin
