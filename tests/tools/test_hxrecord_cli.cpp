// hxrecord as a program: options, every failure's message and exit status, the default
// recording, and the built-in scene being the example files.

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#define HX_ALLOCATION_COUNTER_NO_OPERATORS
#include "bench/HxAllocationCounter.h"
#include "tests/tools/test_hxrecord_support.h"
#include "tools/lib/HxRecord.h"

namespace {

namespace fs = std::filesystem;
using namespace HxRecordTest;

const char* const kCaptureHead =
    "<?xml version=\"1.0\"?>\n"
    "<sm:generalCapture xmlns:sm=\"http://www.hxtoolkit.org/namespace/sm#\">\n"
    "  <sm:manipulatorDataCaptureVector count=\"1\">\n"
    "    <element>\n";
const char* const kCaptureTail =
    "    </element>\n"
    "  </sm:manipulatorDataCaptureVector>\n"
    "</sm:generalCapture>\n";

// A capture configuration of one manipulator, with `body` inside its element.
std::string captureOf(const std::string& body) { return kCaptureHead + body + kCaptureTail; }

// Options parse into their fields, in both "--name value" and "--name=value" form.
TEST(HxRecordOptionsTest, ParsesEveryOption) {
  HxRecordOptions options;
  std::string error;
  ASSERT_TRUE(hxParseRecordOptions({"-m", "a.xml", "--capture=c.xml", "-w", "w.xml", "-d", "2.5", "--sample-interval",
                                    "0.004", "-o", "out/run", "--mode", "kinematic", "--dwell=0", "-q"},
                                   options, error))
      << error;
  EXPECT_EQ(options.modelFile, "a.xml");
  EXPECT_EQ(options.captureFile, "c.xml");
  EXPECT_EQ(options.writersFile, "w.xml");
  EXPECT_EQ(options.duration, 2.5);
  EXPECT_EQ(options.sampleInterval, 0.004);
  EXPECT_EQ(options.outputBase, "out/run");
  EXPECT_EQ(options.mode, HxMujocoSimulation::Mode::Kinematic);
  EXPECT_EQ(options.dwellTime, 0.0);
  EXPECT_TRUE(options.quiet);
  EXPECT_FALSE(options.help);

  // Defaults: the built-in scene into hxrecord-out/recording.
  const HxRecordOptions defaults;
  EXPECT_TRUE(defaults.modelFile.empty() && defaults.captureFile.empty() && defaults.writersFile.empty());
  EXPECT_EQ(defaults.outputBase, "hxrecord-out/recording");
  EXPECT_EQ(defaults.mode, HxMujocoSimulation::Mode::Dynamic);

  // Bad values name the option and what is expected.
  const std::vector<std::pair<std::vector<std::string>, std::string>> bad = {
      {{"--duration", "0"}, "invalid value '0' for --duration: expected a positive number of seconds"},
      {{"-d", "inf"}, "invalid value 'inf' for -d: expected a positive number of seconds"},
      {{"-s", "1s"}, "invalid value '1s' for -s: expected a positive number of seconds"},
      {{"--dwell", "-1"}, "invalid value '-1' for --dwell: expected a non-negative number of seconds"},
      {{"--model="}, "invalid value '' for --model: expected a file name"},
      {{"--quiet=yes"}, "option '--quiet' takes no value"},
      {{"-o"}, "option '-o' needs a value"},
  };
  for (const auto& [arguments, message] : bad) {
    HxRecordOptions parsed;
    EXPECT_FALSE(hxParseRecordOptions(arguments, parsed, error)) << arguments[0];
    EXPECT_EQ(error, message);
  }
}

struct FailureCase {
  const char* name;
  std::vector<std::string> arguments;
  int exitCode;
  // The whole standard error, or its beginning when `prefixOnly`.
  std::string message;
  bool prefixOnly = false;
};

class HxRecordFailureTest : public ::testing::TestWithParam<FailureCase> {};

// Every failure prints its message and exits with its own status before anything is recorded.
TEST_P(HxRecordFailureTest, PrintsItsMessageAndExitStatus) {
  const FailureCase& failure = GetParam();
  const std::string directory = scratchDirectory(std::string("failure_") + failure.name);
  // Files the cases refer to, relative to the run's directory.
  writeFile(directory + "broken_model.xml", "<mujoco><worldbody><body></mujoco>");
  writeFile(directory + "no_joint.xml",
            "<mujoco><worldbody><body name=\"b\"><geom size=\"0.1\"/></body></worldbody></mujoco>");
  writeFile(directory + "truncated.xml",
            captureOf("      <sm:manipulatorIndex>0</sm:manipulatorIndex>\n").substr(0, 150));
  writeFile(directory + "bad_value.xml", captureOf("      <sm:manipulatorIndex>left</sm:manipulatorIndex>\n"));
  writeFile(directory + "unregistered.xml", captureOf("      <sm:manipulatorIndex>0</sm:manipulatorIndex>\n"
                                                      "      <sm:dataCaptureTypeVector count=\"1\">\n"
                                                      "        <sm:controlInputDataCaptureType/>\n"
                                                      "      </sm:dataCaptureTypeVector>\n"));
  writeFile(directory + "manipulator2.xml",
            captureOf("      <sm:manipulatorIndex>2</sm:manipulatorIndex>\n"
                      "      <sm:dataCaptureTypeVector "
                      "count=\"1\"><sm:centerOfMassDataCaptureType/></sm:dataCaptureTypeVector>\n"));
  writeFile(directory + "link.xml",
            captureOf("      <sm:manipulatorIndex>1</sm:manipulatorIndex>\n"
                      "      <sm:linkDataCaptureVector count=\"1\"><element>\n"
                      "        <sm:linkIdentification>left_link1</sm:linkIdentification>\n"
                      "        <sm:dataCaptureTypeVector "
                      "count=\"1\"><sm:jointPositionDataCaptureType/></sm:dataCaptureTypeVector>\n"
                      "      </element></sm:linkDataCaptureVector>\n"));
  writeFile(
      directory + "end_effector.xml",
      captureOf(
          "      <sm:manipulatorIndex>0</sm:manipulatorIndex>\n"
          "      <sm:endEffectorDataCaptureVector count=\"1\"><element>\n"
          "        <sm:endEffectorIndex>2</sm:endEffectorIndex>\n"
          "        <sm:dataCaptureTypeVector count=\"1\"><sm:reachTargetDataCaptureType/></sm:dataCaptureTypeVector>\n"
          "      </element></sm:endEffectorDataCaptureVector>\n"));
  writeFile(directory + "no_writer.xml",
            "<sm:outputWriterVector xmlns:sm=\"http://www.hxtoolkit.org/namespace/sm#\" count=\"0\"/>\n");
  writeFile(directory + "twice.xml",
            "<sm:outputWriterVector xmlns:sm=\"http://www.hxtoolkit.org/namespace/sm#\" count=\"2\">\n"
            "  <sm:mrdOutputWriter/><sm:mrdOutputWriter/></sm:outputWriterVector>\n");
  writeFile(directory + "a_file", "");
  fs::create_directories(directory + "taken/run.csv");

  const RunResult run = runHxrecord(failure.arguments, directory);
  EXPECT_EQ(run.exitCode, failure.exitCode) << run.err;
  if (failure.prefixOnly) {
    EXPECT_EQ(run.err.substr(0, failure.message.size()), failure.message) << run.err;
  } else {
    EXPECT_EQ(run.err, failure.message);
  }
  EXPECT_EQ(run.out, "");
  // Nothing was recorded.
  EXPECT_FALSE(fs::exists(directory + "hxrecord-out/recording.csv"));
}

const std::string kUnknownCapture = std::string(HX_SOURCE_DIR) + "/examples/config/default_writers.xml";

INSTANTIATE_TEST_SUITE_P(
    EveryFailure, HxRecordFailureTest,
    ::testing::Values(
        // Options.
        FailureCase{
            "UnknownOption", {"--bogus"}, 2, "hxrecord: error: unknown option '--bogus'\nTry 'hxrecord --help'.\n"},
        FailureCase{"Positional",
                    {"scene.xml"},
                    2,
                    "hxrecord: error: unexpected argument 'scene.xml'\nTry 'hxrecord --help'.\n"},
        FailureCase{"MissingValue",
                    {"--duration"},
                    2,
                    "hxrecord: error: option '--duration' needs a value\nTry 'hxrecord --help'.\n"},
        FailureCase{"NegativeDuration",
                    {"-d", "-1"},
                    2,
                    "hxrecord: error: invalid value '-1' for -d: expected a positive number of seconds\nTry 'hxrecord "
                    "--help'.\n"},
        FailureCase{"BadMode",
                    {"--mode", "fast"},
                    2,
                    "hxrecord: error: invalid value 'fast' for --mode: expected 'dynamic' or 'kinematic'\nTry "
                    "'hxrecord --help'.\n"},
        FailureCase{"IntervalBelowTimestep",
                    {"-s", "0.001"},
                    2,
                    "hxrecord: error: sample interval 0.001 s is shorter than the model's timestep (0.002 s)\n"},
        FailureCase{"DurationBelowTimestep",
                    {"-d", "0.0005"},
                    2,
                    "hxrecord: error: duration 0.0005 s is shorter than the model's timestep (0.002 s)\n"},
        // Model.
        FailureCase{
            "MissingModel", {"-m", "missing.xml"}, 3, "hxrecord: error: model file 'missing.xml' does not exist\n"},
        FailureCase{
            "ModelIsDirectory", {"-m", "taken"}, 3, "hxrecord: error: model file 'taken' is not a regular file\n"},
        FailureCase{"InvalidModel",
                    {"-m", "broken_model.xml"},
                    3,
                    "hxrecord: error: cannot load model 'broken_model.xml': ",
                    true},
        FailureCase{
            "ModelWithoutManipulator",
            {"-m", "no_joint.xml"},
            3,
            "hxrecord: error: model 'no_joint.xml' holds no manipulator: no tree under the world body carries a "
            "hinge or slide joint\n"},
        // Configuration XML: file and line in every message.
        FailureCase{"MissingCapture",
                    {"-c", "missing.xml"},
                    4,
                    "hxrecord: error: capture configuration file 'missing.xml' does not exist\n"},
        FailureCase{"MissingWriters",
                    {"-w", "missing.xml"},
                    4,
                    "hxrecord: error: writer list file 'missing.xml' does not exist\n"},
        FailureCase{"TruncatedCapture",
                    {"-c", "truncated.xml"},
                    4,
                    "hxrecord: error: invalid capture configuration: truncated.xml:",
                    true},
        FailureCase{"BadValue",
                    {"-c", "bad_value.xml"},
                    4,
                    "hxrecord: error: invalid capture configuration: bad_value.xml:5: ",
                    true},
        FailureCase{
            "UnregisteredType",
            {"-c", "unregistered.xml"},
            4,
            "hxrecord: error: invalid capture configuration: unregistered.xml:7: HxXmlVariableVectorType::"
            "readValueFromToken() error: \"http://www.hxtoolkit.org/namespace/sm#controlInputDataCaptureType\" tag "
            "not registered.\n"},
        FailureCase{"WrongRoot",
                    {"-c", kUnknownCapture},
                    4,
                    "hxrecord: error: invalid capture configuration: " + kUnknownCapture +
                        ":7: the root element is 'outputWriterVector', expected 'generalCapture'\n"},
        FailureCase{"NoWriter",
                    {"-w", "no_writer.xml"},
                    4,
                    "hxrecord: error: writer list 'no_writer.xml' holds no writer: nothing would be recorded\n"},
        // Configuration against the model.
        FailureCase{
            "UnknownManipulator",
            {"-c", "manipulator2.xml"},
            5,
            "hxrecord: error: capture configuration 'manipulator2.xml' names manipulator 2, but the model "
            "'built-in examples/models/two_arms_table.xml' has 2 manipulator(s): 0 'left_base', 1 'right_base'\n"},
        FailureCase{"UnknownLink",
                    {"-c", "link.xml"},
                    5,
                    "hxrecord: error: capture configuration 'link.xml' names link 'left_link1' of manipulator 1 "
                    "('right_base'), which the model lacks; its links are: right_link1, right_link2, right_link3, "
                    "right_link4, right_link5, right_link6\n"},
        FailureCase{"UnknownEndEffector",
                    {"-c", "end_effector.xml"},
                    5,
                    "hxrecord: error: capture configuration 'end_effector.xml' names end effector 2 of manipulator 0 "
                    "('left_base'), which has 2 end effector(s): 0 'left_tool', 1 'left_probe'\n"},
        // Output.
        FailureCase{"OutputUnderAFile",
                    {"-o", "a_file/sub/run"},
                    6,
                    "hxrecord: error: cannot create output directory 'a_file/sub': Not a directory\n"},
        FailureCase{"OutputFileIsDirectory",
                    {"-o", "taken/run"},
                    6,
                    "hxrecord: error: cannot write 'taken/run.csv': it is a directory\n"},
        FailureCase{
            "OutputIsDirectoryName",
            {"-o", "out/"},
            6,
            "hxrecord: error: output base name 'out/' names a directory; add a file name without extension, for "
            "example 'out/recording'\n"},
        FailureCase{"TwoWritersOneFile",
                    {"-w", "twice.xml"},
                    6,
                    "hxrecord: error: two writers would both write "
                    "'hxrecord-out/recording.mrd'\n"}),
    [](const ::testing::TestParamInfo<FailureCase>& failure) { return std::string(failure.param.name); });

// --help prints the usage and records nothing.
TEST(HxRecordProgramTest, HelpPrintsUsage) {
  const std::string directory = scratchDirectory("help");
  const RunResult run = runHxrecord({"--help"}, directory);
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.out, hxRecordUsage());
  EXPECT_EQ(run.err, "");
  EXPECT_FALSE(fs::exists(directory + "hxrecord-out"));
}

