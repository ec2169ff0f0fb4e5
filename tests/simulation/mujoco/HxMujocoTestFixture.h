#pragma once
// Shared by the MuJoCo simulation tests: a fixture that fails a test on any engine warning and
// an independent engine instance of a model for cross-checks.

#include <gtest/gtest.h>
#include <mujoco/mujoco.h>

#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

namespace hxmujocotest {

// Collects every engine warning; a test that meets one fails.
inline std::vector<std::string>& engineWarnings() {
  static std::vector<std::string> warnings;
  return warnings;
}

// Writes model text to a file of the test's temporary directory; returns its path.
// The file name carries the process id: CTest runs the tests of one executable in parallel
// processes, which must not write the same file.
inline std::string writeModelFile(const std::string& name, const char* text) {
  const std::string file = ::testing::TempDir() + std::to_string(::getpid()) + "_" + name;
  FILE* out = std::fopen(file.c_str(), "w");
  if (out) {
    std::fputs(text, out);
    std::fclose(out);
  }
  return file;
}

}  // namespace hxmujocotest

class MujocoTest : public ::testing::Test {
 protected:
  void SetUp() override {
    hxmujocotest::engineWarnings().clear();
    previous_ = mju_user_warning;
    mju_user_warning = [](const char* message) { hxmujocotest::engineWarnings().emplace_back(message); };
  }
  void TearDown() override {
    mju_user_warning = previous_;
    for (const auto& warning : hxmujocotest::engineWarnings()) ADD_FAILURE() << "MuJoCo warning: " << warning;
  }

  // An independent engine instance of the same model, for cross-checks.
  struct Reference {
    mjModel* model = nullptr;
    mjData* data = nullptr;
    ~Reference() {
      if (data) mj_deleteData(data);
      if (model) mj_deleteModel(model);
    }
  };
  static void loadReference(Reference& ref, const std::string& file) {
    char error[512];
    ref.model = mj_loadXML(file.c_str(), nullptr, error, sizeof error);
    ASSERT_NE(ref.model, nullptr) << error;
    ref.data = mj_makeData(ref.model);
  }

 private:
  void (*previous_)(const char*) = nullptr;
};
