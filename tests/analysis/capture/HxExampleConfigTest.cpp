// Write -> read -> compare over every example configuration file: each one reads without a
// message, writes, and reads back equal. The capture and display examples are moreover exactly
// what the library writes, once their comments are taken out.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/capture/HxDisplaySystemDataCapture.h"
#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/capture/HxSystemDataVector.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/types/HxReachTargetDataCaptureType.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "tests/analysis/capture/HxCaptureTestSupport.h"

namespace {

namespace fs = std::filesystem;
using HxCaptureTest::readFromString;
using HxCaptureTest::writeToString;

const fs::path kConfigDirectory = fs::path(HX_SOURCE_DIR) / "examples" / "config";

std::string fileText(const fs::path& path) {
  std::ifstream in(path);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// The object class for a document's root element, or null for a root no example should have.
std::unique_ptr<HxXmlObject> objectForRoot(const fs::path& path) {
  HxXmlReader reader;
  if (!reader.openFile(path.string())) return nullptr;
  int kind = reader.next();
  while (kind != HxXmlReader::StartElement && kind != HxXmlReader::EmptyElement && kind > 0) kind = reader.next();
  const HxToken& root = reader.name();
  if (root == HxSystemDataCapture::classToken()) return std::make_unique<HxSystemDataCapture>();
  if (root == HxDisplaySystemDataCapture::classToken()) return std::make_unique<HxDisplaySystemDataCapture>();
  if (root == HxSystemDataVector::classToken()) return std::make_unique<HxSystemDataVector>();
  if (root == HxOutputWriterVector::classToken()) return std::make_unique<HxOutputWriterVector>();
  return nullptr;
}

// The lines of a document without comments, blank lines and trailing blanks.
std::vector<std::string> withoutComments(const std::string& text) {
  static const std::regex comment("<!--[\\s\\S]*?-->");
  const std::string stripped = std::regex_replace(text, comment, "");
  std::vector<std::string> lines;
  std::istringstream in(stripped);
  for (std::string line; std::getline(in, line);) {
    line.erase(line.find_last_not_of(" \t\r") + 1);
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

std::vector<fs::path> exampleFiles() {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(kConfigDirectory)) {
    if (entry.path().extension() == ".xml") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

TEST(HxExampleConfig, EveryFileReadsWritesAndReadsBackEqual) {
  const std::vector<fs::path> files = exampleFiles();
  ASSERT_FALSE(files.empty());
  for (const fs::path& path : files) {
    SCOPED_TRACE(path.filename().string());
    std::unique_ptr<HxXmlObject> original = objectForRoot(path);
    ASSERT_NE(original, nullptr) << "unknown root element";

    Hx::ScopedPrintCapture messages;
    HxXmlReader reader;
    ASSERT_TRUE(reader.openFile(path.string()));
    ASSERT_TRUE(reader.readObject(*original));
    const std::string written = writeToString(*original);
    std::unique_ptr<HxXmlObject> readBack(original->newObject());
    ASSERT_TRUE(readFromString(*readBack, written)) << written;
    EXPECT_TRUE(original->equality(readBack.get()));
    EXPECT_TRUE(messages.records().empty()) << messages.text();
  }
}

TEST(HxExampleConfig, CaptureAndDisplayExamplesAreWhatTheLibraryWrites) {
  for (const char* name : {"two_manipulators_capture.xml", "display_description.xml"}) {
    SCOPED_TRACE(name);
    const fs::path path = kConfigDirectory / name;
    std::unique_ptr<HxXmlObject> object = objectForRoot(path);
    ASSERT_NE(object, nullptr);
    HxXmlReader reader;
    ASSERT_TRUE(reader.openFile(path.string()));
    ASSERT_TRUE(reader.readObject(*object));
    EXPECT_EQ(withoutComments(fileText(path)), withoutComments(writeToString(*object)));
  }
}

TEST(HxExampleConfig, TwoManipulatorCaptureHasTheColumnsItsCommentsDescribe) {
  HxSystemDataCapture capture;
  HxXmlReader reader;
  ASSERT_TRUE(reader.openFile((kConfigDirectory / "two_manipulators_capture.xml").string()));
  ASSERT_TRUE(reader.readObject(capture));

  // 77 values after time and index, 15 of them switched off.
  EXPECT_EQ(capture.elementSize(), 77u);
  HxSystemDataStorage record;
  capture.allocateStorage(record);
  EXPECT_EQ(record.elementSize(), 2u + 62u);
  ASSERT_EQ(capture.manipulatorDataCaptureVector().size(), 2u);
  EXPECT_EQ(capture.numDataCaptureTypes(0, "left_link2"), 3u);
  EXPECT_EQ(capture.numDataCaptureTypes(1, "right_link6"), 1u);

  const auto* target = dynamic_cast<const HxReachTargetDataCaptureType*>(
      capture.manipulatorDataCapture(0)->endEffectorDataCapture(0u)->dataCaptureType(
          HxSimAnalysis::HxReachTargetDataCaptureTypeToken));
  ASSERT_NE(target, nullptr);
  EXPECT_DOUBLE_EQ(target->translationTolerance(), 0.005);
  EXPECT_DOUBLE_EQ(target->orientationTolerance(), 0.02);
  EXPECT_EQ(target->activeDataSize(), 16u);

  std::vector<std::string> labels;
  capture.getStringElements(labels);
  EXPECT_EQ(labels[2], "Manip[0]:Base Positions:Translation X");
  EXPECT_EQ(labels.back(), "");

  // The display's left axis holds the left arm's joint positions of the capture example.
  HxDisplaySystemDataCapture display;
  HxXmlReader displayReader;
  ASSERT_TRUE(displayReader.openFile((kConfigDirectory / "display_description.xml").string()));
  ASSERT_TRUE(displayReader.readObject(display));
  for (int j = 1; j <= 6; ++j) {
    const std::string link = "left_link" + std::to_string(j);
    EXPECT_TRUE(display.leftSystemDataCapture().isDataCaptureTypeIncluded(
        0, link, HxSimAnalysis::HxJointPositionDataCaptureTypeToken));
    EXPECT_TRUE(capture.isDataCaptureTypeIncluded(0, link, HxSimAnalysis::HxJointPositionDataCaptureTypeToken));
  }
  EXPECT_EQ(display.plotType(), 0u);
  std::vector<std::string> rightLabels;
  display.rightSystemDataCapture().getStringElements(rightLabels);
  EXPECT_EQ(rightLabels[2], "Manip[0]:EE[0]:Reach Target:Translation Error");
  EXPECT_EQ(rightLabels[3], "Manip[0]:EE[0]:Reach Target:Orientation Error");
}

}  // namespace
