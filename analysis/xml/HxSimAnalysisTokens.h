#pragma once
/// \file
/// Module tokens of libhxSimulationAnalysis: every element and attribute name the library
/// writes or reads.

#include "framework/HxToken.h"

/// The module's XML names. Each token is the module namespace URI `ns` immediately followed
/// by its local name ("http://www.hxtoolkit.org/namespace/sm#time"); the XML writer emits them
/// with the prefix "sm".
///
/// All tokens are built when the library is loaded, before any other load-time object of the
/// library (they carry a higher initialisation priority), `ns` first and then in the order of
/// declaration below; they are destroyed in the reverse order at unload. Any code of the
/// library, including its own load-time initialisers, may therefore use them.
namespace HxSimAnalysis {

/// The module namespace: "http://www.hxtoolkit.org/namespace/sm#".
extern const HxToken ns;

/// "barChart"
extern const HxToken HxBarChartToken;
/// "baseAccelerationDataCaptureType"
extern const HxToken HxBaseAccelerationDataCaptureTypeToken;
/// "basePositionDataCaptureType"
extern const HxToken HxBasePositionDataCaptureTypeToken;
/// "baseVelocityDataCaptureType"
extern const HxToken HxBaseVelocityDataCaptureTypeToken;
/// "centerOfMassDataCaptureType"
extern const HxToken HxCenterOfMassDataCaptureTypeToken;
/// "controlInputDataCaptureType"
extern const HxToken HxControlInputDataCaptureTypeToken;
/// "controlOutputActualJointVelocityDataCaptureType"
extern const HxToken HxControlOutputActualJointVelocityDataCaptureTypeToken;
/// "controlOutputJointPositionDataCaptureType"
extern const HxToken HxControlOutputJointPositionDataCaptureTypeToken;
/// "controlOutputJointVelocityDataCaptureType"
extern const HxToken HxControlOutputJointVelocityDataCaptureTypeToken;
/// "controlTorqueDataCaptureType"
extern const HxToken HxControlTorqueDataCaptureTypeToken;
/// "dataCaptureTypeVector"
extern const HxToken HxDataCaptureTypeVectorToken;
/// "dataLabels"
extern const HxToken HxDataLabelsToken;
/// "disableFlags"
extern const HxToken HxDisableFlagsToken;
/// "displaySystemDataCapture"
extern const HxToken HxDisplaySystemDataCaptureToken;
/// "endEffectorAccelerationDataCaptureType"
extern const HxToken HxEndEffectorAccelerationDataCaptureTypeToken;
/// "endEffectorData"
extern const HxToken HxEndEffectorDataToken;
/// "endEffectorDataCapture"
extern const HxToken HxEndEffectorDataCaptureToken;
/// "endEffectorDataCaptureVector"
extern const HxToken HxEndEffectorDataCaptureVectorToken;
/// "endEffectorIndex"
extern const HxToken HxEndEffectorIndexToken;
/// "endEffectorPlacementDataCaptureType"
extern const HxToken HxEndEffectorPlacementDataCaptureTypeToken;
/// "endEffectorVelocityDataCaptureType"
extern const HxToken HxEndEffectorVelocityDataCaptureTypeToken;
/// "externalForceDataCaptureType"
extern const HxToken HxExternalForceDataCaptureTypeToken;
/// "jointAccelerationDataCaptureType"
extern const HxToken HxJointAccelerationDataCaptureTypeToken;
/// "jointPositionDataCaptureType"
extern const HxToken HxJointPositionDataCaptureTypeToken;
/// "jointTorqueDataCaptureType"
extern const HxToken HxJointTorqueDataCaptureTypeToken;
/// "jointVelocityDataCaptureType"
extern const HxToken HxJointVelocityDataCaptureTypeToken;
/// "generalCapture"
extern const HxToken HxGeneralCaptureToken;
/// "generalStorage"
extern const HxToken HxGeneralStorageToken;
/// "leftSystemDataCapture"
extern const HxToken HxLeftSystemDataCaptureToken;
/// "linkDataCapture"
extern const HxToken HxLinkDataCaptureToken;
/// "linkDataCaptureVector"
extern const HxToken HxLinkDataCaptureVectorToken;
/// "linkIdentification"
extern const HxToken HxLinkIdentificationToken;
/// "linkLevelData"
extern const HxToken HxLinkLevelDataToken;
/// "manipulatorDataCapture"
extern const HxToken HxManipulatorDataCaptureToken;
/// "manipulatorDataCaptureVector"
extern const HxToken HxManipulatorDataCaptureVectorToken;
/// "manipulatorDataStorage"
extern const HxToken HxManipulatorDataStorageToken;
/// "manipulatorDataVector"
extern const HxToken HxManipulatorDataVectorToken;
/// "manipulatorIndex"
extern const HxToken HxManipulatorIndexToken;
/// "manipulatorLevelData"
extern const HxToken HxManipulatorLevelDataToken;
/// "manipulatorPowerDataCaptureType"
extern const HxToken HxManipulatorPowerDataCaptureTypeToken;
/// "matlabOutputWriter"
extern const HxToken HxMatlabOutputWriterToken;
/// "mathematicaOutputWriter"
extern const HxToken HxMathematicaOutputWriterToken;
/// "motorPowerDataCaptureType"
extern const HxToken HxMotorPowerDataCaptureTypeToken;
/// "mrdOutputWriter"
extern const HxToken HxMrdOutputWriterToken;
/// "orientationTolerance"
extern const HxToken HxOrientationToleranceToken;
/// "outputWriterVector"
extern const HxToken HxOutputWriterVectorToken;
/// "pathPointIndex"
extern const HxToken HxPathPointIndexToken;
/// "plotType"
extern const HxToken HxPlotTypeToken;
/// "reachTargetDataCaptureType"
extern const HxToken HxReachTargetDataCaptureTypeToken;
/// "rightSystemDataCapture"
extern const HxToken HxRightSystemDataCaptureToken;
/// "scrollingCurve" (the constant's spelling is part of the exported interface)
extern const HxToken HxScrollingCruveToken;
/// "structuralForceDataCaptureType"
extern const HxToken HxStructuralForceDataCaptureTypeToken;
/// "systemDataCapture" (exported; no class of the library is written under it)
extern const HxToken HxSystemDataCaptureToken;
/// "systemDataCaptureLabel"
extern const HxToken HxSystemDataCaptureLabelToken;
/// "systemDataVector"
extern const HxToken HxSystemDataVectorToken;
/// "systemDataStorage" (exported; no class of the library is written under it)
extern const HxToken HxSystemDataStorageToken;
/// "textOutputWriter"
extern const HxToken HxTextOutputWriterToken;
/// "time"
extern const HxToken HxTimeToken;
/// "title"
extern const HxToken HxTitleToken;
/// "translationTolerance"
extern const HxToken HxTranslationToleranceToken;
/// "xmlOutputWriter"
extern const HxToken HxXmlOutputWriterToken;

}  // namespace HxSimAnalysis
