// The whole per-sample path a user pays for, on a table of 202 columns x 20,000 rows of smooth
// trajectories with noise (every value changes from one sample to the next): each row is set
// into a scripted simulation and recorded through the real path, captureData and then the
// recorder's saveCapturedData into real files, beside floors measured in the same program on
// the same values.
//
// The system: two 7-joint manipulators with one end effector each, dynamics on. Per
// manipulator 100 columns: base position (7), centre of mass (3); joint position, velocity,
// acceleration, torque and control torque and the external force (6) on every link (7 x 11);
// placement (7) and velocity (6) of the end effector. With the time and the path-point index,
// which the recorder writes as the first two columns, a row has 202 values.
//
// Benchmarks, one iteration per sample (one row of the table):
//   Path/<writer>      set the row into the simulation, captureData, saveCapturedData with one
//                      writer alone (Csv, Xml, Mrd, Matlab, Mathematica) or AllFive
//   Path/Hdf5          the same with the HDF5 writer alone, uncompressed (when it is built)
//   Path/NoWriter      the same without writers: capture and store only
//   Writers/<writer>   the writers alone: the row's values put straight into a sample record,
//                      which the writers write as the recorder drives them
//   Floor/ToChars      the row as shortest text (std::to_chars, commas, a line end) into a
//                      1 MiB buffer, handed to write(2) when full. Its bytes are the CSV
//                      writer's data rows exactly: checked before any benchmark runs, and the
//                      program stops if they differ
//   Floor/Float32      the row narrowed to big-endian float32 into a 1 MiB buffer + write(2);
//                      the MRD writer's sample bytes, checked likewise
//   Floor/Doubles      the row's doubles copied (memcpy) into a 1 MiB buffer + write(2)
//   Floor/Copy         the row's doubles copied into a record of 202 doubles, nothing written
//   Fill               setting the row into the simulation alone: part of every Path figure
//
// Counters:
//   time_per_value     CPU time per value, in seconds ("66.8n" is 66.8 ns); items are values
//   vs_floor           Path and Writers: its time per value over its floor's, the floor run in
//                      the same benchmark over as many rows, 500 rows at a time between every
//                      500 recorded, so that both meet the machine in the same state (text
//                      writers and AllFive: ToChars; Mrd: Float32; Hdf5: Doubles; NoWriter: Copy)
//   allocs_per_sample  heap allocations per sample once recording runs (the goal is none)
//   system_share       Path and Floor: the part of the CPU time spent in the kernel (mostly
//                      copying into the page cache), which no change of the path removes
//
// The files go to a scratch directory. Each pass through the table starts them afresh, outside
// the timing, with the table's first row recorded before the timing resumes (the writers'
// buffers are warm from then on); a file never holds more than the table. With
// --benchmark_min_time below 0.05 s (the CTest smoke run) the table has 1,000 rows so that the
// program's set-up stays short. Figures, medians of rounds in changing order:
//   bench_record_path --benchmark_repetitions=7 --benchmark_enable_random_interleaving=true
//                     --benchmark_report_aggregates_only=true

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/storage/HxSystemStoredData.h"
#ifdef HX_BENCH_HDF5
#include "analysis/hdf5/HxHdf5OutputWriter.h"
#endif
#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/writers/HxRecordingFileStream.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "analysis/writers/HxXmlOutputWriter.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "bench/HxBenchSupport.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/support/HxAllocationCounter.h"
#include "tests/support/HxScopedTempDir.h"

