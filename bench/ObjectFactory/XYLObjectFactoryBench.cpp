// SPDX-License-Identifier: Apache-2.0
// Creating and releasing a pooled object: XYLObjectFactory against new and
// delete of the same class, on one and two threads. The counter
// "allocs_per_op" counts global allocations inside the timed loop; the
// factory's steady state makes none.
#include <XYLCore/ObjectFactory/XYLObjectFactory.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <new>

#pragma GCC diagnostic ignored "-Wmismatched-new-delete"

namespace {
thread_local long tAllocations = 0;
}

void *operator new(std::size_t size) {
  ++tAllocations;
  if (void *block = std::malloc(size == 0 ? 1 : size))
    return block;
  throw std::bad_alloc();
}
void operator delete(void *block) noexcept { std::free(block); }
void operator delete(void *block, std::size_t) noexcept { std::free(block); }

namespace {

const char kPooled[] = "Pooled";

class Pooled : public XYLObjectFactoryItem {
public:
  explicit Pooled(XYLObjectFactory *factory) : XYLObjectFactoryItem(factory) {}
  const char *getClassId() const override { return kPooled; }
  void cleanObject() override { m_value = 0; }
  long m_value = 0;
  char m_payload[64] = {};
};

XYLObjectFactoryItem *makePooled(XYLObjectFactory *factory) { return new Pooled(factory); }

XYLObjectFactory &factory() {
  static XYLObjectFactory *instance = [] {
    XYLObjectFactory *made = new XYLObjectFactory();
    made->registerClass(kPooled, makePooled);
    return made;
  }();
  return *instance;
}

void reportAllocations(benchmark::State &state, long before) {
  state.counters["allocs_per_op"] =
      benchmark::Counter(static_cast<double>(tAllocations - before) / static_cast<double>(state.iterations()),
                         benchmark::Counter::kAvgThreads);
}

void BM_XylObjectFactory_CreateRelease(benchmark::State &state) {
  XYLObjectFactory &pool = factory();
  // One round outside the timing, so the pool holds this thread's object.
  pool.createObject(kPooled)->release();
  const long before = tAllocations;
  for (auto _ : state) {
    XYLObjectFactoryItem *item = pool.createObject(kPooled);
    static_cast<Pooled *>(item)->m_value = 1;
    benchmark::DoNotOptimize(item);
    item->release();
  }
  reportAllocations(state, before);
}

void BM_NewDelete_CreateRelease(benchmark::State &state) {
  const long before = tAllocations;
  for (auto _ : state) {
    Pooled *item = new Pooled(nullptr);
    item->m_value = 1;
    benchmark::DoNotOptimize(item);
    delete item;
  }
  reportAllocations(state, before);
}

BENCHMARK(BM_XylObjectFactory_CreateRelease)->Threads(1)->Threads(2);
BENCHMARK(BM_NewDelete_CreateRelease)->Threads(1)->Threads(2);

} // namespace
