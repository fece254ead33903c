#pragma once

#include <atomic>
#include <cstddef>

#include "tovin/ByteStreams.h"
#include "tovin/Class.h"
#include "tovin/ClassTag.h"
#include "tovin/Export.h"

namespace tovin {

/// The root of the framework: an object that knows its class, answers for its identities, copies itself and
/// travels.
///
/// - Ownership: given back with deleteInstance, never deleted directly.
/// - Shape: always a virtual base; the way from an Object down to a class is seek<T>().
class TOVIN_API Object {
 public:
  Object() = default;
  Object(const Object&) = default;
  Object& operator=(const Object&) = default;
  virtual ~Object();

  virtual Class& getClass() const = 0;
  virtual const ClassTag& getClassTag() const = 0;
  /// The object as the class of a tag, null when it is none of that class.
  virtual void* _SeekClassIdentity(const ClassTag& tag);
  /// A new object of the same class; its count is 0.
  virtual Object* newInstance() const = 0;
  /// A new object equal to this one; its count is 0.
  virtual Object* clone() const = 0;
  /// Gives the object back; a counted object must not be referenced any more.
  virtual void deleteInstance() = 0;
  /// A class without a record of its own refuses: "Class %hs has no record".
  virtual void serialize(iByteOutputStream& stream) const;
  virtual void deserialize(iByteInputStream& stream);

  /// Framework-wide: when true, objects that come back are destroyed rather than kept in their pools.
  static std::atomic<bool> m_dontUsePools;
};

/// The object as a T, null if it is none. T has a Tag.
template <class T>
T* seek(Object* object) {
  return object ? static_cast<T*>(object->_SeekClassIdentity(T::Tag)) : nullptr;
}
template <class T>
const T* seek(const Object* object) {
  return seek<T>(const_cast<Object*>(object));
}

/// Adds a reference count. The last release gives the object back.
///
/// - Threads: the count may be changed from any thread, the object itself not.
class TOVIN_API CountedObject : public virtual Object {
 public:
  static const ClassTagDecl Tag;

  CountedObject() = default;
  /// A copy begins with no references of its own, and assigning changes none.
  CountedObject(const CountedObject& other) : Object(other) {}
  CountedObject& operator=(const CountedObject&) { return *this; }
  ~CountedObject() override;

  int getRefCount() const noexcept { return count_.load(std::memory_order_relaxed); }
  void addRef() const noexcept {
    // Nobody else can know an object without references: a plain store will do.
    if (count_.load(std::memory_order_relaxed) == 0)
      count_.store(1, std::memory_order_relaxed);
    else
      count_.fetch_add(1, std::memory_order_relaxed);
  }
  void release() const {
    // The only reference cannot be copied by anybody else while it is given up.
    if (count_.load(std::memory_order_acquire) == 1)
      count_.store(0, std::memory_order_relaxed);
    else if (count_.fetch_sub(1, std::memory_order_acq_rel) != 1)
      return;
    const_cast<CountedObject*>(this)->deleteInstance();
  }
  /// Takes one reference away and lets the object live, even without any.
  void forgetRef() const noexcept { count_.fetch_sub(1, std::memory_order_acq_rel); }
  void* _SeekClassIdentity(const ClassTag& tag) override;

 protected:
  /// "Tried to deleteInstance() an object with nonzero ref count: %d\n".
  void requireUnreferenced() const;

 private:
  mutable std::atomic<int> count_{0};
};

/// An object that is recycled through its class's pool.
///
/// - Ownership: one made with plain `new` is given back like any other, and is then destroyed. One that is a
///   variable or a member dies with that and cannot be given back.
class TOVIN_API PooledObject : public virtual Object {
 public:
  PooledObject() : origin_(originOf(this)) {}
  PooledObject(const PooledObject& other) : Object(other), origin_(originOf(this)) {}
  PooledObject& operator=(const PooledObject&) { return *this; }
  ~PooledObject() override;

  /// Readies the object as it leaves the pool.
  virtual void onActivate() = 0;
  /// Gives up what the object holds as it enters the pool.
  virtual void onDeactivate() = 0;

  /// Remembers the memory, so that the object built in it knows where it lies.
  static void* operator new(size_t size);
  static void* operator new(size_t, void* memory) noexcept { return memory; }
  static void operator delete(void* memory) noexcept;
  static void operator delete(void*, void*) noexcept {}

 private:
  friend class Pool;
  // Where the object lies, and whether its pool counted it out.
  enum class Origin : unsigned char { elsewhere, plainNew, heap, block };
  static Origin originOf(const PooledObject* object) noexcept;

  Origin origin_;
  // Which one of its block it is.
  unsigned char slot_ = 0;
};

}  // namespace tovin
