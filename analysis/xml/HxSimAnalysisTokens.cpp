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

// One module token: `Name`, the namespace followed by `localName`.
#define HX_TOKEN(Name, localName) HX_SIM_ANALYSIS_LOAD_FIRST const HxToken Name(moduleToken(localName))

HX_TOKEN(HxBarChartToken, "barChart");
HX_TOKEN(HxBaseAccelerationDataCaptureTypeToken, "baseAccelerationDataCaptureType");
HX_TOKEN(HxBasePositionDataCaptureTypeToken, "basePositionDataCaptureType");
HX_TOKEN(HxBaseVelocityDataCaptureTypeToken, "baseVelocityDataCaptureType");
HX_TOKEN(HxCenterOfMassDataCaptureTypeToken, "centerOfMassDataCaptureType");
HX_TOKEN(HxControlInputDataCaptureTypeToken, "controlInputDataCaptureType");
HX_TOKEN(HxControlOutputActualJointVelocityDataCaptureTypeToken, "controlOutputActualJointVelocityDataCaptureType");
HX_TOKEN(HxControlOutputJointPositionDataCaptureTypeToken, "controlOutputJointPositionDataCaptureType");
HX_TOKEN(HxControlOutputJointVelocityDataCaptureTypeToken, "controlOutputJointVelocityDataCaptureType");
HX_TOKEN(HxControlTorqueDataCaptureTypeToken, "controlTorqueDataCaptureType");
HX_TOKEN(HxDataCaptureTypeVectorToken, "dataCaptureTypeVector");
HX_TOKEN(HxDataLabelsToken, "dataLabels");
HX_TOKEN(HxDisableFlagsToken, "disableFlags");
HX_TOKEN(HxDisplaySystemDataCaptureToken, "displaySystemDataCapture");
HX_TOKEN(HxEndEffectorAccelerationDataCaptureTypeToken, "endEffectorAccelerationDataCaptureType");
HX_TOKEN(HxEndEffectorDataToken, "endEffectorData");
HX_TOKEN(HxEndEffectorDataCaptureToken, "endEffectorDataCapture");
HX_TOKEN(HxEndEffectorDataCaptureVectorToken, "endEffectorDataCaptureVector");
HX_TOKEN(HxEndEffectorIndexToken, "endEffectorIndex");
HX_TOKEN(HxEndEffectorPlacementDataCaptureTypeToken, "endEffectorPlacementDataCaptureType");
HX_TOKEN(HxEndEffectorVelocityDataCaptureTypeToken, "endEffectorVelocityDataCaptureType");
HX_TOKEN(HxExternalForceDataCaptureTypeToken, "externalForceDataCaptureType");
HX_TOKEN(HxJointAccelerationDataCaptureTypeToken, "jointAccelerationDataCaptureType");
HX_TOKEN(HxJointPositionDataCaptureTypeToken, "jointPositionDataCaptureType");
HX_TOKEN(HxJointTorqueDataCaptureTypeToken, "jointTorqueDataCaptureType");
HX_TOKEN(HxJointVelocityDataCaptureTypeToken, "jointVelocityDataCaptureType");
HX_TOKEN(HxGeneralCaptureToken, "generalCapture");
HX_TOKEN(HxGeneralStorageToken, "generalStorage");
HX_TOKEN(HxLeftSystemDataCaptureToken, "leftSystemDataCapture");
HX_TOKEN(HxLinkDataCaptureToken, "linkDataCapture");
HX_TOKEN(HxLinkDataCaptureVectorToken, "linkDataCaptureVector");
HX_TOKEN(HxLinkIdentificationToken, "linkIdentification");
HX_TOKEN(HxLinkLevelDataToken, "linkLevelData");
HX_TOKEN(HxManipulatorDataCaptureToken, "manipulatorDataCapture");
HX_TOKEN(HxManipulatorDataCaptureVectorToken, "manipulatorDataCaptureVector");
HX_TOKEN(HxManipulatorDataStorageToken, "manipulatorDataStorage");
HX_TOKEN(HxManipulatorDataVectorToken, "manipulatorDataVector");
HX_TOKEN(HxManipulatorIndexToken, "manipulatorIndex");
HX_TOKEN(HxManipulatorLevelDataToken, "manipulatorLevelData");
HX_TOKEN(HxManipulatorPowerDataCaptureTypeToken, "manipulatorPowerDataCaptureType");
HX_TOKEN(HxMatlabOutputWriterToken, "matlabOutputWriter");
HX_TOKEN(HxMathematicaOutputWriterToken, "mathematicaOutputWriter");
HX_TOKEN(HxMotorPowerDataCaptureTypeToken, "motorPowerDataCaptureType");
HX_TOKEN(HxMrdOutputWriterToken, "mrdOutputWriter");
HX_TOKEN(HxOrientationToleranceToken, "orientationTolerance");
HX_TOKEN(HxOutputWriterVectorToken, "outputWriterVector");
HX_TOKEN(HxPathPointIndexToken, "pathPointIndex");
HX_TOKEN(HxPlotTypeToken, "plotType");
HX_TOKEN(HxReachTargetDataCaptureTypeToken, "reachTargetDataCaptureType");
HX_TOKEN(HxRightSystemDataCaptureToken, "rightSystemDataCapture");
HX_TOKEN(HxScrollingCruveToken, "scrollingCurve");
HX_TOKEN(HxStructuralForceDataCaptureTypeToken, "structuralForceDataCaptureType");
HX_TOKEN(HxSystemDataCaptureToken, "systemDataCapture");
HX_TOKEN(HxSystemDataCaptureLabelToken, "systemDataCaptureLabel");
HX_TOKEN(HxSystemDataVectorToken, "systemDataVector");
HX_TOKEN(HxSystemDataStorageToken, "systemDataStorage");
HX_TOKEN(HxTextOutputWriterToken, "textOutputWriter");
HX_TOKEN(HxTimeToken, "time");
HX_TOKEN(HxTitleToken, "title");
HX_TOKEN(HxTranslationToleranceToken, "translationTolerance");
HX_TOKEN(HxXmlOutputWriterToken, "xmlOutputWriter");

#undef HX_TOKEN

}  // namespace HxSimAnalysis

namespace {

/// Registers the module's namespace prefix with the XML writer once the tokens exist.
struct NamespacePrefixRegistration {
  NamespacePrefixRegistration() { HxXmlWriter::registerNamespacePrefix(HxSimAnalysis::ns.token(), "sm"); }
};

HX_SIM_ANALYSIS_LOAD_FIRST const NamespacePrefixRegistration theNamespacePrefixRegistration;

}  // namespace
