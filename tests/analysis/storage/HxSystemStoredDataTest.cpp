// The recorder: its life cycle (writers, files, restarts, finishing, copies, reallocation,
// path-point indices, no allocation per sample), and a scripted two-manipulator recording
// through all five writers: every file equal to its golden file, the XML file accepted by
// xmllint and read back by the framework.

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/capture/HxSystemDataVector.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/storage/HxSystemStoredData.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/analysis/types/HxTypesTestSupport.h"
#include "tests/analysis/writers/HxWriterTestSupport.h"
#include "tests/framework/HxFrameworkTestTypes.h"
#include "tests/support/HxAllocationCounter.h"
#include "tests/support/HxScopedTempDir.h"

namespace {

namespace fs = std::filesystem;
using HxFrameworkTest::slurp;
using HxTypesTest::flags;
using HxWriterTest::allWriters;

/// Two manipulators of two links ("shoulder", "elbow") and one end effector each, driven by
/// hand sample after sample, with a capture of joint, Cartesian, force and reach-target
/// quantities in which 18 columns are disabled:
/// - manipulator 0: base position (quaternion 1-3 disabled); joint position and external
///   force on both links (the elbow's moments disabled); reach target on end effector 0
///   (desired placement and actual orientation disabled);
/// - manipulator 1: manipulator power (its single column disabled: its label stays); joint
///   position on both links; end-effector placement.
/// 53 labels (36 of them non-empty), 35 values per sample. The golden notebook
/// tests/data/recording_two_arms.nb is this recording: keep the two in step.
struct TwoArmScene {
  static constexpr unsigned int kSamples = 4;

  TwoArmScene() : simulation(2, std::vector<std::string>{"shoulder", "elbow"}, 1) {
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
    EXPECT_TRUE(c.setDisableFlags(0, HxBasePositionDataCaptureTypeToken, flags({0, 0, 0, 0, 1, 1, 1})));
    EXPECT_TRUE(c.setDisableFlags(0, "elbow", HxExternalForceDataCaptureTypeToken, flags({0, 0, 0, 1, 1, 1})));
    EXPECT_TRUE(c.setDisableFlags(0, 0u, HxReachTargetDataCaptureTypeToken,
                                  flags({0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 1, 1, 1, 1, 0, 0, 0})));
    EXPECT_TRUE(c.setDisableFlags(1, HxManipulatorPowerDataCaptureTypeToken, flags({1})));
    c.allocateStorage(expected);
    configuration = c;
  }

  static double time(unsigned int k) { return 0.25 * k; }
  /// The last sample is saved with the form without an index and repeats the one before.
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
      if (k < 3) recorder.saveCapturedData(time(k), pathPointIndex(k), capture);
      if (k == 3) recorder.saveCapturedData(time(k), capture);
    }
  }

  HxScriptedSimulation simulation;
  HxSystemDataCapture capture;
  HxSystemDataCapture configuration;  // as configured, before any sample was captured
  HxSystemDataStorage expected;       // the record each sample should give
  std::vector<HxSystemDataStorage> samples;
};

// A recorder and the two-arm scene, with a fresh directory for the files.
class HxSystemStoredDataTest : public ::testing::Test {
 protected:
  std::string file(const std::string& name) const { return (dir / name).string(); }

  // Gives the recorder `writers`, shapes it for the scene and begins saving to `name`.
  void begin(const HxOutputWriterVector& writers, const std::string& name = "run") {
    recorder.setOutputWriterVector(writers);
    recorder.allocateStorage(scene.capture);
    recorder.beginSaveToFile(file(name));
  }

  const HxScopedTempDir temp_{"recorder"};
  const fs::path& dir = temp_.path();
  TwoArmScene scene;
  HxSystemStoredData recorder;
};

// Beginning again abandons the first files unfinished (MRD header blank, XML unclosed, notebook
// without trailer) with the sample they had, and starts a complete new set. A recorder starts at
// path-point index 0 for the form without an index.
TEST_F(HxSystemStoredDataTest, BeginningTwiceLeavesFirstFilesUnfinished) {
  begin(allWriters(), "first");
  scene.captureSample(0);
  recorder.saveCapturedData(TwoArmScene::time(0), scene.capture);
  recorder.beginSaveToFile(file("second"));
  scene.captureSample(1);
  recorder.saveCapturedData(TwoArmScene::time(1), 1, scene.capture);
  recorder.finishSaveToFile();

  const std::string firstMrd = slurp(file("first.mrd")), secondMrd = slurp(file("second.mrd"));
  EXPECT_EQ(firstMrd.substr(0, 81) + secondMrd.substr(0, 13), std::string(80, ' ') + "\n53\t53\t1\t1000 ");
  EXPECT_EQ(firstMrd.size(), secondMrd.size());  // one sample each
  EXPECT_NE(slurp(file("first.xml")).find("generalStorage"), std::string::npos);
  for (const auto& [extension, end] :
       {std::pair(".xml", "</default>"), std::pair(".nb", "End of Mathematica Notebook file.")}) {
    EXPECT_TRUE(slurp(file("first") + extension).find(end) == std::string::npos &&
                slurp(file("second") + extension).find(end) != std::string::npos)
        << extension;
  }
  const std::string firstCsv = slurp(file("first.csv")), secondCsv = slurp(file("second.csv"));
  EXPECT_TRUE(firstCsv.find("\n0,0,") != std::string::npos && secondCsv.find("\n0.25,1,") != std::string::npos);
  EXPECT_TRUE(std::count(firstCsv.begin(), firstCsv.end(), '\n') == 2 &&
              std::count(secondCsv.begin(), secondCsv.end(), '\n') == 2);
}

