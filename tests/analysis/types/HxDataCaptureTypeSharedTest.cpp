// What the 21 captured quantities share: identity (token, description, size, level, labels),
// column switching, copies and comparison, the reset of the buffer, and no allocation once a
// capture has run. Each property is checked once over all of them.

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#define HX_ALLOCATION_COUNTER_NO_OPERATORS
#include "analysis/types/HxDataCaptureTypes.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "bench/HxAllocationCounter.h"
#include "simulation/HxBasePowerConverter.h"
#include "simulation/HxScriptedSimulation.h"

namespace {

using Labels = std::vector<std::string>;

const Labels kMotionLabels = {"Linear X", "Linear Y", "Linear Z", "Angular X", "Angular Y", "Angular Z"};
const Labels kPlacementLabels = {"Translation X", "Translation Y", "Translation Z", "Quaternion 0",
                                 "Quaternion 1",  "Quaternion 2",  "Quaternion 3"};
const Labels kForceLabels = {"Force X", "Force Y", "Force Z", "Moment X", "Moment Y", "Moment Z"};

// One row per class: how to make it and what it must say about itself.
struct TypeRow {
  const char* name;
  HxXmlObject* (*create)();
  const HxToken& (*classToken)();
  const char* localName;
  const char* description;
  HxU32 level;
  Labels labels;
};

void PrintTo(const TypeRow& type, std::ostream* os) { *os << type.name; }

template <class T>
TypeRow row(const char* name, const char* localName, const char* description, HxU32 level, Labels labels) {
  return TypeRow{name, &T::creator, &T::classToken, localName, description, level, std::move(labels)};
}

std::vector<TypeRow> allTypes() {
  return {
      row<HxBaseAccelerationDataCaptureType>("BaseAcceleration", "baseAccelerationDataCaptureType",
                                             "Base Accelerations", 0, kMotionLabels),
      row<HxBasePositionDataCaptureType>("BasePosition", "basePositionDataCaptureType", "Base Positions", 0,
                                         kPlacementLabels),
      row<HxBaseVelocityDataCaptureType>("BaseVelocity", "baseVelocityDataCaptureType", "Base Velocities", 0,
                                         kMotionLabels),
      row<HxCenterOfMassDataCaptureType>("CenterOfMass", "centerOfMassDataCaptureType", "Center of Mass", 0,
                                         {"X", "Y", "Z"}),
      row<HxManipulatorPowerDataCaptureType>("ManipulatorPower", "manipulatorPowerDataCaptureType",
                                             "Manipulator Power", 0, {"Manipulator Power"}),
      row<HxControlInputDataCaptureType>("ControlInput", "controlInputDataCaptureType", "Control Input", 1,
                                         {"Control Input"}),
      row<HxControlOutputActualJointVelocityDataCaptureType>(
          "ControlOutputActualJointVelocity", "controlOutputActualJointVelocityDataCaptureType",
          "Control Output Actual Joint Velocities", 1, {"Joint Velocity"}),
      row<HxControlOutputJointVelocityDataCaptureType>("ControlOutputJointVelocity",
                                                       "controlOutputJointVelocityDataCaptureType",
                                                       "Control Output Joint Velocities", 1, {"Joint Velocity"}),
      row<HxControlOutputJointPositionDataCaptureType>("ControlOutputJointPosition",
                                                       "controlOutputJointPositionDataCaptureType",
                                                       "Control Output Joint Positions", 1, {"Joint Position"}),
      row<HxControlTorqueDataCaptureType>("ControlTorque", "controlTorqueDataCaptureType", "Control Torques", 1,
                                          {"Control Torque"}),
      row<HxExternalForceDataCaptureType>("ExternalForce", "externalForceDataCaptureType", "External Forces", 1,
                                          kForceLabels),
      row<HxJointAccelerationDataCaptureType>("JointAcceleration", "jointAccelerationDataCaptureType",
                                              "Joint Accelerations", 1, {"Joint Acceleration"}),
      row<HxJointPositionDataCaptureType>("JointPosition", "jointPositionDataCaptureType", "Joint Positions", 1,
                                          {"Joint Position"}),
      row<HxJointTorqueDataCaptureType>("JointTorque", "jointTorqueDataCaptureType", "Joint Torques", 1,
                                        {"Joint Torque"}),
      row<HxJointVelocityDataCaptureType>("JointVelocity", "jointVelocityDataCaptureType", "Joint Velocities", 1,
                                          {"Joint Velocity"}),
      row<HxMotorPowerDataCaptureType>("MotorPower", "motorPowerDataCaptureType", "Motor Power", 1,
                                       {"Motor Power"}),
      row<HxStructuralForceDataCaptureType>("StructuralForce", "structuralForceDataCaptureType",
                                            "Structural Forces", 1, kForceLabels),
      row<HxEndEffectorAccelerationDataCaptureType>("EndEffectorAcceleration",
                                                    "endEffectorAccelerationDataCaptureType",
                                                    "End Effector Accelerations", 2, kMotionLabels),
      row<HxEndEffectorPlacementDataCaptureType>("EndEffectorPlacement", "endEffectorPlacementDataCaptureType",
                                                 "End Effector Placements", 2, kPlacementLabels),
      row<HxEndEffectorVelocityDataCaptureType>("EndEffectorVelocity", "endEffectorVelocityDataCaptureType",
                                                "End Effector Velocities", 2, kMotionLabels),
      row<HxReachTargetDataCaptureType>(
          "ReachTarget", "reachTargetDataCaptureType", "Reach Target", 2,
          {"Target Reached", "Translation Error", "Orientation Error", "Desired X", "Desired Y", "Desired Z",
           "Desired Quaternion 0", "Desired Quaternion 1", "Desired Quaternion 2", "Desired Quaternion 3",
           "Actual X", "Actual Y", "Actual Z", "Actual Quaternion 0", "Actual Quaternion 1", "Actual Quaternion 2",
           "Actual Quaternion 3", "Hit Joint Limit", "Hit Singularity", "Collision Occurred"}),
  };
}

std::unique_ptr<HxDataCaptureType> make(const TypeRow& type) {
  return std::unique_ptr<HxDataCaptureType>(dynamic_cast<HxDataCaptureType*>(type.create()));
}

HxDataCaptureType::FlagVector flags(const std::vector<bool>& values) {
  HxDataCaptureType::FlagVector result;
  for (bool value : values) {
    result.pushBack(HxXmlBasicType<bool>(value));
  }
  return result;
}

// A 2-manipulator, 7-joint, 2-end-effector simulation in which every quantity can be
// captured for manipulator 1, joint 3, end effector 1, on both paths.
std::unique_ptr<HxScriptedSimulation> populatedSimulation() {
  auto sim = std::make_unique<HxScriptedSimulation>(2, 7, 2);
  sim->setPowerDataAvailable(true);
  for (HxU32 m = 0; m < 2; ++m) {
    sim->setJointPositions(m, {0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7});
    sim->setJointVelocities(m, {1.1, 1.2, 1.3, 1.4, 1.5, 1.6, 1.7});
    sim->torque(m).setValues({2.1, 2.2, 2.3, 2.4, 2.5, 2.6, 2.7});
    sim->individualSimulator(m).mutableLinkForceStates()[3] = HxLinkForceState(true, HxGeneralForce(1, 2, 3, 4, 5, 6));
    sim->manipulator(m).mutableJointDrive(3).setPowerConverter(std::make_shared<HxDcElectricMotor>(0.8));
    sim->setDesiredPlacement(m, 1, HxEndEffectorPlacement(HxVector(0.5, 0.0, 0.3), HxOrientation()));
    sim->setHeldPlacement(m, 1, HxEndEffectorPlacement(HxVector(0.5, 0.0, 0.3), HxOrientation()));
    sim->setEndEffectorPlacement(m, 1, HxEndEffectorPlacement(HxVector(0.5, 0.0, 0.3), HxOrientation()));
    sim->setEndEffectorVelocity(m, 1, HxGeneralMotion(0.1, 0.2, 0.3, 0.4, 0.5, 0.6));
    sim->setEndEffectorAcceleration(m, 1, HxGeneralMotion(1.1, 1.2, 1.3, 1.4, 1.5, 1.6));
    sim->setCenterOfMass(m, HxVector(0.1, 0.2, 0.3));
    sim->controlInput(m).setValues({3.1, 3.2, 3.3, 3.4, 3.5, 3.6, 3.7});
    sim->externalForce(m).mutableForces()[3] = HxGeneralForce(6, 5, 4, 3, 2, 1);
    sim->individualSimulator(m).setJointAccelerations({4.1, 4.2, 4.3, 4.4, 4.5, 4.6, 4.7});
    sim->individualSimulator(m).setJointTorques({5.1, 5.2, 5.3, 5.4, 5.5, 5.6, 5.7});
    sim->individualSimulator(m).setBaseAcceleration(HxGeneralMotion(7, 8, 9, 10, 11, 12));
    sim->activeState(m).mutableVelocityState().setBaseVelocity(HxGeneralMotion(1, 2, 3, 4, 5, 6));
    sim->systemVelocityState(m).setBaseVelocity(HxGeneralMotion(1, 2, 3, 4, 5, 6));
  }
  return sim;
}

HxU32 elementFor(const HxDataCaptureType& type) { return type.type() == 2 ? 1 : 3; }

class HxDataCaptureTypeShared : public ::testing::TestWithParam<TypeRow> {};

// Token, description, size, level and labels are the class's, the buffer holds one zero per
// column, and a label past the last is empty.
TEST_P(HxDataCaptureTypeShared, DescribesItself) {
  const TypeRow& expected = GetParam();
  std::unique_ptr<HxDataCaptureType> type = make(expected);
  ASSERT_NE(type, nullptr);

  HxToken fullToken(HxSimAnalysis::ns);
  fullToken += expected.localName;
  EXPECT_EQ(type->token(), fullToken);
  EXPECT_EQ(expected.classToken(), fullToken);
  EXPECT_EQ(type->description(), expected.description);
  EXPECT_EQ(type->type(), expected.level);

  const HxU32 size = static_cast<HxU32>(expected.labels.size());
  EXPECT_EQ(type->dataSize(), size);
  ASSERT_EQ(type->data().size(), size);
  for (HxU32 i = 0; i < size; ++i) {
    EXPECT_EQ(type->label(i), expected.labels[i]) << "column " << i;
    EXPECT_EQ(type->data()[i].value(), 0.0);
  }
  EXPECT_EQ(type->label(size), "");
  EXPECT_EQ(type->label(size + 100), "");
  EXPECT_TRUE(type->disableFlags().vectorContainer().empty());
}

// Columns without a flag count as on, flags past the last column are ignored.
TEST_P(HxDataCaptureTypeShared, CountsActiveColumns) {
  std::unique_ptr<HxDataCaptureType> type = make(GetParam());
  const HxU32 size = type->dataSize();
  EXPECT_EQ(type->activeDataSize(), size);

  // Short: only the flags present count.
  type->setDisableFlags(flags({true}));
  EXPECT_EQ(type->activeDataSize(), size - 1);
  if (size >= 2) {
    type->setDisableFlags(flags({true, false}));
    EXPECT_EQ(type->activeDataSize(), size - 1);
    type->setDisableFlags(flags({false, true}));
    EXPECT_EQ(type->activeDataSize(), size - 1);
  }

  // Long: every column off, and more flags beyond the end, on or off.
  std::vector<bool> many(size + 3, true);
  type->setDisableFlags(flags(many));
  EXPECT_EQ(type->activeDataSize(), 0u);
  many.assign(size + 3, true);
  for (HxU32 i = 0; i < size; ++i) many[i] = false;
  type->setDisableFlags(flags(many));
  EXPECT_EQ(type->activeDataSize(), size);

  // Empty again.
  type->setDisableFlags(flags({}));
  EXPECT_EQ(type->activeDataSize(), size);
  // The whole vector is replaced, not merged.
  EXPECT_EQ(type->disableFlags().size(), 0u);
}

// A clone or copy equals its source and is of its class; flags and buffer take part in the
// comparison; another class or null never compares equal.
TEST_P(HxDataCaptureTypeShared, ClonesAndCompares) {
  const std::vector<TypeRow> rows = allTypes();
  std::unique_ptr<HxDataCaptureType> type = make(GetParam());
  type->setDisableFlags(flags({false, true}));

  std::unique_ptr<HxXmlObject> clone(type->clone());
  ASSERT_NE(clone, nullptr);
  EXPECT_NE(clone.get(), type.get());
  EXPECT_TRUE(type->equality(clone.get()));
  EXPECT_TRUE(clone->equality(type.get()));
  EXPECT_EQ(clone->token(), type->token());

  std::unique_ptr<HxXmlObject> fresh(type->newObject());
  EXPECT_EQ(fresh->token(), type->token());
  EXPECT_FALSE(type->equality(fresh.get())) << "the flags differ";
  type->setDisableFlags(flags({}));
  EXPECT_TRUE(type->equality(fresh.get()));

  EXPECT_FALSE(type->equality(nullptr));
  for (const TypeRow& other : rows) {
    if (other.classToken() == type->token()) continue;
    std::unique_ptr<HxDataCaptureType> foreign = make(other);
    EXPECT_FALSE(type->equality(foreign.get())) << other.name;
  }

  // A captured value makes the buffers differ; a copy takes it along.
  std::unique_ptr<HxScriptedSimulation> sim = populatedSimulation();
  sim->setDynamicsEnabled(true);
  sim->setControlOutputTime(1.0);
  type->captureData(*sim, 1, elementFor(*type));
  std::unique_ptr<HxDataCaptureType> copy(dynamic_cast<HxDataCaptureType*>(type->clone()));
  EXPECT_TRUE(copy->equality(type.get()));
  EXPECT_FALSE(type->equality(fresh.get())) << "captured values must differ from zeros";
}

// Every type refuses a manipulator past the last and leaves one zero per column, also when
// the previous capture had filled the buffer.
TEST_P(HxDataCaptureTypeShared, RefusesManipulatorPastTheLast) {
  std::unique_ptr<HxScriptedSimulation> sim = populatedSimulation();
  for (bool dynamics : {true, false}) {
    sim->setDynamicsEnabled(dynamics);
    std::unique_ptr<HxDataCaptureType> type = make(GetParam());
    sim->setControlOutputTime(1.0);
    type->captureData(*sim, 1, elementFor(*type));
    sim->setControlOutputTime(2.0);
    EXPECT_FALSE(type->captureData(*sim, 2, elementFor(*type))) << "dynamics " << dynamics;
    ASSERT_EQ(type->data().size(), type->dataSize());
    for (HxU32 i = 0; i < type->dataSize(); ++i) {
      EXPECT_EQ(type->data()[i].value(), 0.0) << "dynamics " << dynamics << ", column " << i;
    }
  }
}

// After its first capture a type allocates nothing, on either path, whether it succeeds or not.
TEST_P(HxDataCaptureTypeShared, DoesNotAllocateAfterTheFirstCapture) {
  std::unique_ptr<HxScriptedSimulation> sim = populatedSimulation();
  for (bool dynamics : {true, false}) {
    sim->setDynamicsEnabled(dynamics);
    std::unique_ptr<HxDataCaptureType> type = make(GetParam());
    const HxU32 element = elementFor(*type);
    sim->setControlOutputTime(1.0);
    type->captureData(*sim, 1, element);

    HxAllocationCounter counter;
    for (int sample = 0; sample < 10; ++sample) {
      sim->advanceTime(0.01);
      type->captureData(*sim, 1, element);
      type->captureData(*sim, 0, element);
      type->captureData(*sim, 5, element);
    }
    EXPECT_EQ(counter.allocations(), 0u) << "dynamics " << dynamics;
  }
}

INSTANTIATE_TEST_SUITE_P(AllTypes, HxDataCaptureTypeShared, ::testing::ValuesIn(allTypes()),
                         [](const ::testing::TestParamInfo<TypeRow>& row) { return std::string(row.param.name); });

}  // namespace