namespace {

using namespace HxSimAnalysis;

constexpr HxU32 kManipulators = 2;
constexpr HxU32 kJoints = 7;

// Where a manipulator's quantities sit among its columns, in the order a sample lists them
// (the manipulator's own types, then link by link, then its end effector).
constexpr std::size_t kBasePosition = 0;  // translation x, y, z, quaternion w, x, y, z
constexpr std::size_t kCenterOfMass = 7;  // x, y, z
constexpr std::size_t kFirstLink = 10;    // then kPerLink columns per link:
constexpr std::size_t kPerLink = 11;      //   position, velocity, acceleration, torque,
                                          //   control torque, external force (6)
constexpr std::size_t kEndEffectorPlacement = kFirstLink + kJoints * kPerLink;  // as the base
constexpr std::size_t kEndEffectorVelocity = kEndEffectorPlacement + 7;         // 6 columns
constexpr std::size_t kPerManipulator = kEndEffectorVelocity + 6;
constexpr std::size_t kColumns = 2 + kManipulators * kPerManipulator;
static_assert(kColumns == 202, "the table has 202 columns");

constexpr std::size_t kFullRows = 20000;
constexpr std::size_t kSmokeRows = 1000;
constexpr std::size_t kCheckedRows = 500;
constexpr double kInterval = 0.01;  // simulated seconds between samples, hxrecord's default
constexpr HxU32 kPathPoints = 8;

// ---------------------------------------------------------------------------------------------
// The table: row r holds the time, the path-point index and the 200 captured values, in the
// order of the columns of a sample.

class Table {
 public:
  explicit Table(std::size_t rows) : rows_(rows), values_(rows * kColumns) { generate(); }

  std::size_t rows() const { return rows_; }
  const double* row(std::size_t r) const { return values_.data() + r * kColumns; }
  /// Reads rows `first` to `first + count - 1` (as far as there are rows), a value per cache
  /// line, so that they come from the nearest caches when next read.
  void warm(std::size_t first, std::size_t count) const {
    double sum = 0.0;
    const std::size_t end = std::min(rows_, first + count) * kColumns;
    for (std::size_t i = first * kColumns; i < end; i += 8) sum += values_[i];
    benchmark::DoNotOptimize(sum);
  }

 private:
  // One smooth signal of unit scale: a slow sine and a faster ripple. Noise is added apart.
  struct Signal {
    double frequency, phase, rippleFrequency, ripplePhase;
    double at(double t) const {
      return 0.8 * std::sin(frequency * t + phase) + 0.2 * std::sin(rippleFrequency * t + ripplePhase);
    }
  };

  // The scale of a manipulator's column `c` in SI units: metres, radians, newtons and so on.
  static double scaleOf(std::size_t c) {
    if (c < kCenterOfMass) return 0.2;  // base translation (the quaternion is made apart)
    if (c < kFirstLink) return 0.3;
    if (c < kEndEffectorPlacement) {
      static constexpr double kLinkScales[kPerLink] = {2.0, 1.5, 12.0, 40.0, 40.0, 60.0, 60.0, 60.0, 8.0, 8.0, 8.0};
      return kLinkScales[(c - kFirstLink) % kPerLink];
    }
    if (c < kEndEffectorVelocity) return 0.6;
    return c < kEndEffectorVelocity + 3 ? 0.5 : 2.0;
  }

  void generate() {
    std::mt19937_64 random(0x5eed2024);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    std::normal_distribution<double> noise(0.0, 1.0);
    std::vector<Signal> signals(kColumns);
    for (Signal& s : signals) {
      s.frequency = 0.3 + 2.7 * uniform(random);  // rad/s
      s.phase = 6.283 * uniform(random);
      s.rippleFrequency = s.frequency * (3.0 + 2.0 * uniform(random));
      s.ripplePhase = 6.283 * uniform(random);
    }

    double time = 0.0;
    for (std::size_t r = 0; r < rows_; ++r) {
      double* row = values_.data() + r * kColumns;
      row[0] = time;
      row[1] = static_cast<double>(r * kPathPoints / rows_);
      for (HxU32 m = 0; m < kManipulators; ++m) {
        const std::size_t first = 2 + m * kPerManipulator;
        for (std::size_t c = 0; c < kPerManipulator; ++c) {
          const double scale = scaleOf(c);
          row[first + c] = scale * (signals[first + c].at(time) + 1e-3 * noise(random));
        }
        // The placements' quaternions: unit quaternions turning smoothly about a wandering axis.
        for (const std::size_t placement : {kBasePosition, kEndEffectorPlacement}) {
          const std::size_t q = first + placement + 3;
          const double angle = 1.5 + signals[q].at(time) + 1e-3 * noise(random);
          double axis[3] = {1.0 + 0.5 * signals[q + 1].at(time), 0.5 * signals[q + 2].at(time),
                            0.3 + 0.5 * signals[q + 3].at(time)};
          const double norm = std::sqrt(axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]);
          row[q] = std::cos(0.5 * angle);
          for (int k = 0; k < 3; ++k) row[q + 1 + k] = std::sin(0.5 * angle) * axis[k] / norm;
        }
      }
      time += kInterval;  // accumulated, as a simulation's clock is
    }
  }

