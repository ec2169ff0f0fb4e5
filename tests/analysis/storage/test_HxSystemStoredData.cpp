// The recorder's life cycle: writers, files, restarts, finishing, copies, reallocation and
// path-point indices, and no allocation per sample.

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#define HX_ALLOCATION_COUNTER_NO_OPERATORS
#include "bench/HxAllocationCounter.h"
#include "framework/HxPrint.h"
#include "tests/analysis/storage/test_HxSystemStoredDataSupport.h"

namespace {

using namespace HxRecorderTest;
using Lines = std::vector<std::string>;

// A recorder and the two-arm scene, with a fresh directory for the files.
class HxSystemStoredDataLifecycle : public ::testing::Test {
 protected:
  // Gives the recorder `writers`, shapes it for the scene and begins saving to `name`.
  void begin(const HxOutputWriterVector& writers, const std::string& name = "run") {
    recorder.setOutputWriterVector(writers);
    recorder.allocateStorage(scene.capture);
    recorder.beginSaveToFile(dir.file(name));
  }

  // The second field of each data line of a .csv file: the path-point index.
  Lines indexColumn(const std::string& file) const {
    static const std::regex secondField("\n[^,\n]*,([^,\n]*)");
    const std::string text = slurp(dir.file(file));
    Lines indices;
    for (std::sregex_iterator at(text.begin(), text.end(), secondField), end; at != end; ++at) {
      indices.push_back((*at)[1]);
    }
    return indices;
  }

  // Checks that the MRD, MATLAB and Mathematica files of `name` (and its XML file unless it
  // could not be written) end as only finishing leaves them; the MRD header gives `samples`.
  void expectFinished(const std::string& name, unsigned int samples, bool xml = true) {
    const std::string header = std::to_string(53 * samples) + "\t53\t" + std::to_string(samples) + "\t1000 ";
    EXPECT_EQ(slurp(dir.file(name + ".mrd")).substr(0, header.size()), header);
    EXPECT_TRUE(!xml || slurp(dir.file(name + ".xml")).find("</default>") != std::string::npos);
    const std::string m = slurp(dir.file(name + ".m"));
    EXPECT_EQ(m.substr(m.size() - 3), "];\n");
    EXPECT_NE(slurp(dir.file(name + ".nb")).find("End of Mathematica Notebook file."), std::string::npos);
  }

