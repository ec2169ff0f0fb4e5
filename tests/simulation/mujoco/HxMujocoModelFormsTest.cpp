// Tests of HxMujocoSimulation on the other model forms it accepts: a URDF robot (end effectors
// on links) and an MJCF manipulator on a free (floating) base, cross-checked against an
// independent engine instance.

#include <gtest/gtest.h>
#include <mujoco/mujoco.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "simulation/mujoco/HxMujocoSimulation.h"
#include "tests/simulation/mujoco/HxMujocoTestFixture.h"

namespace {

using Mode = HxMujocoSimulation::Mode;

// Three revolute joints and two end-effector links, declared out of tree order. The probe's
// centre of mass lies off its frame origin.
const char* kUrdfArm = R"(
<robot name="urdf_arm">
  <mujoco><compiler fusestatic="false"/></mujoco>
  <link name="ee_point:probe">
    <inertial><origin xyz="0.05 0.02 0"/><mass value="0.1"/>
      <inertia ixx="1e-4" iyy="1e-4" izz="1e-4" ixy="0" ixz="0" iyz="0"/></inertial>
  </link>
  <link name="fore">
    <inertial><origin xyz="0.15 0 0"/><mass value="0.6"/>
      <inertia ixx="1e-3" iyy="5e-3" izz="5e-3" ixy="0" ixz="0" iyz="0"/></inertial>
  </link>
  <link name="ee_frame:flange"/>
  <link name="base"/>
  <link name="upper">
    <inertial><origin xyz="0.2 0 0"/><mass value="1.0"/>
      <inertia ixx="1e-3" iyy="1e-2" izz="1e-2" ixy="0" ixz="0" iyz="0"/></inertial>
  </link>
  <link name="shoulder">
    <inertial><origin xyz="0 0 0.05"/><mass value="1.5"/>
      <inertia ixx="3e-3" iyy="3e-3" izz="2e-3" ixy="0" ixz="0" iyz="0"/></inertial>
  </link>
  <joint name="elbow" type="revolute"><parent link="upper"/><child link="fore"/>
    <origin xyz="0.4 0 0"/><axis xyz="0 1 0"/><limit lower="-2.5" upper="2.5" effort="10" velocity="3"/></joint>
  <joint name="flange_mount" type="fixed"><parent link="fore"/><child link="ee_frame:flange"/>
    <origin xyz="0.3 0 0" rpy="0.2 0.4 -0.1"/></joint>
  <joint name="yaw" type="revolute"><parent link="base"/><child link="shoulder"/>
    <origin xyz="0 0 0.3"/><axis xyz="0 0 1"/><limit lower="-3" upper="3" effort="10" velocity="3"/></joint>
  <joint name="probe_mount" type="fixed"><parent link="fore"/><child link="ee_point:probe"/>
    <origin xyz="0.25 0 0.05"/></joint>
  <joint name="pitch" type="revolute"><parent link="shoulder"/><child link="upper"/>
    <origin xyz="0 0 0.1" rpy="0 -0.3 0"/><axis xyz="0 1 0"/><limit lower="-2.5" upper="2.5" effort="10" velocity="3"/></joint>
</robot>)";

