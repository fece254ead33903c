#include "ztbaseclient/data/CProperty.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cwchar>
#include <typeinfo>
#include <utility>

#include "tovin/AllocBase.h"
#include "tovin/Ptr.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/NullValue.h"
#include "tovin/values/StringValue.h"
#include "tovin/values/ValueUtil.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/data/CPropertyCollectionData.h"
#include "ztbaseclient/framework/StreamPrimitives.h"
#include "ztcore/ztUniqueStrings.h"

using tovin::AttributeView;
using tovin::guarded;
using tovin::MetaDataFlags;

const tovin::ClassTagDecl CProperty::Tag("DraVolin.data.Property");
tovin::LeakDetector CProperty::m_leakDetector(CProperty::ClassName);
tovin::PooledClassImp<CProperty> CProperty::m_class(CProperty::Tag, CProperty::m_leakDetector);

namespace {

// The first so many names that properties bring into the process stay for ever; a process that makes names
// without end gives the later ones back.
constexpr int32_t keptNames = 10'000;
std::atomic<int32_t> newNames{0};

// Names below this length are read without touching the heap.
constexpr int32_t stackNameUnits = 1024;

// The first stream version whose class hashes are of the newer kind.
constexpr int newerHashVersion = 3;

bool hasNewerHash(int streamVersion) { return streamVersion >= newerHashVersion; }

using OwnedValue = tovin::MemPtr<tovin::Value, tovin::InstanceDeallocator>;

bool isSame(const tovin::WideString& a, const tovin::WideString& b) { return a == b; }

// As numbers: zero has two signs. A number that is none is the same as itself.
bool isSame(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

bool isShareable(const wchar_t* name) { return name && *name != L'_'; }

void writeValueClass(tovin::iByteOutputStream& stream, const tovin::ClassTag& tag) {
  WriteCompactInt(stream, tag.getHash(hasNewerHash(stream.getSerializationVersion())));
}

tovin::Class& readValueClass(tovin::iByteInputStream& stream) {
  int32_t hash = 0;
  ReadCompactInt(stream, hash);
  return tovin::Class::requireClass(tovin::ClassTag(hash, hasNewerHash(stream.getSerializationVersion())));
}

// Flags for which a block has room.
bool isPackable(MetaDataFlags flags) { return flags.getBits() <= 0xFF; }

// A value of one of the kinds that are packed.
class PlainValue {
 public:
  /// \param room for the text, borrowed.
  explicit PlainValue(tovin::WideString& room) : text_(room) {}

  // False for a class of another kind, of which nothing is read.
  bool read(const tovin::Class& valueClass, tovin::iByteInputStream& stream) {
    if (&valueClass == &tovin::StringValue::m_class) {
      ReadWideString(stream, text_);
      kind_ = text_.isNull() ? Kind::nullText : Kind::text;
    } else if (&valueClass == &tovin::DoubleValue::m_class) {
      tovin::DoubleValue number;
      number.deserialize(stream);
      number_ = number.getDouble();
      kind_ = Kind::number;
    } else if (&valueClass == &tovin::IntegerValue::m_class) {
      ReadCompactInt(stream, integer_);
      kind_ = Kind::integer;
    } else {
      return &valueClass == &tovin::NullValue::m_class;
    }
    return true;
  }
  void take(const AttributeView& packed) {
    kind_ = packed.kind;
    if (kind_ == Kind::number) number_ = packed.number;
    if (kind_ == Kind::integer) integer_ = packed.integer;
    if (kind_ != Kind::text) return;
    text_.setLength(packed.length);
    packed.copyTo(text_.data());
  }
  // False for a value of another kind.
  bool take(const tovin::Value& value) {
    const std::type_info& type = typeid(value);
    if (type == typeid(tovin::StringValue)) {
      text_ = static_cast<const tovin::StringValue&>(value).getString();
      kind_ = text_.isNull() ? Kind::nullText : Kind::text;
    } else if (type == typeid(tovin::DoubleValue)) {
      number_ = static_cast<const tovin::DoubleValue&>(value).getDouble();
      kind_ = Kind::number;
    } else if (type == typeid(tovin::IntegerValue)) {
      integer_ = static_cast<const tovin::IntegerValue&>(value).content();
      kind_ = Kind::integer;
    } else {
      return type == typeid(tovin::NullValue);
    }
    return true;
  }
  bool addTo(AttributePacker& packer, const wchar_t* name) const {
    switch (kind_) {
      case Kind::text:
        return packer.addText(name, text_.view());
      case Kind::number:
        return packer.addNumber(name, number_);
      case Kind::integer:
        return packer.addInteger(name, integer_);
      default:
        return packer.addNull(name, kind_);
    }
  }
  OwnedValue make() const {
    switch (kind_) {
      case Kind::number:
        return made<tovin::DoubleValue>(number_);
      case Kind::integer:
        return made<tovin::IntegerValue>(integer_);
      case Kind::nullValue:
        return OwnedValue(tovin::NullValue::shared().cloneValue());
      default:
        return kind_ == Kind::text ? made<tovin::StringValue>(text_)
                                   : OwnedValue(tovin::StringValue::allocate());
    }
  }

 private:
  using Kind = AttributeView::Kind;
  template <class ValueType, class Content>
  static OwnedValue made(const Content& content) {
    ValueType* value = ValueType::allocate();
    OwnedValue owned(value);
    *value = content;
    return owned;
  }

  Kind kind_ = Kind::nullValue;
  tovin::WideString& text_;
  double number_ = 0;
  int32_t integer_ = 0;
};

void writePackedValue(tovin::iByteOutputStream& stream, const AttributeView& packed) {
  switch (packed.kind) {
    case AttributeView::Kind::number:
      writeValueClass(stream, tovin::DoubleValue::Tag);
      return tovin::DoubleValue(packed.number).serialize(stream);
    case AttributeView::Kind::integer:
      writeValueClass(stream, tovin::IntegerValue::Tag);
      return static_cast<void>(WriteCompactInt(stream, packed.integer));
    case AttributeView::Kind::nullValue:
      return writeValueClass(stream, tovin::NullValue::Tag);
    default:
      break;
  }
  writeValueClass(stream, tovin::StringValue::Tag);
  if (packed.kind == AttributeView::Kind::nullText)
    WriteWideString(stream, nullptr);
  else if (packed.unit == 1)
    tovin::coding::writeWide(stream, packed.narrow());
  else
    tovin::coding::writeWide(stream, packed.wide());
}

}  // namespace

CProperty::CProperty(const CProperty& other)
    : tovin::Object(other), tovin::CountedObject(other), FrameworkClass(other) {
  AssignFrom(other);
}

CProperty& CProperty::operator=(const CProperty& other) {
  AssignFrom(other);
  return *this;
}

CProperty::~CProperty() {
  tovin::guardedDestruction(ClassName, [&] { onDeactivate(); });
}

int32_t CProperty::GetNewNameCount() noexcept { return newNames; }

// A name as a property will hold it, made before anything changes.
class CProperty::FreshName {
 public:
  enum Kind { byBeginning, ownCopy };
  explicit FreshName(const wchar_t* text, Kind kind = byBeginning)
      : own_(text && (kind == ownCopy || !isShareable(text))) {
    text_ = own_ ? copyOf(text) : ztUniqueStrings::GetUniqueString(text, nullptr, &created_);
  }
  FreshName(const FreshName&) = delete;
  FreshName& operator=(const FreshName&) = delete;
  ~FreshName() {
    if (text_) drop(text_, own_);
  }

