#pragma once
// The signals that stop a recording cleanly instead of killing hxrecord.

#include <csignal>

/// While an object of this class lives, SIGINT, SIGTERM and SIGHUP no longer end the process:
/// the first one received is noted (`received()`), and a recording that watches `flag()` stops
/// at its next sample and finishes its files. Each handler is reset once it has run, so the same
/// signal a second time ends the process as usual (a second Ctrl-C still works). SIGPIPE is
/// ignored, so that output to a closed pipe shows as a write error instead of killing the
/// process. The previous dispositions come back when the object is destroyed. One object at a
/// time.
class HxStopSignals {
 public:
  HxStopSignals();
  ~HxStopSignals();
  HxStopSignals(const HxStopSignals&) = delete;
  HxStopSignals& operator=(const HxStopSignals&) = delete;

  /// The number of the first stop signal received, 0 while none has been.
  static int received();
  /// The same number, for code that polls it on a hot path.
  static const volatile std::sig_atomic_t* flag();

 private:
  struct sigaction previous_[4];
};

/// The conventional name of a signal: "SIGINT", "SIGTERM", "SIGHUP", else "signal N".
const char* hxSignalName(int signal);