// A floating body carrying a three-joint arm, spinning and falling from the start; the
// body's centre of mass lies off its frame origin.
const char* kFloatingArm = R"(
<mujoco model="floating">
  <option timestep="0.002" gravity="0 0 -9.81"/>
  <default>
    <geom type="capsule" size="0.03" contype="0" conaffinity="0"/>
    <joint type="hinge" axis="0 1 0"/>
  </default>
  <worldbody>
    <body name="drone" pos="0.2 -0.1 1.5" euler="0 0 0.4">
      <freejoint/>
      <geom type="box" size="0.2 0.15 0.05" pos="0.1 0.05 -0.08" mass="3"/>
      <body name="turret" pos="0.15 0 -0.1">
        <joint name="yaw" axis="0 0 1"/>
        <geom fromto="0 0 0 0 0 -0.2"/>
        <body name="boom" pos="0 0 -0.2">
          <joint name="pitch"/>
          <geom fromto="0 0 0 0.3 0 0"/>
          <body name="fore" pos="0.3 0 0">
            <joint name="elbow"/>
            <geom fromto="0 0 0 0.25 0 0"/>
            <site name="ee_frame:grip" pos="0.25 0 0" euler="0 0.3 0"/>
          </body>
        </body>
      </body>
    </body>
    <site name="path:drone:0" pos="0.6 0.2 1.0"/>
  </worldbody>
  <actuator>
    <motor joint="yaw" gear="20"/>
    <motor joint="pitch" gear="20"/>
    <motor joint="elbow" gear="20"/>
  </actuator>
  <keyframe><key qpos="0.2 -0.1 1.5 0.98 0 0 0.2 0 0.4 0.6" qvel="0.3 -0.2 0.5 0.4 -0.6 1.2 0.5 -0.4 0.8"/></keyframe>
</mujoco>)";

HxVector vec(const double* v) { return HxVector(v[0], v[1], v[2]); }

// World vector of the body-frame vector `v` of a free joint of orientation `quat`.
HxVector toWorld(const double* quat, const double* v) {
  double out[3];
  mju_rotVecQuat(out, v, quat);
  return vec(out);
}

double angleBetween(const HxOrientation& a, const HxOrientation& b) {
  double angle = 0.0;
  HxVector axis;
  a.angleAxisBetween(b, angle, axis);
  return angle;
}

void expectPlacement(const HxEndEffectorPlacement& placement, const double* pos, const double* quat) {
  EXPECT_LT(placement.translation().distanceTo(vec(pos)), 1e-12);
  EXPECT_LT(angleBetween(placement.orientation(), HxOrientation(quat[0], quat[1], quat[2], quat[3])), 1e-7);
}

void expectMotion(const HxGeneralMotion& motion, const HxVector& linear, const HxVector& angular, double tolerance) {
  EXPECT_LT(motion.linear().distanceTo(linear), tolerance) << "linear";
  EXPECT_LT(motion.angular().distanceTo(angular), tolerance) << "angular";
}

// Writes manipulator k's joint positions and velocities into `d`, joint by link (body) name.
void loadJoints(const HxMujocoSimulation& sim, HxU32 k, const mjModel* m, mjData* d) {
  const HxIndividualManipulator& manipulator = sim.manipulators()[k];
  for (HxU32 j = 0; j < manipulator.numberOfLinks(); ++j) {
    const int joint = m->body_jntadr[mj_name2id(m, mjOBJ_BODY, manipulator.link(j)->identifier().c_str())];
    d->qpos[m->jnt_qposadr[joint]] = sim.activeStates()[k].positionState().jointPositions()[j];
    d->qvel[m->jnt_dofadr[joint]] = sim.activeStates()[k].velocityState().jointVelocities()[j];
  }
}

class MujocoModelFormsTest : public MujocoTest, public ::testing::WithParamInterface<Mode> {};

