// The system capture configuration: order of manipulators, capture and store over a scripted
// simulation, the system-level lookup (last match), pruning and level checks.

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/capture/HxFlatOrder.h"
#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/types/HxDataCaptureTypes.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/analysis/types/HxTypesTestSupport.h"
#include "tests/support/HxAllocationCounter.h"

namespace {

using namespace HxSimAnalysis;
using HxTypesTest::flags;
using Labels = std::vector<std::string>;

// Manipulators come in the order they were configured, not by index. An unknown link fails
// the capture while the rest is still captured and stored; a disabled one-column quantity keeps
// its label but not its value; getDataElements packs the active values and leaves its tail
// unwritten. (The flat order within a manipulator and the labels of disabled columns are pinned
// by the recorder's golden files.)
TEST(HxSystemDataCapture, ConfiguredOrderAndAFailedCapture) {
  HxScriptedSimulation simulation(3, 2, 0);
  simulation.setJointPositions(2, {2.5, 0});
  simulation.setJointPositions(0, {0.5, 0});
  simulation.setCenterOfMass(0, HxVector(1, 2, 3));
  HxSystemDataCapture capture;
  ASSERT_TRUE(capture.addLinkDataCaptureType(2, "link0", HxJointPositionDataCaptureTypeToken));
  ASSERT_TRUE(capture.addLinkDataCaptureType(2, "wrist", HxJointPositionDataCaptureTypeToken));
  ASSERT_TRUE(capture.addManipulatorDataCaptureType(0, HxCenterOfMassDataCaptureTypeToken));
  ASSERT_TRUE(capture.setDisableFlags(0, HxCenterOfMassDataCaptureTypeToken, flags({false, true})));
  ASSERT_TRUE(capture.addLinkDataCaptureType(0, "link1", HxJointPositionDataCaptureTypeToken));
  ASSERT_TRUE(capture.setDisableFlags(0, "link1", HxJointPositionDataCaptureTypeToken, flags({true})));
  Labels labels;
  capture.getStringElements(labels);
  EXPECT_EQ(labels,
            (Labels{"Time", "Point Path Index", "Manip[2]:link0:Joint Positions", "Manip[2]:wrist:Joint Positions",
                    "Manip[0]:Center of Mass:X", "Manip[0]:Center of Mass:Z", "Manip[0]:link1:Joint Positions", ""}));

  EXPECT_FALSE(capture.captureData(simulation));
  HxSystemDataStorage record;
  capture.allocateStorage(record);
  record.setPathPointIndex(3);
  EXPECT_TRUE(capture.storeData(record));
  std::vector<double> values;
  record.getRealElements(values, false);
  EXPECT_EQ(values, (std::vector<double>{0, 3, 2.5, 0, 1, 3}));
  HxSystemDataCapture::Values flat(6, HxXmlBasicType<double>(-7.0));
  capture.getDataElements(flat);
  EXPECT_EQ(HxXmlTest::plain(flat), (std::vector<double>{2.5, 0, 1, 3, -7, -7}));

  // An empty configuration captures, stores nothing and labels time and index only.
  HxSystemDataCapture empty;
  empty.allocateStorage(record);
  EXPECT_TRUE(empty.captureData(simulation) && !empty.storeData(record) && record.elementSize() == 2u);
  empty.getStringElements(labels);
  EXPECT_EQ(labels, (Labels{"Time", "Point Path Index"}));
}

// Adds create a manipulator capture only when they succeed; an unknown or wrong-level token
// changes nothing, also on an existing manipulator; every add form updates the element size.
TEST(HxSystemDataCapture, AddsCheckTokenAndLevelAndKeepTheElementSize) {
  HxSystemDataCapture capture;
  EXPECT_FALSE(capture.addManipulatorDataCaptureType(3, HxJointPositionDataCaptureTypeToken) ||
               capture.addManipulatorDataCaptureType(3, HxToken("noSuchType")) ||
               capture.addLinkDataCaptureType(3, "elbow", HxCenterOfMassDataCaptureTypeToken) ||
               capture.addEndEffectorDataCaptureType(3, 0u, HxCenterOfMassDataCaptureTypeToken) ||
               capture.addEndEffectorDataCaptureType(3, HxCenterOfMassDataCaptureTypeToken, 2u));
  EXPECT_EQ(capture, HxSystemDataCapture());

  EXPECT_TRUE(capture.addManipulatorDataCaptureType(3, HxCenterOfMassDataCaptureTypeToken));
  ASSERT_EQ(capture.manipulatorDataCaptureVector().size(), 1u);
  EXPECT_EQ(capture.manipulatorDataCaptureVector()[0].manipulatorIndex(), 3u);
  const HxSystemDataCapture before = capture;
  EXPECT_FALSE(capture.addManipulatorDataCaptureType(3, HxExternalForceDataCaptureTypeToken) ||
               capture.addLinkDataCaptureType(3, "elbow", HxReachTargetDataCaptureTypeToken) ||
               capture.addEndEffectorDataCaptureType(3, 1u, HxToken("noSuchType")) ||
               capture.addEndEffectorDataCaptureType(3, 1u, HxJointTorqueDataCaptureType()));
  EXPECT_TRUE(capture == before && capture.elementSize() == 3u);

  const HxScriptedSimulation arm(1, std::vector<std::string>{"a", "b"}, 0);
  EXPECT_TRUE(capture.addLinkDataCaptureType(3, HxJointTorqueDataCaptureTypeToken, arm.manipulators()[0]));
  EXPECT_TRUE(capture.addEndEffectorDataCaptureType(3, HxEndEffectorVelocityDataCaptureType(), 2u));
  EXPECT_TRUE(capture.addEndEffectorDataCaptureType(3, 4u, HxReachTargetDataCaptureType()));
  EXPECT_TRUE(capture.isDataCaptureTypeIncluded(3, "a", HxJointTorqueDataCaptureTypeToken));
  EXPECT_TRUE(capture.isDataCaptureTypeIncluded(3, 4u, HxReachTargetDataCaptureTypeToken));
  EXPECT_EQ(capture.numDataCaptureTypes(3, 1u), 1u);
  EXPECT_EQ(capture.numDataCaptureTypes(5) + capture.numDataCaptureTypes(5, "b"), 0u);
  EXPECT_EQ(capture.elementSize(), 3u + 2u + 12u + 20u);
}

// Pruning after a removal looks at the manipulator-level types and at the sub-captures of the
// level removed from only, so an entry can go while the other level's captures remain. Of two
// entries with the same manipulator index, every keyed operation acts on the last.
TEST(HxSystemDataCapture, RemovalPruningAndDuplicateEntries) {
  HxSystemDataCapture capture;
  capture.addManipulatorDataCaptureType(1, HxBaseVelocityDataCaptureTypeToken);
  capture.addEndEffectorDataCaptureType(1, HxEndEffectorPlacementDataCaptureTypeToken, 1u);
  EXPECT_TRUE(capture.removeManipulatorDataCaptureType(1, HxBaseVelocityDataCaptureTypeToken));
  EXPECT_TRUE(capture.manipulatorDataCaptureVector().size() == 0u && capture.elementSize() == 0u);  // ee and all

  capture.addLinkDataCaptureType(1, "elbow", HxJointPositionDataCaptureTypeToken);
  capture.addEndEffectorDataCaptureType(1, 0u, HxEndEffectorPlacementDataCaptureTypeToken);
  EXPECT_TRUE(capture.removeEndEffectorDataCaptureType(1, 0u, HxEndEffectorPlacementDataCaptureTypeToken));
  EXPECT_EQ(capture.manipulatorDataCaptureVector().size(), 0u);  // link captures and all

  // A link removal that leaves link captures keeps the entry.
  capture.addLinkDataCaptureType(1, "elbow", HxJointPositionDataCaptureTypeToken);
  capture.addLinkDataCaptureType(1, "wrist", HxJointTorqueDataCaptureTypeToken);
  EXPECT_TRUE(capture.removeLinkDataCaptureType(1, HxJointPositionDataCaptureTypeToken));
  EXPECT_TRUE(capture.manipulatorDataCaptureVector().size() == 1u && capture.elementSize() == 1u);

  // A failed removal still prunes an entry left without types at both looked-at levels.
  HxManipulatorDataCapture bare;
  bare.setManipulatorIndex(6);
  capture.addManipulatorDataCapture(bare);
  EXPECT_FALSE(capture.removeEndEffectorDataCaptureType(6, HxEndEffectorPlacementDataCaptureTypeToken));
  EXPECT_EQ(capture.manipulatorDataCaptureVector().size(), 1u);

  // Manipulator-level types keep the entry through an end-effector removal.
  capture.addManipulatorDataCaptureType(2, HxCenterOfMassDataCaptureTypeToken);
  capture.addEndEffectorDataCaptureType(2, HxEndEffectorVelocityDataCaptureTypeToken, 2u);
  EXPECT_TRUE(capture.removeEndEffectorDataCaptureType(2, HxEndEffectorVelocityDataCaptureTypeToken));
  EXPECT_TRUE(capture.manipulatorDataCaptureVector().size() == 2u && capture.elementSize() == 4u);

  capture.setLabel("kept");
  capture.removeAllDataCaptureTypes();
  EXPECT_TRUE(capture.manipulatorDataCaptureVector().size() == 0u && capture.elementSize() == 0u &&
              capture.label() == "kept");

  HxManipulatorDataCapture first;
  first.setManipulatorIndex(1);
  first.addDataCaptureType(HxCenterOfMassDataCaptureTypeToken);
  HxManipulatorDataCapture second = first;
  second.addDataCaptureType(HxBasePositionDataCaptureTypeToken);
  EXPECT_TRUE(capture.addManipulatorDataCapture(first) && capture.addManipulatorDataCapture(second));
  EXPECT_EQ(capture.elementSize(), 13u);

  unsigned int position = 99;
  EXPECT_TRUE(!capture.findIndex(0, position) && position == 99u && capture.findIndex(1, position) && position == 1u);
  EXPECT_EQ(capture.manipulatorDataCapture(1), &capture.manipulatorDataCaptureVector()[1]);
  EXPECT_EQ(capture.numDataCaptureTypes(1), 2u);
  EXPECT_TRUE(capture.addManipulatorDataCaptureType(1, HxBaseVelocityDataCaptureTypeToken));
  EXPECT_TRUE(capture.setDisableFlags(1, HxCenterOfMassDataCaptureTypeToken, flags({true})));
  EXPECT_EQ(capture.manipulatorDataCaptureVector()[0], first);

  EXPECT_TRUE(capture.removeManipulatorDataCapture(1));
  ASSERT_EQ(capture.manipulatorDataCaptureVector().size(), 1u);
  EXPECT_TRUE(capture.manipulatorDataCaptureVector()[0] == first && capture.elementSize() == 3u);
}

// The look-ups kept while a configuration is built (the last capture per manipulator index,
// the first link and end-effector capture per key, the element count) answer as walking the
// lists does after every kind of add and remove, also with a duplicate manipulator index.
TEST(HxSystemDataCapture, KeptLookUpsAnswerAsWalkingTheLists) {
  HxScriptedSimulation simulation(3, std::vector<std::string>{"a", "b", "c"}, 2);
  HxSystemDataCapture capture;
  auto walkedAnswers = [&](int step) {
    const HxSystemDataCapture::ManipulatorDataCaptureVector& list = capture.manipulatorDataCaptureVector();
    HxU32 size = 0;
    HxFlatOrder::forEachCapturedType(
        list, [&size](const HxFlatPosition&, const HxDataCaptureType& type) { size += type.dataSize(); });
    EXPECT_EQ(capture.elementSize(), size) << step;
    for (unsigned int m = 0; m < 4; ++m) {
      unsigned int walked = 99, kept = 99;
      for (HxU32 p = 0; p < list.size(); ++p) walked = list[p].manipulatorIndex() == m ? p : walked;
      EXPECT_TRUE(capture.findIndex(m, kept) == (walked != 99) && kept == walked) << step << " m " << m;
    }
    for (HxU32 p = 0; p < list.size(); ++p) {
      const HxManipulatorDataCapture& entry = list[p];
      for (const char* link : {"a", "b", "c"}) {
        unsigned int walked = 99, kept = 99;
        for (HxU32 l = entry.linkDataCaptureVector().size(); l-- > 0;) {
          walked = entry.linkDataCaptureVector()[l].linkIdentifier() == link ? l : walked;
        }
        EXPECT_TRUE(entry.findIndex(link, kept) == (walked != 99) && kept == walked) << step << " " << link;
      }
      for (unsigned int e = 0; e < 2; ++e) {
        unsigned int walked = 99, kept = 99;
        for (HxU32 k = entry.endEffectorDataCaptureVector().size(); k-- > 0;) {
          walked = entry.endEffectorDataCaptureVector()[k].endEffectorIndex() == e ? k : walked;
        }
        EXPECT_TRUE(entry.findIndex(e, kept) == (walked != 99) && kept == walked) << step << " EE " << e;
      }
    }
  };
  HxManipulatorDataCapture duplicate;
  duplicate.setManipulatorIndex(1);
  duplicate.addLinkDataCaptureType("c", HxJointTorqueDataCaptureTypeToken);
  duplicate.addLinkDataCapture(duplicate.linkDataCaptureVector()[0]);
  const std::function<bool()> steps[] = {
      [&] { return capture.addLinkDataCaptureType(0, HxJointPositionDataCaptureTypeToken, simulation.manipulator(0)); },
      [&] { return capture.addManipulatorDataCaptureType(1, HxBasePositionDataCaptureTypeToken); },
      [&] { return capture.addEndEffectorDataCaptureType(2, HxEndEffectorVelocityDataCaptureTypeToken, 2u); },
      [&] { return capture.addLinkDataCaptureType(0, "b", HxExternalForceDataCaptureTypeToken); },
      [&] { return capture.addManipulatorDataCapture(duplicate); },
      [&] { return capture.addLinkDataCaptureType(1, "a", HxJointVelocityDataCaptureTypeToken); },
      [&] { return capture.removeLinkDataCaptureType(0, "a", HxJointPositionDataCaptureTypeToken); },
      [&] { return capture.removeLinkDataCaptureType(1, HxJointTorqueDataCaptureTypeToken); },
      [&] { return capture.addEndEffectorDataCaptureType(2, 1u, HxEndEffectorPlacementDataCaptureTypeToken); },
      [&] { return capture.removeEndEffectorDataCaptureType(2, 0u, HxEndEffectorVelocityDataCaptureTypeToken); },
      [&] { return capture.removeManipulatorDataCapture(1); },
      [&] { return capture.addLinkDataCaptureType(1, "c", HxJointPositionDataCaptureTypeToken); },
      [&] { return capture.removeEndEffectorDataCaptureType(2, HxEndEffectorVelocityDataCaptureTypeToken); },
      [&] { return capture.removeManipulatorDataCaptureType(1, HxBasePositionDataCaptureTypeToken); },
      [&] { return capture.removeLinkDataCaptureType(1, "c", HxJointPositionDataCaptureTypeToken); },
      [&] {
        capture.removeAllDataCaptureTypes();
        return capture.addManipulatorDataCaptureType(2, HxCenterOfMassDataCaptureTypeToken);
      },
  };
  for (std::size_t k = 0; k < std::size(steps); ++k) {
    EXPECT_TRUE(steps[k]()) << k;
    walkedAnswers(static_cast<int>(k));
  }
  const HxSystemDataCapture copy = capture;
  EXPECT_TRUE(copy.manipulatorDataCapture(2) != nullptr && copy.elementSize() == capture.elementSize());
}

// A manipulator of many links, and many manipulators, capture every link's own values, through
// to the last, without allocating. A copy of the configuration captures into its own types: the original keeps what
// it captured.
TEST(HxSystemDataCapture, ManyLinksOrManipulatorsCaptureTheirOwnValuesAndCopiesStayApart) {
  // 128 links or 64 manipulators: the lists then end where their room does.
  for (const std::pair<HxU32, HxU32>& shape : {std::pair<HxU32, HxU32>{1, 128}, {64, 1}}) {
    const HxU32 manipulators = shape.first, joints = shape.second;
    HxScriptedSimulation simulation(manipulators, joints, 0);
    simulation.setDynamicsEnabled(true);
    auto setValues = [&](double offset) {
      for (HxU32 m = 0; m < manipulators; ++m) {
        std::vector<double> values(joints);
        for (HxU32 j = 0; j < joints; ++j) values[j] = offset + m + j;
        simulation.setJointPositions(m, values);
        simulation.individualSimulator(m).setJointTorques(values);
      }
    };
    HxSystemDataCapture capture;
    std::vector<double> expected;
    for (HxU32 m = 0; m < manipulators; ++m) {
      for (HxU32 l = 0; l < joints; ++l) {
        const std::string& link = simulation.manipulator(m).link(l)->identifier();
        ASSERT_TRUE(capture.addLinkDataCaptureType(m, link, HxJointPositionDataCaptureTypeToken));
        ASSERT_TRUE(capture.addLinkDataCaptureType(m, link, HxJointTorqueDataCaptureTypeToken));
        expected.insert(expected.end(), {0.5 + m + l, 0.5 + m + l});
      }
    }
    auto captured = [](const HxSystemDataCapture& from) {
      std::vector<double> values;
      HxFlatOrder::forEachCapturedType(
          from.manipulatorDataCaptureVector(),
          [&](const HxFlatPosition&, const HxDataCaptureType& type) { values.push_back(type.data()[0].value()); });
      return values;
    };

    setValues(0.5);
    EXPECT_TRUE(capture.captureData(simulation));
    HxAllocationCounter counter;
    EXPECT_TRUE(capture.captureData(simulation));
    EXPECT_EQ(counter.allocations(), 0u);
    EXPECT_EQ(captured(capture), expected);

    HxSystemDataCapture copy = capture;
    setValues(1000.5);
    EXPECT_TRUE(copy.captureData(simulation));
    EXPECT_EQ(captured(capture), expected);
    EXPECT_EQ(captured(copy).back(), expected.back() + 1000);
  }
}

}  // namespace
