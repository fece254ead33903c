// A console log that grows: its first byte says where it is cut while it is read for the first time. Read on
// from where to resume, it gives the whole entries that it gives at once; but for a log with both markers in
// one line, where the cut may lie between them.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tovin/Constants.h"
#include "ztbaseclient/tools/CConsoleEntry.h"
#include "ztbaseclient/tools/CConsoleReader.h"
#include "ztcore/ztMemoryStringFile.h"

namespace {

std::wstring wholeEntries(CConsoleReader& reader) {
  std::wstring text;
  CConsoleEntry entry;
  while (reader.GetNextEntry(entry)) {
    if (!reader.WasEntryComplete()) continue;
    for (const auto& pair : entry.GetPairs()) (text += pair.name.view()) += pair.value.view();
    text += L'\n';
  }
  return text;
}

bool holdsBothInOneLine(const std::wstring& log) {
  for (std::size_t from = 0; from < log.size();) {
    const std::size_t end = std::min(log.find(L'\n', from), log.size());
    const std::wstring line = log.substr(from, end - from);
    if (line.find(tovin::DRV_ConsoleEntryBegin) != line.npos &&
        line.find(tovin::DRV_ConsoleEntryEnd) != line.npos) {
      return true;
    }
    from = end + 1;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::wstring log(data + 1, data + size);
  const std::size_t cut = log.size() * data[0] / 256;
  ztMemoryStringFile whole, growing;
  whole.Append(std::wstring_view(log));
  growing.Append(std::wstring_view(log).substr(0, cut));

  CConsoleReader atOnce(whole, 0), first(growing, 0);
  std::wstring text = wholeEntries(first);
  growing.Append(std::wstring_view(log).substr(cut));
  CConsoleReader second(growing, first.GetResumePosition());
  text += wholeEntries(second);
  if (text != wholeEntries(atOnce) && !holdsBothInOneLine(log)) std::abort();
  return 0;
}
