// What the 21 captured quantities share: identity (token, description, size, level, labels),
// column switching, copies and comparison, the reset of the buffer, and no allocation once a
// capture has run. Each property is checked once over all of them.

#include <algorithm>
#include <cctype>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#define HX_ALLOCATION_COUNTER_NO_OPERATORS
#include "analysis/types/HxDataCaptureTypes.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "bench/HxAllocationCounter.h"
#include "simulation/HxBasePowerConverter.h"
#include "simulation/HxScriptedSimulation.h"
#include "tests/analysis/types/HxTypesTestSupport.h"

namespace {

using namespace HxTypesTest;

std::unique_ptr<HxDataCaptureType> make(const TypeRow& type) {
  return std::unique_ptr<HxDataCaptureType>(dynamic_cast<HxDataCaptureType*>(type.create()));
}

// A 2-manipulator, 7-joint, 2-end-effector simulation in which every quantity can be
// captured, with non-zero values, for manipulator 1, joint 3, end effector 1, on both paths.
std::unique_ptr<HxScriptedSimulation> populatedSimulation() {
  auto sim = std::make_unique<HxScriptedSimulation>(2, 7, 2);
  sim->setPowerDataAvailable(true);
  sim->setControlOutputTime(1.0);
  const HxEndEffectorPlacement placement(HxVector(0.5, 0.0, 0.3), HxOrientation());
  const HxCoordSystemXform base(HxVector(1, 2, 3), HxOrientation());
  for (HxU32 m = 0; m < 2; ++m) {
    sim->setJointPositions(m, {0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7});
    sim->setJointVelocities(m, {1.1, 1.2, 1.3, 1.4, 1.5, 1.6, 1.7});
    sim->torque(m).setValues({2.1, 2.2, 2.3, 2.4, 2.5, 2.6, 2.7});
    sim->individualSimulator(m).mutableLinkForceStates()[3] = HxLinkForceState(true, HxGeneralForce(1, 2, 3, 4, 5, 6));
    sim->manipulator(m).mutableJointDrive(3).setPowerConverter(std::make_shared<HxDcElectricMotor>(0.8));
    sim->setDesiredPlacement(m, 1, placement);
    sim->setHeldPlacement(m, 1, placement);
    sim->setEndEffectorPlacement(m, 1, placement);
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
    sim->activeState(m).mutablePositionState().setCoordSystemXform(base);
    sim->systemPositionState(m).setCoordSystemXform(base);
  }
  return sim;
}

HxU32 elementFor(const HxDataCaptureType& type) { return type.type() == 2 ? 1 : 3; }

class HxDataCaptureTypeShared : public ::testing::TestWithParam<TypeRow> {};

// Token, description, level and labels are the class's; the buffer holds one zero per column;
// a label past the last is empty; no column is disabled by default.
TEST_P(HxDataCaptureTypeShared, DescribesItself) {
  const TypeRow& expected = GetParam();
  std::unique_ptr<HxDataCaptureType> type = make(expected);
  ASSERT_NE(type, nullptr);
  HxToken fullToken(HxSimAnalysis::ns);
  fullToken += expected.name + "DataCaptureType";
  EXPECT_EQ(type->token(), fullToken);
  EXPECT_EQ(expected.classToken(), fullToken);
  EXPECT_EQ(type->description(), expected.description);
  EXPECT_EQ(type->type(), expected.level);

  const HxU32 size = static_cast<HxU32>(expected.labels.size());
  EXPECT_EQ(type->dataSize(), size);
  EXPECT_EQ(values(*type), zeros(size));
  for (HxU32 i = 0; i < size; ++i) EXPECT_EQ(type->label(i), expected.labels[i]) << "column " << i;
  EXPECT_EQ(type->label(size), "");
  EXPECT_EQ(type->disableFlags().size(), 0u);
}

// Columns without a flag count as on and flags past the last column are ignored, whether the
// flag vector is empty, shorter or longer than the columns.
TEST_P(HxDataCaptureTypeShared, CountsActiveColumns) {
  std::unique_ptr<HxDataCaptureType> type = make(GetParam());
  const HxU32 size = type->dataSize();
  EXPECT_EQ(type->activeDataSize(), size);
  type->setDisableFlags(flags({true}));
  EXPECT_EQ(type->activeDataSize(), size - 1);
  type->setDisableFlags(flags({false, true}));
  EXPECT_EQ(type->activeDataSize(), size >= 2 ? size - 1 : size);
  std::vector<bool> many(size + 3, true);
  type->setDisableFlags(flags(many));
  EXPECT_EQ(type->activeDataSize(), 0u);
  std::fill(many.begin(), many.begin() + size, false);
  type->setDisableFlags(flags(many));
  EXPECT_EQ(type->activeDataSize(), size);
  type->setDisableFlags(flags({}));  // replaces the whole vector
  EXPECT_EQ(type->activeDataSize(), size);
}

// A clone equals its source both ways; flags and the captured buffer take part in the
// comparison; another class or null never compares equal.
TEST_P(HxDataCaptureTypeShared, ClonesAndCompares) {
  std::unique_ptr<HxDataCaptureType> type = make(GetParam());
  type->setDisableFlags(flags({false, true}));
  std::unique_ptr<HxXmlObject> clone(type->clone());
  EXPECT_TRUE(type->equality(clone.get()));
  EXPECT_TRUE(clone->equality(type.get()));
  std::unique_ptr<HxXmlObject> fresh(type->newObject());
  EXPECT_FALSE(type->equality(fresh.get())) << "the flags differ";
  type->setDisableFlags(flags({}));
  EXPECT_TRUE(type->equality(fresh.get()));
  EXPECT_FALSE(type->equality(nullptr));
  for (const TypeRow& other : allTypes()) {
    if (other.name != GetParam().name) {
      EXPECT_FALSE(type->equality(make(other).get())) << other.name;
    }
  }

  std::unique_ptr<HxScriptedSimulation> sim = populatedSimulation();
  sim->setDynamicsEnabled(true);
  type->captureData(*sim, 1, elementFor(*type));
  EXPECT_FALSE(type->equality(fresh.get())) << "captured values must differ from zeros";
  clone.reset(type->clone());
  EXPECT_TRUE(clone->equality(type.get()));
}

// On each path a type captures non-zero values when it can, and otherwise (dynamics off for a
// type that needs them, a joint or end effector past the last, a manipulator past the last)
// returns false with one zero per column; manipulator-level types ignore the element index.
TEST_P(HxDataCaptureTypeShared, CapturesOnEachPathAndRefusesIndicesPastTheLast) {
  const Succeeds succeeds = GetParam().succeeds;
  std::unique_ptr<HxScriptedSimulation> sim = populatedSimulation();
  for (bool dynamics : {true, false}) {
    SCOPED_TRACE(dynamics ? "dynamics" : "kinematics");
    sim->setDynamicsEnabled(dynamics);
    std::unique_ptr<HxDataCaptureType> type = make(GetParam());
    const std::vector<double> refused = zeros(type->dataSize());
    const bool expected = succeeds == OnBothPaths || (succeeds == OnlyWithDynamics && dynamics);
    EXPECT_EQ(type->captureData(*sim, 1, elementFor(*type)), expected);
    if (succeeds != Never) {
      EXPECT_EQ(values(*type) != refused, expected);
    }
    const bool manipulatorLevel = type->type() == 0;
    EXPECT_EQ(type->captureData(*sim, 1, 7), expected && manipulatorLevel) << "7 joints, 2 end effectors";
    if (!manipulatorLevel) {
      EXPECT_EQ(values(*type), refused);
    }
    type->captureData(*sim, 1, elementFor(*type));
    EXPECT_FALSE(type->captureData(*sim, 2, elementFor(*type)));
    EXPECT_EQ(values(*type), refused);
  }
}

// After its first capture a type allocates nothing, on either path, whether it succeeds or not.
TEST_P(HxDataCaptureTypeShared, DoesNotAllocateAfterTheFirstCapture) {
  std::unique_ptr<HxScriptedSimulation> sim = populatedSimulation();
  for (bool dynamics : {true, false}) {
    sim->setDynamicsEnabled(dynamics);
    std::unique_ptr<HxDataCaptureType> type = make(GetParam());
    const HxU32 element = elementFor(*type);
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
                         [](const ::testing::TestParamInfo<TypeRow>& row) {
                           std::string name = row.param.name;
                           name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
                           return name;
                         });

}  // namespace
