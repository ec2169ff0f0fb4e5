#include "analysis/types/HxForcePowerDataCaptureTypes.h"

#include <algorithm>
#include <typeinfo>
#include <vector>

#include "analysis/types/HxDataCaptureTypeDefinitions.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxBasePowerConverter.h"
#include "simulation/HxSystemSimulation.h"

namespace {
const std::string versionString("3.0.0");

using HxDataCaptureLookup::elementOf;

const std::vector<HxGeneralForce>& forcesOf(const HxManipulatorExternalForce& external) { return external.forces(); }
const std::vector<HxLinkForceState>& linkForcesOf(const HxIndividualDynamicSimulator& simulator) {
  return simulator.linkForceStates();
}

// What the power quantities of manipulator m are computed from: its torques and its active
// state's joint velocities. Null torques when the simulation integrates no dynamics, has no
// power data or no entry for m (in the torques, the active states or the manipulators).
struct PowerInputs {
  const std::vector<double>* torques = nullptr;
  const std::vector<double>* velocities = nullptr;
};
PowerInputs powerInputs(const HxSystemSimulation& simulation, HxU32 m) {
  PowerInputs inputs;
  if (!simulation.dynamicsEnabled() || !simulation.powerDataAvailable()) return inputs;
  if (m >= simulation.manipulatorTorques().size() || m >= simulation.activeStates().size() ||
      m >= simulation.manipulators().size()) {
    return inputs;
  }
  inputs.torques = &simulation.manipulatorTorques()[m].values();
  inputs.velocities = &simulation.activeStates()[m].velocityState().jointVelocities();
  return inputs;
}
}  // namespace

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxExternalForceDataCaptureType, "External Forces", HxDataCaptureLevel::Link,
                                 HX_FORCE_LABELS)

namespace {
HxJointRow externalForceRow(const HxSystemSimulation& simulation, HxU32 m) {
  if (!simulation.dynamicsEnabled()) return HxJointRow::absent();
  return HxJointRow::at(simulation.manipulatorExternalForces(), m, forcesOf);
}
}  // namespace

HxBoolean HxExternalForceDataCaptureType::captureData(const HxSystemSimulation& simulation, const HxU32& m,
                                                      const HxU32& j) const {
  resetData();
  return externalForceRow(simulation, m).read(j, &column(0));
}

HxJointRowSource HxExternalForceDataCaptureType::jointRowSource() const {
  return {externalForceRow, &typeid(HxExternalForceDataCaptureType), 6};
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxStructuralForceDataCaptureType, "Structural Forces", HxDataCaptureLevel::Link,
                                 HX_FORCE_LABELS)

HxBoolean HxStructuralForceDataCaptureType::captureData(const HxSystemSimulation& simulation, const HxU32& m,
                                                        const HxU32& j) const {
  resetData();
  if (!simulation.dynamicsEnabled()) return false;
  const HxLinkForceState* link = elementOf(simulation.individualSimulators(), m, j, linkForcesOf);
  // A link whose force the dynamics did not compute has nothing to record.
  if (link == nullptr || !link->isValid()) return false;
  setColumns(0, link->force(), 6);
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxManipulatorPowerDataCaptureType, "Manipulator Power",
                                 HxDataCaptureLevel::Manipulator, "Manipulator Power")

HxBoolean HxManipulatorPowerDataCaptureType::captureData(const HxSystemSimulation& simulation, const HxU32& m,
                                                         const HxU32&) const {
  resetData();
  const PowerInputs inputs = powerInputs(simulation, m);
  if (inputs.torques == nullptr) return false;
  const std::vector<double>& torques = *inputs.torques;
  const std::vector<double>& velocities = *inputs.velocities;

  // Sum over the joints that have both a torque and a velocity, in joint order.
  const std::size_t joints = std::min(torques.size(), velocities.size());
  double power = 0.0;
  for (std::size_t i = 0; i < joints; ++i) power += torques[i] * velocities[i];
  column(0) = power;
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxMotorPowerDataCaptureType, "Motor Power", HxDataCaptureLevel::Link, "Motor Power")

HxBoolean HxMotorPowerDataCaptureType::captureData(const HxSystemSimulation& simulation, const HxU32& m,
                                                   const HxU32& j) const {
  resetData();
  const PowerInputs inputs = powerInputs(simulation, m);
  if (inputs.torques == nullptr) return false;
  const std::vector<double>& torques = *inputs.torques;
  const std::vector<double>& velocities = *inputs.velocities;
  const HxIndividualManipulator& manipulator = simulation.manipulators()[m];
  if (j >= torques.size() || j >= velocities.size() || j >= manipulator.jointCount()) return false;

  // Only a DC electric motor has a power to record.
  const HxJointDrive& drive = manipulator.jointDrive(j);
  const HxDcElectricMotor* motor = dynamic_cast<const HxDcElectricMotor*>(drive.powerConverter());
  if (motor == nullptr) return false;
  column(0) = (drive.scaleFactor() * velocities[j]) * torques[j] / motor->divisor();
  return true;
}
