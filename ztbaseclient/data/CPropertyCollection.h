#pragma once

#include "tovin/FrameworkClass.h"
#include "tovin/Ptr.h"
#include "tovin/iNode.h"
#include "tovin/iPropertyCollection.h"
#include "ztbaseclient/Export.h"
#include "ztbaseclient/data/CPropertyCollectionData.h"

/// The named, ordered set of properties that a node carries.
///
///     tovin::Ptr<CPropertyCollection> settings(CPropertyCollection::allocate());
///     settings->define(L"size", 2.5, 0);
///     settings->find(L"Size")->getValue();
///
/// - Names: equal with A to Z folded. Where a node owns the collection, a name that begins with '/' addresses
///   a property of another node of the tree: what stands before its last '/' is a path query, what follows
///   the name. To find nothing there is no error, but a path that is none ("///y") is, for find too.
/// - Ownership: counted; owns its properties, the owner is a back pointer.
/// - Shape: record as in docs/formats.md.
/// - Threads: one thread at a time, for reading too.
class ZTBASECLIENT_API CPropertyCollection
    : public tovin::FrameworkClass<CPropertyCollection, tovin::iPropertyCollection, tovin::PooledObject> {
 public:
  static constexpr const char* ClassName = "CPropertyCollection";
  static const tovin::ClassTagDecl Tag;
  static tovin::LeakDetector m_leakDetector;
  static tovin::PooledClassImp<CPropertyCollection> m_class;

  /// What the record begins with.
  static const unsigned COLLECTION_VERSION;

  using NameList = tovin::Array<tovin::WideString>;

  CPropertyCollection();
  CPropertyCollection(const CPropertyCollection& other);
  /// Copies the properties; the owner stays.
  CPropertyCollection& operator=(const CPropertyCollection& other);
  ~CPropertyCollection() override;

  /// Appends a property with a null value; only the low seven bits of the flags reach it.
  tovin::iProperty* define(const wchar_t* name, unsigned flags) override;
  tovin::iProperty* define(const wchar_t* name, const tovin::Value& value, unsigned flags) override;
  tovin::iProperty* define(const wchar_t* name, const wchar_t* text, unsigned flags) override;
  tovin::iProperty* define(const wchar_t* name, double number, unsigned flags) override;

  /// Appends a property with the value and without flags in place of all that have the name.
  tovin::iProperty* Redefine(const wchar_t* name, CPropertyCollectionData::OwnedValue value);

  tovin::iProperty* find(const wchar_t* name) override { return lookUp(name); }
  const tovin::iProperty* find(const wchar_t* name) const override { return lookUp(name); }
  int findIndex(const wchar_t* name) const override;
  tovin::iProperty* get(unsigned index) override { return at(index); }
  const tovin::iProperty* get(unsigned index) const override { return at(index); }
  /// "Property %ls does not exist".
  tovin::iProperty* get(const wchar_t* name) override { return require(name); }
  const tovin::iProperty* get(const wchar_t* name) const override { return require(name); }
  unsigned getIndex(const wchar_t* name) const override;
  bool isDefined(const wchar_t* name) const override { return lookUp(name) != nullptr; }
  unsigned getSize() const override { return storage_->GetNumProperties(); }

  void remove(unsigned index) override;
  bool remove(const wchar_t* name) override;
  void removeAll() override;
  /// Moves the property when the names lie in different collections.
  void rename(const wchar_t* from, const wchar_t* to) override;
  void reorderProperty(unsigned from, unsigned to) override;
  void reorder(const NameList& names, bool createMissing) override;
  void keep(const NameList& names, bool createMissing) override;

  void appendFrom(const tovin::iPropertyCollection* source) override;
  /// \param whole a collection of this class is copied with its storage's class of properties.
  void assignFrom(const tovin::iPropertyCollection* source, bool whole) override;

  void SetPropertyClass(const tovin::ClassTag& tag);
  void _setOwner(const tovin::Object* owner) override;
  tovin::Object* findOwner() const override { return owner_; }

  void serialize(tovin::iByteOutputStream& stream) const override { internalSerialize(stream, nullptr); }
  /// \param names only these, in that order; null for all.
  void internalSerialize(tovin::iByteOutputStream& stream, const NameList* names) const;
  void deserialize(tovin::iByteInputStream& stream) override;
  /// \param packer empty, for the reading of several.
  void Deserialize(tovin::iByteInputStream& stream, AttributePacker& packer);

  /// What a node's properties are while none was asked for; see CPropertyCollectionData.
  void StandOn(AttributeBlock* block) { storage_->StandOn(block); }
  AttributeBlock* SurrenderBlock() noexcept { return storage_->SurrenderBlock(); }
  static void SerializeBlock(tovin::iByteOutputStream& stream, const AttributeBlock& block);

  void onActivate() override;
  void onDeactivate() override;

  /// For code that walks the properties without asking by name.
  const CPropertyCollectionData& GetStorage() const noexcept { return *storage_; }

 private:
  // Where a name leads: a collection and the name there. No collection: nowhere.
  struct Place {
    tovin::iPropertyCollection* collection = nullptr;
    tovin::WideString leaf;
  };

  bool follows(const wchar_t* name) const noexcept;
  void split(const wchar_t* name) const;
  tovin::Held<tovin::iNode> locate(const wchar_t* leaf) const;
  Place placeOf(const wchar_t* name) const;
  Place newPlaceOf(const wchar_t* name, const Place& source, const tovin::WideString& location) const;
  bool isNameless(const wchar_t* name) const;
  tovin::iProperty* lookUp(const wchar_t* name) const;
  CProperty* at(unsigned index) const;
  tovin::iProperty* require(const wchar_t* name) const;
  tovin::iProperty* defineWith(const wchar_t* name, CPropertyCollectionData::OwnedValue value,
                               unsigned flags);
  void arrange(const NameList& names, bool createMissing, bool removeOthers);
  void move(const Place& from, const Place& to);

  CPropertyCollectionData* storage_;
  bool nodeOwner_ = false;
  mutable tovin::WideString location_;
  mutable tovin::WideString leaf_;
  mutable tovin::NodeReferenceSet foundNodes_;
  NameList names_;
  tovin::Object* owner_ = nullptr;
};
