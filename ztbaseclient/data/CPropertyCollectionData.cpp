#include "ztbaseclient/data/CPropertyCollectionData.h"

#include <utility>

#include "tovin/values/NullValue.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/framework/RecordVersion.h"
#include "ztbaseclient/framework/StreamPrimitives.h"

using tovin::guarded;

const tovin::ClassTagDecl CPropertyCollectionData::Tag("DraVolin.data.PropertyCollectionData");
tovin::LeakDetector CPropertyCollectionData::m_leakDetector(CPropertyCollectionData::ClassName);
tovin::PooledClassImp<CPropertyCollectionData> CPropertyCollectionData::m_class(
    CPropertyCollectionData::Tag, CPropertyCollectionData::m_leakDetector);

namespace {

// What the record begins with: magic and version in one.
constexpr int32_t storageVersion = 27390;

// Room made with the first property: most nodes have no more attributes.
constexpr size_t usualSize = 4;

// From so many properties on, names are looked up in the index.
constexpr unsigned indexedSize = 10;

using OwnedObject = tovin::MemPtr<tovin::Object, tovin::InstanceDeallocator>;

}  // namespace

CPropertyCollectionData::CPropertyCollectionData(const CPropertyCollectionData& other)
    : tovin::Object(other), FrameworkClass(other) {
  *this = other;
}

CPropertyCollectionData& CPropertyCollectionData::operator=(const CPropertyCollectionData& other) {
  guarded({ClassName, "operator="}, [&] {
    if (this == &other) return;
    Clear();
    propertyClass_ = other.propertyClass_;
    properties_.reserve(other.properties_.getSize());
    for (const CProperty* source : other.properties_) {
      tovin::Ptr<CProperty> copy(NewProperty(nullptr));
      copy->AssignFrom(*source);
      append(copy.get());
    }
  });
  return *this;
}

CPropertyCollectionData::~CPropertyCollectionData() {
  tovin::guardedDestruction(ClassName, [&] { Clear(); });
}

void CPropertyCollectionData::SetPropertyClass(const tovin::ClassTag& tag) {
  guarded({ClassName, "SetPropertyClass"}, [&] { propertyClass_ = &tovin::Class::requireClass(tag); });
}

unsigned CPropertyCollectionData::checkedIndex(unsigned index) const {
  if (index >= GetNumProperties()) {
    throw tovin::InvalidIndexException(index, static_cast<long long>(GetNumProperties()) - 1);
  }
  return index;
}

CProperty* CPropertyCollectionData::GetProperty(int index) const {
  return guarded({ClassName, "GetProperty"}, [&] {
    if (index < 0) throw tovin::InvalidIndexException(index, static_cast<long long>(GetNumProperties()) - 1);
    return properties_.data()[checkedIndex(static_cast<unsigned>(index))];
  });
}

CProperty* CPropertyCollectionData::GetProperty(const wchar_t* name) const {
  const int index = GetIndex(name);
  return index < 0 ? nullptr : properties_.data()[index];
}

const tovin::Value& CPropertyCollectionData::GetValue(unsigned index) const {
  return guarded({ClassName, "GetValue"}, [&]() -> const tovin::Value& {
    return properties_.data()[checkedIndex(index)]->getValue();
  });
}

int CPropertyCollectionData::GetIndex(const wchar_t* name) const {
  return guarded({ClassName, "GetIndex"}, [&] {
    if (GetNumProperties() < indexedSize) return scan(name);
    if (!index_) index_ = std::make_unique<NameIndex>();
    if (index_->needsRebuild) RebuildHash();
    const int* found = index_->map.find(name);
    return found ? *found : -1;
  });
}

// The first of several equal names, where the index answers with the last: callers rely on both.
int CPropertyCollectionData::scan(const wchar_t* name) const {
  for (unsigned i = 0; i < GetNumProperties(); ++i) {
    if (tovin::equalFolded(properties_.data()[i]->getName(), name)) return static_cast<int>(i);
  }
  return -1;
}

CProperty* CPropertyCollectionData::NewProperty(tovin::Class* propertyClass) {
  return guarded({ClassName, "NewProperty"}, [&] {
    if (!propertyClass) propertyClass = propertyClass_;
    if (!propertyClass) {
      CProperty* property = CProperty::allocate();
      property->setParent(owner_);
      return property;
    }
    OwnedObject made(propertyClass->newInstance());
    auto* property = tovin::seek<CProperty>(made.get());
    if (!property) throw tovin::Exception(L"Class %hs is not a property class", propertyClass->getTag());
    made.detach();
    property->setParent(owner_);
    return property;
  });
}

tovin::Value* CPropertyCollectionData::NewValue(const tovin::Value* value) {
  return (value ? *value : static_cast<const tovin::Value&>(tovin::NullValue::shared())).cloneValue();
}

// Takes a reference once the property stands in the array, so that a failure leaves it with its maker.
void CPropertyCollectionData::append(CProperty* property) {
  if (properties_.isEmpty()) properties_.reserve(usualSize);
  properties_.add(property);
  property->addRef();
}

CProperty* CPropertyCollectionData::AppendProperty(const wchar_t* name, OwnedValue value) {
  const tovin::Ptr<CProperty> property(NewProperty(nullptr));
  property->SetName(name);
  property->AttachValue(value.detach());
  append(property.get());
  if (HashUpToDate()) AddToHash(property->getName(), static_cast<int>(GetNumProperties()) - 1);
  return property.get();
}

