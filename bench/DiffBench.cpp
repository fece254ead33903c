// The comparison of two files: equal, in bytes and in text, and with a difference within tolerance in every
// line.
#include <benchmark/benchmark.h>

#include "bench/BenchFile.h"
#include "tovinCore/Exception.h"
#include "tovinCore/Format.h"
#include "ztbaseclient/tools/CDiffFiles.h"

namespace {

std::string table(int64_t lines, double factor) {
  std::wstring text;
  for (int64_t i = 0; i < lines; ++i) {
    const double value = (1.0 + static_cast<double>(i * 7919 % 1000)) * factor;
    text += tovin::format(L"%8d %.9f %.9f %.9f station\n", i, value, value * 3, value * 7);
  }
  return tovin::wideToUtf8(text);
}

template <class Compare>
void compare(benchmark::State& state, const std::string& bytes1, const std::string& bytes2, Compare&& body) {
  const BenchFile file1(bytes1), file2(bytes2);
  const std::wstring name1 = file1.name(), name2 = file2.name();
  for (auto _ : state) {
    try {
      body(name1.c_str(), name2.c_str());
    } catch (const tovin::DiffWarningException& e) {
      benchmark::DoNotOptimize(e.getMessage());
    }
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes1.size() + bytes2.size()));
}

void asText(const wchar_t* a, const wchar_t* b) {
  CDiffFiles().CompareFiles(a, b, CDiffFiles::DefaultTolerance);
}
void asBytes(const wchar_t* a, const wchar_t* b) { CDiffFiles().CompareFilesBinary(a, b); }

void equalText(benchmark::State& state) {
  const std::string bytes = table(state.range(0), 1);
  compare(state, bytes, bytes, asText);
}

void equalBytes(benchmark::State& state) {
  const std::string bytes = table(state.range(0), 1);
  compare(state, bytes, bytes, asBytes);
}

void everyLineWithinTolerance(benchmark::State& state) {
  compare(state, table(state.range(0), 1), table(state.range(0), 1 + 3e-7), asText);
}

BENCHMARK(equalText)->Arg(1000)->Arg(200'000);
BENCHMARK(equalBytes)->Arg(1000)->Arg(200'000);
BENCHMARK(everyLineWithinTolerance)->Arg(1000)->Arg(50'000);

}  // namespace
