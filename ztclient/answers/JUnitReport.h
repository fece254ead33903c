#pragma once

#include <string>
#include <string_view>

#include "ztclient/comparison/PairComparison.h"

/// A report of comparisons as CI servers read it: JUnit's XML, a test case a pair. Different and missing
/// files are failures with the tolerance and the first differences in their text, unreadable ones errors.
///
/// - Shape: UTF-8; what XML cannot hold, and bytes that are no UTF-8, become U+FFFD.
class JUnitReport {
 public:
  /// \param suite what is compared.
  JUnitReport(std::string_view suite, std::string_view tolerance);

  void add(std::string_view name, const PairResult& result);
  /// The whole document, with what was added so far.
  std::string text() const;

 private:
  std::string suite_, tolerance_, cases_;
  size_t tests_ = 0, failures_ = 0, errors_ = 0;
};
