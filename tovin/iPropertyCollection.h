#pragma once

#include "tovin/Array.h"
#include "tovin/iProperty.h"

namespace tovin {

/// A named, ordered set of properties.
///
/// - Names: equal with A to Z folded. Where a node owns the collection, a name that begins with '/' also
///   leads to properties of other nodes of its tree.
/// - Ownership: counted; owns its properties.
class TOVIN_API iPropertyCollection : public virtual CountedObject {
 public:
  static const ClassTagDecl Tag;

  /// In the flags of define(): a name that begins with '/' is defined at the node that it leads to.
  static constexpr unsigned hierarchical = 0x10000;

  void* _SeekClassIdentity(const ClassTag& tag) override;

  virtual iProperty* define(const wchar_t* name, unsigned flags) = 0;
  virtual iProperty* define(const wchar_t* name, const Value& value, unsigned flags) = 0;
  virtual iProperty* define(const wchar_t* name, const wchar_t* text, unsigned flags) = 0;
  virtual iProperty* define(const wchar_t* name, double number, unsigned flags) = 0;

  /// Null if none.
  virtual iProperty* find(const wchar_t* name) = 0;
  virtual const iProperty* find(const wchar_t* name) const = 0;
  /// -1 if none.
  virtual int findIndex(const wchar_t* name) const = 0;
  virtual iProperty* get(unsigned index) = 0;
  virtual const iProperty* get(unsigned index) const = 0;
  virtual iProperty* get(const wchar_t* name) = 0;
  virtual const iProperty* get(const wchar_t* name) const = 0;
  virtual unsigned getIndex(const wchar_t* name) const = 0;
  virtual bool isDefined(const wchar_t* name) const = 0;
  virtual unsigned getSize() const = 0;

  virtual void remove(unsigned index) = 0;
  virtual bool remove(const wchar_t* name) = 0;
  virtual void removeAll() = 0;
  virtual void rename(const wchar_t* from, const wchar_t* to) = 0;
  virtual void reorderProperty(unsigned from, unsigned to) = 0;
  virtual void reorder(const Array<WideString>& names, bool createMissing) = 0;
  virtual void keep(const Array<WideString>& names, bool createMissing) = 0;

  virtual void appendFrom(const iPropertyCollection* source) = 0;
  virtual void assignFrom(const iPropertyCollection* source, bool whole) = 0;

  /// The owner is a back pointer.
  virtual void _setOwner(const Object* owner) = 0;
  virtual Object* findOwner() const = 0;
};

}  // namespace tovin
