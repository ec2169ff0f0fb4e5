#pragma once
// HxVelocityState: one manipulator's joint velocities and base velocity.

#include <utility>
#include <vector>

#include "framework/HxTypes.h"
#include "simulation/HxMath.h"

/// The velocities of one manipulator: one joint velocity per joint and the base velocity
/// (linear then angular, world frame).
class HxVelocityState {
 public:
  /// No joints, base at rest.
  HxVelocityState() = default;
  /// `jointCount` joints at rest, base at rest.
  explicit HxVelocityState(HxU32 jointCount) : jointVelocities_(jointCount, 0.0) {}
  HxVelocityState(std::vector<double> jointVelocities, const HxGeneralMotion& baseVelocity = HxGeneralMotion())
      : jointVelocities_(std::move(jointVelocities)), baseVelocity_(baseVelocity) {}

  /// Joint velocities, one per joint.
  const std::vector<double>& jointVelocities() const { return jointVelocities_; }
  /// Writable joint velocities, for the simulation that produces them (refresh in place).
  std::vector<double>& mutableJointVelocities() { return jointVelocities_; }
  /// Replaces the joint velocities; reuses the held storage when it is large enough.
  void setJointVelocities(const std::vector<double>& velocities) { jointVelocities_ = velocities; }

  /// Velocity of the manipulator's base: linear X, Y, Z, angular X, Y, Z.
  const HxGeneralMotion& baseVelocity() const { return baseVelocity_; }
  void setBaseVelocity(const HxGeneralMotion& velocity) { baseVelocity_ = velocity; }

  bool operator==(const HxVelocityState& other) const {
    return jointVelocities_ == other.jointVelocities_ && baseVelocity_ == other.baseVelocity_;
  }
  bool operator!=(const HxVelocityState& other) const { return !(*this == other); }

 private:
  std::vector<double> jointVelocities_;
  HxGeneralMotion baseVelocity_;
};
