#pragma once
// HxAccelerationState: one manipulator's joint accelerations and base acceleration.

#include <utility>
#include <vector>

#include "framework/HxTypes.h"
#include "simulation/HxMath.h"

/// The accelerations of one manipulator: one joint acceleration per joint and the base
/// acceleration (linear then angular, world frame). Part of an active state so that end
/// effector accelerations can be computed from the active state alone.
class HxAccelerationState {
 public:
  HxAccelerationState() = default;
  explicit HxAccelerationState(HxU32 jointCount) : jointAccelerations_(jointCount, 0.0) {}
  HxAccelerationState(std::vector<double> jointAccelerations,
                      const HxGeneralMotion& baseAcceleration = HxGeneralMotion())
      : jointAccelerations_(std::move(jointAccelerations)), baseAcceleration_(baseAcceleration) {}

  /// Joint accelerations, one per joint.
  const std::vector<double>& jointAccelerations() const { return jointAccelerations_; }
  std::vector<double>& mutableJointAccelerations() { return jointAccelerations_; }
  void setJointAccelerations(const std::vector<double>& accelerations) { jointAccelerations_ = accelerations; }

  /// Acceleration of the manipulator's base: linear X, Y, Z, angular X, Y, Z.
  const HxGeneralMotion& baseAcceleration() const { return baseAcceleration_; }
  void setBaseAcceleration(const HxGeneralMotion& acceleration) { baseAcceleration_ = acceleration; }

  bool operator==(const HxAccelerationState& other) const {
    return jointAccelerations_ == other.jointAccelerations_ && baseAcceleration_ == other.baseAcceleration_;
  }
  bool operator!=(const HxAccelerationState& other) const { return !(*this == other); }

 private:
  std::vector<double> jointAccelerations_;
  HxGeneralMotion baseAcceleration_;
};
