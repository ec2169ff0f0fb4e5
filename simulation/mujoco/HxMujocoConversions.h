#pragma once
// HxMujocoConvert: between MuJoCo's arrays and the simulation's value types (HxVector,
// HxOrientation, placements, motions, wrenches), and the placement arithmetic done with
// MuJoCo's pose functions. Internal to simulation/mujoco.
//
// Both sides hold quaternions as (w, x, y, z), so orientations are copied component by
// component. MuJoCo's spatial vectors put the angular part first; HxGeneralMotion and
// HxGeneralForce put the linear part (the force) first.

#include <mujoco/mujoco.h>

#include "simulation/HxEndEffectorPlacement.h"
#include "simulation/HxMath.h"
#include "simulation/mujoco/HxMujocoLayout.h"

namespace HxMujocoConvert {

/// The vector of MuJoCo array `v`.
inline HxVector vector(const mjtNum v[3]) { return HxVector(v[0], v[1], v[2]); }
/// The orientation of MuJoCo quaternion `q`, as given (not normalised).
inline HxOrientation orientation(const mjtNum q[4]) { return HxOrientation(q[0], q[1], q[2], q[3]); }
/// `v` into a MuJoCo array.
inline void toArray(const HxVector& v, mjtNum out[3]) {
  for (HxU32 i = 0; i < 3; ++i) out[i] = v[i];
}
/// `q` into a MuJoCo quaternion.
inline void toArray(const HxOrientation& q, mjtNum out[4]) {
  for (HxU32 i = 0; i < 4; ++i) out[i] = q[i];
}
/// The placement of MuJoCo pose (`pos`, `quat`).
inline HxEndEffectorPlacement placement(const mjtNum pos[3], const mjtNum quat[4]) {
  return HxEndEffectorPlacement(vector(pos), orientation(quat));
}

/// World placement of site `site` in evaluated data `d` (after mj_kinematics).
HxEndEffectorPlacement sitePlacement(const mjData* d, int site);
/// World placement of end effector `e` (its site, or its body frame) in evaluated data `d`.
HxEndEffectorPlacement endEffectorPlacement(const mjData* d, const HxMujocoEndEffectorLayout& e);

/// Velocity of an object's origin in `d` (after mj_comVel): linear, angular, world frame. A
/// body's frame is mjOBJ_XBODY; MuJoCo's mjOBJ_BODY stands for its centre of mass.
HxGeneralMotion objectVelocity(const mjModel* m, const mjData* d, int objectType, int objectId);
/// Kinematic acceleration of an object's origin in `d` (after mj_rnePostConstraint), gravity
/// removed.
HxGeneralMotion objectAcceleration(const mjModel* m, const mjData* d, int objectType, int objectId);
/// The wrench of MuJoCo's com-based (torque, force) `comBased`, taken about `center`, as force
/// and moment about `point`.
HxGeneralForce wrenchAbout(const mjtNum comBased[6], const mjtNum center[3], const mjtNum point[3]);

/// Placement `world` expressed relative to `frame`: frame⁻¹ · world.
HxEndEffectorPlacement relativeTo(const HxCoordSystemXform& frame, const HxEndEffectorPlacement& world);
/// Placement `own` carried along when a frame moves from `from` to `to`: to · from⁻¹ · own.
HxEndEffectorPlacement carriedAlong(const HxEndEffectorPlacement& to, const HxEndEffectorPlacement& from,
                                    const HxEndEffectorPlacement& own);
/// Rotation vector (world frame) that takes orientation `from` to orientation `to`.
void rotationError(mjtNum out[3], const HxOrientation& to, const HxOrientation& from);

}  // namespace HxMujocoConvert
