#include <fstream>
#include <iterator>

#include "tests/ztbaseclient/tools/DiffOutcome.h"

namespace {

using namespace testsupport;
using namespace std::string_literals;

class DiffReport : public DiffOutcome {};

std::string golden(const std::string& name) {
  std::ifstream in(std::string(ZTB_TEST_DATA "/diff/") + name + ".report", std::ios::binary);
  return "error: " + std::string(std::istreambuf_iterator<char>(in), {});
}

TEST_F(DiffReport, ShowsThePlace) {
  const std::string a33(33, 'a'), b31(31, 'b'), b80(80, 'b'), ones(1030, '1');
  const std::tuple<const char*, std::string, std::string, int> cases[] = {
      {"tolerance-exceeded", "x = 1.00001\n", "x = 1.00003\n", 5},
      {"tolerance-exceeded", "x = 1.00001", utf16(L"x = 1.00003\r\n"), 5},
      {"integers", "same\nn = 10\tm\n", "same\r\nn = 11\tm", 5},
      {"exact-keeps-tabs", "a\tb1\tc\n", "a\tb2\tc\n", 0},
      {"far-and-long", "aaaaaaa" + a33 + "1" + b80, "aaaaaaa" + a33 + "2" + b80, 0},
      {"no-cut-at-33", a33 + "1" + b31 + "\n", a33 + "2" + b31 + "\n", 0},
      {"cut-at-34", "a" + a33 + "1" + b80, "a" + a33 + "2", 0},
      {"shifted", "1.5 x 2.25\n", "1.50 x 2.75\n", 5},
      {"long-token", "v " + ones + ".5\n", "v " + ones + ".6\n", 5},
      {"tab-against-space", "1.5\t2\n", "1.5 2\n", 5}};
  for (const auto& [name, text1, text2, tolerance] : cases)
    EXPECT_EQ(compare(text1, text2, tolerance), golden(name));
}

TEST_F(DiffReport, HeadlinesOfEveryOutcome) {
  const struct {
    std::string text1, text2;
    int tolerance;
    const char* expected;
  } cases[] = {
      {"", "", 5, "equal"},
      {"a\nb", "a\r\nb\r\n", 5, "equal"},
      {"\xEF\xBB\xBF\xC3\xA9\n", "\xFE\xFF" + utf16(L"\xE9", true), 0, "equal"},
      {"caf\xE9 a\n", "caf\xC3\xA9 a\n", 0, "equal"},
      {"ab\rx\n", "ab\ry\n", 0, "equal"},
      {"a\n", "", 5, "error: File FILE1 is longer than FILE2"},
      {"a\n", "a\nb", 5, "error: Files FILE2 is longer than FILE1"},
      {"", "\n", 0, "error: Files FILE2 is longer than FILE1"},
      {"1.5 2.0\n", "1.50 2.0\n", 5,
       "warning: Difference within acceptable tolerance level (inf vs 5) detected"},
      {"x=1.00001\n", "x=1.00003\n", 4,
       "warning: Difference within acceptable tolerance level (4.7 vs 4) detected"},
      {"0.0\n", "1e-120\n", 119,
       "warning: Difference within acceptable tolerance level (120.0 vs 119) detected"},
      {"1.0 2.5\n1.001", "1.0 2.500001\n1.002", 3,
       "warning: Difference within acceptable tolerance level (3.0 vs 3) detected"},
      {"10\n", "11.0\n", 1, "warning: Difference within acceptable tolerance level (1.0 vs 1) detected"},
      {"1.5\n", "1.6\n", -9, "warning: Difference within acceptable tolerance level (1.2 vs -9) detected"},
      {"1.0\n", "100.0\n", 5, "error: Tolerance exceeded (-2.0 < 5) at line 1\n"},
      {"1.0\n", "inf\n", 5, "error: Tolerance exceeded (-inf < 5) at line 1\n"},
      {"1.0\n", "2.0\n", 1, "error: Tolerance exceeded (-0.0 < 1) at line 1\n"},
      {"1.0\n", "nan\n", 5, "error: Files not equal at line 1\n"},
      {"0.0\n", "0.001\n", 5, "error: Files not equal at line 1\n"},
      {"1.00001\nx\n", "1.00002\ny\n", 3, "error: Files not equal at line 2\n"},
      {"1.2\n1.01\n1.1\n", "1.2000001\n1.02\n1.1001\n", 6,
       "error: Tolerance exceeded (2.0 < 6) at line 2\n"}};
  for (const auto& row : cases) {
    const std::string outcome = compare(row.text1, row.text2, row.tolerance);
    const std::string expected = row.expected;
    EXPECT_EQ(expected.ends_with('\n') ? outcome.substr(0, expected.size()) : outcome, expected) << row.text1;
  }
}

TEST_F(DiffReport, TwoFilesThatCannotBeOpenedAreEqualAndOneIsNot) {
  CDiffFiles files;
  const std::wstring missing = path("1"), folder = path(""), there = file("2", "a\n");
  EXPECT_TRUE(files.CompareFiles(missing.c_str(), folder.c_str(), 5));
  const auto compared = [&](const std::wstring& a, const std::wstring& b) {
    return outcomeOf([&] { return files.CompareFiles(a.c_str(), b.c_str(), 5); });
  };
  EXPECT_EQ(compared(missing, there), "trouble: Unable to open file FILE1");
  EXPECT_EQ(compared(there, missing), "trouble: Unable to open file FILE1");
}

}  // namespace
