// Recording one sample of 196 values (194 captured columns, time and path-point index) through
// the recorder into real files, with each writer alone and with all five together, beside a
// baseline measured in the same run that writes the same values once as shortest text
// (std::to_chars into a buffer, one fwrite per row). The configuration is that of two 7-joint
// manipulators: base position; joint position, velocity, acceleration and torque and the
// external force on every link; placement, velocity and acceleration of one end effector.
//
// StoreOnly and StoreAndText measure apart what every writer's sample shares: the recorder's
// stamping and storeData, and the record's text block made once per sample (the MRD writer
// needs no text: it narrows the record's reals). StoreAndStrings is the text as generic
// callers get it, copied into a vector of strings.
//
// Reported per benchmark: time per sample (one iteration is one sample), bytes written per
// second (the files' growth), and allocs_per_sample, the heap allocations per sample once the
// first sample has been written (the goal is 0). Files are restarted every few thousand
// samples (outside the timing) so that the temporary directory stays small.

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/storage/HxSystemStoredData.h"
#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "analysis/writers/HxXmlOutputWriter.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "bench/HxBenchScene.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/support/HxAllocationCounter.h"
#include "tests/support/HxScopedTempDir.h"

namespace {

namespace fs = std::filesystem;
using namespace HxSimAnalysis;

constexpr int kSamplesPerFile = 4096;

using Scene = HxBenchScene;

const Scene& scene() {
  static const Scene instance;
  return instance;
}

// A temporary directory for one benchmark's files, removed afterwards.
class BenchDir {
 public:
  explicit BenchDir(const std::string& name) : directory_("bench-writers-" + name) {}
  std::string base() const { return directory_.file("run"); }
  std::uintmax_t bytes() const {
    std::uintmax_t total = 0;
    for (const auto& entry : fs::directory_iterator(directory_.path())) total += entry.file_size();
    return total;
  }

