// One manipulator's model: links, neutral answers without kinematics, and the default
// resolution of held placements.
#include "simulation/HxIndividualManipulator.h"

#include <gtest/gtest.h>

#include <memory>

#include "simulation/HxManipulatorActiveState.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

// Kinematics that answer nothing themselves and keep the default resolvePlacement.
class HxBaseRelativeKinematics : public HxManipulatorKinematics {
 public:
  using State = HxManipulatorActiveState;
  HxBoolean endEffectorPlacement(HxU32, const State&, HxEndEffectorPlacement&) const override { return false; }
  HxBoolean endEffectorVelocity(HxU32, const State&, HxGeneralMotion&) const override { return false; }
  HxBoolean endEffectorAcceleration(HxU32, const State&, HxGeneralMotion&) const override { return false; }
  HxBoolean centerOfMass(const State&, HxVector&) const override { return false; }
};

// link(position) is null for an absent position or past the end; findLink finds the first
// link of exactly that identifier and returns the held link, not a copy.
TEST(HxIndividualManipulator, LinksByPositionAndByIdentifier) {
  HxIndividualManipulator manipulator;
  manipulator.addLink(HxLink("base", 0));
  manipulator.addAbsentLink();
  manipulator.addLink(HxLink("elbow", 2));
  manipulator.addLink(HxLink("elbow", 3));
  ASSERT_EQ(manipulator.numberOfLinks(), 4u);
  EXPECT_TRUE(manipulator.link(0) && manipulator.link(0)->identifier() == "base");
  EXPECT_TRUE(manipulator.link(1) == nullptr && manipulator.link(4) == nullptr);
  EXPECT_EQ(manipulator.findLink("elbow"), manipulator.link(2));
  for (const char* missing : {"elbo", "elbow ", ""}) EXPECT_EQ(manipulator.findLink(missing), nullptr) << missing;
}

// Without kinematics (also after setKinematics(nullptr)) every answer is the identity or zero,
// and the end effector reports false after clearing its output. New joints get ratio 1 and no
// converter.
TEST(HxIndividualManipulator, WithoutKinematicsEveryAnswerIsNeutral) {
  HxIndividualManipulator manipulator(std::make_shared<HxBaseRelativeKinematics>());
  manipulator.setKinematics(nullptr);
  manipulator.addEndEffector(HxControl::HxFrameEndEffectorToken);
  const HxManipulatorActiveState state(1);
  HxGeneralMotion out(1, 1, 1, 1, 1, 1);
  EXPECT_FALSE(manipulator.endEffector(0).velocity(manipulator, state, out) || out != HxGeneralMotion());
  EXPECT_TRUE(manipulator.endEffectorPlacement(0, state) == HxEndEffectorPlacement() &&
              manipulator.centerOfMass(state) == HxVector());
  const HxManipulatorEndEffectorPlacement entry(
      std::vector<HxEndEffectorPlacement>{HxEndEffectorPlacement(HxVector(1, 2, 3), HxOrientation())});
  EXPECT_EQ(entry.endEffectorPlacement(0, HxPositionState(1), manipulator), HxEndEffectorPlacement());
  manipulator.setJointCount(1);
  EXPECT_TRUE(manipulator.jointDrive(0).scaleFactor() == 1.0 && manipulator.jointDrive(0).powerConverter() == nullptr);
}

// By default a held placement is relative to the manipulator's base: world = base * entry;
// past the last entry the identity.
TEST(HxManipulatorEndEffectorPlacement, DefaultResolutionIsRelativeToTheBase) {
  const HxIndividualManipulator manipulator(std::make_shared<HxBaseRelativeKinematics>());
  const HxOrientation tilt = HxOrientation::fromAxisAngle(HxVector(1, 0, 0), 0.1);
  const HxOrientation quarterZ = HxOrientation::fromAxisAngle(HxVector(0, 0, 1), kPi / 2);
  const HxManipulatorEndEffectorPlacement entry(std::vector<HxEndEffectorPlacement>{
      HxEndEffectorPlacement(HxVector(0, 0, 1), HxOrientation()), HxEndEffectorPlacement(HxVector(2, 0, 0), tilt)});
  const HxPositionState state(std::vector<double>{0.0}, HxCoordSystemXform(HxVector(1, 1, 0), quarterZ));

  const HxEndEffectorPlacement placement = entry.endEffectorPlacement(1, state, manipulator);
  EXPECT_LT(placement.translation().distanceTo(HxVector(1, 3, 0)), 1e-12);
  double angle = 1.0;
  HxVector axis;
  placement.orientation().angleAxisBetween(quarterZ * tilt, angle, axis);
  EXPECT_NEAR(angle, 0.0, 1e-12);
  EXPECT_EQ(entry.endEffectorPlacement(0, HxPositionState(1), manipulator), entry[0]);
  EXPECT_EQ(entry.endEffectorPlacement(2, state, manipulator), HxEndEffectorPlacement());
}

}  // namespace
