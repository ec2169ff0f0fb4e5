#pragma once
/// \file
/// HxSystemSimulation: the state of a running multi-manipulator simulation, as read by the
/// captured quantities.

#include <string>
#include <vector>

#include "framework/HxTypes.h"
#include "simulation/HxEndEffectorPlacement.h"
#include "simulation/HxIndividualDynamicSimulator.h"
#include "simulation/HxIndividualManipulator.h"
#include "simulation/HxJointKind.h"
#include "simulation/HxManipulatorActiveState.h"
#include "simulation/HxManipulatorData.h"
#include "simulation/HxPositionState.h"
#include "simulation/HxVelocityState.h"

/// The state of a simulated system of manipulators between two steps.
///
/// A concrete holder: every per-manipulator collection is a std::vector held here, indexed by
/// the manipulator's position in the system, and every query is const and returns a const
/// reference to it (or a scalar), so reading never copies or allocates. The vectors are not
/// required to have the same size; callers compare an index with the size of the vector they
/// index. Producers (the MuJoCo engine, the scripted simulation of tests) derive from this
/// class and refresh the vectors in place through the protected mutable accessors after each
/// step; refreshing elements of unchanged size does not allocate.
///
/// Two paths: when dynamicsEnabled() is true the dynamics integrates the system and
/// activeStates() / individualSimulators() hold its state; when false the system follows the
/// control output and controlOutputPositionStates() / controlOutputVelocityStates() are the
/// state. The system state (systemPositionStates(), systemVelocityStates()) may be absent:
/// check hasSystemState() first; when absent their content is meaningless.
///
/// Not copyable: producers hand out kinematics objects that refer to their own data.
class HxSystemSimulation {
 public:
  /// An empty system: no manipulators, dynamics off, no power data, no system state, time 0.
  HxSystemSimulation() = default;
  virtual ~HxSystemSimulation() = default;
  HxSystemSimulation(const HxSystemSimulation&) = delete;
  HxSystemSimulation& operator=(const HxSystemSimulation&) = delete;

  /// True when the simulation integrates the dynamics (dynamic path), false when it only
  /// follows the control output (kinematic path).
  HxBoolean dynamicsEnabled() const { return dynamicsEnabled_; }
  /// True when the torque data needed for power quantities (manipulatorTorques() with the
  /// active states' joint velocities) is provided.
  HxBoolean powerDataAvailable() const { return powerDataAvailable_; }
  /// True when the system state (systemPositionStates(), systemVelocityStates()) is present.
  HxBoolean hasSystemState() const { return systemStatePresent_; }
  /// Time stamp of the control output, seconds.
  double controlOutputTime() const { return controlOutputTime_; }

  /// Number of manipulators of the system (size of manipulators()).
  HxU32 numberOfManipulators() const { return static_cast<HxU32>(manipulators_.size()); }

  /// The system's current position states, one per manipulator; only when hasSystemState().
  const std::vector<HxPositionState>& systemPositionStates() const { return systemPositionStates_; }
  /// The system's current velocity states, one per manipulator; only when hasSystemState().
  const std::vector<HxVelocityState>& systemVelocityStates() const { return systemVelocityStates_; }
  /// The active states as the dynamic simulators hold them, one per manipulator.
  const std::vector<HxManipulatorActiveState>& activeStates() const { return activeStates_; }
  /// The control system's output positions, one per manipulator.
  const std::vector<HxPositionState>& controlOutputPositionStates() const { return controlOutputPositionStates_; }
  /// The control system's output velocities, one per manipulator.
  const std::vector<HxVelocityState>& controlOutputVelocityStates() const { return controlOutputVelocityStates_; }
  /// The dynamic simulator of each manipulator.
  const std::vector<HxIndividualDynamicSimulator>& individualSimulators() const { return individualSimulators_; }
  /// The model of each manipulator.
  const std::vector<HxIndividualManipulator>& manipulators() const { return manipulators_; }
  /// The control input of each manipulator.
  const std::vector<HxManipulatorControlInput>& manipulatorControlInputs() const { return controlInputs_; }
  /// The joint torques the control system applies to each manipulator.
  const std::vector<HxManipulatorTorque>& manipulatorTorques() const { return torques_; }
  /// The external wrenches on each manipulator's links, from the dynamics.
  const std::vector<HxManipulatorExternalForce>& manipulatorExternalForces() const { return externalForces_; }
  /// The end-effector placements the simulation holds for the kinematic path, per manipulator.
  const std::vector<HxManipulatorEndEffectorPlacement>& endEffectorPlacements() const { return endEffectorPlacements_; }
  /// The placements the end effectors are asked to reach, per manipulator.
  const std::vector<HxManipulatorEndEffectorPlacement>& desiredEndEffectorPlacements() const {
    return desiredEndEffectorPlacements_;
  }
  /// The flags of each manipulator's last propagation step.
  const std::vector<HxPropagationResultData>& propagationResults() const { return propagationResults_; }

  // What the system is made of, for people reading a recording; the captured quantities do not
  // ask these.

