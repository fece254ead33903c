#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tovinCore/Export.h"

/// Text to number and back, by fixed rules that no locale changes.
namespace tovin::util {

/// Reads a whole text as a decimal number: optional sign, digits with a point, exponent; also "nan", "inf"
/// and "infinity" in any case. Leading and trailing blanks are passed over; any other text is refused. A
/// magnitude beyond the range is infinite, one below it zero.
TOVINCORE_API bool tryStringToDouble(std::wstring_view text, double& value) noexcept;

/// Reads a whole text as a decimal integer of 32 bits.
TOVINCORE_API bool tryStringToInteger(std::wstring_view text, int& value) noexcept;

/// Reads the integer that a text begins with, as a C program would: 0 for a text without one, the nearest
/// limit for one out of range.
TOVINCORE_API int stringToInteger(std::wstring_view text) noexcept;

/// True for "true", "yes", "on" and "1", in any case of letters; false for every other text.
TOVINCORE_API bool stringToBoolean(std::wstring_view text) noexcept;

/// The shortest text that reads back as the same number: plain digits from 1e-6 up to 1e21, an exponent
/// outside; "NaN", "Infinity", "-Infinity".
TOVINCORE_API std::wstring doubleToString(double value);

TOVINCORE_API std::wstring integerToString(long long value);

/// Splits a text at every separator; the empty text gives one empty field.
TOVINCORE_API std::vector<std::wstring> singleStringToMultipleStrings(std::wstring_view text,
                                                                      wchar_t separator);

}  // namespace tovin::util