 private:
  HxScopedTempDir directory_;
};

// Time of sample i: changes every sample, so the record's text is always renewed.
double sampleTime(std::int64_t i) { return 0.001 * static_cast<double>(i) + 1.0 / 3.0; }

void reportCounters(benchmark::State& state, std::uint64_t bytes, std::uint64_t allocations) {
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
  state.SetItemsProcessed(state.iterations());
  state.counters["allocs_per_sample"] =
      benchmark::Counter(static_cast<double>(allocations), benchmark::Counter::kAvgIterations);
}

// Records samples through the recorder with the given writers.
void recordWith(benchmark::State& state, const HxOutputWriterVector& writers, const std::string& name) {
  const Scene& s = scene();
  BenchDir dir(name);
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(writers);
  recorder.allocateStorage(s.capture);
  recorder.beginSaveToFile(dir.base());
  recorder.saveCapturedData(sampleTime(0), 0, s.capture);  // warms every buffer

  std::uint64_t bytes = 0;
  std::uint64_t allocations = 0;
  std::int64_t inFile = 0;
  std::int64_t i = 1;
  HxAllocationCounter counter;
  for (auto _ : state) {
    recorder.saveCapturedData(sampleTime(i), static_cast<unsigned int>(i & 7), s.capture);
    ++i;
    if (++inFile == kSamplesPerFile) {
      state.PauseTiming();
      allocations += counter.allocations();
      recorder.finishSaveToFile();
      bytes += dir.bytes();
      recorder.beginSaveToFile(dir.base());
      recorder.saveCapturedData(sampleTime(i), 0, s.capture);
      inFile = 0;
      counter.restart();
      state.ResumeTiming();
    }
  }
  allocations += counter.allocations();
  recorder.finishSaveToFile();
  bytes += dir.bytes();
  reportCounters(state, bytes, allocations);
}

template <class... Writers>
void recordWithWriters(benchmark::State& state, const char* name) {
  HxOutputWriterVector writers;
  (writers.pushBack(Writers()), ...);
  recordWith(state, writers, name);
}

void BM_Writers_Text(benchmark::State& state) { recordWithWriters<HxTextOutputWriter>(state, "text"); }
void BM_Writers_Xml(benchmark::State& state) { recordWithWriters<HxXmlOutputWriter>(state, "xml"); }
void BM_Writers_Mrd(benchmark::State& state) { recordWithWriters<HxMrdOutputWriter>(state, "mrd"); }
void BM_Writers_Matlab(benchmark::State& state) { recordWithWriters<HxMatlabOutputWriter>(state, "matlab"); }
void BM_Writers_Mathematica(benchmark::State& state) {
  recordWithWriters<HxMathematicaOutputWriter>(state, "mathematica");
}
void BM_Writers_AllFive(benchmark::State& state) {
  recordWithWriters<HxTextOutputWriter, HxXmlOutputWriter, HxMrdOutputWriter, HxMatlabOutputWriter,
                    HxMathematicaOutputWriter>(state, "all");
}

// What every writer's sample shares, measured apart: the recorder without writers (stamping
// and storeData only); the same followed by the record's text block, made once per sample for
// every writer that wants text (elementText); and followed instead by the texts copied into
// a vector of strings, as generic callers of getStringElements get them.
void BM_Writers_StoreOnly(benchmark::State& state) {
  const Scene& s = scene();
  HxSystemStoredData recorder;
  recorder.allocateStorage(s.capture);
  recorder.beginSaveToFile("unused");  // no writers: no file
  std::int64_t i = 1;
  HxAllocationCounter counter;
  for (auto _ : state) {
    recorder.saveCapturedData(sampleTime(i), static_cast<unsigned int>(i & 7), s.capture);
    ++i;
  }
  reportCounters(state, 0, counter.allocations());
}

// Stores one sample per iteration into a record shaped to the capture and hands the record to
// `use`; `use` runs once before the timing, so that what it fills is warm.
template <class Use>
void storeEach(benchmark::State& state, Use use) {
  const Scene& s = scene();
  HxSystemDataStorage record;
  s.capture.allocateStorage(record);
  use(record);
  std::int64_t i = 1;
  HxAllocationCounter counter;
  for (auto _ : state) {
    record.setTime(sampleTime(i));
    record.setPathPointIndex(static_cast<unsigned int>(i & 7));
    s.capture.storeData(record);
    use(record);
    ++i;
  }
  reportCounters(state, 0, counter.allocations());
}

void BM_Writers_StoreAndText(benchmark::State& state) {
  storeEach(state, [](const HxSystemDataStorage& record) { benchmark::DoNotOptimize(record.elementText()->chars); });
}

void BM_Writers_StoreAndStrings(benchmark::State& state) {
  std::vector<std::string> text;
  storeEach(state, [&text](const HxSystemDataStorage& record) {
    record.getStringElements(text);
    benchmark::DoNotOptimize(text.data());
  });
}

// The same values, written once as shortest text: to_chars into a row buffer, one fwrite per row.
void BM_Writers_Baseline(benchmark::State& state) {
  const Scene& s = scene();
  BenchDir dir("baseline");
  HxSystemDataStorage record;
  s.capture.allocateStorage(record);
  s.capture.storeData(record);
  std::vector<double> values;
  record.getRealElements(values, false);
  std::vector<char> row(values.size() * 32 + 1);

  const std::string path = dir.base() + ".csv";
  std::FILE* file = std::fopen(path.c_str(), "w");
  std::uint64_t bytes = 0;
  std::int64_t inFile = 0;
  std::int64_t i = 1;
  HxAllocationCounter counter;
  for (auto _ : state) {
    values[0] = sampleTime(i);
    values[1] = static_cast<double>(i & 7);
    ++i;
    char* p = row.data();
    char* const end = row.data() + row.size();
    for (std::size_t k = 0; k < values.size(); ++k) {
      p = std::to_chars(p, end, values[k]).ptr;
      *p++ = k + 1 < values.size() ? ',' : '\n';
    }
    std::fwrite(row.data(), 1, static_cast<std::size_t>(p - row.data()), file);
    bytes += static_cast<std::uint64_t>(p - row.data());
    if (++inFile == kSamplesPerFile) {
      state.PauseTiming();
      std::fclose(file);
      file = std::fopen(path.c_str(), "w");
      inFile = 0;
      state.ResumeTiming();
    }
  }
  const std::uint64_t allocations = counter.allocations();
  std::fclose(file);
  reportCounters(state, bytes, allocations);
}

BENCHMARK(BM_Writers_Baseline)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Writers_StoreOnly)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Writers_StoreAndText)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Writers_StoreAndStrings)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Writers_Text)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Writers_Xml)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Writers_Mrd)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Writers_Matlab)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Writers_Mathematica)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Writers_AllFive)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
