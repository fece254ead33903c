#include "ztbaseclient/data/CPropertyCollectionData.h"

#include <algorithm>
#include <cmath>
#include <iterator>
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

// A storage at rest keeps room for at most so many.
constexpr size_t restingSize = 64;

// From so many properties on, names are looked up in the index.
constexpr unsigned indexedSize = 10;

using OwnedObject = tovin::MemPtr<tovin::Object, tovin::InstanceDeallocator>;

void writeHeader(tovin::iByteOutputStream& stream, const tovin::Class* propertyClass, size_t count) {
  WriteCompactInt(stream, storageVersion);
  WriteBool(stream, !propertyClass);
  if (propertyClass) WriteNarrowString(stream, propertyClass->getTag());
  WriteCompactInt(stream, static_cast<int32_t>(count));
}

}  // namespace

CPropertyCollectionData::CPropertyCollectionData(const CPropertyCollectionData& other)
    : tovin::Object(other), FrameworkClass(other) {
  *this = other;
}

CPropertyCollectionData& CPropertyCollectionData::operator=(const CPropertyCollectionData& other) {
  guarded({ClassName, "operator="}, [&] {
    if (this == &other) return;
    SetHashNeedsRebuild();
    Refill([&] {
      properties_.reserve(properties_.getSize() + other.properties_.getSize());
      for (unsigned i = 0; i < other.GetNumProperties(); ++i) append(other.copyOf(i).get());
    });
    propertyClass_ = other.propertyClass_;
  });
  return *this;
}

CPropertyCollectionData::~CPropertyCollectionData() {
  tovin::guardedDestruction(ClassName, [&] { Clear(); });
}

tovin::Ptr<CProperty> CPropertyCollectionData::copyOf(unsigned index) const {
  const CProperty* made = properties_.data()[index];
  if (!made) {
    tovin::Ptr<CProperty> copy = CProperty::Unpack(packed_->view(index));
    if (!copy->flags_.has(tovin::MetaDataFlags::sharedName)) ztUniqueStrings::AddReference(copy->name_);
    return copy;
  }
  tovin::Ptr<CProperty> copy(makeProperty(propertyClass_));
  copy->AssignFrom(*made);
  return copy;
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
    return at(checkedIndex(static_cast<unsigned>(index)));
  });
}

CProperty* CPropertyCollectionData::GetProperty(const wchar_t* name) const {
  const int index = GetIndex(name);
  return index < 0 ? nullptr : at(static_cast<unsigned>(index));
}

const tovin::Value& CPropertyCollectionData::GetValue(unsigned index) const {
  return guarded({ClassName, "GetValue"},
                 [&]() -> const tovin::Value& { return at(checkedIndex(index))->getValue(); });
}

int CPropertyCollectionData::GetIndex(const wchar_t* name) const {
  return guarded({ClassName, "GetIndex"}, [&] {
    if (GetNumProperties() < indexedSize) return scan(name);
    if (!index_) index_ = std::make_unique<NameIndex>();
    if (index_->needsRebuild) RebuildHash();
    const int* found = index_->map.find(name);
    if (!found) return -1;
    const int at = *found - index_->goneInFront;
    if (index_->goneInside > 0) return settled(at, name);
    return at < static_cast<int>(GetNumProperties()) ? at : -1;
  });
}

// Where the property is now that stood at a position before others inside were removed.
int CPropertyCollectionData::settled(int at, const wchar_t* name) const {
  const int last = static_cast<int>(GetNumProperties()) - 1;
  const int lowest = std::max(0, at - index_->goneInside);
  for (at = std::min(at, last); at >= lowest; --at) {
    if (tovin::equalFolded(nameAt(static_cast<unsigned>(at)), name)) return at;
  }
  return -1;
}

// The first of several equal names, where the index answers with the last: callers rely on both.
int CPropertyCollectionData::scan(const wchar_t* name) const {
  for (unsigned i = 0; i < GetNumProperties(); ++i) {
    if (tovin::equalFolded(nameAt(i), name)) return static_cast<int>(i);
  }
  return -1;
}

CProperty* CPropertyCollectionData::makeProperty(const tovin::Class* propertyClass) const {
  if (!propertyClass) return CProperty::allocate();
  // A registration object makes instances for whoever knows it.
  OwnedObject made(const_cast<tovin::Class*>(propertyClass)->newInstance());
  auto* property = tovin::seek<CProperty>(made.get());
  if (!property) throw tovin::Exception(L"Class %hs is not a property class", propertyClass->getTag());
  made.detach();
  return property;
}