  TempDir dir;
  TwoArmScene scene;
  HxSystemStoredData recorder;
};

// Without writers, saving makes no file; finishing twice is harmless.
TEST_F(HxSystemStoredDataLifecycle, WithoutWritersMakesNoFile) {
  begin(HxOutputWriterVector());
  scene.recordAll(recorder);
  recorder.finishSaveToFile();
  recorder.finishSaveToFile();
  EXPECT_TRUE(fs::is_empty(dir.path));
}

// A second finishSaveToFile writes no second trailer.
TEST_F(HxSystemStoredDataLifecycle, FinishingTwiceWritesOneTrailer) {
  begin(writers());
  scene.recordAll(recorder);
  recorder.finishSaveToFile();
  auto files = [&] {
    std::string all;
    for (const char* extension : {".csv", ".xml", ".mrd", ".m", ".nb"}) all += slurp(dir.file("run") + extension) + "|";
    return all;
  };
  const std::string once = files();
  recorder.finishSaveToFile();
  EXPECT_EQ(files(), once);
  expectFinished("run", TwoArmScene::kSamples);
}

// Beginning again abandons the first files unfinished (MRD header blank, XML unclosed, notebook
// without trailer) with the sample they had, and starts a complete new set.
TEST_F(HxSystemStoredDataLifecycle, BeginningTwiceLeavesFirstFilesUnfinished) {
  begin(writers(), "first");
  scene.captureSample(0);
  recorder.saveCapturedData(TwoArmScene::time(0), 0, scene.capture);
  recorder.beginSaveToFile(dir.file("second"));
  scene.captureSample(1);
  recorder.saveCapturedData(TwoArmScene::time(1), 1, scene.capture);
  recorder.finishSaveToFile();

  const std::string firstMrd = slurp(dir.file("first.mrd"));
  EXPECT_EQ(firstMrd.substr(0, 81), std::string(80, ' ') + "\n");
  EXPECT_EQ(firstMrd.size(), slurp(dir.file("second.mrd")).size());
  const std::string firstXml = slurp(dir.file("first.xml"));
  EXPECT_EQ(firstXml.find("</default>"), std::string::npos);
  EXPECT_NE(firstXml.find("generalStorage"), std::string::npos);
  EXPECT_EQ(slurp(dir.file("first.nb")).find("End of Mathematica Notebook file."), std::string::npos);
  EXPECT_EQ(indexColumn("first.csv"), Lines{"0"});

  expectFinished("second", 1);
  EXPECT_EQ(indexColumn("second.csv"), Lines{"1"});
}

// A file that cannot be opened (a directory holds the XML file's name) loses that writer's
// output silently; every other writer's file is complete.
TEST_F(HxSystemStoredDataLifecycle, UnopenableFileLeavesOthersIntact) {
  fs::create_directory(dir.path / "run.xml");
  Hx::ScopedPrintCapture messages;
  begin(writers());
  scene.recordAll(recorder);
  recorder.finishSaveToFile();
  EXPECT_TRUE(messages.records().empty()) << messages.text();
  EXPECT_TRUE(fs::is_empty(dir.path / "run.xml"));
  EXPECT_EQ(indexColumn("run.csv"), (Lines{"0", "1", "2", "2"}));
  expectFinished("run", TwoArmScene::kSamples, false);
}

// The form without an index keeps the last index given; the record starts at index 0.
TEST_F(HxSystemStoredDataLifecycle, FormWithoutIndexRepeatsTheLastOne) {
  begin(writers(false));
  scene.captureSample(0);
  recorder.saveCapturedData(0.0, scene.capture);
  recorder.saveCapturedData(0.1, 7, scene.capture);
  recorder.saveCapturedData(0.2, scene.capture);
  recorder.saveCapturedData(0.3, scene.capture);
  recorder.saveCapturedData(0.4, 2, scene.capture);
  recorder.saveCapturedData(0.5, scene.capture);
  recorder.finishSaveToFile();
  EXPECT_EQ(indexColumn("run.csv"), (Lines{"0", "7", "7", "7", "2", "2"}));
}

// Copies carry configuration and writers (and compare equal) but never the files; a copy made
// while saving believes it is saving, so its finish is harmless and touches no file.
TEST_F(HxSystemStoredDataLifecycle, CopiesShareConfigurationNotFiles) {
  recorder.setOutputWriterVector(writers());
  EXPECT_TRUE(recorder == HxSystemStoredData(recorder));
  EXPECT_FALSE(recorder == HxSystemStoredData());
  begin(writers());
  HxSystemStoredData copy(recorder), assigned;
  assigned = recorder;
  EXPECT_TRUE(copy == recorder);
  EXPECT_TRUE(assigned == recorder);
  copy.finishSaveToFile();
  assigned.finishSaveToFile();  // idle: nothing to finish
  EXPECT_EQ(slurp(dir.file("run.mrd")).substr(0, 80), std::string(80, ' '));
  scene.recordAll(recorder);
  recorder.finishSaveToFile();
  expectFinished("run", TwoArmScene::kSamples);
}

// A second allocateStorage takes a changed configuration in place: the record is reshaped and
// the label block follows the new configuration.
TEST_F(HxSystemStoredDataLifecycle, ReallocatingFollowsAChangedConfiguration) {
  HxSystemDataCapture smaller;
  ASSERT_TRUE(smaller.addManipulatorDataCaptureType(1, HxSimAnalysis::HxCenterOfMassDataCaptureTypeToken));
  recorder.setOutputWriterVector(writers(false));
  recorder.allocateStorage(scene.capture);
  recorder.allocateStorage(smaller);
  recorder.beginSaveToFile(dir.file("run"));
  scene.simulation.setCenterOfMass(1, HxVector(0.5, 1.5, -2));
  ASSERT_TRUE(smaller.captureData(scene.simulation));
  recorder.saveCapturedData(1.5, 3, smaller);
  recorder.finishSaveToFile();
  EXPECT_EQ(slurp(dir.file("run.csv")),
            "Time,Point Path Index,Manip[1]:Center of Mass:X,Manip[1]:Center of Mass:Y,Manip[1]:Center of Mass:Z\n"
            "1.5,3,0.5,1.5,-2\n");
}

// Once the first sample has been written, saving a sample through all five writers makes no
// heap allocation; nor do storing a sample and reading its text in each form, nor the labels
// into a warm list.
TEST_F(HxSystemStoredDataLifecycle, SavingASampleDoesNotAllocate) {
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

}  // namespace
