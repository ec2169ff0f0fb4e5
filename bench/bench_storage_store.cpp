// Per-sample cost of filling the sample record and turning it into text, for a configuration of
// 194 columns: two 7-joint manipulators, each with base position, joint position, velocity,
// acceleration and torque and the external force on every link, and placement, velocity and
// acceleration of one end effector. Counts heap allocations per sample after allocateStorage
// (the goal is none). The baseline turns the same values into text with snprintf("%.17g").

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "bench/HxBenchScene.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/support/HxAllocationCounter.h"

namespace {

using namespace HxSimAnalysis;

// The shared benchmark system and a record shaped by its configuration.
struct Setup {
  HxBenchScene scene;
  HxSystemDataCapture& capture = scene.capture;
  HxSystemDataStorage record;

  Setup() { capture.allocateStorage(record); }

  // One sample: stamp and store.
  void store(double time, unsigned int index) {
    record.setTime(time);
    record.setPathPointIndex(index);
    capture.storeData(record);
  }
};

void reportAllocations(benchmark::State& state, const HxAllocationCounter& counter, std::uint64_t samples) {
  state.counters["allocs_per_sample"] =
      benchmark::Counter(static_cast<double>(counter.allocations()) / static_cast<double>(samples));
}

// storeData alone: the active values of every type copied into the record.
void BM_StorageStore_StoreData(benchmark::State& state) {
  Setup setup;
  setup.store(0.0, 0);  // warm
  HxAllocationCounter counter;
  std::uint64_t samples = 0;
  for (auto _ : state) {
    setup.store(1e-3 * static_cast<double>(samples), static_cast<unsigned int>(samples));
    benchmark::ClobberMemory();
    ++samples;
  }
  reportAllocations(state, counter, samples);
  state.counters["columns"] = setup.record.elementSize();
  state.SetItemsProcessed(static_cast<int64_t>(samples));
}
BENCHMARK(BM_StorageStore_StoreData);

// storeData plus getStringElements by each of state.range(0) writers, as the recorder does per
// sample: the values are turned into text once, the writers copy the cached text.
void BM_StorageStore_StoreAndText(benchmark::State& state) {
  Setup setup;
  std::vector<std::vector<std::string>> writers(static_cast<std::size_t>(state.range(0)));
  setup.store(0.0, 0);
  for (auto& text : writers) setup.record.getStringElements(text);  // warm
  HxAllocationCounter counter;
  std::uint64_t samples = 0;
  std::size_t bytes = 0;
  for (auto _ : state) {
    setup.store(1e-3 * static_cast<double>(samples), static_cast<unsigned int>(samples));
    for (auto& text : writers) {
      setup.record.getStringElements(text);
      benchmark::DoNotOptimize(text.data());
    }
    ++samples;
  }
  for (const std::string& s : writers[0]) bytes += s.size();
  reportAllocations(state, counter, samples);
  state.counters["columns"] = setup.record.elementSize();
  state.SetItemsProcessed(static_cast<int64_t>(samples));
  state.SetBytesProcessed(static_cast<int64_t>(samples * bytes));
}
BENCHMARK(BM_StorageStore_StoreAndText)->Arg(1)->Arg(5);

// Baseline: the same values (read once from the record) to text with snprintf, per writer.
void BM_StorageStore_SnprintfBaseline(benchmark::State& state) {
  Setup setup;
  setup.store(0.0, 0);
  std::vector<double> values;
  setup.record.getRealElements(values, false);
  const std::size_t writers = static_cast<std::size_t>(state.range(0));
  std::vector<char> buffer(values.size() * 32 * writers);
  std::uint64_t samples = 0;
  for (auto _ : state) {
    char* out = buffer.data();
    for (std::size_t w = 0; w < writers; ++w) {
      for (double value : values) out += std::snprintf(out, 32, "%.17g", value);
    }
    benchmark::DoNotOptimize(buffer.data());
    ++samples;
  }
  state.counters["columns"] = static_cast<double>(values.size());
  state.SetItemsProcessed(static_cast<int64_t>(samples));
}
BENCHMARK(BM_StorageStore_SnprintfBaseline)->Arg(1)->Arg(5);

}  // namespace

BENCHMARK_MAIN();
