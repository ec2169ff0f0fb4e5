#include "simulation/mujoco/HxMujocoRefresh.h"

#include <algorithm>

#include "simulation/mujoco/HxMujocoConversions.h"

namespace {

constexpr double kJointLimitMargin = 1e-3;  // rad (m): distance to a limit that counts as at the limit

}  // namespace

namespace HxMujocoRefresh {

void motion(const HxMujocoRefreshSource& in, HxManipulatorActiveState& active) {
  const mjData* d = in.data;
  const HxMujocoManipulatorLayout& layout = in.layout;
  const int root = layout.rootBody;
  HxPositionState& position = active.mutablePositionState();
  HxVelocityState& velocity = active.mutableVelocityState();
  HxAccelerationState& acceleration = active.mutableAccelerationState();
  position.setCoordSystemXform(HxMujocoConvert::placement(d->xpos + 3 * root, d->xquat + 4 * root));
  // Motions of the root body's frame origin (mjOBJ_XBODY), not of its centre of mass.
  velocity.setBaseVelocity(HxMujocoConvert::objectVelocity(in.model, d, mjOBJ_XBODY, root));
  acceleration.setBaseAcceleration(in.dynamic ? HxMujocoConvert::objectAcceleration(in.model, d, mjOBJ_XBODY, root)
                                              : HxGeneralMotion());
  // Kinematic mode has no engine accelerations: the control output's velocity change over the step.
  const double dt = in.model->opt.timestep;
  for (std::size_t j = 0; j < layout.joints.size(); ++j) {
    const int dof = layout.dofAddresses[j];
    position.mutableJointPositions()[j] = d->qpos[layout.qposAddresses[j]];
    velocity.mutableJointVelocities()[j] = d->qvel[dof];
    acceleration.mutableJointAccelerations()[j] =
        in.dynamic ? d->qacc[dof] : (in.control.velocity[j] - in.control.previousVelocity[j]) / dt;
  }
}

void forces(const HxMujocoRefreshSource& in, HxIndividualDynamicSimulator& simulator,
            HxManipulatorExternalForce& external, HxManipulatorControlInput& inputs, HxManipulatorTorque& torques) {
  const mjData* d = in.data;
  const HxMujocoManipulatorLayout& layout = in.layout;
  const bool dynamic = in.dynamic;
  const mjtNum* treeCenter = d->subtree_com + 3 * layout.rootBody;
  for (std::size_t j = 0; j < layout.joints.size(); ++j) {
    const int dof = layout.dofAddresses[j];
    const int body = layout.linkBodies[j];
    simulator.mutableJointTorques()[j] =
        dynamic ? d->qfrc_actuator[dof] + d->qfrc_passive[dof] + d->qfrc_constraint[dof] + d->qfrc_applied[dof] : 0.0;
    // MuJoCo's link wrenches are taken about the tree's centre of mass; ours about the link frame.
    HxLinkForceState& link = simulator.mutableLinkForceStates()[j];
    link.setValid(dynamic);
    link.setForce(dynamic ? HxMujocoConvert::wrenchAbout(d->cfrc_int + 6 * body, treeCenter, d->xpos + 3 * body)
                          : HxGeneralForce());
    external.mutableForces()[j] =
        dynamic ? HxMujocoConvert::wrenchAbout(d->cfrc_ext + 6 * body, treeCenter, d->xpos + 3 * body)
                : HxGeneralForce();
    const int u = layout.actuators[j];
    inputs.mutableValues()[j] = u >= 0 ? d->ctrl[u] : 0.0;
    torques.mutableValues()[j] = dynamic ? d->qfrc_actuator[dof] : 0.0;
  }
}

void controlOutput(const HxMujocoRefreshSource& in, const HxManipulatorActiveState& actual, HxPositionState& position,
                   HxVelocityState& velocity) {
  position.setCoordSystemXform(actual.positionState().coordSystemXform());
  velocity.setBaseVelocity(actual.velocityState().baseVelocity());
  std::copy(in.control.position.begin(), in.control.position.end(), position.mutableJointPositions().begin());
  std::copy(in.control.velocity.begin(), in.control.velocity.end(), velocity.mutableJointVelocities().begin());
}

void placements(const HxMujocoRefreshSource& in, const HxCoordSystemXform& base,
                HxManipulatorEndEffectorPlacement& actual, HxManipulatorEndEffectorPlacement& desired) {
  const HxMujocoManipulatorLayout& layout = in.layout;
  const HxMujocoControlState& control = in.control;
  const bool hasTarget = !control.path.empty() && !layout.endEffectors.empty();
  HxEndEffectorPlacement controlledNow, target;
  if (hasTarget) {
    controlledNow = HxMujocoConvert::endEffectorPlacement(in.data, layout.endEffectors[control.controlled]);
    target = control.path[control.index];
  }
  for (std::size_t e = 0; e < layout.endEffectors.size(); ++e) {
    const HxEndEffectorPlacement world = HxMujocoConvert::endEffectorPlacement(in.data, layout.endEffectors[e]);
    actual.setPlacement(static_cast<HxU32>(e), HxMujocoConvert::relativeTo(base, world));
    const HxEndEffectorPlacement wanted =
        hasTarget ? HxMujocoConvert::carriedAlong(target, controlledNow, world) : world;
    desired.setPlacement(static_cast<HxU32>(e), HxMujocoConvert::relativeTo(base, wanted));
  }
}

void events(const HxMujocoRefreshSource& in, HxMujocoJacobian& jacobian, double singularityThreshold,
            HxPropagationResultData& result) {
  const mjModel* m = in.model;
  const mjData* d = in.data;
  const HxMujocoManipulatorLayout& layout = in.layout;
  bool atLimit = false;
  for (std::size_t j = 0; j < layout.joints.size() && !atLimit; ++j) {
    const int joint = layout.joints[j];
    if (!m->jnt_limited[joint]) continue;
    const double q = d->qpos[layout.qposAddresses[j]];
    atLimit = q <= m->jnt_range[2 * joint] + kJointLimitMargin || q >= m->jnt_range[2 * joint + 1] - kJointLimitMargin;
  }
  bool singular = false;
  for (std::size_t e = 0; e < layout.endEffectors.size() && !singular; ++e) {
    jacobian.load(m, d, layout, layout.endEffectors[e]);
    singular = jacobian.smallestSingularValueBelow(singularityThreshold);
  }
  bool contact = false;
  for (int c = 0; c < d->ncon && !contact; ++c) {
    contact = m->body_rootid[m->geom_bodyid[d->contact[c].geom1]] == layout.rootBody ||
              m->body_rootid[m->geom_bodyid[d->contact[c].geom2]] == layout.rootBody;
  }
  result.setHitJointLimit(atLimit);
  result.setHitSingularity(singular);
  result.setCollisionOccurred(contact);
}

}  // namespace HxMujocoRefresh
