// hxrecord as a program: options, every failure's message and exit status, the default
// recording (the example files), the progress bar, warnings and the summary.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/support/HxScopedTempDir.h"
#include "tests/tools/HxToolsTestSupport.h"
#include "tools/lib/HxRecord.h"

namespace {

namespace fs = std::filesystem;
using namespace HxToolsTest;

RunResult hxrecord(const std::vector<std::string>& arguments, const HxScopedTempDir& directory) {
  return HxToolsTest::run(HX_RECORD_BINARY, arguments, directory.path().string());
}

// The example files, the default scene's source.
std::string examplePath(const std::string& file) { return std::string(HX_SOURCE_DIR) + "/examples/" + file; }

// Field `n` of every data line of the CSV recording `path`.
std::vector<std::string> csvColumn(const std::string& path, int n) {
  std::istringstream csv(readFile(path));
  std::vector<std::string> values;
  std::string line, field;
  for (std::getline(csv, line); std::getline(csv, line);) {
    std::istringstream fields(line);
    for (int i = 0; i <= n; ++i) std::getline(fields, field, ',');
    values.push_back(field);
  }
  return values;
}

// Options parse into their fields, in both "--name value" and "--name=value" form; the last
// value given counts.
TEST(HxRecordOptionsTest, ParsesEveryOption) {
  HxRecordOptions o;
  std::string error;
  ASSERT_TRUE(hxParseRecordOptions(
      {"--duration=9", "-m", "a.xml", "--capture=c.xml", "-w", "w.xml", "-d", "2.5", "--sample-interval", "0.004", "-o",
       "out/run", "--mode", "kinematic", "--dwell=0", "-q", "--threads=2", "--threads", "1"},
      o, error))
      << error;
  EXPECT_EQ(std::tie(o.modelFile, o.captureFile, o.writersFile, o.outputBase),
            std::make_tuple("a.xml", "c.xml", "w.xml", "out/run"));
  EXPECT_EQ(std::tie(o.duration, o.sampleInterval, o.dwellTime, o.quiet, o.help),
            std::make_tuple(2.5, 0.004, 0, true, false));
  EXPECT_EQ(o.mode, HxMujocoSimulation::Mode::Kinematic);
  EXPECT_EQ(o.threads, 1u);
}

struct FailureCase {
  const char* name;
  std::string arguments;  // separated by blanks
  int exitCode;
  // Standard error after "hxrecord: error: "; only its beginning when it does not end a line.
  std::string message;
};

// Names the case in test listings and failures.
void PrintTo(const FailureCase& failure, std::ostream* os) { *os << failure.name; }

class HxRecordFailureTest : public ::testing::TestWithParam<FailureCase> {};

// Every failure prints its message and exits with its own status before anything is recorded.
TEST_P(HxRecordFailureTest, PrintsItsMessageAndExitStatus) {
  const FailureCase& failure = GetParam();
  const HxScopedTempDir directory("hxrecord");
  const std::pair<const char*, std::string> files[] = {
      {"broken_model.xml", "<mujoco><worldbody><body></mujoco>"},
      {"no_joint.xml", "<mujoco><worldbody><body name=\"b\"><geom size=\"0.1\"/></body></worldbody></mujoco>"},
      {"truncated.xml", captureOf("").substr(0, 150)},
      {"bad_value.xml", captureOf("", "left")},
      {"unregistered.xml", captureOf(typesOf("<sm:controlInputDataCaptureType/>"))},
      {"manipulator2.xml", captureOf(typesOf("<sm:centerOfMassDataCaptureType/>"), "2")},
      {"link.xml", captureOf(entryOf("link", "left_link1", typesOf("<sm:jointPositionDataCaptureType/>")), "1")},
      {"end_effector.xml", captureOf(entryOf("endEffector", "2", typesOf("<sm:reachTargetDataCaptureType/>")))},
      {"no_writer.xml", writersOf("0", "")},
      {"twice.xml", writersOf("2", "<sm:mrdOutputWriter/><sm:mrdOutputWriter/>")},
      {"a_file", ""}};
  for (const auto& [name, text] : files) directory.write(name, text);
  fs::create_directories(directory.file("taken/run.csv"));

  const RunResult run = hxrecord(HxToolsTest::words(failure.arguments), directory);
  EXPECT_EQ(run.exitCode, failure.exitCode) << run.err;
  const std::string expected = "hxrecord: error: " + failure.message;
  EXPECT_EQ(failure.message.back() == '\n' ? run.err : run.err.substr(0, expected.size()), expected);
  EXPECT_EQ(run.out, "");
  EXPECT_FALSE(fs::exists(directory.file("hxrecord-out/recording.csv")));
}

const std::string kTry = "\nTry 'hxrecord --help'.\n";
const std::string kSeconds = ": expected a positive number of seconds" + kTry;
const std::string kWritersExample = examplePath("config/default_writers.xml");
const std::string kScene = "the model 'built-in examples/models/two_arms_table.xml' has 2 manipulator(s)";

const std::vector<FailureCase> kFailures = {
    // Options.
    {"UnknownOption", "--bogus", 2, "unknown option '--bogus'" + kTry},
    {"UnknownOptionWithValue", "--bogus=1", 2, "unknown option '--bogus'" + kTry},
    {"Positional", "scene.xml", 2, "unexpected argument 'scene.xml'" + kTry},
    {"MissingValue", "--duration", 2, "option '--duration' needs a value" + kTry},
    {"MissingShortValue", "-o", 2, "option '-o' needs a value" + kTry},
    {"NegativeDuration", "-d -1", 2, "invalid value '-1' for -d" + kSeconds},
    {"ZeroDuration", "--duration 0", 2, "invalid value '0' for --duration" + kSeconds},
    {"InfiniteDuration", "-d inf", 2, "invalid value 'inf' for -d" + kSeconds},
    {"IntervalWithUnit", "-s 1s", 2, "invalid value '1s' for -s" + kSeconds},
    {"NegativeDwell", "--dwell -1", 2,
     "invalid value '-1' for --dwell: expected a non-negative number of seconds" + kTry},
    {"EmptyModelName", "--model=", 2, "invalid value '' for --model: expected a file name" + kTry},
    {"ValueForAFlag", "--quiet=yes", 2, "option '--quiet' takes no value" + kTry},
    {"BadMode", "--mode fast", 2, "invalid value 'fast' for --mode: expected 'dynamic' or 'kinematic'" + kTry},
    {"BadThreads", "--threads 3", 2, "invalid value '3' for --threads: expected 1 or 2" + kTry},
    {"IntervalBelowTimestep", "-s 0.001", 2,
     "sample interval 0.001 s is shorter than the model's timestep (0.002 s)\n"},
    {"DurationBelowTimestep", "-d 0.0005", 2, "duration 0.0005 s is shorter than the model's timestep (0.002 s)\n"},
    // Model.
    {"MissingModel", "-m missing.xml", 3, "model file 'missing.xml' does not exist\n"},
    {"ModelIsDirectory", "-m taken", 3, "model file 'taken' is not a regular file\n"},
    {"InvalidModel", "-m broken_model.xml", 3, "cannot load model 'broken_model.xml': "},
    {"ModelWithoutManipulator", "-m no_joint.xml", 3,
     "model 'no_joint.xml' holds no manipulator: no tree under the world body carries a hinge or slide joint\n"},
    // Configuration XML: file and line in every message.
    {"MissingCapture", "-c missing.xml", 4, "capture configuration file 'missing.xml' does not exist\n"},
    {"MissingWriters", "-w missing.xml", 4, "writer list file 'missing.xml' does not exist\n"},
    {"TruncatedCapture", "-c truncated.xml", 4, "invalid capture configuration: truncated.xml:"},
    {"BadValue", "-c bad_value.xml", 4, "invalid capture configuration: bad_value.xml:4: "},
    {"UnregisteredType", "-c unregistered.xml", 4,
     "invalid capture configuration: unregistered.xml:5: quantity 'controlInputDataCaptureType' cannot be read "
     "from a configuration file. Known quantities: baseAccelerationDataCaptureType, basePositionDataCaptureType, "
     "baseVelocityDataCaptureType, centerOfMassDataCaptureType, manipulatorPowerDataCaptureType\n"},
    {"WrongRoot", "-c " + kWritersExample, 4,
     "invalid capture configuration: " + kWritersExample +
         ":7: the root element is 'outputWriterVector', expected 'generalCapture'\n"},
    {"EmptyWriters", "-w a_file", 4, "invalid writer list: a_file:1: the document is empty\n"},
    {"NoWriter", "-w no_writer.xml", 4, "writer list 'no_writer.xml' holds no writer: nothing would be recorded\n"},
    // Configuration against the model.
    {"UnknownManipulator", "-c manipulator2.xml", 5,
     "capture configuration 'manipulator2.xml' names manipulator 2, but " + kScene +
         ": 0 'left_base', 1 'right_base'\n"},
    {"UnknownLink", "-c link.xml", 5,
     "capture configuration 'link.xml' names link 'left_link1' of manipulator 1 ('right_base'), which the model lacks; "
     "its links are: right_link1, right_link2, right_link3, right_link4, right_link5, right_link6\n"},
    {"UnknownEndEffector", "-c end_effector.xml", 5,
     "capture configuration 'end_effector.xml' names end effector 2 of manipulator 0 ('left_base'), which has 2 end "
     "effector(s): 0 'left_tool', 1 'left_probe'\n"},
    // Output.
    {"OutputUnderAFile", "-o a_file/sub/run", 6, "cannot create output directory 'a_file/sub': Not a directory\n"},
    {"OutputFileIsDirectory", "-o taken/run", 6, "cannot write 'taken/run.csv': it is a directory\n"},
    {"OutputIsDirectoryName", "-o out/", 6,
     "output base name 'out/' names a directory; add a file name without extension, for example 'out/recording'\n"},
    {"TwoWritersOneFile", "-w twice.xml", 6, "two writers would both write 'hxrecord-out/recording.mrd'\n"},
    // The options that explain a scene; --check fails as the recording would, creating nothing.
    {"UnknownFormat", "--formats csv,pdf", 2,
     "invalid value 'csv,pdf' for --formats: unknown format 'pdf'; expected a comma-separated list of csv, xml, mrd, "
     "m, nb, h5 (or text, matlab, mathematica, hdf5)" +
         kTry},
    {"FormatTwice", "--formats=csv,text", 2,
     "invalid value 'csv,text' for --formats: format 'csv' is named twice" + kTry},
    {"CaptureAllAndCapture", "--capture-all -c x.xml", 2,
     "--capture-all and --capture cannot be given together: --capture-all replaces the capture configuration" + kTry},
    {"MissingScene", "--scene none.json", 4, "scene file 'none.json': cannot be read: No such file or directory\n"},
    {"MissingDisplay", "--plot none.xml", 4, "display description 'none.xml' does not exist\n"},
    {"CheckOutputUnderAFile", "--check -o a_file/sub/run", 6,
     "cannot create output directory 'a_file/sub': Not a directory\n"},
    {"CheckOutputFileIsDirectory", "--check -o taken/run", 6, "cannot write 'taken/run.csv': it is a directory\n"},
    {"CaptureOverOutput", "--check --write-capture hxrecord-out/recording.xml", 6,
     "cannot write the capture configuration to 'hxrecord-out/recording.xml': it is 'hxrecord-out/recording.xml', "
     "which this run reads or writes; choose another file for --write-capture\n"},
};

INSTANTIATE_TEST_SUITE_P(EveryFailure, HxRecordFailureTest, ::testing::ValuesIn(kFailures),
                         [](const auto& failure) { return std::string(failure.param.name); });

// --help prints the usage and records nothing. With no argument the built-in scene is recorded into ./hxrecord-out/ in
// all five formats, the summary naming every file with its size; the example files give the very same bytes; the
// path-point index column (the least of the arms') runs through the scene's four path points.
TEST(HxRecordProgramTest, DefaultRecordingIsTheExampleFilesInFiveFormats) {
  const HxScopedTempDir directory("hxrecord");
  const RunResult help = hxrecord({"--help"}, directory);
  EXPECT_EQ(std::tie(help.exitCode, help.out, help.err), std::make_tuple(0, hxRecordUsage(), ""));
  EXPECT_FALSE(fs::exists(directory.file("hxrecord-out")));
  const RunResult run = hxrecord({}, directory);
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.err, "");  // no progress bar when standard error is not a terminal
  // 8 s at 0.01 s, sample 0 included; 2 + 2 x 215 columns.
  EXPECT_EQ(run.out.rfind("Recorded 801 samples of 432 columns: 8 s of simulated time, dynamic mode, one sample every "
                          "0.01 s.\nFiles in " +
                              fs::canonical(directory.file("hxrecord-out")).string() + ":\n",
                          0),
            0u)
      << run.out;
  EXPECT_NE(run.out.find("simulated/wall time ratio "), std::string::npos);
  const RunResult files =
      hxrecord({"-q", "-o", "files/run", "--model", examplePath("models/two_arms_table.xml"), "--capture",
                examplePath("config/default_capture.xml"), "--writers", examplePath("config/default_writers.xml")},
               directory);
  ASSERT_EQ(files.exitCode, 0) << files.err;
  for (const char* extension : {".csv", ".xml", ".mrd", ".m", ".nb"}) {
    const std::string file = std::string("hxrecord-out/recording") + extension;
    const std::string bytes = readFile(directory.file(file));
    EXPECT_GT(bytes.size(), 100000u) << file;
    EXPECT_NE(run.out.find("  " + file + " "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find(std::to_string(bytes.size()) + " bytes"), std::string::npos) << file;
    EXPECT_TRUE(bytes == readFile(directory.file("files/run") + extension)) << extension << " differs";
  }
  std::vector<std::string> indices = csvColumn(directory.file("hxrecord-out/recording.csv"), 1);
  EXPECT_EQ(indices.size(), 801u);
  indices.erase(std::unique(indices.begin(), indices.end()), indices.end());
  EXPECT_EQ(indices, (std::vector<std::string>{"0", "1", "2", "3"}));
}

// On a terminal a progress bar is drawn, ends at 100 % and is wiped before the summary, which
// gives the columns of a data line (a disabled column is none) and the mode the engine ran in;
// quiet prints nothing but warnings, even on a terminal: a sample interval that is not a whole
// number of timesteps is rounded, with a warning, and samples are taken at time 0 and every
// rounded interval.
TEST(HxRecordProgramTest, ProgressBarWarningsAndQuiet) {
  const HxScopedTempDir directory("hxrecord");
  const std::string writers = directory.write("writers.xml", writersOf("1", "<sm:textOutputWriter/>"));
  const std::string capture = directory.write(
      "capture.xml", captureOf(typesOf("<sm:centerOfMassDataCaptureType><sm:disableFlags count=\"3\"><group>false "
                                       "true false</group></sm:disableFlags></sm:centerOfMassDataCaptureType>"),
                               "1"));
  std::ostringstream out, err;
  EXPECT_EQ(
      hxRecordMain({"-d", "0.5", "--mode", "kinematic", "-o", directory.file("run"), "-w", writers, "-c", capture}, out,
                   err, true),
      0)
      << err.str();
  EXPECT_EQ(err.str().rfind("\rhxrecord [", 0), 0u);
  EXPECT_NE(err.str().find("########################################] 100%  0.50 / 0.5 s"), std::string::npos)
      << err.str();
  EXPECT_EQ(err.str().back(), '\r');
  EXPECT_EQ(out.str().rfind("Recorded 51 samples of 4 columns: 0.5 s of simulated time, kinematic mode", 0), 0u)
      << out.str();

  std::ostringstream quietOut, quietErr;
  EXPECT_EQ(hxRecordMain({"-q", "-d", "0.1", "-s", "0.005", "-o", directory.file("run"), "-w", writers}, quietOut,
                         quietErr, true),
            0);
  EXPECT_EQ(quietErr.str() + quietOut.str(),
            "hxrecord: warning: sample interval 0.005 s rounded to 0.006 s (3 timestep(s) of 0.002 s)\n");
  // 50 steps: samples at steps 0, 3, ..., 48.
  const std::vector<std::string> times = csvColumn(directory.file("run.csv"), 0);
  ASSERT_EQ(times.size(), 17u);
  EXPECT_EQ(times[0], "0");
  EXPECT_NEAR(std::stod(times[1]), 0.006, 1e-12);
  EXPECT_NEAR(std::stod(times.back()), 0.096, 1e-12);
}

}  // namespace