CProperty* CPropertyCollectionData::NewProperty(const tovin::Class* propertyClass) {
  return guarded({ClassName, "NewProperty"}, [&] {
    CProperty* property = makeProperty(propertyClass ? propertyClass : propertyClass_);
    property->setParent(owner_);
    return property;
  });
}

tovin::Value* CPropertyCollectionData::NewValue(const tovin::Value* value) {
  return guarded({ClassName, "NewValue"}, [&] {
    return (value ? *value : static_cast<const tovin::Value&>(tovin::NullValue::shared())).cloneValue();
  });
}

// Takes a reference once the property stands in the array, so that a failure leaves it with its maker.
void CPropertyCollectionData::append(CProperty* property) {
  if (properties_.isEmpty()) properties_.reserve(usualSize);
  properties_.add(property);
  join(property);
}

void CPropertyCollectionData::join(CProperty* property) const {
  property->setParent(owner_);
  property->storage_ = const_cast<CPropertyCollectionData*>(this);
  property->addRef();
}

CProperty* CPropertyCollectionData::unpack(unsigned index) const {
  const tovin::Ptr<CProperty> property = CProperty::Unpack(packed_->view(index));
  packed_->surrenderName(index);
  properties_.data()[index] = property.get();
  join(property.get());
  return property.get();
}

void CPropertyCollectionData::unpackAll() {
  if (!packed_) return;
  for (unsigned i = 0; i < std::min(packed_->getCount(), GetNumProperties()); ++i) at(i);
  dropBlock();
}

void CPropertyCollectionData::dropBlock() noexcept {
  AttributeBlock::destroy(std::exchange(packed_, nullptr));
}

void CPropertyCollectionData::StandOn(AttributeBlock* block) {
  properties_.reserve(block->getCount());
  for (unsigned i = 0; i < block->getCount(); ++i) properties_.add(nullptr);
  packed_ = block;
}

AttributeBlock* CPropertyCollectionData::SurrenderBlock() noexcept {
  if (GetNumProperties() == 0 && !propertyClass_) return AttributeBlock::none();
  const bool whole =
      packed_ && GetNumProperties() == packed_->getCount() &&
      std::all_of(properties_.begin(), properties_.end(), [](const CProperty* p) { return !p; });
  if (!whole) return nullptr;
  SetHashNeedsRebuild();
  properties_.clear();
  return std::exchange(packed_, nullptr);
}

bool CPropertyCollectionData::PackInto(AttributePacker& packer) const {
  return !propertyClass_ && std::all_of(properties_.begin(), properties_.end(), [&](const CProperty* each) {
    return each && !packer.isFull() && each->PackInto(packer);
  });
}

tovin::AttributeView CPropertyCollectionData::View(unsigned index) const {
  const CProperty* made = properties_.data()[checkedIndex(index)];
  return made ? tovin::AttributeView::of(*made) : packed_->view(index);
}

// The other way round, for a property that left the array; nothing for one that was never made.
void CPropertyCollectionData::letGo(CProperty* property) {
  if (!property) return;
  property->storage_ = nullptr;
  property->setParent(nullptr);
  property->release();
}

void CPropertyCollectionData::Shorten(unsigned size) {
  SetHashNeedsRebuild();
  tovin::Releasing releasing;
  while (GetNumProperties() > size) releasing.step([&] { letGo(properties_.takeLast()); });
  if (size == 0) dropBlock();
  releasing.finish();
}

void CPropertyCollectionData::dropBefore(unsigned count) {
  SetHashNeedsRebuild();
  // Those that were never made go at once: none behind them is packed.
  CProperty** const all = properties_.data();
  const auto made =
      std::remove(std::make_reverse_iterator(all + count), std::make_reverse_iterator(all), nullptr);
  const auto packed = static_cast<unsigned>(made.base() - all);
  properties_.removeFirst(packed);
  dropBlock();
  tovin::Releasing releasing;
  for (count -= packed; count > 0; --count) {
    CProperty* property = *properties_.data();
    properties_.removeAt(0);
    releasing.step([&] { letGo(property); });
  }
  releasing.finish();
}