  /// How joint `joint` (the link index) of manipulator `manipulator` moves; Unknown when either
  /// index is out of range or the producer did not say.
  HxJointKind jointKind(HxU32 manipulator, HxU32 joint) const;
  /// Name of end effector `e` of manipulator `manipulator`; empty when either index is out of
  /// range or the producer gave none. The manipulator's own name is `manipulators()[m].name()`.
  const std::string& endEffectorName(HxU32 manipulator, HxU32 e) const;

 protected:
  /// Selects the dynamic (true) or the kinematic (false) path; see dynamicsEnabled().
  void setDynamicsEnabled(HxBoolean enabled) { dynamicsEnabled_ = enabled; }
  /// Says whether the torque data of the power quantities is provided; see powerDataAvailable().
  void setPowerDataAvailable(HxBoolean available) { powerDataAvailable_ = available; }
  /// Says whether the system state is present; see hasSystemState().
  void setSystemStatePresent(HxBoolean present) { systemStatePresent_ = present; }
  /// Stamps the control output, seconds.
  void setControlOutputTime(double time) { controlOutputTime_ = time; }

  /// Resizes every per-manipulator vector to `count`; new entries are default-constructed (no
  /// joint kinds, no end-effector names).
  void resizeManipulators(HxU32 count);
  /// Sets the kind of every joint of manipulator `m`, by link index; grows the per-manipulator
  /// list when `m` is past its end.
  void setJointKinds(HxU32 m, std::vector<HxJointKind> kinds);
  /// Sets the names of the end effectors of manipulator `m`, by end-effector index; grows the
  /// per-manipulator list when `m` is past its end.
  void setEndEffectorNames(HxU32 m, std::vector<std::string> names);

  /// Writable systemPositionStates(), to refresh in place.
  std::vector<HxPositionState>& mutableSystemPositionStates() { return systemPositionStates_; }
  /// Writable systemVelocityStates(), to refresh in place.
  std::vector<HxVelocityState>& mutableSystemVelocityStates() { return systemVelocityStates_; }
  /// Writable activeStates(), to refresh in place.
  std::vector<HxManipulatorActiveState>& mutableActiveStates() { return activeStates_; }
  /// Writable controlOutputPositionStates(), to refresh in place.
  std::vector<HxPositionState>& mutableControlOutputPositionStates() { return controlOutputPositionStates_; }
  /// Writable controlOutputVelocityStates(), to refresh in place.
  std::vector<HxVelocityState>& mutableControlOutputVelocityStates() { return controlOutputVelocityStates_; }
  /// Writable individualSimulators(), to refresh in place.
  std::vector<HxIndividualDynamicSimulator>& mutableIndividualSimulators() { return individualSimulators_; }
  /// Writable manipulators(), to set up the models.
  std::vector<HxIndividualManipulator>& mutableManipulators() { return manipulators_; }
  /// Writable manipulatorControlInputs(), to refresh in place.
  std::vector<HxManipulatorControlInput>& mutableManipulatorControlInputs() { return controlInputs_; }
  /// Writable manipulatorTorques(), to refresh in place.
  std::vector<HxManipulatorTorque>& mutableManipulatorTorques() { return torques_; }
  /// Writable manipulatorExternalForces(), to refresh in place.
  std::vector<HxManipulatorExternalForce>& mutableManipulatorExternalForces() { return externalForces_; }
  /// Writable endEffectorPlacements(), to refresh in place.
  std::vector<HxManipulatorEndEffectorPlacement>& mutableEndEffectorPlacements() { return endEffectorPlacements_; }
  /// Writable desiredEndEffectorPlacements(), to refresh in place.
  std::vector<HxManipulatorEndEffectorPlacement>& mutableDesiredEndEffectorPlacements() {
    return desiredEndEffectorPlacements_;
  }
  /// Writable propagationResults(), to refresh in place.
  std::vector<HxPropagationResultData>& mutablePropagationResults() { return propagationResults_; }

 private:
  HxBoolean dynamicsEnabled_ = false;
  HxBoolean powerDataAvailable_ = false;
  HxBoolean systemStatePresent_ = false;
  double controlOutputTime_ = 0.0;

  std::vector<HxPositionState> systemPositionStates_;
  std::vector<HxVelocityState> systemVelocityStates_;
  std::vector<HxManipulatorActiveState> activeStates_;
  std::vector<HxPositionState> controlOutputPositionStates_;
  std::vector<HxVelocityState> controlOutputVelocityStates_;
  std::vector<HxIndividualDynamicSimulator> individualSimulators_;
  std::vector<HxIndividualManipulator> manipulators_;
  std::vector<HxManipulatorControlInput> controlInputs_;
  std::vector<HxManipulatorTorque> torques_;
  std::vector<HxManipulatorExternalForce> externalForces_;
  std::vector<HxManipulatorEndEffectorPlacement> endEffectorPlacements_;
  std::vector<HxManipulatorEndEffectorPlacement> desiredEndEffectorPlacements_;
  std::vector<HxPropagationResultData> propagationResults_;
  std::vector<std::vector<HxJointKind>> jointKinds_;
  std::vector<std::vector<std::string>> endEffectorNames_;
};