  static void drop(const wchar_t* text, bool own) noexcept {
    if (own)
      tovin::AllocBase::_free(const_cast<wchar_t*>(text));
    else
      ztUniqueStrings::Release(text);
  }
  bool isOwn() const noexcept { return own_; }
  bool isShared() const noexcept { return text_ && !own_; }
  // Whether the reference is one that nobody gives back, so that the text stays for ever. Counts a new name.
  bool becomesKept() noexcept {
    if (std::exchange(created_, false)) kept_ = newNames.fetch_add(1) + 1 < keptNames;
    return kept_;
  }
  const wchar_t* get() const noexcept { return text_; }
  const wchar_t* take() noexcept { return std::exchange(text_, nullptr); }

 private:
  static const wchar_t* copyOf(const wchar_t* text) {
    const size_t bytes = (std::wcslen(text) + 1) * sizeof(wchar_t);
    auto* copy = static_cast<wchar_t*>(tovin::AllocBase::_alloc(bytes));
    if (!copy) throw tovin::MemoryException(1, static_cast<long long>(bytes));
    return std::wmemcpy(copy, text, bytes / sizeof(wchar_t));
  }

  const wchar_t* text_ = nullptr;
  bool own_;
  bool created_ = false;
  bool kept_ = true;
};

const wchar_t* CProperty::ShareName(const wchar_t* text) {
  FreshName fresh(text);
  fresh.becomesKept();
  return fresh.take();
}

void CProperty::SetName(const wchar_t* text) {
  guarded({ClassName, "SetName"}, [&] {
    FreshName fresh(text);
    takeName(fresh);
  });
}

void CProperty::takeName(FreshName& fresh) noexcept {
  dropName();
  if (fresh.isShared()) {
    flags_.clear(MetaDataFlags::sharedName);
    if (fresh.becomesKept()) flags_.set(MetaDataFlags::sharedName);
  }
  allocatedName_ = fresh.isOwn();
  name_ = fresh.take();
}

// Gives up the name, or only forgets one whose reference is not this property's.
void CProperty::dropName() noexcept {
  if (storage_) storage_->noteNewName();
  if (!name_) return;
  if (allocatedName_ || !flags_.has(MetaDataFlags::sharedName)) FreshName::drop(name_, allocatedName_);
  if (!allocatedName_) flags_.clear(MetaDataFlags::sharedName);
  name_ = nullptr;
  allocatedName_ = false;
}

void CProperty::SetAllocatedMName(const wchar_t* text) {
  guarded({ClassName, "SetAllocatedMName"}, [&] {
    FreshName fresh(text, FreshName::ownCopy);
    takeName(fresh);
  });
}

void CProperty::ClearAllocatedMName() { dropName(); }

void CProperty::ensureValue() const {
  if (!value_) value_ = tovin::NullValue::shared().cloneValue();
}

const tovin::Value& CProperty::getValue() const {
  return guarded({ClassName, "getValue"}, [&]() -> const tovin::Value& {
    ensureValue();
    return *value_;
  });
}

void CProperty::setValue(const tovin::Value& value) {
  guarded({ClassName, "setValue"},
          [&] { tovin::util::SetValue(value_, value, flags_.has(MetaDataFlags::readOnly), name_); });
}

// The rule of the text and the number form: a read-only property accepts what it holds already.
template <class ValueType, class Content>
void CProperty::setTyped(const Content& content) {
  auto* typed = tovin::seek<ValueType>(static_cast<tovin::Object*>(value_));
  if (refusesChange()) {
    if (typed && isSame(typed->content(), content)) return;
    tovin::util::refuseReadOnly(name_);
  }
  if (typed) {
    *typed = content;
    return;
  }
  typed = ValueType::allocate();
  OwnedValue made(typed);
  *typed = content;
  AttachValue(made.detach());
}

void CProperty::setValue(const wchar_t* text) {
  guarded({ClassName, "setValue(txt)"}, [&] { setTyped<tovin::StringValue>(tovin::WideString(text)); });
}

void CProperty::setValue(double number) {
  guarded({ClassName, "setValue(double)"}, [&] { setTyped<tovin::DoubleValue>(number); });
}

void CProperty::appendValue(const tovin::Value& value) {
  guarded({ClassName, "appendValue"},
          [&] { tovin::util::AppendToValue(value_, value, flags_.has(MetaDataFlags::readOnly), name_); });
}

void CProperty::appendValue(const wchar_t* text) {
  guarded({ClassName, "appendValue(txt)"}, [&] {
    const tovin::StringValue value(text);
    tovin::util::AppendToValue(value_, value, flags_.has(MetaDataFlags::readOnly), name_);
  });
}

void CProperty::requireEditable() const {
  if (flags_.has(MetaDataFlags::readOnly)) tovin::util::refuseReadOnly(name_);
}

tovin::Value& CProperty::getEditableValue() {
  return guarded({ClassName, "getEditableValue"}, [&]() -> tovin::Value& {
    requireEditable();
    ensureValue();
    return *value_;
  });
}

tovin::Value& CProperty::getEditableRawValue() {
  return guarded({ClassName, "getEditableRawValue"}, [&]() -> tovin::Value& {
    requireEditable();
    ensureValue();
    return *value_;
  });
}

bool CProperty::hasNullValue() const { return !value_ || value_->isNullValue(); }

void CProperty::CoerceToType(const tovin::ClassTag& target) {
  guarded({ClassName, "CoerceToType"}, [&] { tovin::util::CoerceToType(value_, target); });
}

void CProperty::AttachValue(tovin::Value* value) {
  guarded({ClassName, "AttachValue"}, [&] {
    if (value == value_) return;
    const OwnedValue old(std::exchange(value_, value));
  });
}

tovin::Value* CProperty::DetachValue() {
  return guarded({ClassName, "DetachValue"}, [&] { return std::exchange(value_, nullptr); });
}

void CProperty::AttachValueFrom(CProperty& source) {
  guarded({ClassName, "AttachValueFrom"}, [&] {
    if (&source != this) AttachValue(source.DetachValue());
  });
}

void CProperty::attachValueFrom(tovin::iProperty* source) {
  guarded({ClassName, "attachValueFrom"}, [&] {
    auto* property = tovin::seek<CProperty>(static_cast<tovin::Object*>(source));
    if (!property) throw tovin::Exception(L"Values can only be attached from a property of class %hs", Tag);
    AttachValueFrom(*property);
  });
}

void CProperty::Reset() {
  guarded({ClassName, "Reset"}, [&] {
    if (value_) value_->reset();
    dropName();
    flags_ = MetaDataFlags();
  });
}

void CProperty::AssignFrom(const CProperty& source) {
  guarded({ClassName, "AssignFrom"}, [&] {
    if (&source == this) return;
    FreshName fresh(source.name_);
    if (source.value_)
      tovin::util::SetValue(value_, *source.value_, false, name_);
    else
      AttachValue(nullptr);
    takeName(fresh);
    flags_ = source.flags_;
  });
}

void CProperty::assignFrom(const tovin::iProperty* source) {
  guarded({ClassName, "assignFrom"}, [&] {
    if (const auto* property = tovin::seek<CProperty>(static_cast<const tovin::Object*>(source))) {
      return AssignFrom(*property);
    }
    if (!source) return;
    FreshName fresh(source->getName());
    tovin::util::SetValue(value_, source->getValue(), false, name_);
    takeName(fresh);
    flags_ = source->getInfo()->getMetaDataFlags();
  });
}

void CProperty::serialize(tovin::iByteOutputStream& stream) const {
  guarded({ClassName, "serialize"}, [&] {
    WriteWideString(stream, name_);
    const tovin::Value& value = getValue();
    writeValueClass(stream, value.getClassTag());
    value.serialize(stream);
    WriteCompactInt(stream, static_cast<int32_t>(flags_.getBits()));
  });
}

void CProperty::WritePacked(tovin::iByteOutputStream& stream, const AttributeView& packed) {
  guarded({ClassName, "serialize"}, [&] {
    WriteWideString(stream, packed.name);
    writePackedValue(stream, packed);
    WriteCompactInt(stream, packed.flags);
  });
}

void CProperty::deserialize(tovin::iByteInputStream& stream) {
  guarded({ClassName, "deserialize"}, [&] {
    try {
      FreshName name = readName(stream);
      if (name.get()) takeName(name);
      readValue(readValueClass(stream), stream);
      int32_t flags = 0;
      ReadCompactInt(stream, flags);
      flags_ = MetaDataFlags(static_cast<uint32_t>(flags));
    } catch (...) {
      empty();
      throw;
    }
  });
}

// Reads the fields of deserialize(); until all are there the packer stays as it is.
tovin::Ptr<CProperty> CProperty::ReadPacked(tovin::iByteInputStream& stream, AttributePacker& packer) {
  return guarded({ClassName, "deserialize"}, [&] {
    FreshName name = readName(stream);
    const bool packable = name.isShared();
    if (packable) name.becomesKept();
    tovin::Class& valueClass = readValueClass(stream);
    PlainValue plain(packer.room);
    tovin::Ptr<CProperty> made;
    if (!packable || !plain.read(valueClass, stream)) {
      made = tovin::Ptr<CProperty>(allocate());
      made->readValue(valueClass, stream);
    }
    int32_t flags = 0;
    ReadCompactInt(stream, flags);
    const MetaDataFlags bits(static_cast<uint32_t>(flags));
    if (!made && isPackable(bits) && plain.addTo(packer, name.get())) {
      name.take();
      packer.setFlags(static_cast<uint8_t>(bits.getBits()));
      return made;
    }
    if (!made) {
      made = tovin::Ptr<CProperty>(allocate());
      made->AttachValue(plain.make().detach());
    }
    if (name.get()) made->takeName(name);
    made->flags_ = bits;
    return made;
  });
}

tovin::Ptr<CProperty> CProperty::Unpack(const AttributeView& packed) {
  const tovin::Ptr<CProperty> made(allocate());
  tovin::WideString room;
  PlainValue plain(room);
  plain.take(packed);
  made->AttachValue(plain.make().detach());
  made->name_ = packed.name;
  made->flags_ = packed.flags;
  return made;
}

bool CProperty::PackInto(AttributePacker& packer) const {
  if (typeid(*this) != typeid(CProperty) || allocatedName_ || !name_ || !value_ || !isPackable(flags_)) {
    return false;
  }
  PlainValue plain(packer.room);
  if (!plain.take(*value_) || !plain.addTo(packer, name_)) return false;
  packer.setFlags(static_cast<uint8_t>(flags_.getBits()));
  if (!flags_.has(MetaDataFlags::sharedName)) ztUniqueStrings::AddReference(name_);
  return true;
}

void CProperty::empty() {
  AttachValue(nullptr);
  dropName();
  flags_ = MetaDataFlags();
}

CProperty::FreshName CProperty::readName(tovin::iByteInputStream& stream) {
  int32_t count = 0;
  ReadCompactInt(stream, count);
  const int32_t units = tovin::coding::checkedCount(count);
  if (units < 0) return FreshName(nullptr);
  if (units < stackNameUnits) {
    wchar_t name[stackNameUnits];
    if (units > 0) ReadWideChars(stream, name, units);
    name[units] = L'\0';
    return FreshName(name);
  }
  tovin::WideString name;
  tovin::coding::readWideBody(stream, name, units);
  return FreshName(name);
}

void CProperty::readValue(tovin::Class& valueClass, tovin::iByteInputStream& stream) {
  if (!value_ || !value_->_SeekClassIdentity(valueClass.getTag())) {
    tovin::MemPtr<tovin::Object, tovin::InstanceDeallocator> made(valueClass.newInstance());
    auto* value = tovin::seek<tovin::Value>(made.get());
    if (!value) throw tovin::Exception(L"Class %hs is not a value class", valueClass.getTag());
    made.detach();
    AttachValue(value);
  }
  value_->deserialize(stream);
}

void CProperty::onActivate() {
  flags_ = MetaDataFlags();
  parent_ = nullptr;
}

void CProperty::onDeactivate() {
  AttachValue(nullptr);
  dropName();
}
