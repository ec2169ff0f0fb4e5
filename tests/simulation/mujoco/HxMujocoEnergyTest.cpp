// Tests of HxMujocoSimulation::mechanicalEnergy: the engine's kinetic plus potential energy of
// the current state, in both modes, and a clear "not available" otherwise.

#include <gtest/gtest.h>
#include <mujoco/mujoco.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "simulation/mujoco/HxMujocoSimulation.h"

namespace {

using Mode = HxMujocoSimulation::Mode;

// A two-joint arm with a spring on the elbow, energy computation enabled.
const char* kSpringArm = R"(
<mujoco model="spring">
  <compiler angle="radian"/>
  <option timestep="0.002" gravity="0 0 -9.81">
    <flag energy="enable"/>
  </option>
  <default>
    <geom type="capsule" size="0.03" contype="0" conaffinity="0"/>
    <joint type="hinge" axis="0 1 0"/>
  </default>
  <worldbody>
    <body name="arm" pos="0 0 1">
      <body name="upper">
        <joint name="shoulder"/>
        <geom fromto="0 0 0 0.5 0 0"/>
        <body name="lower" pos="0.5 0 0">
          <joint name="elbow" stiffness="20" springref="0.4"/>
          <geom fromto="0 0 0 0.4 0 0"/>
          <site name="ee_point:tip" pos="0.4 0 0"/>
        </body>
      </body>
    </body>
    <site name="path:arm:0" pos="0.3 0 1.5"/>
    <site name="path:arm:1" pos="0.7 0 0.7"/>
  </worldbody>
  <actuator>
    <motor joint="shoulder" gear="50"/>
    <motor joint="elbow" gear="20"/>
  </actuator>
</mujoco>)";

class MujocoEnergyTest : public ::testing::TestWithParam<Mode> {};

// The energy is MuJoCo's for the state the simulation reports (gravity, the spring and the
// motion), evaluated independently on a second engine instance, in both modes.
TEST_P(MujocoEnergyTest, EnergyIsTheEnginesForTheCurrentState) {
  HxMujocoSimulation sim;
  ASSERT_TRUE(sim.loadString(kSpringArm, GetParam()));
  const std::string file = ::testing::TempDir() + "hx_spring_arm.xml";
  FILE* out = std::fopen(file.c_str(), "w");
  ASSERT_NE(out, nullptr);
  std::fputs(kSpringArm, out);
  std::fclose(out);
  char error[512] = "";
  mjModel* m = mj_loadXML(file.c_str(), nullptr, error, sizeof error);
  ASSERT_NE(m, nullptr) << error;
  mjData* d = mj_makeData(m);

  double largestKinetic = 0.0;
  for (int step = 0; step <= 600; ++step) {
    if (step > 0) {
      ASSERT_TRUE(sim.step());
    }
    if (step % 100 != 0) continue;
    const HxManipulatorActiveState& state = sim.activeStates()[0];
    for (int j = 0; j < 2; ++j) {
      d->qpos[j] = state.positionState().jointPositions()[j];
      d->qvel[j] = state.velocityState().jointVelocities()[j];
    }
    mj_kinematics(m, d);
    mj_comPos(m, d);
    mj_crb(m, d);
    mj_energyPos(m, d);
    mj_energyVel(m, d);
    double energy = -1.0;
    ASSERT_TRUE(sim.mechanicalEnergy(energy));
    EXPECT_NEAR(energy, d->energy[0] + d->energy[1], 1e-12 * (1.0 + std::fabs(energy))) << "step " << step;
    largestKinetic = std::max(largestKinetic, d->energy[1]);
  }
  EXPECT_GT(largestKinetic, 0.01);  // the arm was moving: both parts were compared
  mj_deleteData(d);
  mj_deleteModel(m);
}

INSTANTIATE_TEST_SUITE_P(BothModes, MujocoEnergyTest, ::testing::Values(Mode::Dynamic, Mode::Kinematic),
                         [](const ::testing::TestParamInfo<Mode>& modeInfo) {
                           return modeInfo.param == Mode::Dynamic ? "Dynamic" : "Kinematic";
                         });

// Without a model, or with a model that does not enable the energy computation, there is no
// energy to give: false and 0.
TEST(MujocoEnergyUnavailableTest, FalseWithoutModelOrEnergyFlag) {
  double energy = -1.0;
  HxMujocoSimulation empty;
  EXPECT_FALSE(empty.mechanicalEnergy(energy));
  EXPECT_EQ(energy, 0.0);

  HxMujocoSimulation scene;
  ASSERT_TRUE(scene.loadFile(std::string(HX_SOURCE_DIR) + "/examples/models/two_arms_table.xml"));
  ASSERT_TRUE(scene.step());
  energy = -1.0;
  EXPECT_FALSE(scene.mechanicalEnergy(energy));
  EXPECT_EQ(energy, 0.0);
}

}  // namespace
