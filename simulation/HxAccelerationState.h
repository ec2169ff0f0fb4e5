#pragma once
/// \file
/// HxAccelerationState: one manipulator's joint accelerations and base acceleration.

#include "simulation/HxJointState.h"
#include "simulation/HxMath.h"

/// The accelerations of one manipulator: jointAccelerations(), one per joint, and
/// baseAcceleration(), the acceleration of its base (linear X, Y, Z, then angular X, Y, Z, world
/// frame). Part of an active state so that end effector accelerations can be computed from the
/// active state alone. Constructed empty, with `jointCount` joints at zero acceleration, or from
/// the joint accelerations and the base acceleration; the base is not accelerating by default.
class HxAccelerationState : public HxJointState<HxAccelerationState, HxGeneralMotion> {
 public:
  using HxJointState::HxJointState;
  HX_JOINT_STATE_ACCESSORS(jointAccelerations, mutableJointAccelerations, setJointAccelerations, baseAcceleration,
                           setBaseAcceleration);
};
