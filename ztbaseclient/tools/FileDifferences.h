#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ztbaseclient/Export.h"

/// Every difference of two text files, in the order of their lines.
///
///     const auto sums = differences::find(L"expected.txt", L"result.txt", {}, [](const auto& line) {
///       for (const differences::Field& field : line.fields) std::cout << field.text1 << field.text2 << '\n';
///     });
///
/// - Lines are aligned, so that one that is missing is one difference and not all that follow. Text that
///   cannot be aligned is compared by blocks, which the sums tell.
/// - Fields stand between blanks, quotation marks and <=>,; or, with a delimiter of one's own, between those:
///   there a field in quotation marks ends behind the second one.
/// - Verdict: equal, within tolerance or different as CDiffFiles::CompareFiles says with the same tolerance,
///   where nothing is passed over and no other measure is given.
/// - Texts are UTF-8, borrowed for the call. Units: lines and fields from 1.
/// - Memory: some thousands of lines, whatever the size of the files; with a key the second file.
/// - Errors: tovin::Exception for files that cannot be read, columns that are not there.
namespace differences {

struct Options {
  /// So many significant digits of decimal numbers must agree; 0 for texts that are written alike. Left out
  /// where one of the others is given, unless it is given too. What is within one of the three is within
  /// tolerance.
  std::optional<int> tolerance = {};
  std::optional<double> absolute = {};
  std::optional<double> relative = {};
  /// Of A to Z.
  bool ignoreCase = false;
  bool ignoreBlankLines = false;
  /// Names out of the heading, or numbers.
  std::vector<std::string> ignoredColumns = {};
  /// Rows with the same text in this column belong together, in whatever order they come.
  std::string key = {};
  /// 0 for the usual ones.
  char delimiter = 0;
  /// So many equal lines around a difference are given too.
  int context = 0;
};

struct Field {
  enum class Kind { Number, Text };
  Kind kind = Kind::Text;
  /// In the line; 0 for a field that it does not have.
  int64_t field1 = 0;
  int64_t field2 = 0;
  /// The column's name, when the file begins with a heading.
  std::optional<std::string_view> column = {};
  /// What differs, and where it begins in its line, in bytes. Where the fields are equal it is what stands
  /// before them.
  std::string_view text1 = {};
  std::string_view text2 = {};
  size_t at1 = 0;
  size_t at2 = 0;
  /// Of numbers: their distance, the same by the smaller size, how many significant digits agree.
  double absolute = 0;
  double relative = 0;
  int digits = 0;
  bool within = false;
};

struct Line {
  enum class Kind { Changed, Added, Removed, Equal };
  Kind kind = Kind::Changed;
  /// 0 for the one that is not there.
  int64_t line1 = 0;
  int64_t line2 = 0;
  std::string_view text1 = {};
  std::string_view text2 = {};
  /// Of a changed line, at least one.
  std::span<const Field> fields = {};
};

struct Summary {
  /// Fields.
  int64_t within = 0;
  int64_t different = 0;
  /// Lines.
  int64_t added = 0;
  int64_t removed = 0;
  double largestAbsolute = 0;
  double largestRelative = 0;
  /// Whether some lines had to be taken in pairs as they came.
  bool alignedByBlocks = false;

  bool isDifferent() const noexcept { return different + added + removed > 0; }
};

using Visitor = std::function<void(const Line&)>;

/// \param watch told now and then how many bytes of the first file are done.
ZTBASECLIENT_API Summary find(const wchar_t* file1, const wchar_t* file2, const Options& options,
                              const Visitor& visit, const std::function<void(int64_t)>& watch = {});

}  // namespace differences
