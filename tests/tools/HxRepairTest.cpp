// hxrepair: every file of a real recording, cut at many offsets, is repaired to exactly the file of
// a finished recording of its whole samples (or refused when cut inside its labels), which a second
// repair leaves alone; the command's report and exit statuses.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemStoredData.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/analysis/writers/HxWriterTestSupport.h"
#include "tests/support/HxScopedTempDir.h"
#include "tests/tools/HxToolsTestSupport.h"
#include "tools/lib/HxMrdFile.h"
#include "tools/lib/HxRepairCommand.h"
#include "tools/lib/HxRepairText.h"

namespace {

using HxToolsTest::readFile;
using Outcome = HxFileRepair::Outcome;
constexpr unsigned int kSamples = 5;

// The files of a recording as a file left unfinished holds them: the MRD header blank.
std::string unfinished(const std::string& extension, std::string bytes) {
  if (extension == ".mrd") bytes.replace(0, 80, 80, ' ');
  return bytes;
}

// Each format: its extension, its repair, and what its writer writes between the labels and the
// first sample, and after the last sample.
struct Format {
  std::string extension;
  HxFileRepair (*repair)(const std::string&, bool);
  std::string opening, closing;
};
const Format kFormats[] = {{".csv", hxRepairCsvFile, "", ""},
                           {".xml", hxRepairXmlFile, "", "\n</default>\n"},
                           {".mrd", hxRepairMrdFile, "", ""},
                           {".m", hxRepairMatlabFile, "Data=[\n", "];\n"},
                           {".nb", hxRepairMathematicaFile, "", HxMathematicaOutputWriter::trailerText()}};

// Recordings of 0 .. kSamples samples of two manipulators through all five writers (a disabled
// column leaves the label row longer than the sample rows), made once into a scoped directory.
class HxRepair : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir_ = new HxScopedTempDir("repair");
    for (unsigned int k = 0; k <= kSamples; ++k) record(k);
  }
  static void TearDownTestSuite() { delete dir_; }

  static std::string base(unsigned int k) { return dir_->file("rec" + std::to_string(k)); }
  static std::string finished(unsigned int k, const std::string& extension) { return readFile(base(k) + extension); }

  static void record(unsigned int samples) {
    using namespace HxSimAnalysis;
    HxScriptedSimulation simulation(2, std::vector<std::string>{"shoulder", "elbow"}, 1);
    HxSystemDataCapture capture;
    capture.setLabel("cut short");
    HxDataCaptureType::FlagVector flags;
    for (const bool flag : {false, false, false, true, false, false, false}) flags.pushBack(flag);
    ASSERT_TRUE(capture.addLinkDataCaptureType(0, HxJointPositionDataCaptureTypeToken, simulation.manipulator(0)) &&
                capture.addEndEffectorDataCaptureType(1, HxEndEffectorPlacementDataCaptureTypeToken, 1u) &&
                capture.setDisableFlags(1, 0u, HxEndEffectorPlacementDataCaptureTypeToken, flags));
    HxSystemStoredData recorder;
    recorder.setOutputWriterVector(HxWriterTest::allWriters());
    recorder.allocateStorage(capture);
    recorder.beginSaveToFile(base(samples));
    for (unsigned int i = 0; i < samples; ++i) {
      simulation.setJointPositions(0, {0.1 * i, -1.0 / (i + 3)});
      capture.captureData(simulation);
      recorder.saveCapturedData(0.01 * i, i / 2, capture);
    }
    recorder.finishSaveToFile();
  }

  static HxScopedTempDir* dir_;
};
HxScopedTempDir* HxRepair::dir_ = nullptr;

