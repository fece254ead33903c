#include "ztclient/answers/JUnitReport.h"

#include "ztclient/answers/DifferenceText.h"
#include "ztclient/answers/Markup.h"

using markup::escaped;
using Verdict = PairResult::Verdict;

namespace {

std::string messageOf(const PairResult& result) {
  if (!result.reason.empty()) return result.reason;
  return result.verdict == Verdict::different ? differenceText::of(result.sums) : wordOf(result.verdict);
}

}  // namespace

JUnitReport::JUnitReport(std::string_view suite, std::string_view tolerance)
    : suite_(suite), tolerance_(tolerance) {}

void JUnitReport::add(std::string_view name, const PairResult& result) {
  ++tests_;
  cases_ += "    <testcase classname=\"ztclient.diff\" name=\"" + escaped(name) + '"';
  if (result.verdict == Verdict::equal || result.verdict == Verdict::within) {
    cases_ += "/>\n";
    return;
  }
  const bool isError = result.verdict == Verdict::unreadable;
  ++(isError ? errors_ : failures_);
  const std::string element = isError ? "error" : "failure";
  cases_ += ">\n      <" + element + " type=\"" + wordOf(result.verdict) + "\" message=\"" +
            escaped(messageOf(result)) + "\">tolerance: " + escaped(tolerance_) + '\n';
  for (const std::string& line : result.first) cases_ += escaped(line) + '\n';
  if (result.more > 0)
    cases_ += "and " + differenceText::counted(result.more, "more line", "more lines") + '\n';
  cases_ += "</" + element + ">\n    </testcase>\n";
}

std::string JUnitReport::text() const {
  const std::string counts = "tests=\"" + std::to_string(tests_) + "\" failures=\"" +
                             std::to_string(failures_) + "\" errors=\"" + std::to_string(errors_) + '"';
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites " + counts + ">\n  <testsuite name=\"" +
         escaped(suite_) + "\" " + counts + ">\n" + cases_ + "  </testsuite>\n</testsuites>\n";
}