// A URDF robot, from text and from a file: one fixed-base manipulator whose links are the
// jointed links in tree order and whose end effectors are the prefixed links, placed (and
// moving) as the engine's body frames say.
TEST_P(MujocoModelFormsTest, UrdfRobotFollowsTheModelConventions) {
  const std::string file = hxmujocotest::writeModelFile("hx_urdf_arm.urdf", kUrdfArm);
  Reference ref;
  loadReference(ref, file);
  const mjModel* m = ref.model;
  mjData* d = ref.data;
  for (const bool fromFile : {false, true}) {
    SCOPED_TRACE(fromFile ? "loadFile" : "loadString");
    HxMujocoSimulation sim;
    ASSERT_TRUE(fromFile ? sim.loadFile(file, GetParam()) : sim.loadString(kUrdfArm, GetParam())) << sim.lastError();
    ASSERT_EQ(sim.numberOfManipulators(), 1u);
    EXPECT_EQ(sim.manipulatorName(0), "base");
    const HxIndividualManipulator& manipulator = sim.manipulators()[0];
    ASSERT_EQ(manipulator.jointCount(), 3u);
    ASSERT_EQ(manipulator.numberOfLinks(), 3u);
    const char* links[] = {"shoulder", "upper", "fore"};
    for (HxU32 j = 0; j < 3; ++j) {
      EXPECT_EQ(manipulator.link(j)->identifier(), links[j]);
      EXPECT_EQ(manipulator.link(j)->index(), j);
    }
    ASSERT_EQ(manipulator.numberOfEndEffectors(), 2u);
    for (HxU32 e = 0; e < 2; ++e) {
      const bool point = sim.endEffectorName(0, e) == "probe";
      EXPECT_EQ(sim.endEffectorName(0, e), point ? "probe" : "flange");
      EXPECT_EQ(manipulator.endEffector(e).token(),
                point ? HxControl::HxPointEndEffectorToken : HxControl::HxFrameEndEffectorToken);
    }

    // Gravity swings the arm (dynamic), the controller moves it (kinematic).
    sim.setPathPoints(0, {HxEndEffectorPlacement(HxVector(0.2, 0.3, 0.6), HxOrientation())});
    double fastest = 0.0;
    for (int step = 1; step <= 300; ++step) {
      ASSERT_TRUE(sim.step());
      if (step % 100 != 0) continue;
      loadJoints(sim, 0, m, d);
      mj_kinematics(m, d);
      mj_comPos(m, d);
      const HxManipulatorActiveState& state = sim.activeStates()[0];
      for (double q : state.velocityState().jointVelocities()) fastest = std::max(fastest, std::fabs(q));
      for (HxU32 e = 0; e < 2; ++e) {
        SCOPED_TRACE(sim.endEffectorName(0, e));
        const int body = mj_name2id(m, mjOBJ_BODY, ((e == 0 ? "ee_frame:" : "ee_point:") + sim.endEffectorName(0, e)).c_str());
        ASSERT_GE(body, 0);
        expectPlacement(manipulator.endEffectorPlacement(e, state), d->xpos + 3 * body, d->xquat + 4 * body);
        expectPlacement(sim.endEffectorPlacements()[0].endEffectorPlacement(e, sim.systemPositionStates()[0], manipulator),
                        d->xpos + 3 * body, d->xquat + 4 * body);
        // The end effector moves with its frame origin: J(origin) q̇.
        double jacp[3 * 3], jacr[3 * 3], linear[3], angular[3];
        mj_jacBody(m, d, jacp, jacr, body);
        mju_mulMatVec(linear, jacp, d->qvel, 3, m->nv);
        mju_mulMatVec(angular, jacr, d->qvel, 3, m->nv);
        HxGeneralMotion velocity;
        ASSERT_TRUE(manipulator.endEffector(e).velocity(manipulator, state, velocity));
        expectMotion(velocity, vec(linear), vec(angular), 1e-12);
      }
    }
    EXPECT_GT(fastest, 0.05);  // the velocities checked were not all zero
  }
}

INSTANTIATE_TEST_SUITE_P(BothModes, MujocoModelFormsTest, ::testing::Values(Mode::Dynamic, Mode::Kinematic),
                         [](const ::testing::TestParamInfo<Mode>& modeInfo) {
                           return modeInfo.param == Mode::Dynamic ? "Dynamic" : "Kinematic";
                         });

