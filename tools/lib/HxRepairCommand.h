#pragma once
// HxRepairCommand: hxrepair, which finishes the files of a recording that was cut short, as a
// function over hxRepairRecording.

#include <iosfwd>
#include <string>
#include <vector>

#include "framework/HxTypes.h"

/// What one hxrepair run does.
struct HxRepairCommandOptions {
  /// The recording: its path without extension (or the path of one of its files).
  std::string base;
  /// Only say what would be done; change nothing.
  bool check = false;
  /// Print the usage text and do nothing else.
  bool help = false;
};

/// hxrepair's exit statuses.
enum HxRepairExitStatus : int {
  /// Every file is finished or has been repaired (with --check: nothing needs a repair).
  HxRepairDone = 0,
  /// A file cannot be understood, read or rewritten, or the recording has no file at all.
  HxRepairFailed = 1,
  /// The command line is wrong.
  HxRepairUsage = 2,
  /// With --check: some file needs a repair, and every file can be repaired.
  HxRepairNeeded = 3,
};

/// Parses the command-line arguments (without the program name) into `options`. Returns false
/// with a one-line message in `error` for an unknown option, a flag given a value, no recording
/// or a second one.
HxBoolean hxParseRepairOptions(const std::vector<std::string>& arguments, HxRepairCommandOptions& options,
                               std::string& error);

/// The text printed by `hxrepair --help`.
const std::string& hxRepairUsage();

/// The whole program: one line per file on `out` ("hxrepair: run.csv: cut back to its last whole
/// row (105 samples)", "hxrepair: run.xml: finished, left unchanged (801 samples)"), a file that
/// cannot be repaired and other errors on `err` ("hxrepair: error: run.nb: ..."). Returns the
/// exit status (HxRepairExitStatus).
int hxRepairMain(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);
