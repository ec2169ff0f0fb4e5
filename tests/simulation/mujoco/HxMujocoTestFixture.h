#pragma once
// Shared by the MuJoCo simulation tests: the test models, a fixture that fails a test on any
// engine warning, an independent engine instance of a model for cross-checks, and comparisons.
// The tests include it for GoogleTest, MuJoCo and the simulation.

#include <gtest/gtest.h>
#include <mujoco/mujoco.h>

#include <string>
#include <vector>

#include "simulation/mujoco/HxMujocoHandles.h"
#include "simulation/mujoco/HxMujocoSimulation.h"
#include "tests/support/HxScopedTempDir.h"

namespace hxmujocotest {

using Mode = HxMujocoSimulation::Mode;

inline const std::string kDefaultScene = std::string(HX_SOURCE_DIR) + "/examples/models/two_arms_table.xml";

// Two-link planar arm (hinges about y), a spring on the elbow; no damping, friction, contacts
// or armature. A point end effector (controlled) and a frame end effector at the tip.
inline const char* const kPlanarArm = R"(<mujoco model="planar"><compiler angle="radian"/><size nuser_actuator="1"/>
  <option timestep="0.001" integrator="RK4" gravity="0 0 -9.81"><flag energy="enable"/></option>
  <default><geom type="capsule" size="0.03" contype="0" conaffinity="0"/></default>
  <worldbody><body name="arm" pos="0 0 1"><body name="upper">
    <joint name="shoulder" axis="0 1 0" limited="true" range="-2.5 2.5"/><geom fromto="0 0 0 0.5 0 0"/>
    <body name="lower" pos="0.5 0 0">
      <joint name="elbow" axis="0 1 0" limited="true" range="-0.6 2.5" stiffness="20" springref="0.4"/>
      <geom fromto="0 0 0 0.4 0 0"/><site name="ee_point:tip" pos="0.4 0 0"/>
      <site name="ee_frame:flange" pos="0.4 0 0" euler="0.3 0.2 0.1"/>
    </body></body></body>
    <site name="path:arm:0" pos="0.5 0 1.4"/><site name="path:arm:1" pos="0.6 0 0.7"/></worldbody>
  <actuator><motor joint="shoulder" gear="50" user="0.8"/><motor joint="elbow" gear="20"/></actuator>
  <keyframe><key qpos="0.3 0.8"/></keyframe></mujoco>)";

// A floating body carrying a three-joint arm with two end effectors, spinning and falling from
// the start; the body's centre of mass lies off its frame origin.
inline const char* const kFloatingArm = R"(<mujoco model="floating"><option timestep="0.002" gravity="0 0 -9.81"/>
  <default><geom type="capsule" size="0.03" contype="0" conaffinity="0"/></default>
  <worldbody><body name="drone" pos="0.2 -0.1 1.5" euler="0 0 0.4"><freejoint/>
    <geom type="box" size="0.2 0.15 0.05" pos="0.1 0.05 -0.08" mass="3"/>
    <body name="turret" pos="0.15 0 -0.1"><joint name="yaw" axis="0 0 1"/><geom fromto="0 0 0 0 0 -0.2"/>
      <body name="boom" pos="0 0 -0.2"><joint name="pitch" axis="0 1 0"/><geom fromto="0 0 0 0.3 0 0"/>
        <body name="fore" pos="0.3 0 0"><joint name="elbow" axis="0 1 0"/><geom fromto="0 0 0 0.25 0 0"/>
          <site name="ee_frame:grip" pos="0.25 0 0" euler="0 0.3 0"/><site name="ee_point:nose" pos="0.3 0.02 0"/>
    </body></body></body></body>
    <site name="path:drone:0" pos="0.6 0.2 1.0"/></worldbody>
  <actuator><motor joint="yaw" gear="20"/><motor joint="pitch" gear="20"/><motor joint="elbow" gear="20"/></actuator>
  <keyframe><key qpos="0.2 -0.1 1.5 0.98 0 0 0.2 0 0.4 0.6" qvel="0.3 -0.2 0.5 0.4 -0.6 1.2 0.5 -0.4 0.8"/></keyframe>
</mujoco>)";

// An independent engine instance of a model.
struct Reference {
  HxMujocoModelOwner model;
  HxMujocoDataPtr data;
  explicit Reference(const std::string& file) {
    char error[512] = "";
    model.reset(mj_loadXML(file.c_str(), nullptr, error, sizeof error));
    if (!model) ADD_FAILURE() << error;
    if (model) data = hxMujocoMakeData(model.get());
  }
  // Of model text, compiled through a scratch file.
  static Reference ofText(const char* text) {
    const HxScopedTempDir dir("mujoco");
    return Reference(dir.write("model.xml", text));
  }
};

// Writes the simulation's joint positions and velocities into `d`, joint by link (body) name.
inline void loadJoints(const HxMujocoSimulation& sim, const mjModel* m, mjData* d) {
  for (HxU32 k = 0; k < sim.numberOfManipulators(); ++k) {
    const HxIndividualManipulator& manipulator = sim.manipulators()[k];
    for (HxU32 j = 0; j < manipulator.numberOfLinks(); ++j) {
      const int joint = m->body_jntadr[mj_name2id(m, mjOBJ_BODY, manipulator.link(j)->identifier().c_str())];
      d->qpos[m->jnt_qposadr[joint]] = sim.activeStates()[k].positionState().jointPositions()[j];
      d->qvel[m->jnt_dofadr[joint]] = sim.activeStates()[k].velocityState().jointVelocities()[j];
    }
  }
}

// The world placement of end effector e of manipulator k from the simulation's held `entries`
// (endEffectorPlacements() or desiredEndEffectorPlacements()).
inline HxEndEffectorPlacement held(const std::vector<HxManipulatorEndEffectorPlacement>& entries,
                                   const HxMujocoSimulation& sim, HxU32 k, HxU32 e) {
  return entries[k].endEffectorPlacement(e, sim.systemPositionStates()[k], sim.manipulators()[k]);
}

inline HxVector vec(const double* v) { return HxVector(v[0], v[1], v[2]); }

inline void expectPlacement(const HxEndEffectorPlacement& placement, const double* pos, const double* quat) {
  double angle = 1.0;
  HxVector axis;
  placement.orientation().angleAxisBetween(HxOrientation(quat[0], quat[1], quat[2], quat[3]), angle, axis);
  EXPECT_LT(placement.translation().distanceTo(vec(pos)), 1e-12);
  EXPECT_LT(angle, 1e-7);
}

inline void expectMotion(const HxGeneralMotion& motion, const HxVector& linear, const HxVector& angular,
                         double tolerance) {
  EXPECT_LT(motion.linear().distanceTo(linear), tolerance) << "linear";
  EXPECT_LT(motion.angular().distanceTo(angular), tolerance) << "angular";
}

}  // namespace hxmujocotest

// Fails a test on any engine warning; holds the simulation under test.
class MujocoTest : public ::testing::Test {
 protected:
  void SetUp() override {
    previous_ = mju_user_warning;
    mju_user_warning = [](const char* message) { ADD_FAILURE() << "MuJoCo warning: " << message; };
  }
  void TearDown() override { mju_user_warning = previous_; }

  HxMujocoSimulation sim_;  // the simulation under test

 private:
  void (*previous_)(const char*) = nullptr;
};

class MujocoModeTest : public MujocoTest, public ::testing::WithParamInterface<hxmujocotest::Mode> {};
