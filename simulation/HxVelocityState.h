#pragma once
/// \file
/// HxVelocityState: one manipulator's joint velocities and base velocity.

#include "simulation/HxJointState.h"
#include "simulation/HxMath.h"

/// The velocities of one manipulator: jointVelocities(), one per joint, and baseVelocity(), the
/// velocity of its base (linear X, Y, Z, then angular X, Y, Z, world frame). Constructed empty,
/// with `jointCount` joints at rest, or from the joint velocities and the base velocity; the
/// base is at rest by default.
class HxVelocityState : public HxJointState<HxVelocityState, HxGeneralMotion> {
 public:
  using HxJointState::HxJointState;
  HX_JOINT_STATE_ACCESSORS(jointVelocities, mutableJointVelocities, setJointVelocities, baseVelocity, setBaseVelocity);
};
