// How the cost of capturing and setting up grows with the system: one manipulator of 1, 10, 100
// and 1000 joints, and 1, 10, 100 and 1000 one-joint manipulators, on the scripted simulation
// with dynamics on. Every link captures joint position, velocity, acceleration and torque and
// the external force: 10 values per joint. (Capturing copies values whatever they are, so the
// simulation's values are set once.)
//
// Benchmarks:
//   Capture/<family>/N  captureData of the whole configuration, one sample per iteration
//   Sample/<family>/N   captureData and saveCapturedData of a recorder without writers: the
//                       values captured and stored into the sample record
//   SetUp/<family>/N    what precedes the first sample: the capture configuration built with
//                       the add operations (per manipulator and link, type by type, as
//                       hxrecord --capture-all builds it), the recorder's allocateStorage and
//                       beginSaveToFile without writers
// where <family> is Joints (N joints, one manipulator) or Manipulators (N one-joint ones).
//
// Counters:
//   time_per_value      Capture, Sample: CPU time per captured value, in seconds ("4.2n" is
//                       4.2 ns); items are values
//   set_up, per_element SetUp: CPU seconds per set-up (the sum of its parts below; taking the
//                       objects down again is left out) and per joint or manipulator
//   vs_10               the time per value (SetUp: per element) over that of the same family's
//                       system at 10, measured right after in the same benchmark for about as
//                       long (a quarter of a second at most): 1 when the cost grows linearly,
//                       N/10 when it grows with N squared
//   configure, allocate, begin
//                       SetUp: CPU seconds of each part per set-up
//   allocs_per_sample   Capture, Sample: heap allocations per sample after the first
//
// With --benchmark_min_time below 0.05 s (the CTest smoke run) the sizes stop at 100. Figures,
// medians of rounds in changing order:
//   bench_scaling --benchmark_repetitions=7 --benchmark_enable_random_interleaving=true
//                 --benchmark_report_aggregates_only=true

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemStoredData.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "bench/HxBenchSupport.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/support/HxAllocationCounter.h"

namespace {

using namespace HxSimAnalysis;

constexpr HxU32 kReferenceSize = 10;

enum class Family { Joints, Manipulators };

// The system of a family at size n, with every value set (non-zero) once.
std::unique_ptr<HxScriptedSimulation> makeSimulation(Family family, HxU32 n) {
  const HxU32 manipulators = family == Family::Manipulators ? n : 1;
  const HxU32 joints = family == Family::Joints ? n : 1;
  auto simulation = std::make_unique<HxScriptedSimulation>(manipulators, joints, 1);
  simulation->setDynamicsEnabled(true);
  for (HxU32 m = 0; m < manipulators; ++m) {
    std::vector<double> values(joints);
    std::vector<HxGeneralForce> forces;
    for (HxU32 j = 0; j < joints; ++j) {
      values[j] = 0.001 * (m + 1) + 0.5 * j + 0.125;
      forces.emplace_back(values[j], -values[j], 1.0, 2.0, 3.0, 4.0);
    }
    simulation->setJointPositions(m, values);
    simulation->setJointVelocities(m, values);
    simulation->individualSimulator(m).setJointAccelerations(values);
    simulation->individualSimulator(m).setJointTorques(values);
    simulation->externalForce(m).setForces(forces);
  }
  return simulation;
}

// Builds the capture configuration over `simulation` with the add operations, link by link.
void configure(const HxScriptedSimulation& simulation, HxSystemDataCapture& capture) {
  static const HxToken* const kLinkTypes[] = {&HxJointPositionDataCaptureTypeToken,
                                              &HxJointVelocityDataCaptureTypeToken,
                                              &HxJointAccelerationDataCaptureTypeToken,
                                              &HxJointTorqueDataCaptureTypeToken, &HxExternalForceDataCaptureTypeToken};
  for (HxU32 m = 0; m < simulation.numberOfManipulators(); ++m) {
    const HxIndividualManipulator& manipulator = simulation.manipulators()[m];
    for (HxU32 l = 0; l < manipulator.numberOfLinks(); ++l) {
      const std::string& link = manipulator.link(l)->identifier();
      for (const HxToken* token : kLinkTypes) capture.addLinkDataCaptureType(m, link, *token);
    }
  }
}

// A system, its configuration and a recorder shaped to it, ready to sample.
struct System {
  std::unique_ptr<HxScriptedSimulation> simulation;
  HxSystemDataCapture capture;
  HxSystemStoredData recorder;
  double time = 0.0;

