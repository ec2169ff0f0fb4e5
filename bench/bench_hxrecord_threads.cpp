// What a whole hxrecord recording of the default scene costs in wall time, with one thread and
// with the files written on a second thread (--threads 1 and 2), against the same simulation
// stepped with recording off. Each iteration is one recording through the session hxrecord's
// main runs (HxRecordSession::record: the manifest and its watcher, hxrecord started as one; the
// five files of the default writer list opened, every sample captured and saved, the files
// finished, the summary); loading and checking the scene (prepare) is left out, as is making the
// output directory.
//
// Benchmarks (real time, one recording per iteration):
//   Threads/Off         the prepared session's simulation stepped over the whole duration, no
//                       capture and no writer: the floor
//   Threads/One         record() with --threads 1
//   Threads/Two         record() with --threads 2
//
// Counters (One and Two):
//   vs_off              the recording's wall time over that of the floor, the floor stepped
//                       right after each recording (outside the timing) in the same iteration
//   loop_vs_off         the same for the summary's wall time: from the files' start to their
//                       finish, without the manifest, the watcher and the summary
//   step_cpu_vs_off     the CPU time of the thread that steps (the one that calls record(),
//                       set-up and manifest included) over the floor's: the wall time a
//                       recording approaches when the recording thread has a processor of its
//                       own, whatever else runs on the machine
//   record_cpu_vs_off   Two only: the CPU time of the recording thread over the floor's; below
//                       step_cpu_vs_off, the recording thread keeps up
//   samples             samples per recording
//
// The files go to a scratch directory, each recording replacing the last. With
// --benchmark_min_time below 0.05 s (the CTest smoke run) the recordings last 0.2 s of
// simulated time instead of hxrecord's default 8 s. On a machine shared with other work, judge
// by the ratios, medians of rounds in changing order:
//   bench_hxrecord_threads --benchmark_repetitions=9 --benchmark_enable_random_interleaving=true
//                          --benchmark_report_aggregates_only=true

#include <benchmark/benchmark.h>
#include <time.h>

#include <chrono>
#include <memory>
#include <string>

#include "bench/HxBenchSupport.h"
#include "tests/support/HxScopedTempDir.h"
#include "tools/lib/HxRecord.h"

namespace {

enum class Variant { Off, One, Two };

double g_duration = HxRecordOptions().duration;

double wallSeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// CPU time of the calling thread, seconds.
double threadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// A prepared session of the default scene recording into `base`, with `threads` threads.
std::unique_ptr<HxRecordSession> preparedSession(const std::string& base, unsigned threads) {
  HxRecordOptions options;
  options.quiet = true;
  options.duration = g_duration;
  options.outputBase = base;
  options.threads = threads;
  options.watcherProgram = HX_RECORD_BINARY;
  auto session = std::make_unique<HxRecordSession>(options);
  if (session->prepare() != HxRecordStatus::Success) return nullptr;
  return session;
}

// Steps the simulation of `session` over the whole recording, as record() does without a sample.
void stepThrough(HxRecordSession& session) {
  HxMujocoSimulation& simulation = session.simulation();
  for (HxU32 step = 1; step <= session.totalSteps(); ++step) {
    if (!simulation.step()) break;
  }
}

void BM_Threads(benchmark::State& state, Variant variant) {
  const HxScopedTempDir directory("bench-hxrecord-threads");
  const std::string base = directory.file("run");
  double recorded = 0.0, loops = 0.0, steppingCpu = 0.0, processCpu = 0.0, floors = 0.0, floorsCpu = 0.0;
  HxU32 samples = 0;
  // Made and taken down while the timing is paused.
  std::unique_ptr<HxRecordSession> session;
  for (auto _ : state) {
    state.PauseTiming();
    session = preparedSession(base, variant == Variant::Two ? 2 : 1);
    if (session == nullptr) {
      state.SkipWithError("the default scene does not prepare");
      return;
    }
    state.ResumeTiming();
    if (variant == Variant::Off) {
      stepThrough(*session);
      continue;
    }
    const double wallStart = wallSeconds();
    const double processStart = HxBenchStopwatch::now();
    const double threadStart = threadSeconds();
    const HxRecordStatus status = session->record();
    steppingCpu += threadSeconds() - threadStart;
    processCpu += HxBenchStopwatch::now() - processStart;
    recorded += wallSeconds() - wallStart;
    state.PauseTiming();
    if (status != HxRecordStatus::Success) {
      state.SkipWithError("the recording failed");
      return;
    }
    loops += session->summary().wallTime;
    samples = session->summary().samples;
    // The floor, in the same conditions.
    session = preparedSession(base, 1);
    const double floorStart = wallSeconds();
    const double floorCpuStart = threadSeconds();
    stepThrough(*session);
    floorsCpu += threadSeconds() - floorCpuStart;
    floors += wallSeconds() - floorStart;
    state.ResumeTiming();
  }
  if (variant == Variant::Off || floors <= 0.0 || floorsCpu <= 0.0) return;
  state.counters["vs_off"] = recorded / floors;
  state.counters["loop_vs_off"] = loops / floors;
  state.counters["step_cpu_vs_off"] = steppingCpu / floorsCpu;
  if (variant == Variant::Two) state.counters["record_cpu_vs_off"] = (processCpu - steppingCpu) / floorsCpu;
  state.counters["samples"] = samples;
}

}  // namespace

int main(int argc, char** argv) {
  if (hxBenchIsShortRun(argc, argv)) g_duration = 0.2;
  for (const auto& [name, variant] :
       {std::make_pair("BM_Threads/Off", Variant::Off), std::make_pair("BM_Threads/One", Variant::One),
        std::make_pair("BM_Threads/Two", Variant::Two)}) {
    benchmark::RegisterBenchmark(name, BM_Threads, variant)->Unit(benchmark::kMillisecond)->UseRealTime();
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
