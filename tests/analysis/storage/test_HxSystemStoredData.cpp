// The recorder's life cycle: writers, files, restarts, finishing and path-point indices.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "bench/HxAllocationCounter.h"
#include "framework/HxPrint.h"
#include "tests/analysis/storage/test_HxSystemStoredDataSupport.h"

namespace {

using namespace HxRecorderTest;

std::vector<std::string> csvLines(const std::string& path) {
  std::vector<std::string> lines;
  std::istringstream in(slurp(path));
  std::string line;
  while (std::getline(in, line)) lines.push_back(line);
  return lines;
}

// The second field of each data line of the .csv, the path-point index.
std::vector<std::string> indexColumn(const std::string& path) {
  std::vector<std::string> indices;
  const std::vector<std::string> lines = csvLines(path);
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const std::size_t first = lines[i].find(',');
    indices.push_back(lines[i].substr(first + 1, lines[i].find(',', first + 1) - first - 1));
  }
  return indices;
}

// Without writers no file is made, samples only update the record, and finishing returns to
// idle (a later finish does nothing either).
TEST(HxSystemStoredData, WithoutWritersMakesNoFile) {
  TempDir dir;
  TwoArmScene scene;
  HxSystemStoredData recorder;
  recorder.allocateStorage(scene.capture());
  recorder.beginSaveToFile(dir.file("run"));
  scene.recordAll(recorder);
  recorder.finishSaveToFile();
  recorder.finishSaveToFile();
  EXPECT_TRUE(fs::is_empty(dir.path()));
}

// A second finishSaveToFile writes no second trailer.
TEST(HxSystemStoredData, FinishingTwiceWritesOneTrailer) {
  TempDir dir;
  TwoArmScene scene;
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(allFiveWriters());
  recorder.allocateStorage(scene.capture());
  recorder.beginSaveToFile(dir.file("run"));
  scene.recordAll(recorder);
  recorder.finishSaveToFile();
  std::vector<std::string> once;
  for (const char* ext : {".csv", ".xml", ".mrd", ".m", ".nb"}) once.push_back(slurp(dir.file(std::string("run") + ext)));
  recorder.finishSaveToFile();
  std::size_t i = 0;
  for (const char* ext : {".csv", ".xml", ".mrd", ".m", ".nb"}) {
    EXPECT_EQ(slurp(dir.file(std::string("run") + ext)), once[i++]) << ext;
  }
  EXPECT_EQ(once[3].substr(once[3].size() - 3), "];\n");
  EXPECT_NE(once[1].find("</default>"), std::string::npos);
}

// Beginning again abandons the first files unfinished (MRD header blank, XML unclosed, MATLAB
// data block open, notebook without trailer) and starts a complete new set.
TEST(HxSystemStoredData, BeginningTwiceLeavesFirstFilesUnfinished) {
  TempDir dir;
  TwoArmScene scene;
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(allFiveWriters());
  recorder.allocateStorage(scene.capture());
  recorder.beginSaveToFile(dir.file("first"));
  scene.captureSample(0);
  recorder.saveCapturedData(TwoArmScene::time(0), 0, scene.capture());
  recorder.beginSaveToFile(dir.file("second"));
  scene.captureSample(1);
  recorder.saveCapturedData(TwoArmScene::time(1), 1, scene.capture());
  recorder.finishSaveToFile();

  const std::string firstMrd = slurp(dir.file("first.mrd"));
  EXPECT_EQ(firstMrd.substr(0, 81), std::string(80, ' ') + "\n");
  EXPECT_EQ(firstMrd.size() % 4, slurp(dir.file("second.mrd")).size() % 4);
  EXPECT_EQ(slurp(dir.file("first.xml")).find("</default>"), std::string::npos);
  EXPECT_NE(slurp(dir.file("first.xml")).find("generalStorage"), std::string::npos);
  const std::string firstM = slurp(dir.file("first.m"));
  EXPECT_EQ(firstM.substr(firstM.size() - 2), ";\n");
  EXPECT_EQ(slurp(dir.file("first.nb")).find("End of Mathematica Notebook file."), std::string::npos);
  EXPECT_EQ(csvLines(dir.file("first.csv")).size(), 2u);

  EXPECT_EQ(slurp(dir.file("second.mrd")).substr(0, 13), "53\t53\t1\t1000 ");
  EXPECT_NE(slurp(dir.file("second.xml")).find("</default>"), std::string::npos);
  EXPECT_NE(slurp(dir.file("second.nb")).find("End of Mathematica Notebook file."), std::string::npos);
  EXPECT_EQ(indexColumn(dir.file("second.csv")), std::vector<std::string>{"1"});
}