// With no argument the built-in scene is recorded into ./hxrecord-out/ in all five formats, and
// the summary names every file.
TEST(HxRecordProgramTest, DefaultRecordingWritesFiveFiles) {
  const std::string directory = scratchDirectory("default");
  const RunResult run = runHxrecord({}, directory);
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.err, "");  // no progress bar when standard error is not a terminal
  for (const char* extension : {".csv", ".xml", ".mrd", ".m", ".nb"}) {
    const std::string file = std::string("hxrecord-out/recording") + extension;
    ASSERT_TRUE(fs::exists(directory + file)) << file;
    const auto size = fs::file_size(directory + file);
    EXPECT_GT(size, 100000u) << file;
    EXPECT_NE(run.out.find("  " + file + " "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find(std::to_string(size) + " bytes"), std::string::npos) << file;
  }
  // 8 s at 0.01 s, sample 0 included; 2 + 2 x 215 columns.
  EXPECT_EQ(run.out.rfind("Recorded 801 samples of 432 columns: 8 s of simulated time, dynamic mode, one sample every "
                          "0.01 s.\nFiles in ",
                          0),
            0u)
      << run.out;
  EXPECT_NE(run.out.find("Files in " + fs::canonical(directory + "hxrecord-out").string() + ":\n"), std::string::npos)
      << run.out;
  EXPECT_NE(run.out.find("simulated/wall time ratio "), std::string::npos);
  Csv csv;
  ASSERT_TRUE(readCsv(directory + "hxrecord-out/recording.csv", csv));
  EXPECT_EQ(csv.labels.size(), 432u);
  EXPECT_EQ(csv.rows.size(), 801u);
  EXPECT_EQ(csv.labels[0], "Time");
  EXPECT_EQ(csv.labels[1], "Point Path Index");

  // Quiet: the same files, nothing printed.
  const RunResult quiet = runHxrecord({"-q", "-d", "0.1"}, directory);
  EXPECT_EQ(quiet.exitCode, 0);
  EXPECT_EQ(quiet.out, "");
  EXPECT_EQ(quiet.err, "");
}

