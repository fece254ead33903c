#include "ztbaseclient/data/CPropertyCollection.h"

#include <string_view>

#include "tovin/values/DoubleValue.h"
#include "tovin/values/StringValue.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/data/DeepPropertyUtils.h"
#include "ztbaseclient/framework/RecordVersion.h"
#include "ztbaseclient/framework/StreamPrimitives.h"

using tovin::guarded;
using tovin::MetaDataFlags;

const tovin::ClassTagDecl CPropertyCollection::Tag("DraVolin.data.PropertyCollection");
// Each collection has one storage, which rests with it.
tovin::LeakDetector CPropertyCollection::m_leakDetector(CPropertyCollection::ClassName,
                                                        &CPropertyCollectionData::m_leakDetector);
tovin::PooledClassImp<CPropertyCollection> CPropertyCollection::m_class(CPropertyCollection::Tag,
                                                                        CPropertyCollection::m_leakDetector);

const unsigned CPropertyCollection::COLLECTION_VERSION = 100;

namespace {

constexpr int32_t recordVersion = 100;

using OwnedValue = CPropertyCollectionData::OwnedValue;

bool isHierarchical(const wchar_t* name) { return name && *name == L'/'; }

}  // namespace

CPropertyCollection::CPropertyCollection() : storage_(CPropertyCollectionData::allocate()) {
  storage_->SetOwner(this);
}

CPropertyCollection::CPropertyCollection(const CPropertyCollection& other)
    : tovin::Object(other),
      tovin::CountedObject(other),
      FrameworkClass(other),
      storage_(CPropertyCollectionData::allocate()) {
  storage_->SetOwner(this);
  *this = other;
}

CPropertyCollection& CPropertyCollection::operator=(const CPropertyCollection& other) {
  *storage_ = *other.storage_;
  return *this;
}

CPropertyCollection::~CPropertyCollection() {
  tovin::guardedDestruction(ClassName, [&] { storage_->deleteInstance(); });
}

bool CPropertyCollection::follows(const wchar_t* name) const noexcept {
  return nodeOwner_ && isHierarchical(name);
}

void CPropertyCollection::split(const wchar_t* name) const {
  DeepPropertyUtils::SplitPropertyPath(name, location_, leaf_);
}

// The first node at the location; null when there is none. Found nodes are let go at once: one of them may
// own this collection.
tovin::Held<tovin::iNode> CPropertyCollection::locate(const wchar_t* leaf) const {
  const bool found = DeepPropertyUtils::FirstAtLocation(this, location_, leaf, foundNodes_);
  tovin::Held<tovin::iNode> node(found && !foundNodes_.isEmpty() ? foundNodes_[0] : nullptr);
  foundNodes_.clear();
  return node;
}

// Where the property of a name is: its own storage first, then along the path.
CPropertyCollection::Place CPropertyCollection::placeOf(const wchar_t* name) const {
  if (storage_->GetIndex(name) >= 0) return {const_cast<CPropertyCollection*>(this), name};
  if (!follows(name)) return {};
  split(name);
  const tovin::Held<tovin::iNode> node = locate(leaf_.c_str());
  if (!node || !node->getProperties()->isDefined(leaf_)) return {};
  return {node->getProperties(), leaf_};
}

// Where a property, found at a location, goes when it takes a name that none has. If the new name has the
// same location it stays at its node, even where that is not the location's first.
CPropertyCollection::Place CPropertyCollection::newPlaceOf(const wchar_t* name, const Place& source,
                                                           const tovin::WideString& location) const {
  if (!follows(name)) return {const_cast<CPropertyCollection*>(this), name};
  split(name);
  if (location == location_) return {source.collection, leaf_};
  const tovin::Held<tovin::iNode> node = locate(nullptr);
  return {node ? node->getProperties() : nullptr, leaf_};
}