// Without writers, saving makes no file; finishing twice is harmless. A second allocateStorage
// takes a changed configuration in place: the record is reshaped and the label block follows the
// new configuration. The form without an index keeps the last index given, also across saves.
TEST_F(HxSystemStoredDataTest, WithoutWritersNoFileAndReallocatingFollowsAChangedConfiguration) {
  begin(HxOutputWriterVector());
  scene.recordAll(recorder);
  recorder.finishSaveToFile();
  recorder.finishSaveToFile();
  EXPECT_TRUE(fs::is_empty(dir));

  HxSystemDataCapture smaller;
  ASSERT_TRUE(smaller.addManipulatorDataCaptureType(1, HxSimAnalysis::HxCenterOfMassDataCaptureTypeToken));
  HxOutputWriterVector text;
  text.pushBack(HxTextOutputWriter());
  begin(text);
  recorder.allocateStorage(smaller);
  recorder.beginSaveToFile(file("run"));
  scene.simulation.setCenterOfMass(1, HxVector(0.5, 1.5, -2));
  ASSERT_TRUE(smaller.captureData(scene.simulation));
  recorder.saveCapturedData(1.5, smaller);
  recorder.saveCapturedData(2, 7, smaller);
  recorder.saveCapturedData(2.5, smaller);
  recorder.finishSaveToFile();
  EXPECT_EQ(slurp(file("run.csv")),
            "Time,Point Path Index,Manip[1]:Center of Mass:X,Manip[1]:Center of Mass:Y,Manip[1]:Center of Mass:Z\n"
            "1.5,2,0.5,1.5,-2\n2,7,0.5,1.5,-2\n2.5,7,0.5,1.5,-2\n");
}

// The recorder's direct route: a record filled by storeDataDirect answers every reader as one
// filled through storeData (each reader on a fresh record, so that none profits from another's
// refresh): nested data, XML form, reals, texts, equality, copy and assignment. A setter after a
// direct store works on the current values, and a record shaped for another configuration gets
// what storeData gives it.
TEST_F(HxSystemStoredDataTest, DirectStoreAnswersAsStoreData) {
  using Record = HxSystemDataStorage;
  const std::function<bool(const Record&, const Record&)> readers[] = {
      [](const Record& a, const Record& b) {
        return HxFrameworkTest::writeToString(a) == HxFrameworkTest::writeToString(b);
      },
      [](const Record& a, const Record& b) { return a.manipulatorDataVector() == b.manipulatorDataVector(); },
      [](const Record& a, const Record& b) {
        std::vector<double> x, y;
        a.getRealElements(x, false);
        b.getRealElements(y, false);
        return x == y;
      },
      [](const Record& a, const Record& b) {
        std::vector<std::string> x, y;
        a.getStringElements(x);
        b.getStringElements(y);
        return x == y;
      },
      [](const Record& a, const Record& b) { return a == b && b == a; },
      [](const Record& a, const Record& b) { return Record(a).manipulatorDataVector() == b.manipulatorDataVector(); },
      [](const Record& a, const Record& b) {
        Record assigned;
        assigned = a;
        return assigned == b;
      },
  };
  for (unsigned int k = 0; k < TwoArmScene::kSamples; ++k) {
    scene.captureSample(k);
    for (std::size_t r = 0; r < std::size(readers); ++r) {
      Record direct;
      scene.capture.allocateStorage(direct);
      direct.setTime(TwoArmScene::time(k));
      direct.setPathPointIndex(TwoArmScene::pathPointIndex(k));
      ASSERT_TRUE(scene.capture.storeDataDirect(direct));
      EXPECT_TRUE(readers[r](direct, scene.expected)) << "sample " << k << ", reader " << r;
    }
  }

  Record direct, expected = scene.expected;
  scene.capture.allocateStorage(direct);
  direct.setTime(scene.expected.time());
  direct.setPathPointIndex(scene.expected.pathPointIndex());
  scene.capture.storeDataDirect(direct);
  EXPECT_TRUE(direct.setSpecificLinkLevelData(0, 1, 1, 2, 99.0) && expected.setSpecificLinkLevelData(0, 1, 1, 2, 99.0));
  EXPECT_EQ(HxFrameworkTest::writeToString(direct), HxFrameworkTest::writeToString(expected));

  // Shaped for manipulator 1's joints and manipulator 0's base (three of its columns disabled).
  HxSystemDataCapture other;
  other.addLinkDataCaptureType(1, HxSimAnalysis::HxJointPositionDataCaptureTypeToken, scene.simulation.manipulator(1));
  other.addManipulatorDataCaptureType(0, HxSimAnalysis::HxBasePositionDataCaptureTypeToken);
  other.addManipulatorDataCaptureType(0, HxSimAnalysis::HxCenterOfMassDataCaptureTypeToken);
  Record viaSetters, viaArray;
  other.allocateStorage(viaSetters);
  other.allocateStorage(viaArray);
  EXPECT_EQ(scene.capture.storeData(viaSetters), scene.capture.storeDataDirect(viaArray));
  EXPECT_TRUE(viaArray == viaSetters) << HxFrameworkTest::writeToString(viaArray);
}

