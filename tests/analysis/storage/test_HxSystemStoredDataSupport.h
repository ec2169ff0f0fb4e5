#pragma once
// Shared by the recorder tests: a scripted two-manipulator recording, temporary directories,
// running external programs and reading files.

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/storage/HxSystemStoredData.h"
#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "analysis/writers/HxXmlOutputWriter.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxScriptedSimulation.h"

namespace HxRecorderTest {

namespace fs = std::filesystem;

/// A fresh directory under the system's temporary directory, removed at the end of the test.
class TempDir {
 public:
  TempDir() {
    const ::testing::TestInfo* info = ::testing::UnitTest::GetInstance()->current_test_info();
    path_ = fs::temp_directory_path() /
            ("hx_recorder_" + std::string(info->test_suite_name()) + "_" + info->name() + "_" +
             std::to_string(::getpid()));
    fs::remove_all(path_);
    fs::create_directories(path_);
  }
  ~TempDir() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const fs::path& path() const { return path_; }
  std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  fs::path path_;
};

/// The whole content of a file ("" when it cannot be read).
inline std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/// Runs a shell command; returns its exit status and puts its standard output and error in
/// `output`. -1 when it could not be run or did not exit normally.
inline int run(const std::string& command, std::string& output) {
  output.clear();
  FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return -1;
  std::array<char, 4096> buffer{};
  std::size_t n = 0;
  while ((n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0) output.append(buffer.data(), n);
  const int status = ::pclose(pipe);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Whether a program is on the PATH.
inline bool onPath(const std::string& program) {
  std::string ignored;
  return run("command -v " + program, ignored) == 0;
}

/// Every writer, in the order text, XML, MRD, MATLAB, Mathematica.
inline HxOutputWriterVector allFiveWriters() {
  HxOutputWriterVector writers;
  writers.pushBack(HxTextOutputWriter());
  writers.pushBack(HxXmlOutputWriter());
  writers.pushBack(HxMrdOutputWriter());
  writers.pushBack(HxMatlabOutputWriter());
  writers.pushBack(HxMathematicaOutputWriter());
  return writers;
}

inline HxSystemDataCapture::Flags flags(std::initializer_list<bool> values) {
  HxSystemDataCapture::Flags result;
  for (const bool value : values) result.pushBack(HxXmlBasicType<bool>(value));
  return result;
}

/// Two manipulators of two links ("shoulder", "elbow") and one end effector each, driven by
/// hand sample after sample, with a capture of joint, Cartesian, force and reach-target
/// quantities in which 18 columns are disabled:
///
/// - manipulator 0: base position (quaternion 1-3 disabled); joint position and external
///   force on both links (the elbow's moments disabled); reach target on end effector 0
///   (desired placement and actual orientation disabled);
/// - manipulator 1: manipulator power (its single column disabled: its label stays); joint
///   position on both links; end-effector placement.
///
/// 53 labels (36 of them non-empty), 35 values per sample.
class TwoArmScene {
 public:
  static constexpr unsigned int kSamples = 4;
  static constexpr std::size_t kLabels = 53;
  static constexpr std::size_t kValues = 35;
  static constexpr std::size_t kDisabled = 18;

  /// With `disableColumns` false every column is recorded (53 labels, 53 values).
  explicit TwoArmScene(bool disableColumns = true)
      : simulation_(2, std::vector<std::string>{"shoulder", "elbow"}, 1) {
    simulation_.setDynamicsEnabled(true);
    using namespace HxSimAnalysis;
    HxSystemDataCapture& c = capture_;
    c.setLabel("two arms");
    EXPECT_TRUE(c.addManipulatorDataCaptureType(0, HxBasePositionDataCaptureTypeToken));
    EXPECT_TRUE(c.addLinkDataCaptureType(0, HxJointPositionDataCaptureTypeToken, simulation_.manipulator(0)));
    EXPECT_TRUE(c.addLinkDataCaptureType(0, HxExternalForceDataCaptureTypeToken, simulation_.manipulator(0)));
    EXPECT_TRUE(c.addEndEffectorDataCaptureType(0, HxReachTargetDataCaptureTypeToken, 1u));
    EXPECT_TRUE(c.addManipulatorDataCaptureType(1, HxManipulatorPowerDataCaptureTypeToken));
    EXPECT_TRUE(c.addLinkDataCaptureType(1, HxJointPositionDataCaptureTypeToken, simulation_.manipulator(1)));
    EXPECT_TRUE(c.addEndEffectorDataCaptureType(1, HxEndEffectorPlacementDataCaptureTypeToken, 1u));

    if (disableColumns) disableSomeColumns();
    c.allocateStorage(expected_);
    configuration_ = c;
  }

  /// Disables the 18 columns listed in the class comment.
  void disableSomeColumns() {
    using namespace HxSimAnalysis;
    HxSystemDataCapture& c = capture_;
    EXPECT_TRUE(c.setDisableFlags(0, HxBasePositionDataCaptureTypeToken, flags({0, 0, 0, 0, 1, 1, 1})));
    EXPECT_TRUE(c.setDisableFlags(0, std::string("elbow"), HxExternalForceDataCaptureTypeToken,
                                  flags({0, 0, 0, 1, 1, 1})));
    EXPECT_TRUE(c.setDisableFlags(0, 0u, HxReachTargetDataCaptureTypeToken,
                                  flags({0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 1, 1, 1, 1, 0, 0, 0})));
    EXPECT_TRUE(c.setDisableFlags(1, HxManipulatorPowerDataCaptureTypeToken, flags({1})));
  }

  const HxSystemDataCapture& capture() const { return capture_; }
  /// The capture as configured, before any sample was captured into its quantities' buffers.
  const HxSystemDataCapture& configuration() const { return configuration_; }
  HxScriptedSimulation& simulation() { return simulation_; }

  /// Time of sample k.
  static double time(unsigned int k) { return 0.25 * k; }
  /// Path-point index of sample k; the last sample is saved with the form without an index
  /// and repeats the one before.
  static unsigned int pathPointIndex(unsigned int k) { return k < 3 ? k : 2; }

  /// Sets the simulation to sample k and captures it.
  void captureSample(unsigned int k) {
    HxScriptedSimulation& s = simulation_;
    const double kd = k;
    // Manipulator 0: joints, base, link wrenches, end effector against a fixed target.
    s.setJointPositions(0, {0.5 * kd, -0.25 * (kd + 1)});
    s.activeState(0).mutablePositionState().setCoordSystemXform(
        HxCoordSystemXform(HxVector(1, 2, 0.5 + 0.25 * kd), HxOrientation()));
    s.externalForce(0).setForces({HxGeneralForce(kd, 2, 3, 4, 5, 6), HxGeneralForce(10, 20, 30 + kd, 7, 8, 9)});
    s.setDesiredPlacement(0, 0, HxEndEffectorPlacement(HxVector(1, 1, 1), HxOrientation()));
    const HxVector actual[kSamples] = {HxVector(0.25, 0, 1), HxVector(1, 1, 1), HxVector(1, 1, 1), HxVector(1, 4, 5)};
    EXPECT_TRUE(s.setEndEffectorPlacement(0, 0, HxEndEffectorPlacement(actual[k], HxOrientation())));
    s.propagationResult(0).setHitJointLimit(k == 3);
    // Manipulator 1: joints and end-effector placement.
    s.setJointPositions(1, {2 + kd, 3});
    EXPECT_TRUE(s.setEndEffectorPlacement(
        1, 0, HxEndEffectorPlacement(HxVector(0.5, -0.5, 2 + 0.125 * kd), HxOrientation(0.5, 0.5, 0.5, 0.5))));
    s.setControlOutputTime(time(k));

    capture_.captureData(simulation_);
    // What the recorder's record should hold for this sample, kept for the checks.
    expected_.setTime(time(k));
    expected_.setPathPointIndex(pathPointIndex(k));
    capture_.storeData(expected_);
    samples_.push_back(expected_);
  }

  /// Records all samples through `recorder`, which must hold the writers and be saving.
  void recordAll(HxSystemStoredData& recorder) {
    for (unsigned int k = 0; k < kSamples; ++k) {
      captureSample(k);
      if (k < 3) {
        recorder.saveCapturedData(time(k), pathPointIndex(k), capture_);
      } else {
        recorder.saveCapturedData(time(k), capture_);
      }
    }
  }

  /// The records as they should have been written, one per sample.
  const std::vector<HxSystemDataStorage>& samples() const { return samples_; }

  /// The values of sample k as reals (time, index, values).
  std::vector<double> values(unsigned int k) const {
    std::vector<double> out;
    samples_[k].getRealElements(out, false);
    return out;
  }

 private:
  HxScriptedSimulation simulation_;
  HxSystemDataCapture capture_;
  HxSystemDataCapture configuration_;
  HxSystemDataStorage expected_;
  std::vector<HxSystemDataStorage> samples_;
};

}  // namespace HxRecorderTest
