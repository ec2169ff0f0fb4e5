// Tests of HxMujocoSimulation on the other model forms it accepts: a URDF robot (end effectors
// on links) and an MJCF manipulator on a free (floating) base, cross-checked against an
// independent engine instance.

#include <algorithm>
#include <cmath>

#include "tests/simulation/mujoco/HxMujocoTestFixture.h"

namespace {

using namespace hxmujocotest;

// Three revolute joints and two end-effector links, declared out of tree order. The probe's
// centre of mass lies off its frame origin.
const char* kUrdfArm = R"(
<robot name="urdf_arm">
  <mujoco><compiler fusestatic="false"/></mujoco>
  <link name="ee_point:probe"><inertial><origin xyz="0.05 0.02 0"/><mass value="0.1"/>
    <inertia ixx="1e-4" iyy="1e-4" izz="1e-4" ixy="0" ixz="0" iyz="0"/></inertial></link>
  <link name="fore"><inertial><origin xyz="0.15 0 0"/><mass value="0.6"/>
    <inertia ixx="1e-3" iyy="5e-3" izz="5e-3" ixy="0" ixz="0" iyz="0"/></inertial></link>
  <link name="ee_frame:flange"/><link name="base"/>
  <link name="upper"><inertial><origin xyz="0.2 0 0"/><mass value="1.0"/>
    <inertia ixx="1e-3" iyy="1e-2" izz="1e-2" ixy="0" ixz="0" iyz="0"/></inertial></link>
  <link name="shoulder"><inertial><origin xyz="0 0 0.05"/><mass value="1.5"/>
    <inertia ixx="3e-3" iyy="3e-3" izz="2e-3" ixy="0" ixz="0" iyz="0"/></inertial></link>
  <joint name="elbow" type="continuous"><parent link="upper"/><child link="fore"/>
    <origin xyz="0.4 0 0"/><axis xyz="0 1 0"/></joint>
  <joint name="flange_mount" type="fixed"><parent link="fore"/><child link="ee_frame:flange"/>
    <origin xyz="0.3 0 0" rpy="0.2 0.4 -0.1"/></joint>
  <joint name="yaw" type="continuous"><parent link="base"/><child link="shoulder"/>
    <origin xyz="0 0 0.3"/><axis xyz="0 0 1"/></joint>
  <joint name="probe_mount" type="fixed"><parent link="fore"/><child link="ee_point:probe"/>
    <origin xyz="0.25 0 0.05"/></joint>
  <joint name="pitch" type="continuous"><parent link="shoulder"/><child link="upper"/>
    <origin xyz="0 0 0.1" rpy="0 -0.3 0"/><axis xyz="0 1 0"/></joint>
</robot>)";

// End effector e of `manipulator` in `state` is placed at `pos`, `quat` and moves as that point
// carried by `body` in evaluated `d` (J(point) q̇).
void expectEndEffector(const HxIndividualManipulator& manipulator, HxU32 e, const HxManipulatorActiveState& state,
                       const mjModel* m, const mjData* d, const double* pos, const double* quat, int body) {
  expectPlacement(manipulator.endEffectorPlacement(e, state), pos, quat);
  HxGeneralMotion velocity;
  ASSERT_TRUE(manipulator.endEffector(e).velocity(manipulator, state, velocity));
  std::vector<double> jacp(3 * m->nv), jacr(3 * m->nv);
  double linear[3], angular[3];
  mj_jac(m, d, jacp.data(), jacr.data(), pos, body);
  mju_mulMatVec(linear, jacp.data(), d->qvel, 3, m->nv);
  mju_mulMatVec(angular, jacr.data(), d->qvel, 3, m->nv);
  expectMotion(velocity, vec(linear), vec(angular), 1e-9);
}

// A URDF robot: one fixed-base manipulator whose links are the jointed links in tree order and
// whose end effectors are the prefixed links, placed (and moving) as the engine's body frames.
TEST_P(MujocoModeTest, UrdfRobotFollowsTheModelConventions) {
  const HxScopedTempDir dir("mujoco");
  const std::string file = dir.write("arm.urdf", kUrdfArm);
  Reference ref(file);
  const mjModel* m = ref.model.get();
  mjData* d = ref.data.get();
  ASSERT_TRUE(sim_.loadFile(file, GetParam())) << sim_.lastError();
  ASSERT_EQ(sim_.numberOfManipulators(), 1u);
  const HxIndividualManipulator& manipulator = sim_.manipulators()[0];
  std::string names = sim_.manipulatorName(0);
  for (HxU32 j = 0; j < manipulator.numberOfLinks(); ++j) names += " " + manipulator.link(j)->identifier();
  for (HxU32 e = 0; e < manipulator.numberOfEndEffectors(); ++e) {
    const bool frame = manipulator.endEffector(e).token() == HxControl::HxFrameEndEffectorToken;
    names += " " + sim_.endEffectorName(0, e) + (frame ? ":frame" : ":point");
  }
  ASSERT_EQ(names, "base shoulder upper fore flange:frame probe:point");
  EXPECT_TRUE(HxMujocoSimulation().loadString(kUrdfArm));

  // Gravity swings the arm (dynamic), the controller moves it (kinematic).
  sim_.setPathPoints(0, {HxEndEffectorPlacement(HxVector(0.2, 0.3, 0.6), HxOrientation())});
  for (int step = 0; step < 200; ++step) ASSERT_TRUE(sim_.step());
  const HxManipulatorActiveState& state = sim_.activeStates()[0];
  double fastest = 0.0;
  for (double q : state.velocityState().jointVelocities()) fastest = std::max(fastest, std::fabs(q));
  EXPECT_GT(fastest, 0.05);  // the velocities checked are not all zero
  loadJoints(sim_, m, d);
  mj_kinematics(m, d);
  mj_comPos(m, d);
  for (HxU32 e = 0; e < 2; ++e) {
    const int body = mj_name2id(m, mjOBJ_BODY, e == 0 ? "ee_frame:flange" : "ee_point:probe");
    expectEndEffector(manipulator, e, state, m, d, d->xpos + 3 * body, d->xquat + 4 * body, body);
    expectPlacement(held(sim_.endEffectorPlacements(), sim_, 0, e), d->xpos + 3 * body, d->xquat + 4 * body);
  }
}