// Once the first sample has been written, capturing a sample and saving it through all five
// writers makes no heap allocation; nor do storing a sample and reading its text in each form,
// nor the labels into a warm list.
TEST_F(HxSystemStoredDataTest, SavingASampleDoesNotAllocate) {
  begin(allWriters());
  scene.captureSample(0);
  recorder.saveCapturedData(0.0, 0, scene.capture);
  scene.captureSample(3);  // the longest texts of the scene
  std::vector<std::string> texts, labels;
  const double times[] = {0.0, -2.2250738585072014e-308, 123456.789, 1e300, 0.1};
  auto sample = [&](unsigned int i) {
    scene.capture.captureData(scene.simulation);
    recorder.saveCapturedData(times[i % 5], 4000000000u - i, scene.capture);
    scene.expected.setTime(times[i % 5]);
    scene.capture.storeData(scene.expected);
    scene.expected.getStringElements(texts);
    scene.expected.elementText();
    scene.expected.elementValues();
    scene.capture.getStringElements(labels);
  };
  for (unsigned int i = 0; i < 5; ++i) sample(i);
  HxAllocationCounter counter;
  for (unsigned int i = 5; i < 100; ++i) sample(i);
  EXPECT_TRUE(counter.allocations() == 0u && texts[0] == "0.1") << counter.allocations();
  recorder.finishSaveToFile();
}

// All five writers record the scene (finished twice: the second finish writes no second
// trailer; copies finished before the samples).
class HxSystemStoredDataEndToEnd : public HxSystemStoredDataTest {
 protected:
  void SetUp() override {
    begin(allWriters());
    // Copies carry configuration and writers but never the files: a copy made while saving
    // believes it is saving, and its finish touches no file (as the files' checks show).
    HxSystemStoredData copy(recorder), assigned;
    assigned = recorder;
    EXPECT_TRUE(copy == recorder && assigned == recorder && !(recorder == HxSystemStoredData()));
    copy.finishSaveToFile();
    assigned.finishSaveToFile();  // idle: nothing to finish
    scene.recordAll(recorder);
    recorder.finishSaveToFile();
    recorder.finishSaveToFile();
  }

  const std::string base_ = file("run");
};

// xmllint accepts the document; the framework reads it back as the configuration followed by
// one record per sample, each equal to what was recorded.
TEST_F(HxSystemStoredDataEndToEnd, XmlIsWellFormedAndReadsBack) {
  EXPECT_EQ(std::system(("xmllint --noout '" + base_ + ".xml'").c_str()), 0);

  Hx::ScopedPrintCapture messages;
  HxXmlReader reader;
  HxSystemDataVector back;
  ASSERT_TRUE(reader.openFile(base_ + ".xml") && reader.readObject(back)) << messages.text();
  ASSERT_EQ(back.size(), 1 + TwoArmScene::kSamples);
  EXPECT_TRUE(dynamic_cast<const HxSystemDataCapture&>(back[0]) == scene.configuration);
  for (unsigned int k = 0; k < TwoArmScene::kSamples; ++k) {
    EXPECT_TRUE(dynamic_cast<const HxSystemDataStorage&>(back[k + 1]) == scene.samples[k]) << "sample " << k;
  }
}

// Recording again into files of which one cannot be opened (a directory holds the XML file's
// name) loses that writer's output silently; every other writer's file is as complete as the
// first time.
TEST_F(HxSystemStoredDataEndToEnd, UnopenableFileLeavesOthersIntact) {
  fs::create_directory(dir / "again.xml");
  Hx::ScopedPrintCapture messages;
  recorder.beginSaveToFile(file("again"));
  scene.recordAll(recorder);
  recorder.finishSaveToFile();
  EXPECT_TRUE(messages.records().empty()) << messages.text();
  EXPECT_TRUE(fs::is_empty(dir / "again.xml"));
  for (const std::string extension : {".csv", ".mrd", ".m", ".nb"}) {
    EXPECT_EQ(slurp(file("again" + extension)), slurp(file("run" + extension))) << extension;
  }
}

