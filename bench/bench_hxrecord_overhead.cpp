// What recording costs hxrecord's default scene: one engine step of the two-arm scene alone
// (the baseline, recording off), then with a sample taken at every step and saved with no
// writer, with each writer alone and with all five. Each iteration is one step plus, when
// recording, one captureData + saveCapturedData; the two parts are timed separately so that
// every variant reports the recording overhead as a percentage of its own physics step. The
// parts are timed in thread CPU time, so that other processes on the machine do not count:
//
//   step_us            mean time of one engine step (HxMujocoSimulation::step)
//   record_us          mean time of capturing and saving one sample
//   overhead_pct       record_us / step_us x 100, a sample at every step
//   overhead_pct_10ms  the same at hxrecord's default interval of 0.01 s (one sample per 5 steps)
//   allocs_per_sample  heap allocations while capturing and saving (the goal is none)
//
// items_per_second is steps per second of the whole loop. The files go to a scratch directory
// and are restarted every 1000 samples (outside the timing) so that they stay small.

#include <benchmark/benchmark.h>
#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemStoredData.h"
#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "analysis/writers/HxXmlOutputWriter.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/mujoco/HxMujocoSimulation.h"
#include "tests/support/HxAllocationCounter.h"
#include "tests/support/HxScopedTempDir.h"
#include "tools/lib/HxRecord.h"
#include "tools/lib/HxRecordDefaultScene.h"

namespace {

// CPU time of the calling thread, microseconds.
double threadMicroseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) * 1e-3;
}

enum class Variant { Off, NoWriter, Text, Xml, Mrd, Matlab, Mathematica, All };

constexpr int kSamplesPerFile = 1000;
constexpr double kSceneDuration = 8.0;          // hxrecord's default: every path point is reached by then
constexpr double kStepsPerDefaultSample = 5.0;  // 0.01 s / 0.002 s

HxOutputWriterVector writersOf(Variant variant) {
  HxOutputWriterVector writers;
  if (variant == Variant::Text || variant == Variant::All) writers.pushBack(HxTextOutputWriter());
  if (variant == Variant::Xml || variant == Variant::All) writers.pushBack(HxXmlOutputWriter());
  if (variant == Variant::Mrd || variant == Variant::All) writers.pushBack(HxMrdOutputWriter());
  if (variant == Variant::Matlab || variant == Variant::All) writers.pushBack(HxMatlabOutputWriter());
  if (variant == Variant::Mathematica || variant == Variant::All) writers.pushBack(HxMathematicaOutputWriter());
  return writers;
}

void BM_HxRecord_Overhead(benchmark::State& state, Variant variant) {
  // The built-in scene and capture configuration, as hxrecord loads them.
  HxMujocoSimulation simulation;
  if (!simulation.loadString(hxRecordDefaultModel().text)) {
    state.SkipWithError("the built-in model does not load");
    return;
  }
  simulation.setDwellTime(HxRecordOptions().dwellTime);
  HxSystemDataCapture capture;
  std::vector<std::string> errors, warnings;
  if (!hxReadConfiguration(hxRecordDefaultCapture().path, &hxRecordDefaultCapture().text,
                           HxSimAnalysis::HxGeneralCaptureToken, capture, errors, warnings)) {
    state.SkipWithError("the built-in capture configuration does not read");
    return;
  }
  const HxScopedTempDir directory("bench-hxrecord");
  const std::string base = directory.file("run");

  const bool recording = variant != Variant::Off;
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(writersOf(variant));
  recorder.allocateStorage(capture);
  if (recording) recorder.beginSaveToFile(base);

  double stepTime = 0.0, recordTime = 0.0;
  std::uint64_t allocations = 0;
  int samplesInFile = 0;
  for (auto _ : state) {
    const double start = threadMicroseconds();
    simulation.step();
    const double stepped = threadMicroseconds();
    stepTime += stepped - start;
    if (recording) {
      const HxAllocationCounter counter;
      capture.captureData(simulation);
      recorder.saveCapturedData(simulation.time(), simulation.pathPointIndex(0), capture);
      allocations += counter.allocations();
      recordTime += threadMicroseconds() - stepped;
    }
    // Keep the scene moving and the files small, outside the measurement.
    if ((recording && ++samplesInFile == kSamplesPerFile) || simulation.time() >= kSceneDuration) {
      state.PauseTiming();
      if (recording && samplesInFile == kSamplesPerFile) {
        recorder.finishSaveToFile();
        recorder.beginSaveToFile(base);
        samplesInFile = 0;
      }
      if (simulation.time() >= kSceneDuration) simulation.reset();
      state.ResumeTiming();
    }
  }
  if (recording) recorder.finishSaveToFile();

  const double steps = static_cast<double>(state.iterations());
  const double stepUs = stepTime / steps;
  const double recordUs = recordTime / steps;
  state.SetItemsProcessed(state.iterations());
  state.counters["step_us"] = stepUs;
  state.counters["record_us"] = recordUs;
  state.counters["overhead_pct"] = stepUs > 0.0 ? 100.0 * recordUs / stepUs : 0.0;
  state.counters["overhead_pct_10ms"] = stepUs > 0.0 ? 100.0 * recordUs / stepUs / kStepsPerDefaultSample : 0.0;
  state.counters["allocs_per_sample"] = recording ? static_cast<double>(allocations) / steps : 0.0;
}

BENCHMARK_CAPTURE(BM_HxRecord_Overhead, Off, Variant::Off)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_HxRecord_Overhead, NoWriter, Variant::NoWriter)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_HxRecord_Overhead, Text, Variant::Text)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_HxRecord_Overhead, Xml, Variant::Xml)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_HxRecord_Overhead, Mrd, Variant::Mrd)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_HxRecord_Overhead, Matlab, Variant::Matlab)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_HxRecord_Overhead, Mathematica, Variant::Mathematica)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_HxRecord_Overhead, All, Variant::All)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
