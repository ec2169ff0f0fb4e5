// The scripted simulation: every vector sized at construction, answers forwarded through the
// manipulators' kinematics, functions that see the caller's state, and the holder's promise
// that reading neither copies nor allocates.
#include "simulation/scripted/HxScriptedSimulation.h"

#include <gtest/gtest.h>

#include "tests/support/HxAllocationCounter.h"

namespace {

// Every per-manipulator vector has one entry per manipulator, every per-joint vector one per
// joint; links are "link<j>" at index j; the documented initial switches hold; time advances.
TEST(HxScriptedSimulation, ConstructionSizesEveryVector) {
  HxScriptedSimulation scripted(2, 7, 3);
  scripted.advanceTime(0.25);
  scripted.advanceTime(0.5);
  const HxSystemSimulation& sim = scripted;
  EXPECT_TRUE(sim.hasSystemState());
  EXPECT_FALSE(sim.dynamicsEnabled());
  EXPECT_FALSE(sim.powerDataAvailable());
  EXPECT_EQ(sim.controlOutputTime(), 0.75);
  EXPECT_EQ((std::vector<size_t>{sim.numberOfManipulators(), sim.systemPositionStates().size(),
                                 sim.systemVelocityStates().size(), sim.activeStates().size(),
                                 sim.controlOutputPositionStates().size(), sim.controlOutputVelocityStates().size(),
                                 sim.individualSimulators().size(), sim.manipulatorControlInputs().size(),
                                 sim.manipulatorTorques().size(), sim.manipulatorExternalForces().size(),
                                 sim.endEffectorPlacements().size(), sim.desiredEndEffectorPlacements().size(),
                                 sim.propagationResults().size()}),
            std::vector<size_t>(13, 2));
  for (HxU32 m = 0; m < 2; ++m) {
    SCOPED_TRACE(m);
    const HxIndividualDynamicSimulator& dynamics = sim.individualSimulators()[m];
    const HxIndividualManipulator& manipulator = sim.manipulators()[m];
    EXPECT_EQ((std::vector<size_t>{sim.systemPositionStates()[m].jointPositions().size(),
                                   sim.systemVelocityStates()[m].jointVelocities().size(),
                                   sim.activeStates()[m].positionState().jointPositions().size(),
                                   sim.activeStates()[m].velocityState().jointVelocities().size(),
                                   sim.controlOutputPositionStates()[m].jointPositions().size(),
                                   sim.controlOutputVelocityStates()[m].jointVelocities().size(),
                                   dynamics.jointAccelerations().size(), dynamics.jointTorques().size(),
                                   dynamics.linkForceStates().size(), sim.manipulatorControlInputs()[m].values().size(),
                                   sim.manipulatorTorques()[m].values().size(),
                                   sim.manipulatorExternalForces()[m].forces().size(), manipulator.jointCount(),
                                   manipulator.numberOfLinks()}),
              std::vector<size_t>(14, 7));
    EXPECT_EQ(sim.endEffectorPlacements()[m].size(), 3u);
    EXPECT_EQ(sim.desiredEndEffectorPlacements()[m].size(), 3u);
    EXPECT_EQ(manipulator.numberOfEndEffectors(), 3u);
    EXPECT_TRUE(manipulator.endEffector(2).token() == HxControl::HxFrameEndEffectorToken);
    ASSERT_NE(manipulator.findLink("link6"), nullptr);
    EXPECT_EQ(manipulator.findLink("link6")->index(), 6u);
    EXPECT_EQ(manipulator.findLink("link7"), nullptr);
  }
}

// Set answers come back through the manipulator of the right index (one end effector and
// manipulator do not leak into another); held and desired entries resolve unchanged whatever
// the base, and desired entries grow on demand.
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
  EXPECT_TRUE(sim.setEndEffectorToken(1, 0, HxControl::HxPointEndEffectorToken));
  EXPECT_FALSE(sim.setEndEffectorToken(1, 2, HxControl::HxPointEndEffectorToken));

  const HxSystemSimulation& view = sim;
  const HxIndividualManipulator& manipulator = view.manipulators()[1];
  const HxManipulatorActiveState& state = view.activeStates()[1];
  EXPECT_EQ(manipulator.endEffectorPlacement(1, state), placement);
  EXPECT_EQ(manipulator.endEffectorPlacement(0, state), HxEndEffectorPlacement());
  EXPECT_EQ(manipulator.endEffectorPlacement(2, state), HxEndEffectorPlacement());
  EXPECT_EQ(manipulator.endEffectorVelocity(1, state), HxGeneralMotion(1, 2, 3, 4, 5, 6));
  EXPECT_EQ(manipulator.endEffectorAcceleration(1, state), HxGeneralMotion());
  HxGeneralMotion motion;
  EXPECT_TRUE(manipulator.endEffector(1).velocity(manipulator, state, motion));
  EXPECT_EQ(motion, HxGeneralMotion(1, 2, 3, 4, 5, 6));
  EXPECT_TRUE(manipulator.endEffector(0).acceleration(manipulator, state, motion));
  EXPECT_EQ(motion, HxGeneralMotion(6, 5, 4, 3, 2, 1));
  EXPECT_EQ(manipulator.centerOfMass(state), HxVector(0.1, 0.2, 0.3));
  EXPECT_EQ(view.manipulators()[0].centerOfMass(view.activeStates()[0]), HxVector());
  EXPECT_EQ(view.manipulators()[0].endEffectorPlacement(1, view.activeStates()[0]), HxEndEffectorPlacement());
  EXPECT_TRUE(manipulator.endEffector(0).token() == HxControl::HxPointEndEffectorToken);
  EXPECT_TRUE(manipulator.endEffector(1).token() == HxControl::HxFrameEndEffectorToken);

