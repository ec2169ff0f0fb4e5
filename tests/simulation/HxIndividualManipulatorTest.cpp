#include "simulation/HxIndividualManipulator.h"

#include <memory>

#include <gtest/gtest.h>

#include "simulation/HxIndividualDynamicSimulator.h"
#include "simulation/HxManipulatorActiveState.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

// A converter that is not a DC motor.
class HxHydraulicActuator : public HxBasePowerConverter {};

// Kinematics that encode their arguments in their answers, and keep the default
// resolvePlacement.
class HxEchoKinematics : public HxManipulatorKinematics {
 public:
  HxBoolean endEffectorPlacement(HxU32 e, const HxManipulatorActiveState& state,
                                 HxEndEffectorPlacement& out) const override {
    out = HxEndEffectorPlacement(HxVector(e, state.positionState().jointPositions().at(0), 0), HxOrientation());
    return true;
  }
  HxBoolean endEffectorVelocity(HxU32 e, const HxManipulatorActiveState& state, HxGeneralMotion& out) const override {
    out = HxGeneralMotion(e, state.velocityState().jointVelocities().at(0), 0, 0, 0, 1);
    return true;
  }
  HxBoolean endEffectorAcceleration(HxU32 e, const HxManipulatorActiveState& state,
                                    HxGeneralMotion& out) const override {
    out = HxGeneralMotion(e, state.accelerationState().jointAccelerations().at(0), 0, 0, 0, 2);
    return true;
  }
  HxBoolean centerOfMass(const HxManipulatorActiveState& state, HxVector& out) const override {
    out = HxVector(0, 0, state.positionState().jointPositions().at(0));
    return true;
  }
};

HxIndividualManipulator threeLinkManipulator() {
  HxIndividualManipulator manipulator;
  manipulator.addLink(HxLink("base", 0));
  manipulator.addAbsentLink();
  manipulator.addLink(HxLink("elbow", 2));
  manipulator.addLink(HxLink("elbow", 3));  // duplicate identifier: the first one is found
  return manipulator;
}

TEST(HxIndividualManipulator, LinksByPositionAndByIdentifier) {
  const HxIndividualManipulator manipulator = threeLinkManipulator();
  ASSERT_EQ(manipulator.numberOfLinks(), 4u);

  ASSERT_NE(manipulator.link(0), nullptr);
  EXPECT_EQ(manipulator.link(0)->identifier(), "base");
  EXPECT_EQ(manipulator.link(1), nullptr) << "a position without a link";
  EXPECT_EQ(manipulator.link(4), nullptr) << "past the end";

  const HxLink* elbow = manipulator.findLink("elbow");
  ASSERT_NE(elbow, nullptr);
  EXPECT_EQ(elbow->index(), 2u);
  EXPECT_EQ(elbow, manipulator.link(2)) << "the link itself, not a copy";
  EXPECT_EQ(manipulator.findLink("elbo"), nullptr);
  EXPECT_EQ(manipulator.findLink("elbow "), nullptr);
  EXPECT_EQ(manipulator.findLink(""), nullptr);
}

TEST(HxIndividualManipulator, PowerConverterIsRecognisedByDynamicCast) {
  HxIndividualManipulator manipulator;
  manipulator.setJointCount(3);
  manipulator.mutableJointDrive(0) = HxJointDrive(50.0, std::make_shared<HxDcElectricMotor>(0.8));
  manipulator.mutableJointDrive(1).setPowerConverter(std::make_shared<HxHydraulicActuator>());
  ASSERT_EQ(manipulator.jointCount(), 3u);

  const HxJointDrive& motorDrive = manipulator.jointDrive(0);
  EXPECT_EQ(motorDrive.scaleFactor(), 50.0);
  const auto* motor = dynamic_cast<const HxDcElectricMotor*>(motorDrive.powerConverter());
  ASSERT_NE(motor, nullptr);
  EXPECT_EQ(motor->divisor(), 0.8);

  ASSERT_NE(manipulator.jointDrive(1).powerConverter(), nullptr);
  EXPECT_EQ(dynamic_cast<const HxDcElectricMotor*>(manipulator.jointDrive(1).powerConverter()), nullptr);
  EXPECT_EQ(manipulator.jointDrive(2).powerConverter(), nullptr);
  EXPECT_EQ(manipulator.jointDrive(2).scaleFactor(), 1.0);

  // Copies share the converter object.
  const HxIndividualManipulator copy = manipulator;
  EXPECT_EQ(copy.jointDrive(0).powerConverter(), motorDrive.powerConverter());
}

TEST(HxIndividualManipulator, EndEffectorsKeepIndexAndKind) {
  HxIndividualManipulator manipulator;
  EXPECT_EQ(manipulator.addEndEffector(HxControl::HxFrameEndEffectorToken), 0u);
  EXPECT_EQ(manipulator.addEndEffector(HxControl::HxPointEndEffectorToken), 1u);
  ASSERT_EQ(manipulator.numberOfEndEffectors(), 2u);
  EXPECT_EQ(manipulator.endEffector(1).index(), 1u);
  EXPECT_TRUE(manipulator.endEffector(1).token() == HxControl::HxPointEndEffectorToken);
  EXPECT_FALSE(manipulator.endEffector(0).token() == HxControl::HxPointEndEffectorToken);
  EXPECT_TRUE(manipulator.setEndEffectorToken(0, HxControl::HxPointEndEffectorToken));
  EXPECT_TRUE(manipulator.endEffector(0).token() == HxControl::HxPointEndEffectorToken);
  EXPECT_FALSE(manipulator.setEndEffectorToken(2, HxControl::HxPointEndEffectorToken));
}

