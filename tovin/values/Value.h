#pragma once

#include <string>

#include "tovin/BaseString.h"
#include "tovin/FrameworkClass.h"

namespace tovin {

/// The root of typed values: what a property holds. A value's class is found through its class tag.
///
/// - Ownership: not counted; whoever holds a value owns it and gives it back with deleteInstance.
class TOVIN_API Value : public virtual Object {
 public:
  static const ClassTagDecl Tag;

  void* _SeekClassIdentity(const ClassTag& tag) override;
  Value* cloneValue() const;

  /// Back to the state of a new value of the class.
  virtual void reset() = 0;
  /// Takes over a value of the same class; "Cannot assign a value of class %hs to one of class %hs".
  virtual void copyFrom(const Value& source) = 0;
  /// Same class and same content.
  virtual bool equals(const Value& other) const = 0;
  /// The value as text: a list's elements with blanks between, a bitset's bits that are on; null for a null
  /// value.
  virtual WideString getText() const = 0;

  bool isNullValue() const;

 protected:
  [[noreturn]] static void refuseClass(const Value& source, const ClassTag& target);
};

/// What the value classes share: T holds one `content()` that is copied and compared whole.
template <class T>
class ValueClass : public FrameworkClass<T, Value, PooledObject> {
 public:
  void copyFrom(const Value& source) override {
    const T* same = seek<T>(static_cast<const Object*>(&source));
    if (!same) Value::refuseClass(source, T::Tag);
    if (same != this) this->self().content() = same->content();
  }
  bool equals(const Value& other) const override {
    const T* same = seek<T>(static_cast<const Object*>(&other));
    return same && same->content() == this->self().content();
  }
  void onActivate() override {}
  void onDeactivate() override { this->reset(); }
};

}  // namespace tovin
