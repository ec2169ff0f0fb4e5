// The polymorphic list of system data components: both kinds created by element name, told
// apart by type(), and read back equal.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/capture/HxSystemDataVector.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlObjectVisitor.h"
#include "tests/analysis/capture/HxCaptureTestSupport.h"

namespace {

using namespace HxSimAnalysis;
using HxCaptureTest::readFromString;
using HxCaptureTest::writeToString;

HxSystemDataCapture sampleCapture() {
  HxSystemDataCapture capture;
  capture.setLabel("arm");
  capture.addManipulatorDataCaptureType(1, HxCenterOfMassDataCaptureTypeToken);
  capture.addLinkDataCaptureType(1, "elbow", HxJointTorqueDataCaptureTypeToken);
  return capture;
}

TEST(HxSystemDataVector, CreatesBothComponentKindsByElementName) {
  HxSystemDataVector vector;
  const HxSystemDataCapture capture = sampleCapture();
  HxSystemDataStorage record;
  capture.allocateStorage(record);
  record.setTime(1.5);
  record.setPathPointIndex(4);
  record.setSpecificLinkLevelData(0, 0, 0, 0, -2.25);
  vector.pushBack(capture);
  vector.pushBack(record);

  Hx::ScopedPrintCapture messages;
  const std::string text = writeToString(vector);
  EXPECT_NE(text.find("<sm:systemDataVector xmlns:sm=\"" + HxSimAnalysis::ns.token() + "\" count=\"2\">"),
            std::string::npos)
      << text;
  EXPECT_LT(text.find("<sm:generalCapture>"), text.find("<sm:generalStorage>")) << text;

  HxSystemDataVector read;
  ASSERT_TRUE(readFromString(read, text));
  EXPECT_TRUE(messages.records().empty()) << messages.text();
  ASSERT_EQ(read.size(), 2u);
  EXPECT_EQ(read[0].type(), 0u);
  EXPECT_EQ(read[1].type(), 1u);
  ASSERT_NE(dynamic_cast<const HxSystemDataCapture*>(&read[0]), nullptr);
  ASSERT_NE(dynamic_cast<HxSystemDataStorage*>(&read[1]), nullptr);

  // The capture recomputes its element size when read; the record does not.
  EXPECT_EQ(dynamic_cast<const HxSystemDataCapture&>(read[0]).elementSize(), 4u);
  EXPECT_FALSE(read == vector);
  auto& readRecord = dynamic_cast<HxSystemDataStorage&>(read[1]);
  EXPECT_EQ(readRecord.elementSize(), 0u);
  readRecord.computeElementSize();
  EXPECT_TRUE(read == vector);
  EXPECT_TRUE(read.equality(&vector));
  EXPECT_DOUBLE_EQ(readRecord.manipulatorDataVector()[0].linkLevelData()[0][0][0].value(), -2.25);

  // Labels of the capture and values of the record, through the common base.
  std::vector<std::string> labels, values;
  read[0].getStringElements(labels);
  read[1].getStringElements(values);
  EXPECT_EQ(labels.size(), values.size());
  EXPECT_EQ(labels[5], "Manip[1]:elbow:Joint Torques");
  EXPECT_EQ(values[0], "1.5");
  EXPECT_EQ(values[1], "4");
  EXPECT_EQ(values[5], "-2.25");
}

TEST(HxSystemDataVector, UnregisteredElementFailsTheRead) {
  Hx::ScopedPrintCapture messages;
  HxSystemDataVector read;
  const std::string text = std::string("<sm:systemDataVector xmlns:sm=\"") + HxSimAnalysis::ns.token() +
                           "\" count=\"2\"><sm:generalStorage/><sm:systemDataStorage/></sm:systemDataVector>";
  EXPECT_FALSE(readFromString(read, text));
  EXPECT_EQ(read.size(), 1u);
  EXPECT_NE(messages.text().find("systemDataStorage\" tag not registered"), std::string::npos) << messages.text();
}

TEST(HxSystemDataVector, CopiesClonesAndVisits) {
  HxSystemDataVector vector;
  vector.pushBack(sampleCapture());
  vector.pushBack(HxSystemDataStorage());
  HxSystemDataVector copy(vector);
  EXPECT_EQ(copy, vector);
  HxSystemDataVector assigned;
  assigned = vector;
  EXPECT_EQ(assigned, vector);
  std::unique_ptr<HxXmlObject> clone(vector.clone());
  EXPECT_TRUE(vector.equality(clone.get()));
  EXPECT_FALSE(vector.equality(&vector[0]));
  std::unique_ptr<HxXmlObject> fresh(vector.newObject());
  EXPECT_TRUE(HxSystemDataVector::nullObject().equality(fresh.get()));
  EXPECT_EQ(vector.token(), HxSystemDataVectorToken);

  // The visitor sees the vector as a polymorphic vector and descends by element token.
  struct Recorder : HxXmlObjectVisitor {
    std::vector<std::string> tokens;
    HxBoolean enter(const HxXmlObject*) override {
      tokens.push_back(currentToken().token());
      return true;
    }
  } visitor;
  visitor.setCurrentToken(HxSystemDataVectorToken);
  vector.accept(&visitor);
  ASSERT_GE(visitor.tokens.size(), 3u);
  EXPECT_EQ(visitor.tokens[0], HxSystemDataVectorToken.token());
  EXPECT_NE(std::find(visitor.tokens.begin(), visitor.tokens.end(), HxGeneralCaptureToken.token()),
            visitor.tokens.end());
  EXPECT_NE(std::find(visitor.tokens.begin(), visitor.tokens.end(), HxGeneralStorageToken.token()),
            visitor.tokens.end());
}

}  // namespace
