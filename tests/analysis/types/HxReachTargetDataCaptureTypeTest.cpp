// HxReachTargetDataCaptureType: the reached flag against both tolerances (equality counting as
// reached), point and frame end effectors, the desired placement carried over, the event
// flags and its tolerances (index checks: HxDataCaptureTypeSharedTest).

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/types/HxReachTargetDataCaptureType.h"
#include "simulation/HxEndEffector.h"
#include "simulation/HxScriptedSimulation.h"
#include "tests/analysis/types/HxTypesTestSupport.h"

namespace {

using HxTypesTest::values;

double reached(const HxDataCaptureType& type) { return type.data()[0].value(); }
double translationError(const HxDataCaptureType& type) { return type.data()[1].value(); }
double orientationError(const HxDataCaptureType& type) { return type.data()[2].value(); }
std::vector<double> events(const HxDataCaptureType& type) {
  return {type.data()[17].value(), type.data()[18].value(), type.data()[19].value()};
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
    EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
    EXPECT_EQ(values(reach), (std::vector<double>{1, 0, 0, 1, 2, 3, 0.5, 0.5, 0.5, 0.5, 1, 2, 3, 0.5, 0.5, 0.5, 0.5,
                                                  1, 0, 1}))
        << "dynamics " << dynamics;
  }
  scene.sim.propagationResult(0) = HxPropagationResultData(false, true, false);
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  EXPECT_EQ(events(reach), (std::vector<double>{0, 1, 0}));
  scene.sim.mutablePropagationResults().clear();
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  EXPECT_EQ(events(reach), (std::vector<double>{0, 0, 0}));
}

// The reached flag against both tolerances (0.001 by default): an error equal to a tolerance
// counts as reached; the orientation counts for a frame end effector, not for a point one.
TEST(HxReachTargetDataCaptureType, ReachedWithinBothTolerances) {
  struct Case {
    const char* what;
    double offset;
    double angle;
    bool point;
    double reached;
  };
  const Case cases[] = {{"translation error at the tolerance", 0.001, 0, false, 1},
                        {"translation error above it", 0.0011, 0, false, 0},
                        {"orientation error above the tolerance, frame", 0, 0.01, false, 0},
                        {"orientation error above the tolerance, point", 0, 0.01, true, 1},
                        {"translation error above the tolerance, point", 0.0011, 0.01, true, 0}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Scene scene;
    scene.place(HxEndEffectorPlacement(HxVector(0, 0, 0), HxOrientation()),
                HxEndEffectorPlacement(HxVector(c.offset, 0, 0), turnedBy(c.angle)));
    if (c.point) {
      ASSERT_TRUE(scene.sim.setEndEffectorToken(0, 1, HxControl::HxPointEndEffectorToken));
    }
    HxReachTargetDataCaptureType reach;
    EXPECT_EQ(reach.translationTolerance(), 0.001);
    EXPECT_EQ(reach.orientationTolerance(), 0.001);
    EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
    EXPECT_EQ(translationError(reach), c.offset);
    EXPECT_NEAR(orientationError(reach), c.angle, 1e-12);
    EXPECT_EQ(reached(reach), c.reached);
  }

  // An orientation tolerance equal to the error is reached, one just below it is not.
  Scene scene;
  scene.place(HxEndEffectorPlacement(HxVector(1, 0, 0), HxOrientation()),
              HxEndEffectorPlacement(HxVector(1, 0, 0), kTurned));
  double angle = 0.0;
  HxVector axis;
  HxOrientation().angleAxisBetween(kTurned, angle, axis);
  HxReachTargetDataCaptureType reach;
  reach.setOrientationTolerance(angle);
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  EXPECT_EQ(orientationError(reach), angle);
  EXPECT_EQ(reached(reach), 1.0);
  reach.setOrientationTolerance(std::nextafter(angle, 0.0));
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  EXPECT_EQ(reached(reach), 0.0);
}

// A sample without a desired placement for the end effector reuses the previous one.
TEST(HxReachTargetDataCaptureType, KeepsTheLastDesiredPlacement) {
  Scene scene;
  HxReachTargetDataCaptureType reach;
  scene.place(HxEndEffectorPlacement(HxVector(0, 0, 0), HxOrientation()),
              HxEndEffectorPlacement(HxVector(4, 5, 6), kTurned));
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  const std::vector<double> first = values(reach);
  EXPECT_EQ(first[3], 4.0);

  // No entry for the end effector, then none for the manipulator.
  scene.sim.desiredPlacementEntry(0).mutablePlacements().resize(1);
  scene.sim.setEndEffectorPlacement(0, 1, HxEndEffectorPlacement(HxVector(4, 5, 6), kTurned));
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  for (HxU32 i = 3; i < 10; ++i) EXPECT_EQ(reach.data()[i].value(), first[i]) << "column " << i;
  EXPECT_EQ(reached(reach), 1.0) << "the actual placement reached the kept target";

  scene.sim.mutableDesiredEndEffectorPlacements().clear();
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  for (HxU32 i = 3; i < 10; ++i) EXPECT_EQ(reach.data()[i].value(), first[i]) << "column " << i;

  // A fresh object has no target yet: the identity placement.
  HxReachTargetDataCaptureType fresh;
  EXPECT_TRUE(fresh.captureData(scene.sim, 0, 1));
  EXPECT_EQ(values(fresh)[3], 0.0);
  EXPECT_EQ(values(fresh)[6], 1.0);
}

// The actual and desired placements are computed for the active state with dynamics and for
// the system state without; a manipulator without an entry keeps the previous working state.
TEST(HxReachTargetDataCaptureType, UsesTheWorkingStateOfItsPath) {
  Scene scene;
  scene.sim.kinematics(0).setPlacementFunction([](HxU32, const HxManipulatorActiveState& state) {
    return HxEndEffectorPlacement(HxVector(state.positionState().jointPositions()[0], 0, 0), HxOrientation());
  });
  scene.sim.activeState(0).mutablePositionState().setJointPositions({0.25, 0});
  scene.sim.systemPositionState(0).setJointPositions({0.75, 0});
  HxReachTargetDataCaptureType reach;

  scene.sim.setDynamicsEnabled(true);
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 0));
  EXPECT_EQ(reach.data()[10].value(), 0.25);
  scene.sim.setDynamicsEnabled(false);
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 0));
  EXPECT_EQ(reach.data()[10].value(), 0.75);
  scene.sim.mutableSystemVelocityStates().clear();
  scene.sim.systemPositionState(0).setJointPositions({0.5, 0});
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 0));
  EXPECT_EQ(reach.data()[10].value(), 0.75) << "both system entries are needed";
}

// The tolerances take part in comparison and copies.
TEST(HxReachTargetDataCaptureType, ComparesTolerances) {
  HxReachTargetDataCaptureType reach;
  HxReachTargetDataCaptureType other;
  other.setTranslationTolerance(0.002);
  EXPECT_FALSE(reach.equality(&other));
  other = reach;
  other.setOrientationTolerance(0.1);
  EXPECT_FALSE(reach.equality(&other));
  const HxReachTargetDataCaptureType copy(other);
  EXPECT_TRUE(copy.equality(&other));
}

}  // namespace
