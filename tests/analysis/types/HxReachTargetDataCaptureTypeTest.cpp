// HxReachTargetDataCaptureType: the reached flag against both tolerances (equality counting as
// reached), point and frame end effectors, the desired placement carried over, the event
// flags and its tolerances (index checks: HxDataCaptureTypeSharedTest).

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/types/HxReachTargetDataCaptureType.h"
#include "simulation/HxEndEffector.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/analysis/types/HxTypesTestSupport.h"

namespace {

using HxTypesTest::values;

// `count` columns of the buffer from `first`: 0 reached, 1 translation and 2 orientation
// error, 3-9 desired and 10-16 actual placement, 17-19 the event flags.
std::vector<double> columns(const HxDataCaptureType& type, HxU32 first, HxU32 count) {
  const std::vector<double> all = values(type);
  return std::vector<double>(all.begin() + first, all.begin() + first + count);
}

HxOrientation turnedBy(double angle) { return HxOrientation::fromAxisAngle(HxVector(0, 0, 1), angle); }
const HxOrientation kTurned = turnedBy(0.01);

// One manipulator with two end effectors; end effector 1 is at `actual`, asked to reach
// `desired`.
struct Scene {
  HxScriptedSimulation sim{1, 2, 2};
  void place(const HxEndEffectorPlacement& actual, const HxEndEffectorPlacement& desired) {
    sim.setEndEffectorPlacement(0, 1, actual);
    sim.setDesiredPlacement(0, 1, desired);
  }
};

// Equal placements on both paths: reached with no error, every column in its place; the event
// flags are those of the manipulator's propagation result, zeros without one.
TEST(HxReachTargetDataCaptureType, RecordsBothPlacementsErrorsAndEvents) {
  Scene scene;
  const HxEndEffectorPlacement placement(HxVector(1, 2, 3), HxOrientation(0.5, 0.5, 0.5, 0.5));
  scene.place(placement, placement);
  scene.sim.propagationResult(0) = HxPropagationResultData(true, false, true);
  HxReachTargetDataCaptureType reach;
  for (bool dynamics : {true, false}) {
    scene.sim.setDynamicsEnabled(dynamics);
    EXPECT_EQ(HxTypesTest::capture(reach, scene.sim, 0, 1),
              HxTypesTest::captured({1, 0, 0, 1, 2, 3, 0.5, 0.5, 0.5, 0.5, 1, 2, 3, 0.5, 0.5, 0.5, 0.5, 1, 0, 1}))
        << "dynamics " << dynamics;
  }
  scene.sim.mutablePropagationResults().clear();
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1) && columns(reach, 17, 3) == std::vector<double>(3));
}

// The reached flag against both tolerances (0.001 by default): an error equal to a tolerance
// counts as reached; the orientation counts for a frame end effector, not for a point one. The
// tolerances take part in comparison and copies.
TEST(HxReachTargetDataCaptureType, ReachedWithinBothTolerances) {
  EXPECT_TRUE(HxReachTargetDataCaptureType().translationTolerance() == 0.001 &&
              HxReachTargetDataCaptureType().orientationTolerance() == 0.001);
  const struct {
    const char* what;
    double offset, angle;
    bool point;
    double reached;
  } cases[] = {{"translation error at the tolerance", 0.001, 0, false, 1},
               {"translation error above it", 0.0011, 0, false, 0},
               {"orientation error above the tolerance, frame", 0, 0.01, false, 0},
               {"orientation error above the tolerance, point", 0, 0.01, true, 1},
               {"translation error above the tolerance, point", 0.0011, 0.01, true, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Scene scene;
    scene.place(HxEndEffectorPlacement(HxVector(0, 0, 0), HxOrientation()),
                HxEndEffectorPlacement(HxVector(c.offset, 0, 0), turnedBy(c.angle)));
    EXPECT_TRUE(!c.point || scene.sim.setEndEffectorToken(0, 1, HxControl::HxPointEndEffectorToken));
    HxReachTargetDataCaptureType reach;
    EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
    EXPECT_EQ(columns(reach, 0, 2), (std::vector<double>{c.reached, c.offset}));
    EXPECT_NEAR(reach.data()[2].value(), c.angle, 1e-12);
  }

  // An orientation tolerance equal to the error is reached, one just below it is not.
  Scene scene;
  scene.place(HxEndEffectorPlacement(HxVector(1, 0, 0), HxOrientation()),
              HxEndEffectorPlacement(HxVector(1, 0, 0), kTurned));
  HxReachTargetDataCaptureType reach;
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  const double angle = reach.data()[2].value();
  reach.setOrientationTolerance(angle);
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1) && reach.data()[0].value() == 1.0);
  reach.setOrientationTolerance(std::nextafter(angle, 0.0));
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1) && reach.data()[0].value() == 0.0);

  // The tolerances take part in comparison and copies.
  HxReachTargetDataCaptureType other(reach);
  other.setTranslationTolerance(0.002);
  EXPECT_TRUE(HxReachTargetDataCaptureType(reach).equality(&reach) && !other.equality(&reach));
  other = reach;
  other.setOrientationTolerance(0.1);
  EXPECT_FALSE(other.equality(&reach));
}

// A sample without a desired placement for the end effector, or for the manipulator, reuses the
// previous one; a fresh object has the identity placement as its target. The actual and desired
// placements are computed for the active state with dynamics and for the system state without; a
// manipulator without both system entries keeps the previous working state.
TEST(HxReachTargetDataCaptureType, KeepsTheLastTargetAndUsesTheWorkingStateOfItsPath) {
  Scene scene;
  HxReachTargetDataCaptureType reach;
  scene.place(HxEndEffectorPlacement(HxVector(0, 0, 0), HxOrientation()),
              HxEndEffectorPlacement(HxVector(4, 5, 6), kTurned));
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  const std::vector<double> desired = columns(reach, 3, 7);
  EXPECT_EQ(desired[0], 4.0);

  scene.sim.desiredPlacementEntry(0).mutablePlacements().resize(1);
  scene.sim.setEndEffectorPlacement(0, 1, HxEndEffectorPlacement(HxVector(4, 5, 6), kTurned));
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1) && columns(reach, 3, 7) == desired);
  EXPECT_EQ(columns(reach, 0, 1), std::vector<double>{1}) << "the actual placement reached the kept target";
  scene.sim.mutableDesiredEndEffectorPlacements().clear();
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1) && columns(reach, 3, 7) == desired);

  HxReachTargetDataCaptureType fresh;
  EXPECT_TRUE(fresh.captureData(scene.sim, 0, 1) && columns(fresh, 3, 7) == (std::vector<double>{0, 0, 0, 1, 0, 0, 0}));

  scene.sim.kinematics(0).setPlacementFunction([](HxU32, const HxManipulatorActiveState& state) {
    return HxEndEffectorPlacement(HxVector(state.positionState().jointPositions()[0], 0, 0), HxOrientation());
  });
  scene.sim.activeState(0).mutablePositionState().setJointPositions({0.25, 0});
  scene.sim.systemPositionState(0).setJointPositions({0.75, 0});

  const auto actualX = [&] { return reach.captureData(scene.sim, 0, 0) ? reach.data()[10].value() : -1.0; };
  scene.sim.setDynamicsEnabled(true);
  EXPECT_EQ(actualX(), 0.25);
  scene.sim.setDynamicsEnabled(false);
  EXPECT_EQ(actualX(), 0.75);
  scene.sim.mutableSystemVelocityStates().clear();
  scene.sim.systemPositionState(0).setJointPositions({0.5, 0});
  EXPECT_EQ(actualX(), 0.75);
}

}  // namespace
