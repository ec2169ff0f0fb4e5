// The recorder: its life cycle (writers, files, restarts, finishing, copies, reallocation,
// path-point indices, no allocation per sample), and a scripted two-manipulator recording
// through all five writers, each file checked with what its users read it with: Python's csv
// module, GNU Octave, xmllint and the framework's reader, hxmrd, and a hand-written notebook.
// python3, octave-cli and xmllint must be on the PATH (scripts/install-deps.sh); a missing one
// fails its test with the shell's message.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/capture/HxSystemDataVector.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/storage/HxSystemStoredData.h"
#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "analysis/writers/HxXmlOutputWriter.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "tests/support/HxAllocationCounter.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "simulation/scripted/HxScriptedSimulation.h"

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

/// The whole content of a file ("" when it cannot be read).
std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/// Runs a shell command; its exit status (-1 when it did not exit normally), with its standard
/// output and error in `output`.
int run(const std::string& command, std::string& output) {
  output.clear();
  FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return -1;
  std::array<char, 4096> buffer{};
  for (std::size_t n; (n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) output.append(buffer.data(), n);
  const int status = ::pclose(pipe);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Every writer in the order text, XML, MRD, MATLAB, Mathematica, or the text writer alone.
HxOutputWriterVector writers(bool all = true) {
  HxOutputWriterVector writers;
  writers.pushBack(HxTextOutputWriter());
  if (!all) return writers;
  writers.pushBack(HxXmlOutputWriter());
  writers.pushBack(HxMrdOutputWriter());
  writers.pushBack(HxMatlabOutputWriter());
  writers.pushBack(HxMathematicaOutputWriter());
  return writers;
}

HxSystemDataCapture::Flags flags(std::initializer_list<bool> values) {
  HxSystemDataCapture::Flags result;
  for (const bool value : values) result.pushBack(HxXmlBasicType<bool>(value));
  return result;
}

/// Two manipulators of two links ("shoulder", "elbow") and one end effector each, driven by
/// hand sample after sample, with a capture of joint, Cartesian, force and reach-target
/// quantities in which 18 columns are disabled:
/// - manipulator 0: base position (quaternion 1-3 disabled); joint position and external
///   force on both links (the elbow's moments disabled); reach target on end effector 0
///   (desired placement and actual orientation disabled);
/// - manipulator 1: manipulator power (its single column disabled: its label stays); joint
///   position on both links; end-effector placement.
/// 53 labels (36 of them non-empty), 35 values per sample; with `disableColumns` false 53 of
/// each. The golden notebook tests/data/recording_two_arms.nb is this recording: keep the two
/// in step.
struct TwoArmScene {
  static constexpr unsigned int kSamples = 4;

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
  HxSystemDataCapture configuration;  // as configured, before any sample was captured
  HxSystemDataStorage expected;       // the record each sample should give
  std::vector<HxSystemDataStorage> samples;
};

// A recorder and the two-arm scene, with a fresh directory for the files.
class HxSystemStoredDataTest : public ::testing::Test {
 protected:
  HxSystemStoredDataTest() {
    fs::remove_all(dir);
    fs::create_directories(dir);
  }
  ~HxSystemStoredDataTest() override {
    std::error_code ignored;
    fs::remove_all(dir, ignored);
  }
  std::string file(const std::string& name) const { return (dir / name).string(); }

  // Gives the recorder `writers`, shapes it for the scene and begins saving to `name`.
  void begin(const HxOutputWriterVector& writers, const std::string& name = "run") {
    recorder.setOutputWriterVector(writers);
    recorder.allocateStorage(scene.capture);
    recorder.beginSaveToFile(file(name));
  }

  // The files `name` + each extension, joined.
  std::string files(const std::string& name, std::initializer_list<const char*> extensions) const {
    std::string all;
    for (const char* extension : extensions) all += slurp(file(name + extension)) + "|";
    return all;
  }

  // The second field of each data line of a .csv file: the path-point index.
  Lines indexColumn(const std::string& name) const {
    static const std::regex secondField("\n[^,\n]*,([^,\n]*)");
    const std::string text = slurp(file(name));
    Lines indices;
    for (std::sregex_iterator at(text.begin(), text.end(), secondField), end; at != end; ++at) {
      indices.push_back((*at)[1]);
    }
    return indices;
  }

  const fs::path dir = fs::path(::testing::TempDir()) /
                       ("hx_recorder_" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) +
                        "_" + std::to_string(::getpid()));
  TwoArmScene scene;
  HxSystemStoredData recorder;
};

// Without writers, saving makes no file; finishing twice is harmless.
TEST_F(HxSystemStoredDataTest, WithoutWritersMakesNoFile) {
  begin(HxOutputWriterVector());
  scene.recordAll(recorder);
  recorder.finishSaveToFile();
  recorder.finishSaveToFile();
  EXPECT_TRUE(fs::is_empty(dir));
}

// Beginning again abandons the first files unfinished (MRD header blank, XML unclosed, notebook
// without trailer) with the sample they had, and starts a complete new set.
TEST_F(HxSystemStoredDataTest, BeginningTwiceLeavesFirstFilesUnfinished) {
  begin(writers(), "first");
  scene.captureSample(0);
  recorder.saveCapturedData(TwoArmScene::time(0), 0, scene.capture);
  recorder.beginSaveToFile(file("second"));
  scene.captureSample(1);
  recorder.saveCapturedData(TwoArmScene::time(1), 1, scene.capture);
  recorder.finishSaveToFile();

  const std::string firstMrd = slurp(file("first.mrd")), secondMrd = slurp(file("second.mrd"));
  EXPECT_EQ(firstMrd.substr(0, 81), std::string(80, ' ') + "\n");
  EXPECT_EQ(firstMrd.size(), secondMrd.size());  // one sample each
  EXPECT_EQ(secondMrd.substr(0, 13), "53\t53\t1\t1000 ");
  const std::string firstXml = slurp(file("first.xml"));
  EXPECT_TRUE(firstXml.find("</default>") == std::string::npos && firstXml.find("generalStorage") != std::string::npos);
  EXPECT_NE(slurp(file("second.xml")).find("</default>"), std::string::npos);
  const std::string trailer = "End of Mathematica Notebook file.";
  EXPECT_EQ(slurp(file("first.nb")).find(trailer), std::string::npos);
  EXPECT_NE(slurp(file("second.nb")).find(trailer), std::string::npos);
  EXPECT_EQ(indexColumn("first.csv"), Lines{"0"});
  EXPECT_EQ(indexColumn("second.csv"), Lines{"1"});
}

// The form without an index keeps the last index given; the record starts at index 0.
TEST_F(HxSystemStoredDataTest, FormWithoutIndexRepeatsTheLastOne) {
  begin(writers(false));
  scene.captureSample(0);
  const int indices[] = {-1, 7, -1, -1, 2, -1};
  for (int i = 0; i < 6; ++i) {
    if (indices[i] < 0) recorder.saveCapturedData(0.1 * i, scene.capture);
    if (indices[i] >= 0) recorder.saveCapturedData(0.1 * i, static_cast<unsigned int>(indices[i]), scene.capture);
  }
  recorder.finishSaveToFile();
  EXPECT_EQ(indexColumn("run.csv"), (Lines{"0", "7", "7", "7", "2", "2"}));
}

// A second allocateStorage takes a changed configuration in place: the record is reshaped and
// the label block follows the new configuration.
TEST_F(HxSystemStoredDataTest, ReallocatingFollowsAChangedConfiguration) {
  HxSystemDataCapture smaller;
  ASSERT_TRUE(smaller.addManipulatorDataCaptureType(1, HxSimAnalysis::HxCenterOfMassDataCaptureTypeToken));
  begin(writers(false));
  recorder.allocateStorage(smaller);
  recorder.beginSaveToFile(file("run"));
  scene.simulation.setCenterOfMass(1, HxVector(0.5, 1.5, -2));
  ASSERT_TRUE(smaller.captureData(scene.simulation));
  recorder.saveCapturedData(1.5, 3, smaller);
  recorder.finishSaveToFile();
  EXPECT_EQ(slurp(file("run.csv")),
            "Time,Point Path Index,Manip[1]:Center of Mass:X,Manip[1]:Center of Mass:Y,Manip[1]:Center of Mass:Z\n"
            "1.5,3,0.5,1.5,-2\n");
}

// Once the first sample has been written, saving a sample through all five writers makes no
// heap allocation; nor do storing a sample and reading its text in each form, nor the labels
// into a warm list.
TEST_F(HxSystemStoredDataTest, SavingASampleDoesNotAllocate) {
  begin(writers());
  scene.captureSample(0);
  recorder.saveCapturedData(0.0, 0, scene.capture);
  scene.captureSample(3);  // the longest texts of the scene
  std::vector<std::string> texts, labels;
  const double times[] = {0.0, -2.2250738585072014e-308, 123456.789, 1e300, 0.1};
  auto sample = [&](unsigned int i) {
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
  EXPECT_EQ(counter.allocations(), 0u);
  EXPECT_EQ(texts[0], "0.1");
  recorder.finishSaveToFile();
}

// Reads the .csv with Python's csv module and checks: a label row of `labels` fields whose last
// `empty` are empty, one row per expected sample of exactly as many fields as it has values, and
// every field reading back (float()) to exactly the double that was stored.
const char* const kCsvCheck = R"PY(
import csv, sys
path, expected_path, labels, empty = sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4])
rows = list(csv.reader(open(path, newline='')))
expected = [[float(x) for x in line.split()] for line in open(expected_path) if line.strip()]
assert len(rows) == 1 + len(expected), 'rows: %d, samples: %d' % (len(rows), len(expected))
header = rows[0]
assert len(header) == labels and header[:2] == ['Time', 'Point Path Index'], header
assert [h == '' for h in header] == [i >= labels - empty for i in range(labels)], header
for i, (row, values) in enumerate(zip(rows[1:], expected)):
    assert [float(text) for text in row] == values, 'row %d: %r != %r' % (i, row, values)
