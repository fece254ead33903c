#include "tovinCore/Numbers.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "tovinCore/Units.h"

namespace tovin::util {
namespace {

bool isBlank(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::wstring_view trimmed(std::wstring_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

// Numbers are ASCII; a text with anything else is none.
bool narrowed(std::wstring_view text, std::string& out) {
  out.clear();
  for (wchar_t c : text) {
    if (static_cast<unsigned long>(c) > 0x7F) return false;
    out += static_cast<char>(c);
  }
  return true;
}

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
    for (; at < text.size(); ++at) written = std::min(written * 10 + (text[at] - '0'), 1'000'000'000'000LL);
    exponent += negative ? -written : written;
  }
  return exponent > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

}  // namespace

bool tryStringToDouble(std::wstring_view text, double& value) noexcept {
  std::string digits;
  if (!narrowed(trimmed(text), digits) || digits.empty()) return false;
  std::string_view rest = digits;
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
  std::string digits;
  if (!narrowed(trimmed(text), digits) || digits.empty()) return false;
  const char* first = digits.data() + (digits.front() == '+' ? 1 : 0);
  const char* last = digits.data() + digits.size();
  if (first != last && first != digits.data() && *first == '-') return false;
  const auto [end, error] = std::from_chars(first, last, value);
  return error == std::errc() && end == last;
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
