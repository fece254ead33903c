#include "ztservice/call/Lexical.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <unordered_map>

namespace ztservice::call::lexical {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// Takes texts apart from the front.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}
  bool isOver() const { return text_.empty(); }
  bool take(char c) {
    if (text_.empty() || text_.front() != c) return false;
    text_.remove_prefix(1);
    return true;
  }
  bool takeSign() { return take('-') || take('+'); }
  std::string_view digits() {
    size_t count = 0;
    while (count < text_.size() && isDigit(text_[count])) ++count;
    const std::string_view taken = text_.substr(0, count);
    text_.remove_prefix(count);
    return taken;
  }
  // Two digits within limits.
  bool two(int least, int most, int& value) {
    if (text_.size() < 2 || !isDigit(text_[0]) || !isDigit(text_[1])) return false;
    value = (text_[0] - '0') * 10 + (text_[1] - '0');
    text_.remove_prefix(2);
    return value >= least && value <= most;
  }

 private:
  std::string_view text_;
};

struct Decimal {
  bool isNegative = false;
  std::string_view whole;
  std::string_view fraction;

  bool isZero() const { return whole.empty() && fraction.empty(); }
};

std::optional<Decimal> decimalOf(std::string_view text) {
  Scanner scanner(text);
  Decimal out;
  out.isNegative = scanner.take('-');
  if (!out.isNegative) scanner.take('+');
  out.whole = scanner.digits();
  const bool hasPoint = scanner.take('.');
  if (hasPoint) out.fraction = scanner.digits();
  if (!scanner.isOver() || (out.whole.empty() && out.fraction.empty())) return {};
  out.whole.remove_prefix(std::min(out.whole.find_first_not_of('0'), out.whole.size()));
  out.fraction = out.fraction.substr(0, out.fraction.find_last_not_of('0') + 1);
  if (out.isZero()) out.isNegative = false;
  return out;
}

std::strong_ordering compareSizes(const Decimal& left, const Decimal& right) {
  if (left.whole.size() != right.whole.size()) return left.whole.size() <=> right.whole.size();
  if (left.whole != right.whole) return left.whole <=> right.whole;
  return left.fraction <=> right.fraction;
}

std::strong_ordering compareDecimals(const Decimal& left, const Decimal& right) {
  if (left.isNegative != right.isNegative)
    return left.isNegative ? std::strong_ordering::less : std::strong_ordering::greater;
  return left.isNegative ? compareSizes(right, left) : compareSizes(left, right);
}

bool isInteger(std::string_view text) {
  Scanner scanner(text);
  scanner.takeSign();
  return !scanner.digits().empty() && scanner.isOver();
}

bool isReal(std::string_view text) {
  if (text == "INF" || text == "-INF" || text == "NaN") return true;
  Scanner scanner(text);
  scanner.takeSign();
  const bool hasWhole = !scanner.digits().empty();
  const bool hasFraction = scanner.take('.') && !scanner.digits().empty();
  if (!hasWhole && !hasFraction) return false;
  if (scanner.take('e') || scanner.take('E')) {
    scanner.takeSign();
    if (scanner.digits().empty()) return false;
  }
  return scanner.isOver();
}

double realOf(std::string_view text) {
  if (text == "INF") return HUGE_VAL;
  if (text == "-INF") return -HUGE_VAL;
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = std::nan("");
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc::result_out_of_range) {
    const bool isSmall = text.find("e-") != text.npos || text.find("E-") != text.npos;
    value = isSmall ? 0.0 : HUGE_VAL;
    if (text.starts_with('-')) value = -value;
  }
  return value;
}

// A moment or a part of one. Years of any length are kept as far as they fit.
struct Moment {
  int64_t year = 1972;  // a leap year, for the types without
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
  std::string_view fraction;
  std::optional<int> zone;
};

int daysIn(int64_t year, int month) {
  static constexpr std::array<int, 12> days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return month == 2 && isLeap ? 29 : days[static_cast<size_t>(month - 1)];
}

