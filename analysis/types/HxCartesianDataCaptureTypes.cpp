#include "analysis/types/HxCartesianDataCaptureTypes.h"

#include <vector>

#include "analysis/types/HxDataCaptureTypeDefinitions.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxSystemSimulation.h"

namespace {
const std::string versionString("3.0.0");

// Refreshes `working` from the simulation for manipulator m: the active state with dynamics,
// the system position and velocity states without (both entries needed). Leaves it as it was
// when the simulation has no entry for m.
void updateWorkingState(const HxSystemSimulation& simulation, HxU32 m, HxManipulatorActiveState& working) {
  if (simulation.dynamicsEnabled()) {
    if (m < simulation.activeStates().size()) {
      working = simulation.activeStates()[m];
    }
    return;
  }
  if (!simulation.hasSystemState()) {
    return;
  }
  const std::vector<HxPositionState>& positions = simulation.systemPositionStates();
  const std::vector<HxVelocityState>& velocities = simulation.systemVelocityStates();
  if (m < positions.size() && m < velocities.size()) {
    working.setPositionState(positions[m]);
    working.setVelocityState(velocities[m]);
  }
}
}  // namespace

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxBasePositionDataCaptureType, HxSimAnalysis::HxBasePositionDataCaptureTypeToken,
                                 "Base Positions", HxDataCaptureLevel::Manipulator, "Translation X",
                                 "Translation Y", "Translation Z", "Quaternion 0", "Quaternion 1", "Quaternion 2",
                                 "Quaternion 3")

HxBoolean HxBasePositionDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                     const HxU32& manipulatorIndex, const HxU32&) const {
  resetData();
  const HxU32 m = manipulatorIndex;
  const HxPositionState* state = nullptr;
  if (simulation.dynamicsEnabled()) {
    if (m >= simulation.activeStates().size()) {
      return false;
    }
    state = &simulation.activeStates()[m].positionState();
  } else {
    if (!simulation.hasSystemState() || m >= simulation.systemPositionStates().size()) {
      return false;
    }
    state = &simulation.systemPositionStates()[m];
  }

  const HxCoordSystemXform& base = state->coordSystemXform();
  for (HxU32 i = 0; i < 3; ++i) {
    column(i) = base.translation()[i];
  }
  for (HxU32 i = 0; i < 4; ++i) {
    column(3 + i) = base.orientation()[i];
  }
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxBaseVelocityDataCaptureType, HxSimAnalysis::HxBaseVelocityDataCaptureTypeToken,
                                 "Base Velocities", HxDataCaptureLevel::Manipulator, "Linear X", "Linear Y",
                                 "Linear Z", "Angular X", "Angular Y", "Angular Z")

HxBoolean HxBaseVelocityDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                     const HxU32& manipulatorIndex, const HxU32&) const {
  resetData();
  const HxU32 m = manipulatorIndex;
  const HxVelocityState* state = nullptr;
  if (simulation.dynamicsEnabled()) {
    if (m >= simulation.activeStates().size()) {
      return false;
    }
    state = &simulation.activeStates()[m].velocityState();
  } else {
    if (!simulation.hasSystemState() || m >= simulation.systemVelocityStates().size()) {
      return false;
    }
    state = &simulation.systemVelocityStates()[m];
  }

  const HxGeneralMotion& velocity = state->baseVelocity();
  for (HxU32 i = 0; i < 6; ++i) {
    column(i) = velocity[i];
  }
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxBaseAccelerationDataCaptureType,
                                 HxSimAnalysis::HxBaseAccelerationDataCaptureTypeToken, "Base Accelerations",
                                 HxDataCaptureLevel::Manipulator, "Linear X", "Linear Y", "Linear Z", "Angular X",
                                 "Angular Y", "Angular Z")

HxBoolean HxBaseAccelerationDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                         const HxU32& manipulatorIndex, const HxU32&) const {
  resetData();
  const HxU32 m = manipulatorIndex;
  if (!simulation.dynamicsEnabled() || m >= simulation.individualSimulators().size()) {
    return false;
  }
  const HxGeneralMotion& acceleration = simulation.individualSimulators()[m].baseAcceleration();
  for (HxU32 i = 0; i < 6; ++i) {
    column(i) = acceleration[i];
  }
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxCenterOfMassDataCaptureType, HxSimAnalysis::HxCenterOfMassDataCaptureTypeToken,
                                 "Center of Mass", HxDataCaptureLevel::Manipulator, "X", "Y", "Z")

