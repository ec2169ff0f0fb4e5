// HxRecordPlot: finding hxplot and running it on a finished recording.

#include "tools/lib/HxRecordPlot.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

extern char** environ;

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

namespace fs = std::filesystem;

const char* const kPlotter = "hxplot";

bool isProgram(const fs::path& path) {
  std::error_code code;
  return fs::is_regular_file(path, code) && ::access(path.c_str(), X_OK) == 0;
}

// hxplot beside this program, else on PATH; empty when neither, with the places looked at in `looked`.
std::string findPlotter(std::string& looked) {
  std::error_code code;
  const fs::path self = fs::read_symlink("/proc/self/exe", code);
  if (!code) {
    const fs::path beside = self.parent_path() / kPlotter;
    if (isProgram(beside)) return beside.string();
    looked = "beside hxrecord in " + self.parent_path().string();
  }
  const char* path = std::getenv("PATH");
  const std::string directories = path != nullptr ? path : "";
  for (std::size_t start = 0; start <= directories.size();) {
    std::size_t end = directories.find(':', start);
    if (end == std::string::npos) end = directories.size();
    const std::string directory = directories.substr(start, end - start);
    const fs::path candidate = fs::path(directory.empty() ? "." : directory) / kPlotter;
    if (isProgram(candidate)) return candidate.string();
    start = end + 1;
  }
  looked += std::string(looked.empty() ? "" : " nor ") + "on PATH";
  return {};
}
}  // namespace

HxBoolean hxCheckPlotInputs(const std::string& display, const HxOutputWriterVector& writers, std::string& error) {
  bool csv = false;
  for (HxU32 i = 0; i < writers.size(); ++i) csv = csv || writers[i].fileExtension() == ".csv";
  if (!csv) {
    error =
        "--plot needs the CSV file, which the writers do not write: add the csv format (--formats) or a "
        "textOutputWriter to the writer list";
    return false;
  }
  std::error_code code;
  std::ifstream file(display);
  if (!fs::is_regular_file(display, code) || !file) {
    error = "display description '" + display + "' " +
            (!fs::exists(display, code)           ? "does not exist"
             : fs::is_regular_file(display, code) ? "cannot be read"
                                                  : "is not a regular file");
    return false;
  }
  return true;
}

HxPlotOutcome hxPlotRecording(const std::string& display, const std::string& outputBase) {
  HxPlotOutcome outcome;
  outcome.image = outputBase + ".png";
  std::string looked;
  outcome.plotter = findPlotter(looked);
  if (outcome.plotter.empty()) {
    outcome.kind = HxPlotOutcome::Kind::NoPlotter;
    outcome.reason = "hxplot was found neither " + looked;
    return outcome;
  }
  const std::string csv = outputBase + ".csv";
  std::vector<std::string> arguments = {outcome.plotter, display, csv, "-o", outcome.image};
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  pid_t child = 0;
  const int started = ::posix_spawn(&child, outcome.plotter.c_str(), nullptr, nullptr, argv.data(), environ);
  if (started != 0) {
    outcome.reason = "cannot run " + outcome.plotter + ": " + std::strerror(started);
    return outcome;
  }
  int status = 0;
  pid_t waited = 0;
  while ((waited = ::waitpid(child, &status, 0)) < 0 && errno == EINTR) {
  }
  if (waited < 0) {
    outcome.reason = "cannot wait for " + outcome.plotter + ": " + std::strerror(errno);
  } else if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
    outcome.kind = HxPlotOutcome::Kind::Plotted;
  } else if (WIFEXITED(status)) {
    outcome.reason = outcome.plotter + " exited with status " + std::to_string(WEXITSTATUS(status));
  } else {
    outcome.reason = outcome.plotter + " was ended by signal " + std::to_string(WTERMSIG(status));
  }
  return outcome;
}
