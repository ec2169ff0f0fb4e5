#include "simulation/mujoco/HxMujocoConversions.h"

namespace HxMujocoConvert {

HxEndEffectorPlacement sitePlacement(const mjData* d, int site) {
  double quat[4];
  mju_mat2Quat(quat, d->site_xmat + 9 * site);
  return placement(d->site_xpos + 3 * site, quat);
}

HxEndEffectorPlacement endEffectorPlacement(const mjData* d, const HxMujocoEndEffectorLayout& e) {
  if (e.objectType == mjOBJ_SITE) return sitePlacement(d, e.objectId);
  return placement(d->xpos + 3 * e.objectId, d->xquat + 4 * e.objectId);
}

HxGeneralMotion objectVelocity(const mjModel* m, const mjData* d, int objectType, int objectId) {
  double res[6];
  mj_objectVelocity(m, d, objectType, objectId, res, 0);
  return HxGeneralMotion(res[3], res[4], res[5], res[0], res[1], res[2]);
}

HxGeneralMotion objectAcceleration(const mjModel* m, const mjData* d, int objectType, int objectId) {
  // The engine's accelerations carry -gravity (the world body accelerates upward), as an
  // accelerometer would see them; adding gravity back gives the kinematic acceleration.
  double res[6];
  mj_objectAcceleration(m, d, objectType, objectId, res, 0);
  const bool gravityOn = (m->opt.disableflags & mjDSBL_GRAVITY) == 0;
  const double g[3] = {gravityOn ? m->opt.gravity[0] : 0.0, gravityOn ? m->opt.gravity[1] : 0.0,
                       gravityOn ? m->opt.gravity[2] : 0.0};
  return HxGeneralMotion(res[3] + g[0], res[4] + g[1], res[5] + g[2], res[0], res[1], res[2]);
}

HxGeneralForce wrenchAbout(const mjtNum comBased[6], const mjtNum center[3], const mjtNum point[3]) {
  const double force[3] = {comBased[3], comBased[4], comBased[5]};
  double arm[3], shift[3];
  mju_sub3(arm, center, point);
  mju_cross(shift, arm, force);
  return HxGeneralForce(force[0], force[1], force[2], comBased[0] + shift[0], comBased[1] + shift[1],
                        comBased[2] + shift[2]);
}

HxEndEffectorPlacement relativeTo(const HxCoordSystemXform& frame, const HxEndEffectorPlacement& world) {
  double framePos[3], frameQuat[4], worldPos[3], worldQuat[4], invPos[3], invQuat[4], pos[3], quat[4];
  toArray(frame.translation(), framePos);
  toArray(frame.orientation(), frameQuat);
  toArray(world.translation(), worldPos);
  toArray(world.orientation(), worldQuat);
  mju_negPose(invPos, invQuat, framePos, frameQuat);
  mju_mulPose(pos, quat, invPos, invQuat, worldPos, worldQuat);
  return placement(pos, quat);
}

HxEndEffectorPlacement carriedAlong(const HxEndEffectorPlacement& to, const HxEndEffectorPlacement& from,
                                    const HxEndEffectorPlacement& own) {
  double toPos[3], toQuat[4], fromPos[3], fromQuat[4], ownPos[3], ownQuat[4];
  toArray(to.translation(), toPos);
  toArray(to.orientation(), toQuat);
  toArray(from.translation(), fromPos);
  toArray(from.orientation(), fromQuat);
  toArray(own.translation(), ownPos);
  toArray(own.orientation(), ownQuat);
  // The offset of `own` from `from`, then that offset from `to`.
  double invPos[3], invQuat[4], offPos[3], offQuat[4], pos[3], quat[4];
  mju_negPose(invPos, invQuat, fromPos, fromQuat);
  mju_mulPose(offPos, offQuat, invPos, invQuat, ownPos, ownQuat);
  mju_mulPose(pos, quat, toPos, toQuat, offPos, offQuat);
  return placement(pos, quat);
}

void rotationError(mjtNum out[3], const HxOrientation& to, const HxOrientation& from) {
  double toQuat[4], fromQuat[4], local[3];
  toArray(to, toQuat);
  toArray(from, fromQuat);
  mju_subQuat(local, toQuat, fromQuat);  // in the frame of `from`
  mju_rotVecQuat(out, local, fromQuat);
}

}  // namespace HxMujocoConvert