CProperty* CPropertyCollectionData::MakeNewPropertyWithCopiedValue(const wchar_t* name,
                                                                   const tovin::Value* value) {
  return guarded({ClassName, "MakeNewPropertyWithCopiedValue"},
                 [&] { return AppendProperty(name, OwnedValue(NewValue(value))); });
}

void CPropertyCollectionData::RemoveProperty(unsigned index) {
  guarded({ClassName, "RemoveProperty"}, [&] {
    CProperty* property = properties_.data()[checkedIndex(index)];
    properties_.removeAt(index);
    SetHashNeedsRebuild();
    property->setParent(nullptr);
    property->release();
  });
}

void CPropertyCollectionData::ReorderProperty(unsigned from, unsigned to) {
  guarded({ClassName, "ReorderProperty"}, [&] {
    if (from == to) return;
    CProperty* property = properties_.data()[checkedIndex(from)];
    if (to >= GetNumProperties()) {
      throw tovin::InvalidIndexException(to, static_cast<long long>(GetNumProperties()) - 1);
    }
    properties_.removeAt(from);
    properties_.insert(to, property);
    SetHashNeedsRebuild();
  });
}

int CPropertyCollectionData::defineMissing(const wchar_t* name) {
  AppendProperty(name, OwnedValue(NewValue(nullptr)));
  return static_cast<int>(GetNumProperties()) - 1;
}

void CPropertyCollectionData::swapProperties(unsigned a, unsigned b) {
  std::swap(properties_.data()[a], properties_.data()[b]);
  if (!HashUpToDate()) return;
  AddToHash(properties_.data()[a]->getName(), static_cast<int>(a));
  AddToHash(properties_.data()[b]->getName(), static_cast<int>(b));
}

void CPropertyCollectionData::ReorderProperties(const NameList& names, bool createMissing,
                                                bool removeOthers) {
  guarded({ClassName, "ReorderProperties"}, [&] {
    int next = 0;
    for (const tovin::WideString& name : names) {
      int index = GetIndex(name);
      if (index == -1 && createMissing) index = defineMissing(name);
      if (index < next) continue;
      // A swap, not a stable move: what stood in front goes where the named property was.
      const int position = next++;
      if (position != index) swapProperties(static_cast<unsigned>(position), static_cast<unsigned>(index));
    }
    if (!removeOthers) return;
    for (unsigned last = GetNumProperties(); last > static_cast<unsigned>(next); --last)
      RemoveProperty(last - 1);
  });
}

void CPropertyCollectionData::SetName(unsigned index, const wchar_t* name) {
  guarded({ClassName, "SetName"}, [&] {
    properties_.data()[checkedIndex(index)]->SetName(name);
    SetHashNeedsRebuild();
  });
}

void CPropertyCollectionData::Clear() {
  guarded({ClassName, "Clear"}, [&] {
    SetHashNeedsRebuild();
    // One by one, so that a property that cannot be given back leaves the others in the array.
    while (!properties_.isEmpty()) {
      CProperty* property = properties_.items().back();
      properties_.items().pop_back();
      property->setParent(nullptr);
      property->release();
    }
  });
}

void CPropertyCollectionData::AddToHash(const wchar_t* name, int index) {
  if (index_) index_->map.put(name, index);
}

void CPropertyCollectionData::RebuildHash() const {
  if (!index_) return;
  index_->map.clear();
  for (unsigned i = 0; i < GetNumProperties(); ++i) {
    index_->map.put(properties_.data()[i]->getName(), static_cast<int>(i));
  }
  index_->needsRebuild = false;
}

void CPropertyCollectionData::SetHashNeedsRebuild() noexcept {
  if (index_) index_->needsRebuild = true;
}

void CPropertyCollectionData::serializeSubset(tovin::iByteOutputStream& stream, const NameList& names) const {
  internalSerialize(stream, &names);
}

void CPropertyCollectionData::internalSerialize(tovin::iByteOutputStream& stream,
                                                const NameList* names) const {
  guarded({ClassName, "serialize"}, [&] {
    WriteCompactInt(stream, storageVersion);
    WriteBool(stream, !propertyClass_);
    if (propertyClass_) WriteNarrowString(stream, propertyClass_->getTag());
    WriteCompactInt(stream, static_cast<int32_t>(names ? names->getSize() : properties_.getSize()));
    if (!names) {
      for (const CProperty* property : properties_) property->serialize(stream);
      return;
    }
    for (const tovin::WideString& name : *names) {
      const CProperty* property = GetProperty(name);
      if (!property) throw tovin::Exception(L"Unable to find property '%ls'", name);
      property->serialize(stream);
    }
  });
}

void CPropertyCollectionData::deserialize(tovin::iByteInputStream& stream) {
  guarded({ClassName, "deserialize"}, [&] {
    Clear();
    RecordVersion::require(stream, storageVersion);
    propertyClass_ = nullptr;
    if (!ReadBool(stream)) {
      tovin::NarrowString name;
      ReadNarrowString(stream, name);
      SetPropertyClass(name);
    }
    int32_t count = 0;
    ReadCompactInt(stream, count);
    if (count < 0) throw tovin::Exception(L"A property collection cannot have the count %d", count);
    for (int32_t i = 0; i < count; ++i) {
      const tovin::Ptr<CProperty> property(NewProperty(nullptr));
      property->deserialize(stream);
      append(property.get());
    }
    SetHashNeedsRebuild();
  });
}

void CPropertyCollectionData::onActivate() {
  Clear();
  propertyClass_ = nullptr;
  owner_ = nullptr;
}

void CPropertyCollectionData::onDeactivate() { Clear(); }
