#pragma once
// Helpers of the hxrecord tests: scratch directories, running the built program, reading the
// recorded CSV file, and the default scene's files.

#include <cstddef>
#include <string>
#include <vector>

namespace HxRecordTest {

/// A fresh, empty directory for one test (removed first if it exists), with a trailing '/'.
std::string scratchDirectory(const std::string& name);

/// Reads a whole file; empty when it cannot be read.
std::string readFile(const std::string& path);
/// Writes `text` to `path`; false when it cannot.
bool writeFile(const std::string& path, const std::string& text);

/// Result of one run of the built hxrecord.
struct RunResult {
  int exitCode = -1;
  std::string out;
  std::string err;
};
/// Runs the built hxrecord with `arguments` (each quoted for the shell) in `directory`.
RunResult runHxrecord(const std::vector<std::string>& arguments, const std::string& directory);

/// A recorded CSV file: the label line and the samples as numbers.
struct Csv {
  std::vector<std::string> labels;
  std::vector<std::vector<double>> rows;
  /// Column of `label`; records a test failure and returns labels.size() when it is missing.
  std::size_t column(const std::string& label) const;
  /// Value of `label` in sample `row`.
  double at(std::size_t row, const std::string& label) const { return rows[row][column(label)]; }
};
/// Reads a CSV file written by the text writer; false (with a test failure) when the file is
/// missing or a value is not a number.
bool readCsv(const std::string& path, Csv& csv);

/// Paths of the default scene's files in the source tree.
std::string defaultModelPath();
std::string defaultCapturePath();
std::string defaultWritersPath();
/// A writer list holding only the text writer, written into `directory`; returns its path.
std::string textWriterOnly(const std::string& directory);

}  // namespace HxRecordTest
