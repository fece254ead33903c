#include "ztclient/log/EntryTime.h"

#include <algorithm>
#include <charconv>
#include <chrono>

#include "tovinCore/Format.h"
#include "tovinCore/Utf8.h"
#include "ztclient/log/EntryNames.h"

namespace {

constexpr int64_t second = 1000, minute = 60 * second, hour = 60 * minute, day = 24 * hour;
constexpr size_t fewestDigits = 9, mostSeconds = 11, mostDigits = 15;

// Takes pieces off the front of a text; once one is not there, nothing is any more.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  bool ok() const { return ok_; }
  bool atEnd() const { return text_.empty(); }
  bool has(char c) const { return ok_ && !text_.empty() && text_.front() == c; }
  bool takeIf(char c) {
    if (!has(c)) return false;
    text_.remove_prefix(1);
    return true;
  }
  void take(char c) { ok_ = takeIf(c); }

  // So many digits, for a number in a range.
  int number(size_t digits, int least, int most) {
    int value = 0;
    ok_ = ok_ && text_.size() >= digits;
    for (size_t i = 0; ok_ && i < digits; ++i) {
      ok_ = text_[i] >= '0' && text_[i] <= '9';
      value = value * 10 + (text_[i] - '0');
    }
    if (ok_) text_.remove_prefix(digits);
    ok_ = ok_ && least <= value && value <= most;
    return value;
  }

  // Milliseconds out of any number of digits.
  int64_t fraction() {
    int64_t value = 0, unit = second / 10;
    const size_t before = text_.size();
    for (; ok_ && !text_.empty() && text_.front() >= '0' && text_.front() <= '9'; text_.remove_prefix(1)) {
      value += (text_.front() - '0') * unit;
      unit /= 10;
    }
    ok_ = ok_ && text_.size() < before;
    return value;
  }

 private:
  std::string_view text_;
  bool ok_ = true;
};

// date: YYYY-MM-DD or YYYY/MM/DD
int64_t readDate(Reader& in, bool& exists) {
  const int year = in.number(4, 0, 9999);
  const char divider = in.has('/') ? '/' : '-';
  in.take(divider);
  const auto month = static_cast<unsigned>(in.number(2, 1, 12));
  in.take(divider);
  const auto dayOfMonth = static_cast<unsigned>(in.number(2, 1, 31));
  if (!in.ok()) return 0;
  using std::chrono::year_month_day;
  const year_month_day date{std::chrono::year{year}, std::chrono::month{month}, std::chrono::day{dayOfMonth}};
  exists = date.ok();
  return exists ? std::chrono::sys_days(date).time_since_epoch().count() * day : 0;
}

// time: HH:MM[:SS[(.|,)fraction]]
int64_t readTime(Reader& in) {
  int64_t time = in.number(2, 0, 23) * hour;
  in.take(':');
  time += in.number(2, 0, 59) * minute;
  if (!in.takeIf(':')) return time;
  time += in.number(2, 0, 60) * second;
  return in.takeIf('.') || in.takeIf(',') ? time + in.fraction() : time;
}

// zone: Z | (+|-)HH[:]MM
int64_t readZone(Reader& in) {
  if (in.takeIf('Z')) return 0;
  const int64_t sign = in.has('-') ? -1 : 1;
  if (!in.takeIf('-') && !in.takeIf('+')) return 0;
  const int64_t hours = in.number(2, 0, 23);
  in.takeIf(':');
  return sign * (hours * hour + in.number(2, 0, 59) * minute);
}

std::optional<int64_t> parseDigits(std::string_view text) {
  if (text.size() < fewestDigits || text.size() > mostDigits) return std::nullopt;
  int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return text.size() <= mostSeconds ? value * second : value;
}

}  // namespace

std::optional<int64_t> entryTime::parse(std::string_view text) {
  if (!text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; }))
    return parseDigits(text);
  Reader in(text);
  bool exists = false;
  int64_t time = readDate(in, exists);
  if (!in.ok() || !exists) return std::nullopt;
  if (in.atEnd()) return time;
  if (!in.takeIf('T')) in.take(' ');
  time += readTime(in);
  in.takeIf(' ');
  time -= readZone(in);
  return in.ok() && in.atEnd() ? std::optional(time) : std::nullopt;
}

std::string entryTime::text(int64_t milliseconds) {
  const std::chrono::sys_time<std::chrono::milliseconds> point{std::chrono::milliseconds(milliseconds)};
  const auto date = std::chrono::floor<std::chrono::days>(point);
  const std::chrono::year_month_day ymd(date);
  const int64_t rest = (point - date).count();
  std::wstring out = tovin::format(L"%04d-%02d-%02d %02d:%02d:%02d", static_cast<int>(ymd.year()),
                                   static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                                   rest / hour, rest / minute % 60, rest / second % 60);
  if (rest % second != 0) out += tovin::format(L".%03d", rest % second);
  return tovin::wideToUtf8(out);
}

bool entryTime::isName(std::string_view name) {
  const std::string folded = entryNames::folded(name);
  return folded == "time" || folded == "date" || folded == "datetime" || folded == "timestamp";
}