// Every format, cut at every offset near the end of its labels and of each sample and at a stride
// elsewhere: inspecting counts the whole samples and changes nothing; repairing gives the finished
// file of those samples, or refuses a file cut inside its labels and leaves it; a second repair
// finds the file finished.
TEST_F(HxRepair, CutFilesBecomeFinishedRecordingsOfTheirWholeSamples) {
  for (const Format& format : kFormats) {
    // ends[k]: where the file of k samples ends without its closing text; the file of kSamples
    // samples holds the same bytes up to there.
    std::vector<std::size_t> ends;
    for (unsigned int k = 0; k <= kSamples; ++k)
      ends.push_back(finished(k, format.extension).size() - format.closing.size());
    const std::string all = unfinished(format.extension, finished(kSamples, format.extension));
    const std::size_t labelsEnd = ends[0] - format.opening.size();

    const std::string cut = dir_->file("cut" + format.extension);
    for (std::size_t at = 0; at <= all.size(); ++at) {
      const bool nearEnd =
          std::any_of(ends.begin(), ends.end(), [at](std::size_t end) { return at + 1 >= end && at <= end + 1; });
      if (!nearEnd && at % (all.size() / 40) != 0 && at != labelsEnd - 1) continue;
      const auto whole =
          static_cast<unsigned int>(std::upper_bound(ends.begin() + 1, ends.end(), at) - ends.begin() - 1);
      const std::string before = all.substr(0, at);
      dir_->write("cut" + format.extension, before);
      SCOPED_TRACE(format.extension + " cut at " + std::to_string(at) + " of " + std::to_string(all.size()));

      const HxFileRepair inspected = format.repair(cut, true);
      const HxFileRepair repaired = format.repair(cut, false);
      if (at < labelsEnd) {
        EXPECT_EQ(inspected.outcome, Outcome::Failed);
        EXPECT_EQ(repaired.outcome, Outcome::Failed);
        EXPECT_EQ(readFile(cut), before);
        continue;
      }
      const std::string& expected = finished(whole, format.extension);
      const bool wasFinished = before == expected;
      EXPECT_EQ(inspected.outcome, wasFinished ? Outcome::Finished : Outcome::NeedsRepair) << inspected.action;
      EXPECT_EQ(repaired.outcome, wasFinished ? Outcome::Finished : Outcome::Repaired) << repaired.action;
      EXPECT_EQ(inspected.samples, whole);
      EXPECT_EQ(repaired.samples, whole);
      ASSERT_EQ(readFile(cut), expected);
      const HxFileRepair again = format.repair(cut, false);
      EXPECT_EQ(again.outcome, Outcome::Finished);
      EXPECT_EQ(again.samples, whole);
      EXPECT_EQ(readFile(cut), expected);
    }
  }
}

// The command: --check says what it would do and exits 3; a repair says what it did and exits 0;
// a second run finds every file finished (the MRD file's partial sample 1 byte). A missing file is said; a file that
// cannot be repaired, no file at all and a wrong command line end with 1 and 2.
TEST_F(HxRepair, CommandReportsEveryFileAndExitsWithWhatItFound) {
  const std::string cut = dir_->file("command");
  for (const char* extension : {".csv", ".xml", ".m", ".nb"}) {
    const std::string all = finished(3, extension);
    dir_->write("command" + std::string(extension), all.substr(0, all.size() - 12));
  }
  const std::string mrd = unfinished(".mrd", finished(3, ".mrd"));  // 40 bytes a sample
  dir_->write("command.mrd", mrd.substr(0, mrd.size() - 39));
  std::string out, err;
  auto run = [&out, &err](const std::vector<std::string>& arguments) {
    std::ostringstream outStream, errStream;
    const int status = hxRepairMain(arguments, outStream, errStream);
    out = outStream.str();
    err = errStream.str();
    return status;
  };
  auto report = [&cut](const std::string& would, const std::vector<std::string>& actions) {
    std::string text;
    for (int i = 0; i < 5; ++i) text += "hxrepair: " + cut + kFormats[i].extension + ": " + would + actions[i] + "\n";
    return text;
  };
  const std::vector<std::string> actions = {
      "cut back to its last whole row (2 samples)", "given its closing text (3 samples)",
      "cut back to its last whole sample (1 byte of a partial sample dropped) and given its header for 10 values per "
      "sample (2 samples)",
      "cut back to its last whole row and given its closing text (2 samples)",
      "given the rest of its closing text (3 samples)"};
  EXPECT_EQ(run({"--check", cut}), HxRepairNeeded);
  EXPECT_EQ(out + err, report("would be ", actions));
  EXPECT_EQ(run({cut + ".m"}), HxRepairDone);
  EXPECT_EQ(out + err, report("", actions));
  EXPECT_EQ(run({cut}), HxRepairDone);
  EXPECT_EQ(out + err, report("finished, left unchanged ",
                              {"(2 samples)", "(3 samples)", "(2 samples)", "(2 samples)", "(3 samples)"}));

  dir_->write("command.nb", "(**");
  std::remove((cut + ".mrd").c_str());
  EXPECT_EQ(run({"--check", cut}), HxRepairFailed);
  EXPECT_NE(out.find("hxrepair: " + cut + ".mrd: no such file\n"), std::string::npos) << out;
  EXPECT_EQ(err, "hxrepair: error: " + cut + ".nb: was cut inside its labels; nothing to keep\n");
  EXPECT_EQ(run({cut + "-none"}), HxRepairFailed);
  EXPECT_EQ(err, "hxrepair: error: " + cut + "-none: the recording has no file (none of " + cut + "-none.csv, " + cut +
                     "-none.xml, " + cut + "-none.mrd, " + cut + "-none.m, " + cut + "-none.nb)\n");
  EXPECT_EQ(run({}), HxRepairUsage);
  EXPECT_EQ(err, "hxrepair: no recording given (the path of its files without extension)\nTry 'hxrepair --help'.\n");
  EXPECT_EQ(run({"--check=yes", cut}), HxRepairUsage);
  EXPECT_EQ(HxToolsTest::run(HX_HXREPAIR_PATH, {"--check", "command.csv"}, dir_->path()).exitCode, HxRepairFailed);
}

}  // namespace
