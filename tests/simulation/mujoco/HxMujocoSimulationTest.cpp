// Tests of HxMujocoSimulation: real MuJoCo runs checked against the engine itself and against
// physics (finite differences, energy balance, reaching, events).

#include <unistd.h>
#include "simulation/mujoco/HxMujocoSimulation.h"

#include <gtest/gtest.h>
#include <mujoco/mujoco.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/HxAllocationCounter.h"
#include "framework/HxPrint.h"
#include "simulation/HxBasePowerConverter.h"
#include "tests/simulation/mujoco/HxMujocoTestFixture.h"

namespace {

using Mode = HxMujocoSimulation::Mode;

const std::string kDefaultScene = std::string(HX_SOURCE_DIR) + "/examples/models/two_arms_table.xml";

// Two-link planar arm (hinges about y), no damping, friction, contacts or armature.
const char* kPlanarArm = R"(
<mujoco model="planar">
  <compiler angle="radian"/>
  <option timestep="0.001" integrator="RK4" gravity="0 0 -9.81">
    <flag energy="enable"/>
  </option>
  <size nuser_actuator="1"/>
  <default>
    <geom type="capsule" size="0.03" contype="0" conaffinity="0"/>
    <joint type="hinge" axis="0 1 0" limited="true" range="-2.5 2.5"/>
  </default>
  <worldbody>
    <body name="arm" pos="0 0 1">
      <body name="upper">
        <joint name="shoulder"/>
        <geom fromto="0 0 0 0.5 0 0"/>
        <body name="lower" pos="0.5 0 0">
          <joint name="elbow" range="-0.6 2.5"/>
          <geom fromto="0 0 0 0.4 0 0"/>
          <site name="ee_point:tip" pos="0.4 0 0"/>
        </body>
      </body>
    </body>
    <site name="path:arm:0" pos="0.5 0 1.4"/>
    <site name="path:arm:1" pos="0.6 0 0.7"/>
  </worldbody>
  <actuator>
    <motor joint="shoulder" gear="50" user="0.8"/>
    <motor joint="elbow" gear="20"/>
  </actuator>
  <keyframe><key qpos="0.3 0.8"/></keyframe>
</mujoco>)";

double distance(const HxVector& a, const HxVector& b) { return a.distanceTo(b); }

double angleBetween(const HxOrientation& a, const HxOrientation& b) {
  double angle = 0.0;
  HxVector axis;
  a.angleAxisBetween(b, angle, axis);
  return angle;
}

// Writes the simulation's joint positions and velocities into reference data.
void copyState(const HxMujocoSimulation& sim, const mjModel* m, mjData* d) {
  int k = 0;
  for (HxU32 i = 0; i < sim.numberOfManipulators(); ++i) {
    const auto& state = sim.activeStates()[i];
    for (std::size_t j = 0; j < state.positionState().jointPositions().size(); ++j, ++k) {
      d->qpos[k] = state.positionState().jointPositions()[j];
      d->qvel[k] = state.velocityState().jointVelocities()[j];
    }
  }
  ASSERT_EQ(k, m->nq);  // the test models have hinge joints only
}

