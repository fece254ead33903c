#pragma once

#include <type_traits>

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
  void add() noexcept { T::m_leakDetector.Add(this, T::ClassName); }
  void remove() noexcept { T::m_leakDetector.Sub(this); }
};

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
  Object* newInstance() const override { return T::m_class.newInstance(); }
  Object* clone() const override { return T::m_class.allocateCopy(self()); }

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

  static T* allocate() { return T::m_class.allocate(); }
  static T* allocateCopy(const T& source) { return T::m_class.allocateCopy(source); }
  static void deallocate(T*& object) { T::m_class.deallocate(object); }

  void AddToLeakDetector() { registration_.add(); }
  void RemoveFromLeakDetector() { registration_.remove(); }

 protected:
  T& self() { return static_cast<T&>(*this); }
  const T& self() const { return static_cast<const T&>(*this); }

 private:
  LeakRegistration<T> registration_;
};

}  // namespace tovin
