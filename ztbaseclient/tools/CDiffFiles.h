#pragma once

#include <cstddef>
#include <cstdint>

#include "ztbaseclient/Export.h"

/// Compares two result files and reports where they part, as an exception whose message shows the place.
///
///     CDiffFiles().CompareFiles(L"expected.txt", L"result.txt", CDiffFiles::DefaultTolerance);
///
/// - Text is compared line by line: line ends and encodings do not count, and decimal numbers may differ
///   behind the first `tolerance` significant digits; tolerance 0 is exact. Other files are compared by
///   bytes.
/// - Errors: DiffErrorException for a difference, DiffWarningException when all stayed within the tolerance;
///   a single file that cannot be read is an error of the file classes, two that cannot be opened are equal.
/// - Units: positions in characters from the line's start, lines from 1.
/// - Memory: constant; lines as in ztStringReader.
/// - Threads: no state, so any number at once.
class ZTBASECLIENT_API CDiffFiles {
 public:
  static constexpr const char* ClassName = "CDiffFiles";
  /// The usual tolerance: so many significant digits agree.
  static const int DefaultTolerance;

  struct DiffInfo;

  CDiffFiles();
  virtual ~CDiffFiles();

  /// True when it returns at all.
  bool CompareFiles(const wchar_t* file1, const wchar_t* file2, int tolerance);
  bool CompareFilesBinary(const wchar_t* file1, const wchar_t* file2);

  /// Equality up to the first line end or end of the text.
  static bool compareIgnoringEOL(const wchar_t* a, const wchar_t* b);
  /// Whether a character stands between tokens: blanks, the terminator and "<=>,;.
  bool IsDelimiter(wchar_t c) const;
  /// The first and the last index of the token around `pos`; the last is less when there is none.
  int GetStartLocation(const wchar_t* s, int pos) const;
  int GetEndLocation(const wchar_t* s, int pos) const;
  /// The length of the common prefix.
  int GetDiffLocation(const wchar_t* a, const wchar_t* b) const;
  /// Sets both positions and the marker.
  void GetDiffInfo(const wchar_t* a, const wchar_t* b, DiffInfo& info) const;
  /// Deletes the first character.
  void RemoveDecimal(wchar_t* s) const;
  /// Appends zeros to the shorter text until both are equally long, or `max` characters.
  /// \return the length of `a` then.
  size_t PadWithZeros(wchar_t* a, wchar_t* b, size_t max) const;
  /// How many leading digits two decimal numbers share; NaN where they cannot be compared.
  double MeasureIndividualRoundoff(wchar_t* a, wchar_t* b, size_t bufferSize, int tolerance) const;
  /// Keeps the worst measure of a pair of lines in `info`; reports what is no number at once.
  void CheckRoundoff(wchar_t* line1, wchar_t* line2, int tolerance, int lineNo, const wchar_t* file1,
                     const wchar_t* file2, DiffInfo& info) const;
  /// Always raises; makes the lines comparable in `info` and shows the place.
  void ThrowDiffError(wchar_t* line1, wchar_t* line2, int lineNo, DiffInfo& info, const wchar_t* file1,
                      const wchar_t* file2, int tolerance, double measure) const;

 protected:
  /// Whether a zero byte stands near the beginning of what is no 16-bit text.
  bool FileIsBinary(const wchar_t* path);
  /// Called now and then with how many bytes of the first file were compared; for those who show progress.
  virtual void Compared(int64_t done) const;

 private:
  struct Walk;

  void compareText(const wchar_t* file1, const wchar_t* file2, int tolerance) const;
  void reportWorst(DiffInfo& worst, const wchar_t* file1, const wchar_t* file2, int tolerance) const;
  bool checkToken(Walk& walk, DiffInfo& info) const;
  void throwNoNumber(const Walk& walk, DiffInfo& info) const;
  void locate(const Walk& walk, DiffInfo& info) const;
  void keepWorst(Walk& walk, double measure, DiffInfo& info) const;
};
