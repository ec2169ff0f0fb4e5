#pragma once
/// \file
/// HxIndividualDynamicSimulator: the dynamic simulation state of one manipulator.

#include <vector>

#include "framework/HxTypes.h"
#include "simulation/HxManipulatorActiveState.h"
#include "simulation/HxManipulatorData.h"
#include "simulation/HxMath.h"

/// What the dynamics computed for one manipulator at the last step: its active state
/// (positions, velocities, accelerations), the joint torques, and the structural force on
/// each link. The joint accelerations and base acceleration are those of the active state's
/// acceleration state, held once.
class HxIndividualDynamicSimulator {
 public:
  /// No joints, no links.
  HxIndividualDynamicSimulator() = default;
  /// `jointCount` joints and `linkCount` link force states, all zero / not valid.
  HxIndividualDynamicSimulator(HxU32 jointCount, HxU32 linkCount)
      : activeState_(jointCount), jointTorques_(jointCount, 0.0), linkForceStates_(linkCount) {}

  /// Joint accelerations, one per joint.
  const std::vector<double>& jointAccelerations() const {
    return activeState_.accelerationState().jointAccelerations();
  }
  /// Joint torques computed by the dynamics (N m, or N for prismatic joints), one per joint.
  const std::vector<double>& jointTorques() const { return jointTorques_; }
  /// Acceleration of the manipulator's base: linear X, Y, Z, angular X, Y, Z.
  const HxGeneralMotion& baseAcceleration() const { return activeState_.accelerationState().baseAcceleration(); }
  /// Structural force state of each link, one per link.
  const std::vector<HxLinkForceState>& linkForceStates() const { return linkForceStates_; }
  /// The manipulator's state as the dynamics holds it.
  const HxManipulatorActiveState& activeState() const { return activeState_; }

  /// Writable active state, for the simulation that refreshes it in place.
  HxManipulatorActiveState& mutableActiveState() { return activeState_; }
  /// Writable joint torques, for the simulation that refreshes them in place.
  std::vector<double>& mutableJointTorques() { return jointTorques_; }
  /// Writable link force states, for the simulation that refreshes them in place.
  std::vector<HxLinkForceState>& mutableLinkForceStates() { return linkForceStates_; }
  /// Replaces the active state (joint and base accelerations included).
  void setActiveState(const HxManipulatorActiveState& state) { activeState_ = state; }
  /// Replaces the joint torques.
  void setJointTorques(const std::vector<double>& torques) { jointTorques_ = torques; }
  /// Replaces the joint accelerations of the active state.
  void setJointAccelerations(const std::vector<double>& accelerations) {
    activeState_.mutableAccelerationState().setJointAccelerations(accelerations);
  }
  /// Replaces the base acceleration of the active state.
  void setBaseAcceleration(const HxGeneralMotion& acceleration) {
    activeState_.mutableAccelerationState().setBaseAcceleration(acceleration);
  }

 private:
  HxManipulatorActiveState activeState_;
  std::vector<double> jointTorques_;
  std::vector<HxLinkForceState> linkForceStates_;
};
