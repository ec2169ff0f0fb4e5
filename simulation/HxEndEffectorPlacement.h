#pragma once
/// \file
/// HxEndEffectorPlacement and HxManipulatorEndEffectorPlacement: where end effectors are.

#include <utility>
#include <vector>

#include "framework/HxTypes.h"
#include "simulation/HxMath.h"

class HxIndividualManipulator;
class HxPositionState;

/// The placement of one end effector: translation and orientation of its frame in the world
/// frame (or, inside an HxManipulatorEndEffectorPlacement, in the frame its producer uses).
/// Default: identity.
class HxEndEffectorPlacement : public HxCoordSystemXform {
 public:
  HxEndEffectorPlacement() = default;
  /// The placement with that translation and orientation.
  HxEndEffectorPlacement(const HxVector& translation, const HxOrientation& orientation)
      : HxCoordSystemXform(translation, orientation) {}
  /// The placement `xform`; implicit, since a placement is a transformation.
  HxEndEffectorPlacement(const HxCoordSystemXform& xform)
      : HxCoordSystemXform(xform) {}  // NOLINT: a placement is a transformation
};

/// The placements of all end effectors of one manipulator, indexed by end-effector index:
/// the placements a simulation holds for the kinematic path, or the targets it asks the
/// end effectors to reach.
///
/// The entries are in the frame that the manipulator's kinematics expects (see
/// HxManipulatorKinematics::resolvePlacement: relative to the manipulator's base unless the
/// kinematics says otherwise); endEffectorPlacement() turns entry e into a world placement.
class HxManipulatorEndEffectorPlacement {
 public:
  /// No placements.
  HxManipulatorEndEffectorPlacement() = default;
  /// `count` identity placements.
  explicit HxManipulatorEndEffectorPlacement(HxU32 count) : placements_(count) {}
  /// The given placements, entry e for end effector e.
  explicit HxManipulatorEndEffectorPlacement(std::vector<HxEndEffectorPlacement> placements)
      : placements_(std::move(placements)) {}

  /// Number of placements held.
  HxU32 size() const { return static_cast<HxU32>(placements_.size()); }
  /// The held entry of end effector `e`, as stored (not resolved); `e` is not checked.
  const HxEndEffectorPlacement& operator[](HxU32 e) const { return placements_[e]; }
  /// All held entries.
  const std::vector<HxEndEffectorPlacement>& placements() const { return placements_; }
  /// Writable entries, for the simulation that refreshes them in place.
  std::vector<HxEndEffectorPlacement>& mutablePlacements() { return placements_; }
  /// Replaces the entry of end effector `e`; `e` is not checked.
  void setPlacement(HxU32 e, const HxEndEffectorPlacement& placement) { placements_[e] = placement; }

  /// The world placement of end effector `e` computed from this entry for the position state
  /// `state` of `manipulator` (delegates to the manipulator's kinematics). Returns the
  /// identity placement when `e` is not below size() or the kinematics cannot resolve it.
  HxEndEffectorPlacement endEffectorPlacement(HxU32 e, const HxPositionState& state,
                                              const HxIndividualManipulator& manipulator) const;

 private:
  std::vector<HxEndEffectorPlacement> placements_;
};