// Every writer's file equals, byte for byte, its golden file tests/data/recording_two_arms.*:
// the notebook was written by hand, the others were made by the writers and checked when made
// (the .csv with Python's csv module, the .m in GNU Octave, the .mrd with hxmrd: every value
// reads back to the double stored; with 18 columns disabled the label row is 18 fields longer).
// After an intended change of output, make them again with
//     HX_UPDATE_GOLDEN=1 hx_analysis_storage_tests --gtest_filter='*GoldenFiles'
// which writes the files into tests/data instead of comparing; review them with git diff.
TEST_F(HxSystemStoredDataEndToEnd, FilesEqualGoldenFiles) {
  const bool update = std::getenv("HX_UPDATE_GOLDEN") != nullptr;
  for (const char* extension : {".csv", ".m", ".mrd", ".nb", ".xml"}) {
    const std::string golden = std::string(HX_TEST_DATA_DIR) + "/recording_two_arms" + extension;
    if (update) std::ofstream(golden, std::ios::binary) << slurp(base_ + extension);
    const std::string expected = slurp(golden);
    ASSERT_FALSE(expected.empty()) << "missing " << golden;
    EXPECT_EQ(slurp(base_ + extension), expected) << extension;
  }
}

// The golden files read as users read them: GNU Octave runs the .m script and its Data equals the
// .csv file's rows; Python's csv module reads 53 labels and 4 rows of 35 values; hxmrd recovers
// the .mrd file's rows as the float32 of each .csv value.
TEST(HxGoldenFiles, ReadInTheToolsUsersReadThemWith) {
  const std::string golden = std::string(HX_TEST_DATA_DIR) + "/recording_two_arms";
  const std::string octave = "octave-cli --no-init-file --quiet --eval \"source('" + golden + ".m'); csv = dlmread('" +
                             golden + ".csv', ',', 1, 0); assert(ischar(Description)); assert(isequal(Data, csv)); " +
                             "assert(isequal(size(Data), [4 35]))\"";
  EXPECT_EQ(std::system(octave.c_str()), 0) << octave;
#ifdef HX_HXMRD_PATH
  const HxScopedTempDir dir("golden");
  const std::string mrdCsv = dir.file("mrd.csv");
  ASSERT_EQ(
      std::system((std::string(HX_HXMRD_PATH) + " --csv " + golden + ".mrd > " + mrdCsv + " 2>/dev/null").c_str()), 0);
  const std::string check = dir.write("check.py", R"(import csv, struct, sys
rows = list(csv.reader(open(sys.argv[1], newline='')))
mrd = list(csv.reader(open(sys.argv[2], newline='')))
assert len(rows[0]) == 53 and len(rows) == 5 and all(len(r) == 35 for r in rows[1:]), 'csv shape'
f32 = lambda x: struct.unpack('f', struct.pack('f', float(x)))[0]
assert [[f32(x) for x in r] for r in rows[1:]] == [[float(x) for x in r] for r in mrd[1:]], 'mrd values'
)");
  EXPECT_EQ(std::system(("/usr/bin/python3 " + check + " " + golden + ".csv " + mrdCsv).c_str()), 0);
#endif
}

}  // namespace

// The file-state queries: a file that fails (here a disk that is always full) is named with the
// system's reason and the samples it took before; the other files are unaffected; a flush puts
// the gathered samples into the files before the save is finished.
TEST_F(HxSystemStoredDataTest, FileStatesNameTheFailedFile) {
  fs::create_symlink("/dev/full", file("run.mrd"));
  begin(allWriters());
  EXPECT_TRUE(recorder.outputFileCount() == 5u && recorder.failedOutputFile() == 2);
  scene.captureSample(0);
  recorder.saveCapturedData(0.0, 0, scene.capture);
  const std::uintmax_t before = fs::file_size(file("run.csv"));
  recorder.flushOutputFiles();
  EXPECT_GT(fs::file_size(file("run.csv")), before);
  scene.recordAll(recorder);
  recorder.finishSaveToFile();
  for (HxU32 i = 0; i < 5; ++i) {
    const HxOutputFileState state = recorder.outputFileState(i);
    EXPECT_TRUE(state.open && state.failed == (i == 2) && state.error == (i == 2 ? ENOSPC : 0) &&
                state.samples == (i == 2 ? 0u : TwoArmScene::kSamples + 1))
        << i;
  }
  EXPECT_FALSE(recorder.outputFileState(5).open);
}
