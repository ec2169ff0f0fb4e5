#pragma once
// Shared by the storage and recorder tests: a scripted two-manipulator recording, temporary
// directories, running external programs and reading files.

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

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

/// A fresh directory under the system's temporary directory for the running test, removed at
/// the end of the test.
struct TempDir {
  TempDir() {
    fs::remove_all(path);
    fs::create_directories(path);
  }
  ~TempDir() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
  }
  std::string file(const std::string& name) const { return (path / name).string(); }

  const fs::path path = [] {
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    return fs::temp_directory_path() / ("hx_recorder_" + std::string(test->test_suite_name()) + "_" + test->name() +
                                        "_" + std::to_string(::getpid()));
  }();
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
  for (std::size_t n; (n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) output.append(buffer.data(), n);
  const int status = ::pclose(pipe);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// The given writers, or every writer in the order text, XML, MRD, MATLAB, Mathematica.
inline HxOutputWriterVector writers(bool all = true) {
  HxOutputWriterVector writers;
  writers.pushBack(HxTextOutputWriter());
  if (!all) return writers;
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
/// 53 labels (36 of them non-empty), 35 values per sample. The golden notebook
/// tests/data/recording_two_arms.nb is this recording: keep the two in step.
struct TwoArmScene {
  static constexpr unsigned int kSamples = 4;
  static constexpr std::size_t kLabels = 53;
  static constexpr std::size_t kValues = 35;

  /// With `disableColumns` false every column is recorded (53 labels, 53 values).
  explicit TwoArmScene(bool disableColumns = true) : simulation(2, std::vector<std::string>{"shoulder", "elbow"}, 1) {
    using namespace HxSimAnalysis;
    simulation.setDynamicsEnabled(true);
    HxSystemDataCapture& c = capture;
    c.setLabel("two arms");
    EXPECT_TRUE(c.addManipulatorDataCaptureType(0, HxBasePositionDataCaptureTypeToken));
    EXPECT_TRUE(c.addLinkDataCaptureType(0, HxJointPositionDataCaptureTypeToken, simulation.manipulator(0)));
    EXPECT_TRUE(c.addLinkDataCaptureType(0, HxExternalForceDataCaptureTypeToken, simulation.manipulator(0)));
    EXPECT_TRUE(c.addEndEffectorDataCaptureType(0, HxReachTargetDataCaptureTypeToken, 1u));
    EXPECT_TRUE(c.addManipulatorDataCaptureType(1, HxManipulatorPowerDataCaptureTypeToken));
    EXPECT_TRUE(c.addLinkDataCaptureType(1, HxJointPositionDataCaptureTypeToken, simulation.manipulator(1)));
    EXPECT_TRUE(c.addEndEffectorDataCaptureType(1, HxEndEffectorPlacementDataCaptureTypeToken, 1u));
    if (disableColumns) {
      EXPECT_TRUE(c.setDisableFlags(0, HxBasePositionDataCaptureTypeToken, flags({0, 0, 0, 0, 1, 1, 1})));
      EXPECT_TRUE(c.setDisableFlags(0, "elbow", HxExternalForceDataCaptureTypeToken, flags({0, 0, 0, 1, 1, 1})));
      EXPECT_TRUE(c.setDisableFlags(0, 0u, HxReachTargetDataCaptureTypeToken,
                                    flags({0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 1, 1, 1, 1, 0, 0, 0})));
      EXPECT_TRUE(c.setDisableFlags(1, HxManipulatorPowerDataCaptureTypeToken, flags({1})));
    }
    c.allocateStorage(expected);
    configuration = c;
  }

  /// Time of sample k.
  static double time(unsigned int k) { return 0.25 * k; }
  /// Path-point index of sample k; the last sample is saved with the form without an index
  /// and repeats the one before.
  static unsigned int pathPointIndex(unsigned int k) { return k < 3 ? k : 2; }

  /// Sets the simulation to sample k, captures it, and keeps the record it should give.
  void captureSample(unsigned int k) {
    HxScriptedSimulation& s = simulation;
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

    capture.captureData(simulation);
    expected.setTime(time(k));
    expected.setPathPointIndex(pathPointIndex(k));
    capture.storeData(expected);
    samples.push_back(expected);
  }

  /// Records all samples through `recorder`, which must hold the writers and be saving.
  void recordAll(HxSystemStoredData& recorder) {
    for (unsigned int k = 0; k < kSamples; ++k) {
      captureSample(k);
      if (k < 3) {
        recorder.saveCapturedData(time(k), pathPointIndex(k), capture);
      } else {
        recorder.saveCapturedData(time(k), capture);
      }
    }
  }

  /// The values of sample k as reals (time, index, values).
  std::vector<double> values(unsigned int k) const {
    std::vector<double> out;
    samples[k].getRealElements(out, false);
    return out;
  }

  HxScriptedSimulation simulation;
  HxSystemDataCapture capture;
  /// The capture as configured, before any sample was captured into its quantities' buffers.
  HxSystemDataCapture configuration;
  /// The record each sample should give, the last one in `expected`.
  HxSystemDataStorage expected;
  std::vector<HxSystemDataStorage> samples;
};

}  // namespace HxRecorderTest
