// Reading a console log: one of entries only, and one in which they are rare.
#include <benchmark/benchmark.h>

#include "bench/BenchFile.h"
#include "ztbaseclient/tools/CConsoleEntry.h"
#include "ztbaseclient/tools/CConsoleReader.h"

namespace {

std::string logOf(int64_t entries, int noise) {
  std::string text;
  for (int64_t i = 0; i < entries; ++i) {
    text += "<<<ConsoleEntry\nstate\trunning " + std::to_string(i) + "\nprogress\t50%p\nConsoleEntry>>>\n";
    for (int line = 0; line < noise; ++line)
      text += "free output of the job, of some length, line after line\n";
  }
  return text;
}

void readLog(benchmark::State& state, int noise) {
  const std::string bytes = logOf(state.range(0), noise);
  const BenchFile file(bytes);
  const std::wstring name = file.name();
  for (auto _ : state) {
    CConsoleReader reader(name.c_str(), 0);
    CConsoleEntry entry;
    while (reader.GetNextEntry(entry)) benchmark::DoNotOptimize(entry.FindValue(L"state"));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
}

BENCHMARK_CAPTURE(readLog, entriesOnly, 0)->Arg(1000)->Arg(100'000);
BENCHMARK_CAPTURE(readLog, rareEntries, 1000)->Arg(10)->Arg(1000);

}  // namespace
