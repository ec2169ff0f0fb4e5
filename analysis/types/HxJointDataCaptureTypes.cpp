#include "analysis/types/HxJointDataCaptureTypes.h"

#include <vector>

#include "analysis/types/HxDataCaptureTypeDefinitions.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxSystemSimulation.h"

namespace {
const std::string versionString("3.0.0");

// Column 0 = joint j of the per-joint vector of entry m of `perManipulator`, where `select`
// picks that per-joint vector out of an entry. False when m or j is out of range.
template <class Entry, class Select>
HxBoolean captureJointValue(const std::vector<Entry>& perManipulator, HxU32 m, HxU32 j, Select select,
                            double& column) {
  if (m >= perManipulator.size()) {
    return false;
  }
  const std::vector<double>& values = select(perManipulator[m]);
  if (j >= values.size()) {
    return false;
  }
  column = values[j];
  return true;
}

const std::vector<double>& jointPositionsOf(const HxPositionState& state) { return state.jointPositions(); }
const std::vector<double>& jointVelocitiesOf(const HxVelocityState& state) { return state.jointVelocities(); }
const std::vector<double>& activeJointPositionsOf(const HxManipulatorActiveState& state) {
  return state.positionState().jointPositions();
}
const std::vector<double>& activeJointVelocitiesOf(const HxManipulatorActiveState& state) {
  return state.velocityState().jointVelocities();
}
const std::vector<double>& jointAccelerationsOf(const HxIndividualDynamicSimulator& simulator) {
  return simulator.jointAccelerations();
}
const std::vector<double>& jointTorquesOf(const HxIndividualDynamicSimulator& simulator) {
  return simulator.jointTorques();
}
const std::vector<double>& controlInputsOf(const HxManipulatorControlInput& input) { return input.values(); }
const std::vector<double>& controlTorquesOf(const HxManipulatorTorque& torque) { return torque.values(); }

// As captureJointValue, for the quantities that exist only when the simulation integrates the
// dynamics: false (with the column left at 0.0) when it does not.
template <class Entry, class Select>
HxBoolean captureDynamicJointValue(const HxSystemSimulation& simulation, const std::vector<Entry>& perManipulator,
                                   HxU32 m, HxU32 j, Select select, double& column) {
  return simulation.dynamicsEnabled() && captureJointValue(perManipulator, m, j, select, column);
}
}  // namespace

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxJointPositionDataCaptureType, HxSimAnalysis::HxJointPositionDataCaptureTypeToken,
                                 "Joint Positions", HxDataCaptureLevel::Link, "Joint Position")

HxBoolean HxJointPositionDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                      const HxU32& manipulatorIndex,
                                                      const HxU32& elementIndex) const {
  resetData();
  if (simulation.dynamicsEnabled()) {
    return captureJointValue(simulation.activeStates(), manipulatorIndex, elementIndex, activeJointPositionsOf,
                             column(0));
  }
  // Without dynamics the commanded state is the state.
  return captureJointValue(simulation.controlOutputPositionStates(), manipulatorIndex, elementIndex,
                           jointPositionsOf, column(0));
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxJointVelocityDataCaptureType, HxSimAnalysis::HxJointVelocityDataCaptureTypeToken,
                                 "Joint Velocities", HxDataCaptureLevel::Link, "Joint Velocity")

HxBoolean HxJointVelocityDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                      const HxU32& manipulatorIndex,
                                                      const HxU32& elementIndex) const {
  resetData();
  const HxU32 m = manipulatorIndex;
  const HxU32 j = elementIndex;

  // With dynamics the active state holds the velocity; the history is left alone.
  if (simulation.dynamicsEnabled()) {
    return captureJointValue(simulation.activeStates(), m, j, activeJointVelocitiesOf, column(0));
  }

  const double time = simulation.controlOutputTime();
  const std::vector<HxPositionState>& positionStates = simulation.controlOutputPositionStates();
  if (previousTime_ >= time) {
    // No time step (the first sample included): take the control output's velocity and
    // remember the position for the next step.
    const std::vector<HxVelocityState>& velocityStates = simulation.controlOutputVelocityStates();
    if (m >= positionStates.size() || m >= velocityStates.size()) {
      return false;
    }
    const std::vector<double>& positions = positionStates[m].jointPositions();
    const std::vector<double>& velocities = velocityStates[m].jointVelocities();
    if (j >= positions.size() || j >= velocities.size()) {
      return false;
    }
    previousPosition_ = positions[j];
    column(0) = velocities[j];
  } else {
    // Time advanced: differentiate the position over the step.
    if (m >= positionStates.size()) {
      return false;
    }
    const std::vector<double>& positions = positionStates[m].jointPositions();
    if (j >= positions.size()) {
      return false;
    }
    const double position = positions[j];
    column(0) = (position - previousPosition_) / (time - previousTime_);
    previousPosition_ = position;
  }
  previousTime_ = time;
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxJointAccelerationDataCaptureType,
                                 HxSimAnalysis::HxJointAccelerationDataCaptureTypeToken, "Joint Accelerations",
                                 HxDataCaptureLevel::Link, "Joint Acceleration")