CProperty* CPropertyCollectionData::AppendProperty(const wchar_t* name, OwnedValue value) {
  const tovin::Ptr<CProperty> property(makeProperty(propertyClass_));
  property->SetName(name);
  property->AttachValue(value.detach());
  append(property.get());
  if (HashUpToDate()) putIntoIndex(property->getName(), static_cast<int>(GetNumProperties()) - 1);
  return property.get();
}

CProperty* CPropertyCollectionData::MakeNewPropertyWithCopiedValue(const wchar_t* name,
                                                                   const tovin::Value* value) {
  return guarded({ClassName, "MakeNewPropertyWithCopiedValue"},
                 [&] { return AppendProperty(name, OwnedValue(NewValue(value))); });
}

void CPropertyCollectionData::RemoveProperty(unsigned index) {
  guarded({ClassName, "RemoveProperty"}, [&] {
    checkedIndex(index);
    unpackAll();
    CProperty* property = at(index);
    takeFromIndex(index);
    properties_.removeAt(index);
    letGo(property);
  });
}

void CPropertyCollectionData::ReorderProperty(unsigned from, unsigned to) {
  guarded({ClassName, "ReorderProperty"}, [&] {
    if (from == to) return;
    checkedIndex(from);
    if (to >= GetNumProperties()) {
      throw tovin::InvalidIndexException(to, static_cast<long long>(GetNumProperties()) - 1);
    }
    unpackAll();
    CProperty* property = at(from);
    properties_.makeRoom();
    properties_.removeAt(from);
    properties_.insert(to, property);
    SetHashNeedsRebuild();
  });
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
    unpackAll();
    const tovin::PointerList<CProperty> before(properties_);
    unsigned named = 0;
    try {
      named = bringToFront(names, createMissing);
    } catch (...) {
      restore(before);
      throw;
    }
    if (!removeOthers) return;
    for (unsigned last = GetNumProperties(); last > named; --last) RemoveProperty(last - 1);
  });
}

// How many stand in front afterwards.
unsigned CPropertyCollectionData::bringToFront(const NameList& names, bool createMissing) {
  int next = 0;
  for (const tovin::WideString& name : names) {
    int index = GetIndex(name);
    if (index == -1 && createMissing) {
      AppendProperty(name, OwnedValue(NewValue(nullptr)));
      index = static_cast<int>(GetNumProperties()) - 1;
    }
    if (index < next) continue;
    // A swap, not a stable move: what stood in front goes where the named property was.
    const int position = next++;
    if (position != index) swapProperties(static_cast<unsigned>(position), static_cast<unsigned>(index));
  }
  return static_cast<unsigned>(next);
}

// Back to an order from before properties were appended.
void CPropertyCollectionData::restore(const tovin::PointerList<CProperty>& before) {
  CProperty** const all = properties_.data();
  std::partition(all, all + properties_.getSize(), [&](const CProperty* property) {
    return std::find(before.begin(), before.end(), property) != before.end();
  });
  std::copy(before.begin(), before.end(), all);
  Shorten(static_cast<unsigned>(before.getSize()));
}

void CPropertyCollectionData::SetName(unsigned index, const wchar_t* name) {
  guarded({ClassName, "SetName"}, [&] {
    CProperty* property = at(checkedIndex(index));
    if (!HashUpToDate() || !index_->exact) {
      property->SetName(name);
      return SetHashNeedsRebuild();
    }
    const tovin::WideString before(property->getName());
    property->SetName(name);
    index_->needsRebuild = false;
    index_->map.remove(before);
    putIntoIndex(property->getName(), static_cast<int>(index));
    // Which of two equal names is the last, only a look at all of them tells.
    if (!index_->exact) SetHashNeedsRebuild();
  });
}

void CPropertyCollectionData::Clear() {
  if (GetNumProperties() == 0 && !packed_ && !index_) return;
  guarded({ClassName, "Clear"}, [&] { Shorten(0); });
}

void CPropertyCollectionData::AddToHash(const wchar_t* name, int index) {
  guarded({ClassName, "AddToHash"}, [&] {
    if (!index_) return;
    if (index_->goneInside > 0) RebuildHash();
    index_->exact = false;
    index_->map.put(name, index + index_->goneInFront);
  });
}

// Without memory the next look-up makes the index anew.
void CPropertyCollectionData::putIntoIndex(const wchar_t* name, int index) {
  try {
    if (!index_->map.put(name, index + index_->goneInFront)) index_->exact = false;
  } catch (...) {
    SetHashNeedsRebuild();
  }
}

