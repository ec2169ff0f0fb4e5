#pragma once
// HxRecordSession: one hxrecord recording, from loading the scene to the finished files.

#include <csignal>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemStoredData.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "framework/HxTypes.h"
#include "simulation/mujoco/HxMujocoSimulation.h"
#include "tools/lib/HxRecordOptions.h"
#include "tools/lib/HxRecordSummary.h"

/// One recording: loads the model, the capture configuration and the writer list (or the
/// built-in scene), checks them against each other and the output location, then records.
///
///     HxRecordSession session(options);
///     if (session.prepare() != HxRecordStatus::Success) { print session.errors(); return; }
///     session.record();   // files under options.outputBase
///
/// Each sample is captured from the simulation and saved stamped with the simulation time and
/// the system's path-point index (the smallest index of the manipulators that follow a path).
/// A sample is taken at time 0 and after every sampleInterval. Failures are reported through
/// the status and `errors()`; the library's own messages during loading are collected there too.
///
/// With options().threads 2 the files are written on a second thread: the calling thread steps
/// the simulation and captures each sample into a ring (queueSlots(values) slots), from which
/// the recording thread, owner of the recorder and its files, saves them in order. A full ring
/// makes the stepping wait. The files are the same as with one thread.
class HxRecordSession {
 public:
  /// Called, on the thread that called record(), after each captured sample with its number (0
  /// first) and the simulation. With one thread the sample is saved by then; with two it may
  /// still be on its way to the files.
  using SampleObserver = std::function<void(HxU32 sample, const HxMujocoSimulation& simulation)>;
  /// Called now and then, on the thread that called record(), with the simulated time reached
  /// and the total to record.
  using ProgressObserver = std::function<void(double simulated, double total)>;
  /// Bytes of samples the stepping thread may be ahead of the files with two threads. The ring
  /// rides out the recording thread's pauses (truncating a previous recording's files when it
  /// opens them took 5 to 10 ms, the length of a few hundred default-scene samples) instead of
  /// making the stepping wait.
  static constexpr std::size_t kQueueBytes = std::size_t{4} << 20;
  /// Slots of the ring for samples of `values` doubles: kQueueBytes' worth, at least 64 and at
  /// most 8192.
  static std::size_t queueSlots(std::size_t values);

  explicit HxRecordSession(HxRecordOptions options);
  ~HxRecordSession();
  HxRecordSession(const HxRecordSession&) = delete;
  HxRecordSession& operator=(const HxRecordSession&) = delete;

  /// Loads and checks everything; nothing is written but the output directory (created when
  /// missing; with options().check not even that). Returns Success or the status of the first
  /// failure, with its messages in errors().
  HxRecordStatus prepare();
  /// Records the scene into the output files. Requires a successful prepare(). On an unstable
  /// simulation stops, finishes the files and returns SimulationFailed. When a file fails to be
  /// written, stops stepping, finishes the other files and returns OutputError, with the file,
  /// the reason and the samples each file holds in errors(). When the stop flag (see
  /// `setStopFlag`) is raised, stops at the next sample, finishes every file and returns
  /// Interrupted, saying where in notices(). The files are flushed at least once a second of
  /// wall time.
  HxRecordStatus record(const SampleObserver& sampleObserver = {}, const ProgressObserver& progressObserver = {});

  /// A signal number that, once not 0, stops a recording at its next sample (see HxStopSignals).
  /// It is read on the thread that calls record(); a recording thread blocks the stop signals,
  /// so that their handlers run there too.
  void setStopFlag(const volatile std::sig_atomic_t* flag) { stopFlag_ = flag; }

  const HxRecordOptions& options() const { return options_; }
  /// The simulation; after prepare() a test may still change it (path points, tolerances).
  HxMujocoSimulation& simulation() { return *simulation_; }
  const HxMujocoSimulation& simulation() const { return *simulation_; }
  const HxSystemDataCapture& capture() const { return capture_; }
  const HxOutputWriterVector& writers() const { return writers_; }
  /// Names of the model, capture configuration and writer list as used in messages.
  const std::string& modelName() const { return modelName_; }
  const std::string& captureName() const { return captureName_; }
  const std::string& writersName() const { return writersName_; }
  /// Engine steps between two samples and steps in the whole recording (after prepare()).
  HxU32 stepsPerSample() const { return stepsPerSample_; }
  HxU32 totalSteps() const { return totalSteps_; }

  /// Messages of failures, one line each, without a prefix.
  const std::vector<std::string>& errors() const { return errors_; }
  /// Messages of problems that did not stop the run.
  const std::vector<std::string>& warnings() const { return warnings_; }
  /// What the user should know that is neither an error nor a warning (where an interrupted
  /// recording stopped), one line each.
  const std::vector<std::string>& notices() const { return notices_; }
  const HxRecordSummary& summary() const { return summary_; }

 private:
  HxRecordStatus fail(HxRecordStatus status, const std::string& message);
  HxRecordStatus loadModel();
  HxRecordStatus loadConfigurations();
  HxRecordStatus checkTiming();
  HxRecordStatus checkLabels();
  // Errors that say, after a write failure, which file failed and what every file holds; the
  // last of the `samples` saved was taken at `time`.
  void reportWriteFailure(const HxSystemStoredData& recorder, HxU32 samples, double time);
  HxU32 systemPathPointIndex() const;
  // The sample loops, from the files' start to their finish: everything on this thread, or the
  // files written on a second one. `run` says what to record into and holds what happened.
  struct Run;
  void recordOnOneThread(Run& run);
  void recordOnTwoThreads(Run& run);
  // Fills summary_ after a recording of `samples` samples up to `simulatedTime`; returns
  // `status`, or OutputError when a file is missing after all.
  HxRecordStatus summarize(HxRecordStatus status, HxU32 samples, double simulatedTime, double wallTime);

  HxRecordOptions options_;
  std::unique_ptr<HxMujocoSimulation> simulation_;
  HxSystemDataCapture capture_;
  HxOutputWriterVector writers_;
  std::string modelName_, captureName_, writersName_;
  HxU32 stepsPerSample_ = 1;
  HxU32 totalSteps_ = 0;
  bool prepared_ = false;
  std::vector<std::string> errors_;
  std::vector<std::string> warnings_;
  std::vector<std::string> notices_;
  HxRecordSummary summary_;
  const volatile std::sig_atomic_t* stopFlag_ = nullptr;
};