// Load failures are results with a message, never crashes.
TEST_F(MujocoTest, LoadFailuresReportAClearMessage) {
  HxMujocoSimulation sim;
  Hx::ScopedPrintCapture capture;
  EXPECT_FALSE(sim.loadFile("/nonexistent/model.xml"));
  EXPECT_EQ(sim.lastError().rfind("cannot load model '/nonexistent/model.xml': ", 0), 0u) << sim.lastError();
  EXPECT_FALSE(sim.isLoaded());
  EXPECT_EQ(sim.numberOfManipulators(), 0u);
  EXPECT_FALSE(sim.step());

  EXPECT_FALSE(sim.loadString("<mujoco><worldbody><body></mujoco>"));
  EXPECT_EQ(sim.lastError().rfind("cannot load model text: ", 0), 0u) << sim.lastError();

  EXPECT_FALSE(sim.loadString(R"(<mujoco><worldbody><body name="b">
      <joint type="hinge"/><joint type="hinge" axis="1 0 0"/><geom size="0.1"/></body></worldbody></mujoco>)"));
  EXPECT_EQ(sim.lastError(),
            "cannot load model text: body \"b\" carries 2 joint(s) of which not all are hinge or slide; "
            "a link carries exactly one hinge or slide joint");
  ASSERT_EQ(capture.records().size(), 3u);
  EXPECT_EQ(capture.records()[2].type, Hx::Print::Error);

  // A failed load after a good one leaves the simulation empty.
  ASSERT_TRUE(sim.loadString(kPlanarArm));
  EXPECT_FALSE(sim.loadString("not xml"));
  EXPECT_EQ(sim.numberOfManipulators(), 0u);
}

// Manipulators, links, end effectors, drives and path points follow the model conventions.
TEST_F(MujocoTest, DefaultSceneFollowsTheModelConventions) {
  HxMujocoSimulation sim;
  ASSERT_TRUE(sim.loadFile(kDefaultScene)) << sim.lastError();
  ASSERT_EQ(sim.numberOfManipulators(), 2u);
  const char* sides[] = {"left", "right"};
  const double gears[] = {100, 150, 100, 50, 50, 30};
  for (HxU32 m = 0; m < 2; ++m) {
    const std::string side = sides[m];
    EXPECT_EQ(sim.manipulatorName(m), side + "_base");
    const HxIndividualManipulator& manipulator = sim.manipulators()[m];
    ASSERT_EQ(manipulator.jointCount(), 6u);
    ASSERT_EQ(manipulator.numberOfLinks(), 6u);
    for (HxU32 j = 0; j < 6; ++j) {
      ASSERT_NE(manipulator.link(j), nullptr);
      EXPECT_EQ(manipulator.link(j)->identifier(), side + "_link" + std::to_string(j + 1));
      EXPECT_EQ(manipulator.link(j)->index(), j);
      EXPECT_EQ(manipulator.jointDrive(j).scaleFactor(), gears[j]);
      const auto* motor = dynamic_cast<const HxDcElectricMotor*>(manipulator.jointDrive(j).powerConverter());
      ASSERT_NE(motor, nullptr);
      EXPECT_DOUBLE_EQ(motor->divisor(), gears[j] * 0.85);
    }
    ASSERT_EQ(manipulator.numberOfEndEffectors(), 2u);
    EXPECT_EQ(manipulator.endEffector(0).token(), HxControl::HxFrameEndEffectorToken);
    EXPECT_EQ(manipulator.endEffector(1).token(), HxControl::HxPointEndEffectorToken);
    EXPECT_EQ(sim.endEffectorName(m, 0), side + "_tool");
    EXPECT_EQ(sim.endEffectorName(m, 1), side + "_probe");
    EXPECT_EQ(sim.pathPoints(m).size(), 4u);
    EXPECT_EQ(sim.pathPointIndex(m), 0u);
  }
  EXPECT_EQ(sim.endEffectorName(2, 0), "");
  EXPECT_DOUBLE_EQ(sim.timestep(), 0.002);

  // A joint without actuator has a plain drive; an actuator without efficiency is no motor.
  ASSERT_TRUE(sim.loadString(kPlanarArm));
  ASSERT_EQ(sim.numberOfManipulators(), 1u);
  EXPECT_NE(dynamic_cast<const HxDcElectricMotor*>(sim.manipulators()[0].jointDrive(0).powerConverter()), nullptr);
  EXPECT_EQ(sim.manipulators()[0].jointDrive(1).powerConverter(), nullptr);
  EXPECT_EQ(sim.manipulators()[0].jointDrive(1).scaleFactor(), 20.0);
}

class MujocoModeTest : public MujocoTest, public ::testing::WithParamInterface<Mode> {};

// End-effector placements are the engine's site poses, the centre of mass its subtree centre of
// mass, through the kinematics for any state and through the held placements.
TEST_P(MujocoModeTest, PlacementsAndCenterOfMassAreTheEngines) {
  HxMujocoSimulation sim;
  ASSERT_TRUE(sim.loadFile(kDefaultScene, GetParam()));
  Reference ref;
  loadReference(ref, kDefaultScene);
  const mjModel* m = ref.model;
  mjData* d = ref.data;
  for (int step = 0; step < 600; ++step) {
    ASSERT_TRUE(sim.step());
    if (step % 150 != 149) continue;
    copyState(sim, m, d);
    mj_kinematics(m, d);
    mj_comPos(m, d);
    for (HxU32 k = 0; k < 2; ++k) {
      const HxIndividualManipulator& manipulator = sim.manipulators()[k];
      const HxManipulatorActiveState& state = sim.activeStates()[k];
      for (HxU32 e = 0; e < 2; ++e) {
        const std::string name = (e == 0 ? "ee_frame:" : "ee_point:") + sim.endEffectorName(k, e);
        const int site = mj_name2id(m, mjOBJ_SITE, name.c_str());
        ASSERT_GE(site, 0);
        double quat[4];
        mju_mat2Quat(quat, d->site_xmat + 9 * site);
        const HxVector pos(d->site_xpos[3 * site], d->site_xpos[3 * site + 1], d->site_xpos[3 * site + 2]);
        const HxOrientation orientation(quat[0], quat[1], quat[2], quat[3]);

        const HxEndEffectorPlacement computed = manipulator.endEffectorPlacement(e, state);
        EXPECT_LT(distance(computed.translation(), pos), 1e-12);
        EXPECT_LT(angleBetween(computed.orientation(), orientation), 1e-7);
        const HxEndEffectorPlacement held =
            sim.endEffectorPlacements()[k].endEffectorPlacement(e, sim.systemPositionStates()[k], manipulator);
        EXPECT_LT(distance(held.translation(), pos), 1e-12);
        EXPECT_LT(angleBetween(held.orientation(), orientation), 1e-7);
      }
      const int root = mj_name2id(m, mjOBJ_BODY, sim.manipulatorName(k).c_str());
      const HxVector com = manipulator.centerOfMass(state);
      EXPECT_LT(distance(com, HxVector(d->subtree_com[3 * root], d->subtree_com[3 * root + 1],
                                       d->subtree_com[3 * root + 2])), 1e-12);
    }
  }
}

// Joint velocities are the derivatives of joint positions, end-effector velocities those of
// the placements, end-effector accelerations those of the velocities.
TEST_P(MujocoModeTest, MotionsAgreeWithFiniteDifferences) {
  HxMujocoSimulation sim;
  ASSERT_TRUE(sim.loadFile(kDefaultScene, GetParam()));
  const double dt = sim.timestep();
  for (int step = 0; step < 200; ++step) ASSERT_TRUE(sim.step());  // moving fast by now

  const HxIndividualManipulator& manipulator = sim.manipulators()[0];
  std::vector<HxManipulatorActiveState> states;
  for (int step = 0; step < 3; ++step) {
    states.push_back(sim.activeStates()[0]);
    ASSERT_TRUE(sim.step());
  }
  states.push_back(sim.activeStates()[0]);

  // Joint velocities: semi-implicit Euler and the kinematic control output both make the
  // position difference equal to the new velocity.
  double fastest = 0.0;
  for (std::size_t j = 0; j < 6; ++j) {
    const double difference = (states[1].positionState().jointPositions()[j] -
                               states[0].positionState().jointPositions()[j]) / dt;
    EXPECT_NEAR(states[1].velocityState().jointVelocities()[j], difference, 1e-9);
    fastest = std::max(fastest, std::fabs(difference));
  }
  EXPECT_GT(fastest, 0.05);

  // End-effector velocity: central difference of placements around the middle state.
  const HxEndEffectorPlacement before = manipulator.endEffectorPlacement(0, states[0]);
  const HxEndEffectorPlacement after = manipulator.endEffectorPlacement(0, states[2]);
  HxGeneralMotion velocity;
  ASSERT_TRUE(manipulator.endEffector(0).velocity(manipulator, states[1], velocity));
  for (HxU32 i = 0; i < 3; ++i) {
    EXPECT_NEAR(velocity[i], (after.translation()[i] - before.translation()[i]) / (2 * dt), 2e-3);
  }
  double angle = 0.0;
  HxVector axis;
  before.orientation().angleAxisBetween(after.orientation(), angle, axis);
  for (HxU32 i = 0; i < 3; ++i) EXPECT_NEAR(velocity[3 + i], axis[i] * angle / (2 * dt), 5e-3);

  // End-effector acceleration (dynamic path only): difference of velocities.
  if (GetParam() == Mode::Dynamic) {
    HxGeneralMotion v1, v2, acceleration;
    ASSERT_TRUE(manipulator.endEffector(0).velocity(manipulator, states[1], v1));
    ASSERT_TRUE(manipulator.endEffector(0).velocity(manipulator, states[2], v2));
    ASSERT_TRUE(manipulator.endEffector(0).acceleration(manipulator, states[1], acceleration));
    for (HxU32 i = 0; i < 6; ++i) EXPECT_NEAR(acceleration[i], (v2[i] - v1[i]) / dt, 0.05 + 0.02 * std::fabs(acceleration[i]));
    // A fixed base does not accelerate (gravity is not an acceleration).
    for (HxU32 i = 0; i < 6; ++i) EXPECT_NEAR(sim.individualSimulators()[0].baseAcceleration()[i], 0.0, 1e-9);
  }
}

INSTANTIATE_TEST_SUITE_P(BothModes, MujocoModeTest, ::testing::Values(Mode::Dynamic, Mode::Kinematic),
                         [](const ::testing::TestParamInfo<Mode>& modeInfo) {
                           return modeInfo.param == Mode::Dynamic ? "Dynamic" : "Kinematic";
                         });

// Motor power is scale factor x joint velocity x torque / divisor, which is the electrical
// power of a motor of the declared efficiency: the engine's actuator power over efficiency.
TEST_F(MujocoTest, MotorPowerIsActuatorPowerOverEfficiency) {
  HxMujocoSimulation sim;
  ASSERT_TRUE(sim.loadFile(kDefaultScene));
  Reference ref;
  loadReference(ref, kDefaultScene);
  for (int step = 0; step < 300; ++step) ASSERT_TRUE(sim.step());
  ASSERT_TRUE(sim.powerDataAvailable());
  for (HxU32 k = 0; k < 2; ++k) {
    const HxIndividualManipulator& manipulator = sim.manipulators()[k];
    const auto& torques = sim.manipulatorTorques()[k].values();
    const auto& velocities = sim.activeStates()[k].velocityState().jointVelocities();
    for (HxU32 j = 0; j < 6; ++j) {
      const HxJointDrive& drive = manipulator.jointDrive(j);
      const auto* motor = dynamic_cast<const HxDcElectricMotor*>(drive.powerConverter());
      ASSERT_NE(motor, nullptr);
      const double motorPower = drive.scaleFactor() * velocities[j] * torques[j] / motor->divisor();
      // Actuator space: motor speed = gear x joint speed, motor torque = joint torque / gear;
      // ctrl is the motor torque of a unit-gain motor.
      const int u = static_cast<int>(6 * k + j);
      const double shaftPower = (ref.model->actuator_gear[6 * u] * velocities[j]) * sim.manipulatorControlInputs()[k].values()[j];
      EXPECT_NEAR(motorPower, shaftPower / 0.85, 1e-9 * (1 + std::fabs(motorPower)));
    }
  }
}

// Without damping, friction or contacts the work of the joint torques is the change of
// mechanical energy.
TEST_F(MujocoTest, ManipulatorWorkMatchesEnergyChange) {
  HxMujocoSimulation sim;
  ASSERT_TRUE(sim.loadString(kPlanarArm));
  mjModel* m = nullptr;
  {
    // The reference instance compiles the same text through a file.
    const std::string file = ::testing::TempDir() + std::to_string(::getpid()) + "_hx_planar_arm.xml";
    FILE* out = std::fopen(file.c_str(), "w");
    ASSERT_NE(out, nullptr);
    std::fputs(kPlanarArm, out);
    std::fclose(out);
    char error[512];
    m = mj_loadXML(file.c_str(), nullptr, error, sizeof error);
    ASSERT_NE(m, nullptr) << error;
  }
  mjData* d = mj_makeData(m);
  auto energy = [&]() {
    copyState(sim, m, d);
    mj_fwdPosition(m, d);
    mj_energyPos(m, d);
    mj_energyVel(m, d);
    return d->energy[0] + d->energy[1];
  };

  const double dt = sim.timestep();
  const double initial = energy();
  double work = 0.0, absoluteWork = 0.0;
  auto power = [&]() {
    double p = 0.0;
    for (std::size_t j = 0; j < 2; ++j) {
      p += sim.manipulatorTorques()[0].values()[j] * sim.activeStates()[0].velocityState().jointVelocities()[j];
    }
    return p;
  };
  double previous = power();
  for (int step = 0; step < 2000; ++step) {
    ASSERT_TRUE(sim.step());
    const double current = power();
    work += 0.5 * (previous + current) * dt;
    absoluteWork += 0.5 * std::fabs(previous + current) * dt;
    previous = current;
  }
  const double change = energy() - initial;
  EXPECT_GT(std::fabs(change), 1.0);  // the arm moved through the gravity field
  // Stated tolerance: 0.5 % of the work done (torques are held over a step, power is sampled).
  EXPECT_NEAR(work, change, 0.005 * absoluteWork) << "work " << work << " energy change " << change;
  mj_deleteData(d);
  mj_deleteModel(m);
}

// In the default scene both arms reach every path point in order, in both modes.
TEST_P(MujocoModeTest, DefaultSceneReachesEveryPathPoint) {
  HxMujocoSimulation sim;
  ASSERT_TRUE(sim.loadFile(kDefaultScene, GetParam()));
  std::vector<std::vector<HxU32>> visited(2);
  int steps = 0;
  while (!sim.allPathsCompleted() && sim.time() < 30.0) {
    ASSERT_TRUE(sim.step());
    ++steps;
    for (HxU32 k = 0; k < 2; ++k) {
      if (visited[k].empty() || visited[k].back() != sim.pathPointIndex(k)) visited[k].push_back(sim.pathPointIndex(k));
      EXPECT_FALSE(sim.propagationResults()[k].collisionOccurred()) << "t = " << sim.time();
      EXPECT_FALSE(sim.propagationResults()[k].hitJointLimit()) << "t = " << sim.time();
      EXPECT_FALSE(sim.propagationResults()[k].hitSingularity()) << "t = " << sim.time();
    }
  }
  ASSERT_TRUE(sim.allPathsCompleted()) << "t = " << sim.time();
  for (HxU32 k = 0; k < 2; ++k) {
    EXPECT_EQ(visited[k], (std::vector<HxU32>{0, 1, 2, 3}));
    EXPECT_TRUE(sim.pathCompleted(k));
    // At the end the desired placement of every end effector is met.
    const HxIndividualManipulator& manipulator = sim.manipulators()[k];
    for (HxU32 e = 0; e < 2; ++e) {
      const HxEndEffectorPlacement actual = manipulator.endEffectorPlacement(e, sim.activeStates()[k]);
      const HxEndEffectorPlacement wanted =
          sim.desiredEndEffectorPlacements()[k].endEffectorPlacement(e, sim.activeStates()[k].activePositionState(), manipulator);
      EXPECT_LE(distance(actual.translation(), wanted.translation()), 1.5e-3);
      EXPECT_LE(distance(wanted.translation(), sim.pathPoints(k).back().translation()), e == 0 ? 1e-12 : 0.2);
    }
  }
}

// Structural and external forces make physical sense: at rest the first link carries the
// weight of the arm above it; with nothing touching, no external force acts.
TEST_F(MujocoTest, ForcesAtRestCarryTheArmsWeight) {
  HxMujocoSimulation sim;
  ASSERT_TRUE(sim.loadFile(kDefaultScene));
  sim.setPathPoints(0, {});
  sim.setPathPoints(1, {});
  for (int step = 0; step < 1500; ++step) ASSERT_TRUE(sim.step());
  Reference ref;
  loadReference(ref, kDefaultScene);
  const int link1 = mj_name2id(ref.model, mjOBJ_BODY, "left_link1");
  const double weight = ref.model->body_subtreemass[link1] * 9.81;
  const HxLinkForceState& force = sim.individualSimulators()[0].linkForceStates()[0];
  ASSERT_TRUE(force.isValid());
  EXPECT_NEAR(force.force()[2], weight, 1e-3 * weight);
  EXPECT_NEAR(force.force()[0], 0.0, 1e-3 * weight);
  for (std::size_t j = 0; j < 6; ++j) {
    for (HxU32 i = 0; i < 6; ++i) EXPECT_EQ(sim.manipulatorExternalForces()[0].forces()[j][i], 0.0);
    EXPECT_NEAR(sim.activeStates()[0].velocityState().jointVelocities()[j], 0.0, 1e-6);
  }
  // At rest the joint torques are the gravity torques, and the motors supply them.
  copyState(sim, ref.model, ref.data);
  mj_forward(ref.model, ref.data);
  for (std::size_t j = 0; j < 6; ++j) {
    const double gravity = ref.data->qfrc_bias[j];
    EXPECT_NEAR(sim.individualSimulators()[0].jointTorques()[j], gravity, 1e-3 * (1 + std::fabs(gravity)));
    EXPECT_NEAR(sim.manipulatorTorques()[0].values()[j], gravity, 1e-3 * (1 + std::fabs(gravity)));
  }
  EXPECT_GT(std::fabs(sim.individualSimulators()[0].jointTorques()[1]), 1.0);

  // Kinematic mode computes no forces.
  ASSERT_TRUE(sim.setMode(Mode::Kinematic));
  ASSERT_TRUE(sim.step());
  EXPECT_FALSE(sim.dynamicsEnabled());
  EXPECT_FALSE(sim.powerDataAvailable());
  EXPECT_FALSE(sim.individualSimulators()[0].linkForceStates()[0].isValid());
}

// Driving an arm into the table raises the collision flag, with an external force on the link
// that touches.
TEST_F(MujocoTest, DrivingIntoTheTableRaisesTheCollisionFlag) {
  HxMujocoSimulation sim;
  ASSERT_TRUE(sim.loadFile(kDefaultScene));
  EXPECT_FALSE(sim.propagationResults()[0].collisionOccurred());
  const HxOrientation down(0.0, 0.0, 1.0, 0.0);  // 180 degrees about y: tool pointing down
  sim.setPathPoints(0, {HxEndEffectorPlacement(HxVector(0.45, 0.3, 0.6), down)});
  bool collided = false, pushed = false;
  for (int step = 0; step < 2000 && !collided; ++step) {
    ASSERT_TRUE(sim.step());
    collided = sim.propagationResults()[0].collisionOccurred();
    for (const auto& force : sim.manipulatorExternalForces()[0].forces()) pushed = pushed || force[2] > 0.0;
  }
  EXPECT_TRUE(collided);
  for (int step = 0; step < 50; ++step) ASSERT_TRUE(sim.step());
  for (const auto& force : sim.manipulatorExternalForces()[0].forces()) pushed = pushed || force[2] > 0.0;
  EXPECT_TRUE(pushed);
  EXPECT_FALSE(sim.propagationResults()[1].collisionOccurred());
}

// A target out of the joints' range drives a joint into its limit; a stretched arm is singular.
TEST_F(MujocoTest, JointLimitAndSingularityFlags) {
  HxMujocoSimulation sim;
  ASSERT_TRUE(sim.loadString(kPlanarArm, Mode::Kinematic));
  EXPECT_FALSE(sim.propagationResults()[0].hitJointLimit());
  EXPECT_FALSE(sim.propagationResults()[0].hitSingularity());
  // Close to the shoulder: the elbow would have to fold beyond its range of 2.5 rad.
  sim.setPathPoints(0, {HxEndEffectorPlacement(HxVector(0.05, 0.0, 1.0), HxOrientation())});
  bool limit = false;
  for (int step = 0; step < 5000 && !limit; ++step) {
    ASSERT_TRUE(sim.step());
    limit = sim.propagationResults()[0].hitJointLimit();
  }
  EXPECT_TRUE(limit);
  EXPECT_NEAR(sim.activeStates()[0].positionState().jointPositions()[1], 2.5, 1e-3);

  // Straight out of reach: the arm stretches and its Jacobian loses rank.
  sim.setPathPoints(0, {HxEndEffectorPlacement(HxVector(3.0, 0.0, 1.0), HxOrientation())});
  bool singular = false;
  for (int step = 0; step < 10000 && !singular; ++step) {
    ASSERT_TRUE(sim.step());
    singular = sim.propagationResults()[0].hitSingularity();
  }
  EXPECT_TRUE(singular);
  EXPECT_NEAR(sim.activeStates()[0].positionState().jointPositions()[1], 0.0, 0.01);
}

// Stepping and refreshing every query allocates nothing, in both modes.
TEST_P(MujocoModeTest, StepsDoNotAllocate) {
  HxMujocoSimulation sim;
  ASSERT_TRUE(sim.loadFile(kDefaultScene, GetParam()));
  ASSERT_TRUE(sim.step());
  HxAllocationCounter counter;
  for (int step = 0; step < 500; ++step) sim.step();
  sim.reset();
  sim.step();
  EXPECT_EQ(counter.allocations(), 0u);

  // The kinematics queries for a given state do not allocate either.
  const HxManipulatorActiveState state = sim.activeStates()[1];
  counter.restart();
  HxEndEffectorPlacement placement;
  HxGeneralMotion motion;
  HxVector com;
  const HxManipulatorKinematics& kinematics = sim.manipulators()[1].kinematics();
  EXPECT_TRUE(kinematics.endEffectorPlacement(1, state, placement));
  EXPECT_TRUE(kinematics.endEffectorVelocity(0, state, motion));
  EXPECT_TRUE(kinematics.endEffectorAcceleration(0, state, motion));
  EXPECT_TRUE(kinematics.centerOfMass(state, com));
  EXPECT_FALSE(kinematics.endEffectorPlacement(2, state, placement));
  EXPECT_EQ(counter.allocations(), 0u);
}

// reset() returns to the initial state and the first path point.
TEST_F(MujocoTest, ResetRestartsTheRun) {
  HxMujocoSimulation sim;
  ASSERT_TRUE(sim.loadFile(kDefaultScene));
  const HxManipulatorActiveState initial = sim.activeStates()[0];
  while (sim.pathPointIndex(0) == 0) ASSERT_TRUE(sim.step());
  sim.reset();
  EXPECT_EQ(sim.time(), 0.0);
  EXPECT_EQ(sim.pathPointIndex(0), 0u);
  EXPECT_EQ(sim.activeStates()[0].positionState(), initial.positionState());
  EXPECT_EQ(sim.controlOutputPositionStates()[0].jointPositions(), initial.positionState().jointPositions());
}

}  // namespace
