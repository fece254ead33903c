#include <algorithm>
#include <charconv>
#include <cmath>
#include <random>
#include <vector>

#include "tests/ztbaseclient/tools/DiffOutcome.h"
#include "ztbaseclient/tools/DiffInfo.h"
#include "ztcore/ztStringReader.h"

// Equal lines are skipped unseen; the plain comparison of every pair of lines must come to the same end.
namespace {

using namespace testsupport;
using Random = std::mt19937;

size_t below(Random& random, size_t limit) { return random() % limit; }

// Lines that are often equal, with ends, encodings and broken characters of every kind.
std::vector<std::string> someLines(Random& random) {
  static const std::vector<std::string> parts = {
      "a", "1.5 ", "1.5000001 ", "2.25\t", "x=", "\r", "\n", "\xC3\xA9", "\xFF", "\xE2\x82"};
  std::vector<std::string> lines(below(random, 6));
  for (std::string& line : lines) {
    for (size_t count = below(random, 4); count > 0; --count) {
      // The broken ones seldom: one makes the whole file 8-bit.
      line += parts[below(random, below(random, 8) ? 8 : parts.size())];
    }
  }
  return lines;
}

std::string endedBy(Random& random, const std::string& line) {
  static const char* const ends[] = {"\n", "\n", "\n", "\r\n"};
  return line + ends[below(random, 4)];
}

std::string variant(Random& random, const std::vector<std::string>& lines) {
  static const std::vector<std::string> changes = {"b", "1.50", "\xC3\xA9", "\xE9", ""};
  std::string text;
  for (const std::string& line : lines) {
    text += endedBy(random, below(random, 8) ? line : line + changes[below(random, changes.size())]);
  }
  if (below(random, 4) == 0 && !text.empty()) text.pop_back();
  switch (below(random, 12)) {
    case 0:
      return "\xEF\xBB\xBF" + text;
    case 1:
      return "\xFF\xFE" + utf16(std::wstring(text.begin(), text.end()));
    case 2:
      return "\xFF\xFE" + utf16(tovin::utf8ToWide(text)) + "\n";
    case 3:
      return "\xFE\xFF" + utf16(tovin::utf8ToWide(text), true);
    default:
      return text;
  }
}

// The comparison as it is told: each pair of lines looked at.
bool comparePlainly(const CDiffFiles& files, const wchar_t* file1, const wchar_t* file2, int tolerance) {
  ztStringReader reader1(file1), reader2(file2);
  tovin::WideString line1, line2;
  CDiffFiles::DiffInfo info;
  bool differ = false;
  for (int number = 1; reader1.GetLine(line1); ++number) {
    if (!reader2.GetLine(line2))
      throw tovin::DiffErrorException(L"File %ls is longer than %ls", file1, file2);
    if (CDiffFiles::compareIgnoringEOL(line1, line2)) continue;
    differ = true;
    if (tolerance == 0) {
      files.GetDiffInfo(line1, line2, info);
      files.ThrowDiffError(line1.data(), line2.data(), number, info, file1, file2, 0, 0.0);
    }
    files.CheckRoundoff(line1.data(), line2.data(), tolerance, number, file1, file2, info);
  }
  if (reader2.GetLine(line2)) throw tovin::DiffErrorException(L"Files %ls is longer than %ls", file2, file1);
  if (!differ || std::isnan(info.measure)) return true;
  if (!(info.measure < tolerance)) {
    throw tovin::DiffWarningException(L"Difference within acceptable tolerance level (%.1f vs %d) detected",
                                      info.measure, tolerance);
  }
  const auto blank = [](wchar_t* text) { std::replace(text, text + std::wcslen(text), L'\t', L' '); };
  for (wchar_t* text : {info.line1.data(), info.line2.data(), info.marker}) blank(text);
  files.ThrowDiffError(info.line1.data(), info.line2.data(), info.lineNumber, info, file1, file2, tolerance,
                       info.measure);
  return true;
}

class DiffSkipping : public DiffOutcome {
 protected:
  void expectSame(const std::string& text1, const std::string& text2, int tolerance) const {
    const std::string fast = compare(text1, text2, tolerance);
    const std::string plain = outcomeOf(
        [&] { return comparePlainly(CDiffFiles(), path("1").c_str(), path("2").c_str(), tolerance); });
    EXPECT_EQ(fast, plain) << testing::PrintToString(text1) << " against " << testing::PrintToString(text2);
  }
};

TEST_F(DiffSkipping, ComesToTheSameEndAsThePlainComparison) {
  Random random(20);
  for (int round = 0; round < 1500; ++round) {
    const std::vector<std::string> lines = someLines(random);
    const std::string text1 = variant(random, lines), text2 = variant(random, lines);
    expectSame(text1, text2, static_cast<int>(below(random, 3)) * 4);
  }
}

// A number and one that is near it, each written in any of many ways.
std::pair<std::string, std::string> nearNumbers(Random& random) {
  static const double nearness[] = {0, 0, 1e-13, 1e-9, 1e-7, 3e-7, 1e-6, 2e-6};
  static const int digits[] = {9, 9, 9, 6, 3, 15, 0, 12};
  const auto text = [&](double number, size_t form) {
    char room[64];
    const auto kind = below(random, 60) ? std::chars_format::fixed : std::chars_format::scientific;
    return std::string(room, std::to_chars(room, room + sizeof room, number, kind, digits[form]).ptr);
  };
  const double value = (static_cast<double>(below(random, 100'000)) - 20) / 1000;
  const size_t form = below(random, below(random, 4) ? 3 : std::size(digits));
  return {text(value, form), text(value * (1 + nearness[below(random, 8)]), below(random, 50) ? form : 7)};
}

TEST_F(DiffSkipping, TablesWithinToleranceComeToTheSameEnd) {
  Random random(22);
  static const char* const gaps[] = {" ", " ", " ", "\t", ",", "=", "  ", "x", "\xC2\xA0"};
  for (int round = 0; round < 600; ++round) {
    std::string text1, text2;
    for (size_t line = below(random, 12); line > 0; --line) {
      for (size_t field = 1 + below(random, 4); field > 0; --field) {
        const auto [number1, number2] = nearNumbers(random);
        const std::string gap = gaps[below(random, below(random, 8) ? 6 : std::size(gaps))];
        text1 += gap + number1;
        text2 += gap + number2;
      }
      text1 += '\n';
      text2 += below(random, 30) ? "\n" : "\r\n";
    }
    expectSame(text1, text2, 1 + static_cast<int>(below(random, 8)));
  }
}

TEST_F(DiffSkipping, IsNotMisledWhereOnePieceEndsAndTheNextBegins) {
  Random random(21);
  for (int round = 0; round < 24; ++round) {
    const std::string start = below(random, 2) ? "\xC3\xA9\n" : "1.5\n";
    const std::string filling(ztFastReadFile::PieceSize - below(random, 24), below(random, 2) ? 'a' : '\n');
    std::vector<std::string> lines = someLines(random);
    lines.insert(lines.begin(), start + filling);
    expectSame(variant(random, lines), variant(random, lines), 4);
  }
}

TEST_F(DiffSkipping, LinesOfUnlikeEndsAreCountedOnce) {
  std::string unix, windows;
  for (int i = 0; i < 40'000; ++i) {
    unix += "line " + std::to_string(i) + "\n";
    windows += "line " + std::to_string(i) + "\r\n";
  }
  EXPECT_EQ(compare(unix, windows, 0), "equal");
  const std::string outcome = compare(unix + "a\n", windows + "b\r\n", 0);
  EXPECT_TRUE(outcome.starts_with("error: Files not equal at line 40001\n")) << outcome;
}

// Tells how far it is.
class WatchedDiff : public CDiffFiles {
 public:
  const std::vector<int64_t>& told() const { return told_; }

 protected:
  void Compared(int64_t done) const override { told_.push_back(done); }

 private:
  mutable std::vector<int64_t> told_;
};

TEST_F(DiffSkipping, ProgressReachesTheEndHoweverTheFilesAreCompared) {
  const std::string equal(3 * ztFastReadFile::PieceSize, '\n'), differing = "1.5\n1.5\n",
                                                                zeros(500'000, '\0');
  for (const std::string& text : {equal, differing, zeros}) {
    const std::wstring file1 = file("1", text), file2 = file("2", text == differing ? "1.50\n1.500\n" : text);
    WatchedDiff watched;
    outcomeOf([&] { return watched.CompareFiles(file1.c_str(), file2.c_str(), 1); });
    EXPECT_TRUE(std::is_sorted(watched.told().begin(), watched.told().end()));
    EXPECT_EQ(watched.told().back(), static_cast<int64_t>(text.size()));
  }
}

}  // namespace
