// Tests of HxMujocoSimulation: real MuJoCo runs checked against the engine itself and against
// physics (finite differences, energy balance, reaching, events).

#include "simulation/mujoco/HxMujocoSimulation.h"

#include <cmath>

#include "framework/HxPrint.h"
#include "simulation/HxBasePowerConverter.h"
#include "tests/simulation/mujoco/HxMujocoTestFixture.h"
#include "tests/support/HxAllocationCounter.h"

namespace {

using namespace hxmujocotest;

// Load failures are results with a message, never crashes; the simulation is then empty. (A
// file the engine refuses is in hxrecord's failure table.)
TEST_F(MujocoTest, LoadFailuresReportAClearMessage) {
  Hx::ScopedPrintCapture capture;
  double energy = -1.0;
  EXPECT_FALSE(sim_.mechanicalEnergy(energy) || sim_.step() || sim_.isLoaded() || energy != 0.0);
  EXPECT_FALSE(sim_.loadString("<mujoco><worldbody><body></mujoco>"));
  EXPECT_EQ(sim_.lastError().rfind("cannot load model text: ", 0), 0u) << sim_.lastError();

  ASSERT_TRUE(sim_.loadString(kPlanarArm));
  EXPECT_FALSE(sim_.loadString(R"(<mujoco><worldbody><body name="b">
      <joint type="hinge"/><joint type="hinge" axis="1 0 0"/><geom size="0.1"/></body></worldbody></mujoco>)"));
  EXPECT_EQ(sim_.lastError(),
            "cannot load model text: body \"b\" carries 2 joint(s) of which not all are hinge or slide; "
            "a link carries exactly one hinge or slide joint");
  EXPECT_FALSE(sim_.numberOfManipulators() != 0u || sim_.step());
  EXPECT_TRUE(capture.records().size() == 2u && capture.records()[1].type == Hx::Print::Error);
}

// Drives follow the model conventions: the actuator's gear, and a DC motor where the actuator
// gives an efficiency. (Names are in hxrecord's failure messages, path points in the reaching
// test below.)
TEST_F(MujocoTest, DefaultSceneFollowsTheModelConventions) {
  ASSERT_TRUE(sim_.loadFile(kDefaultScene)) << sim_.lastError();
  ASSERT_EQ(sim_.numberOfManipulators(), 2u);
  const double gears[] = {100, 150, 100, 50, 50, 30};
  for (HxU32 m = 0; m < 2; ++m) {
    ASSERT_EQ(sim_.manipulators()[m].jointCount(), 6u);
    for (HxU32 j = 0; j < 6; ++j) {
      const HxJointDrive& drive = sim_.manipulators()[m].jointDrive(j);
      const auto* motor = dynamic_cast<const HxDcElectricMotor*>(drive.powerConverter());
      ASSERT_NE(motor, nullptr);
      EXPECT_TRUE(drive.scaleFactor() == gears[j] && std::fabs(motor->divisor() - gears[j] * 0.85) < 1e-12) << j;
    }
  }
  EXPECT_TRUE(sim_.manipulatorName(2).empty() && sim_.endEffectorName(1, 2).empty());
  double energy = -1.0;
  EXPECT_FALSE(sim_.mechanicalEnergy(energy) || energy != 0.0);  // the scene does not enable the engine's energy

  // An actuator without an efficiency gives a plain drive of its gear, no motor.
  ASSERT_TRUE(sim_.loadString(kPlanarArm));
  EXPECT_NE(dynamic_cast<const HxDcElectricMotor*>(sim_.manipulators()[0].jointDrive(0).powerConverter()), nullptr);
  EXPECT_EQ(sim_.manipulators()[0].jointDrive(1).powerConverter(), nullptr);
  EXPECT_EQ(sim_.manipulators()[0].jointDrive(1).scaleFactor(), 20.0);
}

// Joint velocities are the derivatives of joint positions, joint accelerations those of the
// joint velocities.
TEST_P(MujocoModeTest, MotionsAgreeWithFiniteDifferences) {
  ASSERT_TRUE(sim_.loadFile(kDefaultScene, GetParam()));
  const double dt = sim_.timestep();
  for (int step = 0; step < 200; ++step) ASSERT_TRUE(sim_.step());  // moving fast by now
  std::vector<HxManipulatorActiveState> states;
  for (int step = 0; step < 2; ++step) {
    states.push_back(sim_.activeStates()[0]);
    ASSERT_TRUE(sim_.step());
  }

  // Semi-implicit Euler and the kinematic control output both make the position difference
  // equal to the new velocity. The engine's accelerations take the velocity to the next step's
  // (up to its implicit damping); the control output's are the velocity change of the last step.
  const HxManipulatorActiveState& accelerating = states[GetParam() == Mode::Dynamic ? 0 : 1];
  double fastest = 0.0;
  for (std::size_t j = 0; j < 6; ++j) {
    const double difference =
        (states[1].positionState().jointPositions()[j] - states[0].positionState().jointPositions()[j]) / dt;
    EXPECT_NEAR(states[1].velocityState().jointVelocities()[j], difference, 1e-9);
    fastest = std::max(fastest, std::fabs(difference));
    const double a = accelerating.accelerationState().jointAccelerations()[j];
    const auto& v0 = states[0].velocityState().jointVelocities();
    EXPECT_NEAR(a, (states[1].velocityState().jointVelocities()[j] - v0[j]) / dt, 0.05 + 0.02 * std::fabs(a));
  }
  EXPECT_GT(fastest, 0.05);

  // A fixed base does not accelerate (gravity is not an acceleration). (End-effector
  // accelerations are compared with the engine's on a free base.)
  EXPECT_EQ(sim_.individualSimulators()[0].baseAcceleration(), HxGeneralMotion());
}

// The energy is MuJoCo's for the state the simulation reports (gravity, the spring, the
// motion); in dynamic mode, without damping, friction or contacts, it changes by the work of
// the joint torques.
TEST_P(MujocoModeTest, EnergyIsTheEnginesAndChangesByTheWorkDone) {
  ASSERT_TRUE(sim_.loadString(kPlanarArm, GetParam()));
  Reference ref = Reference::ofText(kPlanarArm);
  // The arm starts at rest: no power at first.
  double initial = 0.0, energy = 0.0, work = 0.0, absoluteWork = 0.0, previous = 0.0, largestKinetic = 0.0;
  ASSERT_TRUE(sim_.mechanicalEnergy(initial));
  for (int step = 1; step <= 2000; ++step) {
    ASSERT_TRUE(sim_.step());
    const auto& torques = sim_.manipulatorTorques()[0].values();
    const auto& velocities = sim_.activeStates()[0].velocityState().jointVelocities();
    const double current = torques[0] * velocities[0] + torques[1] * velocities[1];
    work += 0.5 * (previous + current) * sim_.timestep();
    absoluteWork += 0.5 * std::fabs(previous + current) * sim_.timestep();
    previous = current;
    if (step % 250 != 0) continue;
    loadJoints(sim_, ref.model.get(), ref.data.get());
    mj_forward(ref.model.get(), ref.data.get());  // with the model's energy
    ASSERT_TRUE(sim_.mechanicalEnergy(energy));
    const double* engine = ref.data->energy;
    EXPECT_NEAR(energy, engine[0] + engine[1], 1e-12 * (1.0 + std::fabs(energy))) << "step " << step;
    largestKinetic = std::max(largestKinetic, engine[1]);
  }
  EXPECT_GT(largestKinetic, 0.01);  // the arm was moving: both parts were compared
  if (GetParam() == Mode::Kinematic) return;
  EXPECT_GT(std::fabs(energy - initial), 1.0);  // the arm moved through the gravity field
  // Torques are held over a step and power is sampled: 0.5 % of the work done.
  EXPECT_NEAR(work, energy - initial, 0.005 * absoluteWork);
}

// In the default scene both arms reach every path point in order, without events, and end
// where they are asked to be; reset() starts the run again.
TEST_P(MujocoModeTest, DefaultSceneReachesEveryPathPointAndResets) {
  ASSERT_TRUE(sim_.loadFile(kDefaultScene, GetParam()));
  const HxManipulatorActiveState initial = sim_.activeStates()[0];
  std::vector<std::vector<HxU32>> visited(2);
  while (!sim_.allPathsCompleted() && sim_.time() < 30.0) {
    ASSERT_TRUE(sim_.step());
    for (HxU32 k = 0; k < 2; ++k) {
      if (visited[k].empty() || visited[k].back() != sim_.pathPointIndex(k))
        visited[k].push_back(sim_.pathPointIndex(k));
      const HxPropagationResultData& events = sim_.propagationResults()[k];
      EXPECT_FALSE(events.collisionOccurred() || events.hitJointLimit() || events.hitSingularity()) << sim_.time();
    }
  }
  ASSERT_TRUE(sim_.allPathsCompleted()) << "t = " << sim_.time();
  for (HxU32 k = 0; k < 2; ++k) {
    EXPECT_EQ(visited[k], (std::vector<HxU32>{0, 1, 2, 3}));
    for (HxU32 e = 0; e < 2; ++e) {
      const HxEndEffectorPlacement actual = sim_.manipulators()[k].endEffectorPlacement(e, sim_.activeStates()[k]);
      const HxEndEffectorPlacement wanted = held(sim_.desiredEndEffectorPlacements(), sim_, k, e);
      EXPECT_LE(actual.translation().distanceTo(wanted.translation()), 1.5e-3);
      EXPECT_LE(wanted.translation().distanceTo(sim_.pathPoints(k).back().translation()), e == 0 ? 1e-12 : 0.2);
    }
  }
  sim_.reset();
  EXPECT_TRUE(sim_.time() == 0.0 && sim_.pathPointIndex(0) == 0u && !sim_.pathCompleted(0));
  EXPECT_EQ(sim_.activeStates()[0].positionState(), initial.positionState());
  EXPECT_EQ(sim_.controlOutputPositionStates()[0].jointPositions(), initial.positionState().jointPositions());
}

// At rest the first link carries the weight of the arm above it, the joint torques are the
// gravity torques and the motors supply them through their gears; nothing touches, so no
// external force acts. Kinematic mode computes no forces.
TEST_F(MujocoTest, ForcesAtRestCarryTheArmsWeight) {
  ASSERT_TRUE(sim_.loadFile(kDefaultScene));
  sim_.setPathPoints(0, {});
  sim_.setPathPoints(1, {});
  for (int step = 0; step < 1500; ++step) ASSERT_TRUE(sim_.step());
  Reference ref(kDefaultScene);
  const double weight = ref.model->body_subtreemass[mj_name2id(ref.model.get(), mjOBJ_BODY, "left_link1")] * 9.81;
  const HxLinkForceState& force = sim_.individualSimulators()[0].linkForceStates()[0];
  ASSERT_TRUE(force.isValid());
  EXPECT_NEAR(force.force()[2], weight, 1e-3 * weight);
  loadJoints(sim_, ref.model.get(), ref.data.get());
  mj_forward(ref.model.get(), ref.data.get());
  for (std::size_t j = 0; j < 6; ++j) {
    EXPECT_EQ(sim_.manipulatorExternalForces()[0].forces()[j], HxGeneralForce());
    EXPECT_NEAR(sim_.activeStates()[0].velocityState().jointVelocities()[j], 0.0, 1e-6);
    const double gravity = ref.data->qfrc_bias[j];
    const double torque = sim_.manipulatorTorques()[0].values()[j];
    EXPECT_NEAR(sim_.individualSimulators()[0].jointTorques()[j], gravity, 1e-3 * (1 + std::fabs(gravity)));
    EXPECT_NEAR(torque, gravity, 1e-3 * (1 + std::fabs(gravity)));
    const double input = sim_.manipulatorControlInputs()[0].values()[j];
    EXPECT_NEAR(torque, ref.model->actuator_gear[6 * j] * input, 1e-9 * (1 + std::fabs(torque)));  // the gear
  }
  EXPECT_GT(std::fabs(sim_.individualSimulators()[0].jointTorques()[1]), 1.0);

  ASSERT_TRUE(sim_.setMode(Mode::Kinematic) && sim_.step());
  EXPECT_FALSE(sim_.dynamicsEnabled() || sim_.powerDataAvailable() ||
               sim_.individualSimulators()[0].linkForceStates()[0].isValid());
}

// Driving an arm into the table raises the collision flag, with an external force on the link
// that touches.
TEST_F(MujocoTest, DrivingIntoTheTableRaisesTheCollisionFlag) {
  ASSERT_TRUE(sim_.loadFile(kDefaultScene));
  EXPECT_FALSE(sim_.propagationResults()[0].collisionOccurred());
  const HxOrientation down(0.0, 0.0, 1.0, 0.0);  // 180 degrees about y: tool pointing down
  sim_.setPathPoints(0, {HxEndEffectorPlacement(HxVector(0.45, 0.3, 0.6), down)});
  bool collided = false, pushed = false;
  for (int step = 0; step < 2050 && !pushed; ++step) {
    ASSERT_TRUE(sim_.step());
    collided = collided || sim_.propagationResults()[0].collisionOccurred();
    for (const auto& force : sim_.manipulatorExternalForces()[0].forces()) pushed = pushed || force[2] > 0.0;
  }
  EXPECT_TRUE(collided && pushed && !sim_.propagationResults()[1].collisionOccurred());
}

// A target out of the joints' range drives a joint into its limit; a stretched arm is singular.
TEST_F(MujocoTest, JointLimitAndSingularityFlags) {
  ASSERT_TRUE(sim_.loadString(kPlanarArm, Mode::Kinematic));
  EXPECT_FALSE(sim_.propagationResults()[0].hitJointLimit() || sim_.propagationResults()[0].hitSingularity());
  // Close to the shoulder: the elbow would have to fold beyond its range of 2.5 rad.
  sim_.setPathPoints(0, {HxEndEffectorPlacement(HxVector(0.05, 0.0, 1.0), HxOrientation())});
  for (int step = 0; step < 5000 && !sim_.propagationResults()[0].hitJointLimit(); ++step) ASSERT_TRUE(sim_.step());
  EXPECT_TRUE(sim_.propagationResults()[0].hitJointLimit());
  EXPECT_NEAR(sim_.activeStates()[0].positionState().jointPositions()[1], 2.5, 1e-3);

  // Straight out of reach: the arm stretches and the point end effector's Jacobian loses rank.
  sim_.setPathPoints(0, {HxEndEffectorPlacement(HxVector(3.0, 0.0, 1.0), HxOrientation())});
  for (int step = 0; step < 10000 && !sim_.propagationResults()[0].hitSingularity(); ++step) ASSERT_TRUE(sim_.step());
  EXPECT_TRUE(sim_.propagationResults()[0].hitSingularity());
  EXPECT_NEAR(sim_.activeStates()[0].positionState().jointPositions()[1], 0.0, 0.01);
}

// Stepping and refreshing every query allocates nothing, nor do the kinematics queries.
TEST_P(MujocoModeTest, StepsDoNotAllocate) {
  ASSERT_TRUE(sim_.loadFile(kDefaultScene, GetParam()));
  ASSERT_TRUE(sim_.step());
  HxAllocationCounter counter;
  for (int step = 0; step < 500; ++step) sim_.step();
  sim_.reset();
  sim_.step();
  EXPECT_EQ(counter.allocations(), 0u);

  const HxManipulatorActiveState state = sim_.activeStates()[1];
  counter.restart();
  HxEndEffectorPlacement placement;
  HxGeneralMotion motion;
  HxVector com;
  const HxManipulatorKinematics& kinematics = sim_.manipulators()[1].kinematics();
  EXPECT_TRUE(kinematics.endEffectorPlacement(1, state, placement) &&
              kinematics.endEffectorVelocity(0, state, motion) &&
              kinematics.endEffectorAcceleration(0, state, motion) && kinematics.centerOfMass(state, com) &&
              !kinematics.endEffectorPlacement(2, state, placement));
  EXPECT_EQ(counter.allocations(), 0u);
}

// Path progress moves only with step(): a path point set where the end effector already is
// counts as reached at the next step, not through a setter or reset().
TEST_F(MujocoTest, SettersDoNotAdvancePathProgress) {
  ASSERT_TRUE(sim_.loadString(kPlanarArm, Mode::Kinematic));
  const HxEndEffectorPlacement here = sim_.manipulators()[0].endEffectorPlacement(0, sim_.activeStates()[0]);
  EXPECT_TRUE(sim_.setPathPoints(0, {here}) && !sim_.pathCompleted(0));
  EXPECT_TRUE(sim_.setControlledEndEffector(0, 0) && sim_.setMode(Mode::Kinematic) && !sim_.pathCompleted(0));
  sim_.reset();
  EXPECT_FALSE(sim_.pathCompleted(0));
  EXPECT_TRUE(sim_.step() && sim_.pathCompleted(0));
}

INSTANTIATE_TEST_SUITE_P(BothModes, MujocoModeTest, ::testing::Values(Mode::Dynamic, Mode::Kinematic),
                         [](const auto& mode) { return mode.param == Mode::Dynamic ? "Dynamic" : "Kinematic"; });

}  // namespace
