#pragma once
/// \file
/// HxManipulatorKinematics: the computations a manipulator answers for a given state.

#include "framework/HxTypes.h"

class HxEndEffectorPlacement;
class HxGeneralMotion;
class HxManipulatorActiveState;
class HxManipulatorEndEffectorPlacement;
class HxPositionState;
class HxVector;

/// The kinematic computations of one manipulator, supplied by whatever simulates it (the
/// MuJoCo engine, the scripted simulation of tests). An HxIndividualManipulator holds one
/// through a shared pointer and forwards its end-effector and centre-of-mass queries here, so
/// the callers never know which engine answers.
///
/// All results are in the world frame, SI units; motions are linear X, Y, Z then angular
/// X, Y, Z. Implementations must be const in effect and must not allocate (engines keep their
/// scratch space in members made at set-up). Every operation writes its result into `out` and
/// returns true; on failure (index out of range, state of the wrong joint count) it writes
/// the identity placement, zero motion or zero vector and returns false.
class HxManipulatorKinematics {
 public:
  /// The state the queries are evaluated on.
  using State = HxManipulatorActiveState;

  virtual ~HxManipulatorKinematics() = default;

  /// Placement of end effector `endEffector` for `state`.
  virtual HxBoolean endEffectorPlacement(HxU32 endEffector, const State& state, HxEndEffectorPlacement& out) const = 0;

  /// Velocity (linear, angular) of the frame of end effector `endEffector` for `state`.
  virtual HxBoolean endEffectorVelocity(HxU32 endEffector, const State& state, HxGeneralMotion& out) const = 0;

  /// Acceleration (linear, angular) of the frame of end effector `endEffector` for `state`
  /// (uses its position, velocity and acceleration states).
  virtual HxBoolean endEffectorAcceleration(HxU32 endEffector, const State& state, HxGeneralMotion& out) const = 0;

  /// Centre of mass of the whole manipulator for `state`.
  virtual HxBoolean centerOfMass(const State& state, HxVector& out) const = 0;

  /// World placement of end effector `endEffector` from the held entry `entry` for the
  /// position state `state`. The default takes the entry as relative to the manipulator's
  /// base: out = state.coordSystemXform() * entry[endEffector]. Returns false (identity) when
  /// `endEffector` is not below entry.size().
  virtual HxBoolean resolvePlacement(const HxManipulatorEndEffectorPlacement& entry, HxU32 endEffector,
                                     const HxPositionState& state, HxEndEffectorPlacement& out) const;
};