// The built-in scene is the example files: recording them gives byte-identical files.
TEST(HxRecordProgramTest, ExampleFilesGiveTheBuiltInRecording) {
  const std::string directory = scratchDirectory("examples");
  const RunResult builtIn = runHxrecord({"-q", "-d", "1.5", "-o", "built_in/run"}, directory);
  ASSERT_EQ(builtIn.exitCode, 0) << builtIn.err;
  const RunResult files = runHxrecord({"-q", "-d", "1.5", "-o", "files/run", "--model", defaultModelPath(), "--capture",
                                       defaultCapturePath(), "--writers", defaultWritersPath()},
                                      directory);
  ASSERT_EQ(files.exitCode, 0) << files.err;
  for (const char* extension : {".csv", ".mrd", ".xml"}) {
    const std::string a = readFile(directory + "built_in/run" + extension);
    EXPECT_FALSE(a.empty());
    EXPECT_TRUE(a == readFile(directory + "files/run" + extension)) << extension << " differs";
  }
}

// The progress bar is drawn on a terminal and ends at 100 %; the summary follows on a clean line.
TEST(HxRecordProgramTest, ProgressBarOnATerminal) {
  const std::string directory = scratchDirectory("progress");
  std::ostringstream out, err;
  const int status =
      hxRecordMain({"-d", "0.5", "-o", directory + "run", "-w", textWriterOnly(directory)}, out, err, true);
  EXPECT_EQ(status, 0) << err.str();
  EXPECT_EQ(err.str().rfind("\rhxrecord [", 0), 0u);
  EXPECT_NE(err.str().find("########################################] 100%  0.50 / 0.5 s"), std::string::npos)
      << err.str();
  EXPECT_EQ(err.str().back(), '\r');  // the bar is wiped before the summary
  EXPECT_EQ(out.str().rfind("Recorded 51 samples of 432 columns", 0), 0u) << out.str();

  // Quiet: no bar even on a terminal.
  std::ostringstream quietOut, quietErr;
  EXPECT_EQ(hxRecordMain({"-q", "-d", "0.1", "-o", directory + "run", "-w", textWriterOnly(directory)}, quietOut,
                         quietErr, true),
            0);
  EXPECT_EQ(quietErr.str(), "");
  EXPECT_EQ(quietOut.str(), "");
}

