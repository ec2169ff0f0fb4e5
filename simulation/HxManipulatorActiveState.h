#pragma once
// HxManipulatorActiveState: the working state on which a manipulator's kinematics are evaluated.

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

  void setPositionState(const HxPositionState& state) { position_ = state; }
  void setVelocityState(const HxVelocityState& state) { velocity_ = state; }
  void setAccelerationState(const HxAccelerationState& state) { acceleration_ = state; }

  /// Writable parts, for the simulation that refreshes them in place.
  HxPositionState& mutablePositionState() { return position_; }
  HxVelocityState& mutableVelocityState() { return velocity_; }
  HxAccelerationState& mutableAccelerationState() { return acceleration_; }

  bool operator==(const HxManipulatorActiveState& other) const {
    return position_ == other.position_ && velocity_ == other.velocity_ && acceleration_ == other.acceleration_;
  }
  bool operator!=(const HxManipulatorActiveState& other) const { return !(*this == other); }

 private:
  HxPositionState position_;
  HxVelocityState velocity_;
  HxAccelerationState acceleration_;
};
