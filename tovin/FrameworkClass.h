#pragma once

#include <type_traits>
#include <utility>

#include "tovin/Object.h"
#include "tovin/PooledClass.h"
#include "tovinCore/Guard.h"

namespace tovin {

/// Asks one base for an identity; null for a base that has none.
template <class Base, class T>
void* seekIn(T& object, const ClassTag& tag) {
  if constexpr (requires { static_cast<Base&>(object).Base::_SeekClassIdentity(tag); }) {
    return static_cast<Base&>(object).Base::_SeekClassIdentity(tag);
  } else {
    return nullptr;
  }
}

/// Registers the object that it is a member of with the leak detector of T, copies included.
template <class T>
class LeakRegistration {
 public:
  LeakRegistration() noexcept { add(); }
  LeakRegistration(const LeakRegistration&) noexcept { add(); }
  LeakRegistration& operator=(const LeakRegistration&) noexcept { return *this; }
  ~LeakRegistration() { remove(); }
  void add() const noexcept {
    if (!std::exchange(counted_, true)) T::m_leakDetector.Add(this, T::ClassName);
  }
  void remove() const noexcept {
    if (std::exchange(counted_, false)) T::m_leakDetector.Sub(this);
  }

 private:
  mutable bool counted_ = false;
};

/// The detector of a base, which counts an object of a derived class too; null for a base that has none.
template <class Base>
LeakDetector* detectorOf() {
  if constexpr (requires { Base::m_leakDetector; }) {
    return &Base::m_leakDetector;
  } else {
    return nullptr;
  }
}

/// The contract of framework class T, written once.
///
///     class CProperty : public FrameworkClass<CProperty, iProperty, iPropertyInfo, CountedObject,
///     PooledObject> { … };
///
/// - T supplies ClassName, Tag, m_leakDetector and m_class (ClassImp or PooledClassImp), defined in its
///   source.
/// - Bases are its framework bases, asked for a class identity in this order after T's own tag.
template <class T, class... Bases>
class FrameworkClass : public Bases... {
 public:
  Class& getClass() const override { return T::m_class; }
  const ClassTag& getClassTag() const override { return T::Tag; }
  Object* newInstance() const override {
    return guarded({T::ClassName, "newInstance"}, [] { return T::m_class.newInstance(); });
  }
  /// Of a node a deep copy: assigning nodes is shallow.
  Object* clone() const override {
    return guarded({T::ClassName, "clone"}, [this]() -> Object* {
      if constexpr (requires { self().cloneNode(true); }) {
        return self().cloneNode(true);
      } else {
        return T::m_class.allocateCopy(self());
      }
    });
  }

  void* _SeekClassIdentity(const ClassTag& tag) override {
    if (tag == T::Tag) return &self();
    void* found = nullptr;
    static_cast<void>(((found = seekIn<Bases>(self(), tag)) || ...));
    return found;
  }

  void deleteInstance() override {
    guarded({T::ClassName, "deleteInstance"}, [this] {
      if constexpr (std::is_base_of_v<CountedObject, T>) this->requireUnreferenced();
      T* object = &self();
      T::m_class.deallocate(object);
    });
  }

  static T* allocate() {
    return guarded({T::ClassName, "allocate"}, [] { return T::m_class.allocate(); });
  }
  static T* allocateCopy(const T& source) {
    return guarded({T::ClassName, "allocateCopy"}, [&] { return T::m_class.allocateCopy(source); });
  }
  static void deallocate(T*& object) {
    guarded({T::ClassName, "deallocate"}, [&] { T::m_class.deallocate(object); });
  }

  /// The detector of the base that each object has, null if none has one.
  static LeakDetector* partDetector() {
    LeakDetector* found = nullptr;
    static_cast<void>(((found = detectorOf<Bases>()) || ...));
    return found;
  }
  void AddToLeakDetector() const { registration_.add(); }
  void RemoveFromLeakDetector() const { registration_.remove(); }

 protected:
  T& self() { return static_cast<T&>(*this); }
  const T& self() const { return static_cast<const T&>(*this); }

 private:
  LeakRegistration<T> registration_;
};

}  // namespace tovin
