#include "ztbaseclient/tools/CDiffFiles.h"

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <limits>

#include "tovinCore/Exception.h"
#include "tovinCore/Guard.h"
#include "tovinCore/Numbers.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/tools/DiffInfo.h"
#include "ztbaseclient/tools/NearLines.h"
#include "ztcore/ztFastReadFile.h"
#include "ztcore/ztStringReader.h"

using tovin::DiffErrorException;
using tovin::guarded;

const int CDiffFiles::DefaultTolerance = 5;

namespace {

// A zero byte among so many first ones makes a file binary.
constexpr size_t binaryProbe = 2000;

// The longest token that is looked at as a number.
constexpr int maxToken = 1023;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

bool endsLine(wchar_t c) { return c == L'\0' || c == L'\r' || c == L'\n'; }

void replaceTabs(wchar_t* text) {
  if (text) std::replace(text, text + std::wcslen(text), L'\t', L' ');
}

// A token of a line: `length` characters from `start`, both counted from a cursor.
struct Token {
  int start;
  int length;

  bool canBeNumber() const { return length > 0 && length <= maxToken; }
  int end() const { return start + length; }
  void copy(const wchar_t* cursor, wchar_t* out) const {
    std::wmemcpy(out, cursor + start, static_cast<size_t>(length));
    out[length] = L'\0';
  }
};

Token tokenAround(const CDiffFiles& diff, const wchar_t* cursor, int pos) {
  const int start = diff.GetStartLocation(cursor, pos);
  return {start, diff.GetEndLocation(cursor, pos) - start + 1};
}

}  // namespace

CDiffFiles::CDiffFiles() = default;
CDiffFiles::~CDiffFiles() = default;

bool CDiffFiles::CompareFiles(const wchar_t* file1, const wchar_t* file2, int tolerance) {
  return guarded({ClassName, "CompareFiles"}, [&] {
    if (!ztFile::CanOpen(file1, ztFile::ForReading) && !ztFile::CanOpen(file2, ztFile::ForReading))
      return true;
    if (FileIsBinary(file1)) return CompareFilesBinary(file1, file2);
    compareText(file1, file2, tolerance);
    return true;
  });
}

bool CDiffFiles::FileIsBinary(const wchar_t* path) {
  return guarded({ClassName, "FileIsBinary"}, [&] {
    ztFastReadFile file(path);
    if (file.Is16Bit()) return false;
    file.Fill();
    return file.GetWindow().substr(0, binaryProbe).find('\0') != std::string_view::npos;
  });
}

void CDiffFiles::Compared(int64_t) const {}

// Equal lines leave no trace but their number, so they are skipped without being looked at; of lines that
// differ less than the worst so far no more than that is left.
void CDiffFiles::compareText(const wchar_t* file1, const wchar_t* file2, int tolerance) const {
  ztStringReader reader1(file1), reader2(file2);
  tovin::WideString line1, line2;
  DiffInfo worst;
  bool differ = false;
  const auto watch = [this](int64_t done) { Compared(done); };
  for (int64_t lines = 0;;) {
    lines += ztStringReader::SkipEqualLines(reader1, reader2, watch);
    if (tolerance != 0) {
      NearLines near(worst.measure);
      const auto passes = [&](std::string_view text1, std::string_view text2) {
        return near.pass(text1, text2);
      };
      lines += ztStringReader::SkipPairs(reader1, reader2, passes, watch);
      differ = differ || near.differ();
    }
    if (!reader1.GetLine(line1)) break;
    if (!reader2.GetLine(line2)) throw DiffErrorException(L"File %ls is longer than %ls", file1, file2);
    const int lineNo = static_cast<int>(++lines);
    Compared(reader1.GetPosition());
    if (compareIgnoringEOL(line1, line2)) continue;
    differ = true;
    if (tolerance != 0) {
      CheckRoundoff(line1.data(), line2.data(), tolerance, lineNo, file1, file2, worst);
      continue;
    }
    GetDiffInfo(line1, line2, worst);
    ThrowDiffError(line1.data(), line2.data(), lineNo, worst, file1, file2, 0, 0.0);
  }
  // "Files" is meant: programs look for this text as it is.
  if (reader2.GetLine(line2)) throw DiffErrorException(L"Files %ls is longer than %ls", file2, file1);
  if (differ) reportWorst(worst, file1, file2, tolerance);
}

void CDiffFiles::reportWorst(DiffInfo& worst, const wchar_t* file1, const wchar_t* file2,
                             int tolerance) const {
  if (worst.measure < tolerance) {
    replaceTabs(worst.line1.data());
    replaceTabs(worst.line2.data());
    replaceTabs(worst.marker);
    ThrowDiffError(worst.line1.data(), worst.line2.data(), worst.lineNumber, worst, file1, file2, tolerance,
                   worst.measure);
  }
  if (std::isnan(worst.measure)) return;
  throw tovin::DiffWarningException(L"Difference within acceptable tolerance level (%.1f vs %d) detected",
                                    worst.measure, tolerance);
}

bool CDiffFiles::compareIgnoringEOL(const wchar_t* a, const wchar_t* b) {
  if (!a || !b) return false;
  for (; !endsLine(*a); ++a, ++b) {
    if (*a != *b) return false;
  }
  return endsLine(*b);
}

bool CDiffFiles::IsDelimiter(wchar_t c) const {
  switch (c) {
    case L'\0':
    case L' ':
    case L'\r':
    case L'\n':
    case L'\t':
    case L'\xA0':
    case L'"':
    case L'<':
    case L'=':
    case L'>':
    case L',':
    case L';':
      return true;
    default:
      return false;
  }
}

