// One manipulator's model: links, drives, neutral answers without kinematics,
// and the default resolution of held placements.
#include "simulation/HxIndividualManipulator.h"

#include <gtest/gtest.h>

#include <memory>

#include "simulation/HxManipulatorActiveState.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

// A converter that is not a DC motor.
class HxHydraulicActuator : public HxBasePowerConverter {};

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
  ASSERT_NE(manipulator.link(0), nullptr);
  EXPECT_EQ(manipulator.link(0)->identifier(), "base");
  EXPECT_EQ(manipulator.link(1), nullptr);
  EXPECT_EQ(manipulator.link(4), nullptr);
  EXPECT_EQ(manipulator.findLink("elbow"), manipulator.link(2));
  for (const char* missing : {"elbo", "elbow ", ""}) EXPECT_EQ(manipulator.findLink(missing), nullptr) << missing;
}

// A DC motor is told from other converters by dynamic_cast; new joints get ratio 1 and no
// converter; copies share the converter object.
TEST(HxIndividualManipulator, PowerConverterIsRecognisedByDynamicCast) {
  HxIndividualManipulator manipulator;
  manipulator.setJointCount(3);
  manipulator.mutableJointDrive(0) = HxJointDrive(50.0, std::make_shared<HxDcElectricMotor>(0.8));
  manipulator.mutableJointDrive(1).setPowerConverter(std::make_shared<HxHydraulicActuator>());
  const auto* motor = dynamic_cast<const HxDcElectricMotor*>(manipulator.jointDrive(0).powerConverter());
  ASSERT_NE(motor, nullptr);
  EXPECT_EQ(motor->divisor(), 0.8);
  ASSERT_NE(manipulator.jointDrive(1).powerConverter(), nullptr);
  EXPECT_EQ(dynamic_cast<const HxDcElectricMotor*>(manipulator.jointDrive(1).powerConverter()), nullptr);
  EXPECT_EQ(manipulator.jointDrive(2).powerConverter(), nullptr);
  EXPECT_EQ(manipulator.jointDrive(2).scaleFactor(), 1.0);
  EXPECT_EQ(HxIndividualManipulator(manipulator).jointDrive(0).powerConverter(), motor);
}

// Without kinematics (also after setKinematics(nullptr)) every answer is the identity or zero,
// and the end effector reports false after clearing its output.
TEST(HxIndividualManipulator, WithoutKinematicsEveryAnswerIsNeutral) {
  HxIndividualManipulator manipulator(std::make_shared<HxBaseRelativeKinematics>());
  manipulator.setKinematics(nullptr);
  manipulator.addEndEffector(HxControl::HxFrameEndEffectorToken);
  const HxManipulatorActiveState state(1);
  HxGeneralMotion out(1, 1, 1, 1, 1, 1);
  EXPECT_FALSE(manipulator.endEffector(0).velocity(manipulator, state, out));
  EXPECT_EQ(out, HxGeneralMotion());
  EXPECT_EQ(manipulator.endEffectorPlacement(0, state), HxEndEffectorPlacement());
  EXPECT_EQ(manipulator.endEffectorAcceleration(0, state), HxGeneralMotion());
  EXPECT_EQ(manipulator.centerOfMass(state), HxVector());
  const HxManipulatorEndEffectorPlacement entry(
      std::vector<HxEndEffectorPlacement>{HxEndEffectorPlacement(HxVector(1, 2, 3), HxOrientation())});
  EXPECT_EQ(entry.endEffectorPlacement(0, HxPositionState(1), manipulator), HxEndEffectorPlacement());
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
  EXPECT_NEAR(placement.translation().x(), 1.0, 1e-12);
  EXPECT_NEAR(placement.translation().y(), 3.0, 1e-12);
  EXPECT_NEAR(placement.translation().z(), 0.0, 1e-12);
  double angle = 1.0;
  HxVector axis;
  placement.orientation().angleAxisBetween(quarterZ * tilt, angle, axis);
  EXPECT_NEAR(angle, 0.0, 1e-12);
  EXPECT_EQ(entry.endEffectorPlacement(0, HxPositionState(1), manipulator), entry[0]);
  EXPECT_EQ(entry.endEffectorPlacement(2, state, manipulator), HxEndEffectorPlacement());
}

}  // namespace
