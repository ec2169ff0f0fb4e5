#pragma once
// HxManifestWatch: a small process that finishes a recording's manifest when hxrecord dies
// without having written its final status (SIGKILL, a crash).

#include <sys/types.h>

#include <string>

/// The watcher of one recording. start() starts it, as the system's shell when a program is
/// named (the shell runs the program to mark the manifest), a fork of this process otherwise; it
/// ignores SIGINT, SIGTERM and SIGHUP (those stop hxrecord, which then writes the final status
/// itself) and waits for the pipe from hxrecord to close. Closed after release(true) it just ends; closed in any other
/// way (the process died) it marks the manifest interrupted, see hxMarkManifestInterrupted. release() waits for it to
/// end, so it never outlives a run and leaves no zombie; the destructor releases it when nobody did.
///
/// A forked watcher shares this process's memory page by page until one of them writes a page:
/// every page the recording then writes first costs a copy and, with a second thread, a flush
/// of the other processor's address cache. A shell shares nothing and starts in about a
/// millisecond, where hxrecord's own start (its libraries) takes 15: so hxrecord has the shell
/// wait and names itself as the program that marks the manifest. start() must be called while the process is
/// single-threaded. The watcher holds no file but its end of the pipe (standard streams go to
/// /dev/null) and leaves through _exit.
class HxManifestWatch {
 public:
  HxManifestWatch() = default;
  ~HxManifestWatch();
  HxManifestWatch(const HxManifestWatch&) = delete;
  HxManifestWatch& operator=(const HxManifestWatch&) = delete;

  /// Starts the watcher of the manifest at `manifestPath`, whose files are `base` plus their
  /// extensions: /bin/sh, which runs `program --mark-interrupted MANIFEST BASE` should the word
  /// that the final status is written not come, or, when `program` is empty or the shell cannot
  /// be started, a fork of this process.
  /// False when neither can be started (no pipe, no process): the recording then goes on
  /// without.
  bool start(const std::string& manifestPath, const std::string& base, const std::string& program = std::string());
  /// Tells the watcher whether the final status was written (when it was not, the watcher writes
  /// "interrupted"), closes the pipe and waits for the watcher to end.
  void release(bool finalStatusWritten);

 private:
  pid_t pid_ = -1;
  int pipe_ = -1;
};

/// The option of the program named to start() that marks a manifest interrupted
/// (`PROGRAM --mark-interrupted MANIFEST BASE`, see hxMarkManifestInterrupted).
extern const char* const kHxMarkInterruptedOption;

/// When the manifest at `manifestPath` still says "recording", rewrites it (atomically) as
/// "interrupted", with a message saying the recording process ended without finishing, the
/// samples each file of `base` holds as the repair counts them (without changing any file) and
/// the samples of the recording, the fewest any file holds. Returns true when it rewrote it.
bool hxMarkManifestInterrupted(const std::string& manifestPath, const std::string& base);