int CDiffFiles::GetStartLocation(const wchar_t* s, int pos) const {
  while (pos > 0 && !IsDelimiter(s[pos - 1])) --pos;
  return std::max(pos, 0);
}

int CDiffFiles::GetEndLocation(const wchar_t* s, int pos) const {
  pos = std::max(pos, 0);
  while (!IsDelimiter(s[pos])) ++pos;
  return pos - 1;
}

int CDiffFiles::GetDiffLocation(const wchar_t* a, const wchar_t* b) const {
  int length = 0;
  while (a[length] && a[length] == b[length]) ++length;
  return length;
}

void CDiffFiles::GetDiffInfo(const wchar_t* a, const wchar_t* b, DiffInfo& info) const {
  guarded({ClassName, "GetDiffInfo"}, [&] {
    const int common = GetDiffLocation(a, b);
    info.position1 = info.position2 = common;
    std::fill(std::begin(info.marker), std::end(info.marker), L'\0');
    a += common;
    b += common;
    for (int i = 0; i < DiffInfo::markerLength && a[i] && b[i]; ++i) {
      info.marker[i] = a[i] != b[i] ? L'^' : a[i] == L'\t' ? L'\t' : L' ';
    }
  });
}

void CDiffFiles::RemoveDecimal(wchar_t* s) const {
  if (*s) std::wmemmove(s, s + 1, std::wcslen(s));
}

size_t CDiffFiles::PadWithZeros(wchar_t* a, wchar_t* b, size_t max) const {
  size_t lengthA = std::wcslen(a), lengthB = std::wcslen(b);
  while (lengthA < std::min(lengthB, max)) a[lengthA++] = L'0';
  while (lengthB < std::min(lengthA, max)) b[lengthB++] = L'0';
  a[lengthA] = b[lengthB] = L'\0';
  return lengthA;
}

double CDiffFiles::MeasureIndividualRoundoff(wchar_t* a, wchar_t* b, size_t, int) const {
  return guarded({ClassName, "MeasureIndividualRoundoff"}, [&] {
    // Only decimal numbers may differ: integers must match exactly.
    if (!std::wcschr(a, L'.') && !std::wcschr(b, L'.')) return notANumber;
    double x = 0, y = 0;
    if (!tovin::util::tryStringToDouble(a, x) || !tovin::util::tryStringToDouble(b, y)) return notANumber;
    return sharedDigits(x, y);
  });
}

// Two lines on their way through CheckRoundoff, with a cursor in each.
struct CDiffFiles::Walk {
  wchar_t* line1;
  wchar_t* line2;
  int tolerance;
  int lineNo;
  const wchar_t* file1;
  const wchar_t* file2;
  const wchar_t* at1 = line1;
  const wchar_t* at2 = line2;
  bool copied = false;

  void replaceTabsOfLines() const {
    replaceTabs(line1);
    replaceTabs(line2);
  }
};

void CDiffFiles::CheckRoundoff(wchar_t* line1, wchar_t* line2, int tolerance, int lineNo,
                               const wchar_t* file1, const wchar_t* file2, DiffInfo& info) const {
  guarded({ClassName, "CheckRoundoff"}, [&] {
    Walk walk{line1, line2, tolerance, lineNo, file1, file2};
    while (*walk.at1 && *walk.at2 && checkToken(walk, info)) continue;
  });
}

// Measures the next difference and moves behind its tokens; false when the lines have no more.
bool CDiffFiles::checkToken(Walk& walk, DiffInfo& info) const {
  const int common = GetDiffLocation(walk.at1, walk.at2);
  if (!walk.at1[common] && !walk.at2[common]) return false;
  const Token token1 = tokenAround(*this, walk.at1, common), token2 = tokenAround(*this, walk.at2, common);
  if (!token1.canBeNumber() || !token2.canBeNumber()) throwNoNumber(walk, info);
  wchar_t number1[maxToken + 1], number2[maxToken + 1];
  token1.copy(walk.at1, number1);
  token2.copy(walk.at2, number2);
  const double measure = MeasureIndividualRoundoff(number1, number2, maxToken, walk.tolerance);
  if (!(measure >= info.measure)) keepWorst(walk, measure, info);
  walk.at1 += token1.end();
  walk.at2 += token2.end();
  return true;
}

// The lines come first, so that a tab against a space, a difference for the comparison, has no marker.
void CDiffFiles::throwNoNumber(const Walk& walk, DiffInfo& info) const {
  walk.replaceTabsOfLines();
  locate(walk, info);
  ThrowDiffError(walk.line1, walk.line2, walk.lineNo, info, walk.file1, walk.file2, 0, 0.0);
}

void CDiffFiles::locate(const Walk& walk, DiffInfo& info) const {
  GetDiffInfo(walk.at1, walk.at2, info);
  info.position1 += static_cast<int>(walk.at1 - walk.line1);
  info.position2 += static_cast<int>(walk.at2 - walk.line2);
}

// The lines are copied once however many of their numbers are worse and worse: a line may be very long.
void CDiffFiles::keepWorst(Walk& walk, double measure, DiffInfo& info) const {
  locate(walk, info);
  if (std::isnan(measure)) {
    walk.replaceTabsOfLines();
    replaceTabs(info.marker);
    ThrowDiffError(walk.line1, walk.line2, walk.lineNo, info, walk.file1, walk.file2, walk.tolerance,
                   measure);
  }
  info.measure = measure;
  info.lineNumber = walk.lineNo;
  if (walk.copied) return;
  info.line1 = walk.line1;
  info.line2 = walk.line2;
  walk.copied = true;
}
