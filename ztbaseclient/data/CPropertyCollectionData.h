#pragma once

#include <memory>

#include "tovin/Array.h"
#include "tovin/FrameworkClass.h"
#include "tovin/HashMap.h"
#include "tovin/PointerList.h"
#include "tovin/Ptr.h"
#include "tovin/iPropertyCollection.h"
#include "ztbaseclient/Export.h"
#include "ztbaseclient/data/AttributeBlock.h"
#include "ztbaseclient/data/CProperty.h"
#include "ztcore/ztUniqueStrings.h"

/// The storage behind a property collection: the properties in order, and an index of their names from ten
/// on.
///
/// - Packed: properties that were read lie in a block until one is asked for, which then is an object, and
///   stays the same. What changes their order or number makes all of them first.
/// - Lookup: names are equal with A to Z folded. With duplicates, up to nine properties answer with the first
///   of them, ten and more with the last.
/// - Ownership: holds one reference to each property; the owner, which new properties get as parent, is
///   borrowed.
/// - Errors: InvalidIndexException(index, number of properties - 1).
class ZTBASECLIENT_API CPropertyCollectionData
    : public tovin::FrameworkClass<CPropertyCollectionData, tovin::PooledObject> {
 public:
  static constexpr const char* ClassName = "CPropertyCollectionData";
  static const tovin::ClassTagDecl Tag;
  static tovin::LeakDetector m_leakDetector;
  static tovin::PooledClassImp<CPropertyCollectionData> m_class;

  using NameList = tovin::Array<tovin::WideString>;
  using OwnedValue = tovin::MemPtr<tovin::Value, tovin::InstanceDeallocator>;

  CPropertyCollectionData() = default;
  CPropertyCollectionData(const CPropertyCollectionData& other);
  /// Copies the properties and their class; the owner stays. As it was after a failure.
  CPropertyCollectionData& operator=(const CPropertyCollectionData& other);
  ~CPropertyCollectionData() override;

  void SetOwner(tovin::iPropertyCollection* owner) noexcept { owner_ = owner; }
  /// The class of new properties; "Unknown class %hs" for one that is not registered.
  void SetPropertyClass(const tovin::ClassTag& tag);
  const tovin::Class* GetPropertyClass() const noexcept { return propertyClass_; }

  unsigned GetNumProperties() const noexcept { return static_cast<unsigned>(properties_.getSize()); }
  CProperty* GetProperty(int index) const;
  /// Null if none.
  CProperty* GetProperty(const wchar_t* name) const;
  const tovin::Value& GetValue(unsigned index) const;
  /// -1 if none.
  int GetIndex(const wchar_t* name) const;

  /// A property that is not in the storage yet: of the class given, else of the property class, else a
  /// CProperty.
  CProperty* NewProperty(const tovin::Class* propertyClass);
  /// A copy for a property; the caller owns it.
  static tovin::Value* NewValue(const tovin::Value* value);
  /// Appends a property that takes over the value.
  CProperty* AppendProperty(const wchar_t* name, OwnedValue value);
  /// Appends a property with a copy of the value; null makes a null value.
  CProperty* MakeNewPropertyWithCopiedValue(const wchar_t* name, const tovin::Value* value);
  void RemoveProperty(unsigned index);
  /// \param to may be the new number of properties: the end.
  void ReorderProperty(unsigned from, unsigned to);
  /// Brings the named properties to the front in that order, by swapping.
  void ReorderProperties(const NameList& names, bool createMissing, bool removeOthers);
  void SetName(unsigned index, const wchar_t* name);
  void Clear();
  /// Removes the last properties until so many are left.
  void Shorten(unsigned size);
  /// Runs fill(), which appends properties, and then gives up the ones before; as it was when it throws.
  template <class Fill>
  void Refill(Fill&& fill) {
    const unsigned before = GetNumProperties();
    try {
      fill();
    } catch (...) {
      Shorten(before);
      throw;
    }
    dropBefore(before);
  }

  /// An index beyond the end is looked up like none.
  void AddToHash(const wchar_t* name, int index);
  void RebuildHash() const;
  bool HashUpToDate() const noexcept { return index_ && !index_->needsRebuild; }
  /// The names in the index are given up, its buckets stay.
  void SetHashNeedsRebuild() noexcept;
  /// From a property that is about to take another name.
  void noteNewName() noexcept {
    if (index_) index_->needsRebuild = true;
  }
  /// The index's buckets, 0 while there is no index.
  uint32_t GetNumHashBuckets() const noexcept { return index_ ? index_->map.getNumBuckets() : 0; }

  /// Takes over a block for the properties of a storage without any.
  void StandOn(AttributeBlock* block);
  /// The block of a storage that has no other property and made none of them; the storage has none then.
  /// Null for any other.
  AttributeBlock* SurrenderBlock() noexcept;
  /// Adds copies of all properties; false where one cannot be packed.
  bool PackInto(AttributePacker& packer) const;
  tovin::AttributeView View(unsigned index) const;

  void serialize(tovin::iByteOutputStream& stream) const override { internalSerialize(stream, nullptr); }
  /// The record of a storage that stands on a block.
  static void SerializeBlock(tovin::iByteOutputStream& stream, const AttributeBlock& block);
  /// Only the named properties, in that order; "Unable to find property '%ls'".
  void serializeSubset(tovin::iByteOutputStream& stream, const NameList& names) const;
  void internalSerialize(tovin::iByteOutputStream& stream, const NameList* names) const;
  /// A failure leaves the properties that were read before it.
  void deserialize(tovin::iByteInputStream& stream) override;
  /// \param packer empty, for the reading of several.
  void Deserialize(tovin::iByteInputStream& stream, AttributePacker& packer);

  void onActivate() override;
  void onDeactivate() override;

 private:
  // Names and where their properties stood when they came in. Removing a property costs no rebuild: what
  // stood behind it is found a little further in front, as long as not too many are gone.
  struct NameIndex {
    tovin::HashMap<ztUniqueString, int, tovin::FoldedNameTraits> map;
    bool needsRebuild = true;
    // Each name stands for one property, the one of its position.
    bool exact = true;
    int goneInFront = 0;
    int goneInside = 0;
  };

  unsigned checkedIndex(unsigned index) const;
  // Unchecked, as all that follow.
  CProperty* at(unsigned index) const {
    CProperty* made = properties_.data()[index];
    return made ? made : unpack(index);
  }
  const wchar_t* nameAt(unsigned index) const {
    const CProperty* made = properties_.data()[index];
    return made ? made->getName() : packed_->nameAt(index);
  }
  CProperty* unpack(unsigned index) const;
  void unpackAll();
  void dropBlock() noexcept;
  tovin::Ptr<CProperty> copyOf(unsigned index) const;
  void writeProperty(tovin::iByteOutputStream& stream, unsigned index) const;
  void readProperties(tovin::iByteInputStream& stream, int32_t count, AttributePacker& packer);
  void settle(AttributePacker& packer);
  void join(CProperty* property) const;
  CProperty* makeProperty(const tovin::Class* propertyClass) const;
  void append(CProperty* property);
  int scan(const wchar_t* name) const;
  int settled(int at, const wchar_t* name) const;
  void putIntoIndex(const wchar_t* name, int index);
  void takeFromIndex(unsigned index);
  unsigned bringToFront(const NameList& names, bool createMissing);
  void restore(const tovin::PointerList<CProperty>& before);
  void swapProperties(unsigned a, unsigned b);
  void letGo(CProperty* property);
  void dropBefore(unsigned count);

  // Null for what is in the block only, at the same index.
  mutable tovin::PointerList<CProperty> properties_;
  AttributeBlock* packed_ = nullptr;
  mutable std::unique_ptr<NameIndex> index_;
  tovin::Class* propertyClass_ = nullptr;
  tovin::iPropertyCollection* owner_ = nullptr;
};
