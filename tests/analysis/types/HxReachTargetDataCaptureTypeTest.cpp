// HxReachTargetDataCaptureType: the reached flag against both tolerances (equality counting as
// reached), point and frame end effectors, the desired placement carried over, the event
// flags, its index checks and its tolerances.

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/types/HxReachTargetDataCaptureType.h"
#include "simulation/HxEndEffector.h"
#include "simulation/HxScriptedSimulation.h"

namespace {

std::vector<double> values(const HxDataCaptureType& type) {
  std::vector<double> result;
  for (HxU32 i = 0; i < type.data().size(); ++i) result.push_back(type.data()[i].value());
  return result;
}

double reached(const HxDataCaptureType& type) { return type.data()[0].value(); }
double translationError(const HxDataCaptureType& type) { return type.data()[1].value(); }
double orientationError(const HxDataCaptureType& type) { return type.data()[2].value(); }

const HxOrientation kTurned = HxOrientation::fromAxisAngle(HxVector(0, 0, 1), 0.01);

// One manipulator with two end effectors; end effector 1 is at `actual`, asked to reach
// `desired`.
struct Scene {
  HxScriptedSimulation sim{1, 2, 2};
  void place(const HxEndEffectorPlacement& actual, const HxEndEffectorPlacement& desired) {
    sim.setEndEffectorPlacement(0, 1, actual);
    sim.setDesiredPlacement(0, 1, desired);
  }
};

// Equal placements: reached with no error; every column in its place.
TEST(HxReachTargetDataCaptureType, RecordsBothPlacementsAndErrors) {
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

  // Without a propagation result the event flags are zero and the capture still succeeds.
  scene.sim.mutablePropagationResults().clear();
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  EXPECT_EQ(reach.data()[17].value(), 0.0);
  EXPECT_EQ(reach.data()[18].value(), 0.0);
  EXPECT_EQ(reach.data()[19].value(), 0.0);
  scene.sim.mutablePropagationResults().resize(1);
  scene.sim.propagationResult(0) = HxPropagationResultData(false, true, false);
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  EXPECT_EQ(reach.data()[17].value(), 0.0);
  EXPECT_EQ(reach.data()[18].value(), 1.0);
  EXPECT_EQ(reach.data()[19].value(), 0.0);
}

// A translation error exactly at the tolerance is reached, one just above is not; the default
// tolerance is 0.001.
TEST(HxReachTargetDataCaptureType, TranslationToleranceIncludesEquality) {
  Scene scene;
  HxReachTargetDataCaptureType reach;
  EXPECT_EQ(reach.translationTolerance(), 0.001);
  EXPECT_EQ(reach.orientationTolerance(), 0.001);

  scene.place(HxEndEffectorPlacement(HxVector(0, 0, 0), HxOrientation()),
              HxEndEffectorPlacement(HxVector(0.001, 0, 0), HxOrientation()));
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  ASSERT_EQ(translationError(reach), 0.001);
  EXPECT_EQ(reached(reach), 1.0);

  scene.place(HxEndEffectorPlacement(HxVector(0, 0, 0), HxOrientation()),
              HxEndEffectorPlacement(HxVector(0.0011, 0, 0), HxOrientation()));
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  EXPECT_EQ(reached(reach), 0.0);

  // A tolerance set to the error itself, then just below it.
  scene.place(HxEndEffectorPlacement(HxVector(0.1, 0.2, 0.3), HxOrientation()),
              HxEndEffectorPlacement(HxVector(0.4, -0.1, 0.2), HxOrientation()));
  const double error = HxVector(0.1, 0.2, 0.3).distanceTo(HxVector(0.4, -0.1, 0.2));
  reach.setTranslationTolerance(error);
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  EXPECT_EQ(translationError(reach), error);
  EXPECT_EQ(reached(reach), 1.0);
  reach.setTranslationTolerance(std::nextafter(error, 0.0));
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  EXPECT_EQ(reached(reach), 0.0);
}

// An orientation error above the tolerance fails a frame end effector but not a point one;
// an error exactly at the tolerance is reached.
TEST(HxReachTargetDataCaptureType, OrientationCountsOnlyForFrameEndEffectors) {
  Scene scene;
  HxReachTargetDataCaptureType reach;
  scene.place(HxEndEffectorPlacement(HxVector(1, 0, 0), HxOrientation()),
              HxEndEffectorPlacement(HxVector(1, 0, 0), kTurned));

  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  EXPECT_NEAR(orientationError(reach), 0.01, 1e-12);
  EXPECT_EQ(translationError(reach), 0.0);
  EXPECT_EQ(reached(reach), 0.0) << "frame end effector";

  ASSERT_TRUE(scene.sim.setEndEffectorToken(0, 1, HxControl::HxPointEndEffectorToken));
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  EXPECT_EQ(reached(reach), 1.0) << "point end effector";

  // A point end effector is still judged on its translation.
  reach.setTranslationTolerance(-1.0);
  EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
  EXPECT_EQ(reached(reach), 0.0);
  reach.setTranslationTolerance(0.001);

  // Frame again, with the tolerance at the error and just below it.
  ASSERT_TRUE(scene.sim.setEndEffectorToken(0, 1, HxControl::HxFrameEndEffectorToken));
  double angle = 0.0;
  HxVector axis;
  HxOrientation().angleAxisBetween(kTurned, angle, axis);
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

// An end effector or a manipulator past the last gives false and 20 zeros.
TEST(HxReachTargetDataCaptureType, RefusesIndicesOutOfRange) {
  Scene scene;
  const HxEndEffectorPlacement placement(HxVector(1, 2, 3), HxOrientation());
  scene.place(placement, placement);
  HxReachTargetDataCaptureType reach;
  for (bool dynamics : {true, false}) {
    scene.sim.setDynamicsEnabled(dynamics);
    EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
    EXPECT_FALSE(reach.captureData(scene.sim, 0, 2));
    EXPECT_EQ(values(reach), std::vector<double>(20, 0.0));
    EXPECT_TRUE(reach.captureData(scene.sim, 0, 1));
    EXPECT_FALSE(reach.captureData(scene.sim, 1, 1));
    EXPECT_EQ(values(reach), std::vector<double>(20, 0.0));
  }
}

// The tolerances take part in comparison and copies.
TEST(HxReachTargetDataCaptureType, ComparesTolerances) {
  HxReachTargetDataCaptureType reach;
  HxReachTargetDataCaptureType other;
  EXPECT_TRUE(reach.equality(&other));
  other.setTranslationTolerance(0.002);
  EXPECT_FALSE(reach.equality(&other));
  other = reach;
  other.setOrientationTolerance(0.1);
  EXPECT_FALSE(reach.equality(&other));
  HxReachTargetDataCaptureType copy(other);
  EXPECT_TRUE(copy.equality(&other));
  EXPECT_EQ(copy.orientationTolerance(), 0.1);
}

}  // namespace
