// HxDataCaptureTypeVector: the 18 creators in their order, reading types with their disable
// flags and tolerances from XML, refusing the three unregistered tokens with the exact message,
// and finding, making, copying and comparing elements.

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

namespace {

// The registered types, in the order in which their creators are registered.
const std::vector<HxToken>& registeredTokens() {
  static const std::vector<HxToken> tokens = {
      HxBaseAccelerationDataCaptureType::classToken(),
      HxBasePositionDataCaptureType::classToken(),
      HxBaseVelocityDataCaptureType::classToken(),
      HxCenterOfMassDataCaptureType::classToken(),
      HxControlTorqueDataCaptureType::classToken(),
      HxEndEffectorAccelerationDataCaptureType::classToken(),
      HxEndEffectorPlacementDataCaptureType::classToken(),
      HxEndEffectorVelocityDataCaptureType::classToken(),
      HxExternalForceDataCaptureType::classToken(),
      HxJointAccelerationDataCaptureType::classToken(),
      HxJointPositionDataCaptureType::classToken(),
      HxJointVelocityDataCaptureType::classToken(),
      HxJointTorqueDataCaptureType::classToken(),
      HxMotorPowerDataCaptureType::classToken(),
      HxReachTargetDataCaptureType::classToken(),
      HxStructuralForceDataCaptureType::classToken(),
      HxControlOutputJointVelocityDataCaptureType::classToken(),
      HxManipulatorPowerDataCaptureType::classToken(),
  };
  return tokens;
}

const std::vector<HxToken>& unregisteredTokens() {
  static const std::vector<HxToken> tokens = {
      HxControlInputDataCaptureType::classToken(),
      HxControlOutputJointPositionDataCaptureType::classToken(),
      HxControlOutputActualJointVelocityDataCaptureType::classToken(),
  };
  return tokens;
}

std::string localName(const HxToken& token) { return std::string(token.localName()); }

// A configuration document holding `body` inside a data capture type vector.
std::string document(const std::string& body) {
  return "<?xml version=\"1.0\"?>\n"
         "<sm:dataCaptureTypeVector xmlns:sm=\"http://www.hxtoolkit.org/namespace/sm#\">\n" +
         body + "</sm:dataCaptureTypeVector>\n";
}

HxBoolean readDocument(const std::string& text, HxDataCaptureTypeVector& vector) {
  HxXmlReader reader;
  if (!reader.openMemory(text, "types.xml")) return false;
  return reader.readObject(vector);
}

std::vector<bool> flagValues(const HxDataCaptureType& type) {
  std::vector<bool> result;
  for (HxU32 i = 0; i < type.disableFlags().size(); ++i) result.push_back(type.disableFlags()[i].value());
  return result;
}

// Records the order in which creators are registered.
class RecordingVector : public HxDataCaptureTypeVector {
 public:
  void registerComponentCreator(const HxToken& token, Creator make) override {
    order.push_back(token);
    HxDataCaptureTypeVector::registerComponentCreator(token, make);
  }
  std::vector<HxToken> order;
};

// The 18 creators are registered in their fixed order, each making its own class.
TEST(HxDataCaptureTypeVector, RegistersEighteenCreatorsInOrder) {
  RecordingVector vector;
  EXPECT_EQ(vector.creatorMap().size(), 18u);
  EXPECT_EQ(vector.order, registeredTokens());

  for (const HxToken& token : registeredTokens()) {
    std::unique_ptr<HxDataCaptureType> type(vector.newDataCaptureByToken(token));
    ASSERT_NE(type, nullptr) << token.token();
    EXPECT_EQ(type->token(), token);
  }
  for (const HxToken& token : unregisteredTokens()) {
    EXPECT_EQ(vector.newDataCaptureByToken(token), nullptr) << token.token();
  }
  EXPECT_EQ(vector.newDataCaptureByToken(HxSimAnalysis::HxTimeToken), nullptr);
}

// Reading a configuration creates each registered type with its disable flags, its labels and,
// for the reach target, its tolerances; nothing is reported.
TEST(HxDataCaptureTypeVector, ReadsTheRegisteredTypesFromXml) {
  std::string body;
  for (const HxToken& token : registeredTokens()) {
    const std::string name = "sm:" + localName(token);
    body += "  <" + name + ">\n    <sm:disableFlags count=\"2\"><group>true false</group></sm:disableFlags>\n";
    if (token == HxReachTargetDataCaptureType::classToken()) {
      body += "    <sm:translationTolerance>0.005</sm:translationTolerance>\n"
              "    <sm:orientationTolerance>0.25</sm:orientationTolerance>\n";
    }
    body += "  </" + name + ">\n";
  }
  // An element without content is a default type.
  body += "  <sm:jointPositionDataCaptureType/>\n";

  HxDataCaptureTypeVector vector;
  Hx::ScopedPrintCapture messages;
  EXPECT_TRUE(readDocument(document(body), vector));
  EXPECT_EQ(messages.text(), "");

  ASSERT_EQ(vector.size(), 19u);
  for (HxU32 i = 0; i < 18; ++i) {
    const HxDataCaptureType& type = vector[i];
    EXPECT_EQ(type.token(), registeredTokens()[i]);
    EXPECT_EQ(flagValues(type), (std::vector<bool>{true, false})) << type.description();
    EXPECT_EQ(type.activeDataSize(), type.dataSize() - 1);
    EXPECT_EQ(type.data().size(), type.dataSize());
    EXPECT_FALSE(type.label(0).empty());
  }
  const auto* reach = dynamic_cast<const HxReachTargetDataCaptureType*>(&vector[14]);
  ASSERT_NE(reach, nullptr);
  EXPECT_EQ(reach->translationTolerance(), 0.005);
  EXPECT_EQ(reach->orientationTolerance(), 0.25);
  const HxJointPositionDataCaptureType defaultType;
  EXPECT_TRUE(vector[18].equality(&defaultType));
}

// The three unregistered tokens fail the read with the exact message; elements before stay.
TEST(HxDataCaptureTypeVector, ReportsTheUnregisteredTokens) {
  for (const HxToken& token : unregisteredTokens()) {
    const std::string name = "sm:" + localName(token);
    HxDataCaptureTypeVector vector;
    Hx::ScopedPrintCapture messages;
    EXPECT_FALSE(readDocument(document("  <sm:jointTorqueDataCaptureType/>\n  <" + name + "/>\n"), vector));

    const std::string expected =
        "HxXmlVariableVectorType::readValueFromToken() error:\n\t\"" + token.token() + "\" tag not registered.\n";
    ASSERT_EQ(messages.records().size(), 1u) << messages.text();
    EXPECT_EQ(messages.records()[0].text, expected);
    EXPECT_EQ(messages.records()[0].type, Hx::Print::Error);
    ASSERT_GE(vector.size(), 1u);
    EXPECT_EQ(vector[0].token(), HxJointTorqueDataCaptureType::classToken());
    for (HxU32 i = 0; i < vector.size(); ++i) {
      EXPECT_NE(vector[i].token(), token);
    }
  }
}

// What a vector writes, it reads back equal: every type, flags and tolerances included.
TEST(HxDataCaptureTypeVector, WritesAndReadsBack) {
  HxDataCaptureTypeVector written;
  RecordingVector maker;
  for (const HxToken& token : registeredTokens()) {
    std::unique_ptr<HxDataCaptureType> type(maker.newDataCaptureByToken(token));
    HxDataCaptureType::FlagVector flags;
    flags.pushBack(HxXmlBasicType<bool>(true));
    type->setDisableFlags(flags);
    written.pushBack(*type);
  }
  HxReachTargetDataCaptureType reach;
  reach.setTranslationTolerance(0.125);
  reach.setOrientationTolerance(1e-7);
  written.pushBack(reach);

  std::ostringstream stream;
  {
    HxXmlWriter writer("types", stream);
    EXPECT_TRUE(writer.writeObject(written));
  }

  HxDataCaptureTypeVector read;
  Hx::ScopedPrintCapture messages;
  EXPECT_TRUE(readDocument(stream.str(), read)) << stream.str();
  EXPECT_EQ(messages.text(), "");
  EXPECT_TRUE(read == written) << stream.str();
  EXPECT_TRUE(read.equality(&written));
}

// The first element with the token is found, with its position; a missing token or an empty
// vector gives null and leaves the index alone.
TEST(HxDataCaptureTypeVector, FindsTheFirstElementWithAToken) {
  HxDataCaptureTypeVector vector;
  HxU32 index = 99;
  EXPECT_EQ(vector.findDataCaptureByToken(HxJointPositionDataCaptureType::classToken(), &index), nullptr);
  EXPECT_EQ(index, 99u);

  HxJointPositionDataCaptureType first;
  HxJointPositionDataCaptureType second;
  HxDataCaptureType::FlagVector flags;
  flags.pushBack(HxXmlBasicType<bool>(true));
  second.setDisableFlags(flags);
  vector.pushBack(HxJointTorqueDataCaptureType());
  vector.pushBack(first);
  vector.pushBack(second);
  vector.pushBack(HxControlInputDataCaptureType());

  HxDataCaptureType* found = vector.findDataCaptureByToken(HxJointPositionDataCaptureType::classToken(), &index);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(index, 1u);
  EXPECT_EQ(found, &vector[1]);
  EXPECT_EQ(found->activeDataSize(), 1u);
  EXPECT_NE(vector.findDataCaptureByToken(HxControlInputDataCaptureType::classToken(), nullptr), nullptr);

  index = 99;
  EXPECT_EQ(vector.findDataCaptureByToken(HxJointVelocityDataCaptureType::classToken(), &index), nullptr);
  EXPECT_EQ(index, 99u);
}

// A clone is deep and compares equal; a null or foreign object does not.
TEST(HxDataCaptureTypeVector, ClonesAndCompares) {
  HxDataCaptureTypeVector vector;
  vector.pushBack(HxJointPositionDataCaptureType());
  vector.pushBack(HxReachTargetDataCaptureType());

  std::unique_ptr<HxXmlObject> clone(vector.clone());
  EXPECT_TRUE(vector.equality(clone.get()));
  EXPECT_EQ(clone->token(), HxSimAnalysis::HxDataCaptureTypeVectorToken);
  EXPECT_NE(&dynamic_cast<HxDataCaptureTypeVector&>(*clone)[1], &vector[1]);
  EXPECT_FALSE(vector.equality(nullptr));
  EXPECT_FALSE(vector.equality(&vector[0]));
  EXPECT_EQ(HxDataCaptureTypeVector::nullObject().size(), 0u);
}

}  // namespace
