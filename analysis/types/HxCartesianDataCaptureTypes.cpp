#include "analysis/types/HxCartesianDataCaptureTypes.h"

#include <vector>

#include "analysis/types/HxDataCaptureTypeDefinitions.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxEndEffector.h"
#include "simulation/HxSystemSimulation.h"

namespace {
const std::string versionString("3.0.0");

using HxDataCaptureLookup::manipulatorWithEndEffector;
using HxDataCaptureLookup::refreshWorkingState;

// The state of manipulator m that a base quantity reads: `ofActive` of its active state with
// dynamics, entry m of `systemStates` without (when the simulation has a system state); null
// when the simulation has no such entry.
template <class State>
const State* baseStateOf(const HxSystemSimulation& simulation, HxU32 m,
                         const State& (*ofActive)(const HxManipulatorActiveState&),
                         const std::vector<State>& (*systemStates)(const HxSystemSimulation&)) {
  if (simulation.dynamicsEnabled()) {
    return m < simulation.activeStates().size() ? &ofActive(simulation.activeStates()[m]) : nullptr;
  }
  if (!simulation.hasSystemState()) return nullptr;
  const std::vector<State>& states = systemStates(simulation);
  return m < states.size() ? &states[m] : nullptr;
}

const HxPositionState& positionOf(const HxManipulatorActiveState& state) { return state.positionState(); }
const HxVelocityState& velocityOf(const HxManipulatorActiveState& state) { return state.velocityState(); }
const std::vector<HxPositionState>& positionsOf(const HxSystemSimulation& from) { return from.systemPositionStates(); }
const std::vector<HxVelocityState>& velocitiesOf(const HxSystemSimulation& from) { return from.systemVelocityStates(); }

// Asks end effector e of manipulator m for its velocity or acceleration (`motionOf`) in `state`,
// into `motion`, whatever the answer's success; false when the manipulator or the end effector
// does not exist.
bool endEffectorMotion(const HxSystemSimulation& simulation, HxU32 m, HxU32 e, const HxManipulatorActiveState& state,
                       HxGeneralMotion& motion,
                       HxBoolean (HxEndEffector::*motionOf)(const HxIndividualManipulator&,
                                                            const HxManipulatorActiveState&, HxGeneralMotion&) const) {
  const HxIndividualManipulator* manipulator = manipulatorWithEndEffector(simulation, m, e);
  if (manipulator == nullptr) return false;
  (manipulator->endEffector(e).*motionOf)(*manipulator, state, motion);
  return true;
}
}  // namespace

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxBasePositionDataCaptureType, "Base Positions", HxDataCaptureLevel::Manipulator,
                                 HX_PLACEMENT_LABELS)

HxBoolean HxBasePositionDataCaptureType::captureData(const HxSystemSimulation& simulation, const HxU32& m,
                                                     const HxU32&) const {
  resetData();
  const HxPositionState* state = baseStateOf(simulation, m, positionOf, positionsOf);
  if (state != nullptr) setPlacementColumns(0, state->coordSystemXform());
  return state != nullptr;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxBaseVelocityDataCaptureType, "Base Velocities", HxDataCaptureLevel::Manipulator,
                                 HX_MOTION_LABELS)

HxBoolean HxBaseVelocityDataCaptureType::captureData(const HxSystemSimulation& simulation, const HxU32& m,
                                                     const HxU32&) const {
  resetData();
  const HxVelocityState* state = baseStateOf(simulation, m, velocityOf, velocitiesOf);
  if (state != nullptr) setColumns(0, state->baseVelocity(), 6);
  return state != nullptr;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxBaseAccelerationDataCaptureType, "Base Accelerations",
                                 HxDataCaptureLevel::Manipulator, HX_MOTION_LABELS)

HxBoolean HxBaseAccelerationDataCaptureType::captureData(const HxSystemSimulation& simulation, const HxU32& m,
                                                         const HxU32&) const {
  resetData();
  if (!simulation.dynamicsEnabled() || m >= simulation.individualSimulators().size()) return false;
  setColumns(0, simulation.individualSimulators()[m].baseAcceleration(), 6);
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxCenterOfMassDataCaptureType, "Center of Mass", HxDataCaptureLevel::Manipulator, "X",
                                 "Y", "Z")

