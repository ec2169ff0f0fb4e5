// HxDataCaptureTypeVector: the 18 creators in their order, reading types with their disable
// flags and tolerances from XML, refusing the three unregistered tokens with the exact message,
// and finding elements by token.

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/types/HxDataCaptureTypes.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlWriter.h"
#include "tests/analysis/types/HxTypesTestSupport.h"

namespace {

using namespace HxTypesTest;

// A configuration document holding `body` inside a data capture type vector.
std::string document(const std::string& body) {
  return "<sm:dataCaptureTypeVector xmlns:sm=\"" + HxSimAnalysis::ns.token() + "\">\n" + body +
         "</sm:dataCaptureTypeVector>\n";
}

HxBoolean readDocument(const std::string& text, HxDataCaptureTypeVector& vector) {
  HxXmlReader reader;
  return reader.openMemory(text, "types.xml") && reader.readObject(vector);
}

// The 18 creators are registered in their fixed order (what each makes, and that the other
// three make nothing, is pinned by reading them below).
TEST(HxDataCaptureTypeVector, RegistersEighteenCreatorsInOrder) {
  struct RecordingVector : HxDataCaptureTypeVector {
    void registerComponentCreator(const HxToken& token, Creator make) override {
      order.push_back(token);
      HxDataCaptureTypeVector::registerComponentCreator(token, make);
    }
    std::vector<HxToken> order;
  } vector;
  std::vector<HxToken> expected(18);
  for (const TypeRow& row : allTypes()) {
    if (row.creatorOrder >= 0) expected.at(row.creatorOrder) = row.classToken();
  }
  EXPECT_EQ(vector.creatorMap().size(), 18u);
  EXPECT_EQ(vector.order, expected);
}

// A configuration creates each registered type as its own class, with its disable flags and,
// for the reach target, its tolerances, without a message; an empty element is a default
// type; what the vector then writes reads back equal.
TEST(HxDataCaptureTypeVector, ReadsTheRegisteredTypesFromXmlAndWritesThemBack) {
  std::string body;
  HxDataCaptureTypeVector expected;
  for (const TypeRow& row : allTypes()) {
    if (row.creatorOrder < 0) continue;
    const std::string name = "sm:" + std::string(row.classToken().localName());
    body += "<" + name + "><sm:disableFlags count=\"2\"><group>true false</group></sm:disableFlags>";
    std::unique_ptr<HxDataCaptureType> type(dynamic_cast<HxDataCaptureType*>(row.create()));
    type->setDisableFlags(flags({true, false}));
    if (auto* reach = dynamic_cast<HxReachTargetDataCaptureType*>(type.get())) {
      body += "<sm:translationTolerance>0.005</sm:translationTolerance>"
              "<sm:orientationTolerance>0.25</sm:orientationTolerance>";
      reach->setTranslationTolerance(0.005);
      reach->setOrientationTolerance(0.25);
    }
    body += "</" + name + ">\n";
    expected.pushBack(*type);
  }
  body += "<sm:jointPositionDataCaptureType/>\n";
  expected.pushBack(HxJointPositionDataCaptureType());

  Hx::ScopedPrintCapture messages;
  HxDataCaptureTypeVector vector;
  EXPECT_TRUE(readDocument(document(body), vector));
  EXPECT_TRUE(vector == expected);
  std::ostringstream stream;
  {
    HxXmlWriter writer("types", stream);
    EXPECT_TRUE(writer.writeObject(vector));
  }
  HxDataCaptureTypeVector read;
  EXPECT_TRUE(readDocument(stream.str(), read)) << stream.str();
  EXPECT_TRUE(read == vector) << stream.str();
  EXPECT_EQ(messages.text(), "");
}

// The three unregistered tokens fail the read with the exact message; elements before stay.
TEST(HxDataCaptureTypeVector, ReportsTheUnregisteredTokens) {
  for (const TypeRow& row : allTypes()) {
    if (row.creatorOrder >= 0) continue;
    const HxToken& token = row.classToken();
    SCOPED_TRACE(token.token());
    Hx::ScopedPrintCapture messages;
    HxDataCaptureTypeVector vector;
    const std::string body = "<sm:jointTorqueDataCaptureType/><sm:" + std::string(token.localName()) + "/>\n";
    EXPECT_FALSE(readDocument(document(body), vector));
    ASSERT_EQ(messages.records().size(), 1u) << messages.text();
    EXPECT_EQ(messages.records()[0].text,
              "HxXmlVariableVectorType::readValueFromToken() error:\n\t\"" + token.token() + "\" tag not registered.\n");
    EXPECT_EQ(messages.records()[0].type, Hx::Print::Error);
    ASSERT_EQ(vector.size(), 1u);
    EXPECT_EQ(vector[0].token(), HxJointTorqueDataCaptureType::classToken());
  }
}

// The first element with the token is found, with its position; a missing token or an empty
// vector gives null and leaves the index alone. The vector compares unequal to other objects.
TEST(HxDataCaptureTypeVector, FindsTheFirstElementWithAToken) {
  HxDataCaptureTypeVector vector;
  HxU32 index = 99;
  EXPECT_EQ(vector.findDataCaptureByToken(HxJointPositionDataCaptureType::classToken(), &index), nullptr);
  HxJointPositionDataCaptureType second;
  second.setDisableFlags(flags({true}));
  vector.pushBack(HxJointTorqueDataCaptureType());
  vector.pushBack(HxJointPositionDataCaptureType());
  vector.pushBack(second);
  EXPECT_EQ(vector.findDataCaptureByToken(HxJointVelocityDataCaptureType::classToken(), &index), nullptr);
  EXPECT_EQ(index, 99u);
  EXPECT_EQ(vector.findDataCaptureByToken(HxJointPositionDataCaptureType::classToken(), &index), &vector[1]);
  EXPECT_EQ(index, 1u);
  EXPECT_NE(vector.findDataCaptureByToken(HxJointTorqueDataCaptureType::classToken(), nullptr), nullptr);

  EXPECT_FALSE(vector.equality(nullptr));
  EXPECT_FALSE(vector.equality(&vector[0]));
}

}  // namespace
