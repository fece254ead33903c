// Taking an object from its pool and returning it, beside making and destroying the same object.
#include <benchmark/benchmark.h>

#include "tovin/values/StringValue.h"
#include "ztbaseclient/data/CPropertyCollection.h"
#include "ztbaseclient/node/CBaseNode.h"

namespace {

template <class T>
void PoolAllocate(benchmark::State& state) {
  for (auto _ : state) {
    T* object = T::allocate();
    benchmark::DoNotOptimize(object);
    T::deallocate(object);
  }
}

template <class T>
void PoolNewDelete(benchmark::State& state) {
  for (auto _ : state) {
    T* object = new T;
    object->onActivate();
    benchmark::DoNotOptimize(object);
    delete object;
  }
}

BENCHMARK(PoolAllocate<CProperty>);
BENCHMARK(PoolNewDelete<CProperty>);
BENCHMARK(PoolAllocate<CPropertyCollection>);
BENCHMARK(PoolNewDelete<CPropertyCollection>);
BENCHMARK(PoolAllocate<CBaseNode>);
BENCHMARK(PoolNewDelete<CBaseNode>);
BENCHMARK(PoolAllocate<tovin::StringValue>);
BENCHMARK(PoolNewDelete<tovin::StringValue>);

}  // namespace