bool CPropertyCollection::isNameless(const wchar_t* name) const {
  if (storage_->GetIndex(name) >= 0) return false;
  return !name || !*name || (follows(name) && std::wstring_view(name).ends_with(L'/'));
}

// The value is attached rather than set: a definition may be read-only from the start.
tovin::iProperty* CPropertyCollection::defineWith(const wchar_t* name,
                                                  CPropertyCollectionData::OwnedValue value, unsigned flags) {
  if ((flags & hierarchical) && isHierarchical(name)) {
    split(name);
    const tovin::Held<tovin::iNode> node = locate(nullptr);
    if (!node) throw tovin::Exception(L"Failed to find hierarchical location \"%ls\"\n", location_);
    const tovin::WideString leaf(leaf_);
    return node->getProperties()->define(leaf, *value, flags & MetaDataFlags::definable);
  }
  if (storage_->GetIndex(name) >= 0) throw tovin::Exception(L"Property %ls already exists\n", name);
  CProperty* property = storage_->AppendProperty(name, std::move(value));
  property->setMetaDataFlags(flags & MetaDataFlags::definable);
  return property;
}

tovin::iProperty* CPropertyCollection::define(const wchar_t* name, unsigned flags) {
  return guarded({ClassName, "define"}, [&] {
    return defineWith(name, OwnedValue(CPropertyCollectionData::NewValue(nullptr)), flags);
  });
}

tovin::iProperty* CPropertyCollection::define(const wchar_t* name, const tovin::Value& value,
                                              unsigned flags) {
  return guarded({ClassName, "define"},
                 [&] { return defineWith(name, OwnedValue(value.cloneValue()), flags); });
}

tovin::iProperty* CPropertyCollection::define(const wchar_t* name, const wchar_t* text, unsigned flags) {
  return guarded({ClassName, "define(string)"}, [&] {
    tovin::StringValue* value = tovin::StringValue::allocate();
    OwnedValue owned(value);
    *value = text;
    return defineWith(name, std::move(owned), flags);
  });
}

tovin::iProperty* CPropertyCollection::define(const wchar_t* name, double number, unsigned flags) {
  return guarded({ClassName, "define(double)"}, [&] {
    tovin::DoubleValue* value = tovin::DoubleValue::allocate();
    OwnedValue owned(value);
    *value = number;
    return defineWith(name, std::move(owned), flags);
  });
}

// The new one comes first, so that a failure leaves the others.
tovin::iProperty* CPropertyCollection::Redefine(const wchar_t* name, OwnedValue value) {
  return guarded({ClassName, "Redefine"}, [&] {
    CProperty* property = storage_->AppendProperty(name, std::move(value));
    for (unsigned i = getSize() - 1; i > 0; --i) {
      if (tovin::equalFolded(at(i - 1)->getName(), name)) storage_->RemoveProperty(i - 1);
    }
    property->setMetaDataFlags(0);
    return property;
  });
}

tovin::iProperty* CPropertyCollection::lookUp(const wchar_t* name) const {
  return guarded({ClassName, "find"}, [&]() -> tovin::iProperty* {
    if (CProperty* own = storage_->GetProperty(name)) return own;
    if (!follows(name)) return nullptr;
    const Place place = placeOf(name);
    return place.collection ? place.collection->find(place.leaf) : nullptr;
  });
}

int CPropertyCollection::findIndex(const wchar_t* name) const {
  return guarded({ClassName, "findIndex"}, [&] {
    const int index = storage_->GetIndex(name);
    if (index >= 0 || !follows(name)) return index;
    const Place place = placeOf(name);
    return place.collection ? place.collection->findIndex(place.leaf) : -1;
  });
}

CProperty* CPropertyCollection::at(unsigned index) const {
  return guarded({ClassName, "get"}, [&] {
    if (index >= getSize()) throw tovin::InvalidIndexException(index, static_cast<long long>(getSize()) - 1);
    return storage_->GetProperty(static_cast<int>(index));
  });
}

