// Load-time construction of the module tokens.

#include "analysis/xml/HxSimAnalysisTokens.h"

#include <string>

#include "framework/HxXmlWriter.h"

static const std::string kVersion = "3.0.0";

// Every object of this file is built in one load-time initialiser, in the order of definition:
// the namespace first, then the tokens in table order. The raised initialisation priority puts
// that initialiser before every default-priority load-time object of the library (in whichever
// file it lives), so those may use the tokens; destruction runs in the reverse order at unload.
#define HX_SIM_ANALYSIS_LOAD_FIRST __attribute__((init_priority(200)))

namespace {

/// A module token: a copy of the namespace token with the local name appended.
HxToken moduleToken(const char* localName) {
  const std::string local(localName);
  HxToken token(HxSimAnalysis::ns);
  token += local;
  return token;
}

}  // namespace

namespace HxSimAnalysis {

HX_SIM_ANALYSIS_LOAD_FIRST const HxToken ns("http://www.hxtoolkit.org/namespace/sm#");

HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxBarChartToken(moduleToken("barChart"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxBaseAccelerationDataCaptureTypeToken(
    moduleToken("baseAccelerationDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxBasePositionDataCaptureTypeToken(
    moduleToken("basePositionDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxBaseVelocityDataCaptureTypeToken(
    moduleToken("baseVelocityDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxCenterOfMassDataCaptureTypeToken(
    moduleToken("centerOfMassDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxControlInputDataCaptureTypeToken(
    moduleToken("controlInputDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxControlOutputActualJointVelocityDataCaptureTypeToken(
    moduleToken("controlOutputActualJointVelocityDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxControlOutputJointPositionDataCaptureTypeToken(
    moduleToken("controlOutputJointPositionDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxControlOutputJointVelocityDataCaptureTypeToken(
    moduleToken("controlOutputJointVelocityDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxControlTorqueDataCaptureTypeToken(
    moduleToken("controlTorqueDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxDataCaptureTypeVectorToken(
    moduleToken("dataCaptureTypeVector"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxDataLabelsToken(moduleToken("dataLabels"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxDisableFlagsToken(moduleToken("disableFlags"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxDisplaySystemDataCaptureToken(
    moduleToken("displaySystemDataCapture"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxEndEffectorAccelerationDataCaptureTypeToken(
    moduleToken("endEffectorAccelerationDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxEndEffectorDataToken(moduleToken("endEffectorData"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxEndEffectorDataCaptureToken(
    moduleToken("endEffectorDataCapture"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxEndEffectorDataCaptureVectorToken(
    moduleToken("endEffectorDataCaptureVector"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxEndEffectorIndexToken(moduleToken("endEffectorIndex"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxEndEffectorPlacementDataCaptureTypeToken(
    moduleToken("endEffectorPlacementDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxEndEffectorVelocityDataCaptureTypeToken(
    moduleToken("endEffectorVelocityDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxExternalForceDataCaptureTypeToken(
    moduleToken("externalForceDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxJointAccelerationDataCaptureTypeToken(
    moduleToken("jointAccelerationDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxJointPositionDataCaptureTypeToken(
    moduleToken("jointPositionDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxJointTorqueDataCaptureTypeToken(
    moduleToken("jointTorqueDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxJointVelocityDataCaptureTypeToken(
    moduleToken("jointVelocityDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxGeneralCaptureToken(moduleToken("generalCapture"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxGeneralStorageToken(moduleToken("generalStorage"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxLeftSystemDataCaptureToken(
    moduleToken("leftSystemDataCapture"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxLinkDataCaptureToken(moduleToken("linkDataCapture"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxLinkDataCaptureVectorToken(
    moduleToken("linkDataCaptureVector"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxLinkIdentificationToken(
    moduleToken("linkIdentification"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxLinkLevelDataToken(moduleToken("linkLevelData"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxManipulatorDataCaptureToken(
    moduleToken("manipulatorDataCapture"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxManipulatorDataCaptureVectorToken(
    moduleToken("manipulatorDataCaptureVector"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxManipulatorDataStorageToken(
    moduleToken("manipulatorDataStorage"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxManipulatorDataVectorToken(
    moduleToken("manipulatorDataVector"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxManipulatorIndexToken(moduleToken("manipulatorIndex"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxManipulatorLevelDataToken(
    moduleToken("manipulatorLevelData"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxManipulatorPowerDataCaptureTypeToken(
    moduleToken("manipulatorPowerDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxMatlabOutputWriterToken(
    moduleToken("matlabOutputWriter"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxMathematicaOutputWriterToken(
    moduleToken("mathematicaOutputWriter"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxMotorPowerDataCaptureTypeToken(
    moduleToken("motorPowerDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxMrdOutputWriterToken(moduleToken("mrdOutputWriter"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxOrientationToleranceToken(
    moduleToken("orientationTolerance"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxOutputWriterVectorToken(
    moduleToken("outputWriterVector"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxPathPointIndexToken(moduleToken("pathPointIndex"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxPlotTypeToken(moduleToken("plotType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxReachTargetDataCaptureTypeToken(
    moduleToken("reachTargetDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxRightSystemDataCaptureToken(
    moduleToken("rightSystemDataCapture"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxScrollingCruveToken(moduleToken("scrollingCurve"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxStructuralForceDataCaptureTypeToken(
    moduleToken("structuralForceDataCaptureType"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxSystemDataCaptureToken(moduleToken("systemDataCapture"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxSystemDataCaptureLabelToken(
    moduleToken("systemDataCaptureLabel"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxSystemDataVectorToken(moduleToken("systemDataVector"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxSystemDataStorageToken(moduleToken("systemDataStorage"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxTextOutputWriterToken(moduleToken("textOutputWriter"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxTimeToken(moduleToken("time"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxTitleToken(moduleToken("title"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxTranslationToleranceToken(
    moduleToken("translationTolerance"));
HX_SIM_ANALYSIS_LOAD_FIRST const HxToken HxXmlOutputWriterToken(moduleToken("xmlOutputWriter"));

}  // namespace HxSimAnalysis

namespace {

/// Registers the module's namespace prefix with the XML writer once the tokens exist.
struct NamespacePrefixRegistration {
  NamespacePrefixRegistration() {
    HxXmlWriter::registerNamespacePrefix(HxSimAnalysis::ns.token(), "sm");
  }
};

HX_SIM_ANALYSIS_LOAD_FIRST const NamespacePrefixRegistration theNamespacePrefixRegistration;

}  // namespace
