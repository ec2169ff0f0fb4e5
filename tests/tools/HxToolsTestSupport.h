#pragma once
// Running a built tool (its exit status, output, errors and peak memory) and the configuration
// documents the tool tests give it.

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

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
  std::ostringstream bytes;
  if (in) bytes << in.rdbuf();
  return bytes.str();
}

/// `text` split at its blanks.
inline std::vector<std::string> words(const std::string& text) {
  std::istringstream in(text);
  return {std::istream_iterator<std::string>(in), std::istream_iterator<std::string>()};
}

/// How one run of a program ended.
struct RunResult {
  int exitCode = -1;  // 128 + the signal when a signal ended it
  std::string out;
  std::string err;
  long peakKilobytes = 0;
};

/// `program` with `arguments`, started in `directory` without standard input; SIGALRM ends it
/// after `seconds` (never when 0). Killed if still running when the object goes; not copied.
class Process {
 public:
  Process(const std::string& program, const std::vector<std::string>& arguments, const std::string& directory,
          unsigned seconds = 0)
      : streams_("streams") {
    auto quoted = [](const std::string& text) {
      std::string result = "'";
      for (char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
      return result + "'";
    };
    std::string command = "cd " + quoted(directory) + " && exec " + quoted(program);
    for (const std::string& argument : arguments) command += " " + quoted(argument);
    command += " >" + quoted(streams_.file("out")) + " 2>" + quoted(streams_.file("err")) + " </dev/null";
    pid_ = ::fork();
    if (pid_ == 0) {
      ::alarm(seconds);
      ::execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
      ::_exit(127);
    }
  }
  ~Process() {
    if (pid_ > 0) stop(SIGKILL);
  }

  /// The process id (hxrecord's own: the shell that starts it execs it).
  pid_t pid() const { return pid_; }
  /// Sends `signal` (none when 0) and waits for the end.
  RunResult stop(int signal = 0) {
    if (signal != 0) ::kill(pid_, signal);
    int status = 0;
    struct rusage usage {};
    ::wait4(pid_, &status, 0, &usage);
    pid_ = -1;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), readFile(streams_.file("out")),
            readFile(streams_.file("err")), usage.ru_maxrss};
  }

 private:
  HxScopedTempDir streams_;
  pid_t pid_ = -1;
};

/// Runs `program` to its end (see Process).
inline RunResult run(const std::string& program, const std::vector<std::string>& arguments,
                     const std::string& directory, unsigned seconds = 0) {
  return Process(program, arguments, directory, seconds).stop();
}

/// The namespace declaration of every configuration document.
inline const std::string kSm = "xmlns:sm=\"http://www.hxtoolkit.org/namespace/sm#\"";

/// A capture configuration of manipulator `index` (on line 4) whose element holds `body` from line 5 on.
inline std::string captureOf(const std::string& body, const std::string& index = "0") {
  return "<?xml version=\"1.0\"?>\n<sm:generalCapture " + kSm +
         ">\n<sm:manipulatorDataCaptureVector count=\"1\"><element>\n<sm:manipulatorIndex>" + index +
         "</sm:manipulatorIndex>\n" + body + "\n</element></sm:manipulatorDataCaptureVector>\n</sm:generalCapture>\n";
}
/// A list of `count` quantities.
inline std::string typesOf(const std::string& types, const std::string& count = "1") {
  return "<sm:dataCaptureTypeVector count=\"" + count + "\">" + types + "</sm:dataCaptureTypeVector>";
}
/// A list of one link (`kind` "link", `id` its name) or end effector (`kind` "endEffector", `id`
/// its index) whose `body` starts on the next line.
inline std::string entryOf(const std::string& kind, const std::string& id, const std::string& body) {
  const std::string tag = kind == "link" ? "linkIdentification" : "endEffectorIndex";
  return "<sm:" + kind + "DataCaptureVector count=\"1\"><element><sm:" + tag + ">" + id + "</sm:" + tag + ">\n" + body +
         "</element></sm:" + kind + "DataCaptureVector>";
}
/// A writer list whose `count` and `writers` disagree as the test needs.
inline std::string writersOf(const std::string& count, const std::string& writers) {
  return "<sm:outputWriterVector " + kSm + " count=\"" + count + "\">\n" + writers + "</sm:outputWriterVector>\n";
}

}  // namespace HxToolsTest
