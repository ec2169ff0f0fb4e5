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