print('csv ok: %d labels, %d rows' % (len(header), len(rows) - 1))
)PY";

// All five writers record the scene (finished twice: the second finish writes no second
// trailer; copies finished before the samples); "expected.txt" holds the values each sample
// should hold (time, index, values; %.17g, exact), one line per sample.
class HxSystemStoredDataEndToEnd : public HxSystemStoredDataTest {
 protected:
  void record(TwoArmScene& recorded, const HxOutputWriterVector& writers) {
    recorder.setOutputWriterVector(writers);
    recorder.allocateStorage(recorded.capture);
    recorder.beginSaveToFile(base_);
    // Copies carry configuration and writers but never the files: a copy made while saving
    // believes it is saving, and its finish touches no file (as the files' checks show).
    HxSystemStoredData copy(recorder), assigned;
    assigned = recorder;
    EXPECT_TRUE(copy == recorder && assigned == recorder && !(recorder == HxSystemStoredData()));
    copy.finishSaveToFile();
    assigned.finishSaveToFile();  // idle: nothing to finish
    recorded.recordAll(recorder);
    recorder.finishSaveToFile();
    recorder.finishSaveToFile();
    std::ofstream out(file("expected.txt"));
    for (unsigned int k = 0; k < TwoArmScene::kSamples; ++k) {
      for (const double v : recorded.values(k)) {
        char text[40];
        std::snprintf(text, sizeof text, "%.17g ", v);
        out << text;
      }
      out << "\n";
    }
  }
  void SetUp() override { record(scene, writers()); }