  std::size_t rows_;
  std::vector<double> values_;
};

// ---------------------------------------------------------------------------------------------
// The scripted simulation and the capture configuration over it. fill() sets a row's values
// where the captured types read them, in place (no allocation), so that captureData gives
// exactly the row back.

class Scene {
 public:
  Scene() {
    simulation_.setDynamicsEnabled(true);
    for (HxU32 m = 0; m < kManipulators; ++m) {
      const HxIndividualManipulator& arm = simulation_.manipulators()[m];
      capture_.addManipulatorDataCaptureType(m, HxBasePositionDataCaptureTypeToken);
      capture_.addManipulatorDataCaptureType(m, HxCenterOfMassDataCaptureTypeToken);
      for (const HxToken* token : {&HxJointPositionDataCaptureTypeToken, &HxJointVelocityDataCaptureTypeToken,
                                   &HxJointAccelerationDataCaptureTypeToken, &HxJointTorqueDataCaptureTypeToken,
                                   &HxControlTorqueDataCaptureTypeToken, &HxExternalForceDataCaptureTypeToken}) {
        capture_.addLinkDataCaptureType(m, *token, arm);
      }
      capture_.addEndEffectorDataCaptureType(m, 0u, HxEndEffectorPlacementDataCaptureTypeToken);
      capture_.addEndEffectorDataCaptureType(m, 0u, HxEndEffectorVelocityDataCaptureTypeToken);
    }
  }

  const HxSystemDataCapture& capture() const { return capture_; }

  /// Sets the captured values of `row` into the simulation.
  void fill(const double* row) {
    for (HxU32 m = 0; m < kManipulators; ++m) {
      const double* v = row + 2 + m * kPerManipulator;
      HxManipulatorActiveState& active = simulation_.activeState(m);
      active.mutablePositionState().setCoordSystemXform(placementAt(v + kBasePosition));
      simulation_.setCenterOfMass(m, HxVector(v[kCenterOfMass], v[kCenterOfMass + 1], v[kCenterOfMass + 2]));
      std::vector<double>& positions = active.mutablePositionState().mutableJointPositions();
      std::vector<double>& velocities = active.mutableVelocityState().mutableJointVelocities();
      std::vector<double>& accelerations = simulation_.individualSimulator(m)
                                               .mutableActiveState()
                                               .mutableAccelerationState()
                                               .mutableJointAccelerations();
      std::vector<double>& torques = simulation_.individualSimulator(m).mutableJointTorques();
      std::vector<double>& controlTorques = simulation_.torque(m).mutableValues();
      std::vector<HxGeneralForce>& forces = simulation_.externalForce(m).mutableForces();
      for (HxU32 j = 0; j < kJoints; ++j) {
        const double* link = v + kFirstLink + j * kPerLink;
        positions[j] = link[0];
        velocities[j] = link[1];
        accelerations[j] = link[2];
        torques[j] = link[3];
        controlTorques[j] = link[4];
        forces[j] = HxGeneralForce(link[5], link[6], link[7], link[8], link[9], link[10]);
      }
      simulation_.setEndEffectorPlacement(m, 0, HxEndEffectorPlacement(placementAt(v + kEndEffectorPlacement)));
      const double* velocity = v + kEndEffectorVelocity;
      simulation_.setEndEffectorVelocity(
          m, 0, HxGeneralMotion(velocity[0], velocity[1], velocity[2], velocity[3], velocity[4], velocity[5]));
    }
  }

