// hxrecord: records a MuJoCo simulation of manipulators through libhxSimulationAnalysis; with
// no argument, the built-in default scene into ./hxrecord-out/.

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "tools/lib/HxManifestWatch.h"
#include "tools/lib/HxRecord.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

int main(int argc, char** argv) {
  // Started by the watcher of a recording this program was making when it died (HxManifestWatch).
  if (argc == 4 && std::string(argv[1]) == kHxMarkInterruptedOption) {
    hxMarkManifestInterrupted(argv[2], argv[3]);
    return 0;
  }
  // The watcher runs this very program should the recording die; a fork would share its memory.
  std::error_code error;
  const std::string self = std::filesystem::read_symlink("/proc/self/exe", error).string();
  // The progress bar only makes sense on a terminal.
  return hxRecordMain(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr,
                      isatty(fileno(stderr)) != 0, self);
}
