// HxStopSignals: SIGINT, SIGTERM and SIGHUP noted instead of ending the process.

#include "tools/lib/HxRecordSignals.h"

#include <string>

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

volatile std::sig_atomic_t g_received = 0;

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

extern "C" void noteStopSignal(int signal) {
  if (g_received == 0) g_received = signal;
}
}  // namespace

HxStopSignals::HxStopSignals() {
  g_received = 0;
  for (int i = 0; i < 4; ++i) {
    struct sigaction action {};
    sigemptyset(&action.sa_mask);
    if (kSignals[i] == SIGPIPE) {
      action.sa_handler = SIG_IGN;
    } else {
      action.sa_handler = noteStopSignal;
      action.sa_flags = SA_RESETHAND | SA_RESTART;
    }
    sigaction(kSignals[i], &action, &previous_[i]);
  }
}

HxStopSignals::~HxStopSignals() {
  for (int i = 0; i < 4; ++i) sigaction(kSignals[i], &previous_[i], nullptr);
}

int HxStopSignals::received() { return g_received; }

const volatile std::sig_atomic_t* HxStopSignals::flag() { return &g_received; }

const char* hxSignalName(int signal) {
  switch (signal) {
    case SIGINT:
      return "SIGINT";
    case SIGTERM:
      return "SIGTERM";
    case SIGHUP:
      return "SIGHUP";
    default:
      break;
  }
  static thread_local std::string name;
  name = "signal " + std::to_string(signal);
  return name.c_str();
}
