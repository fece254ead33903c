// Which names a query can hold.
#pragma once

#include <algorithm>
#include <string_view>

#include "tovinCore/Units.h"

namespace tovin::xpath {

constexpr bool isDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

/// Everything beyond ASCII may stand in a name: trees from bytes hold names of which each byte is a
/// character.
constexpr bool beginsName(wchar_t c) {
  const wchar_t folded = foldAscii(c);
  return (folded >= L'a' && folded <= L'z') || c == L'_' || static_cast<unsigned long>(c) > 0x7F;
}

constexpr bool continuesName(wchar_t c) { return beginsName(c) || isDigit(c) || c == L'-' || c == L'.'; }

constexpr bool isNCName(std::wstring_view text) {
  return !text.empty() && beginsName(text.front()) && std::ranges::all_of(text, continuesName);
}

/// QName ::= NCName | NCName ':' NCName
constexpr bool isQName(std::wstring_view text) {
  const size_t colon = text.find(L':');
  if (colon == text.npos) return isNCName(text);
  return isNCName(text.substr(0, colon)) && isNCName(text.substr(colon + 1));
}

}  // namespace tovin::xpath