// A file that cannot be opened (here a directory already holds the XML file's name) loses that
// writer's output silently; every other writer's file is complete.
TEST(HxSystemStoredData, UnopenableFileLeavesOthersIntact) {
  TempDir dir;
  fs::create_directory(dir.path() / "run.xml");
  TwoArmScene scene;
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(allFiveWriters());
  recorder.allocateStorage(scene.capture());
  Hx::ScopedPrintCapture messages;
  recorder.beginSaveToFile(dir.file("run"));
  scene.recordAll(recorder);
  recorder.finishSaveToFile();

  EXPECT_TRUE(messages.records().empty()) << messages.text();
  EXPECT_TRUE(fs::is_directory(dir.path() / "run.xml"));
  EXPECT_TRUE(fs::is_empty(dir.path() / "run.xml"));
  EXPECT_EQ(csvLines(dir.file("run.csv")).size(), 1 + TwoArmScene::kSamples);
  EXPECT_EQ(slurp(dir.file("run.mrd")).substr(0, 14), "212\t53\t4\t1000 ");
  const std::string m = slurp(dir.file("run.m"));
  EXPECT_EQ(m.substr(m.size() - 3), "];\n");
  EXPECT_NE(slurp(dir.file("run.nb")).find("End of Mathematica Notebook file."), std::string::npos);
}

// The form without an index keeps the last index given; the record starts at index 0.
TEST(HxSystemStoredData, FormWithoutIndexRepeatsTheLastOne) {
  TempDir dir;
  TwoArmScene scene;
  HxOutputWriterVector writers;
  writers.pushBack(HxTextOutputWriter());
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(writers);
  recorder.allocateStorage(scene.capture());
  recorder.beginSaveToFile(dir.file("run"));
  scene.captureSample(0);
  recorder.saveCapturedData(0.0, scene.capture());
  recorder.saveCapturedData(0.1, 7, scene.capture());
  recorder.saveCapturedData(0.2, scene.capture());
  recorder.saveCapturedData(0.3, scene.capture());
  recorder.saveCapturedData(0.4, 2, scene.capture());
  recorder.saveCapturedData(0.5, scene.capture());
  recorder.finishSaveToFile();
  EXPECT_EQ(indexColumn(dir.file("run.csv")), (std::vector<std::string>{"0", "7", "7", "7", "2", "2"}));
}

// Copies carry configuration and writers (and compare equal) but never the files; a copy made
// while saving believes it is saving, so its finish is harmless and touches no file.
TEST(HxSystemStoredData, CopiesShareConfigurationNotFiles) {
  TempDir dir;
  TwoArmScene scene;
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(allFiveWriters());
  EXPECT_TRUE(recorder == HxSystemStoredData(recorder));
  EXPECT_FALSE(recorder == HxSystemStoredData());
  recorder.allocateStorage(scene.capture());
  recorder.beginSaveToFile(dir.file("run"));

  HxSystemStoredData copy(recorder);
  EXPECT_TRUE(copy == recorder);
  copy.finishSaveToFile();
  EXPECT_EQ(slurp(dir.file("run.mrd")).substr(0, 80), std::string(80, ' '));

  HxSystemStoredData assigned;
  assigned = recorder;
  EXPECT_TRUE(assigned == recorder);
  assigned.finishSaveToFile();  // idle: nothing to finish

  scene.recordAll(recorder);
  recorder.finishSaveToFile();
  EXPECT_EQ(slurp(dir.file("run.mrd")).substr(0, 14), "212\t53\t4\t1000 ");
}

// A second allocateStorage takes a changed configuration in place: the record is reshaped and
// the label block follows the new configuration.
TEST(HxSystemStoredData, ReallocatingFollowsAChangedConfiguration) {
  TempDir dir;
  TwoArmScene scene;
  HxOutputWriterVector writers;
  writers.pushBack(HxTextOutputWriter());
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(writers);
  recorder.allocateStorage(scene.capture());

  HxSystemDataCapture smaller;
  ASSERT_TRUE(smaller.addManipulatorDataCaptureType(1, HxSimAnalysis::HxCenterOfMassDataCaptureTypeToken));
  recorder.allocateStorage(smaller);
  recorder.beginSaveToFile(dir.file("run"));
  scene.simulation().setCenterOfMass(1, HxVector(0.5, 1.5, -2));
  ASSERT_TRUE(smaller.captureData(scene.simulation()));
  recorder.saveCapturedData(1.5, 3, smaller);
  recorder.finishSaveToFile();
  EXPECT_EQ(csvLines(dir.file("run.csv")),
            (std::vector<std::string>{"Time,Point Path Index,Manip[1]:Center of Mass:X,Manip[1]:Center of Mass:Y,"
                                      "Manip[1]:Center of Mass:Z",
                                      "1.5,3,0.5,1.5,-2"}));
}

// Once the first sample has been written, saving a sample through all five writers makes no
// heap allocation.
TEST(HxSystemStoredData, SavingASampleDoesNotAllocate) {
  TempDir dir;
  TwoArmScene scene;
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(allFiveWriters());
  recorder.allocateStorage(scene.capture());
  recorder.beginSaveToFile(dir.file("run"));
  scene.captureSample(0);
  recorder.saveCapturedData(0.0, 0, scene.capture());
  scene.captureSample(3);  // the longest texts of the scene

  HxAllocationCounter counter;
  for (int i = 0; i < 100; ++i) recorder.saveCapturedData(0.125 * i + 1e-9 * i, i, scene.capture());
  EXPECT_EQ(counter.allocations(), 0u);
  recorder.finishSaveToFile();
}

}  // namespace
