// Helpers of the hxrecord tests.

#include "tests/tools/test_hxrecord_support.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

#include "framework/HxNumberText.h"

namespace HxRecordTest {

namespace fs = std::filesystem;

std::string scratchDirectory(const std::string& name) {
  const fs::path directory = fs::path(::testing::TempDir()) / "hxrecord_tests" / name;
  std::error_code code;
  fs::remove_all(directory, code);
  fs::create_directories(directory, code);
  EXPECT_FALSE(code) << directory << ": " << code.message();
  return directory.string() + "/";
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

bool writeFile(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
  return static_cast<bool>(out);
}

namespace {
std::string quoted(const std::string& text) {
  std::string result = "'";
  for (char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return result + "'";
}
}  // namespace

RunResult runHxrecord(const std::vector<std::string>& arguments, const std::string& directory) {
  const std::string out = directory + ".hxrecord_stdout";
  const std::string err = directory + ".hxrecord_stderr";
  std::string command = "cd " + quoted(directory) + " && " + quoted(HX_RECORD_BINARY);
  for (const std::string& argument : arguments) command += " " + quoted(argument);
  command += " >" + quoted(out) + " 2>" + quoted(err) + " </dev/null";
  const int status = std::system(command.c_str());
  RunResult run;
  run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  run.out = readFile(out);
  run.err = readFile(err);
  std::remove(out.c_str());
  std::remove(err.c_str());
  return run;
}

std::size_t Csv::column(const std::string& label) const {
  const auto found = std::find(labels.begin(), labels.end(), label);
  if (found == labels.end()) ADD_FAILURE() << "no column '" << label << "'";
  return static_cast<std::size_t>(found - labels.begin());
}

bool readCsv(const std::string& path, Csv& csv) {
  csv = Csv();
  std::ifstream in(path);
  std::string line;
  for (std::size_t n = 0; std::getline(in, line); ++n) {
    // Fields split at every comma; a line ending in a comma ends in an empty field.
    std::vector<std::string> fields;
    std::istringstream text(line + ",");
    for (std::string field; std::getline(text, field, ',');) fields.push_back(field);
    if (n == 0) {
      csv.labels = std::move(fields);
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

std::string defaultModelPath() { return std::string(HX_SOURCE_DIR) + "/examples/models/two_arms_table.xml"; }
std::string defaultCapturePath() { return std::string(HX_SOURCE_DIR) + "/examples/config/default_capture.xml"; }
std::string defaultWritersPath() { return std::string(HX_SOURCE_DIR) + "/examples/config/default_writers.xml"; }

std::string textWriterOnly(const std::string& directory) {
  const std::string path = directory + "text_writer.xml";
  writeFile(path,
            "<?xml version=\"1.0\"?>\n"
            "<sm:outputWriterVector xmlns:sm=\"http://www.hxtoolkit.org/namespace/sm#\" count=\"1\">\n"
            "  <sm:textOutputWriter/>\n"
            "</sm:outputWriterVector>\n");
  return path;
}

}  // namespace HxRecordTest