HxBoolean HxCenterOfMassDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                     const HxU32& manipulatorIndex, const HxU32&) const {
  resetData();
  const HxU32 m = manipulatorIndex;
  const HxU32 manipulatorCount = static_cast<HxU32>(simulation.manipulators().size());

  // The state to evaluate: the simulator's own active state (read in place, no copy), or a
  // state holding only the system position state.
  const HxManipulatorActiveState* state = nullptr;
  if (simulation.dynamicsEnabled()) {
    if (m >= simulation.individualSimulators().size() || m >= manipulatorCount) {
      return false;
    }
    state = &simulation.individualSimulators()[m].activeState();
  } else {
    if (!simulation.hasSystemState()) {
      return false;
    }
    if (m >= simulation.systemPositionStates().size() || m >= manipulatorCount) {
      return false;
    }
    kinematicState_.setPositionState(simulation.systemPositionStates()[m]);
    state = &kinematicState_;
  }

  const HxVector centerOfMass = simulation.manipulators()[m].centerOfMass(*state);
  for (HxU32 i = 0; i < 3; ++i) {
    column(i) = centerOfMass[i];
  }
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxEndEffectorPlacementDataCaptureType,
                                 HxSimAnalysis::HxEndEffectorPlacementDataCaptureTypeToken,
                                 "End Effector Placements", HxDataCaptureLevel::EndEffector, "Translation X",
                                 "Translation Y", "Translation Z", "Quaternion 0", "Quaternion 1", "Quaternion 2",
                                 "Quaternion 3")

HxBoolean HxEndEffectorPlacementDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                             const HxU32& manipulatorIndex,
                                                             const HxU32& elementIndex) const {
  resetData();
  const HxU32 m = manipulatorIndex;
  const HxU32 e = elementIndex;

  // A manipulator without an entry keeps the previous working state.
  updateWorkingState(simulation, m, workingState_);

  if (m >= simulation.manipulators().size()) {
    return false;
  }
  const HxIndividualManipulator& manipulator = simulation.manipulators()[m];
  if (e >= manipulator.numberOfEndEffectors()) {
    return false;
  }

  if (simulation.dynamicsEnabled()) {
    placement_ = manipulator.endEffectorPlacement(e, workingState_);
  } else {
    // The kinematic path resolves the placement the simulation holds for the end effector.
    if (m >= simulation.endEffectorPlacements().size()) {
      return false;
    }
    placement_ = simulation.endEffectorPlacements()[m].endEffectorPlacement(
        e, workingState_.activePositionState(), manipulator);
  }

  for (HxU32 i = 0; i < 3; ++i) {
    column(i) = placement_.translation()[i];
  }
  for (HxU32 i = 0; i < 4; ++i) {
    column(3 + i) = placement_.orientation()[i];
  }
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxEndEffectorVelocityDataCaptureType,
                                 HxSimAnalysis::HxEndEffectorVelocityDataCaptureTypeToken, "End Effector Velocities",
                                 HxDataCaptureLevel::EndEffector, "Linear X", "Linear Y", "Linear Z", "Angular X",
                                 "Angular Y", "Angular Z")

HxBoolean HxEndEffectorVelocityDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                            const HxU32& manipulatorIndex,
                                                            const HxU32& elementIndex) const {
  resetData();
  const HxU32 m = manipulatorIndex;
  const HxU32 e = elementIndex;

  // Refresh the working state; without dynamics the position and velocity entries are taken
  // each on its own, whichever exists.
  if (simulation.dynamicsEnabled()) {
    if (m < simulation.activeStates().size()) {
      workingState_ = simulation.activeStates()[m];
    }
  } else if (simulation.hasSystemState()) {
    if (m < simulation.systemPositionStates().size()) {
      workingState_.setPositionState(simulation.systemPositionStates()[m]);
    }
    if (m < simulation.systemVelocityStates().size()) {
      workingState_.setVelocityState(simulation.systemVelocityStates()[m]);
    }
  }

  if (m >= simulation.manipulators().size()) {
    return false;
  }
  const HxIndividualManipulator& manipulator = simulation.manipulators()[m];
  if (e >= manipulator.numberOfEndEffectors()) {
    return false;
  }

  // The end effector answers into a motion of its own, whatever its success; the buffer then
  // holds exactly its six components.
  manipulator.endEffector(e).velocity(manipulator, workingState_, motion_);
  for (HxU32 i = 0; i < 6; ++i) {
    column(i) = motion_[i];
  }
  data_.resize(6);
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxEndEffectorAccelerationDataCaptureType,
                                 HxSimAnalysis::HxEndEffectorAccelerationDataCaptureTypeToken,
                                 "End Effector Accelerations", HxDataCaptureLevel::EndEffector, "Linear X",
                                 "Linear Y", "Linear Z", "Angular X", "Angular Y", "Angular Z")

HxBoolean HxEndEffectorAccelerationDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                                const HxU32& manipulatorIndex,
                                                                const HxU32& elementIndex) const {
  resetData();
  const HxU32 m = manipulatorIndex;
  const HxU32 e = elementIndex;
  if (!simulation.dynamicsEnabled()) {
    return false;
  }
  if (m < simulation.activeStates().size()) {
    workingState_ = simulation.activeStates()[m];
  }

  if (m >= simulation.manipulators().size()) {
    return false;
  }
  const HxIndividualManipulator& manipulator = simulation.manipulators()[m];
  if (e >= manipulator.numberOfEndEffectors()) {
    return false;
  }

  manipulator.endEffector(e).acceleration(manipulator, workingState_, motion_);
  for (HxU32 i = 0; i < 6; ++i) {
    column(i) = motion_[i];
  }
  data_.resize(6);
  return true;
}