  /// One sample of `row` through the real path: fill, captureData, saveCapturedData.
  void record(const double* row, HxSystemStoredData& recorder) {
    fill(row);
    capture_.captureData(simulation_);
    recorder.saveCapturedData(row[0], static_cast<unsigned int>(row[1]), capture_);
  }

 private:
  static HxCoordSystemXform placementAt(const double* v) {
    return HxCoordSystemXform(HxVector(v[0], v[1], v[2]), HxOrientation(v[3], v[4], v[5], v[6]));
  }

  HxScriptedSimulation simulation_{kManipulators, kJoints, 1};
  HxSystemDataCapture capture_;
};

// The table and the scene, made once in main() before the benchmarks run.
std::unique_ptr<Table> theTable;
std::unique_ptr<Scene> theScene;

// ---------------------------------------------------------------------------------------------
// The floors: the least any program spends to turn the same rows into the same kind of file.

class Floor {
 public:
  enum Kind { ToChars, Float32, Doubles, Copy };

  /// A floor writing into `path` (made or emptied); Copy writes nothing.
  Floor(Kind kind, const std::string& path) : kind_(kind), buffer_(kBufferSize) {
    if (kind_ != Copy) file_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  }
  ~Floor() {
    if (file_ >= 0) ::close(file_);
  }
  Floor(const Floor&) = delete;
  Floor& operator=(const Floor&) = delete;

  /// Appends one row of kColumns values.
  void put(const double* row) {
    switch (kind_) {
      case ToChars: {
        if (kBufferSize - used_ < kColumns * kLongestText) flush();
        char* const begin = buffer_.data() + used_;
        char* const end = buffer_.data() + kBufferSize;
        char* p = begin;
        for (std::size_t k = 0; k < kColumns; ++k) {
          p = std::to_chars(p, end, row[k]).ptr;
          *p++ = ',';
        }
        p[-1] = '\n';
        used_ += static_cast<std::size_t>(p - begin);
        break;
      }
      case Float32: {
        if (kBufferSize - used_ < kColumns * 4) flush();
        unsigned char* p = reinterpret_cast<unsigned char*>(buffer_.data() + used_);
        for (std::size_t k = 0; k < kColumns; ++k) {
          const float narrowed = static_cast<float>(row[k]);
          std::uint32_t bits;
          std::memcpy(&bits, &narrowed, sizeof bits);
          bits = __builtin_bswap32(bits);
          std::memcpy(p, &bits, sizeof bits);
          p += 4;
        }
        used_ += kColumns * 4;
        break;
      }
      case Doubles:
        if (kBufferSize - used_ < kColumns * sizeof(double)) flush();
        std::memcpy(buffer_.data() + used_, row, kColumns * sizeof(double));
        used_ += kColumns * sizeof(double);
        break;
      case Copy:
        std::memcpy(record_, row, sizeof record_);
        benchmark::ClobberMemory();
        break;
    }
  }

  /// Writes what is buffered and starts the file afresh.
  void restart() {
    flush();
    if (file_ >= 0 && (::ftruncate(file_, 0) != 0 || ::lseek(file_, 0, SEEK_SET) != 0)) failed_ = true;
  }
  /// Writes what is buffered.
  void flush() {
    const char* data = buffer_.data();
    while (used_ > 0 && !failed_) {
      const ssize_t written = ::write(file_, data, used_);
      if (written <= 0) {
        failed_ = true;
      } else {
        data += written;
        used_ -= static_cast<std::size_t>(written);
      }
    }
    used_ = 0;
  }
  /// Whether opening or a write failed.
  bool failed() const { return failed_ || (kind_ != Copy && file_ < 0); }

