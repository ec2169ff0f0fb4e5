// HxManifestWatch: the watcher process and the rewrite it makes of a manifest left "recording".

#include "tools/lib/HxManifestWatch.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>

#include "analysis/hdf5/HxHdf5Reader.h"
#include "tools/lib/HxRecordManifest.h"
#include "tools/lib/HxRepair.h"

const char* const kHxMarkInterruptedOption = "--mark-interrupted";

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// What hxrecord sends before it closes the pipe once the final status is written.
constexpr char kFinished = 'F';

// The signals that stop hxrecord, which then writes the final status itself: the watcher ignores
// them (a terminal's interrupt reaches the whole process group).
constexpr int kStopSignals[] = {SIGINT, SIGTERM, SIGHUP};

// The watcher itself, reading `pipe`, once every other file is closed: never returns.
[[noreturn]] void watch(int pipe, const std::string& manifestPath, const std::string& base) {
  char received = 0;
  ssize_t got = 0;
  while ((got = ::read(pipe, &received, 1)) < 0 && errno == EINTR) {
  }
  if (got != 1 || received != kFinished) hxMarkManifestInterrupted(manifestPath, base);
  ::_exit(0);
}

void ignoreStopSignals() {
  for (const int signal : kStopSignals) std::signal(signal, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
}

// Standard streams on /dev/null, but `keep` when it is one of them.
void silenceStandardStreams(int keep) {
  const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  for (int fd = 0; fd <= 2 && null >= 0; ++fd) {
    if (fd != keep) ::dup2(null, fd);
  }
}

// The watcher when a program is named: the system's shell, which starts in a millisecond and
// holds next to no memory, waits for the word on the pipe (its standard input); only when the
// word does not come does it start the program, whose libraries take far longer to load, to
// mark the manifest: "$@" is the program's command line (kHxMarkInterruptedOption, the manifest
// and the files' base). It ignores the stop signals.
constexpr char kWatcherScript[] = "trap '' INT TERM HUP PIPE; read -r word; [ \"$word\" = F ] || exec \"$@\"";
static_assert(kFinished == 'F', "the script waits for the word hxrecord sends");

// Starts the shell watcher reading `pipe` as its standard input, its other streams on /dev/null
// and no other file open, the stop signals blocked until it ignores them.
pid_t spawnWatcher(const std::string& program, int pipe, const std::string& manifestPath, const std::string& base) {
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  if (posix_spawn_file_actions_init(&actions) != 0) return -1;
  if (posix_spawnattr_init(&attributes) != 0) {
    posix_spawn_file_actions_destroy(&actions);
    return -1;
  }
  sigset_t blocked;
  sigemptyset(&blocked);
  for (const int signal : kStopSignals) sigaddset(&blocked, signal);
  std::string shell = "/bin/sh", command = "-c", script = kWatcherScript, name = "hxrecord-watch",
              programCopy = program, mark = kHxMarkInterruptedOption, manifest = manifestPath, files = base;
  char* const arguments[] = {shell.data(), command.data(),  script.data(), name.data(), programCopy.data(),
                             mark.data(),  manifest.data(), files.data(),  nullptr};
  pid_t pid = -1;
  if (posix_spawn_file_actions_adddup2(&actions, pipe, 0) == 0 &&
      posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0) == 0 &&
      posix_spawn_file_actions_adddup2(&actions, 1, 2) == 0 &&
      posix_spawn_file_actions_addclosefrom_np(&actions, 3) == 0 &&
      posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK) == 0 &&
      posix_spawnattr_setsigmask(&attributes, &blocked) == 0 &&
      posix_spawn(&pid, shell.c_str(), &actions, &attributes, arguments, environ) != 0) {
    pid = -1;
  }
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return pid;
}
}  // namespace

HxManifestWatch::~HxManifestWatch() { release(false); }

bool HxManifestWatch::start(const std::string& manifestPath, const std::string& base, const std::string& program) {
  int fds[2];
  if (::pipe2(fds, O_CLOEXEC) != 0) return false;
  pid_t pid = program.empty() ? -1 : spawnWatcher(program, fds[0], manifestPath, base);
  if (pid < 0) pid = ::fork();
  if (pid == 0) {
    // The forked watcher: nothing of the parent's stays open here, not its files, not the pipes
    // its own reader waits on.
    ::close(fds[1]);
    ignoreStopSignals();
    silenceStandardStreams(fds[0]);
    const unsigned pipe = static_cast<unsigned>(fds[0]);
    if (pipe > 3) ::close_range(3, pipe - 1, 0);
    ::close_range(std::max(pipe + 1, 3u), std::numeric_limits<unsigned>::max(), 0);
    watch(fds[0], manifestPath, base);
  }
  ::close(fds[0]);
  if (pid < 0) {
    ::close(fds[1]);
    return false;
  }
  pid_ = pid;
  pipe_ = fds[1];
  return true;
}

void HxManifestWatch::release(bool finalStatusWritten) {
  if (pipe_ >= 0) {
    if (finalStatusWritten) {
      while (::write(pipe_, &kFinished, 1) < 0 && errno == EINTR) {
      }
    }
    ::close(pipe_);
    pipe_ = -1;
  }
  if (pid_ > 0) {
    while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
  }
}

bool hxMarkManifestInterrupted(const std::string& manifestPath, const std::string& base) {
  using Json = nlohmann::ordered_json;
  std::ifstream in(manifestPath, std::ios::binary);
  Json manifest = Json::parse(in, nullptr, false);
  if (!manifest.is_object() || manifest.value("status", Json()) != "recording") return false;
  char updated[21];
  hxUtcTimestamp(updated);
  manifest["updated"] = updated;
  manifest["status"] = "interrupted";
  manifest["statusMessage"] =
      "the recording process ended without finishing (killed or crashed); the files hold "
      "the samples written before, and 'hxrepair " +
      base + "' finishes those cut short";
  // What each file holds, counted by the repair without changing anything.
  const std::vector<HxFileRepair> held = hxRepairRecording(base, true);
  std::uint64_t samples = std::numeric_limits<std::uint64_t>::max();
  Json& files = manifest["files"];
  for (Json& file : files) {
    if (!file.is_object() || !file["extension"].is_string()) continue;
    const std::string path = base + file["extension"].get<std::string>();
    const auto found = std::find_if(held.begin(), held.end(), [&](const HxFileRepair& r) { return r.path == path; });
    std::uint64_t count = found == held.end() || found->outcome == HxFileRepair::Outcome::Missing ? 0 : found->samples;
    // An HDF5 file needs no repair: it holds the samples of the chunks flushed before.
    HxHdf5Reader hdf5;
    std::string error;
    if (found == held.end() && hdf5.open(path, error)) count = hdf5.samples();
    file["samples"] = count;
    samples = std::min(samples, count);
  }
  if (samples == std::numeric_limits<std::uint64_t>::max()) samples = 0;
  manifest["samples"] = samples;
  const Json& interval = manifest["sampleInterval"];
  if (interval.is_number()) {
    manifest["simulatedTime"] = samples == 0 ? 0.0 : static_cast<double>(samples - 1) * interval.get<double>();
  }
  const std::string text = manifest.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
  const std::string temporary = manifestPath + ".tmp";
  return hxReplaceFile(manifestPath.c_str(), temporary.c_str(), text.data(), text.size());
}
