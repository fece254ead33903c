#include "ztbaseclient/tools/NearLines.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

// Numbers nearer to zero than this count as zero.
constexpr double nearZero = 1e-100;

// Far more than powers and logarithms are off by.
constexpr double margin = 1e-9;

// A number of so many digits and its power of ten are exact, so that one division rounds correctly, as every
// other way from the text to the number does.
constexpr int mostDigits = 15;

constexpr std::array<double, mostDigits + 1> powersOfTen = [] {
  std::array<double, mostDigits + 1> powers{};
  double power = 1;
  for (double& each : powers) {
    each = power;
    power *= 10;
  }
  return powers;
}();

// The delimiters of CDiffFiles among the plain characters.
constexpr std::array<bool, 256> delimiters = [] {
  std::array<bool, 256> table{};
  for (const char c : {' ', '\n', '\t', '"', '<', '=', '>', ',', ';'})
    table[static_cast<unsigned char>(c)] = true;
  return table;
}();

bool isDelimiter(char c) { return delimiters[static_cast<unsigned char>(c)]; }

size_t commonPrefix(const char* a, const char* b, size_t count) {
  size_t at = 0;
  for (; count - at >= sizeof(uint64_t); at += sizeof(uint64_t)) {
    uint64_t wordA, wordB;
    std::memcpy(&wordA, a + at, sizeof wordA);
    std::memcpy(&wordB, b + at, sizeof wordB);
    if (wordA == wordB) continue;
    const uint64_t unlike = wordA ^ wordB;
    const int equalBits =
        std::endian::native == std::endian::little ? std::countr_zero(unlike) : std::countl_zero(unlike);
    return at + static_cast<size_t>(equalBits / 8);
  }
  while (at < count && a[at] == b[at]) ++at;
  return at;
}

// Takes digits off the front of a text into a number, at most as many as there is room for.
int takeDigits(const char*& at, const char* end, uint64_t& number) {
  const char* const begin = at;
  for (unsigned digit; at < end && (digit = static_cast<unsigned char>(*at) - unsigned{'0'}) < 10; ++at) {
    if (at - begin > mostDigits) break;
    number = number * 10 + digit;
  }
  return static_cast<int>(at - begin);
}

// Takes a token of the form -12.345 off the front; false for any other.
bool takeDecimal(const char*& at, const char* end, double& value) {
  const bool negative = at < end && *at == '-';
  if (negative) ++at;
  uint64_t digits = 0;
  const int whole = takeDigits(at, end, digits);
  if (whole == 0 || at == end || *at != '.') return false;
  ++at;
  const int fraction = takeDigits(at, end, digits);
  if (fraction == 0 || whole + fraction > mostDigits || (at < end && !isDelimiter(*at))) return false;
  value = static_cast<double>(digits) / powersOfTen[static_cast<size_t>(fraction)];
  if (negative) value = -value;
  return true;
}

}  // namespace

double sharedDigits(double x, double y) {
  const double larger = std::max(std::fabs(x), std::fabs(y)), smaller = std::min(std::fabs(x), std::fabs(y));
  if (std::isnan(x) || std::isnan(y)) return notANumber;
  if (smaller == 0) return larger < nearZero ? -std::log10(larger) : notANumber;
  return -std::log10(std::fabs(x - y) / smaller);
}

// Nothing is surely better than no number at all.
NearLines::NearLines(double worst)
    : worst_(worst), limit_(std::isnan(worst) ? -1 : std::pow(10, -worst) * (1 - margin)) {}

bool NearLines::pass(std::string_view line1, std::string_view line2) {
  const char *at1 = line1.data(), *end1 = at1 + line1.size();
  const char *at2 = line2.data(), *end2 = at2 + line2.size();
  for (;;) {
    const size_t common = commonPrefix(at1, at2, static_cast<size_t>(std::min(end1 - at1, end2 - at2)));
    if (at1 + common == end1 && at2 + common == end2) break;
    size_t start = common;
    while (start > 0 && !isDelimiter(at1[start - 1])) --start;
    at1 += start;
    at2 += start;
    if (!passNumbers(at1, end1, at2, end2)) return false;
    differ_ = true;
  }
  return true;
}

// The logarithm is taken of what is as near as the worst, or worse. A zero is measured by other rules.
bool NearLines::passNumbers(const char*& at1, const char* end1, const char*& at2, const char* end2) const {
  double x = 0, y = 0;
  if (!takeDecimal(at1, end1, x) || !takeDecimal(at2, end2, y)) return false;
  if (x == 0 || y == 0) return false;
  return std::fabs(x - y) < limit_ * std::min(std::fabs(x), std::fabs(y)) || sharedDigits(x, y) >= worst_;
}