void CPropertyCollectionData::takeFromIndex(unsigned index) {
  if (!HashUpToDate()) return;
  const int last = static_cast<int>(GetNumProperties()) - 1;
  // So many are looked at in the worst case, and so seldom is the index made anew: their product is the size.
  const bool farGone = index_->goneInside > 16 + static_cast<int>(std::sqrt(4.0 * last));
  if (!index_->exact || farGone || GetNumProperties() == indexedSize) return SetHashNeedsRebuild();
  index_->map.remove(nameAt(index));
  if (index == 0)
    ++index_->goneInFront;
  else if (static_cast<int>(index) < last)
    ++index_->goneInside;
}

void CPropertyCollectionData::RebuildHash() const {
  guarded({ClassName, "RebuildHash"}, [&] {
    if (!index_) return;
    NameIndex& index = *index_;
    index.needsRebuild = true;
    index.map.clear();
    index.exact = true;
    index.goneInFront = index.goneInside = 0;
    for (unsigned i = 0; i < GetNumProperties(); ++i) {
      if (!index.map.put(nameAt(i), static_cast<int>(i))) index.exact = false;
    }
    index.needsRebuild = false;
  });
}

void CPropertyCollectionData::SetHashNeedsRebuild() noexcept {
  if (!index_) return;
  index_->needsRebuild = true;
  if (index_->map.getSize() > 0) index_->map.clear();
}

void CPropertyCollectionData::serializeSubset(tovin::iByteOutputStream& stream, const NameList& names) const {
  internalSerialize(stream, &names);
}

void CPropertyCollectionData::internalSerialize(tovin::iByteOutputStream& stream,
                                                const NameList* names) const {
  guarded({ClassName, "serialize"}, [&] {
    writeHeader(stream, propertyClass_, names ? names->getSize() : properties_.getSize());
    if (!names) {
      for (unsigned i = 0; i < GetNumProperties(); ++i) writeProperty(stream, i);
      return;
    }
    for (const tovin::WideString& name : *names) {
      const int index = GetIndex(name);
      if (index < 0) throw tovin::Exception(L"Unable to find property '%ls'", name);
      writeProperty(stream, static_cast<unsigned>(index));
    }
  });
}

void CPropertyCollectionData::writeProperty(tovin::iByteOutputStream& stream, unsigned index) const {
  if (const CProperty* made = properties_.data()[index])
    made->serialize(stream);
  else
    CProperty::WritePacked(stream, packed_->view(index));
}

void CPropertyCollectionData::SerializeBlock(tovin::iByteOutputStream& stream, const AttributeBlock& block) {
  guarded({ClassName, "serialize"}, [&] {
    writeHeader(stream, nullptr, block.getCount());
    for (unsigned i = 0; i < block.getCount(); ++i) CProperty::WritePacked(stream, block.view(i));
  });
}

void CPropertyCollectionData::deserialize(tovin::iByteInputStream& stream) {
  AttributePacker packer;
  Deserialize(stream, packer);
}

void CPropertyCollectionData::Deserialize(tovin::iByteInputStream& stream, AttributePacker& packer) {
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
    try {
      readProperties(stream, count, packer);
    } catch (...) {
      settle(packer);
      throw;
    }
  });
}

// Packs until there is one that cannot be.
void CPropertyCollectionData::readProperties(tovin::iByteInputStream& stream, int32_t count,
                                             AttributePacker& packer) {
  int32_t i = 0;
  tovin::Ptr<CProperty> property;
  for (; i < count && !property && !propertyClass_ && !packer.isFull(); ++i) {
    property = CProperty::ReadPacked(stream, packer);
  }
  settle(packer);
  if (property) append(property.get());
  for (; i < count; ++i) {
    property = tovin::Ptr<CProperty>(makeProperty(propertyClass_));
    property->deserialize(stream);
    append(property.get());
  }
}

// What was packed comes in front of all.
void CPropertyCollectionData::settle(AttributePacker& packer) {
  if (packer.getCount() == 0) return;
  properties_.reserve(packer.getCount());
  StandOn(packer.pack());
}

void CPropertyCollectionData::onActivate() {
  Clear();
  propertyClass_ = nullptr;
  owner_ = nullptr;
}

// At rest there are no names, and no memory that only this collection needed so much of.
void CPropertyCollectionData::onDeactivate() {
  Clear();
  index_.reset();
  if (properties_.getCapacity() > restingSize) tovin::PointerList<CProperty>().swap(properties_);
}
