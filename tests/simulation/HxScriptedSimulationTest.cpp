#include "simulation/HxScriptedSimulation.h"

#include <gtest/gtest.h>

#define HX_ALLOCATION_COUNTER_NO_OPERATORS
#include "bench/HxAllocationCounter.h"

namespace {

TEST(HxScriptedSimulation, ConstructionSizesEveryVector) {
  const HxScriptedSimulation scripted(2, 7, 3);
  const HxSystemSimulation& sim = scripted;

  EXPECT_TRUE(sim.hasSystemState());
  EXPECT_FALSE(sim.dynamicsEnabled());
  EXPECT_FALSE(sim.powerDataAvailable());
  EXPECT_EQ(sim.controlOutputTime(), 0.0);
  EXPECT_EQ(sim.numberOfManipulators(), 2u);

  EXPECT_EQ(sim.systemPositionStates().size(), 2u);
  EXPECT_EQ(sim.systemVelocityStates().size(), 2u);
  EXPECT_EQ(sim.activeStates().size(), 2u);
  EXPECT_EQ(sim.controlOutputPositionStates().size(), 2u);
  EXPECT_EQ(sim.controlOutputVelocityStates().size(), 2u);
  EXPECT_EQ(sim.individualSimulators().size(), 2u);
  EXPECT_EQ(sim.manipulators().size(), 2u);
  EXPECT_EQ(sim.manipulatorControlInputs().size(), 2u);
  EXPECT_EQ(sim.manipulatorTorques().size(), 2u);
  EXPECT_EQ(sim.manipulatorExternalForces().size(), 2u);
  EXPECT_EQ(sim.endEffectorPlacements().size(), 2u);
  EXPECT_EQ(sim.desiredEndEffectorPlacements().size(), 2u);
  EXPECT_EQ(sim.propagationResults().size(), 2u);

  for (HxU32 m = 0; m < 2; ++m) {
    EXPECT_EQ(sim.systemPositionStates()[m].jointPositions().size(), 7u);
    EXPECT_EQ(sim.systemVelocityStates()[m].jointVelocities().size(), 7u);
    EXPECT_EQ(sim.activeStates()[m].positionState().jointPositions().size(), 7u);
    EXPECT_EQ(sim.activeStates()[m].velocityState().jointVelocities().size(), 7u);
    EXPECT_EQ(sim.controlOutputPositionStates()[m].jointPositions().size(), 7u);
    EXPECT_EQ(sim.controlOutputVelocityStates()[m].jointVelocities().size(), 7u);
    EXPECT_EQ(sim.individualSimulators()[m].jointAccelerations().size(), 7u);
    EXPECT_EQ(sim.individualSimulators()[m].jointTorques().size(), 7u);
    EXPECT_EQ(sim.individualSimulators()[m].linkForceStates().size(), 7u);
    EXPECT_EQ(sim.manipulatorControlInputs()[m].values().size(), 7u);
    EXPECT_EQ(sim.manipulatorTorques()[m].values().size(), 7u);
    EXPECT_EQ(sim.manipulatorExternalForces()[m].forces().size(), 7u);
    EXPECT_EQ(sim.endEffectorPlacements()[m].size(), 3u);
    EXPECT_EQ(sim.desiredEndEffectorPlacements()[m].size(), 3u);

    const HxIndividualManipulator& manipulator = sim.manipulators()[m];
    EXPECT_EQ(manipulator.jointCount(), 7u);
    EXPECT_EQ(manipulator.numberOfLinks(), 7u);
    EXPECT_EQ(manipulator.numberOfEndEffectors(), 3u);
    const HxLink* link = manipulator.findLink("link6");
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(link->index(), 6u);
    EXPECT_EQ(manipulator.findLink("link7"), nullptr);
    EXPECT_TRUE(manipulator.endEffector(2).token() == HxControl::HxFrameEndEffectorToken);
  }
}

TEST(HxScriptedSimulation, NamedLinks) {
  HxScriptedSimulation sim(1, {"shoulder", "elbow", "wrist"}, 1);
  const HxIndividualManipulator& manipulator = sim.manipulators()[0];
  EXPECT_EQ(manipulator.jointCount(), 3u);
  ASSERT_NE(manipulator.findLink("wrist"), nullptr);
  EXPECT_EQ(manipulator.findLink("wrist")->index(), 2u);
  EXPECT_EQ(manipulator.link(0)->identifier(), "shoulder");
}

TEST(HxScriptedSimulation, SwitchesAndTime) {
  HxScriptedSimulation sim(1, 1, 1);
  sim.setDynamicsEnabled(true);
  sim.setPowerDataAvailable(true);
  sim.setSystemStatePresent(false);
  sim.setControlOutputTime(0.5);
  sim.advanceTime(0.1);
  sim.advanceTime(0.1);
  const HxSystemSimulation& view = sim;
  EXPECT_TRUE(view.dynamicsEnabled());
  EXPECT_TRUE(view.powerDataAvailable());
  EXPECT_FALSE(view.hasSystemState());
  EXPECT_DOUBLE_EQ(view.controlOutputTime(), 0.7);
}

TEST(HxScriptedSimulation, AnswersWhatWasSet) {
  HxScriptedSimulation sim(2, 2, 2);
  const HxEndEffectorPlacement placement(HxVector(0.5, 0.0, 0.3), HxOrientation(0.0, 1.0, 0.0, 0.0));
  const HxEndEffectorPlacement desired(HxVector(0.5, 0.1, 0.3), HxOrientation());
  const HxEndEffectorPlacement held(HxVector(-1, -2, -3), HxOrientation(0.0, 0.0, 0.0, 1.0));
  EXPECT_TRUE(sim.setEndEffectorPlacement(1, 1, placement));
  EXPECT_TRUE(sim.setEndEffectorVelocity(1, 1, HxGeneralMotion(1, 2, 3, 4, 5, 6)));
  EXPECT_TRUE(sim.setEndEffectorAcceleration(1, 0, HxGeneralMotion(6, 5, 4, 3, 2, 1)));
  EXPECT_FALSE(sim.setEndEffectorPlacement(1, 2, placement)) << "only two end effectors";
  sim.setCenterOfMass(1, HxVector(0.1, 0.2, 0.3));
  sim.setDesiredPlacement(1, 1, desired);
  sim.setHeldPlacement(1, 0, held);
  sim.setEndEffectorToken(1, 0, HxControl::HxPointEndEffectorToken);
  sim.propagationResult(1).setCollisionOccurred(true);
  sim.torque(1).setValues({2.0, -2.0});
  sim.externalForce(1).mutableForces()[1] = HxGeneralForce(0, 0, 10, 0, 0, 0);
  sim.individualSimulator(1).mutableLinkForceStates()[0] = HxLinkForceState(true, HxGeneralForce(1, 0, 0, 0, 0, 0));

  const HxSystemSimulation& view = sim;
  const HxIndividualManipulator& manipulator = view.manipulators()[1];
  const HxManipulatorActiveState& state = view.activeStates()[1];

  EXPECT_EQ(manipulator.endEffectorPlacement(1, state), placement);
  EXPECT_EQ(manipulator.endEffectorPlacement(0, state), HxEndEffectorPlacement());
  HxGeneralMotion motion;
  EXPECT_TRUE(manipulator.endEffector(1).velocity(manipulator, state, motion));
  EXPECT_EQ(motion, HxGeneralMotion(1, 2, 3, 4, 5, 6));
  EXPECT_TRUE(manipulator.endEffector(0).acceleration(manipulator, state, motion));
  EXPECT_EQ(motion, HxGeneralMotion(6, 5, 4, 3, 2, 1));
  EXPECT_EQ(manipulator.centerOfMass(state), HxVector(0.1, 0.2, 0.3));
  EXPECT_EQ(view.manipulators()[0].centerOfMass(view.activeStates()[0]), HxVector()) << "other manipulator untouched";

  // Held entries resolve unchanged, whatever the base placement.
  sim.systemPositionState(1).setCoordSystemXform(HxCoordSystemXform(HxVector(5, 5, 5), HxOrientation()));
  const HxPositionState& base = view.systemPositionStates()[1];
  EXPECT_EQ(view.desiredEndEffectorPlacements()[1].endEffectorPlacement(1, base, manipulator), desired);
  EXPECT_EQ(view.endEffectorPlacements()[1].endEffectorPlacement(0, base, manipulator), held);
  EXPECT_EQ(view.endEffectorPlacements()[1].endEffectorPlacement(2, base, manipulator), HxEndEffectorPlacement());

  EXPECT_TRUE(manipulator.endEffector(0).token() == HxControl::HxPointEndEffectorToken);
  EXPECT_TRUE(view.propagationResults()[1].collisionOccurred());
  EXPECT_FALSE(view.propagationResults()[1].hitJointLimit());
  EXPECT_EQ(view.manipulatorTorques()[1].values()[1], -2.0);
  EXPECT_EQ(view.manipulatorExternalForces()[1].forces()[1][2], 10.0);
  EXPECT_TRUE(view.individualSimulators()[1].linkForceStates()[0].isValid());
  EXPECT_FALSE(view.individualSimulators()[1].linkForceStates()[1].isValid());

  // Desired placements past the sized entry grow it.
  sim.setDesiredPlacement(0, 4, desired);
  EXPECT_EQ(view.desiredEndEffectorPlacements()[0].size(), 5u);
}

TEST(HxScriptedSimulation, FunctionsSeeTheStateTheCallerPasses) {
  HxScriptedSimulation sim(1, 2, 1);
  sim.kinematics(0).setPlacementFunction([](HxU32 e, const HxManipulatorActiveState& state) {
    return HxEndEffectorPlacement(HxVector(e, state.activePositionState().jointPositions()[1], 0), HxOrientation());
  });
  sim.kinematics(0).setCenterOfMassFunction(
      [](const HxManipulatorActiveState& state) { return HxVector(state.velocityState().jointVelocities()[0], 0, 0); });
  sim.setJointPositions(0, {0.0, 0.75});
  sim.setJointVelocities(0, {-0.5, 0.0});

  // Every source carries the positions set through the shortcut.
  EXPECT_EQ(sim.systemPositionStates()[0].jointPositions()[1], 0.75);
  EXPECT_EQ(sim.controlOutputPositionStates()[0].jointPositions()[1], 0.75);
  EXPECT_EQ(sim.individualSimulators()[0].activeState().positionState().jointPositions()[1], 0.75);
  EXPECT_EQ(sim.controlOutputVelocityStates()[0].jointVelocities()[0], -0.5);

  const HxIndividualManipulator& manipulator = sim.manipulators()[0];
  EXPECT_EQ(manipulator.endEffectorPlacement(0, sim.activeStates()[0]).translation(), HxVector(0, 0.75, 0));
  EXPECT_EQ(manipulator.centerOfMass(sim.activeStates()[0]), HxVector(-0.5, 0, 0));

  HxManipulatorActiveState other(2);
  other.mutablePositionState().setJointPositions({0.0, -3.0});
  EXPECT_EQ(manipulator.endEffectorPlacement(0, other).translation(), HxVector(0, -3.0, 0));

  // Clearing the function restores the set answer.
  sim.kinematics(0).setPlacementFunction(nullptr);
  EXPECT_EQ(manipulator.endEffectorPlacement(0, other), HxEndEffectorPlacement());

  // setActiveState keeps the dynamic simulator in step.
  sim.setActiveState(0, other);
  EXPECT_EQ(sim.activeStates()[0], other);
  EXPECT_EQ(sim.individualSimulators()[0].activeState(), other);
}

TEST(HxScriptedSimulation, TestsMayShortenVectors) {
  HxScriptedSimulation sim(3, 2, 1);
  sim.mutableActiveStates().resize(1);
  sim.mutablePropagationResults().clear();
  EXPECT_EQ(sim.activeStates().size(), 1u);
  EXPECT_TRUE(sim.propagationResults().empty());
  EXPECT_EQ(sim.manipulators().size(), 3u);
}

TEST(HxSystemSimulation, QueriesReturnTheHeldObjectsWithoutCopying) {
  HxScriptedSimulation sim(2, 6, 2);
  const HxSystemSimulation& view = sim;
  const std::vector<HxManipulatorActiveState>* activeStates = &view.activeStates();
  const double* jointPositions = view.activeStates()[1].positionState().jointPositions().data();
  const HxIndividualManipulator* manipulator = &view.manipulators()[1];

  // A producer refreshes the values in place: the same storage, the new values.
  sim.setJointPositions(1, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(&view.activeStates(), activeStates);
  EXPECT_EQ(view.activeStates()[1].positionState().jointPositions().data(), jointPositions);
  EXPECT_EQ(jointPositions[5], 6.0);
  EXPECT_EQ(&view.manipulators()[1], manipulator);
  EXPECT_EQ(&view.activeStates()[1].activePositionState(), &view.activeStates()[1].positionState());
}

TEST(HxSystemSimulation, ReadingAndEvaluatingDoNotAllocate) {
  HxScriptedSimulation sim(2, 6, 2);
  sim.setDynamicsEnabled(true);
  sim.setDesiredPlacement(1, 1, HxEndEffectorPlacement(HxVector(1, 2, 3), HxOrientation()));
  // A capture's working state, sized once at set-up.
  HxManipulatorActiveState working = sim.activeStates()[1];
  sim.setJointPositions(1, {1, 2, 3, 4, 5, 6});
  sim.setJointVelocities(1, {1, 2, 3, 4, 5, 6});

  HxAllocationCounter counter;
  const HxSystemSimulation& view = sim;
  double sum = 0.0;
  for (int sample = 0; sample < 10; ++sample) {
    working = view.activeStates()[1];
    working.setPositionState(view.systemPositionStates()[1]);
    working.setVelocityState(view.systemVelocityStates()[1]);
    const HxIndividualManipulator& manipulator = view.manipulators()[1];
    HxGeneralMotion motion;
    manipulator.endEffector(1).velocity(manipulator, working, motion);
    manipulator.endEffector(1).acceleration(manipulator, working, motion);
    const HxEndEffectorPlacement placement = manipulator.endEffectorPlacement(1, working);
    const HxEndEffectorPlacement desired =
        view.desiredEndEffectorPlacements()[1].endEffectorPlacement(1, working.activePositionState(), manipulator);
    double angle = 0.0;
    HxVector axis;
    placement.orientation().angleAxisBetween(desired.orientation(), angle, axis);
    sum += angle + placement.translation().distanceTo(desired.translation()) + motion[0] +
           manipulator.centerOfMass(working).x() + view.individualSimulators()[1].jointAccelerations()[0] +
           view.controlOutputPositionStates()[1].jointPositions()[2] + view.manipulatorTorques()[1].values()[3];
    const auto* converter = manipulator.jointDrive(2).powerConverter();
    sum += dynamic_cast<const HxDcElectricMotor*>(converter) ? 1.0 : 0.0;
    sum += manipulator.findLink("link4") ? 1.0 : 0.0;
  }
  EXPECT_EQ(counter.allocations(), 0u);
  EXPECT_GT(sum, 0.0);
  EXPECT_EQ(working.positionState().jointPositions()[5], 6.0);
}

}  // namespace
