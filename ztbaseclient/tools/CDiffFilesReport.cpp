// How a difference of two text files is shown.
#include <algorithm>
#include <string>

#include "tovinCore/Exception.h"
#include "tovinCore/Guard.h"
#include "ztbaseclient/tools/CDiffFiles.h"
#include "ztbaseclient/tools/DiffInfo.h"

namespace {

// Of a long line so many characters before the difference are shown, and altogether so many; one that is
// longer is cut to make room for its ellipsis.
constexpr int shownBefore = 33;
constexpr size_t shownLength = 66;
constexpr size_t cutLength = 61;

// The difference that lies earlier is moved to the column of the other.
std::wstring shifted(const wchar_t* line, int position, int column) {
  return std::wstring(static_cast<size_t>(column - position), L' ') + line;
}

std::wstring excerptOf(const std::wstring& line, size_t start) {
  std::wstring excerpt = line.substr(std::min(start, line.size()));
  if (excerpt.size() > shownLength) excerpt = excerpt.substr(0, cutLength) + L"...\n";
  return (start > 0 ? L"..." : L"") + excerpt;
}

std::wstring headline(int tolerance, double measure, int lineNo) {
  if (tolerance > measure) {
    return tovin::format(L"Tolerance exceeded (%.1f < %d) at line %d", measure, tolerance, lineNo);
  }
  return tovin::format(L"Files not equal at line %d", lineNo);
}

}  // namespace

void CDiffFiles::ThrowDiffError(wchar_t* line1, wchar_t* line2, int lineNo, DiffInfo& info,
                                const wchar_t* file1, const wchar_t* file2, int tolerance,
                                double measure) const {
  tovin::guarded({ClassName, "ThrowDiffError"}, [&] {
    const int column = std::max(info.position1, info.position2);
    const std::wstring shown1 = shifted(line1, info.position1, column);
    const std::wstring shown2 = shifted(line2, info.position2, column);
    info.position1 = info.position2 = column;
    const int start = std::max(column - shownBefore, 0);
    const std::wstring blanks(static_cast<size_t>(column - start) + (start > 0 ? 3 : 0), L' ');

    std::wstring message = headline(tolerance, measure, lineNo);
    message += tovin::format(L"\n\tFile1: %ls\n\tFile2: %ls", file1, file2);
    message += L"\n\t1: " + excerptOf(shown1, static_cast<size_t>(start));
    message += L"\t2: " + excerptOf(shown2, static_cast<size_t>(start));
    message += L"\t   " + blanks + info.marker + L"\n";
    throw tovin::DiffErrorException(L"%ls", message);
  });
}
