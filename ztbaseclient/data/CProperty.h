#pragma once

#include <cstdint>

#include "tovin/FrameworkClass.h"
#include "tovin/Ptr.h"
#include "tovin/iProperty.h"
#include "ztbaseclient/Export.h"
#include "ztbaseclient/data/AttributeBlock.h"

class CPropertyCollectionData;

/// One named, typed value: what a property collection holds.
///
///     CProperty* size = CProperty::allocate();
///     size->SetName(L"size");
///     size->setValue(2.5);
///
/// - Ownership: owns its value; the parent is a back pointer. Counted: a collection holds one reference; one
///   that nobody holds is given back with deleteInstance().
/// - Shape: name wide text, null allowed; value any class of the Value family; record as in docs/formats.md.
/// - Names: shared unique strings, but for names that begin with '_', of which each property keeps a copy of
///   its own.
/// - Errors: PropertyAccessException when read-only.
/// - Threads: one thread at a time; only the pool is locked.
class ZTBASECLIENT_API CProperty
    : public tovin::FrameworkClass<CProperty, tovin::iProperty, tovin::iPropertyInfo, tovin::PooledObject> {
 public:
  static constexpr const char* ClassName = "CProperty";
  static const tovin::ClassTagDecl Tag;
  static tovin::LeakDetector m_leakDetector;
  static tovin::PooledClassImp<CProperty> m_class;

  CProperty() = default;
  CProperty(const CProperty& other);
  CProperty& operator=(const CProperty& other);
  ~CProperty() override;

  const wchar_t* getName() const override { return name_; }
  void SetName(const wchar_t* text);
  /// Keeps a copy of its own, whatever the text begins with.
  void SetAllocatedMName(const wchar_t* text);
  void ClearAllocatedMName();
  bool HasAllocatedName() const noexcept { return allocatedName_; }

  tovin::iPropertyInfo* getInfo() override { return this; }
  const tovin::iPropertyInfo* getInfo() const override { return this; }
  const tovin::Object* getRestriction() const override { return nullptr; }
  tovin::MetaDataFlags getMetaDataFlags() const override { return flags_; }
  void setMetaDataFlags(const tovin::MetaDataFlags& flags) override { flags_ = flags; }

  /// Never null: a property without a value gets a null value first, in the const getter too.
  const tovin::Value& getValue() const override;
  void setValue(const tovin::Value& value) override;
  /// A read-only property takes the text that it holds already, and no other.
  void setValue(const wchar_t* text) override;
  void setValue(double number) override;
  void appendValue(const tovin::Value& value) override;
  void appendValue(const wchar_t* text) override;
  tovin::Value& getEditableValue() override;
  tovin::Value& getEditableRawValue() override;
  bool hasNullValue() const override;
  void CoerceToType(const tovin::ClassTag& target) override;

  /// Takes ownership of the value, which may be null; the value before is given back.
  void AttachValue(tovin::Value* value);
  /// The caller owns the result; null if none was set.
  tovin::Value* DetachValue();
  void AttachValueFrom(CProperty& source);
  void attachValueFrom(tovin::iProperty* source) override;

  void setParent(tovin::iPropertyCollection* parent) override { parent_ = parent; }
  tovin::iPropertyCollection* getParent() const override { return parent_; }

  /// Resets the value, which stays, and drops name and flags.
  void Reset();
  void AssignFrom(const CProperty& source);
  void copyFrom(const CProperty& source) { AssignFrom(source); }
  void assignFrom(const tovin::iProperty* source) override;

  /// The record: name, class hash of the value, the value's own record, flags. In streams before version 3
  /// the hash is of the older kind.
  void serialize(tovin::iByteOutputStream& stream) const override;
  /// A failure leaves the property without name, value and flags.
  void deserialize(tovin::iByteInputStream& stream) override;

  void onActivate() override;
  void onDeactivate() override;

  /// The same record into a packer; what cannot be packed is the result, with the count 0: else null.
  static tovin::Ptr<CProperty> ReadPacked(tovin::iByteInputStream& stream, AttributePacker& packer);
  /// The record of a property that is packed.
  static void WritePacked(tovin::iByteOutputStream& stream, const tovin::AttributeView& packed);
  /// Adds a copy; false, and nothing is added, for what cannot be packed.
  bool PackInto(AttributePacker& packer) const;
  /// A property of what was packed, whose reference to the name it takes over.
  static tovin::Ptr<CProperty> Unpack(const tovin::AttributeView& packed);

  /// A reference to the shared copy of a name that does not begin with '_', and counted if it is new.
  static const wchar_t* ShareName(const wchar_t* text);
  /// How many unique names properties of this process were the first to use.
  static int32_t GetNewNameCount() noexcept;

 private:
  friend class CPropertyCollectionData;

  bool refusesChange() const { return flags_.has(tovin::MetaDataFlags::readOnly) && value_; }
  void requireEditable() const;
  class FreshName;
  void takeName(FreshName& fresh) noexcept;
  void dropName() noexcept;
  void ensureValue() const;
  template <class ValueType, class Content>
  void setTyped(const Content& content);
  void empty();
  static FreshName readName(tovin::iByteInputStream& stream);
  void readValue(tovin::Class& valueClass, tovin::iByteInputStream& stream);

  const wchar_t* name_ = nullptr;
  mutable tovin::Value* value_ = nullptr;
  tovin::MetaDataFlags flags_;
  tovin::iPropertyCollection* parent_ = nullptr;
  // Back pointer to the storage that the property stands in: its index must hear of other names.
  CPropertyCollectionData* storage_ = nullptr;
  bool allocatedName_ = false;
};