// A manipulator on a free base, step after step of a reference engine run with the same
// controls: its base placement, velocity and acceleration are the free joint's; its
// end-effector placements, velocities and accelerations and its centre of mass the engine's.
// In kinematic mode the base stays where it is, at rest.
TEST_F(MujocoTest, FreeBaseManipulatorFollowsTheEngine) {
  ASSERT_TRUE(sim_.loadString(kFloatingArm)) << sim_.lastError();
  ASSERT_EQ(sim_.numberOfManipulators(), 1u);
  const HxIndividualManipulator& manipulator = sim_.manipulators()[0];
  ASSERT_EQ(manipulator.jointCount(), 3u);  // the free joint is no link

  Reference ref = Reference::ofText(kFloatingArm);
  const mjModel* m = ref.model.get();
  mjData* d = ref.data.get();
  const int root = mj_name2id(m, mjOBJ_BODY, "drone");
  mj_resetDataKeyframe(m, d, 0);
  for (int step = 0; step <= 200; ++step) {
    // The reference integrates its last evaluation, then evaluates the new state with the
    // simulation's controls.
    if (step > 0) {
      ASSERT_TRUE(sim_.step());
      mj_Euler(m, d);
    }
    mju_copy(d->ctrl, sim_.manipulatorControlInputs()[0].values().data(), m->nu);
    mj_forward(m, d);
    mj_rnePostConstraint(m, d);
    const HxManipulatorActiveState& state = sim_.activeStates()[0];
    double angularVelocity[3], angularAcceleration[3];
    mju_rotVecQuat(angularVelocity, d->qvel + 3, d->qpos + 3);  // the free joint's are in the body frame
    mju_rotVecQuat(angularAcceleration, d->qacc + 3, d->qpos + 3);
    expectPlacement(state.positionState().coordSystemXform(), d->xpos + 3 * root, d->xquat + 4 * root);
    expectMotion(state.velocityState().baseVelocity(), vec(d->qvel), vec(angularVelocity), 1e-9);
    expectMotion(state.accelerationState().baseAcceleration(), vec(d->qacc), vec(angularAcceleration), 1e-7);
    EXPECT_LT(manipulator.centerOfMass(state).distanceTo(vec(d->subtree_com + 3 * root)), 1e-9);
    for (HxU32 e = 0; e < 2; ++e) {
      const int site = mj_name2id(m, mjOBJ_SITE, e == 0 ? "ee_frame:grip" : "ee_point:nose");
      double siteQuat[4], motion[6];
      mju_mat2Quat(siteQuat, d->site_xmat + 9 * site);
      expectEndEffector(manipulator, e, state, m, d, d->site_xpos + 3 * site, siteQuat, m->site_bodyid[site]);
      expectPlacement(held(sim_.endEffectorPlacements(), sim_, 0, e), d->site_xpos + 3 * site, siteQuat);
      HxGeneralMotion acceleration;
      ASSERT_TRUE(manipulator.endEffector(e).acceleration(manipulator, state, acceleration));
      mj_objectAcceleration(m, d, mjOBJ_SITE, site, motion, 0);  // carries -g
      expectMotion(acceleration, vec(motion + 3) + HxVector(0, 0, -9.81), vec(motion), 1e-6);
    }
  }
  EXPECT_LT(sim_.activeStates()[0].positionState().coordSystemXform().translation()[2], 1.4);  // it fell

  // Kinematic mode, the keyframe's velocities notwithstanding.
  ASSERT_TRUE(sim_.loadString(kFloatingArm, Mode::Kinematic));
  const HxCoordSystemXform start = sim_.activeStates()[0].positionState().coordSystemXform();
  for (double q : sim_.activeStates()[0].velocityState().jointVelocities()) EXPECT_EQ(q, 0.0);
  for (int step = 0; step < 50; ++step) {
    ASSERT_TRUE(sim_.step());
    EXPECT_EQ(sim_.activeStates()[0].positionState().coordSystemXform(), start);
    EXPECT_EQ(sim_.activeStates()[0].velocityState().baseVelocity(), HxGeneralMotion());
  }
}

}  // namespace
