#include "tests/ztclient/Command.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string_view>

namespace testsupport {
namespace {

constexpr std::string_view gap = "…";

// Whether the text is the pattern, piece by piece between its gaps.
bool fits(std::string_view text, std::string_view pattern) {
  const size_t first = pattern.find(gap);
  if (first == pattern.npos) return text == pattern;
  if (!text.starts_with(pattern.substr(0, first))) return false;
  text.remove_prefix(first);
  for (pattern.remove_prefix(first + gap.size());;) {
    const size_t next = pattern.find(gap);
    if (next == pattern.npos) return text.ends_with(pattern);
    const size_t at = text.find(pattern.substr(0, next));
    if (at == text.npos) return false;
    text.remove_prefix(at + next);
    pattern.remove_prefix(next + gap.size());
  }
}

}  // namespace

Outcome Shell::run(const std::string& line) const {
  const std::string script = "ztclient() { '" ZTB_COMMAND "' \"$@\"; }\ncd '" + folder_.path() + "/files'\n";
  folder_.write("files/.empty", "");
  folder_.write("script", script + line + "\n");
  const std::string out = folder_.path("out"), err = folder_.path("err");
  const int status = std::system(
      ("bash '" + folder_.path("script") + "' >'" + out + "' 2>'" + err + "' </dev/null").c_str());
  return {WEXITSTATUS(status), folder_.read("out"), folder_.read("err")};
}

void Shell::check(const std::vector<Case>& cases) const {
  for (const Case& row : cases) {
    const Outcome outcome = run(row.line);
    EXPECT_EQ(outcome.status, row.status) << row.line << '\n' << outcome.err;
    EXPECT_TRUE(fits(outcome.out, row.out)) << row.line << "\nprints\n"
                                            << outcome.out << "and not\n"
                                            << row.out;
    EXPECT_TRUE(fits(outcome.err, row.err)) << row.line << "\nsays\n"
                                            << outcome.err << "and not\n"
                                            << row.err;
  }
}

std::string serviceFile() {
  return ZTB_TEST_DATA
      "/wsdl/documents/apache+axis-axis2-java-core/modules/xmlbeans/test-resources/InteropTest.wsdl";
}

}  // namespace testsupport
