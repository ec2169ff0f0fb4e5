#pragma once
/// \file
/// HxAccelerationState: one manipulator's joint accelerations and base acceleration.

#include <utility>
#include <vector>

#include "framework/HxTypes.h"
#include "simulation/HxMath.h"

/// The accelerations of one manipulator: one joint acceleration per joint and the base
/// acceleration (linear then angular, world frame). Part of an active state so that end
/// effector accelerations can be computed from the active state alone.
class HxAccelerationState {
 public:
  /// No joints, base not accelerating.
  HxAccelerationState() = default;
  /// `jointCount` joints at zero acceleration, base not accelerating.
  explicit HxAccelerationState(HxU32 jointCount) : jointAccelerations_(jointCount, 0.0) {}
  /// The given joint accelerations and base acceleration.
  HxAccelerationState(std::vector<double> jointAccelerations,
                      const HxGeneralMotion& baseAcceleration = HxGeneralMotion())
      : jointAccelerations_(std::move(jointAccelerations)), baseAcceleration_(baseAcceleration) {}

  /// Joint accelerations, one per joint.
  const std::vector<double>& jointAccelerations() const { return jointAccelerations_; }
  /// Writable joint accelerations, for the simulation that produces them (refresh in place).
  std::vector<double>& mutableJointAccelerations() { return jointAccelerations_; }
  /// Replaces the joint accelerations; reuses the held storage when it is large enough.
  void setJointAccelerations(const std::vector<double>& accelerations) { jointAccelerations_ = accelerations; }

  /// Acceleration of the manipulator's base: linear X, Y, Z, angular X, Y, Z.
  const HxGeneralMotion& baseAcceleration() const { return baseAcceleration_; }
  /// Replaces the base acceleration.
  void setBaseAcceleration(const HxGeneralMotion& acceleration) { baseAcceleration_ = acceleration; }

  /// Exact equality of every joint acceleration and of the base acceleration.
  bool operator==(const HxAccelerationState& other) const {
    return jointAccelerations_ == other.jointAccelerations_ && baseAcceleration_ == other.baseAcceleration_;
  }
  /// Negation of `operator==`.
  bool operator!=(const HxAccelerationState& other) const { return !(*this == other); }

 private:
  std::vector<double> jointAccelerations_;
  HxGeneralMotion baseAcceleration_;
};