bool takeYear(Scanner& scanner, Moment& out) {
  const bool isNegative = scanner.take('-');
  const std::string_view digits = scanner.digits();
  if (digits.size() < 4 || (digits.size() > 4 && digits.front() == '0') || digits == "0000") return false;
  if (std::from_chars(digits.data(), digits.data() + digits.size(), out.year).ec != std::errc())
    out.year = INT64_MAX / 2;
  if (isNegative) out.year = -out.year;
  return true;
}

bool takeTime(Scanner& scanner, Moment& out) {
  if (!scanner.two(0, 24, out.hour) || !scanner.take(':') || !scanner.two(0, 59, out.minute) ||
      !scanner.take(':') || !scanner.two(0, 59, out.second))
    return false;
  if (scanner.take('.')) {
    out.fraction = scanner.digits();
    if (out.fraction.empty()) return false;
    out.fraction = out.fraction.substr(0, out.fraction.find_last_not_of('0') + 1);
  }
  return out.hour < 24 || (out.minute == 0 && out.second == 0 && out.fraction.empty());
}

bool takeZone(Scanner& scanner, Moment& out) {
  if (scanner.isOver()) return true;
  if (scanner.take('Z')) {
    out.zone = 0;
    return scanner.isOver();
  }
  const bool isWest = scanner.take('-');
  if (!isWest && !scanner.take('+')) return false;
  int hours = 0, minutes = 0;
  if (!scanner.two(0, 14, hours) || !scanner.take(':') || !scanner.two(0, 59, minutes)) return false;
  if (hours == 14 && minutes != 0) return false;
  out.zone = (isWest ? -1 : 1) * (hours * 60 + minutes);
  return scanner.isOver();
}

std::optional<Moment> momentOf(std::string_view primitive, std::string_view text) {
  Scanner scanner(text);
  Moment out;
  const bool hasYear =
      primitive == "dateTime" || primitive == "date" || primitive == "gYear" || primitive == "gYearMonth";
  bool isFine = true;
  if (hasYear) isFine = takeYear(scanner, out);
  const auto takeMonth = [&] { return scanner.two(1, 12, out.month); };
  const auto takeDay = [&] { return scanner.two(1, 31, out.day) && out.day <= daysIn(out.year, out.month); };
  if (primitive == "dateTime" || primitive == "date") {
    isFine = isFine && scanner.take('-') && takeMonth() && scanner.take('-') && takeDay();
    if (primitive == "dateTime") isFine = isFine && scanner.take('T') && takeTime(scanner, out);
  } else if (primitive == "time") {
    isFine = takeTime(scanner, out);
  } else if (primitive == "gYearMonth") {
    isFine = isFine && scanner.take('-') && takeMonth();
  } else if (primitive == "gMonthDay") {
    isFine = scanner.take('-') && scanner.take('-') && takeMonth() && scanner.take('-') && takeDay();
  } else if (primitive == "gMonth") {
    isFine = scanner.take('-') && scanner.take('-') && takeMonth();
  } else if (primitive == "gDay") {
    isFine = scanner.take('-') && scanner.take('-') && scanner.take('-') && takeDay();
  }
  if (!isFine || !takeZone(scanner, out)) return {};
  return out;
}

// Minutes since the year 0, by the proleptic calendar.
int64_t minutesOf(const Moment& moment) {
  const int64_t year = moment.year - (moment.month <= 2);
  const int64_t era = (year >= 0 ? year : year - 399) / 400, inEra = year - era * 400;
  const int64_t ofYear = (153 * (moment.month + (moment.month > 2 ? -3 : 9)) + 2) / 5 + moment.day - 1;
  const int64_t days = era * 146097 + inEra * 365 + inEra / 4 - inEra / 100 + ofYear;
  return (days * 24 + moment.hour) * 60 + moment.minute - moment.zone.value_or(0);
}

std::partial_ordering compareMoments(const Moment& left, const Moment& right) {
  constexpr int64_t widest = 14 * 60;
  constexpr int64_t mostYear = 10'000'000'000;
  if (std::abs(left.year) > mostYear || std::abs(right.year) > mostYear)
    return left.year == right.year ? std::partial_ordering::unordered : left.year <=> right.year;
  const int64_t one = minutesOf(left), other = minutesOf(right);
  if (left.zone.has_value() != right.zone.has_value()) {
    if (std::abs(one - other) <= widest) return std::partial_ordering::unordered;
    return one <=> other;
  }
  if (one != other) return one <=> other;
  if (left.second != right.second) return left.second <=> right.second;
  return left.fraction <=> right.fraction;
}

