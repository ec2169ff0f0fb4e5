#pragma once
// Running a built tool: its exit status, standard output and standard error.

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/HxScopedTempDir.h"

namespace HxToolsTest {

/// Reads a whole file; empty when it cannot be read.
inline std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/// `text` split at its blanks.
inline std::vector<std::string> words(const std::string& text) {
  std::istringstream in(text);
  return {std::istream_iterator<std::string>(in), std::istream_iterator<std::string>()};
}

/// Exit status and output of one run of a program.
struct RunResult {
  int exitCode = -1;
  std::string out;
  std::string err;
};

/// Runs `program` with `arguments` in `directory`, without standard input.
inline RunResult run(const std::string& program, const std::vector<std::string>& arguments,
                     const std::string& directory) {
  auto quoted = [](const std::string& text) {
    std::string result = "'";
    for (char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
  };
  const HxScopedTempDir streams("streams");
  const std::string out = streams.file("out"), err = streams.file("err");
  std::string command = "cd " + quoted(directory) + " && " + quoted(program);
  for (const std::string& argument : arguments) command += " " + quoted(argument);
  const int status = std::system((command + " >" + quoted(out) + " 2>" + quoted(err) + " </dev/null").c_str());
  return RunResult{WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(out), readFile(err)};
}

}  // namespace HxToolsTest
