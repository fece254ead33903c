#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tovinCore/Export.h"

/// Wide text is a sequence of UTF-16 units on every platform. Where wchar_t has 32 bits an element above
/// U+FFFF (from a literal or a caller) counts as its surrogate pair; these helpers are the one place that
/// knows so.
namespace tovin {

constexpr bool isHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool isLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

/// Calls body(char16_t) for each UTF-16 unit of one element; an element of no character is U+FFFD.
template <class Body>
constexpr void forUnits(uint32_t element, Body&& body) {
  if (element <= 0xFFFF) return static_cast<void>(body(static_cast<char16_t>(element)));
  if (element > 0x10FFFF) return static_cast<void>(body(char16_t{0xFFFD}));
  body(static_cast<char16_t>(0xD800 + ((element - 0x10000) >> 10)));
  body(static_cast<char16_t>(0xDC00 + ((element - 0x10000) & 0x3FF)));
}

/// The number of UTF-16 units of a text.
constexpr size_t countUnits(std::wstring_view text) {
  size_t units = text.size();
  if constexpr (sizeof(wchar_t) > 2) {
    for (wchar_t c : text) units += static_cast<uint32_t>(c) - 0x10000u <= 0xFFFFFu;
  }
  return units;
}

/// Folds the letters A to Z; no other character has a case here, and no locale is asked.
constexpr uint32_t foldAscii(uint32_t c) { return c - U'A' <= U'Z' - U'A' ? c + 32 : c; }
constexpr wchar_t foldAscii(wchar_t c) { return static_cast<wchar_t>(foldAscii(static_cast<uint32_t>(c))); }

/// Equality unit by unit with A to Z folded; null equals only null.
TOVINCORE_API bool equalFolded(const wchar_t* a, const wchar_t* b) noexcept;
TOVINCORE_API bool equalFolded(std::wstring_view a, std::wstring_view b) noexcept;

/// Exact equality; null equals only null.
TOVINCORE_API bool equalExact(const wchar_t* a, const wchar_t* b) noexcept;

/// Order by UTF-16 units: negative, zero or positive.
TOVINCORE_API int compareUnits(std::wstring_view a, std::wstring_view b) noexcept;

/// The name hash: h = 31·h + unit over the folded units, 32 bits, wrapping; 0 for null.
TOVINCORE_API uint32_t hashFolded(const wchar_t* text) noexcept;

/// The same hash without folding.
TOVINCORE_API uint32_t hashExact(const wchar_t* text) noexcept;

/// Hashes under a key that is drawn anew for each process, so that nobody can prepare texts with equal
/// hashes.
TOVINCORE_API uint32_t hashKeyed(std::wstring_view text) noexcept;
TOVINCORE_API uint32_t hashKeyedFolded(std::wstring_view text) noexcept;

}  // namespace tovin
