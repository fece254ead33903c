#include "ztbaseclient/data/AttributeBlock.h"

#include <algorithm>
#include <cstring>

#include "tovin/AllocBase.h"
#include "tovinCore/Exception.h"
#include "tovinCore/Units.h"
#include "ztcore/ztUniqueStrings.h"

using tovin::AttributeView;

namespace {

// So many units of text have room in a block at most, so that a position needs four bytes.
constexpr size_t mostUnits = size_t{1} << 28;

}  // namespace

AttributeBlock* AttributeBlock::none() noexcept {
  static constinit AttributeBlock only(0, 0, 1);
  return &only;
}

AttributeBlock* AttributeBlock::make(uint32_t textSize, size_t count, uint8_t unit) {
  const size_t size = sizeof(AttributeBlock) + count * sizeof(Attribute) + textSize;
  void* memory = tovin::AllocBase::_alloc(size);
  if (!memory) throw tovin::MemoryException(1, static_cast<long long>(size));
  return new (memory) AttributeBlock(static_cast<uint32_t>(size), static_cast<uint16_t>(count), unit);
}

void AttributeBlock::destroy(AttributeBlock* block) noexcept {
  if (!block || block == none()) return;
  std::for_each(block->attributes(), block->attributes() + block->count_, releaseName);
  tovin::AllocBase::_free(block);
}

void AttributeBlock::releaseName(const Attribute& attribute) noexcept {
  if (!(attribute.flags & tovin::MetaDataFlags::sharedName)) ztUniqueStrings::Release(attribute.name);
}

AttributeBlock* AttributeBlock::copy() const {
  if (this == none()) return none();
  const auto textSize = static_cast<uint32_t>(size_ - sizeof(AttributeBlock) - count_ * sizeof(Attribute));
  AttributeBlock* made = make(textSize, count_, unit_);
  std::memcpy(made->attributes(), attributes(), size_ - sizeof(AttributeBlock));
  for (unsigned i = 0; i < count_; ++i) {
    if (!(attributes()[i].flags & tovin::MetaDataFlags::sharedName)) ztUniqueStrings::AddReference(nameAt(i));
  }
  return made;
}

int AttributeBlock::find(const wchar_t* name) const noexcept {
  for (unsigned i = 0; i < count_; ++i) {
    if (tovin::equalFolded(nameAt(i), name)) return static_cast<int>(i);
  }
  return -1;
}

AttributeView AttributeBlock::view(unsigned index) const noexcept {
  const Attribute& attribute = attributes()[index];
  const uint32_t begin = index > 0 ? attributes()[index - 1].end : 0;
  const auto* text = reinterpret_cast<const char*>(attributes() + count_) + begin;
  AttributeView view;
  view.kind = attribute.kind;
  view.unit = unit_;
  view.flags = attribute.flags;
  view.name = attribute.name;
  if (view.kind == AttributeView::Kind::number) {
    std::memcpy(&view.number, text, sizeof view.number);
  } else if (view.kind == AttributeView::Kind::integer) {
    std::memcpy(&view.integer, text, sizeof view.integer);
  } else {
    view.units = text;
    view.length = (attribute.end - begin) / unit_;
  }
  return view;
}

bool AttributePacker::hasRoomFor(size_t units) const noexcept {
  return units <= mostUnits && texts_.size() / unit_ <= mostUnits - units;
}

bool AttributePacker::add(const wchar_t* name, Kind kind) {
  attributes_.push_back({name, static_cast<uint32_t>(texts_.size()), 0, kind});
  return true;
}

bool AttributePacker::addBytes(const wchar_t* name, std::string_view text) {
  if (!hasRoomFor(text.size())) return false;
  const auto* first = reinterpret_cast<const unsigned char*>(text.data());
  addUnits(first, first + text.size());
  return add(name, Kind::text);
}

bool AttributePacker::addText(const wchar_t* name, std::wstring_view text) {
  uint32_t bits = 0;
  for (wchar_t c : text) bits |= static_cast<uint32_t>(c);
  if (bits > 0xFFFF || !hasRoomFor(text.size())) return false;
  if (bits > 0xFF) widen();
  addUnits(text.begin(), text.end());
  return add(name, Kind::text);
}

template <class Iterator>
void AttributePacker::addUnits(Iterator first, Iterator last) {
  const size_t before = texts_.size();
  texts_.resize(before + static_cast<size_t>(last - first) * unit_);
  char* to = texts_.data() + before;
  if (unit_ == 1) {
    std::transform(first, last, to, [](auto c) { return static_cast<char>(c); });
    return;
  }
  for (; first != last; ++first, to += sizeof(char16_t)) {
    const auto unit = static_cast<char16_t>(*first);
    std::memcpy(to, &unit, sizeof unit);
  }
}

bool AttributePacker::addNumber(const wchar_t* name, double number) {
  texts_.append(reinterpret_cast<const char*>(&number), sizeof number);
  return add(name, Kind::number);
}

bool AttributePacker::addInteger(const wchar_t* name, int32_t integer) {
  texts_.append(reinterpret_cast<const char*>(&integer), sizeof integer);
  return add(name, Kind::integer);
}

bool AttributePacker::addNull(const wchar_t* name, Kind kind) { return add(name, kind); }

// From one byte a unit to two: the texts double, numbers stay as they are.
void AttributePacker::widen() {
  if (unit_ == 2) return;
  std::string wide;
  std::vector<uint32_t> ends;
  ends.reserve(attributes_.size());
  size_t at = 0;
  for (const AttributeBlock::Attribute& each : attributes_) {
    for (; at < each.end; ++at) {
      const char16_t unit = static_cast<unsigned char>(texts_[at]);
      wide.append(each.kind == Kind::text ? reinterpret_cast<const char*>(&unit) : &texts_[at],
                  each.kind == Kind::text ? sizeof unit : 1);
    }
    ends.push_back(static_cast<uint32_t>(wide.size()));
  }
  texts_.swap(wide);
  for (size_t i = 0; i < ends.size(); ++i) attributes_[i].end = ends[i];
  unit_ = 2;
}

AttributeBlock* AttributePacker::pack() {
  if (attributes_.empty()) return AttributeBlock::none();
  AttributeBlock* block =
      AttributeBlock::make(static_cast<uint32_t>(texts_.size()), attributes_.size(), unit_);
  auto* end = std::copy(attributes_.begin(), attributes_.end(), block->attributes());
  std::memcpy(end, texts_.data(), texts_.size());
  attributes_.clear();
  clear();
  return block;
}

void AttributePacker::clear() noexcept {
  std::for_each(attributes_.begin(), attributes_.end(), AttributeBlock::releaseName);
  attributes_.clear();
  texts_.clear();
  unit_ = 1;
}
