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
#include "bench/HxAllocationCounter.h"
#include "simulation/HxScriptedSimulation.h"

namespace {

using namespace HxSimAnalysis;

constexpr unsigned int kManipulators = 2;
constexpr unsigned int kJoints = 7;

// A scripted system with values of every magnitude, and the capture configuration over it.
struct Setup {
  HxScriptedSimulation simulation{kManipulators, kJoints, 1};
  HxSystemDataCapture capture;
  HxSystemDataStorage record;

  Setup() {
    simulation.setDynamicsEnabled(true);
    double v = 0.123456789;
    auto next = [&v]() {
      v = v * 7.31 + 0.0173;
      if (v > 1000.0) v /= 997.0;
      return v;
    };
    for (unsigned int m = 0; m < kManipulators; ++m) {
      std::vector<double> positions, velocities;
      std::vector<HxGeneralForce> forces;
      for (unsigned int j = 0; j < kJoints; ++j) {
        positions.push_back(next());
        velocities.push_back(-next());
        forces.emplace_back(next(), next(), next(), next(), next(), next());
      }
      simulation.setJointPositions(m, positions);
      simulation.setJointVelocities(m, velocities);
      simulation.individualSimulator(m).setJointAccelerations(velocities);
      simulation.individualSimulator(m).setJointTorques(positions);
      simulation.externalForce(m).setForces(forces);
      simulation.setEndEffectorPlacement(
          m, 0, HxEndEffectorPlacement(HxVector(next(), next(), next()), HxOrientation(0.5, 0.5, -0.5, 0.5)));
      simulation.setEndEffectorVelocity(m, 0, HxGeneralMotion(next(), next(), next(), next(), next(), next()));
      simulation.setEndEffectorAcceleration(m, 0, HxGeneralMotion(next(), next(), next(), next(), next(), next()));

      const HxIndividualManipulator& arm = simulation.manipulators()[m];
      capture.addManipulatorDataCaptureType(m, HxBasePositionDataCaptureTypeToken);
      for (const HxToken* token : {&HxJointPositionDataCaptureTypeToken, &HxJointVelocityDataCaptureTypeToken,
                                   &HxJointAccelerationDataCaptureTypeToken, &HxJointTorqueDataCaptureTypeToken,
                                   &HxExternalForceDataCaptureTypeToken}) {
        capture.addLinkDataCaptureType(m, *token, arm);
      }
      for (const HxToken* token : {&HxEndEffectorPlacementDataCaptureTypeToken,
                                   &HxEndEffectorVelocityDataCaptureTypeToken,
                                   &HxEndEffectorAccelerationDataCaptureTypeToken}) {
        capture.addEndEffectorDataCaptureType(m, 0u, *token);
      }
    }
    capture.captureData(simulation);
    capture.allocateStorage(record);
  }

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
