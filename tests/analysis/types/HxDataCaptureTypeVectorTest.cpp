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

// The tokens of the types with a creator, in the order of their creators.
std::vector<HxToken> registeredTokens() {
  std::vector<HxToken> tokens(18);
  for (const TypeRow& row : allTypes()) {
    if (row.creatorOrder >= 0) tokens.at(row.creatorOrder) = row.classToken();
  }
  return tokens;
}

// A configuration document holding `body` inside a data capture type vector.
std::string document(const std::string& body) {
  return "<sm:dataCaptureTypeVector xmlns:sm=\"http://www.hxtoolkit.org/namespace/sm#\">\n" + body +
         "</sm:dataCaptureTypeVector>\n";
}

HxBoolean readDocument(const std::string& text, HxDataCaptureTypeVector& vector) {
  HxXmlReader reader;
  return reader.openMemory(text, "types.xml") && reader.readObject(vector);
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

// The 18 creators are registered in their fixed order, each making its own class; the three
// unregistered types and a foreign token make nothing.
TEST(HxDataCaptureTypeVector, RegistersEighteenCreatorsInOrder) {
  RecordingVector vector;
  EXPECT_EQ(vector.creatorMap().size(), 18u);
  EXPECT_EQ(vector.order, registeredTokens());
  for (const TypeRow& row : allTypes()) {
    std::unique_ptr<HxDataCaptureType> type(vector.newDataCaptureByToken(row.classToken()));
    EXPECT_EQ(type != nullptr && type->token() == row.classToken(), row.creatorOrder >= 0) << row.name;
  }
  EXPECT_EQ(vector.newDataCaptureByToken(HxSimAnalysis::HxTimeToken), nullptr);
}

// A configuration creates each registered type with its disable flags and, for the reach
// target, its tolerances, without a message; an empty element is a default type; what the
// vector then writes reads back equal.
TEST(HxDataCaptureTypeVector, ReadsTheRegisteredTypesFromXmlAndWritesThemBack) {
  std::string body;
  for (const HxToken& token : registeredTokens()) {
    const std::string name = "sm:" + std::string(token.localName());
    body += "<" + name + "><sm:disableFlags count=\"2\"><group>true false</group></sm:disableFlags>";
    if (token == HxReachTargetDataCaptureType::classToken()) {
      body += "<sm:translationTolerance>0.005</sm:translationTolerance>"
              "<sm:orientationTolerance>0.25</sm:orientationTolerance>";
    }
    body += "</" + name + ">\n";
  }
  body += "<sm:jointPositionDataCaptureType/>\n";

  Hx::ScopedPrintCapture messages;
  HxDataCaptureTypeVector vector;
  EXPECT_TRUE(readDocument(document(body), vector));
  ASSERT_EQ(vector.size(), 19u);
  for (HxU32 i = 0; i < 18; ++i) {
    const HxDataCaptureType& type = vector[i];
    EXPECT_EQ(type.token(), registeredTokens()[i]);
    ASSERT_EQ(type.disableFlags().size(), 2u);
    EXPECT_TRUE(type.disableFlags()[0].value() && !type.disableFlags()[1].value()) << type.description();
    EXPECT_EQ(type.data().size(), type.dataSize());
  }
  const auto& reach = dynamic_cast<const HxReachTargetDataCaptureType&>(vector[14]);
  EXPECT_EQ(reach.translationTolerance(), 0.005);
  EXPECT_EQ(reach.orientationTolerance(), 0.25);
  const HxJointPositionDataCaptureType defaultType;
  EXPECT_TRUE(vector[18].equality(&defaultType));

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
    EXPECT_FALSE(readDocument(document("<sm:jointTorqueDataCaptureType/><sm:" + std::string(token.localName()) +
                                       "/>\n"),
                              vector));
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
  second.setDisableFlags(HxDataCaptureType::FlagVector(1, HxXmlBasicType<bool>(true)));
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
