#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tovin/AttributeView.h"
#include "ztbaseclient/Export.h"

/// Properties of which nobody asked for an object yet, in one block: names, flags and kinds in order, then
/// the texts end to end. docs/architecture.md has a picture.
///
/// - Ownership: one reference to each name, unless its flag 0x40 says that nobody gives it back. Destroyed
/// with
///   destroy().
/// - Shape: texts have one byte a unit while all are below U+0100, else two; numbers lie among them.
class ZTBASECLIENT_API AttributeBlock {
 public:
  /// The block without attributes, which is no memory of its own.
  static AttributeBlock* none() noexcept;
  static void destroy(AttributeBlock* block) noexcept;
  /// A block of which no name was surrendered.
  AttributeBlock* copy() const;

  unsigned getCount() const noexcept { return count_; }
  const wchar_t* nameAt(unsigned index) const noexcept { return attributes()[index].name; }
  /// The first one of a name with A to Z folded, -1 if none.
  int find(const wchar_t* name) const noexcept;
  tovin::AttributeView view(unsigned index) const noexcept;
  /// The caller has the name's reference from then on; the attribute is not to be looked at any more.
  void surrenderName(unsigned index) noexcept { attributes()[index].name = nullptr; }

 private:
  friend class AttributePacker;
  struct Attribute {
    const wchar_t* name;
    // Where its text ends, in bytes; it begins where the one before ends.
    uint32_t end;
    uint8_t flags;
    tovin::AttributeView::Kind kind;
  };

  constexpr AttributeBlock(uint32_t size, uint16_t count, uint8_t unit) noexcept
      : size_(size), count_(count), unit_(unit) {}
  static AttributeBlock* make(uint32_t textSize, size_t count, uint8_t unit);
  Attribute* attributes() noexcept { return reinterpret_cast<Attribute*>(this + 1); }
  const Attribute* attributes() const noexcept { return reinterpret_cast<const Attribute*>(this + 1); }
  static void releaseName(const Attribute& attribute) noexcept;

  alignas(8) uint32_t size_;
  uint16_t count_;
  uint8_t unit_;
};

/// Collects attributes for a block; used again, it needs no memory but the block's.
///
/// - Ownership: takes over the reference to a name once it returns true.
class ZTBASECLIENT_API AttributePacker {
 public:
  AttributePacker() = default;
  AttributePacker(const AttributePacker&) = delete;
  AttributePacker& operator=(const AttributePacker&) = delete;
  ~AttributePacker() { clear(); }

  /// For a text that is read on its way here.
  tovin::WideString room;

  unsigned getCount() const noexcept { return static_cast<unsigned>(attributes_.size()); }
  bool isFull() const noexcept { return getCount() == mostAttributes; }
  /// Each byte is one unit.
  bool addBytes(const wchar_t* name, std::string_view text);
  /// False for a text that is too long, or that has an element above U+FFFF.
  bool addText(const wchar_t* name, std::wstring_view text);
  bool addNumber(const wchar_t* name, double number);
  bool addInteger(const wchar_t* name, int32_t integer);
  /// \param kind of nullText and nullValue.
  bool addNull(const wchar_t* name, tovin::AttributeView::Kind kind);
  /// Of the last one, which had none.
  void setFlags(uint8_t flags) noexcept { attributes_.back().flags = flags; }

  /// The block of all that was added; the packer is empty then. As it was when there is no memory.
  AttributeBlock* pack();
  void clear() noexcept;

 private:
  using Kind = tovin::AttributeView::Kind;
  static constexpr unsigned mostAttributes = 0xFFFF;

  bool add(const wchar_t* name, Kind kind);
  template <class Iterator>
  void addUnits(Iterator first, Iterator last);
  bool hasRoomFor(size_t units) const noexcept;
  void widen();

  std::vector<AttributeBlock::Attribute> attributes_;
  std::string texts_;
  uint8_t unit_ = 1;
};
