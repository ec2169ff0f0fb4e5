// hxinfo: summarises a recording (any of its files, or its manifest).

#include <iostream>
#include <string>
#include <vector>

#include "tools/lib/HxInfoCommand.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

int main(int argc, char** argv) {
  return hxInfoMain(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr);
}
