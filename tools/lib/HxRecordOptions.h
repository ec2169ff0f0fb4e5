#pragma once
// HxRecordOptions: what one hxrecord run does, its command line and its exit statuses.

#include <string>
#include <vector>

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
  OutputError = 6,            ///< an output file cannot be written, or writing it failed while recording
  Interrupted = 7,            ///< SIGINT, SIGTERM or SIGHUP stopped the recording (its files are finished)
};

/// The thread count of a recording when none is given: 2 when the machine has at least two
/// processors, else 1.
unsigned hxDefaultRecordThreads();

/// What one hxrecord run does. An empty file name selects the built-in default scene's file
/// (the example files embedded at build time).
struct HxRecordOptions {
  std::string modelFile;
  std::string captureFile;
  std::string writersFile;
  /// The formats to write (--formats), each a writer's file extension without its dot ("csv",
  /// "xml", "mrd", "m", "nb"), in the order given; empty: the writer list decides.
  std::vector<std::string> formats;
  /// Scene side file (JSON): motors and path points added to the model; empty for none.
  std::string sceneFile;
  /// Capture every quantity the model and the mode support instead of reading a configuration.
  bool captureAll = false;
  /// File the capture configuration in use is saved to before recording; empty for none.
  std::string writeCaptureFile;
  /// Display description to plot the recording with (hxplot); empty for no plot.
  std::string plotDisplay;
  /// Check everything and print the columns the recording would have; record nothing.
  bool check = false;
  /// Simulated time to record, seconds.
  double duration = 8.0;
  /// Simulated time between two samples, seconds (rounded to whole engine timesteps).
  double sampleInterval = 0.01;
  /// Time each reached path point is held before the next is taken, seconds.
  double dwellTime = 0.25;
  /// Output base name: each writer's file is this name plus the writer's extension.
  std::string outputBase = "hxrecord-out/recording";
  HxMujocoSimulation::Mode mode = HxMujocoSimulation::Mode::Dynamic;
  /// Threads that record: 1 steps, captures and writes on one thread; 2 writes the files on a
  /// thread of its own while the simulation steps and captures (see hxDefaultRecordThreads).
  unsigned threads = hxDefaultRecordThreads();
  /// No progress bar and no summary (errors and warnings are still printed).
  bool quiet = false;
  /// Print the usage text and do nothing else.
  bool help = false;
  /// Print the versions of the tool, the library and the engine and do nothing else.
  bool version = false;
  /// Print the table of quantity types and do nothing else.
  bool listTypes = false;
  /// Program that marks the manifest interrupted should the recording die (run by the watcher
  /// as `PROGRAM --mark-interrupted MANIFEST BASE`): hxrecord names itself. Empty, the watcher is
  /// a fork of this process, whose memory the recording then copies page by page as it writes
  /// it. Not an option.
  std::string watcherProgram;
  /// The command line as run, program name first, for the recording's manifest; not parsed.
  std::vector<std::string> commandLine;
};

/// Parses the command-line arguments (without the program name) into `options`, starting from
/// the values it holds. Returns false with a one-line message in `error` for an unknown option,
/// a missing value or a bad value.
HxBoolean hxParseRecordOptions(const std::vector<std::string>& arguments, HxRecordOptions& options, std::string& error);

/// The text printed by `hxrecord --help`.
const std::string& hxRecordUsage();
