// Finding a property by name, beside a standard hash map keyed by the folded name.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "tovin/Ptr.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/data/CPropertyCollection.h"

namespace {

std::vector<std::wstring> makeNames(int64_t count) {
  std::vector<std::wstring> names;
  for (int64_t i = 0; i < count; ++i) names.push_back(L"Property" + std::to_wstring(i));
  return names;
}

std::vector<std::wstring> shuffled(std::vector<std::wstring> names) {
  std::shuffle(names.begin(), names.end(), std::mt19937(7));
  return names;
}

std::wstring folded(std::wstring name) {
  for (wchar_t& c : name) c = tovin::foldAscii(c);
  return name;
}

void CollectionFind(benchmark::State& state) {
  const auto names = makeNames(state.range(0));
  const tovin::Ptr<CPropertyCollection> properties(CPropertyCollection::allocate());
  for (const std::wstring& name : names) properties->define(name.c_str(), 0);
  const auto asked = shuffled(names);
  size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(properties->find(asked[next].c_str()));
    if (++next == asked.size()) next = 0;
  }
}

void CollectionFindUnorderedMap(benchmark::State& state) {
  const auto names = makeNames(state.range(0));
  std::unordered_map<std::wstring, size_t> properties;
  for (size_t i = 0; i < names.size(); ++i) properties[folded(names[i])] = i;
  const auto asked = shuffled(names);
  size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(properties.find(folded(asked[next])));
    if (++next == asked.size()) next = 0;
  }
}

BENCHMARK(CollectionFind)->Arg(5)->Arg(10)->Arg(100)->Arg(10000);
BENCHMARK(CollectionFindUnorderedMap)->Arg(5)->Arg(10)->Arg(100)->Arg(10000);

}  // namespace
