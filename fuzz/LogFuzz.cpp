// A console log that grows: its first byte says where it is cut while it is read for the first time. Read on
// from where to resume, it gives the whole entries that it gives at once.
#include <cstdint>
#include <cstdlib>
#include <string>

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
  if (text != wholeEntries(atOnce)) std::abort();
  return 0;
}