 private:
  static constexpr std::size_t kBufferSize = 1 << 20;
  static constexpr std::size_t kLongestText = 25;  // "-2.2250738585072014e-308" and its comma

  Kind kind_;
  std::vector<char> buffer_;
  std::size_t used_ = 0;
  int file_ = -1;
  bool failed_ = false;
  double record_[kColumns] = {};
};

// A floor run beside a benchmark, a chunk at a time: rows 1 to the last, round the table, the
// file started afresh outside the time at the end of each pass, as the benchmark's own passes.
class FloorBeside {
 public:
  explicit FloorBeside(Floor& floor) : floor_(floor) {}

  /// Puts the next `rows` rows, timed.
  void run(std::uint64_t rows) {
    const Table& table = *theTable;
    watch_.start();
    for (std::uint64_t i = 0; i < rows; ++i) {
      if (next_ == table.rows()) {
        watch_.stop();
        floor_.restart();
        next_ = 1;
        watch_.start();
      }
      floor_.put(table.row(next_++));
    }
    watch_.stop();
  }
  /// Writes what is buffered, timed, and returns the CPU seconds of all the runs.
  double finish() {
    watch_.start();
    floor_.flush();
    watch_.stop();
    return watch_.seconds();
  }

 private:
  Floor& floor_;
  std::size_t next_ = 1;
  HxBenchStopwatch watch_;
};

// Rows between two runs of the floor: a few milliseconds of either, so that both meet the
// machine (its caches, the kernel's write-back of earlier files) in the same state.
constexpr std::uint64_t kRowsPerChunk = 500;

// What the benchmark loop of a path or of the writers measured.
struct Timing {
  HxBenchStopwatch watch;
  double floorSeconds = 0.0;
  std::uint64_t allocations = 0;
};

// The benchmark loop shared by Path and Writers: `record(row)` per iteration over rows 1 to the
// last of the table, round and round; at the end of a pass `restart()` starts the files afresh
// and records row 0, outside the time. Every kRowsPerChunk rows, and at the end, `floor` takes
// as many rows, outside the benchmark's time. Allocations are counted while recording only.
// The floor reads the rows just recorded, from near caches; the rows to record next are read
// ahead of them outside the time, so that both take their input from the same caches (as a
// recording takes a simulation's values, which the step has just written), not the recording
// from main memory alone.
template <class Record, class Restart>
Timing runBesideFloor(benchmark::State& state, Floor& floor, Record record, Restart restart) {
  const Table& table = *theTable;
  FloorBeside beside(floor);
  Timing timing;
  std::size_t next = 1;
  std::uint64_t sinceFloor = 0;
  HxAllocationCounter counter;
  // Leaves the recording's time for a while (the floor, a pass's restart) and comes back.
  auto aside = [&](auto work) {
    timing.watch.stop();
    timing.allocations += counter.allocations();
    state.PauseTiming();
    work();
    state.ResumeTiming();
    counter.restart();
    timing.watch.start();
  };
  table.warm(next, kRowsPerChunk);
  timing.watch.start();
  for (auto _ : state) {
    if (next == table.rows()) {
      aside([&] {
        restart();
        table.warm(1, kRowsPerChunk - sinceFloor);
      });
      next = 1;
    }
    record(table.row(next++));
    if (++sinceFloor == kRowsPerChunk) {
      aside([&] {
        beside.run(kRowsPerChunk);
        table.warm(next, kRowsPerChunk);
      });
      sinceFloor = 0;
    }
  }
  timing.watch.stop();
  timing.allocations += counter.allocations();
  beside.run(sinceFloor);
  timing.floorSeconds = beside.finish();
  return timing;
}

// ---------------------------------------------------------------------------------------------
// The benchmarks.

enum class Writers { None, Csv, Xml, Mrd, Matlab, Mathematica, AllFive, Hdf5 };

