#pragma once
// Helpers of the tool tests: scratch directories, files, running a built program, reading a
// recorded CSV file, and the default scene's files.

#include <unistd.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "framework/HxNumberText.h"

namespace HxRecordTest {

/// A fresh, empty directory for one test (removed first if it exists), with a trailing '/'.
inline std::string scratchDirectory(const std::string& name) {
  const std::filesystem::path directory = std::filesystem::path(::testing::TempDir()) / ("hx_tool_tests_" + std::to_string(::getpid())) / name;
  std::error_code code;
  std::filesystem::remove_all(directory, code);
  std::filesystem::create_directories(directory, code);
  EXPECT_FALSE(code) << directory << ": " << code.message();
  return directory.string() + "/";
}

/// Reads a whole file; empty when it cannot be read.
inline std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
/// Writes `text` to `path`; false when it cannot.
inline bool writeFile(const std::string& path, const std::string& text) {
  return static_cast<bool>(std::ofstream(path, std::ios::binary) << text);
}

/// Exit status and output of one run of a program.
struct RunResult {
  int exitCode = -1;
  std::string out;
  std::string err;
};
inline std::string quoted(const std::string& text) {
  std::string result = "'";
  for (char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return result + "'";
}
/// Runs `program` with `arguments` (each quoted for the shell) in `directory`, standard output
/// and error kept apart.
inline RunResult run(const std::string& program, const std::vector<std::string>& arguments,
                     const std::string& directory) {
  const std::string out = directory + ".stdout", err = directory + ".stderr";
  std::string command = "cd " + quoted(directory) + " && " + quoted(program);
  for (const std::string& argument : arguments) command += " " + quoted(argument);
  const int status = std::system((command + " >" + quoted(out) + " 2>" + quoted(err) + " </dev/null").c_str());
  const RunResult result{WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(out), readFile(err)};
  std::filesystem::remove(out);
  std::filesystem::remove(err);
  return result;
}

/// A recorded CSV file: the label line and the samples as numbers.
struct Csv {
  std::vector<std::string> labels;
  std::vector<std::vector<double>> rows;
  /// Column of `label`; records a test failure and returns labels.size() when it is missing.
  std::size_t column(const std::string& label) const {
    const auto found = std::find(labels.begin(), labels.end(), label);
    if (found == labels.end()) ADD_FAILURE() << "no column '" << label << "'";
    return static_cast<std::size_t>(found - labels.begin());
  }
  /// Value of `label` in sample `row`.
  double at(std::size_t row, const std::string& label) const { return rows[row][column(label)]; }
};
/// Reads a CSV file written by the text writer (fields split at every comma); false (with a
/// test failure) when the file is missing or a value is not a number.
inline bool readCsv(const std::string& path, Csv& csv) {
  csv = Csv();
  std::ifstream in(path);
  std::string line;
  for (std::size_t n = 0; std::getline(in, line); ++n) {
    std::vector<std::string> fields;
    std::istringstream text(line + ",");
    for (std::string field; std::getline(text, field, ',');) fields.push_back(field);
    if (n == 0) {
      csv.labels = fields;
      continue;
    }
    std::vector<double>& row = csv.rows.emplace_back(fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (!HxSTRING2DOUBLE(fields[i], row[i])) {
        ADD_FAILURE() << path << ": sample " << n - 1 << " field " << i << " is not a number: '" << fields[i] << "'";
        return false;
      }
    }
  }
  if (csv.labels.empty()) ADD_FAILURE() << "cannot read " << path;
  return !csv.labels.empty();
}

/// Paths of the default scene's files in the source tree.
inline std::string examplePath(const std::string& file) { return std::string(HX_SOURCE_DIR) + "/examples/" + file; }
inline std::string defaultModelPath() { return examplePath("models/two_arms_table.xml"); }

/// A writer list holding only the text writer, written into `directory`; returns its path.
inline std::string textWriterOnly(const std::string& directory) {
  const std::string path = directory + "text_writer.xml";
  writeFile(path,
            "<sm:outputWriterVector xmlns:sm=\"http://www.hxtoolkit.org/namespace/sm#\" count=\"1\">"
            "<sm:textOutputWriter/></sm:outputWriterVector>\n");
  return path;
}

}  // namespace HxRecordTest