tovin::iProperty* CPropertyCollection::require(const wchar_t* name) const {
  return guarded({ClassName, "get"}, [&] {
    tovin::iProperty* property = lookUp(name);
    if (!property) throw tovin::Exception(L"Property %ls does not exist", name);
    return property;
  });
}

unsigned CPropertyCollection::getIndex(const wchar_t* name) const {
  return guarded({ClassName, "getIndex"}, [&] {
    const int index = findIndex(name);
    if (index < 0) throw tovin::Exception(L"Property %ls does not exist", name);
    return static_cast<unsigned>(index);
  });
}

void CPropertyCollection::remove(unsigned index) {
  guarded({ClassName, "remove"}, [&] { storage_->RemoveProperty(index); });
}

bool CPropertyCollection::remove(const wchar_t* name) {
  return guarded({ClassName, "remove"}, [&] {
    const int index = storage_->GetIndex(name);
    if (index >= 0) {
      storage_->RemoveProperty(static_cast<unsigned>(index));
      return true;
    }
    const Place place = placeOf(name);
    return place.collection && place.collection->remove(place.leaf);
  });
}

void CPropertyCollection::removeAll() {
  guarded({ClassName, "removeAll"}, [&] { storage_->Clear(); });
}

void CPropertyCollection::rename(const wchar_t* from, const wchar_t* to) {
  guarded({ClassName, "rename"}, [&] {
    if (from && to && tovin::equalExact(from, to)) return;
    const Place source = placeOf(from);
    if (!source.collection) throw tovin::Exception(L"Source property %ls not found to rename", from);
    const tovin::WideString location = storage_->GetIndex(from) < 0 ? location_ : tovin::WideString();
    if (isNameless(to)) throw tovin::Exception(L"Source property %ls cannot be renamed to empty text", from);
    Place destination = placeOf(to);
    if (destination.collection && !tovin::equalFolded(from, to)) {
      throw tovin::Exception(L"Destination property %ls already exists, cannot rename source property %ls",
                             to, from);
    }
    if (!destination.collection) destination = newPlaceOf(to, source, location);
    if (!destination.collection) {
      throw tovin::Exception(L"Failed to find hierarchical location \"%ls\"\n", location_);
    }
    move(source, destination);
  });
}

void CPropertyCollection::move(const Place& from, const Place& to) {
  if (from.collection != to.collection) {
    tovin::iProperty* source = from.collection->get(from.leaf);
    to.collection->define(to.leaf, source->getInfo()->getMetaDataFlags().getBits() & MetaDataFlags::definable)
        ->attachValueFrom(source);
    from.collection->remove(from.leaf);
  } else if (from.collection != this) {
    from.collection->rename(from.leaf, to.leaf);
  } else {
    storage_->SetName(static_cast<unsigned>(storage_->GetIndex(from.leaf)), to.leaf);
  }
}

void CPropertyCollection::reorderProperty(unsigned from, unsigned to) {
  guarded({ClassName, "reorderProperty"}, [&] { storage_->ReorderProperty(from, to); });
}

void CPropertyCollection::reorder(const NameList& names, bool createMissing) {
  guarded({ClassName, "reorder"}, [&] { arrange(names, createMissing, false); });
}

void CPropertyCollection::keep(const NameList& names, bool createMissing) {
  guarded({ClassName, "keep"}, [&] { arrange(names, createMissing, true); });
}

void CPropertyCollection::arrange(const NameList& names, bool createMissing, bool removeOthers) {
  tovin::iPropertyCollection* common = nullptr;
  names_.clear();
  for (const tovin::WideString& name : names) {
    tovin::iPropertyCollection* addressed = this;
    if (follows(name)) {
      split(name);
      const tovin::Held<tovin::iNode> node = locate(nullptr);
      if (!node) throw tovin::Exception(L"Cannot find hierarchical location \"%ls\"", location_);
      addressed = node->getProperties();
      names_.add(leaf_);
    } else {
      names_.add(name);
    }
    if (common && common != addressed) {
      throw tovin::Exception(L"All properties for %ls must be on the same property list",
                             removeOthers ? L"keep" : L"reorder");
    }
    common = addressed;
  }
  if (!common) return;
  if (common == this) return storage_->ReorderProperties(names_, createMissing, removeOthers);
  if (removeOthers)
    common->keep(names_, createMissing);
  else
    common->reorder(names_, createMissing);
}

