// Absorbing texts beside a plain loop over them with one look-up in a table of bytes.
#include <benchmark/benchmark.h>

#include <string>

#include "ztbaseclient/tools/ztChecksum.h"

namespace {

std::wstring textOf(int64_t length) {
  std::wstring text;
  for (int64_t i = 0; i < length; ++i) text += static_cast<wchar_t>(L'a' + i * 7 % 26);
  return text;
}

void setCharacters(benchmark::State& state) { state.SetBytesProcessed(state.iterations() * state.range(0)); }

void addString(benchmark::State& state) {
  const std::wstring text = textOf(state.range(0));
  ztChecksum checksum;
  for (auto _ : state) checksum.AddString(text.c_str());
  benchmark::DoNotOptimize(checksum.GetChecksum());
  setCharacters(state);
}

void plainLookUp(benchmark::State& state) {
  const std::wstring text = textOf(state.range(0));
  unsigned char table[256];
  for (int i = 0; i < 256; ++i) table[i] = static_cast<unsigned char>(i * 7 + 1);
  std::string out(text.size(), '\0');
  for (auto _ : state) {
    for (size_t i = 0; i < text.size(); ++i) out[i] = static_cast<char>(table[text[i] & 0xFF]);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  setCharacters(state);
}

void digest(benchmark::State& state) {
  ztChecksum checksum;
  checksum.AddString(textOf(state.range(0)).c_str());
  for (auto _ : state) benchmark::DoNotOptimize(checksum.GetChecksum());
}

BENCHMARK(addString)->Arg(16)->Arg(1 << 20);
BENCHMARK(plainLookUp)->Arg(16)->Arg(1 << 20);
BENCHMARK(digest)->Arg(16)->Arg(1 << 20);

}  // namespace
