#pragma once
/// \file
/// HxManipulatorActiveState: the working state on which a manipulator's kinematics are evaluated.

#include "framework/HxTypes.h"
#include "simulation/HxAccelerationState.h"
#include "simulation/HxPositionState.h"
#include "simulation/HxVelocityState.h"

/// The state of one manipulator on which kinematic quantities (end-effector placement,
/// velocity, acceleration, centre of mass) are computed: a position state, a velocity state
/// and an acceleration state.
///
/// Copying or assigning an active state into one of the same joint count does not allocate
/// (std::vector assignment reuses the held storage), so a capture may keep a working copy
/// and refresh it each sample.
class HxManipulatorActiveState {
 public:
  /// Empty state: no joints, identity base, at rest.
  HxManipulatorActiveState() = default;
  /// `jointCount` joints at zero position, velocity and acceleration.
  explicit HxManipulatorActiveState(HxU32 jointCount)
      : position_(jointCount), velocity_(jointCount), acceleration_(jointCount) {}

  /// The current position state.
  const HxPositionState& positionState() const { return position_; }
  /// The current velocity state.
  const HxVelocityState& velocityState() const { return velocity_; }
  /// The current acceleration state.
  const HxAccelerationState& accelerationState() const { return acceleration_; }

  /// The position state on which placements are computed. This state keeps no separate
  /// "commanded" position, so it is the current position state.
  const HxPositionState& activePositionState() const { return position_; }

  /// Replaces the position state; no allocation when the joint count is unchanged.
  void setPositionState(const HxPositionState& state) { position_ = state; }
  /// Replaces the velocity state; no allocation when the joint count is unchanged.
  void setVelocityState(const HxVelocityState& state) { velocity_ = state; }
  /// Replaces the acceleration state; no allocation when the joint count is unchanged.
  void setAccelerationState(const HxAccelerationState& state) { acceleration_ = state; }

  /// Writable position state, for the simulation that refreshes it in place.
  HxPositionState& mutablePositionState() { return position_; }
  /// Writable velocity state, for the simulation that refreshes it in place.
  HxVelocityState& mutableVelocityState() { return velocity_; }
  /// Writable acceleration state, for the simulation that refreshes it in place.
  HxAccelerationState& mutableAccelerationState() { return acceleration_; }

  /// Exact equality of the three states.
  bool operator==(const HxManipulatorActiveState& other) const {
    return position_ == other.position_ && velocity_ == other.velocity_ && acceleration_ == other.acceleration_;
  }
  /// Negation of `operator==`.
  bool operator!=(const HxManipulatorActiveState& other) const { return !(*this == other); }

 private:
  HxPositionState position_;
  HxVelocityState velocity_;
  HxAccelerationState acceleration_;
};