void CPropertyCollection::appendFrom(const tovin::iPropertyCollection* source) {
  guarded({ClassName, "appendFrom"}, [&] {
    if (!source) return;
    const unsigned before = getSize();
    bool taken = false;  // a name that is there already is refused, and what came before it stays
    try {
      for (unsigned i = 0, size = source->getSize(); i < size; ++i) {
        const tovin::iProperty* property = source->get(i);
        taken = storage_->GetIndex(property->getName()) >= 0;
        const unsigned flags = property->getInfo()->getMetaDataFlags().getBits() & MetaDataFlags::definable;
        define(property->getName(), property->getValue(), flags);
      }
    } catch (...) {
      if (!taken) storage_->Shorten(before);
      throw;
    }
  });
}

void CPropertyCollection::assignFrom(const tovin::iPropertyCollection* source, bool whole) {
  guarded({ClassName, "assignFrom"}, [&] {
    const auto* same = tovin::seek<CPropertyCollection>(static_cast<const tovin::Object*>(source));
    if (!source || same == this) return;
    if (whole && same) {
      *storage_ = *same->storage_;
      return;
    }
    storage_->Refill([&] {
      // Past define(): names that occur twice in the source are no reason to lose the rest.
      for (unsigned i = 0, size = source->getSize(); i < size; ++i) {
        const tovin::iProperty* property = source->get(i);
        CProperty* copy =
            storage_->MakeNewPropertyWithCopiedValue(property->getName(), &property->getValue());
        copy->setMetaDataFlags(property->getInfo()->getMetaDataFlags());
      }
    });
  });
}

void CPropertyCollection::SetPropertyClass(const tovin::ClassTag& tag) {
  guarded({ClassName, "SetPropertyClass"}, [&] { storage_->SetPropertyClass(tag); });
}

void CPropertyCollection::_setOwner(const tovin::Object* owner) {
  owner_ = const_cast<tovin::Object*>(owner);
  nodeOwner_ = tovin::seek<tovin::iNode>(owner) != nullptr;
}

void CPropertyCollection::internalSerialize(tovin::iByteOutputStream& stream, const NameList* names) const {
  guarded({ClassName, "serialize"}, [&] {
    WriteCompactInt(stream, recordVersion);
    storage_->internalSerialize(stream, names);
  });
}

void CPropertyCollection::SerializeBlock(tovin::iByteOutputStream& stream, const AttributeBlock& block) {
  guarded({ClassName, "serialize"}, [&] {
    WriteCompactInt(stream, recordVersion);
    CPropertyCollectionData::SerializeBlock(stream, block);
  });
}

void CPropertyCollection::deserialize(tovin::iByteInputStream& stream) {
  AttributePacker packer;
  Deserialize(stream, packer);
}

void CPropertyCollection::Deserialize(tovin::iByteInputStream& stream, AttributePacker& packer) {
  guarded({ClassName, "deserialize"}, [&] {
    storage_->Clear();
    RecordVersion::require(stream, recordVersion);
    storage_->Deserialize(stream, packer);
  });
}

void CPropertyCollection::onActivate() {
  storage_->onActivate();
  storage_->SetOwner(this);
}

void CPropertyCollection::onDeactivate() {
  storage_->Clear();
  foundNodes_.clear();
  names_.clear();
  location_.setNull();
  leaf_.setNull();
  owner_ = nullptr;
  nodeOwner_ = false;
}
