#pragma once
/// \file
/// HxPositionState: one manipulator's joint positions and base placement.

#include "simulation/HxJointState.h"
#include "simulation/HxMath.h"

/// The positions of one manipulator: jointPositions(), one per joint (radians for revolute,
/// metres for prismatic joints), and coordSystemXform(), the placement of its base in the world
/// frame. Constructed empty, with `jointCount` joints at 0, or from the joint positions and the
/// base placement; the base placement defaults to the identity.
class HxPositionState : public HxJointState<HxPositionState, HxCoordSystemXform> {
 public:
  using HxJointState::HxJointState;
  HX_JOINT_STATE_ACCESSORS(jointPositions, mutableJointPositions, setJointPositions, coordSystemXform,
                           setCoordSystemXform);
};