// A manipulator on a free base: its base placement, velocity and acceleration are the free
// joint's, its end-effector placement and centre of mass the engine's, step after step of a
// reference engine run with the same controls; the kinematics of a state with the base moved
// elsewhere are MuJoCo's for that state.
TEST_F(MujocoTest, FreeBaseManipulatorFollowsTheEngine) {
  HxMujocoSimulation sim;
  ASSERT_TRUE(sim.loadString(kFloatingArm)) << sim.lastError();
  ASSERT_EQ(sim.numberOfManipulators(), 1u);
  EXPECT_EQ(sim.manipulatorName(0), "drone");
  const HxIndividualManipulator& manipulator = sim.manipulators()[0];
  ASSERT_EQ(manipulator.jointCount(), 3u);
  EXPECT_EQ(manipulator.link(0)->identifier(), "turret");
  ASSERT_EQ(manipulator.numberOfEndEffectors(), 1u);

  Reference ref;
  loadReference(ref, hxmujocotest::writeModelFile("hx_floating_arm.xml", kFloatingArm));
  const mjModel* m = ref.model;
  mjData* d = ref.data;
  const int root = mj_name2id(m, mjOBJ_BODY, "drone");
  const int site = mj_name2id(m, mjOBJ_SITE, "ee_frame:grip");
  mj_resetDataKeyframe(m, d, 0);
  const double dt = sim.timestep();

  HxManipulatorActiveState previous = sim.activeStates()[0];
  for (int step = 0; step <= 200; ++step) {
    // The reference integrates its last evaluation, then evaluates the new state with the
    // simulation's controls.
    if (step > 0) {
      ASSERT_TRUE(sim.step());
      mj_Euler(m, d);
    }
    mju_copy(d->ctrl, sim.manipulatorControlInputs()[0].values().data(), m->nu);
    mj_forward(m, d);
    const HxManipulatorActiveState& state = sim.activeStates()[0];
    const HxCoordSystemXform& base = state.positionState().coordSystemXform();
    const double* quat = d->qpos + 3;
    ASSERT_LT(base.translation().distanceTo(vec(d->qpos)), 1e-9) << "step " << step;
    EXPECT_LT(angleBetween(base.orientation(), HxOrientation(quat[0], quat[1], quat[2], quat[3])), 1e-9);
    expectMotion(state.velocityState().baseVelocity(), vec(d->qvel), toWorld(quat, d->qvel + 3), 1e-9);
    expectMotion(state.accelerationState().baseAcceleration(), vec(d->qacc), toWorld(quat, d->qacc + 3), 1e-7);
    EXPECT_EQ(sim.individualSimulators()[0].baseAcceleration(), state.accelerationState().baseAcceleration());
    double siteQuat[4];
    mju_mat2Quat(siteQuat, d->site_xmat + 9 * site);
    expectPlacement(manipulator.endEffectorPlacement(0, state), d->site_xpos + 3 * site, siteQuat);
    expectPlacement(sim.endEffectorPlacements()[0].endEffectorPlacement(0, sim.systemPositionStates()[0], manipulator),
                    d->site_xpos + 3 * site, siteQuat);
    EXPECT_LT(manipulator.centerOfMass(state).distanceTo(vec(d->subtree_com + 3 * root)), 1e-12);

    // Semi-implicit Euler: the base moved over the step by the new velocity.
    if (step > 0) {
      const HxCoordSystemXform& before = previous.positionState().coordSystemXform();
      double angle = 0.0;
      HxVector axis;
      before.orientation().angleAxisBetween(base.orientation(), angle, axis);
      expectMotion(state.velocityState().baseVelocity(), (base.translation() - before.translation()) * (1.0 / dt),
                   axis * (angle / dt), 1e-6);
    }
    previous = state;
  }
  EXPECT_LT(previous.positionState().coordSystemXform().translation()[2], 1.4);  // it fell

  // Any state: the base moved and turned, other joint values; MuJoCo evaluates it on a copy.
  HxManipulatorActiveState moved = previous;
  moved.mutablePositionState().setCoordSystemXform(
      HxCoordSystemXform(HxVector(-0.4, 0.7, 2.0), HxOrientation::fromAxisAngle(HxVector(1, -2, 0.5), 1.1)));
  moved.mutableVelocityState().setBaseVelocity(HxGeneralMotion(0.2, -0.3, 0.1, -0.7, 0.4, 0.9));
  moved.mutableAccelerationState().setBaseAcceleration(HxGeneralMotion(1.0, 0.5, -2.0, 0.3, -1.2, 0.6));
  for (HxU32 j = 0; j < 3; ++j) {
    moved.mutablePositionState().mutableJointPositions()[j] = 0.3 - 0.4 * j;
    moved.mutableVelocityState().mutableJointVelocities()[j] = -0.5 + 0.6 * j;
    moved.mutableAccelerationState().mutableJointAccelerations()[j] = 2.0 - 1.5 * j;
  }
  mjData* copy = mj_makeData(m);
  const HxCoordSystemXform& base = moved.positionState().coordSystemXform();
  const HxGeneralMotion& v = moved.velocityState().baseVelocity();
  const HxGeneralMotion& a = moved.accelerationState().baseAcceleration();
  for (int i = 0; i < 3; ++i) {
    copy->qpos[i] = base.translation()[i];
    copy->qvel[i] = v[i];
    copy->qacc[i] = a[i];
  }
  for (int i = 0; i < 4; ++i) copy->qpos[3 + i] = base.orientation()[i];
  const double inverse[4] = {copy->qpos[3], -copy->qpos[4], -copy->qpos[5], -copy->qpos[6]};
  const double angularVelocity[3] = {v[3], v[4], v[5]}, angularAcceleration[3] = {a[3], a[4], a[5]};
  mju_rotVecQuat(copy->qvel + 3, angularVelocity, inverse);  // the free joint's is body-frame
  mju_rotVecQuat(copy->qacc + 3, angularAcceleration, inverse);
  for (int j = 0; j < 3; ++j) {
    copy->qpos[7 + j] = moved.positionState().jointPositions()[j];
    copy->qvel[6 + j] = moved.velocityState().jointVelocities()[j];
    copy->qacc[6 + j] = moved.accelerationState().jointAccelerations()[j];
  }
  mj_kinematics(m, copy);
  mj_comPos(m, copy);
  mj_comVel(m, copy);
  mj_rnePostConstraint(m, copy);
  double siteQuat[4], jacp[3 * 9], jacr[3 * 9], linear[3], angular[3], acceleration[6];
  mju_mat2Quat(siteQuat, copy->site_xmat + 9 * site);
  expectPlacement(manipulator.endEffectorPlacement(0, moved), copy->site_xpos + 3 * site, siteQuat);
  EXPECT_LT(manipulator.centerOfMass(moved).distanceTo(vec(copy->subtree_com + 3 * root)), 1e-12);
  mj_jacSite(m, copy, jacp, jacr, site);
  mju_mulMatVec(linear, jacp, copy->qvel, 3, m->nv);
  mju_mulMatVec(angular, jacr, copy->qvel, 3, m->nv);
  HxGeneralMotion motion;
  ASSERT_TRUE(manipulator.endEffector(0).velocity(manipulator, moved, motion));
  expectMotion(motion, vec(linear), vec(angular), 1e-12);
  mj_objectAcceleration(m, copy, mjOBJ_SITE, site, acceleration, 0);  // (angular, linear), carrying -g
  ASSERT_TRUE(manipulator.endEffector(0).acceleration(manipulator, moved, motion));
  expectMotion(motion, vec(acceleration + 3) + HxVector(0, 0, -9.81), vec(acceleration), 1e-12);
  mj_deleteData(copy);

  // Kinematic mode: the base stays where it is and at rest, from the start (the keyframe's
  // velocities notwithstanding).
  ASSERT_TRUE(sim.loadString(kFloatingArm, Mode::Kinematic));
  const HxCoordSystemXform start = sim.activeStates()[0].positionState().coordSystemXform();
  for (int step = 0; step < 50; ++step) {
    EXPECT_EQ(sim.activeStates()[0].positionState().coordSystemXform(), start);
    EXPECT_EQ(sim.activeStates()[0].velocityState().baseVelocity(), HxGeneralMotion());
    if (step == 0) {
      for (double q : sim.activeStates()[0].velocityState().jointVelocities()) EXPECT_EQ(q, 0.0);
    }
    ASSERT_TRUE(sim.step());
  }
}

}  // namespace