struct Duration {
  double months = 0;
  double seconds = 0;
};

std::optional<Duration> durationOf(std::string_view text) {
  Scanner scanner(text);
  const bool isNegative = scanner.take('-');
  if (!scanner.take('P')) return {};
  Duration out;
  bool inTime = false, hasAny = false;
  std::string_view left = "YMDTHMS";
  while (!scanner.isOver()) {
    if (scanner.take('T')) {
      if (inTime) return {};
      inTime = true;
      hasAny = false;
      left = "HMS";
      continue;
    }
    std::string number(scanner.digits());
    if (number.empty()) return {};
    const bool hasPoint = scanner.take('.');
    if (hasPoint) {
      const std::string_view fraction = scanner.digits();
      if (fraction.empty()) return {};
      number += '.' + std::string(fraction);
    }
    const std::string_view designators = inTime ? left : left.substr(0, left.find('T'));
    size_t at = 0;
    while (at < designators.size() && !scanner.take(designators[at])) ++at;
    if (at == designators.size() || (hasPoint && designators[at] != 'S')) return {};
    const char unit = designators[at];
    left.remove_prefix(at + 1);
    const double value = realOf(number);
    if (!inTime && unit != 'D')
      out.months += unit == 'Y' ? 12 * value : value;
    else
      out.seconds += value * (unit == 'D' ? 86400 : unit == 'H' ? 3600 : unit == 'M' ? 60 : 1);
    hasAny = true;
  }
  if (!hasAny) return {};
  if (isNegative) out = {-out.months, -out.seconds};
  return out;
}

std::partial_ordering compareDurations(const Duration& left, const Duration& right) {
  const auto months = left.months <=> right.months, seconds = left.seconds <=> right.seconds;
  if (months == seconds || seconds == 0) return months;
  return months == 0 ? seconds : std::partial_ordering::unordered;
}

std::optional<size_t> base64Length(std::string_view text) {
  size_t letters = 0, pads = 0;
  for (const char c : text) {
    if (c == ' ') continue;
    const bool isLetter =
        isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '+' || c == '/';
    if (c == '=' ? ++pads > 2 : !isLetter || pads > 0) return {};
    letters += c != '=';
  }
  if ((letters + pads) % 4 != 0) return {};
  return letters * 3 / 4;
}

bool isHex(std::string_view text) {
  const auto isHexDigit = [](char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
  };
  return text.size() % 2 == 0 && std::all_of(text.begin(), text.end(), isHexDigit);
}

bool isName(std::string_view text, bool mayStartAnyhow, bool mayHaveColons) {
  if (text.empty()) return false;
  for (size_t at = 0; at < text.size();) {
    const bool isFirst = at == 0;
    const uint32_t c = nextCharacter(text, at);
    if (c == ':' && !mayHaveColons) return false;
    if (isFirst && !mayStartAnyhow ? !isNameStart(c) : !isNameCharacter(c)) return false;
  }
  return true;
}

bool isQualifiedName(std::string_view text) {
  const size_t colon = text.find(':');
  if (colon == text.npos) return isName(text, false, false);
  return isName(text.substr(0, colon), false, false) && isName(text.substr(colon + 1), false, false);
}

// [a-zA-Z]{1,8}(-[a-zA-Z0-9]{1,8})*
bool isLanguage(std::string_view text) {
  for (bool isFirst = true;; isFirst = false) {
    const std::string_view part = text.substr(0, text.find('-'));
    const auto isAllowed = [&](char c) {
      return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (!isFirst && isDigit(c));
    };
    if (part.empty() || part.size() > 8 || !std::all_of(part.begin(), part.end(), isAllowed)) return false;
    if (part.size() == text.size()) return true;
    text.remove_prefix(part.size() + 1);
  }
}

