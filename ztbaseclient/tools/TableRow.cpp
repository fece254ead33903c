#include "ztbaseclient/tools/TableRow.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "tovinCore/Exception.h"
#include "tovinCore/Numbers.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/tools/CDiffFiles.h"
#include "ztbaseclient/tools/NearLines.h"

namespace differences {
namespace {

// The longest field that is looked at as a number.
constexpr size_t longestNumber = 1023;
// No double has more.
constexpr int mostDigits = 17;

// How many bytes of a delimiter of CDiffFiles stand there; a no-break space has two.
size_t delimiterAt(std::string_view text, size_t at) {
  constexpr std::string_view delimiters(" \r\n\t\"<=>,;");
  if (delimiters.find(text[at]) != std::string_view::npos) return 1;
  return text[at] == '\xC2' && at + 1 < text.size() && text[at + 1] == '\xA0' ? 2 : 0;
}

void splitAtUsual(Row& row) {
  const std::string_view text = row.text;
  for (size_t at = 0; at < text.size();) {
    if (const size_t length = delimiterAt(text, at)) {
      at += length;
      continue;
    }
    const size_t begin = at;
    while (at < text.size() && delimiterAt(text, at) == 0) ++at;
    row.fields.push_back({begin, at});
  }
}

// Behind a field in quotation marks, in which two of them stand for one.
size_t endOfQuoted(std::string_view text, size_t at) {
  for (++at; at < text.size(); ++at) {
    if (text[at] != '"') continue;
    if (at + 1 == text.size() || text[at + 1] != '"') return at + 1;
    ++at;
  }
  return at;
}

void splitAt(Row& row, char delimiter) {
  const std::string_view text = row.text;
  for (size_t at = 0;;) {
    const size_t quoted = at < text.size() && text[at] == '"' ? endOfQuoted(text, at) : at;
    const size_t end = std::min(text.find(delimiter, quoted), text.size());
    row.fields.push_back({at, end});
    if (end == text.size()) return;
    at = end + 1;
  }
}

bool readNumber(std::string_view text, double& value) {
  if (text.empty() || text.size() > longestNumber || tovin::asciiPrefix(text) != text.size()) return false;
  std::array<wchar_t, longestNumber> wide;
  std::copy(text.begin(), text.end(), wide.begin());
  return tovin::util::tryStringToDouble({wide.data(), text.size()}, value);
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, folded, folded);
}

double relativeOf(double absolute, double x, double y) {
  if (absolute == 0) return 0;
  return absolute / std::min(std::fabs(x), std::fabs(y));  // infinite beside a zero
}

int digitsOf(double measure) {
  return std::isnan(measure) ? 0 : static_cast<int>(std::clamp(measure, 0.0, double{mostDigits}));
}

}  // namespace

void split(Row& row, char delimiter) {
  row.fields.clear();
  delimiter == 0 ? splitAtUsual(row) : splitAt(row, delimiter);
}

bool isNumber(std::string_view text) {
  double value = 0;
  return readNumber(text, value);
}

RowComparison::RowComparison(const Options& options, std::vector<std::string> columns)
    : options_(options), tolerance_(0), columns_(std::move(columns)) {
  if (options.tolerance)
    tolerance_ = *options.tolerance;
  else if (!options.absolute && !options.relative)
    tolerance_ = CDiffFiles::DefaultTolerance;
  for (const std::string& each : options.ignoredColumns) {
    const size_t column = columnOf(each);
    if (column >= ignored_.size()) ignored_.resize(column + 1);
    ignored_[column] = true;
  }
}

size_t RowComparison::columnOf(const std::string& name) const {
  constexpr size_t mostColumns = 1'000'000;
  const auto place = std::ranges::find(columns_, name);
  if (place != columns_.end()) return static_cast<size_t>(place - columns_.begin());
  size_t number = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
  if (error != std::errc() || end != name.data() + name.size() || number == 0 || number > mostColumns)
    throw tovin::Exception(L"There is no column %ls", tovin::utf8ToWide(name).c_str());
  return number - 1;
}

bool RowComparison::sameText(std::string_view a, std::string_view b) const {
  return a == b || (options_.ignoreCase && equalIgnoringCase(a, b));
}

// A carriage return inside a line ends what makes lines equal.
bool RowComparison::sameLine(const Row& a, const Row& b) const {
  const std::string_view textA = a.text, textB = b.text;
  return sameText(textA.substr(0, textA.find('\r')), textB.substr(0, textB.find('\r')));
}

bool RowComparison::isWithin(const Field& field, double measure, bool decimal) const {
  if (options_.absolute && field.absolute <= *options_.absolute) return true;
  if (options_.relative && field.relative <= *options_.relative) return true;
  return tolerance_ > 0 && decimal && measure >= tolerance_;
}

