// The force and power quantities: external and structural wrenches, manipulator and motor
// power, with the conditions under which each refuses (dynamics off and indices past the last
// are covered for every type in HxDataCaptureTypeSharedTest).

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/types/HxForcePowerDataCaptureTypes.h"
#include "simulation/HxBasePowerConverter.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/analysis/types/HxTypesTestSupport.h"

namespace {

using namespace HxTypesTest;

// A power converter that is not a DC electric motor.
class HydraulicActuator : public HxBasePowerConverter {};

// The external wrench of link j, checked against the manipulators that have one; the
// structural wrench of link j only when the dynamics computed a valid one. Motor power
// (manipulator 0) is (scale factor * joint velocity) * torque / divisor for a joint driven by a
// DC electric motor, refused with zero for any other converter, none, or a joint past any of
// the torques, the velocities and the joint count. Manipulator power (manipulator 1) sums torque
// times velocity over the joints that have both; it needs power data and an entry for the
// manipulator in the torques, the active states and the manipulators (which motor power looks
// up the same way).
TEST(HxForcePowerDataCaptureTypes, WrenchesAndPowers) {
  HxScriptedSimulation sim(2, 3, 0);
  sim.setDynamicsEnabled(true);
  sim.externalForce(1).mutableForces()[1] = HxGeneralForce(1, 2, 3, 4, 5, 6);
  std::vector<HxLinkForceState>& states = sim.individualSimulator(1).mutableLinkForceStates();
  states[0] = HxLinkForceState(false, HxGeneralForce(9, 9, 9, 9, 9, 9));
  states[1] = HxLinkForceState(true, HxGeneralForce(6, 5, 4, 3, 2, 1));
  HxExternalForceDataCaptureType external;
  HxStructuralForceDataCaptureType structural;
  EXPECT_EQ(capture(external, sim, 1, 1), captured({1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(capture(structural, sim, 1, 1), captured({6, 5, 4, 3, 2, 1}));
  EXPECT_EQ(capture(structural, sim, 1, 0), refused(6)) << "not valid";
  sim.mutableManipulatorExternalForces().resize(1);
  EXPECT_EQ(capture(external, sim, 1, 1), refused(6));

  sim.setPowerDataAvailable(true);
  sim.torque(0).setValues({4.0, 4.0, 4.0});
  sim.activeState(0).mutableVelocityState().setJointVelocities({3.0, 3.0, 3.0});
  HxIndividualManipulator& model = sim.manipulator(0);
  model.mutableJointDrive(0).setScaleFactor(2.0);
  model.mutableJointDrive(0).setPowerConverter(std::make_shared<HxDcElectricMotor>(0.5));
  model.mutableJointDrive(1).setPowerConverter(std::make_shared<HydraulicActuator>());
  HxMotorPowerDataCaptureType motor;
  EXPECT_EQ(capture(motor, sim, 0, 0), captured({(2.0 * 3.0) * 4.0 / 0.5}));
  EXPECT_EQ(capture(motor, sim, 0, 1), refused(1)) << "not a DC motor";
  EXPECT_EQ(capture(motor, sim, 0, 2), refused(1)) << "no converter";
  sim.torque(0).setValues({});
  EXPECT_FALSE(motor.captureData(sim, 0, 0));
  sim.torque(0).setValues({4.0});
  sim.activeState(0).mutableVelocityState().setJointVelocities({});
  EXPECT_FALSE(motor.captureData(sim, 0, 0));
  sim.activeState(0).mutableVelocityState().setJointVelocities({3.0});
  EXPECT_TRUE(motor.captureData(sim, 0, 0));
  model.setJointCount(0);
  EXPECT_EQ(capture(motor, sim, 0, 0), refused(1));

  sim.torque(1).setValues({1.5, -2.0, 100.0});
  sim.activeState(1).mutableVelocityState().setJointVelocities({4.0, 0.5});
  HxManipulatorPowerDataCaptureType power;
  EXPECT_EQ(capture(power, sim, 1, 77), captured({1.5 * 4.0 + -2.0 * 0.5}));
  sim.activeState(1).mutableVelocityState().setJointVelocities({3.0, 5.0, 7.0, 9.0});
  EXPECT_EQ(capture(power, sim, 1, 0), captured({1.5 * 3.0 + -2.0 * 5.0 + 100.0 * 7.0}));
  sim.torque(1).setValues({});
  EXPECT_EQ(capture(power, sim, 1, 0), captured({0})) << "no joints";
  sim.setPowerDataAvailable(false);
  EXPECT_FALSE(power.captureData(sim, 1, 0));
  sim.setPowerDataAvailable(true);
  sim.mutableManipulators().resize(1);
  EXPECT_FALSE(power.captureData(sim, 1, 0));
  sim.mutableActiveStates().resize(1);
  EXPECT_FALSE(power.captureData(sim, 1, 0));
  sim.mutableManipulatorTorques().resize(1);
  EXPECT_TRUE(!power.captureData(sim, 1, 0) && power.captureData(sim, 0, 0));
}

}  // namespace
