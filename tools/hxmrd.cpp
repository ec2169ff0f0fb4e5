// hxmrd: prints an MRD recording's header fields, labels and samples.

#include <iostream>
#include <string>
#include <vector>

#include "tools/lib/HxMrdCommand.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

int main(int argc, char** argv) {
  return hxMrdMain(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr);
}
