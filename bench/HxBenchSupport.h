// What the benchmarks that compare two measurements of the same run share: a stopwatch on the
// process's CPU time (user and system), the clock Google Benchmark's own "CPU" figures and rates
// use, and the test for a short run (CTest's smoke run), in which a benchmark program may size
// its problem down.
#ifndef HX_BENCH_SUPPORT_H
#define HX_BENCH_SUPPORT_H

#include <sys/resource.h>
#include <time.h>

#include <cstdlib>
#include <cstring>

/// Accumulates CPU time between start() and stop(), and apart the part of it spent in the
/// kernel (system time, as getrusage splits it); stopped when made.
class HxBenchStopwatch {
 public:
  void start() {
    started_ = now();
    systemStarted_ = systemNow();
  }
  void stop() {
    total_ += now() - started_;
    system_ += systemNow() - systemStarted_;
  }
  /// Seconds accumulated so far (the running lap not included).
  double seconds() const { return total_; }
  /// The part of seconds() spent in the kernel, for writes into the page cache for instance.
  double systemSeconds() const { return system_; }
  /// Seconds since the last start(), the running lap.
  double lap() const { return now() - started_; }

  /// The process's CPU time, in seconds.
  static double now() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
  }

 private:
  static double systemNow() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_stime.tv_sec) + 1e-6 * static_cast<double>(usage.ru_stime.tv_usec);
  }

  double started_ = 0.0;
  double total_ = 0.0;
  double systemStarted_ = 0.0;
  double system_ = 0.0;
};

/// Whether the command line asks for a minimum time per benchmark below 0.05 s
/// (--benchmark_min_time=0.001 in the CTest smoke run): the figures do not matter then, only
/// that every benchmark runs.
inline bool hxBenchIsShortRun(int argc, char** argv) {
  static const char kMinTime[] = "--benchmark_min_time=";
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], kMinTime, sizeof kMinTime - 1) == 0 &&
        std::strtod(argv[i] + sizeof kMinTime - 1, nullptr) < 0.05) {
      return true;
    }
  }
  return false;
}

#endif  // HX_BENCH_SUPPORT_H