  sim.systemPositionState(1).setCoordSystemXform(HxCoordSystemXform(HxVector(5, 5, 5), HxOrientation()));
  const HxPositionState& base = view.systemPositionStates()[1];
  EXPECT_EQ(view.desiredEndEffectorPlacements()[1].endEffectorPlacement(1, base, manipulator), desired);
  EXPECT_EQ(view.endEffectorPlacements()[1].endEffectorPlacement(0, base, manipulator), held);
  EXPECT_EQ(view.endEffectorPlacements()[1].endEffectorPlacement(2, base, manipulator), HxEndEffectorPlacement());
  sim.setDesiredPlacement(0, 4, desired);
  EXPECT_EQ(view.desiredEndEffectorPlacements()[0].size(), 5u);
}

// Functions compute from the state the caller passes, not the simulation's own; clearing one
// restores the set answer. The state shortcuts keep every copy of the state in step.
TEST(HxScriptedSimulation, FunctionsSeeTheStateTheCallerPasses) {
  HxScriptedSimulation sim(1, 2, 1);
  sim.kinematics(0).setPlacementFunction([](HxU32 e, const HxManipulatorActiveState& state) {
    return HxEndEffectorPlacement(HxVector(e, state.activePositionState().jointPositions()[1], 0), HxOrientation());
  });
  sim.kinematics(0).setCenterOfMassFunction(
      [](const HxManipulatorActiveState& state) { return HxVector(state.velocityState().jointVelocities()[0], 0, 0); });
  sim.setJointPositions(0, {0.0, 0.75});
  sim.setJointVelocities(0, {-0.5, 0.0});
  const HxManipulatorActiveState& dynamics = sim.individualSimulators()[0].activeState();
  EXPECT_EQ((std::vector<double>{sim.systemPositionStates()[0].jointPositions()[1],
                                 sim.controlOutputPositionStates()[0].jointPositions()[1],
                                 dynamics.positionState().jointPositions()[1],
                                 sim.systemVelocityStates()[0].jointVelocities()[0],
                                 sim.controlOutputVelocityStates()[0].jointVelocities()[0],
                                 dynamics.velocityState().jointVelocities()[0]}),
            (std::vector<double>{0.75, 0.75, 0.75, -0.5, -0.5, -0.5}));

  const HxIndividualManipulator& manipulator = sim.manipulators()[0];
  EXPECT_EQ(manipulator.endEffectorPlacement(0, sim.activeStates()[0]).translation(), HxVector(0, 0.75, 0));
  EXPECT_EQ(manipulator.centerOfMass(sim.activeStates()[0]), HxVector(-0.5, 0, 0));
  HxManipulatorActiveState other(2);
  other.mutablePositionState().setJointPositions({0.0, -3.0});
  EXPECT_EQ(manipulator.endEffectorPlacement(0, other).translation(), HxVector(0, -3.0, 0));
  sim.kinematics(0).setPlacementFunction(nullptr);
  EXPECT_EQ(manipulator.endEffectorPlacement(0, other), HxEndEffectorPlacement());

  sim.setActiveState(0, other);
  EXPECT_EQ(sim.activeStates()[0], other);
  EXPECT_EQ(sim.individualSimulators()[0].activeState(), other);
}

// Queries return the held vectors, refreshed in place (the same storage, the new values); what
// a capture does per sample (copy states into a working state sized at set-up, ask for
// placements, motions, centre of mass, angles, converters, links) allocates nothing.
TEST(HxSystemSimulation, ReadingNeitherCopiesNorAllocates) {
  HxScriptedSimulation sim(2, 6, 2);
  const HxSystemSimulation& view = sim;
  const std::vector<HxManipulatorActiveState>* activeStates = &view.activeStates();
  const double* jointPositions = view.activeStates()[1].positionState().jointPositions().data();
  const HxIndividualManipulator* model = &view.manipulators()[1];
  sim.setDesiredPlacement(1, 1, HxEndEffectorPlacement(HxVector(1, 2, 3), HxOrientation()));
  HxManipulatorActiveState working = sim.activeStates()[1];
  sim.setJointPositions(1, {1, 2, 3, 4, 5, 6});
  sim.setJointVelocities(1, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(&view.activeStates(), activeStates);
  EXPECT_EQ(view.activeStates()[1].positionState().jointPositions().data(), jointPositions);
  EXPECT_EQ(jointPositions[5], 6.0);
  EXPECT_EQ(&view.manipulators()[1], model);
  EXPECT_EQ(&view.activeStates()[1].activePositionState(), &view.activeStates()[1].positionState());

  HxAllocationCounter counter;
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
    sum += dynamic_cast<const HxDcElectricMotor*>(manipulator.jointDrive(2).powerConverter()) ? 1.0 : 0.0;
    sum += manipulator.findLink("link4") ? 1.0 : 0.0;
  }
  EXPECT_EQ(counter.allocations(), 0u);
  EXPECT_GT(sum, 0.0);
  EXPECT_EQ(working.positionState().jointPositions()[5], 6.0);
}

}  // namespace
