// The main of every test program. Each process works in a temporary directory of its own: TMPDIR
// and TEST_TMPDIR point into it, so files that tests, the libraries and the programs they start
// put in "the temporary directory" land there, and it is removed when the tests end.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/support/HxScopedTempDir.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  HxScopedTempDir processDirectory("tests");
  const std::string directory = processDirectory.path().string();
  ::setenv("TMPDIR", directory.c_str(), 1);
  ::setenv("TEST_TMPDIR", (directory + "/").c_str(), 1);
  return RUN_ALL_TESTS();
}
