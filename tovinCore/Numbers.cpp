#include "tovinCore/Numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "tovinCore/Units.h"

namespace tovin::util {
namespace {

// No exponent that is written with more can make a difference, whatever the length of the digits.
constexpr long long mostExponent = 1'000'000'000'000LL;

bool isBlank(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::wstring_view trimmed(std::wstring_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool isDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// The characters of a number, in a place of its own: no text is too long for it, and none needs memory.
class NumberChars {
 public:
  // False for a text that is no number because of what it consists of.
  bool take(std::wstring_view text) noexcept { return text.size() <= longest ? narrow(text) : shorten(text); }
  std::string_view view() const noexcept { return {chars_, size_}; }

 private:
  // Digits beyond these only tell whether a number lies on the middle between two doubles or above it.
  static constexpr size_t decidingDigits = 800;
  static constexpr size_t longest = decidingDigits + 100;

  void put(char c) noexcept { chars_[size_++] = c; }

  // Numbers are ASCII; a text with anything else is none.
  bool narrow(std::wstring_view text) noexcept {
    for (wchar_t c : text) {
      if (static_cast<unsigned long>(c) > 0x7F) return false;
      put(static_cast<char>(c));
    }
    return true;
  }

  // [sign] digits [. digits] [e [sign] digits], written anew as digits that decide and an exponent.
  bool shorten(std::wstring_view text) noexcept {
    size_t at = 0;
    const auto more = [&] { return at < text.size(); };
    if (text[at] == L'-' || text[at] == L'+') put(static_cast<char>(text[at++]));
    const size_t begin = size_;
    long long exponent = 0;
    bool point = false, digits = false, rest = false;
    for (; more() && (isDigit(text[at]) || (text[at] == L'.' && !point)); ++at) {
      if (text[at] == L'.') {
        point = true;
        continue;
      }
      digits = true;
      const bool significant = size_ > begin || text[at] != L'0';
      const bool dropped = significant && size_ - begin == decidingDigits;
      if (significant && !dropped) put(static_cast<char>(text[at]));
      rest = rest || (dropped && text[at] != L'0');
      if (dropped)
        exponent += point ? 0 : 1;
      else
        exponent -= point ? 1 : 0;
    }
    if (!digits) return false;
    if (more()) {
      long long written = 0;
      text.remove_prefix(at);
      if (!readExponent(text, written)) return false;
      exponent += written;
    }
    if (size_ == begin) return put('0'), true;
    if (rest) {
      put('1');
      --exponent;
    }
    put('e');
    size_ = static_cast<size_t>(std::to_chars(chars_ + size_, chars_ + sizeof chars_, exponent).ptr - chars_);
    return true;
  }

  static bool readExponent(std::wstring_view text, long long& value) noexcept {
    if (text.front() != L'e' && text.front() != L'E') return false;
    text.remove_prefix(1);
    const bool negative = !text.empty() && text.front() == L'-';
    if (negative || (!text.empty() && text.front() == L'+')) text.remove_prefix(1);
    if (text.empty()) return false;
    for (wchar_t c : text) {
      if (!isDigit(c)) return false;
      value = std::min(value * 10 + (c - L'0'), mostExponent);
    }
    if (negative) value = -value;
    return true;
  }

  char chars_[longest + 32];
  size_t size_ = 0;
};

// from_chars only says "out of range": whether above or below shows in where the first digit that counts
// stands.
double outOfRange(std::string_view text) {
  long long exponent = 0;
  bool point = false, significant = false;
  size_t at = 0;
  for (; at < text.size() && (isDigit(text[at]) || text[at] == '.'); ++at) {
    if (text[at] == '.') {
      point = true;
    } else {
      significant = significant || text[at] != '0';
      if (!point && significant) ++exponent;
      if (point && !significant) --exponent;
    }
  }
  if (at < text.size()) {
    const bool negative = text[++at] == '-';
    if (text[at] == '-' || text[at] == '+') ++at;
    long long written = 0;
    for (; at < text.size(); ++at) written = std::min(written * 10 + (text[at] - '0'), mostExponent);
    exponent += negative ? -written : written;
  }
  return exponent > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

}  // namespace

bool tryStringToDouble(std::wstring_view text, double& value) noexcept {
  NumberChars chars;
  if (!chars.take(trimmed(text)) || chars.view().empty()) return false;
  std::string_view rest = chars.view();
  const bool negative = rest.front() == '-';
  if (rest.front() == '-' || rest.front() == '+') rest.remove_prefix(1);
  if (rest.empty() || rest.front() == '-') return false;
  double magnitude = 0;
  const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), magnitude);
  if (error == std::errc::invalid_argument || end != rest.data() + rest.size()) return false;
  if (error == std::errc::result_out_of_range) magnitude = outOfRange(rest);
  value = negative ? -magnitude : magnitude;
  return true;
}

bool tryStringToInteger(std::wstring_view text, int& value) noexcept {
  text = trimmed(text);
  const bool negative = !text.empty() && text.front() == L'-';
  if (negative || (!text.empty() && text.front() == L'+')) text.remove_prefix(1);
  if (text.empty()) return false;
  const long long limit = negative ? 0x80000000LL : 0x7FFFFFFFLL;
  long long number = 0;
  for (wchar_t c : text) {
    if (!isDigit(c)) return false;
    number = number * 10 + (c - L'0');
    if (number > limit) return false;
  }
  value = static_cast<int>(negative ? -number : number);
  return true;
}

int stringToInteger(std::wstring_view text) noexcept {
  size_t at = 0;
  while (at < text.size() && isBlank(text[at])) ++at;
  const bool negative = at < text.size() && text[at] == L'-';
  if (at < text.size() && (text[at] == L'-' || text[at] == L'+')) ++at;
  const long long limit = negative ? 0x80000000LL : 0x7FFFFFFFLL;
  long long number = 0;
  for (; at < text.size() && text[at] >= L'0' && text[at] <= L'9'; ++at) {
    number = std::min(limit, number * 10 + (text[at] - L'0'));
  }
  return static_cast<int>(negative ? -number : number);
}

bool stringToBoolean(std::wstring_view text) noexcept {
  const std::wstring_view word = trimmed(text);
  for (const wchar_t* yes : {L"true", L"yes", L"on", L"1"}) {
    if (equalFolded(word, std::wstring_view(yes))) return true;
  }
  return false;
}

std::wstring doubleToString(double value) {
  if (std::isnan(value)) return L"NaN";
  if (std::isinf(value)) return value < 0 ? L"-Infinity" : L"Infinity";
  char text[512];
  const double magnitude = std::fabs(value);
  const bool plain = magnitude == 0 || (magnitude >= 1e-6 && magnitude < 1e21);
  const auto style = plain ? std::chars_format::fixed : std::chars_format::scientific;
  const auto end = std::to_chars(text, text + sizeof text, value, style).ptr;
  return std::wstring(text, end);
}

std::wstring integerToString(long long value) {
  char text[24];
  const auto end = std::to_chars(text, text + sizeof text, value).ptr;
  return std::wstring(text, end);
}

std::vector<std::wstring> singleStringToMultipleStrings(std::wstring_view text, wchar_t separator) {
  std::vector<std::wstring> fields;
  for (size_t from = 0;;) {
    const size_t to = text.find(separator, from);
    fields.emplace_back(text.substr(from, to == std::wstring_view::npos ? to : to - from));
    if (to == std::wstring_view::npos) return fields;
    from = to + 1;
  }
}

}  // namespace tovin::util
