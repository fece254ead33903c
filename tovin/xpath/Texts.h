// Texts as queries count them.
#pragma once

#include <string>
#include <string_view>

#include "tovinCore/Units.h"

namespace tovin::xpath {

/// The same text with surrogate pairs where it has characters above U+FFFF: one unit an element.
inline std::wstring inUnits(std::wstring_view text) {
  if (countUnits(text) == text.size()) return std::wstring(text);
  std::wstring units;
  for (wchar_t c : text) {
    forUnits(static_cast<uint32_t>(c), [&](char16_t unit) { units += static_cast<wchar_t>(unit); });
  }
  return units;
}

}  // namespace tovin::xpath