HxBoolean HxJointAccelerationDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                          const HxU32& manipulatorIndex,
                                                          const HxU32& elementIndex) const {
  resetData();
  return captureDynamicJointValue(simulation, simulation.individualSimulators(), manipulatorIndex, elementIndex,
                                  jointAccelerationsOf, column(0));
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxJointTorqueDataCaptureType, HxSimAnalysis::HxJointTorqueDataCaptureTypeToken,
                                 "Joint Torques", HxDataCaptureLevel::Link, "Joint Torque")

HxBoolean HxJointTorqueDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                    const HxU32& manipulatorIndex,
                                                    const HxU32& elementIndex) const {
  resetData();
  return captureDynamicJointValue(simulation, simulation.individualSimulators(), manipulatorIndex, elementIndex,
                                  jointTorquesOf, column(0));
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxControlInputDataCaptureType, HxSimAnalysis::HxControlInputDataCaptureTypeToken,
                                 "Control Input", HxDataCaptureLevel::Link, "Control Input")

HxBoolean HxControlInputDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                     const HxU32& manipulatorIndex,
                                                     const HxU32& elementIndex) const {
  resetData();
  return captureDynamicJointValue(simulation, simulation.manipulatorControlInputs(), manipulatorIndex, elementIndex,
                                  controlInputsOf, column(0));
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxControlTorqueDataCaptureType, HxSimAnalysis::HxControlTorqueDataCaptureTypeToken,
                                 "Control Torques", HxDataCaptureLevel::Link, "Control Torque")

HxBoolean HxControlTorqueDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                      const HxU32& manipulatorIndex,
                                                      const HxU32& elementIndex) const {
  resetData();
  return captureDynamicJointValue(simulation, simulation.manipulatorTorques(), manipulatorIndex, elementIndex,
                                  controlTorquesOf, column(0));
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxControlOutputJointPositionDataCaptureType,
                                 HxSimAnalysis::HxControlOutputJointPositionDataCaptureTypeToken,
                                 "Control Output Joint Positions", HxDataCaptureLevel::Link, "Joint Position")

HxBoolean HxControlOutputJointPositionDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                                   const HxU32& manipulatorIndex,
                                                                   const HxU32& elementIndex) const {
  resetData();
  return captureJointValue(simulation.controlOutputPositionStates(), manipulatorIndex, elementIndex,
                           jointPositionsOf, column(0));
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxControlOutputJointVelocityDataCaptureType,
                                 HxSimAnalysis::HxControlOutputJointVelocityDataCaptureTypeToken,
                                 "Control Output Joint Velocities", HxDataCaptureLevel::Link, "Joint Velocity")

HxBoolean HxControlOutputJointVelocityDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                                   const HxU32& manipulatorIndex,
                                                                   const HxU32& elementIndex) const {
  resetData();
  return captureJointValue(simulation.controlOutputVelocityStates(), manipulatorIndex, elementIndex,
                           jointVelocitiesOf, column(0));
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxControlOutputActualJointVelocityDataCaptureType,
                                 HxSimAnalysis::HxControlOutputActualJointVelocityDataCaptureTypeToken,
                                 "Control Output Actual Joint Velocities", HxDataCaptureLevel::Link,
                                 "Joint Velocity")

HxBoolean HxControlOutputActualJointVelocityDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                                         const HxU32& manipulatorIndex,
                                                                         const HxU32& elementIndex) const {
  resetData();
  const HxU32 m = manipulatorIndex;
  const HxU32 j = elementIndex;
  const double time = simulation.controlOutputTime();
  const std::vector<HxPositionState>& positionStates = simulation.controlOutputPositionStates();

  if (previousTime_ >= time) {
    // No time step: only remember the position; a bad index here does not end the call.
    if (m < positionStates.size()) {
      const std::vector<double>& positions = positionStates[m].jointPositions();
      if (j < positions.size()) {
        previousPosition_ = positions[j];
      }
    }
  } else {
    // Time advanced (at the first sample, since 0): differentiate the position over the step.
    if (m >= positionStates.size()) {
      return false;
    }
    const std::vector<double>& positions = positionStates[m].jointPositions();
    if (j >= positions.size()) {
      return false;
    }
    const double position = positions[j];
    column(0) = (position - previousPosition_) / (time - previousTime_);
    previousPosition_ = position;
  }
  previousTime_ = time;
  // Deliberately false on every path, even with a velocity in the buffer: the column counts
  // as not captured.
  return false;
}