  // Checks the .csv file with kCsvCheck: 53 labels, of which the last `emptyLabels` are empty.
  void expectCsvReadsBackInPython(std::size_t emptyLabels) {
    std::ofstream(file("check_csv.py")) << kCsvCheck;
    std::string output;
    EXPECT_EQ(run("python3 " + file("check_csv.py") + " " + file("run.csv") + " " + file("expected.txt") + " 53 " +
                      std::to_string(emptyLabels),
                  output),
              0)
        << output;
    EXPECT_EQ(output, "csv ok: 53 labels, 4 rows\n");
  }
  const std::string base_ = file("run");
};

// Python's csv module reads the label row and one row per sample; every value reads back to
// exactly the stored double. With 18 columns disabled the label row is 18 fields longer than
// each data row, and its last 17 fields are empty (the disabled one-column quantity keeps its
// label): the writer does not reconcile labels and values. With nothing disabled, every data
// row is exactly as long as the label row.
TEST_F(HxSystemStoredDataEndToEnd, CsvReadsBackWithPythonsCsvModule) {
  expectCsvReadsBackInPython(17);
  TwoArmScene all(false);
  record(all, writers(false));
  ASSERT_EQ(all.values(0).size(), 53u);
  expectCsvReadsBackInPython(0);
}

// GNU Octave runs the script: Description is the labels' text, Data has one row per sample
// and its values are exactly those stored.
TEST_F(HxSystemStoredDataEndToEnd, MatlabScriptRunsInOctave) {
  const std::string eval = "source('" + base_ + ".m'); expected = load('" + file("expected.txt") +
                           "'); assert(ischar(Description)); assert(isequal(Data, expected)); "
                           "printf('%s|%d %d\\n', Description(1:20), size(Data));";
  std::string output;
  ASSERT_EQ(run("octave-cli --no-init-file --quiet --eval \"" + eval + "\"", output), 0) << output;
  EXPECT_EQ(output.substr(0, output.find('\n')), "TimePoint Path Index|4 35") << output;
}