TEST(HxIndividualManipulator, QueriesGoToTheKinematicsWithTheGivenState) {
  HxIndividualManipulator manipulator(std::make_shared<HxEchoKinematics>());
  manipulator.addEndEffector(HxControl::HxFrameEndEffectorToken);
  manipulator.addEndEffector(HxControl::HxFrameEndEffectorToken);
  HxManipulatorActiveState state(2);
  state.mutablePositionState().setJointPositions({0.25, 0.0});
  state.mutableVelocityState().setJointVelocities({-1.5, 0.0});
  state.mutableAccelerationState().setJointAccelerations({3.0, 0.0});

  EXPECT_EQ(manipulator.endEffectorPlacement(1, state).translation(), HxVector(1, 0.25, 0));
  EXPECT_EQ(manipulator.endEffectorVelocity(1, state), HxGeneralMotion(1, -1.5, 0, 0, 0, 1));
  EXPECT_EQ(manipulator.endEffectorAcceleration(0, state), HxGeneralMotion(0, 3.0, 0, 0, 0, 2));
  EXPECT_EQ(manipulator.centerOfMass(state), HxVector(0, 0, 0.25));

  // An end effector answers for its own index.
  HxGeneralMotion out;
  EXPECT_TRUE(manipulator.endEffector(1).velocity(manipulator, state, out));
  EXPECT_EQ(out, HxGeneralMotion(1, -1.5, 0, 0, 0, 1));
  EXPECT_TRUE(manipulator.endEffector(0).acceleration(manipulator, state, out));
  EXPECT_EQ(out, HxGeneralMotion(0, 3.0, 0, 0, 0, 2));
}

TEST(HxIndividualManipulator, WithoutKinematicsEveryAnswerIsNeutral) {
  HxIndividualManipulator manipulator;
  manipulator.addEndEffector(HxControl::HxFrameEndEffectorToken);
  const HxManipulatorActiveState state(1);
  HxGeneralMotion out(1, 1, 1, 1, 1, 1);
  EXPECT_FALSE(manipulator.endEffector(0).velocity(manipulator, state, out));
  EXPECT_EQ(out, HxGeneralMotion());
  EXPECT_EQ(manipulator.endEffectorPlacement(0, state), HxEndEffectorPlacement());
  EXPECT_EQ(manipulator.centerOfMass(state), HxVector());
  manipulator.setKinematics(nullptr);
  EXPECT_EQ(manipulator.endEffectorAcceleration(0, state), HxGeneralMotion());
}

TEST(HxManipulatorEndEffectorPlacement, DefaultResolutionIsRelativeToTheBase) {
  const HxIndividualManipulator manipulator(std::make_shared<HxEchoKinematics>());
  const HxManipulatorEndEffectorPlacement entry(std::vector<HxEndEffectorPlacement>{
      HxEndEffectorPlacement(HxVector(0, 0, 1), HxOrientation()),
      HxEndEffectorPlacement(HxVector(2, 0, 0), HxOrientation::fromAxisAngle(HxVector(1, 0, 0), 0.1))});
  HxPositionState state(std::vector<double>{0.0},
                        HxCoordSystemXform(HxVector(1, 1, 0), HxOrientation::fromAxisAngle(HxVector(0, 0, 1), kPi / 2)));

  const HxEndEffectorPlacement placement = entry.endEffectorPlacement(1, state, manipulator);
  EXPECT_NEAR(placement.translation().x(), 1.0, 1e-12);
  EXPECT_NEAR(placement.translation().y(), 3.0, 1e-12);
  EXPECT_NEAR(placement.translation().z(), 0.0, 1e-12);
  double angle = 0.0;
  HxVector axis;
  const HxOrientation expected =
      HxOrientation::fromAxisAngle(HxVector(0, 0, 1), kPi / 2) * HxOrientation::fromAxisAngle(HxVector(1, 0, 0), 0.1);
  placement.orientation().angleAxisBetween(expected, angle, axis);
  EXPECT_NEAR(angle, 0.0, 1e-12);

  // With the identity base the entry is the world placement; past the last entry: identity.
  EXPECT_EQ(entry.endEffectorPlacement(0, HxPositionState(1), manipulator), entry[0]);
  EXPECT_EQ(entry.endEffectorPlacement(2, state, manipulator), HxEndEffectorPlacement());
}

TEST(HxIndividualDynamicSimulator, AccelerationsAreThoseOfItsActiveState) {
  HxIndividualDynamicSimulator simulator(2, 3);
  EXPECT_EQ(simulator.jointAccelerations().size(), 2u);
  EXPECT_EQ(simulator.jointTorques().size(), 2u);
  ASSERT_EQ(simulator.linkForceStates().size(), 3u);
  EXPECT_FALSE(simulator.linkForceStates()[0].isValid());

  simulator.setJointAccelerations({0.5, -0.5});
  simulator.setBaseAcceleration(HxGeneralMotion(0, 0, -9.81, 0, 0, 0));
  EXPECT_EQ(&simulator.jointAccelerations(), &simulator.activeState().accelerationState().jointAccelerations());
  EXPECT_EQ(simulator.activeState().accelerationState().jointAccelerations()[1], -0.5);
  EXPECT_EQ(simulator.baseAcceleration()[2], -9.81);
}

}  // namespace
