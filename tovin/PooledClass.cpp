#include "tovin/PooledClass.h"

#include "tovin/AllocBase.h"
#include "tovinCore/Exception.h"

namespace tovin {

namespace {

[[noreturn]] void refuseLeak() {
  throw Exception("Object leak, object being returned to pool when none were outstanding...");
}

}  // namespace

PooledObject* Pool::take(void*& memory) {
  AutoCriticalSection held(lock_);
  held.lock(lockTimeout, true);
  PooledObject* object = firstFree_;
  if (object) {
    firstFree_ = object->next_;
    leaks_.setResting(--free_);
  } else if (!Object::m_dontUsePools.load(std::memory_order_relaxed)) {
    memory = takeSlot();
  }
  ++outstanding_;
  return object;
}

void* Pool::takeSlot() {
  if (firstSlot_) return std::exchange(firstSlot_, firstSlot_->next);
  constexpr size_t alignment = alignof(std::max_align_t);
  const size_t size = (objectSize_ + alignment - 1) / alignment * alignment;
  if (unused_ == unusedEnd_) {
    void* block = AllocBase::_alloc(size * objectsPerBlock);
    if (!block) throw MemoryException(static_cast<long long>(size), objectsPerBlock);
    unused_ = static_cast<std::byte*>(block);
    unusedEnd_ = unused_ + size * objectsPerBlock;
  }
  return std::exchange(unused_, unused_ + size);
}

void Pool::undoTake(void* memory) {
  AutoCriticalSection held(lock_);
  held.lock(lockTimeout, true);
  --outstanding_;
  if (memory) firstSlot_ = new (memory) Slot{firstSlot_};
}

void Pool::adopt(PooledObject& object, void* memory) {
  object.origin_ = memory ? PooledObject::Origin::block : PooledObject::Origin::heap;
}

bool Pool::giveBack(PooledObject& object, std::exception_ptr& failure) {
  if (object.origin_ == PooledObject::Origin::plainNew) return false;
  AutoCriticalSection held(lock_);
  held.lock(lockTimeout, true);
  if (object.origin_ == PooledObject::Origin::elsewhere) {
    if (outstanding_ == 0) refuseLeak();
    throw Exception(L"An object of class %hs that its pool did not make cannot be returned to it",
                    object.getClassTag());
  }
  if (Object::m_dontUsePools.load(std::memory_order_relaxed) || (limit_ != -1 && outstanding_ >= limit_)) {
    --outstanding_;
    return false;
  }
  held.unlock();
  try {
    object.onDeactivate();
  } catch (...) {
    failure = std::current_exception();
  }
  held.lock(lockTimeout, true);
  if (outstanding_ == 0) refuseLeak();
  --outstanding_;
  if (failure) return false;
  object.next_ = firstFree_;
  firstFree_ = &object;
  leaks_.setResting(++free_);
  return true;
}

void Pool::recycle(void* memory) {
  AutoCriticalSection held(lock_);
  held.lock(lockTimeout, true);
  firstSlot_ = new (memory) Slot{firstSlot_};
}

}  // namespace tovin
