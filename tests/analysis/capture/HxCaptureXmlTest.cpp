// The XML forms of the configuration classes: every file in examples/config (found when the test
// runs) reads into the class its root element names, writes exactly its own text less comments,
// and reads back equal; the display's plot type by name; the examples agree with each other.

#include <algorithm>
#include <filesystem>
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
#include "analysis/writers/HxOutputWriterVector.h"
#include "framework/HxPrint.h"
#include "tests/framework/HxFrameworkTestTypes.h"

namespace {

namespace fs = std::filesystem;
using HxFrameworkTest::readFromString;
using HxFrameworkTest::slurp;
using HxFrameworkTest::writeToString;

// A display writes its plot type by name ("scrollingCurve" is 0, "barChart" 1, as the display
// example shows for the first); an unknown name is refused and a number is taken unchecked.
TEST(HxDisplaySystemDataCapture, PlotTypeByName) {
  HxDisplaySystemDataCapture display;
  EXPECT_TRUE(display.setPlotType(std::string("barChart")) && display.plotType() == 1u);
  EXPECT_NE(writeToString(display).find("<sm:plotType>barChart</sm:plotType>"), std::string::npos);
  display.setPlotType(7u);
  EXPECT_TRUE(!display.setPlotType(std::string("pieChart")) && display.plotType() == 7u);
}

const fs::path kConfigDirectory = fs::path(HX_SOURCE_DIR) / "examples" / "config";

// Reads an example file into an object of the configuration class whose element is the file's
// root, the only element that starts a line (null if none is).
std::unique_ptr<HxXmlObject> readExample(const fs::path& path) {
  const std::string text = slurp(path);
  std::unique_ptr<HxXmlObject> candidates[] = {
      std::make_unique<HxSystemDataCapture>(), std::make_unique<HxDisplaySystemDataCapture>(),
      std::make_unique<HxSystemDataVector>(), std::make_unique<HxOutputWriterVector>()};
  for (auto& candidate : candidates) {
    if (text.find("\n<sm:" + std::string(candidate->token().localName()) + " ") == std::string::npos) continue;
    EXPECT_TRUE(readFromString(*candidate, text)) << path;
    return std::move(candidate);
  }
  ADD_FAILURE() << "no configuration class for " << path;
  return nullptr;
}

// The lines of a document without comments, blank lines and trailing blanks.
std::vector<std::string> withoutComments(const std::string& text) {
  static const std::regex comment("<!--[\\s\\S]*?-->");
  std::istringstream in(std::regex_replace(text, comment, ""));
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) {
    line.erase(line.find_last_not_of(" \t\r") + 1);
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

// The names of the data capture type elements of a document, in order.
std::vector<std::string> typeElements(const std::string& text) {
  static const std::regex element("<sm:(\\w+DataCaptureType)\\b");
  std::vector<std::string> names;
  for (std::sregex_iterator at(text.begin(), text.end(), element), end; at != end; ++at) names.push_back((*at)[1]);
  return names;
}

// Write -> read -> compare for every example file, without a message: the first write is the
// file's own text less its comments (a file that gives types in the short, empty-element form
// only has the same type elements in the same order), the object read back equals the one read
// from the file, and writing it again gives the first write.
TEST(HxExampleConfig, EveryFileRoundTrips) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(kConfigDirectory)) {
    if (entry.path().extension() == ".xml") files.push_back(entry.path());
  }
  ASSERT_FALSE(files.empty());
  for (const fs::path& path : files) {
    SCOPED_TRACE(path.filename().string());
    Hx::ScopedPrintCapture messages;
    const std::unique_ptr<HxXmlObject> original = readExample(path);
    ASSERT_NE(original, nullptr);
    const std::string written = writeToString(*original);
    const std::string text = slurp(path);
    EXPECT_EQ(typeElements(written), typeElements(text));
    if (text.find("DataCaptureType/>") == std::string::npos) {
      EXPECT_EQ(withoutComments(written), withoutComments(text));
    }
    const std::unique_ptr<HxXmlObject> back(original->newObject());
    EXPECT_TRUE(readFromString(*back, written) && original->equality(back.get())) << written;
    EXPECT_EQ(writeToString(*back), written);
    EXPECT_TRUE(messages.records().empty()) << messages.text();
  }
}

// The capture example has the columns its comments count (77, of which 62 are recorded), and
// the display example plots columns of it.
TEST(HxExampleConfig, DisplayExamplePlotsColumnsOfTheCaptureExample) {
  const std::unique_ptr<HxXmlObject> capture = readExample(kConfigDirectory / "two_manipulators_capture.xml");
  const std::unique_ptr<HxXmlObject> display = readExample(kConfigDirectory / "display_description.xml");
  ASSERT_TRUE(capture && display);
  EXPECT_EQ(dynamic_cast<const HxSystemDataCapture&>(*capture).elementSize(), 77u);
  HxSystemDataStorage record;
  dynamic_cast<const HxSystemDataCapture&>(*capture).allocateStorage(record);
  EXPECT_EQ(record.elementSize(), 2u + 62u);

  std::vector<std::string> captured, left, right;
  dynamic_cast<const HxSystemDataCapture&>(*capture).getStringElements(captured);
  dynamic_cast<const HxDisplaySystemDataCapture&>(*display).leftSystemDataCapture().getStringElements(left);
  dynamic_cast<const HxDisplaySystemDataCapture&>(*display).rightSystemDataCapture().getStringElements(right);
  EXPECT_TRUE(left.size() == 2u + 6u && right[2] == "Manip[0]:EE[0]:Reach Target:Translation Error");
  left.insert(left.end(), right.begin(), right.end());
  for (const std::string& label : left) {
    EXPECT_NE(std::find(captured.begin(), captured.end(), label), captured.end()) << label;
  }
}

}  // namespace
