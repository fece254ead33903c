// Numbers and texts by the rules of XPath 1.0 (W3C), sections 4.2 and 4.4.
#pragma once

#include <string>
#include <string_view>

#include "tovin/Export.h"

namespace tovin::xpath {

/// Reads '-'? Number with blanks around it; NaN for any other text: there is neither '+' nor exponent.
TOVIN_API double textToNumber(std::wstring_view text) noexcept;

/// As few decimal digits as tell the number from all others, never an exponent; "NaN", "Infinity",
/// "-Infinity"; "0" for negative zero.
std::wstring numberToText(double number);

/// To the nearest whole number, halves upwards.
double roundHalfUp(double number) noexcept;

bool isXmlBlank(wchar_t c) noexcept;

}  // namespace tovin::xpath
