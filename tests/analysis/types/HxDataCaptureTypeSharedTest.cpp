// What the 21 captured quantities share: identity (token, description, size, level, labels),
// column switching, copies and comparison, the reset of the buffer, no allocation once a
// capture has run, and which of them the type vector can read. Each property is checked once
// over all of them.

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/types/HxDataCaptureTypes.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/analysis/types/HxTypesTestSupport.h"
#include "tests/support/HxAllocationCounter.h"

namespace {

using namespace HxTypesTest;

std::unique_ptr<HxDataCaptureType> make(const TypeRow& type) {
  return std::unique_ptr<HxDataCaptureType>(dynamic_cast<HxDataCaptureType*>(type.create()));
}

HxU32 elementFor(const HxDataCaptureType& type) { return type.type() == 2 ? 1 : 3; }

class HxDataCaptureTypeShared : public ::testing::TestWithParam<TypeRow> {};

// Token, description, level and labels are the class's; the buffer holds one zero per column;
// a label past the last is empty. No column is disabled by default; columns without a flag count
// as on and flags past the last column are ignored, whether the flag vector is empty, shorter or
// longer than the columns.
TEST_P(HxDataCaptureTypeShared, DescribesItselfAndCountsActiveColumns) {
  const TypeRow& expected = GetParam();
  const std::unique_ptr<HxDataCaptureType> type = make(expected);
  ASSERT_NE(type, nullptr);
  const HxToken fullToken(HxSimAnalysis::ns.token() + expected.name + "DataCaptureType");
  EXPECT_TRUE(type->token() == fullToken && expected.classToken() == fullToken);
  EXPECT_TRUE(type->description() == expected.description && type->type() == expected.level);
  const HxU32 size = static_cast<HxU32>(expected.labels.size());
  EXPECT_TRUE(type->dataSize() == size && type->activeDataSize() == size && values(*type) == std::vector<double>(size));
  Labels labels, withEmpty = expected.labels;
  for (HxU32 i = 0; i <= size; ++i) labels.push_back(type->label(i));
  withEmpty.push_back("");
  EXPECT_EQ(labels, withEmpty);

  auto active = [&](const std::vector<bool>& disabled) {
    type->setDisableFlags(flags(disabled));
    return type->activeDataSize();
  };
  std::vector<bool> pastTheEnd(size + 3, true);
  EXPECT_TRUE(active({true}) == size - 1 && active(pastTheEnd) == 0u);
  std::fill_n(pastTheEnd.begin(), size, false);
  EXPECT_TRUE(active(pastTheEnd) == size && active({}) == size);
}

// On each path a type captures non-zero values when it can, and otherwise (dynamics off for a
// type that needs them, a joint or end effector past the last, a manipulator past the last)
// returns false with one zero per column; manipulator-level types ignore the element index.
// After its first capture a type allocates nothing, whether it succeeds or not.
TEST_P(HxDataCaptureTypeShared, CapturesOnEachPathRefusesIndicesPastTheLastAndDoesNotAllocate) {
  const Succeeds succeeds = GetParam().succeeds;
  const std::unique_ptr<HxScriptedSimulation> sim = populatedSimulation();
  for (bool dynamics : {true, false}) {
    SCOPED_TRACE(dynamics ? "dynamics" : "kinematics");
    sim->setDynamicsEnabled(dynamics);
    const std::unique_ptr<HxDataCaptureType> type = make(GetParam());
    const HxU32 element = elementFor(*type);
    const Result refusal = refused(type->dataSize());
    const bool expected = succeeds == OnBothPaths || (succeeds == OnlyWithDynamics && dynamics);
    const Result first = capture(*type, *sim, 1, element);
    EXPECT_TRUE(first.first == expected && (succeeds == Never || (first.second != refusal.second) == expected));
    EXPECT_EQ(capture(*type, *sim, 1, 7), type->type() == 0 ? first : refusal) << "7 joints, 2 end effectors";
    type->captureData(*sim, 1, element);
    EXPECT_EQ(capture(*type, *sim, 2, element), refusal);

    HxAllocationCounter counter;
    for (int sample = 0; sample < 10; ++sample) {
      sim->advanceTime(0.01);
      type->captureData(*sim, 1, element);
      type->captureData(*sim, 0, element);
      type->captureData(*sim, 5, element);
    }
    EXPECT_EQ(counter.allocations(), 0u);
  }
}

INSTANTIATE_TEST_SUITE_P(AllTypes, HxDataCaptureTypeShared, ::testing::ValuesIn(allTypes()),
                         [](const ::testing::TestParamInfo<TypeRow>& row) { return row.param.name; });

// Copies and comparison come from the shared serialisable form and the base class, so one type
// stands for all (the reach target's tolerances: its own test): a clone equals its source both
// ways; flags and the captured buffer take part in the comparison; another class with the same
// columns or null never compares equal.
TEST(HxDataCaptureType, ClonesAndCompares) {
  HxJointVelocityDataCaptureType type;
  const HxControlOutputJointVelocityDataCaptureType sameColumns;
  type.setDisableFlags(flags({false, true}));
  std::unique_ptr<HxXmlObject> clone(type.clone());
  const std::unique_ptr<HxXmlObject> fresh(type.newObject());
  EXPECT_TRUE(type.equality(clone.get()) && clone->equality(&type));
  EXPECT_FALSE(type.equality(fresh.get()) || type.equality(nullptr)) << "the flags differ";
  type.setDisableFlags(flags({}));
  EXPECT_TRUE(type.equality(fresh.get()) && !type.equality(&sameColumns));
  type.captureData(*populatedSimulation(), 1, 3);
  EXPECT_FALSE(type.equality(fresh.get())) << "captured values take part";
  clone.reset(type.clone());
  EXPECT_TRUE(clone->equality(&type));
}

// HxDataCaptureTypeVector has a creator for every type but three (control input, control-output
// joint position and actual joint velocity), which a file therefore cannot
// name (a read fails on them as on any unknown token, see HxXmlVariableVectorTypeTest); that the
// others are read as their own classes, with their flags and tolerances, is pinned by the round
// trip of examples/config. The first element with the token is found, with its position; a missing
// token gives null.
TEST(HxDataCaptureTypeVector, CreatorsAndLookUp) {
  HxDataCaptureTypeVector vector;
  const std::set<std::string> leftOut{"controlInput", "controlOutputJointPosition", "controlOutputActualJointVelocity"};
  for (const TypeRow& row : allTypes()) {
    EXPECT_EQ(vector.creatorMap().count(row.classToken()), leftOut.count(row.name) ? 0u : 1u) << row.name;
  }

  vector.pushBack(HxJointTorqueDataCaptureType());
  vector.pushBack(HxJointPositionDataCaptureType());
  vector.pushBack(HxJointPositionDataCaptureType());
  HxU32 index = 99;
  EXPECT_EQ(vector.findDataCaptureByToken(HxJointVelocityDataCaptureType::classToken(), &index), nullptr);
  EXPECT_TRUE(vector.findDataCaptureByToken(HxJointPositionDataCaptureType::classToken(), &index) == &vector[1] &&
              index == 1u);
}

// Vectors make their types from one table of the class's creators; a creator registered on one
// vector changes what that vector makes and lists, never what other vectors, made before or after
// it, make. A class derived from the vector with creators of its own makes only those.
TEST(HxDataCaptureTypeVector, CreatorsRegisteredOnOneVectorStayItsOwn) {
  const HxToken& position = HxJointPositionDataCaptureType::classToken();
  auto makes = [&](const HxDataCaptureTypeVector& vector) {
    const std::unique_ptr<HxDataCaptureType> made(vector.newDataCaptureByToken(position));
    return made ? made->token().token() : std::string("none");
  };
  HxDataCaptureTypeVector before, changed;
  EXPECT_EQ(makes(before), position.token());
  EXPECT_EQ(makes(changed), position.token());
  changed.registerComponentCreator(position, &HxJointTorqueDataCaptureType::creator);
  const HxDataCaptureTypeVector after;
  EXPECT_EQ(makes(changed), HxJointTorqueDataCaptureType::classToken().token());
  EXPECT_EQ(changed.creatorMap().at(position), &HxJointTorqueDataCaptureType::creator);
  EXPECT_EQ(makes(before), position.token());
  EXPECT_EQ(makes(after), position.token());
  EXPECT_EQ(before.creatorMap().at(position), &HxJointPositionDataCaptureType::creator);
  EXPECT_EQ(HxDataCaptureTypeVector(changed).creatorMap().at(position), &HxJointPositionDataCaptureType::creator)
      << "a copy registers the class's creators";

  struct TorquesOnly : HxDataCaptureTypeVector {
    void registerComponentCreators() override { registerComponentCreatorsOf<HxJointTorqueDataCaptureType>(); }
  };
  const TorquesOnly torques;
  EXPECT_EQ(makes(torques), "none");
  EXPECT_EQ(torques.creatorMap().size(), 1u);
}

}  // namespace
