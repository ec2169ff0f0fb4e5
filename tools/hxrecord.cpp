// hxrecord: records a MuJoCo simulation of manipulators through libhxSimulationAnalysis; with
// no argument, the built-in default scene into ./hxrecord-out/.

#include "tools/lib/HxRecord.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  // The progress bar only makes sense on a terminal.
  const bool terminal = isatty(fileno(stderr)) != 0;
  return hxRecordMain(arguments, std::cout, std::cerr, terminal);
}
