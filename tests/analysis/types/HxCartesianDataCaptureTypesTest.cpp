// The Cartesian quantities: base placement, velocity and acceleration, centre of mass, and end
// effector placement, velocity and acceleration, on both paths, with their index checks and
// the working state they carry between samples.

#include <vector>

#include <gtest/gtest.h>

#include "analysis/types/HxCartesianDataCaptureTypes.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/analysis/types/HxTypesTestSupport.h"

namespace {

using namespace HxTypesTest;

// The base placement and velocity come from the active state with dynamics and from the
// system state without (refused when there is none); the base acceleration from the dynamic
// simulator. A missing active state is refused even when the system state has one. (Placement
// and velocity share their look-up: the refusals are tried with the placement.) The centre of
// mass is asked for the dynamic simulator's own active state, or for a state holding only the
// system position state; both the simulators and the manipulators bound m.
TEST(HxCartesianDataCaptureTypes, BaseQuantitiesAndCenterOfMassReadTheStateOfTheirPath) {
  HxScriptedSimulation sim(2, 2, 1);
  sim.activeState(1).mutablePositionState().setCoordSystemXform(
      HxCoordSystemXform(HxVector(1, 2, 3), HxOrientation(0.5, 0.5, 0.5, 0.5)));
  sim.systemPositionState(1).setCoordSystemXform(HxCoordSystemXform(HxVector(4, 5, 6), HxOrientation(0, 1, 0, 0)));
  sim.activeState(1).mutableVelocityState().setBaseVelocity(HxGeneralMotion(1, 2, 3, 4, 5, 6));
  sim.systemVelocityState(1).setBaseVelocity(HxGeneralMotion(6, 5, 4, 3, 2, 1));
  // The centre of mass tells which state was passed: X the first joint position, Y the number
  // of joint velocities, Z the first joint velocity when there is one.
  sim.kinematics(1).setCenterOfMassFunction([](const HxManipulatorActiveState& state) {
    const std::vector<double>& velocities = state.velocityState().jointVelocities();
    return HxVector(state.positionState().jointPositions()[0], static_cast<double>(velocities.size()),
                    velocities.empty() ? -1.0 : velocities[0]);
  });
  HxManipulatorActiveState& simulatorState = sim.individualSimulator(1).mutableActiveState();
  simulatorState = HxManipulatorActiveState(2);
  simulatorState.mutablePositionState().setJointPositions({0.25, 0});
  simulatorState.mutableVelocityState().setJointVelocities({0.75, 0});
  sim.systemPositionState(1).setJointPositions({0.5, 0});
  sim.individualSimulator(1).setBaseAcceleration(HxGeneralMotion(7, 8, 9, 10, 11, 12));
  HxBasePositionDataCaptureType position;
  HxBaseVelocityDataCaptureType velocity;
  HxBaseAccelerationDataCaptureType acceleration;
  HxCenterOfMassDataCaptureType centerOfMass;

  sim.setDynamicsEnabled(true);
  EXPECT_EQ(capture(position, sim, 1, 99), captured({1, 2, 3, 0.5, 0.5, 0.5, 0.5}));
  EXPECT_EQ(capture(velocity, sim, 1, 0), captured({1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(capture(acceleration, sim, 1, 0), captured({7, 8, 9, 10, 11, 12}));
  EXPECT_EQ(capture(centerOfMass, sim, 1, 0), captured({0.25, 2, 0.75}));
  sim.setDynamicsEnabled(false);
  EXPECT_EQ(capture(position, sim, 1, 0), captured({4, 5, 6, 0, 1, 0, 0}));
  EXPECT_EQ(capture(velocity, sim, 1, 0), captured({6, 5, 4, 3, 2, 1}));
  EXPECT_EQ(capture(centerOfMass, sim, 1, 0), captured({0.5, 0, -1}));
  sim.setSystemStatePresent(false);
  EXPECT_EQ(capture(position, sim, 1, 0), refused(7));
  EXPECT_EQ(capture(centerOfMass, sim, 1, 0), refused(3));

  // Fewer manipulators (for the centre of mass) or active states (for the placement) than states.
  sim.setSystemStatePresent(true);
  sim.mutableManipulators().resize(1);
  EXPECT_EQ(capture(centerOfMass, sim, 1, 0), refused(3));
  sim.setDynamicsEnabled(true);
  EXPECT_EQ(capture(centerOfMass, sim, 1, 0), refused(3));
  sim.mutableActiveStates().resize(1);
  EXPECT_EQ(capture(position, sim, 1, 0), refused(7));
}

// The end-effector velocity and acceleration are the end effector's answers for the working state;
// without dynamics the position and the velocity state are refreshed each on its own. The end-
// effector placement is computed for the active state with dynamics and resolved from the held
// placements without (refused when there are none); a sample without a state entry for the
// manipulator computes on the previous working state.
TEST(HxCartesianDataCaptureTypes, EndEffectorMotionAndPlacementOnBothPaths) {
  HxScriptedSimulation sim(1, 1, 2);
  // Linear X: first joint position (acceleration: first joint acceleration); linear Y: first
  // joint velocity; angular Z: the index.
  sim.kinematics(0).setVelocityFunction([](HxU32 e, const HxManipulatorActiveState& state) {
    return HxGeneralMotion(state.positionState().jointPositions()[0], state.velocityState().jointVelocities()[0], 0, 0,
                           0, e);
  });
  sim.kinematics(0).setAccelerationFunction([](HxU32 e, const HxManipulatorActiveState& state) {
    return HxGeneralMotion(state.accelerationState().jointAccelerations()[0], 0, 0, 0, 0, e);
  });
  sim.activeState(0).mutablePositionState().setJointPositions({1});
  sim.activeState(0).mutableVelocityState().setJointVelocities({2});
  sim.activeState(0).mutableAccelerationState().setJointAccelerations({2.5});
  sim.systemPositionState(0).setJointPositions({3});
  sim.systemVelocityState(0).setJointVelocities({4});
  HxEndEffectorVelocityDataCaptureType velocity;
  HxEndEffectorAccelerationDataCaptureType acceleration;

  sim.setDynamicsEnabled(true);
  EXPECT_EQ(capture(velocity, sim, 0, 1), captured({1, 2, 0, 0, 0, 1}));
  EXPECT_EQ(capture(acceleration, sim, 0, 1), captured({2.5, 0, 0, 0, 0, 1}));
  sim.setDynamicsEnabled(false);
  EXPECT_EQ(capture(velocity, sim, 0, 0), captured({3, 4, 0, 0, 0, 0}));
  sim.systemPositionState(0).setJointPositions({5});
  sim.mutableSystemVelocityStates().clear();
  EXPECT_EQ(capture(velocity, sim, 0, 0), captured({5, 4, 0, 0, 0, 0})) << "only the position entry is there";
  sim.systemPositionState(0).setJointPositions({6});
  sim.setSystemStatePresent(false);
  EXPECT_EQ(capture(velocity, sim, 0, 0), captured({5, 4, 0, 0, 0, 0})) << "no system state: nothing refreshed";

  // X of the computed placement is the first joint position of the state passed.
  sim.kinematics(0).setPlacementFunction([](HxU32 e, const HxManipulatorActiveState& state) {
    return HxEndEffectorPlacement(HxVector(state.positionState().jointPositions()[0], e, 0), HxOrientation(0, 0, 0, 1));
  });
  sim.activeState(0).mutablePositionState().setJointPositions({0.3});
  sim.setHeldPlacement(0, 1, HxEndEffectorPlacement(HxVector(7, 8, 9), HxOrientation(0, 1, 0, 0)));
  HxEndEffectorPlacementDataCaptureType placement;

  sim.setDynamicsEnabled(true);
  EXPECT_EQ(capture(placement, sim, 0, 1), captured({0.3, 1, 0, 0, 0, 0, 1}));
  sim.mutableActiveStates().clear();
  EXPECT_EQ(capture(placement, sim, 0, 0), captured({0.3, 0, 0, 0, 0, 0, 1})) << "the last working state";
  sim.setDynamicsEnabled(false);
  EXPECT_EQ(capture(placement, sim, 0, 1), captured({7, 8, 9, 0, 1, 0, 0}));
  sim.mutableEndEffectorPlacements().clear();
  EXPECT_EQ(capture(placement, sim, 0, 1), refused(7));
}

}  // namespace
