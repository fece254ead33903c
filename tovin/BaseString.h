#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "tovin/AllocBase.h"
#include "tovinCore/Exception.h"
#include "tovinCore/Units.h"

namespace tovin {

/// An owned, zero-terminated text with a length. A null string and an empty string are distinct states.
///
///     BaseString<wchar_t> name(L"size");
///     name += L"[1]";
///     if (!name.isNull()) use(name.c_str());
///
/// - Ownership: owns its characters; copies copy them. One pointer in size: length and capacity stand before
///   the text.
/// - Shape: C is wchar_t (UTF-16 units) or char; the length counts elements without the terminator.
/// - Errors: MemoryException; InvalidIndexException(index, length - 1) from the checked operator[].
template <class C>
class BaseString {
 public:
  using View = std::basic_string_view<C>;
  static constexpr size_t npos = View::npos;

  constexpr BaseString() noexcept = default;
  BaseString(const C* text) {
    if (text) assign(text, View(text).size());
  }
  explicit BaseString(View text) { assign(text.data(), text.size()); }
  BaseString(const std::basic_string<C>& text) { assign(text.data(), text.size()); }
  BaseString(const C* text, size_t length) { assign(text, length); }
  BaseString(const BaseString& other) { *this = other; }
  BaseString(BaseString&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
  ~BaseString() { setNull(); }

  BaseString& operator=(const BaseString& other) {
    if (this == &other) return *this;
    if (other.isNull())
      setNull();
    else
      assign(other.text_, other.getLength());
    return *this;
  }
  BaseString& operator=(BaseString&& other) noexcept {
    std::swap(text_, other.text_);
    return *this;
  }
  BaseString& operator=(const C* text) {
    if (text)
      assign(text, View(text).size());
    else
      setNull();
    return *this;
  }
  BaseString& operator=(View text) { return assign(text.data(), text.size()); }
  BaseString& operator=(const std::basic_string<C>& text) { return assign(text.data(), text.size()); }

  bool isNull() const noexcept { return !text_; }
  /// Null or without characters.
  bool isEmpty() const noexcept { return getLength() == 0; }
  size_t getLength() const noexcept { return text_ ? header()->length : 0; }
  /// Null for a null string.
  const C* c_str() const noexcept { return text_; }
  operator const C*() const noexcept { return text_; }
  /// A null string views as empty.
  View view() const noexcept { return text_ ? View(text_, header()->length) : View(); }
  C operator[](size_t index) const {
    if (index >= getLength()) throw InvalidIndexException(static_cast<long long>(index), lastIndex());
    return text_[index];
  }
  size_t find(View text, size_t from = 0) const noexcept { return view().find(text, from); }
  size_t findLast(C c) const noexcept { return view().rfind(c); }
  BaseString subString(size_t from, size_t count = npos) const {
    return BaseString(from < getLength() ? view().substr(from, count) : View());
  }

  void setNull() noexcept {
    if (text_) AllocBase::_free(header());
    text_ = nullptr;
  }
  /// Makes it the empty string.
  void clear() { setLength(0); }
  /// Room for so many characters without further allocation; a null string becomes empty.
  void reserve(size_t length) { grow(length); }
  /// Sets the length within reserved room and the terminator; new characters are whatever the room holds.
  void setLength(size_t length) {
    grow(length);
    header()->length = length;
    text_[length] = C(0);
  }
  /// The characters for writing; null for a null string.
  C* data() noexcept { return text_; }

  BaseString& assign(const C* text, size_t length) {
    if (!text_ || capacity() < length) {
      BaseString fresh;  // beside the old text, in which the new one may lie
      fresh.enlarge(length);
      std::char_traits<C>::copy(fresh.text_, text, length);
      fresh.setLength(length);
      std::swap(text_, fresh.text_);
      return *this;
    }
    std::char_traits<C>::move(text_, text, length);
    setLength(length);
    return *this;
  }
  BaseString& append(View text) {
    const size_t before = getLength();
    BaseString source;
    if (text_ && capacity() < before + text.size()) source.assign(text.data(), text.size());
    const View from = source.isNull() ? text : source.view();
    growFor(before + from.size());
    std::char_traits<C>::move(text_ + before, from.data(), from.size());
    setLength(before + from.size());
    return *this;
  }
  BaseString& operator+=(View text) { return append(text); }
  BaseString& operator+=(const C* text) { return text ? append(View(text)) : *this; }
  BaseString& operator+=(const std::basic_string<C>& text) { return append(text); }
  BaseString& operator+=(const BaseString& text) { return text.isNull() ? *this : append(text.view()); }
  BaseString& operator+=(C c) { return append(View(&c, 1)); }

  /// Exact, unit by unit; null equals only null.
  friend bool operator==(const BaseString& a, const BaseString& b) noexcept {
    return a.isNull() == b.isNull() && sameText(a.view(), b.view());
  }
  friend bool operator==(const BaseString& a, const C* b) noexcept {
    return b ? !a.isNull() && sameText(a.view(), b) : a.isNull();
  }

 private:
  struct alignas(alignof(std::max_align_t)) Header {
    size_t length;
    size_t capacity;
  };

  static bool sameText(View a, View b) noexcept {
    if constexpr (std::is_same_v<C, wchar_t>)
      return a == b || compareUnits(a, b) == 0;
    else
      return a == b;
  }

  Header* header() const noexcept { return reinterpret_cast<Header*>(text_) - 1; }
  size_t capacity() const noexcept { return text_ ? header()->capacity : 0; }
  long long lastIndex() const noexcept { return static_cast<long long>(getLength()) - 1; }

  void growFor(size_t length) {
    grow(text_ && capacity() < length ? std::max(length, capacity() * 2) : length);
  }

  void grow(size_t length) {
    if (!text_ || header()->capacity < length) enlarge(length);
  }

  // Apart from grow, which is to be small enough to stand where it is called.
  [[gnu::noinline]] void enlarge(size_t length) {
    if (length > (SIZE_MAX / 2 - sizeof(Header)) / sizeof(C))
      throw MemoryException(sizeof(C), static_cast<long long>(length));
    void* block = AllocBase::_alloc(sizeof(Header) + (length + 1) * sizeof(C));
    if (!block) throw MemoryException(sizeof(C), static_cast<long long>(length));
    auto* fresh = static_cast<Header*>(block);
    *fresh = {getLength(), length};
    C* text = reinterpret_cast<C*>(fresh + 1);
    std::char_traits<C>::copy(text, text_ ? text_ : text, fresh->length);
    text[fresh->length] = C(0);
    setNull();
    text_ = text;
  }

  C* text_ = nullptr;
};

/// The two texts of the interface.
using WideString = BaseString<wchar_t>;
using NarrowString = BaseString<char>;

/// Orders wide strings by UTF-16 units, null first; for ordered maps.
struct UnitOrder {
  bool operator()(const WideString& a, const WideString& b) const noexcept {
    if (a.isNull() || b.isNull()) return a.isNull() && !b.isNull();
    return compareUnits(a.view(), b.view()) < 0;
  }
};

}  // namespace tovin
