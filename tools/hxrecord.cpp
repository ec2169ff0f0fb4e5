// hxrecord: records a MuJoCo simulation of manipulators through libhxSimulationAnalysis; with
// no argument, the built-in default scene into ./hxrecord-out/.

#include <unistd.h>

#include <cstdio>
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
  // hxrecord started by itself to watch a recording's manifest (see HxManifestWatch).
  if (argc == 4 && std::string(argv[1]) == kHxWatchManifestOption) hxWatchManifestMain(argv[2], argv[3]);
  // The progress bar only makes sense on a terminal. The watcher is this program, started
  // afresh: a fork would share the recording's memory.
  return hxRecordMain(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr,
                      isatty(fileno(stderr)) != 0, "/proc/self/exe");
}
