#pragma once
// HxInfoCommand: hxinfo, which summarises a recording (any of its files, or its manifest), as a
// function over HxInfo.

#include <iosfwd>
#include <string>
#include <vector>

#include "framework/HxTypes.h"

/// What one hxinfo run does.
struct HxInfoCommandOptions {
  /// A recording's file (.csv, .xml, .mrd, .m, .nb) or its manifest (.json).
  std::string file;
  /// Print only the column table.
  bool columnsOnly = false;
  /// Print JSON instead of text.
  bool json = false;
  /// Print the usage text and do nothing else.
  bool help = false;
};

/// hxinfo's exit statuses.
enum HxInfoExitStatus : int {
  HxInfoDone = 0,
  /// The file cannot be read, or is of no format hxinfo knows.
  HxInfoFailed = 1,
  /// The command line is wrong.
  HxInfoUsage = 2,
};

/// Parses the command-line arguments (without the program name) into `options`. Returns false
/// with a one-line message in `error` for an unknown option, a flag given a value, no file or a
/// second one.
HxBoolean hxParseInfoOptions(const std::vector<std::string>& arguments, HxInfoCommandOptions& options,
                             std::string& error);

/// The text printed by `hxinfo --help`.
const std::string& hxInfoUsage();

/// The whole program: the summary on `out`, warnings ("hxinfo: warning: FILE: ...") and errors
/// ("hxinfo: error: FILE: ...") on `err`. Returns the exit status (HxInfoExitStatus).
int hxInfoMain(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);
