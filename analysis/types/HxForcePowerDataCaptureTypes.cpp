#include "analysis/types/HxForcePowerDataCaptureTypes.h"

#include <algorithm>
#include <vector>

#include "analysis/types/HxDataCaptureTypeDefinitions.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxBasePowerConverter.h"
#include "simulation/HxSystemSimulation.h"

namespace {
const std::string versionString("3.0.0");
}  // namespace

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxExternalForceDataCaptureType, HxSimAnalysis::HxExternalForceDataCaptureTypeToken,
                                 "External Forces", HxDataCaptureLevel::Link, "Force X", "Force Y", "Force Z",
                                 "Moment X", "Moment Y", "Moment Z")

HxBoolean HxExternalForceDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                      const HxU32& manipulatorIndex,
                                                      const HxU32& elementIndex) const {
  resetData();
  const HxU32 m = manipulatorIndex;
  const HxU32 j = elementIndex;
  if (!simulation.dynamicsEnabled()) {
    return false;
  }
  const std::vector<HxManipulatorExternalForce>& externalForces = simulation.manipulatorExternalForces();
  if (m >= externalForces.size()) {
    return false;
  }
  const std::vector<HxGeneralForce>& forces = externalForces[m].forces();
  if (j >= forces.size()) {
    return false;
  }
  const HxGeneralForce& force = forces[j];
  for (HxU32 i = 0; i < 6; ++i) {
    column(i) = force[i];
  }
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxStructuralForceDataCaptureType,
                                 HxSimAnalysis::HxStructuralForceDataCaptureTypeToken, "Structural Forces",
                                 HxDataCaptureLevel::Link, "Force X", "Force Y", "Force Z", "Moment X", "Moment Y",
                                 "Moment Z")

HxBoolean HxStructuralForceDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                        const HxU32& manipulatorIndex,
                                                        const HxU32& elementIndex) const {
  resetData();
  const HxU32 m = manipulatorIndex;
  const HxU32 j = elementIndex;
  if (!simulation.dynamicsEnabled()) {
    return false;
  }
  const std::vector<HxIndividualDynamicSimulator>& simulators = simulation.individualSimulators();
  if (m >= simulators.size()) {
    return false;
  }
  const std::vector<HxLinkForceState>& linkForces = simulators[m].linkForceStates();
  if (j >= linkForces.size()) {
    return false;
  }
  // A link whose force the dynamics did not compute has nothing to record.
  if (!linkForces[j].isValid()) {
    return false;
  }
  const HxGeneralForce& force = linkForces[j].force();
  for (HxU32 i = 0; i < 6; ++i) {
    column(i) = force[i];
  }
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxManipulatorPowerDataCaptureType,
                                 HxSimAnalysis::HxManipulatorPowerDataCaptureTypeToken, "Manipulator Power",
                                 HxDataCaptureLevel::Manipulator, "Manipulator Power")

HxBoolean HxManipulatorPowerDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                         const HxU32& manipulatorIndex, const HxU32&) const {
  resetData();
  const HxU32 m = manipulatorIndex;
  if (!simulation.dynamicsEnabled() || !simulation.powerDataAvailable()) {
    return false;
  }
  if (m >= simulation.manipulatorTorques().size() || m >= simulation.activeStates().size() ||
      m >= simulation.manipulators().size()) {
    return false;
  }
  const std::vector<double>& torques = simulation.manipulatorTorques()[m].values();
  const std::vector<double>& velocities = simulation.activeStates()[m].velocityState().jointVelocities();

  // Sum over the joints that have both a torque and a velocity, in joint order.
  const std::size_t joints = std::min(torques.size(), velocities.size());
  double power = 0.0;
  for (std::size_t i = 0; i < joints; ++i) {
    power += torques[i] * velocities[i];
  }
  column(0) = power;
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxMotorPowerDataCaptureType, HxSimAnalysis::HxMotorPowerDataCaptureTypeToken,
                                 "Motor Power", HxDataCaptureLevel::Link, "Motor Power")

HxBoolean HxMotorPowerDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                   const HxU32& manipulatorIndex, const HxU32& elementIndex) const {
  resetData();
  const HxU32 m = manipulatorIndex;
  const HxU32 j = elementIndex;
  if (!simulation.dynamicsEnabled() || !simulation.powerDataAvailable()) {
    return false;
  }
  if (m >= simulation.manipulatorTorques().size() || m >= simulation.activeStates().size()) {
    return false;
  }
  if (m >= simulation.manipulators().size()) {
    return false;
  }
  const std::vector<double>& torques = simulation.manipulatorTorques()[m].values();
  const std::vector<double>& velocities = simulation.activeStates()[m].velocityState().jointVelocities();
  const HxIndividualManipulator& manipulator = simulation.manipulators()[m];
  if (j >= torques.size() || j >= velocities.size() || j >= manipulator.jointCount()) {
    return false;
  }

  // Only a DC electric motor has a power to record.
  const HxJointDrive& drive = manipulator.jointDrive(j);
  const HxDcElectricMotor* motor = dynamic_cast<const HxDcElectricMotor*>(drive.powerConverter());
  if (motor == nullptr) {
    return false;
  }
  column(0) = (drive.scaleFactor() * velocities[j]) * torques[j] / motor->divisor();
  return true;
}
