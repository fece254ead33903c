#include "tovin/xpath/XPathNumbers.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "tovinCore/Numbers.h"

namespace tovin::xpath {
namespace {

std::wstring_view trimmed(std::wstring_view text) {
  while (!text.empty() && isXmlBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isXmlBlank(text.back())) text.remove_suffix(1);
  return text;
}

// Digits ('.' Digits?)? | '.' Digits
bool isUnsignedNumber(std::wstring_view text) {
  bool digits = false, point = false;
  for (wchar_t c : text) {
    if (c == L'.' && !point)
      point = true;
    else if (c >= L'0' && c <= L'9')
      digits = true;
    else
      return false;
  }
  return digits;
}

// Short whole numbers are most of what is read.
bool readWhole(std::wstring_view text, double& number) {
  constexpr size_t exactDigits = 15;
  if (text.size() > exactDigits) return false;
  number = 0;
  for (wchar_t c : text) {
    if (c == L'.') return false;
    number = number * 10 + (c - L'0');
  }
  return true;
}

}  // namespace

bool isXmlBlank(wchar_t c) noexcept { return c == L' ' || c == L'\t' || c == L'\n' || c == L'\r'; }

double textToNumber(std::wstring_view text) noexcept {
  text = trimmed(text);
  const bool negative = !text.empty() && text.front() == L'-';
  if (negative) text.remove_prefix(1);
  double number = 0;
  if (!isUnsignedNumber(text)) return std::numeric_limits<double>::quiet_NaN();
  if (!readWhole(text, number) && !util::tryStringToDouble(text, number))
    return std::numeric_limits<double>::quiet_NaN();
  return negative ? -number : number;
}

std::wstring numberToText(double number) {
  if (std::isnan(number)) return L"NaN";
  if (std::isinf(number)) return number < 0 ? L"-Infinity" : L"Infinity";
  if (number == 0) return L"0";
  char text[512];
  const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed).ptr;
  return std::wstring(text, end);
}

double roundHalfUp(double number) noexcept {
  if (number >= -0.5 && number < 0) return -0.0;
  const double floor = std::floor(number);
  return number - floor >= 0.5 ? floor + 1 : floor;
}

}  // namespace tovin::xpath