const std::unordered_map<std::string_view, Range> ranges = {
    {"integer", {}},
    {"long", {"-9223372036854775808", "9223372036854775807"}},
    {"int", {"-2147483648", "2147483647"}},
    {"short", {"-32768", "32767"}},
    {"byte", {"-128", "127"}},
    {"nonNegativeInteger", {"0", {}}},
    {"positiveInteger", {"1", {}}},
    {"nonPositiveInteger", {{}, "0"}},
    {"negativeInteger", {{}, "-1"}},
    {"unsignedLong", {"0", "18446744073709551615"}},
    {"unsignedInt", {"0", "4294967295"}},
    {"unsignedShort", {"0", "65535"}},
    {"unsignedByte", {"0", "255"}},
};

bool isInRange(const Range& range, std::string_view text) {
  return (range.least.empty() || compare("decimal", text, range.least) >= 0) &&
         (range.most.empty() || compare("decimal", text, range.most) <= 0);
}

}  // namespace

uint32_t nextCharacter(std::string_view text, size_t& at) {
  const auto first = static_cast<unsigned char>(text[at]);
  const size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  static constexpr std::array<unsigned char, 5> masks = {0, 0x7F, 0x1F, 0x0F, 0x07};
  if (first >= 0x80 && (first < 0xC2 || first > 0xF4 || at + length > text.size())) {
    ++at;
    return 0xFFFD;
  }
  uint32_t c = first & masks[length];
  for (size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(text[at + i]);
    if ((next & 0xC0) != 0x80) {
      ++at;
      return 0xFFFD;
    }
    c = c << 6 | (next & 0x3F);
  }
  at += length;
  return c;
}

// NameStartChar and NameChar of XML 1.0, fifth edition.
bool isNameStart(uint32_t c) {
  if (c < 0x80) return (c | 0x20) - 'a' < 26u || c == '_' || c == ':';
  return (c >= 0xC0 && c != 0xD7 && c != 0xF7 && c <= 0x2FF) || (c >= 0x370 && c <= 0x1FFF && c != 0x37E) ||
         c == 0x200C || c == 0x200D || (c >= 0x2070 && c <= 0x218F) || (c >= 0x2C00 && c <= 0x2FEF) ||
         (c >= 0x3001 && c <= 0xD7FF) || (c >= 0xF900 && c <= 0xFDCF) || (c >= 0xFDF0 && c <= 0xFFFC) ||
         (c >= 0x10000 && c <= 0xEFFFF);
}

bool isNameCharacter(uint32_t c) {
  return isNameStart(c) || c == '-' || c == '.' || (c >= '0' && c <= '9') || c == 0xB7 ||
         (c >= 0x300 && c <= 0x36F) || c == 0x203F || c == 0x2040;
}

std::string_view whiteSpaceOf(std::string_view type, std::string_view primitive) {
  if (type == "normalizedString" || type == "CDATA") return "replace";
  if (type == "string" || type == "anySimpleType" || type == "anyType") return "preserve";
  if (primitive.empty()) return "preserve";
  return "collapse";
}

std::string normalized(std::string_view text, std::string_view whiteSpace) {
  std::string out;
  const bool collapses = whiteSpace == "collapse";
  if (!collapses && whiteSpace != "replace") return std::string(text);
  // Most texts have none.
  if (std::none_of(text.begin(), text.end(), isSpace)) return std::string(text);
  for (const char c : text) {
    if (!isSpace(c))
      out += c;
    else if (!collapses || (!out.empty() && out.back() != ' '))
      out += ' ';
  }
  if (collapses && out.ends_with(' ')) out.pop_back();
  return out;
}

Range rangeOf(std::string_view type) {
  const auto found = ranges.find(type);
  return found == ranges.end() ? Range{} : found->second;
}

bool isOf(std::string_view type, std::string_view primitive, std::string_view text) {
  if (primitive == "decimal") {
    if (!ranges.contains(type)) return decimalOf(text).has_value();
    return isInteger(text) && isInRange(rangeOf(type), text);
  }
  if (primitive == "float" || primitive == "double") return isReal(text);
  if (primitive == "boolean") return text == "true" || text == "false" || text == "1" || text == "0";
  if (primitive == "duration") return durationOf(text).has_value();
  if (primitive == "hexBinary") return isHex(text);
  if (primitive == "base64Binary") return base64Length(text).has_value();
  if (primitive == "QName" || primitive == "NOTATION") return isQualifiedName(text);
  if (primitive == "string") {
    if (type == "language") return isLanguage(text);
    if (type == "NMTOKEN") return isName(text, true, true);
    if (type == "Name") return isName(text, false, true);
    if (type == "NCName" || type == "ID" || type == "IDREF" || type == "ENTITY")
      return isName(text, false, false);
    return true;
  }
  if (primitive == "anyURI" || primitive == "anySimpleType" || primitive.empty()) return true;
  return momentOf(primitive, text).has_value();
}

