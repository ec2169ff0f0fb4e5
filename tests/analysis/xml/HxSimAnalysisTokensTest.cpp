#include "analysis/xml/HxSimAnalysisTokens.h"

#include <gtest/gtest.h>

#include <cctype>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlWriter.h"

namespace {

const std::string kNamespace = "http://www.hxtoolkit.org/namespace/sm#";

// Every module token.
std::vector<const HxToken*> moduleTokens() {
  using namespace HxSimAnalysis;
  return {
      &HxBarChartToken, &HxBaseAccelerationDataCaptureTypeToken, &HxBasePositionDataCaptureTypeToken,
      &HxBaseVelocityDataCaptureTypeToken, &HxCenterOfMassDataCaptureTypeToken,
      &HxControlInputDataCaptureTypeToken, &HxControlOutputActualJointVelocityDataCaptureTypeToken,
      &HxControlOutputJointPositionDataCaptureTypeToken, &HxControlOutputJointVelocityDataCaptureTypeToken,
      &HxControlTorqueDataCaptureTypeToken, &HxDataCaptureTypeVectorToken, &HxDataLabelsToken,
      &HxDisableFlagsToken, &HxDisplaySystemDataCaptureToken, &HxEndEffectorAccelerationDataCaptureTypeToken,
      &HxEndEffectorDataToken, &HxEndEffectorDataCaptureToken, &HxEndEffectorDataCaptureVectorToken,
      &HxEndEffectorIndexToken, &HxEndEffectorPlacementDataCaptureTypeToken,
      &HxEndEffectorVelocityDataCaptureTypeToken, &HxExternalForceDataCaptureTypeToken,
      &HxJointAccelerationDataCaptureTypeToken, &HxJointPositionDataCaptureTypeToken,
      &HxJointTorqueDataCaptureTypeToken, &HxJointVelocityDataCaptureTypeToken, &HxGeneralCaptureToken,
      &HxGeneralStorageToken, &HxLeftSystemDataCaptureToken, &HxLinkDataCaptureToken,
      &HxLinkDataCaptureVectorToken, &HxLinkIdentificationToken, &HxLinkLevelDataToken,
      &HxManipulatorDataCaptureToken, &HxManipulatorDataCaptureVectorToken, &HxManipulatorDataStorageToken,
      &HxManipulatorDataVectorToken, &HxManipulatorIndexToken, &HxManipulatorLevelDataToken,
      &HxManipulatorPowerDataCaptureTypeToken, &HxMatlabOutputWriterToken, &HxMathematicaOutputWriterToken,
      &HxMotorPowerDataCaptureTypeToken, &HxMrdOutputWriterToken, &HxOrientationToleranceToken,
      &HxOutputWriterVectorToken, &HxPathPointIndexToken, &HxPlotTypeToken, &HxReachTargetDataCaptureTypeToken,
      &HxRightSystemDataCaptureToken, &HxScrollingCruveToken, &HxStructuralForceDataCaptureTypeToken,
      &HxSystemDataCaptureToken, &HxSystemDataCaptureLabelToken, &HxSystemDataVectorToken,
      &HxSystemDataStorageToken, &HxTextOutputWriterToken, &HxTimeToken, &HxTitleToken,
      &HxTranslationToleranceToken, &HxXmlOutputWriterToken
  };
}

// The namespace is an absolute URI ending in the module path, and a token's text is that URI
// immediately followed by the local name.
TEST(HxSimAnalysisTokens, FullTextIsNamespaceFollowedByLocalName) {
  EXPECT_EQ(HxSimAnalysis::ns.token(), kNamespace);
  EXPECT_EQ(HxSimAnalysis::HxTimeToken.token(), "http://www.hxtoolkit.org/namespace/sm#time");
  EXPECT_EQ(HxSimAnalysis::HxScrollingCruveToken.token(), kNamespace + "scrollingCurve");
  EXPECT_EQ(HxSimAnalysis::HxGeneralCaptureToken.token(), kNamespace + "generalCapture");
  for (const HxToken* token : moduleTokens()) {
    EXPECT_EQ(token->namespaceUri(), kNamespace) << token->token();
    ASSERT_FALSE(token->localName().empty());
    EXPECT_TRUE(std::islower(static_cast<unsigned char>(token->localName()[0]))) << token->token();
  }
}

// Tokens built from the same local name are equal; the namespace differs from every token and
// no two table entries share a text.
TEST(HxSimAnalysisTokens, EqualityAndDistinctness) {
  HxToken rebuilt(HxSimAnalysis::ns);
  rebuilt += std::string("time");
  EXPECT_TRUE(rebuilt == HxSimAnalysis::HxTimeToken);
  EXPECT_TRUE(HxSimAnalysis::HxTimeToken == kNamespace + "time");
  EXPECT_FALSE(HxSimAnalysis::HxTimeToken == HxSimAnalysis::HxTitleToken);

  std::set<std::string> texts;
  const auto tokens = moduleTokens();
  EXPECT_EQ(tokens.size(), 61u);
  for (const HxToken* token : tokens) {
    EXPECT_FALSE(HxSimAnalysis::ns == *token) << token->token();
    texts.insert(token->token());
  }
  EXPECT_EQ(texts.size(), tokens.size());
}

// Module tokens are written with the registered "sm" prefix and its declaration, and read back
// to the same full text.
TEST(HxSimAnalysisTokens, WrittenWithPrefixAndReadBack) {
  std::ostringstream out;
  {
    HxXmlWriter writer("tokens", out);
    writer.writeObject(HxXmlBasicType<double>(2.5), HxSimAnalysis::HxTimeToken);
  }
  const std::string text = out.str();
  EXPECT_NE(text.find("<sm:time"), std::string::npos) << text;
  EXPECT_NE(text.find("xmlns:sm=\"" + kNamespace + "\""), std::string::npos) << text;

  HxXmlReader reader;
  ASSERT_TRUE(reader.openMemory(text, "tokens.xml"));
  ASSERT_EQ(reader.next(), HxXmlReader::StartElement);
  EXPECT_TRUE(reader.name() == HxSimAnalysis::HxTimeToken);
}

}  // namespace