HxBoolean HxCenterOfMassDataCaptureType::captureData(const HxSystemSimulation& simulation, const HxU32& m,
                                                     const HxU32&) const {
  resetData();
  const HxU32 manipulatorCount = static_cast<HxU32>(simulation.manipulators().size());

  // The state to evaluate: the simulator's own active state (read in place, no copy), or a
  // state holding only the system position state.
  const HxManipulatorActiveState* state = nullptr;
  if (simulation.dynamicsEnabled()) {
    if (m >= simulation.individualSimulators().size() || m >= manipulatorCount) return false;
    state = &simulation.individualSimulators()[m].activeState();
  } else {
    if (!simulation.hasSystemState()) return false;
    if (m >= simulation.systemPositionStates().size() || m >= manipulatorCount) return false;
    kinematicState_.setPositionState(simulation.systemPositionStates()[m]);
    state = &kinematicState_;
  }
  setColumns(0, simulation.manipulators()[m].centerOfMass(*state), 3);
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxEndEffectorPlacementDataCaptureType, "End Effector Placements",
                                 HxDataCaptureLevel::EndEffector, HX_PLACEMENT_LABELS)

HxBoolean HxEndEffectorPlacementDataCaptureType::captureData(const HxSystemSimulation& simulation, const HxU32& m,
                                                             const HxU32& e) const {
  resetData();
  // A manipulator without an entry keeps the previous working state.
  refreshWorkingState(simulation, m, workingState_);
  const HxIndividualManipulator* manipulator = manipulatorWithEndEffector(simulation, m, e);
  if (manipulator == nullptr) return false;

  if (simulation.dynamicsEnabled()) {
    placement_ = manipulator->endEffectorPlacement(e, workingState_);
  } else {
    // The kinematic path resolves the placement the simulation holds for the end effector.
    if (m >= simulation.endEffectorPlacements().size()) return false;
    placement_ = simulation.endEffectorPlacements()[m].endEffectorPlacement(e, workingState_.activePositionState(),
                                                                            *manipulator);
  }
  setPlacementColumns(0, placement_);
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxEndEffectorVelocityDataCaptureType, "End Effector Velocities",
                                 HxDataCaptureLevel::EndEffector, HX_MOTION_LABELS)

HxBoolean HxEndEffectorVelocityDataCaptureType::captureData(const HxSystemSimulation& simulation, const HxU32& m,
                                                            const HxU32& e) const {
  resetData();
  // Refresh the working state; without dynamics the position and velocity entries are taken
  // each on its own, whichever exists.
  if (simulation.dynamicsEnabled()) {
    if (m < simulation.activeStates().size()) workingState_ = simulation.activeStates()[m];
  } else if (simulation.hasSystemState()) {
    if (m < simulation.systemPositionStates().size()) {
      workingState_.setPositionState(simulation.systemPositionStates()[m]);
    }
    if (m < simulation.systemVelocityStates().size()) {
      workingState_.setVelocityState(simulation.systemVelocityStates()[m]);
    }
  }
  // The end effector answers into a motion of its own; the buffer then holds exactly its six
  // components.
  if (!endEffectorMotion(simulation, m, e, workingState_, motion_, &HxEndEffector::velocity)) return false;
  setColumns(0, motion_, 6);
  return true;
}

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxEndEffectorAccelerationDataCaptureType, "End Effector Accelerations",
                                 HxDataCaptureLevel::EndEffector, HX_MOTION_LABELS)

HxBoolean HxEndEffectorAccelerationDataCaptureType::captureData(const HxSystemSimulation& simulation, const HxU32& m,
                                                                const HxU32& e) const {
  resetData();
  if (!simulation.dynamicsEnabled()) return false;
  if (m < simulation.activeStates().size()) workingState_ = simulation.activeStates()[m];
  if (!endEffectorMotion(simulation, m, e, workingState_, motion_, &HxEndEffector::acceleration)) return false;
  setColumns(0, motion_, 6);
  return true;
}