// Without a point numbers must be written alike, unless their distance is what counts; without a tolerance
// all must.
Verdict RowComparison::judge(std::string_view a, std::string_view b, Field& field) const {
  if (sameText(a, b)) return Verdict::equal;
  field.text1 = a;
  field.text2 = b;
  double x = 0, y = 0;
  if (!readNumber(a, x) || !readNumber(b, y)) return Verdict::different;
  field.kind = Field::Kind::Number;
  field.absolute = x == y ? 0 : std::fabs(x - y);
  field.relative = relativeOf(field.absolute, x, y);
  const bool decimal = a.find('.') != a.npos || b.find('.') != b.npos;
  const double measure = sharedDigits(x, y);
  field.digits = x == y ? mostDigits : digitsOf(measure);
  field.within = isWithin(field, measure, decimal);
  if (!field.within) return Verdict::different;
  return x == y ? Verdict::equal : Verdict::within;
}

// `take` says whether to go on.
template <class Take>
void RowComparison::eachDifference(const Row& a, const Row& b, Take&& take) {
  if (sameLine(a, b)) return;
  const auto offer = [&](size_t i, size_t j) {
    Field field;
    const Verdict verdict = judge(a.field(i), b.field(j), field);
    field.field1 = static_cast<int64_t>(i + 1);
    field.field2 = static_cast<int64_t>(j + 1);
    field.at1 = a.fields[i].begin;
    field.at2 = b.fields[j].begin;
    return std::pair(verdict, verdict == Verdict::equal || take(field));
  };
  // What stands before field i, or behind all.
  const auto offerGap = [&](size_t i) {
    const std::string_view gapA = a.gap(i), gapB = b.gap(i);
    if (gapA == gapB) return true;
    Field field;
    field.field1 = field.field2 = static_cast<int64_t>(std::clamp<size_t>(i + 1, 1, a.fields.size() + 1));
    field.text1 = gapA;
    field.text2 = gapB;
    field.at1 = a.gapAt(i);
    field.at2 = b.gapAt(i);
    return take(field);
  };
  const size_t countA = a.fields.size(), countB = b.fields.size();
  if (countA == countB) {
    for (size_t i = 0; i < countA; ++i) {
      if (isIgnored(i)) continue;
      const auto [verdict, goesOn] = offer(i, i);
      if (!goesOn || (verdict != Verdict::different && !offerGap(i))) return;
    }
    if (countA == 0 || !isIgnored(countA - 1)) offerGap(countA);
    return;
  }
  size_t front = 0, back = 0;
  const size_t fewer = std::min(countA, countB);
  while (front < fewer && sameText(a.field(front), b.field(front))) ++front;
  while (back < fewer - front && sameText(a.field(countA - 1 - back), b.field(countB - 1 - back))) ++back;
  for (size_t i = front; i < fewer - back; ++i) {
    if (!isIgnored(i) && !offer(i, i).second) return;
  }
  const Row& longer = countA > countB ? a : b;
  for (size_t i = fewer - back; i < longer.fields.size() - back; ++i) {
    if (isIgnored(i)) continue;
    Field field;
    (&longer == &a ? field.field1 : field.field2) = static_cast<int64_t>(i + 1);
    (&longer == &a ? field.text1 : field.text2) = longer.field(i);
    (&longer == &a ? field.at1 : field.at2) = longer.fields[i].begin;
    (&longer == &a ? field.at2 : field.at1) = (&longer == &a ? b : a).gapAt(fewer - back);
    if (!take(field)) return;
  }
}

bool RowComparison::matches(const Row& a, const Row& b) {
  bool match = true;
  eachDifference(a, b, [&](const Field& field) { return match = field.within; });
  return match;
}

const std::vector<Field>& RowComparison::fieldsOf(const Row& a, const Row& b) {
  found_.clear();
  eachDifference(a, b, [&](Field& field) {
    name(field);
    found_.push_back(field);
    return true;
  });
  return found_;
}

void RowComparison::name(Field& field) const {
  const auto column = static_cast<size_t>((field.field1 ? field.field1 : field.field2) - 1);
  if (column < columns_.size()) field.column = columns_[column];
}

double RowComparison::distance(const Row& a, const Row& b) {
  constexpr double within = 0.01, changed = 0.2, otherCount = 0.4, foreign = 9;
  if (sameLine(a, b)) return 0;
  size_t hard = 0;
  eachDifference(a, b, [&](const Field& field) {
    hard += !field.within;
    return true;
  });
  const double most = static_cast<double>(std::max(a.fields.size(), b.fields.size()));
  if (a.fields.size() == b.fields.size())
    return hard == 0 ? within : changed + (1 - changed) * static_cast<double>(hard) / (most + 1);
  const double share = static_cast<double>(hard) / most;
  return share < 1 ? otherCount + (1 - otherCount) * share : foreign;
}

}  // namespace differences
