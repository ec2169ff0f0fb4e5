#pragma once
/// \file
/// HxVelocityState: one manipulator's joint velocities and base velocity.

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
  /// The given joint velocities and base velocity.
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
  /// Replaces the base velocity.
  void setBaseVelocity(const HxGeneralMotion& velocity) { baseVelocity_ = velocity; }

  /// Exact equality of every joint velocity and of the base velocity.
  bool operator==(const HxVelocityState& other) const {
    return jointVelocities_ == other.jointVelocities_ && baseVelocity_ == other.baseVelocity_;
  }
  /// Negation of `operator==`.
  bool operator!=(const HxVelocityState& other) const { return !(*this == other); }

 private:
  std::vector<double> jointVelocities_;
  HxGeneralMotion baseVelocity_;
};
