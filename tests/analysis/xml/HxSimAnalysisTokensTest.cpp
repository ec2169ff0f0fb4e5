#include "analysis/xml/HxSimAnalysisTokens.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlWriter.h"

namespace {

const std::string kNamespace = "http://www.hxtoolkit.org/namespace/sm#";

// Every module token with its local name, in table order.
std::vector<std::pair<const HxToken*, std::string>> moduleTokens() {
  using namespace HxSimAnalysis;
  return {
      {&HxBarChartToken, "barChart"},
      {&HxBaseAccelerationDataCaptureTypeToken, "baseAccelerationDataCaptureType"},
      {&HxBasePositionDataCaptureTypeToken, "basePositionDataCaptureType"},
      {&HxBaseVelocityDataCaptureTypeToken, "baseVelocityDataCaptureType"},
      {&HxCenterOfMassDataCaptureTypeToken, "centerOfMassDataCaptureType"},
      {&HxControlInputDataCaptureTypeToken, "controlInputDataCaptureType"},
      {&HxControlOutputActualJointVelocityDataCaptureTypeToken, "controlOutputActualJointVelocityDataCaptureType"},
      {&HxControlOutputJointPositionDataCaptureTypeToken, "controlOutputJointPositionDataCaptureType"},
      {&HxControlOutputJointVelocityDataCaptureTypeToken, "controlOutputJointVelocityDataCaptureType"},
      {&HxControlTorqueDataCaptureTypeToken, "controlTorqueDataCaptureType"},
      {&HxDataCaptureTypeVectorToken, "dataCaptureTypeVector"},
      {&HxDataLabelsToken, "dataLabels"},
      {&HxDisableFlagsToken, "disableFlags"},
      {&HxDisplaySystemDataCaptureToken, "displaySystemDataCapture"},
      {&HxEndEffectorAccelerationDataCaptureTypeToken, "endEffectorAccelerationDataCaptureType"},
      {&HxEndEffectorDataToken, "endEffectorData"},
      {&HxEndEffectorDataCaptureToken, "endEffectorDataCapture"},
      {&HxEndEffectorDataCaptureVectorToken, "endEffectorDataCaptureVector"},
      {&HxEndEffectorIndexToken, "endEffectorIndex"},
      {&HxEndEffectorPlacementDataCaptureTypeToken, "endEffectorPlacementDataCaptureType"},
      {&HxEndEffectorVelocityDataCaptureTypeToken, "endEffectorVelocityDataCaptureType"},
      {&HxExternalForceDataCaptureTypeToken, "externalForceDataCaptureType"},
      {&HxJointAccelerationDataCaptureTypeToken, "jointAccelerationDataCaptureType"},
      {&HxJointPositionDataCaptureTypeToken, "jointPositionDataCaptureType"},
      {&HxJointTorqueDataCaptureTypeToken, "jointTorqueDataCaptureType"},
      {&HxJointVelocityDataCaptureTypeToken, "jointVelocityDataCaptureType"},
      {&HxGeneralCaptureToken, "generalCapture"},
      {&HxGeneralStorageToken, "generalStorage"},
      {&HxLeftSystemDataCaptureToken, "leftSystemDataCapture"},
      {&HxLinkDataCaptureToken, "linkDataCapture"},
      {&HxLinkDataCaptureVectorToken, "linkDataCaptureVector"},
      {&HxLinkIdentificationToken, "linkIdentification"},
      {&HxLinkLevelDataToken, "linkLevelData"},
      {&HxManipulatorDataCaptureToken, "manipulatorDataCapture"},
      {&HxManipulatorDataCaptureVectorToken, "manipulatorDataCaptureVector"},
      {&HxManipulatorDataStorageToken, "manipulatorDataStorage"},
      {&HxManipulatorDataVectorToken, "manipulatorDataVector"},
      {&HxManipulatorIndexToken, "manipulatorIndex"},
      {&HxManipulatorLevelDataToken, "manipulatorLevelData"},
      {&HxManipulatorPowerDataCaptureTypeToken, "manipulatorPowerDataCaptureType"},
      {&HxMatlabOutputWriterToken, "matlabOutputWriter"},
      {&HxMathematicaOutputWriterToken, "mathematicaOutputWriter"},
      {&HxMotorPowerDataCaptureTypeToken, "motorPowerDataCaptureType"},
      {&HxMrdOutputWriterToken, "mrdOutputWriter"},
      {&HxOrientationToleranceToken, "orientationTolerance"},
      {&HxOutputWriterVectorToken, "outputWriterVector"},
      {&HxPathPointIndexToken, "pathPointIndex"},
      {&HxPlotTypeToken, "plotType"},
      {&HxReachTargetDataCaptureTypeToken, "reachTargetDataCaptureType"},
      {&HxRightSystemDataCaptureToken, "rightSystemDataCapture"},
      {&HxScrollingCruveToken, "scrollingCurve"},
      {&HxStructuralForceDataCaptureTypeToken, "structuralForceDataCaptureType"},
      {&HxSystemDataCaptureToken, "systemDataCapture"},
      {&HxSystemDataCaptureLabelToken, "systemDataCaptureLabel"},
      {&HxSystemDataVectorToken, "systemDataVector"},
      {&HxSystemDataStorageToken, "systemDataStorage"},
      {&HxTextOutputWriterToken, "textOutputWriter"},
      {&HxTimeToken, "time"},
      {&HxTitleToken, "title"},
      {&HxTranslationToleranceToken, "translationTolerance"},
      {&HxXmlOutputWriterToken, "xmlOutputWriter"},
  };
}

// The namespace is an absolute URI ending in the module path, and a token's text is that URI
// immediately followed by the local name.
TEST(HxSimAnalysisTokens, FullTextIsNamespaceFollowedByLocalName) {
  EXPECT_EQ(HxSimAnalysis::ns.token(), kNamespace);
  EXPECT_EQ(HxSimAnalysis::HxTimeToken.token(), "http://www.hxtoolkit.org/namespace/sm#time");
  EXPECT_EQ(HxSimAnalysis::HxScrollingCruveToken.token(), kNamespace + "scrollingCurve");
  for (const auto& [token, local] : moduleTokens()) {
    EXPECT_EQ(token->token(), kNamespace + local);
    EXPECT_EQ(token->namespaceUri(), kNamespace);
    EXPECT_EQ(token->localName(), local);
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
  for (const auto& entry : tokens) {
    EXPECT_FALSE(HxSimAnalysis::ns == *entry.first) << entry.second;
    texts.insert(entry.first->token());
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