HxOutputWriterVector writersOf(Writers which) {
  const bool all = which == Writers::AllFive;
  HxOutputWriterVector writers;
  if (all || which == Writers::Csv) writers.pushBack(HxTextOutputWriter());
  if (all || which == Writers::Xml) writers.pushBack(HxXmlOutputWriter());
  if (all || which == Writers::Mrd) writers.pushBack(HxMrdOutputWriter());
  if (all || which == Writers::Matlab) writers.pushBack(HxMatlabOutputWriter());
  if (all || which == Writers::Mathematica) writers.pushBack(HxMathematicaOutputWriter());
#ifdef HX_BENCH_HDF5
  if (which == Writers::Hdf5) writers.pushBack(HxHdf5OutputWriter());  // uncompressed, default chunks
#endif
  return writers;
}

Floor::Kind floorOf(Writers which) {
  if (which == Writers::None) return Floor::Copy;
  if (which == Writers::Hdf5) return Floor::Doubles;
  return which == Writers::Mrd ? Floor::Float32 : Floor::ToChars;
}

void reportPerValue(benchmark::State& state, std::uint64_t samples) {
  const double values = static_cast<double>(samples * kColumns);
  state.SetItemsProcessed(static_cast<std::int64_t>(samples * kColumns));
  state.counters["time_per_value"] =
      benchmark::Counter(values, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// Reports a loop's figures beside its floor's.
void reportBesideFloor(benchmark::State& state, const Timing& timing) {
  const std::uint64_t samples = static_cast<std::uint64_t>(state.iterations());
  const double seconds = timing.watch.seconds();
  reportPerValue(state, samples);
  state.counters["vs_floor"] = timing.floorSeconds > 0.0 ? seconds / timing.floorSeconds : 0.0;
  state.counters["system_share"] = seconds > 0.0 ? timing.watch.systemSeconds() / seconds : 0.0;
  state.counters["allocs_per_sample"] = static_cast<double>(timing.allocations) / static_cast<double>(samples);
}

void BM_Path(benchmark::State& state, Writers which) {
  const Table& table = *theTable;
  Scene& scene = *theScene;
  const HxScopedTempDir directory("bench-record-path");
  const std::string base = directory.file("run");
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(writersOf(which));
  recorder.allocateStorage(scene.capture());
  Floor floor(floorOf(which), directory.file("floor"));

  // A pass through the table: fresh files, the first row recorded to warm every buffer.
  auto beginPass = [&]() {
    recorder.beginSaveToFile(base);
    scene.record(table.row(0), recorder);
  };
  beginPass();
  const Timing timing = runBesideFloor(
      state, floor, [&](const double* row) { scene.record(row, recorder); },
      [&]() {
        recorder.finishSaveToFile();
        beginPass();
      });
  recorder.finishSaveToFile();
  if (recorder.failedOutputFile() >= 0 || floor.failed()) {
    state.SkipWithError("a recording file or the floor's file failed");
    return;
  }
  reportBesideFloor(state, timing);
}

// The writers alone: each row's values are put straight into a sample record, which the writers
// then write as the recorder drives them (a file each, through the recorder's kind of file
// stream), against the same floor as the path. The record's text is made lazily, when the first
// text writer asks for it, so the text writers' figure includes making the text once.
void BM_Writers(benchmark::State& state, Writers which) {
  const Table& table = *theTable;
  const HxScopedTempDir directory("bench-record-writers");
  HxOutputWriterVector writers = writersOf(which);
  HxSystemDataVector components;
  components.pushBack(theScene->capture());
  components.pushBack(HxSystemDataStorage());
  HxSystemDataStorage& record = dynamic_cast<HxSystemDataStorage&>(components[1]);
  theScene->capture().allocateStorage(record);

  std::vector<std::unique_ptr<HxRecordingFileStream>> streams;
  auto begin = [&]() {
    streams.clear();
    for (HxU32 i = 0; i < writers.size(); ++i) {
      streams.emplace_back(new HxRecordingFileStream);
      writers[i].openFile(directory.file("run") + writers[i].fileExtension(), *streams.back());
      writers[i].initialize(components, *streams.back());
      writers[i].writeComponentOpening(components[0], *streams.back());
      writers[i].writeDataComponent(components[0], *streams.back());
      writers[i].writeComponentClosing(components[0], *streams.back());
      writers[i].writeComponentOpening(record, *streams.back());
    }
  };
  auto put = [&](const double* row) {
    record.setTime(row[0]);
    record.setPathPointIndex(static_cast<unsigned int>(row[1]));
    std::memcpy(record.beginDirectStore() + 2, row + 2, (kColumns - 2) * sizeof(double));
    for (HxU32 i = 0; i < writers.size(); ++i) writers[i].writeDataComponent(record, *streams[i]);
  };
  auto finish = [&]() {
    for (HxU32 i = 0; i < writers.size(); ++i) {
      writers[i].writeComponentClosing(record, *streams[i]);
      writers[i].finalize(components, *streams[i]);
      streams[i]->close();
    }
  };
  Floor floor(floorOf(which), directory.file("floor"));
  begin();
  put(table.row(0));
  const Timing timing = runBesideFloor(state, floor, put, [&]() {
    finish();
    begin();
    put(table.row(0));
  });
  finish();
  for (const auto& stream : streams) {
    if (!stream->good() && !stream->eof()) {
      state.SkipWithError("a writer's file failed");
      return;
    }
  }
  if (floor.failed()) {
    state.SkipWithError("the floor's file failed");
    return;
  }
  reportBesideFloor(state, timing);
}

void BM_Floor(benchmark::State& state, Floor::Kind kind) {
  const Table& table = *theTable;
  const HxScopedTempDir directory("bench-record-floor");
  Floor floor(kind, directory.file("floor"));
  std::size_t next = 0;
  HxBenchStopwatch watch;
  HxAllocationCounter counter;
  watch.start();
  for (auto _ : state) {
    if (next == table.rows()) {
      watch.stop();
      state.PauseTiming();
      floor.restart();
      next = 0;
      state.ResumeTiming();
      watch.start();
    }
    floor.put(table.row(next++));
  }
  floor.flush();
  watch.stop();
  const std::uint64_t allocations = counter.allocations();
  if (floor.failed()) {
    state.SkipWithError("the floor's file failed");
    return;
  }
  const std::uint64_t samples = static_cast<std::uint64_t>(state.iterations());
  reportPerValue(state, samples);
  state.counters["allocs_per_sample"] = static_cast<double>(allocations) / static_cast<double>(samples);
  state.counters["system_share"] = watch.seconds() > 0.0 ? watch.systemSeconds() / watch.seconds() : 0.0;
}

void BM_Fill(benchmark::State& state) {
  const Table& table = *theTable;
  Scene& scene = *theScene;
  std::size_t next = 0;
  for (auto _ : state) {
    if (next == table.rows()) next = 0;
    scene.fill(table.row(next++));
    benchmark::ClobberMemory();
  }
  reportPerValue(state, static_cast<std::uint64_t>(state.iterations()));
}

BENCHMARK_CAPTURE(BM_Path, Csv, Writers::Csv)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Path, Xml, Writers::Xml)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Path, Mrd, Writers::Mrd)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Path, Matlab, Writers::Matlab)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Path, Mathematica, Writers::Mathematica)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Path, AllFive, Writers::AllFive)->Unit(benchmark::kMicrosecond);
#ifdef HX_BENCH_HDF5
BENCHMARK_CAPTURE(BM_Path, Hdf5, Writers::Hdf5)->Unit(benchmark::kMicrosecond);
#endif
BENCHMARK_CAPTURE(BM_Path, NoWriter, Writers::None)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Writers, Csv, Writers::Csv)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Writers, Xml, Writers::Xml)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Writers, Mrd, Writers::Mrd)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Writers, Matlab, Writers::Matlab)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Writers, Mathematica, Writers::Mathematica)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Writers, AllFive, Writers::AllFive)->Unit(benchmark::kMicrosecond);
#ifdef HX_BENCH_HDF5
BENCHMARK_CAPTURE(BM_Writers, Hdf5, Writers::Hdf5)->Unit(benchmark::kMicrosecond);
#endif
BENCHMARK_CAPTURE(BM_Floor, ToChars, Floor::ToChars)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Floor, Float32, Floor::Float32)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Floor, Doubles, Floor::Doubles)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Floor, Copy, Floor::Copy)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Fill)->Unit(benchmark::kMicrosecond);

