#pragma once
/// \file
/// HxPositionState: one manipulator's joint positions and base placement.

#include <utility>
#include <vector>

#include "framework/HxTypes.h"
#include "simulation/HxMath.h"

/// The positions of one manipulator: one joint position per joint (radians for revolute,
/// metres for prismatic joints) and the placement of its base in the world frame.
class HxPositionState {
 public:
  /// No joints, identity base placement.
  HxPositionState() = default;
  /// `jointCount` joints at 0, identity base placement.
  explicit HxPositionState(HxU32 jointCount) : jointPositions_(jointCount, 0.0) {}
  /// The given joint positions and base placement.
  HxPositionState(std::vector<double> jointPositions, const HxCoordSystemXform& base = HxCoordSystemXform())
      : jointPositions_(std::move(jointPositions)), base_(base) {}

  /// Joint positions, one per joint.
  const std::vector<double>& jointPositions() const { return jointPositions_; }
  /// Writable joint positions, for the simulation that produces them (refresh in place).
  std::vector<double>& mutableJointPositions() { return jointPositions_; }
  /// Replaces the joint positions; reuses the held storage when it is large enough.
  void setJointPositions(const std::vector<double>& positions) { jointPositions_ = positions; }

  /// Placement of the manipulator's base in the world frame.
  const HxCoordSystemXform& coordSystemXform() const { return base_; }
  /// Replaces the base placement.
  void setCoordSystemXform(const HxCoordSystemXform& base) { base_ = base; }

  /// Exact equality of every joint position and of the base placement.
  bool operator==(const HxPositionState& other) const {
    return jointPositions_ == other.jointPositions_ && base_ == other.base_;
  }
  /// Negation of `operator==`.
  bool operator!=(const HxPositionState& other) const { return !(*this == other); }

 private:
  std::vector<double> jointPositions_;
  HxCoordSystemXform base_;
};
