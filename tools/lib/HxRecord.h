#pragma once
// HxRecord: the logic of hxrecord, the host that records a MuJoCo scene through
// libhxSimulationAnalysis (options, loading and checking, the recording loop, the summary).

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "framework/HxTypes.h"
#include "simulation/mujoco/HxMujocoSimulation.h"

/// Exit status of hxrecord; every failure has its own code.
enum class HxRecordStatus : int {
  Success = 0,
  SimulationFailed = 1,       ///< the engine became unstable while recording
  BadOption = 2,              ///< unknown option, missing or bad option value
  ModelError = 3,             ///< model file missing, unreadable, invalid or without manipulator
  ConfigurationError = 4,     ///< capture or writer configuration missing or invalid
  ConfigurationMismatch = 5,  ///< the capture names a manipulator, link or end effector the model lacks
  OutputError = 6,            ///< the output directory or a file in it cannot be written
};

/// What one hxrecord run does. An empty file name selects the built-in default scene's file
/// (the example files embedded at build time).
struct HxRecordOptions {
  std::string modelFile;
  std::string captureFile;
  std::string writersFile;
  /// Simulated time to record, seconds.
  double duration = 8.0;
  /// Simulated time between two samples, seconds (rounded to whole engine timesteps).
  double sampleInterval = 0.01;
  /// Time each reached path point is held before the next is taken, seconds.
  double dwellTime = 0.25;
  /// Output base name: each writer's file is this name plus the writer's extension.
  std::string outputBase = "hxrecord-out/recording";
  HxMujocoSimulation::Mode mode = HxMujocoSimulation::Mode::Dynamic;
  /// No progress bar and no summary (errors and warnings are still printed).
  bool quiet = false;
  /// Print the usage text and do nothing else.
  bool help = false;
};

/// Parses the command-line arguments (without the program name) into `options`, starting from
/// the values it holds. Returns false with a one-line message in `error` for an unknown option,
/// a missing value or a bad value.
HxBoolean hxParseRecordOptions(const std::vector<std::string>& arguments, HxRecordOptions& options, std::string& error);

/// The text printed by `hxrecord --help`.
const std::string& hxRecordUsage();

/// Reads one configuration document (a capture configuration, a writer list) into `root`.
/// `text` null reads the file `name`; otherwise `text` is read and `name` names it in messages.
/// The root element must be `rootToken`. Every problem becomes one message naming the file and
/// line ("file:line: text") in `errors`, and the result is false; the library's warnings about
/// a document that reads go to `warnings` without failing.
HxBoolean hxReadConfiguration(const std::string& name, const std::string* text, const HxToken& rootToken,
                              HxXmlObject& root, std::vector<std::string>& errors, std::vector<std::string>& warnings);

/// Checks that every manipulator, link and end effector that `capture` names exists in the
/// loaded `simulation`. Returns one message per missing item (empty when all exist);
/// `captureName` and `modelName` name the files in the messages.
std::vector<std::string> hxCheckCaptureAgainstModel(const HxSystemDataCapture& capture,
                                                    const HxMujocoSimulation& simulation,
                                                    const std::string& captureName, const std::string& modelName);

/// Makes sure every file `outputBase` + extension of `writers` can be written: creates the
/// output directory when it is missing and opens each file for appending (removing those that
/// did not exist before). Returns false with a message in `error` otherwise.
HxBoolean hxCheckOutputWritable(const std::string& outputBase, const HxOutputWriterVector& writers, std::string& error);

/// What a finished recording produced.
struct HxRecordSummary {
  struct File {
    std::string path;    ///< as written (output base plus extension)
    std::string format;  ///< the writer's format descriptor
    std::uintmax_t size = 0;
  };
  HxU32 samples = 0;
  /// Values per sample, time and path-point index included (the columns of a CSV data line).
  HxU32 columns = 0;
  double simulatedTime = 0.0;   ///< seconds
  double wallTime = 0.0;        ///< seconds spent in the recording loop
  double sampleInterval = 0.0;  ///< the interval actually used, seconds
  HxMujocoSimulation::Mode mode = HxMujocoSimulation::Mode::Dynamic;
  std::vector<File> files;
};

/// Writes the summary shown at the end of a recording: samples, columns, every file with its
/// size, wall time and the simulated-to-wall time ratio.
void hxWriteRecordSummary(const HxRecordSummary& summary, std::ostream& out);

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
class HxRecordSession {
 public:
  /// Called after each saved sample with its number (0 first) and the simulation.
  using SampleObserver = std::function<void(HxU32 sample, const HxMujocoSimulation& simulation)>;
  /// Called now and then with the simulated time reached and the total to record.
  using ProgressObserver = std::function<void(double simulated, double total)>;

  explicit HxRecordSession(HxRecordOptions options);
  ~HxRecordSession();
  HxRecordSession(const HxRecordSession&) = delete;
  HxRecordSession& operator=(const HxRecordSession&) = delete;

  /// Loads and checks everything; nothing is written but the output directory (created when
  /// missing). Returns Success or the status of the first failure, with its messages in
  /// errors().
  HxRecordStatus prepare();
  /// Records the scene into the output files. Requires a successful prepare(). On an unstable
  /// simulation stops, finishes the files and returns SimulationFailed.
  HxRecordStatus record(const SampleObserver& sampleObserver = {}, const ProgressObserver& progressObserver = {});

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
  const HxRecordSummary& summary() const { return summary_; }

 private:
  HxRecordStatus fail(HxRecordStatus status, const std::string& message);
  HxRecordStatus loadModel();
  HxRecordStatus loadConfigurations();
  HxRecordStatus checkTiming();
  HxU32 systemPathPointIndex() const;

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
  HxRecordSummary summary_;
};

/// The whole program: parses `arguments` (without the program name), prepares and records,
/// drawing a progress bar on `err` when `progressBar` is true and the run is not quiet, and
/// prints the summary on `out` (unless quiet). Every error goes to `err` as
/// "hxrecord: error: <message>". Returns the exit status.
int hxRecordMain(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err, bool progressBar);