// xmllint accepts the document; the framework reads it back as the configuration followed by
// one record per sample, each equal to what was recorded.
TEST_F(HxSystemStoredDataEndToEnd, XmlIsWellFormedAndReadsBack) {
  std::string output;
  EXPECT_EQ(run("xmllint --noout " + base_ + ".xml", output), 0) << output;

  Hx::ScopedPrintCapture messages;
  HxXmlReader reader;
  HxSystemDataVector back;
  ASSERT_TRUE(reader.openFile(base_ + ".xml") && reader.readObject(back)) << messages.text();
  ASSERT_EQ(back.size(), 1 + TwoArmScene::kSamples);
  EXPECT_TRUE(dynamic_cast<const HxSystemDataCapture&>(back[0]) == scene.configuration);
  for (unsigned int k = 0; k < TwoArmScene::kSamples; ++k) {
    auto& record = dynamic_cast<HxSystemDataStorage&>(back[k + 1]);
    record.computeElementSize();  // the element size is not part of the XML
    EXPECT_TRUE(record == scene.samples[k]) << "sample " << k;
  }
}

// The MRD header gives samples x channels, channels (one per label), samples and 1000; hxmrd
// says that columns were disabled, recovers the 35 values per sample and returns each as the
// float of the stored value.
TEST_F(HxSystemStoredDataEndToEnd, MrdHeaderAndHxmrdValues) {
  const std::string header = "212\t53\t4\t1000";
  EXPECT_EQ(slurp(base_ + ".mrd").substr(0, 81), header + std::string(80 - header.size(), ' ') + "\n");
#ifndef HX_HXMRD_PATH
  GTEST_SKIP() << "hxmrd was not built (HX_BUILD_TOOLS is off)";
#else
  std::string output;
  ASSERT_EQ(run(std::string(HX_HXMRD_PATH) + " --csv " + base_ + ".mrd", output), 0) << output;
  std::istringstream lines(output);
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line, "hxmrd: warning: " + base_ +
                      ".mrd: header gives 53 channels but each of the 4 samples holds 35 values; the last 18 labels "
                      "have no column (columns disabled)");
  std::getline(lines, line);
  EXPECT_EQ(line.rfind("Time,Point_Path_Index,Manip[0]:Base_Positions:Translation_X,", 0), 0u) << line;
  for (unsigned int k = 0; k < TwoArmScene::kSamples; ++k) {
    ASSERT_TRUE(std::getline(lines, line)) << output;
    std::vector<float> read;
    std::istringstream fields(line);
    for (std::string field; std::getline(fields, field, ',');) read.push_back(std::strtof(field.c_str(), nullptr));
    const std::vector<double> values = scene.values(k);
    EXPECT_EQ(read, std::vector<float>(values.begin(), values.end())) << "sample " << k << ": " << line;
  }
#endif
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
  EXPECT_EQ(files("again", {".csv", ".mrd", ".m", ".nb"}), files("run", {".csv", ".mrd", ".m", ".nb"}));
}

// The notebook equals, byte for byte, the one written by hand for this recording.
TEST_F(HxSystemStoredDataEndToEnd, NotebookEqualsHandWrittenGolden) {
  const std::string golden = slurp(std::string(HX_TEST_DATA_DIR) + "/recording_two_arms.nb");
  ASSERT_FALSE(golden.empty()) << "missing tests/data/recording_two_arms.nb";
  EXPECT_EQ(slurp(base_ + ".nb"), golden);
}

}  // namespace
