#include "ztclient/log/EntryFilter.h"

#include "tovinCore/Utf8.h"
#include "ztclient/arguments/Misuse.h"
#include "ztclient/log/EntryNames.h"
#include "ztclient/log/EntryTime.h"

namespace {

constexpr size_t longestExpression = 1000;
// As what repetitions in braces come to when they are multiplied.
constexpr uint64_t mostRepetitions = 1000;

// The library's usual way goes as deep as the value is long; the one that it has beside it does not, and
// takes no time that grows with all the ways there are.
constexpr auto syntax = std::regex_constants::ECMAScript
#ifdef __GLIBCXX__
                        | std::regex_constants::__polynomial
#endif
    ;

bool isTooLarge(std::string_view expression) {
  uint64_t product = 1;
  for (size_t at = expression.find('{'); at != expression.npos; at = expression.find('{', at + 1)) {
    uint64_t number = 0, most = 1;
    for (size_t i = at + 1; i < expression.size() && expression[i] != '}'; ++i) {
      const bool isDigit = expression[i] >= '0' && expression[i] <= '9';
      number =
          isDigit ? std::min<uint64_t>(number * 10 + static_cast<uint64_t>(expression[i] - '0'), 1 << 20) : 0;
      most = std::max(most, number);
    }
    product *= most;
    if (product > mostRepetitions) return true;
  }
  return expression.size() > longestExpression;
}

std::wregex compiled(const std::string& expression) {
  if (isTooLarge(expression)) throw Misuse("--where: the expression is too large");
  const std::wstring wide = tovin::utf8ToWide(expression);
  try {
    const std::wregex alone(wide, syntax);  // by itself, lest its brackets meet those around it
    return std::wregex(L"[\\s\\S]*(?:" + wide + L")[\\s\\S]*", syntax);
  } catch (const std::regex_error& e) {
    throw Misuse("--where: \"" + expression + "\" is no expression: " + e.what());
  }
}

}  // namespace

void EntryFilter::add(const std::string& condition) {
  const size_t mark = condition.find_first_of("=~");
  if (mark == condition.npos || mark == 0)
    throw Misuse("--where: takes NAME=VALUE or NAME~REGEX, not \"" + condition + '"');
  Condition added{entryNames::folded(condition.substr(0, mark)), condition.substr(mark + 1), {}};
  if (condition[mark] == '~') added.expression = compiled(added.value);
  conditions_.push_back(std::move(added));
}

void EntryFilter::begin() {
  for (Condition& condition : conditions_) condition.holds = false;
  time_.reset();
}

void EntryFilter::see(std::string_view name, std::string_view value) {
  if (isEmpty()) return;
  if (asksForTimes() && !time_ && entryTime::isName(name)) time_ = entryTime::parse(value);
  sawTime_ = sawTime_ || time_;
  if (conditions_.empty()) return;
  const std::string folded = entryNames::folded(name);
  for (Condition& condition : conditions_) {
    if (!condition.holds && condition.name == folded) condition.holds = matches(condition, value);
  }
}

bool EntryFilter::matches(const Condition& condition, std::string_view value) {
  if (!condition.expression) return condition.value == value;
  // A search would begin anew at each character.
  return std::regex_match(tovin::utf8ToWide(value), *condition.expression);
}

bool EntryFilter::holds() const {
  for (const Condition& condition : conditions_) {
    if (!condition.holds) return false;
  }
  if (!asksForTimes()) return true;
  return time_ && (!since_ || *time_ >= *since_) && (!until_ || *time_ <= *until_);
}
