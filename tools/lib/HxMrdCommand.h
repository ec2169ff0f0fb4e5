#pragma once
// HxMrdCommand: hxmrd, which prints an MRD recording's header fields, labels and samples, as a
// function over HxMrdReader (the samples streamed, never held).

#include <iosfwd>
#include <string>
#include <vector>

#include "framework/HxTypes.h"
#include "tools/lib/HxMrdFile.h"

/// What one hxmrd run does.
struct HxMrdCommandOptions {
  enum class Content { Full, CsvOnly, HeaderOnly };
  Content content = Content::Full;
  HxMrdLoadOptions load;
  /// The MRD file to read.
  std::string input;
  /// The file to write instead of standard output; empty for standard output.
  std::string output;
  /// Print the usage text and do nothing else.
  bool help = false;
};

/// Parses the command-line arguments (without the program name) into `options`. Returns false
/// with a one-line message in `error` for an unknown option, a missing or bad value, or a
/// second file.
HxBoolean hxParseMrdOptions(const std::vector<std::string>& arguments, HxMrdCommandOptions& options,
                            std::string& error);

/// The text printed by `hxmrd --help`.
const std::string& hxMrdUsage();

/// Writes the header fields of the recording `reader` has opened (from `path`) as '#' comment
/// lines: every label when `allLabels`, otherwise only the labels without a column.
void hxWriteMrdHeader(std::ostream& out, const std::string& path, const HxMrdReader& reader, bool allLabels);

/// Writes the recording `reader` has opened as CSV, reading its samples as it goes: the label row,
/// then one row per sample, each value the shortest text that reads back to its 32-bit float.
/// Returns false, with `error` set, when the samples cannot be read; stops early when `out` fails.
HxBoolean hxWriteMrdCsv(std::ostream& out, HxMrdReader& reader, std::string& error);

/// The whole program: prints to `out` (or the file of -o), warnings and errors to `err` as
/// "hxmrd: warning: FILE: ..." and "hxmrd: error: ...". Returns the exit status: 0 success, 1
/// a file that cannot be read, recovered or written, 2 a usage error. Nothing it calls throws
/// through it: an exception ends it with a message and status 1.
int hxMrdMain(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);
