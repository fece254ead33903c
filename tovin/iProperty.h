#pragma once

#include "tovin/MetaDataFlags.h"
#include "tovin/Object.h"
#include "tovin/values/Value.h"

namespace tovin {

class iPropertyCollection;

/// What is known about a property besides its value.
class TOVIN_API iPropertyInfo : public virtual Object {
 public:
  static const ClassTagDecl Tag;

  void* _SeekClassIdentity(const ClassTag& tag) override;

  /// Borrowed: stays where it is as long as the property keeps the name.
  virtual const wchar_t* getName() const = 0;
  virtual MetaDataFlags getMetaDataFlags() const = 0;
  virtual void setMetaDataFlags(const MetaDataFlags& flags) = 0;
  /// The limits of the value, null if there are none.
  virtual const Object* getRestriction() const = 0;
};

/// One named, typed value. Counted: its collection holds one reference.
class TOVIN_API iProperty : public virtual CountedObject {
 public:
  static const ClassTagDecl Tag;

  void* _SeekClassIdentity(const ClassTag& tag) override;

  virtual const wchar_t* getName() const = 0;
  virtual iPropertyInfo* getInfo() = 0;
  virtual const iPropertyInfo* getInfo() const = 0;
  /// Never null: a property without a value gets a null value first.
  virtual const Value& getValue() const = 0;
  virtual void setValue(const Value& value) = 0;
  virtual void setValue(const wchar_t* text) = 0;
  virtual void setValue(double number) = 0;
  virtual void appendValue(const Value& value) = 0;
  virtual void appendValue(const wchar_t* text) = 0;
  virtual Value& getEditableValue() = 0;
  virtual Value& getEditableRawValue() = 0;
  virtual bool hasNullValue() const = 0;
  virtual void CoerceToType(const ClassTag& target) = 0;
  virtual void assignFrom(const iProperty* source) = 0;
  virtual void attachValueFrom(iProperty* source) = 0;
  /// The owning collection: a back pointer.
  virtual void setParent(iPropertyCollection* parent) = 0;
  virtual iPropertyCollection* getParent() const = 0;
};

}  // namespace tovin
