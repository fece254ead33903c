#pragma once

#include <cstdint>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

/// Which entries of a log are wanted: those for which every condition holds. A condition holds if any pair of
/// its name has the value.
///
///     EntryFilter filter;
///     filter.add("state=failed");
///     filter.begin();
///     filter.see("state", "failed");
///     filter.holds();  // true
///
/// - Shape: "NAME=VALUE" or "NAME~REGEX", which is one of ECMAScript and is looked for anywhere in the value.
///   Values are UTF-8; a character above U+FFFF counts as two.
/// - Errors: Misuse for what is no condition, or an expression that is too large.
/// - Time: linear in the value for each condition, whatever the expression.
class EntryFilter {
 public:
  void add(const std::string& condition);
  /// In milliseconds since 1970; only entries that say a time then.
  void since(int64_t time) { since_ = time; }
  void until(int64_t time) { until_ = time; }

  bool isEmpty() const { return conditions_.empty() && !since_ && !until_; }
  bool asksForTimes() const { return since_ || until_; }
  /// Whether an entry said a time so far.
  bool sawTime() const { return sawTime_; }

  /// For each entry: begin(), see() for its pairs, holds().
  void begin();
  void see(std::string_view name, std::string_view value);
  bool holds() const;

 private:
  struct Condition {
    std::string name;
    std::string value;
    std::optional<std::wregex> expression;
    bool holds = false;
  };

  static bool matches(const Condition& condition, std::string_view value);

  std::vector<Condition> conditions_;
  std::optional<int64_t> since_, until_, time_;
  bool sawTime_ = false;
};