  System(Family family, HxU32 n) : simulation(makeSimulation(family, n)) {
    configure(*simulation, capture);
    recorder.allocateStorage(capture);
    recorder.beginSaveToFile("unused");  // no writers: no file
    sample(true);                        // the first sample sizes what it needs
  }
  double values() const { return static_cast<double>(capture.elementSize()); }
  void sample(bool store) {
    capture.captureData(*simulation);
    if (store) recorder.saveCapturedData(time += 0.01, 0u, capture);
  }
};

// CPU seconds per call of `once`, called in batches until about `seconds` (at most a quarter
// of a second) have passed, at least one batch; batches grow until one takes 0.1 ms, so that
// reading the clock costs little.
template <class Once>
double secondsPerCall(double seconds, Once once) {
  seconds = std::min(seconds, 0.25);
  HxBenchStopwatch total;
  std::uint64_t calls = 0;
  std::uint64_t batch = 1;
  total.start();
  for (;;) {
    HxBenchStopwatch lap;
    lap.start();
    for (std::uint64_t i = 0; i < batch; ++i) once();
    calls += batch;
    if (total.lap() >= seconds) break;
    if (lap.lap() < 1e-4) batch *= 2;
  }
  total.stop();
  return total.seconds() / static_cast<double>(calls);
}

void BM_Sampling(benchmark::State& state, Family family, bool store) {
  const HxU32 n = static_cast<HxU32>(state.range(0));
  System system(family, n);
  HxBenchStopwatch watch;
  HxAllocationCounter counter;
  watch.start();
  for (auto _ : state) system.sample(store);
  watch.stop();
  const std::uint64_t allocations = counter.allocations();

  const double samples = static_cast<double>(state.iterations());
  const double perValue = watch.seconds() / (samples * system.values());
  System reference(family, kReferenceSize);
  const double referencePerValue =
      secondsPerCall(watch.seconds(), [&reference, store] { reference.sample(store); }) / reference.values();

  state.SetItemsProcessed(static_cast<std::int64_t>(samples * system.values()));
  state.counters["time_per_value"] =
      benchmark::Counter(samples * system.values(), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  state.counters["vs_10"] = perValue / referencePerValue;
  state.counters["values"] = system.values();
  state.counters["allocs_per_sample"] = static_cast<double>(allocations) / samples;
}

// One set-up over `simulation`; the CPU seconds of its parts (configure, allocateStorage,
// beginSaveToFile) are added to `parts`. Taking the objects down again is left out.
void setUp(const HxScriptedSimulation& simulation, double parts[3]) {
  HxSystemDataCapture capture;
  HxSystemStoredData recorder;
  const double start = HxBenchStopwatch::now();
  configure(simulation, capture);
  const double configured = HxBenchStopwatch::now();
  recorder.allocateStorage(capture);
  const double allocated = HxBenchStopwatch::now();
  recorder.beginSaveToFile("unused");
  const double begun = HxBenchStopwatch::now();
  parts[0] += configured - start;
  parts[1] += allocated - configured;
  parts[2] += begun - allocated;
}

void BM_SetUp(benchmark::State& state, Family family) {
  const HxU32 n = static_cast<HxU32>(state.range(0));
  const std::unique_ptr<HxScriptedSimulation> simulation = makeSimulation(family, n);
  double parts[3] = {0.0, 0.0, 0.0};
  for (auto _ : state) setUp(*simulation, parts);

  const double iterations = static_cast<double>(state.iterations());
  const double perSetUp = (parts[0] + parts[1] + parts[2]) / iterations;
  const std::unique_ptr<HxScriptedSimulation> reference = makeSimulation(family, kReferenceSize);
  double referenceParts[3] = {0.0, 0.0, 0.0};
  double referenceCalls = 0.0;
  secondsPerCall(perSetUp * iterations, [&] {
    setUp(*reference, referenceParts);
    ++referenceCalls;
  });
  const double referencePerSetUp = (referenceParts[0] + referenceParts[1] + referenceParts[2]) / referenceCalls;

  state.counters["set_up"] = perSetUp;
  state.counters["per_element"] = perSetUp / n;
  state.counters["vs_10"] = (perSetUp / n) / (referencePerSetUp / kReferenceSize);
  state.counters["configure"] = parts[0] / iterations;
  state.counters["allocate"] = parts[1] / iterations;
  state.counters["begin"] = parts[2] / iterations;
}

void BM_Capture(benchmark::State& state, Family family) { BM_Sampling(state, family, false); }
void BM_Sample(benchmark::State& state, Family family) { BM_Sampling(state, family, true); }

}  // namespace

int main(int argc, char** argv) {
  // A short run (CTest's smoke run) leaves out the largest systems, whose set-up alone takes
  // the better part of a second in a debug build.
  const int largest = hxBenchIsShortRun(argc, argv) ? 100 : 1000;
  benchmark::internal::Benchmark* const all[] = {
      benchmark::RegisterBenchmark("BM_Capture/Joints", BM_Capture, Family::Joints),
      benchmark::RegisterBenchmark("BM_Capture/Manipulators", BM_Capture, Family::Manipulators),
      benchmark::RegisterBenchmark("BM_Sample/Joints", BM_Sample, Family::Joints),
      benchmark::RegisterBenchmark("BM_Sample/Manipulators", BM_Sample, Family::Manipulators),
      benchmark::RegisterBenchmark("BM_SetUp/Joints", BM_SetUp, Family::Joints)->Unit(benchmark::kMicrosecond),
      benchmark::RegisterBenchmark("BM_SetUp/Manipulators", BM_SetUp, Family::Manipulators)
          ->Unit(benchmark::kMicrosecond)};
  for (benchmark::internal::Benchmark* b : all) {
    for (int n = 1; n <= largest; n *= 10) b->Arg(n);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