std::string_view exampleOf(std::string_view type, std::string_view primitive) {
  static const std::map<std::string_view, std::string_view> examples = {
      {"ENTITY", "name"},
      {"ID", "name"},
      {"IDREF", "name"},
      {"NCName", "name"},
      {"NMTOKEN", "name"},
      {"NOTATION", "name"},
      {"Name", "name"},
      {"QName", "name"},
      {"anyURI", "urn:example"},
      {"base64Binary", "AAAA"},
      {"boolean", "true"},
      {"date", "2026-01-01"},
      {"dateTime", "2026-01-01T00:00:00Z"},
      {"decimal", "1"},
      {"double", "1.5"},
      {"duration", "P1D"},
      {"float", "1.5"},
      {"gDay", "---01"},
      {"gMonth", "--01"},
      {"gMonthDay", "--01-01"},
      {"gYear", "2026"},
      {"gYearMonth", "2026-01"},
      {"hexBinary", "00"},
      {"language", "en"},
      {"negativeInteger", "-1"},
      {"nonPositiveInteger", "-1"},
      {"time", "00:00:00"},
  };
  auto found = examples.find(type);
  if (found == examples.end()) found = examples.find(primitive);
  return found == examples.end() ? "text" : found->second;
}

bool isJsonNumber(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  const auto digits = [&text] {
    const size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
    text.remove_prefix(count);
    return count;
  };
  const bool beginsWithZero = text.starts_with('0');
  const size_t whole = digits();
  if (whole == 0 || (beginsWithZero && whole > 1)) return false;
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    if (digits() == 0) return false;
  }
  if (text.starts_with('e') || text.starts_with('E')) {
    text.remove_prefix(1);
    if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
    if (digits() == 0) return false;
  }
  return text.empty();
}

std::partial_ordering compare(std::string_view primitive, std::string_view left, std::string_view right) {
  constexpr auto unordered = std::partial_ordering::unordered;
  if (primitive == "decimal") {
    const auto one = decimalOf(left), other = decimalOf(right);
    return one && other ? compareDecimals(*one, *other) : unordered;
  }
  if (primitive == "float" || primitive == "double") return realOf(left) <=> realOf(right);
  if (primitive == "duration") {
    const auto one = durationOf(left), other = durationOf(right);
    return one && other ? compareDurations(*one, *other) : unordered;
  }
  if (primitive == "dateTime" || primitive == "date" || primitive == "time" || primitive.starts_with('g')) {
    const auto one = momentOf(primitive, left), other = momentOf(primitive, right);
    return one && other ? compareMoments(*one, *other) : unordered;
  }
  if (primitive == "boolean") {
    const auto isTrue = [](std::string_view text) { return text == "true" || text == "1"; };
    return isTrue(left) == isTrue(right) ? std::partial_ordering::equivalent : unordered;
  }
  return left == right ? std::partial_ordering::equivalent : unordered;
}

size_t totalDigits(std::string_view text) {
  const auto decimal = decimalOf(text);
  if (!decimal) return 0;
  return std::max<size_t>(1, decimal->whole.size() + decimal->fraction.size());
}

size_t fractionDigits(std::string_view text) {
  const auto decimal = decimalOf(text);
  return decimal ? decimal->fraction.size() : 0;
}

size_t lengthOf(std::string_view primitive, std::string_view text) {
  if (primitive == "hexBinary") return text.size() / 2;
  if (primitive == "base64Binary") return base64Length(text).value_or(0);
  size_t count = 0;
  for (size_t at = 0; at < text.size(); ++count) nextCharacter(text, at);
  return count;
}

}  // namespace ztservice::call::lexical
