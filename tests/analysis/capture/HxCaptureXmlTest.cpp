// The XML forms of the capture classes: write -> read -> compare for every class, the display
// description's plot types, the system data vector's two component kinds, and every example
// configuration file (which must also be exactly what the library writes, less its comments).

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
#include "analysis/types/HxDataCaptureTypes.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlObjectVisitor.h"
#include "tests/analysis/capture/HxCaptureTestSupport.h"

namespace {

namespace fs = std::filesystem;
using namespace HxSimAnalysis;
using HxCaptureTest::flags;
using HxCaptureTest::readFromString;
using HxCaptureTest::writeToString;

// Writes `object` and reads it into a fresh object of its class; nothing may be reported.
std::unique_ptr<HxXmlObject> roundTrip(const HxXmlObject& object) {
  Hx::ScopedPrintCapture messages;
  const std::string text = writeToString(object);
  std::unique_ptr<HxXmlObject> read(object.newObject());
  EXPECT_TRUE(readFromString(*read, text)) << text;
  EXPECT_TRUE(messages.records().empty()) << messages.text();
  return read;
}

// Every capture class reads back equal to what it wrote, clones equal, and is equal to no
// object of another class; a configuration read back has its element size again. A display
// writes its plot type by name ("scrollingCurve" is 0, "barChart" 1); an unknown name is
// refused and a number is taken unchecked.
TEST(HxCaptureXml, EveryClassRoundTripsAndClonesEqual) {
  HxSystemDataCapture system;
  system.setLabel("round trip");
  system.addManipulatorDataCaptureType(4, HxBaseAccelerationDataCaptureTypeToken);
  system.setDisableFlags(4, HxBaseAccelerationDataCaptureTypeToken, flags({false, true}));
  system.addLinkDataCaptureType(4, "elbow joint", HxStructuralForceDataCaptureTypeToken);
  system.addLinkDataCaptureType(4, "wrist", HxJointPositionDataCaptureTypeToken);
  HxReachTargetDataCaptureType target;
  target.setTranslationTolerance(0.02);
  target.setOrientationTolerance(0.1);
  system.addEndEffectorDataCaptureType(4, target, 2u);
  system.addManipulatorDataCaptureType(0, HxManipulatorPowerDataCaptureTypeToken);
  const HxManipulatorDataCapture& manipulator = system.manipulatorDataCaptureVector()[0];

  HxDisplaySystemDataCapture display;
  EXPECT_NE(writeToString(display).find("<sm:plotType>scrollingCurve</sm:plotType>"), std::string::npos);
  display.setTitle("Joint tracking");
  display.setLeftSystemDataCapture(system);
  display.rightSystemDataCapture().addLinkDataCaptureType(0, "elbow", HxControlOutputJointVelocityDataCaptureTypeToken);
  EXPECT_TRUE(display.setPlotType(std::string("barChart")));
  EXPECT_EQ(display.plotType(), 1u);
  EXPECT_NE(writeToString(display).find("<sm:plotType>barChart</sm:plotType>"), std::string::npos);

  const std::vector<const HxXmlObject*> objects = {
      &system, &manipulator, &manipulator.linkDataCaptureVector()[0], &manipulator.endEffectorDataCaptureVector()[1],
      &display};
  for (std::size_t i = 0; i < objects.size(); ++i) {
    SCOPED_TRACE(objects[i]->token().token());
    EXPECT_TRUE(objects[i]->equality(roundTrip(*objects[i]).get()));
    EXPECT_TRUE(objects[i]->equality(std::unique_ptr<HxXmlObject>(objects[i]->clone()).get()));
    EXPECT_FALSE(objects[i]->equality(objects[(i + 1) % objects.size()]));
    EXPECT_FALSE(objects[i]->equality(nullptr));
  }
  EXPECT_EQ(system.elementSize(), 6u + 6u + 1u + 20u + 20u + 1u);
  EXPECT_EQ(dynamic_cast<const HxSystemDataCapture&>(*roundTrip(system)).elementSize(), system.elementSize());
  EXPECT_EQ(dynamic_cast<const HxDisplaySystemDataCapture&>(*roundTrip(display)).rightSystemDataCapture().elementSize(),
            1u);

  EXPECT_EQ(HxDisplaySystemDataCapture::numPlotTypes(), HxDisplaySystemDataCapture::plotTypeTokens().size());
  display.setPlotType(7u);
  EXPECT_FALSE(display.setPlotType(std::string("pieChart")));
  EXPECT_EQ(display.plotType(), 7u);
}

// A system data vector writes a capture as "generalCapture" and a record as "generalStorage",
// and reads each back as its class (type() 0 and 1). Only the capture recomputes its element
// size when read. "systemDataStorage" is not an element it knows.
TEST(HxCaptureXml, SystemDataVectorCreatesBothComponentKinds) {
  HxSystemDataCapture capture;
  capture.addManipulatorDataCaptureType(1, HxCenterOfMassDataCaptureTypeToken);
  capture.addLinkDataCaptureType(1, "elbow", HxJointTorqueDataCaptureTypeToken);
  HxSystemDataStorage record;
  capture.allocateStorage(record);
  record.setTime(1.5);
  record.setPathPointIndex(4);
  record.setSpecificLinkLevelData(0, 0, 0, 0, -2.25);
  HxSystemDataVector vector;
  vector.pushBack(capture);
  vector.pushBack(record);
  const std::string text = writeToString(vector);
  EXPECT_LT(text.find("<sm:generalCapture>"), text.find("<sm:generalStorage>")) << text;

  std::unique_ptr<HxXmlObject> object = roundTrip(vector);
  auto& read = dynamic_cast<HxSystemDataVector&>(*object);
  ASSERT_EQ(read.size(), 2u);
  EXPECT_EQ(read[0].type(), 0u);
  EXPECT_EQ(read[1].type(), 1u);
  EXPECT_EQ(dynamic_cast<const HxSystemDataCapture&>(read[0]).elementSize(), 4u);
  auto& readRecord = dynamic_cast<HxSystemDataStorage&>(read[1]);
  EXPECT_EQ(readRecord.elementSize(), 0u);
  EXPECT_FALSE(read == vector);
  readRecord.computeElementSize();
  EXPECT_TRUE(read == vector);
  HxSystemDataVector assigned;
  assigned = HxSystemDataVector(vector);
  EXPECT_TRUE(assigned == vector);

  Hx::ScopedPrintCapture messages;
  HxSystemDataVector partial;
  EXPECT_FALSE(readFromString(partial, "<sm:systemDataVector xmlns:sm=\"" + ns.token() +
                                        "\" count=\"2\"><sm:generalStorage/><sm:systemDataStorage/></sm:systemDataVector>"));
  EXPECT_EQ(partial.size(), 1u);
  EXPECT_NE(messages.text().find("systemDataStorage\" tag not registered"), std::string::npos) << messages.text();
}

// A visitor sees the system data vector as a polymorphic vector and descends into both kinds.
TEST(HxCaptureXml, SystemDataVectorAcceptsAVisitor) {
  struct Recorder : HxXmlObjectVisitor {
    std::string tokens;
    HxBoolean enter(const HxXmlObject*) override {
      tokens.append(currentToken().localName()).append(" ");
      return true;
    }
  } visitor;
  HxSystemDataVector vector;
  vector.pushBack(HxSystemDataCapture());
  vector.pushBack(HxSystemDataStorage());
  visitor.setCurrentToken(HxSystemDataVectorToken);
  vector.accept(&visitor);
  EXPECT_EQ(visitor.tokens,
            "systemDataVector generalCapture systemDataCaptureLabel manipulatorDataCaptureVector generalStorage "
            "manipulatorDataVector time pathPointIndex ");
}

const fs::path kConfigDirectory = fs::path(HX_SOURCE_DIR) / "examples" / "config";

// Reads an example file into an object of the class its root element names.
std::unique_ptr<HxXmlObject> readExample(const fs::path& path) {
  HxXmlReader reader;
  EXPECT_TRUE(reader.openFile(path.string())) << path;
  while (reader.next() > 0 && reader.nodeKind() != HxXmlReader::StartElement) {
  }
  std::unique_ptr<HxXmlObject> object, candidates[] = {
      std::make_unique<HxSystemDataCapture>(), std::make_unique<HxDisplaySystemDataCapture>(),
      std::make_unique<HxSystemDataVector>(), std::make_unique<HxOutputWriterVector>()};
  for (auto& candidate : candidates) {
    if (candidate->token() == reader.name()) object = std::move(candidate);
  }
  EXPECT_TRUE(object && reader.readChild(*object)) << path;
  return object;
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

// Every example file reads without a message, writes, and reads back equal; the capture and
// display examples are exactly what the library writes, less their comments.
TEST(HxExampleConfig, EveryFileReadsWritesAndReadsBackEqual) {
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
    EXPECT_TRUE(original->equality(roundTrip(*original).get()));
    EXPECT_TRUE(messages.records().empty()) << messages.text();
    const std::string name = path.filename().string();
    if (name == "two_manipulators_capture.xml" || name == "display_description.xml") {
      std::ifstream in(path);
      const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
      EXPECT_EQ(withoutComments(text), withoutComments(writeToString(*original)));
    }
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
  EXPECT_EQ(left.size(), 2u + 6u);
  EXPECT_EQ(right[2], "Manip[0]:EE[0]:Reach Target:Translation Error");
  left.insert(left.end(), right.begin(), right.end());
  for (const std::string& label : left) {
    EXPECT_NE(std::find(captured.begin(), captured.end(), label), captured.end()) << label;
  }
}

}  // namespace
