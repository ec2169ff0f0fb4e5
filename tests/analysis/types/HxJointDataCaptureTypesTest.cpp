// The joint-space quantities: which source each reads on each path, its index checks, and the
// two finite-difference velocities over several samples.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/types/HxJointDataCaptureTypes.h"
#include "simulation/HxScriptedSimulation.h"

namespace {

// Manipulator 1, joint 2 of a 2-manipulator, 3-joint simulation get a different value in
// every source, so that a test sees which one a type read.
void setSources(HxScriptedSimulation& sim) {
  sim.activeState(1).mutablePositionState().setJointPositions({0, 0, 1.5});
  sim.controlOutputPositionState(1).setJointPositions({0, 0, 2.5});
  sim.activeState(1).mutableVelocityState().setJointVelocities({0, 0, 3.5});
  sim.controlOutputVelocityState(1).setJointVelocities({0, 0, 4.5});
  sim.individualSimulator(1).setJointAccelerations({0, 0, 5.5});
  sim.individualSimulator(1).setJointTorques({0, 0, 6.5});
  sim.controlInput(1).setValues({0, 0, 7.5});
  sim.torque(1).setValues({0, 0, 8.5});
  // The system state and the simulator's own active state are never read by these types.
  sim.systemPositionState(1).setJointPositions({0, 0, -1});
  sim.systemVelocityState(1).setJointVelocities({0, 0, -1});
  sim.individualSimulator(1).mutableActiveState().mutablePositionState().setJointPositions({0, 0, -1});
  sim.individualSimulator(1).mutableActiveState().mutableVelocityState().setJointVelocities({0, 0, -1});
}

struct Expectation {
  const char* name;
  const HxDataCaptureType& type;
  bool captured;
  double value;
};

void expectCaptures(const HxSystemSimulation& sim, const std::vector<Expectation>& expectations,
                    const std::string& path) {
  for (const Expectation& e : expectations) {
    EXPECT_EQ(e.type.captureData(sim, 1, 2), e.captured) << e.name << " " << path;
    ASSERT_EQ(e.type.data().size(), 1u) << e.name;
    EXPECT_EQ(e.type.data()[0].value(), e.value) << e.name << " " << path;
  }
}

// Each type reads its own source: the dynamics' with dynamics, the control output's without;
// the types that need dynamics refuse with a zero without them.
TEST(HxJointDataCaptureTypes, ReadTheirSourceOnEachPath) {
  HxScriptedSimulation sim(2, 3, 1);
  setSources(sim);
  HxJointPositionDataCaptureType position;
  HxJointVelocityDataCaptureType velocity;
  HxJointAccelerationDataCaptureType acceleration;
  HxJointTorqueDataCaptureType torque;
  HxControlInputDataCaptureType input;
  HxControlTorqueDataCaptureType controlTorque;
  HxControlOutputJointPositionDataCaptureType outputPosition;
  HxControlOutputJointVelocityDataCaptureType outputVelocity;

  sim.setDynamicsEnabled(true);
  expectCaptures(sim,
                 {{"position", position, true, 1.5},
                  {"velocity", velocity, true, 3.5},
                  {"acceleration", acceleration, true, 5.5},
                  {"torque", torque, true, 6.5},
                  {"input", input, true, 7.5},
                  {"controlTorque", controlTorque, true, 8.5},
                  {"outputPosition", outputPosition, true, 2.5},
                  {"outputVelocity", outputVelocity, true, 4.5}},
                 "dynamic");

  sim.setDynamicsEnabled(false);
  expectCaptures(sim,
                 {{"position", position, true, 2.5},
                  {"velocity", velocity, true, 4.5},
                  {"acceleration", acceleration, false, 0.0},
                  {"torque", torque, false, 0.0},
                  {"input", input, false, 0.0},
                  {"controlTorque", controlTorque, false, 0.0},
                  {"outputPosition", outputPosition, true, 2.5},
                  {"outputVelocity", outputVelocity, true, 4.5}},
                 "kinematic");
}

// A joint past the last, a manipulator past the last, or a per-joint vector shorter than the
// others gives false and a zero, on both paths.
TEST(HxJointDataCaptureTypes, RefuseIndicesOutOfRange) {
  HxJointPositionDataCaptureType position;
  HxJointVelocityDataCaptureType velocity;
  HxJointAccelerationDataCaptureType acceleration;
  HxJointTorqueDataCaptureType torque;
  HxControlInputDataCaptureType input;
  HxControlTorqueDataCaptureType controlTorque;
  HxControlOutputJointPositionDataCaptureType outputPosition;
  HxControlOutputJointVelocityDataCaptureType outputVelocity;
  const std::vector<const HxDataCaptureType*> all = {&position, &velocity,      &acceleration,   &torque,
                                                     &input,    &controlTorque, &outputPosition, &outputVelocity};

  for (bool dynamics : {true, false}) {
    HxScriptedSimulation sim(2, 3, 1);
    setSources(sim);
    sim.setDynamicsEnabled(dynamics);
    for (const HxDataCaptureType* type : all) {
      // Fill the buffer first so that a refusal visibly resets it.
      type->captureData(sim, 1, 2);
      EXPECT_FALSE(type->captureData(sim, 1, 3)) << type->description() << " dynamics " << dynamics;
      EXPECT_EQ(type->data()[0].value(), 0.0);
      type->captureData(sim, 1, 2);
      EXPECT_FALSE(type->captureData(sim, 2, 0)) << type->description() << " dynamics " << dynamics;
      EXPECT_EQ(type->data()[0].value(), 0.0);
    }
  }

  // Each source checked against its own size.
  HxScriptedSimulation sim(2, 3, 1);
  setSources(sim);
  sim.setDynamicsEnabled(true);
  sim.controlInput(1).setValues({1, 2});
  sim.torque(1).setValues({1, 2});
  sim.individualSimulator(1).setJointTorques({1, 2});
  sim.individualSimulator(1).setJointAccelerations({1, 2});
  sim.activeState(1).mutablePositionState().setJointPositions({1, 2});
  sim.activeState(1).mutableVelocityState().setJointVelocities({1, 2});
  sim.controlOutputPositionState(1).setJointPositions({1, 2});
  sim.controlOutputVelocityState(1).setJointVelocities({1, 2});
  for (const HxDataCaptureType* type : all) {
    EXPECT_FALSE(type->captureData(sim, 1, 2)) << type->description();
    EXPECT_TRUE(type->captureData(sim, 1, 1)) << type->description();
    EXPECT_EQ(type->data()[0].value(), 2.0) << type->description();
  }
  sim.mutableManipulatorControlInputs().resize(1);
  EXPECT_FALSE(input.captureData(sim, 1, 0));
  sim.mutableIndividualSimulators().resize(1);
  EXPECT_FALSE(torque.captureData(sim, 1, 0));
  EXPECT_FALSE(acceleration.captureData(sim, 1, 0));
}

// Without dynamics the joint velocity is the control output's velocity when the time has not
// advanced (first sample, repeated time) and the difference quotient of the position when it
// has; a refused sample does not move the history on; the dynamic path leaves it alone.
TEST(HxJointDataCaptureTypes, JointVelocityDifferentiatesTheControlOutput) {
  HxScriptedSimulation sim(1, 2, 0);
  HxJointVelocityDataCaptureType velocity;

  // First sample: no time step yet.
  sim.setControlOutputTime(0.5);
  sim.controlOutputPositionState(0).setJointPositions({0.0, 0.5});
  sim.controlOutputVelocityState(0).setJointVelocities({0.0, 7.0});
  EXPECT_TRUE(velocity.captureData(sim, 0, 1));
  EXPECT_EQ(velocity.data()[0].value(), 7.0);

  // A refused sample at a later time changes neither the time nor the position kept.
  sim.setControlOutputTime(0.6);
  sim.controlOutputPositionState(0).setJointPositions({0.0, 0.9});
  EXPECT_FALSE(velocity.captureData(sim, 0, 2));
  EXPECT_FALSE(velocity.captureData(sim, 1, 1));

  // The dynamic path reads the active state and leaves the history alone.
  sim.setDynamicsEnabled(true);
  sim.activeState(0).mutableVelocityState().setJointVelocities({0.0, -3.0});
  EXPECT_TRUE(velocity.captureData(sim, 0, 1));
  EXPECT_EQ(velocity.data()[0].value(), -3.0);
  sim.setDynamicsEnabled(false);

  // A time step: (0.51 - 0.5) / (0.6 - 0.5).
  sim.controlOutputPositionState(0).setJointPositions({0.0, 0.51});
  EXPECT_TRUE(velocity.captureData(sim, 0, 1));
  EXPECT_NEAR(velocity.data()[0].value(), 0.1, 1e-12);

  // The same time again: the control output's velocity once more.
  sim.controlOutputPositionState(0).setJointPositions({0.0, 0.8});
  EXPECT_TRUE(velocity.captureData(sim, 0, 1));
  EXPECT_EQ(velocity.data()[0].value(), 7.0);

  // The next step differentiates from the position of the repeated sample: (1.0 - 0.8) / 0.5.
  sim.setControlOutputTime(1.1);
  sim.controlOutputPositionState(0).setJointPositions({0.0, 1.0});
  EXPECT_TRUE(velocity.captureData(sim, 0, 1));
  EXPECT_NEAR(velocity.data()[0].value(), 0.4, 1e-12);

  // Without a velocity entry for the joint the sample is refused.
  sim.controlOutputVelocityState(0).setJointVelocities({0.0});
  EXPECT_FALSE(velocity.captureData(sim, 0, 1));
  EXPECT_EQ(velocity.data()[0].value(), 0.0);

  // A copy takes the history along.
  HxJointVelocityDataCaptureType copy(velocity);
  sim.setControlOutputTime(1.6);
  sim.controlOutputPositionState(0).setJointPositions({0.0, 2.0});
  EXPECT_TRUE(copy.captureData(sim, 0, 1));
  EXPECT_NEAR(copy.data()[0].value(), 2.0, 1e-12);
}

// The actual joint velocity always reports false, while its buffer holds the difference
// quotient (from time 0 and position 0 at the first sample); without a time step it only
// remembers the position.
TEST(HxJointDataCaptureTypes, ActualJointVelocityAlwaysReportsFalse) {
  HxScriptedSimulation sim(1, 1, 0);
  HxControlOutputActualJointVelocityDataCaptureType velocity;

  // First sample at 2.0: 1.0 / 2.0.
  sim.setControlOutputTime(2.0);
  sim.controlOutputPositionState(0).setJointPositions({1.0});
  EXPECT_FALSE(velocity.captureData(sim, 0, 0));
  EXPECT_EQ(velocity.data()[0].value(), 0.5);

  // A step of 0.5: (1.25 - 1.0) / 0.5.
  sim.setControlOutputTime(2.5);
  sim.controlOutputPositionState(0).setJointPositions({1.25});
  EXPECT_FALSE(velocity.captureData(sim, 0, 0));
  EXPECT_EQ(velocity.data()[0].value(), 0.5);

  // The same time: zero, and the position is remembered.
  sim.controlOutputPositionState(0).setJointPositions({2.0});
  EXPECT_FALSE(velocity.captureData(sim, 0, 0));
  EXPECT_EQ(velocity.data()[0].value(), 0.0);
  sim.setControlOutputTime(3.0);
  sim.controlOutputPositionState(0).setJointPositions({2.5});
  EXPECT_FALSE(velocity.captureData(sim, 0, 0));
  EXPECT_EQ(velocity.data()[0].value(), 1.0);

  // Without a time step a bad index does not end the call: the time is still taken, here
  // moving it back to 2.0, so that 2.5 is a step again.
  sim.setControlOutputTime(2.0);
  EXPECT_FALSE(velocity.captureData(sim, 0, 4));
  sim.setControlOutputTime(2.5);
  sim.controlOutputPositionState(0).setJointPositions({3.0});
  EXPECT_FALSE(velocity.captureData(sim, 0, 0));
  EXPECT_EQ(velocity.data()[0].value(), 1.0);
}

// On a time step a bad index returns before the time is taken.
TEST(HxJointDataCaptureTypes, ActualJointVelocityKeepsItsTimeOnARefusedStep) {
  HxScriptedSimulation sim(1, 1, 0);
  HxControlOutputActualJointVelocityDataCaptureType velocity;
  sim.setControlOutputTime(1.0);
  sim.controlOutputPositionState(0).setJointPositions({3.0});
  EXPECT_FALSE(velocity.captureData(sim, 1, 0));
  EXPECT_FALSE(velocity.captureData(sim, 0, 1));
  EXPECT_EQ(velocity.data()[0].value(), 0.0);
  EXPECT_FALSE(velocity.captureData(sim, 0, 0));
  EXPECT_EQ(velocity.data()[0].value(), 3.0);
}

}  // namespace