// A sample interval that is not a whole number of timesteps is rounded, with a warning.
TEST(HxRecordProgramTest, SampleIntervalIsRoundedToTimesteps) {
  const std::string directory = scratchDirectory("rounding");
  const RunResult run = runHxrecord({"-q", "-d", "0.1", "-s", "0.005", "-w", textWriterOnly(directory)}, directory);
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.err, "hxrecord: warning: sample interval 0.005 s rounded to 0.006 s (3 timestep(s) of 0.002 s)\n");
  Csv csv;
  ASSERT_TRUE(readCsv(directory + "hxrecord-out/recording.csv", csv));
  ASSERT_EQ(csv.rows.size(), 17u);  // 50 steps: samples at steps 0, 3, ..., 48
  EXPECT_NEAR(csv.rows[1][0], 0.006, 1e-12);
  EXPECT_NEAR(csv.rows.back()[0], 0.096, 1e-12);
}

// Once the files are under way, stepping, capturing and saving a sample into all five formats
// allocates nothing: from the first sample to the last there is no allocation.
TEST(HxRecordSessionTest, SamplesDoNotAllocate) {
  const std::string directory = scratchDirectory("allocations");
  HxRecordOptions options;
  options.duration = 1.0;
  options.outputBase = directory + "run";
  HxRecordSession session(options);
  ASSERT_EQ(session.prepare(), HxRecordStatus::Success);
  HxAllocationCounter counter;
  HxU32 last = 0;
  std::uint64_t allocations = 0;
  ASSERT_EQ(session.record([&](HxU32 sample, const HxMujocoSimulation&) {
    if (sample == 0) counter.restart();
    if (sample > 0) allocations = counter.allocations();
    last = sample;
  }),
            HxRecordStatus::Success);
  EXPECT_EQ(last, 100u);
  EXPECT_EQ(allocations, 0u);
  EXPECT_EQ(session.summary().samples, 101u);
  EXPECT_EQ(session.summary().files.size(), 5u);
}

}  // namespace