// ---------------------------------------------------------------------------------------------
// Set-up.

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Offset of the first difference of two texts (the shorter one's size when one is the other's
// beginning).
std::size_t firstDifference(const std::string& a, const std::string& b) {
  std::size_t i = 0;
  while (i < a.size() && i < b.size() && a[i] == b[i]) ++i;
  return i;
}

// Records the table's first rows through the CSV and MRD writers and puts them through the
// ToChars and Float32 floors: the floors must give the writers' sample bytes exactly (the CSV
// file's data rows follow its label line; the MRD file's samples are its last bytes). Returns
// an empty text when they do, else what differs.
std::string checkFloors() {
  const Table& table = *theTable;
  const std::size_t rows = std::min(table.rows(), kCheckedRows);
  const HxScopedTempDir directory("bench-record-check");
  const std::string base = directory.file("run");
  {
    HxSystemStoredData recorder;
    HxOutputWriterVector writers;
    writers.pushBack(HxTextOutputWriter());
    writers.pushBack(HxMrdOutputWriter());
    recorder.setOutputWriterVector(writers);
    recorder.allocateStorage(theScene->capture());
    recorder.beginSaveToFile(base);
    for (std::size_t r = 0; r < rows; ++r) theScene->record(table.row(r), recorder);
    recorder.finishSaveToFile();
  }
  for (const Floor::Kind kind : {Floor::ToChars, Floor::Float32}) {
    const std::string path = directory.file(kind == Floor::ToChars ? "floor.csv" : "floor.mrd");
    {
      Floor floor(kind, path);
      for (std::size_t r = 0; r < rows; ++r) floor.put(table.row(r));
      floor.flush();
    }
    const std::string floorBytes = readFile(path);
    std::string written = readFile(base + (kind == Floor::ToChars ? ".csv" : ".mrd"));
    if (kind == Floor::ToChars) {
      written.erase(0, written.find('\n') + 1);
    } else {
      written.erase(0, written.size() - std::min(written.size(), rows * kColumns * 4));
    }
    if (written != floorBytes) {
      return std::string(kind == Floor::ToChars ? "the to_chars rows differ from the CSV writer's"
                                                : "the float32 rows differ from the MRD writer's") +
             " at byte " + std::to_string(firstDifference(written, floorBytes)) + " of " +
             std::to_string(written.size());
    }
  }
  return std::string();
}

}  // namespace

int main(int argc, char** argv) {
  theTable = std::make_unique<Table>(hxBenchIsShortRun(argc, argv) ? kSmokeRows : kFullRows);
  theScene = std::make_unique<Scene>();
  if (theScene->capture().elementSize() + 2 != kColumns) {
    std::fprintf(stderr, "bench_record_path: the capture configuration has %u columns, not %zu\n",
                 theScene->capture().elementSize() + 2, kColumns);
    return 1;
  }
  const std::string difference = checkFloors();
  if (!difference.empty()) {
    std::fprintf(stderr, "bench_record_path: %s\n", difference.c_str());
    return 1;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::AddCustomContext("table",
                              std::to_string(theTable->rows()) + " rows x " + std::to_string(kColumns) + " columns");
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
