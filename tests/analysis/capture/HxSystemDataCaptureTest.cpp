// The system capture configuration: labels and flat value order, disabled columns, capture and
// store over a scripted simulation, the system-level lookup (last match), pruning and level checks.

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/types/HxDataCaptureTypes.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/analysis/capture/HxCaptureTestSupport.h"

namespace {

using namespace HxSimAnalysis;
using HxCaptureTest::flags;
using Labels = std::vector<std::string>;

const Labels kPlacement = {"Translation X", "Translation Y", "Translation Z", "Quaternion 0",
                           "Quaternion 1",  "Quaternion 2",  "Quaternion 3"};
const Labels kMotion = {"Linear X", "Linear Y", "Linear Z", "Angular X", "Angular Y", "Angular Z"};
const Labels kForce = {"Force X", "Force Y", "Force Z", "Moment X", "Moment Y", "Moment Z"};

// The value of manipulator m's quantity `offset` for link or end effector `element`, column c.
double numbered(HxU32 m, int offset, int element, int column) {
  return 1000.0 * (m + 1) + offset + 10 * element + column;
}

// Expected columns: label and stored value side by side.
struct Columns {
  Labels labels = {"Time", "Point Path Index"};
  std::vector<double> values = {0.25, 3.0};  // the stamp of captureAndStore()

  // The columns `names` of manipulator m's quantity under `prefix`, numbered as the simulation.
  Columns& add(HxU32 m, const std::string& prefix, int offset, int element, const Labels& names) {
    for (std::size_t c = 0; c < names.size(); ++c) {
      labels.push_back("Manip[" + std::to_string(m) + "]:" + prefix + (names[c].empty() ? "" : ":" + names[c]));
      values.push_back(numbered(m, offset, element, static_cast<int>(c)));
    }
    return *this;
  }
  // Removes the column labelled `label`; its label alone stays when `keepLabel` is set (after
  // which labels and values no longer pair up, so that must be the last removal).
  void remove(const std::string& label, bool keepLabel = false) {
    const auto k = std::find(labels.begin(), labels.end(), label) - labels.begin();
    ASSERT_LT(static_cast<std::size_t>(k), labels.size()) << label;
    values.erase(values.begin() + k);
    if (!keepLabel) labels.erase(labels.begin() + k);
  }
};

// Three manipulators of links "link0".."link2" and 2 end effectors, on the dynamic path, with
// values numbered so that each tells where it came from.
class TwoManipulatorSystem : public ::testing::Test {
 protected:
  TwoManipulatorSystem() : simulation(3, 3, 2) {
    simulation.setDynamicsEnabled(true);
    for (HxU32 m = 0; m < 3; ++m) {
      // Three consecutive numbered values from column c.
      auto xyz = [m](int offset, int e, int c) {
        return HxVector(numbered(m, offset, e, c), numbered(m, offset, e, c + 1), numbered(m, offset, e, c + 2));
      };
      auto quaternion = [m](int offset, int e) {
        return HxOrientation(numbered(m, offset, e, 3), numbered(m, offset, e, 4), numbered(m, offset, e, 5),
                             numbered(m, offset, e, 6));
      };
      simulation.setJointPositions(m, {numbered(m, 100, 0, 0), numbered(m, 100, 1, 0), numbered(m, 100, 2, 0)});
      simulation.setJointVelocities(m, {numbered(m, 200, 0, 0), numbered(m, 200, 1, 0), numbered(m, 200, 2, 0)});
      simulation.externalForce(m).setForces({HxGeneralForce(xyz(500, 0, 0), xyz(500, 0, 3)),
                                             HxGeneralForce(xyz(500, 1, 0), xyz(500, 1, 3)),
                                             HxGeneralForce(xyz(500, 2, 0), xyz(500, 2, 3))});
      simulation.activeState(m).mutablePositionState().setCoordSystemXform(
          HxCoordSystemXform(xyz(300, 0, 0), quaternion(300, 0)));
      simulation.setCenterOfMass(m, xyz(400, 0, 0));
      for (int e = 0; e < 2; ++e) {
        simulation.setEndEffectorPlacement(m, e, HxEndEffectorPlacement(xyz(600, e, 0), quaternion(600, e)));
        simulation.setEndEffectorVelocity(m, e, HxGeneralMotion(xyz(700, e, 0), xyz(700, e, 3)));
      }
    }
  }

  // Manipulator 2 is configured before manipulator 0.
  HxSystemDataCapture configure() {
    HxSystemDataCapture capture;
    EXPECT_TRUE(capture.addManipulatorDataCaptureType(2, HxBasePositionDataCaptureTypeToken));
    EXPECT_TRUE(capture.addManipulatorDataCaptureType(2, HxCenterOfMassDataCaptureTypeToken));
    EXPECT_TRUE(capture.addLinkDataCaptureType(2, HxJointPositionDataCaptureTypeToken, simulation.manipulators()[2]));
    EXPECT_TRUE(capture.addLinkDataCaptureType(2, "link1", HxExternalForceDataCaptureTypeToken));
    EXPECT_TRUE(capture.addEndEffectorDataCaptureType(2, HxEndEffectorPlacementDataCaptureTypeToken, 2u));
    EXPECT_TRUE(capture.addLinkDataCaptureType(0, "link2", HxJointVelocityDataCaptureTypeToken));
    EXPECT_TRUE(capture.addEndEffectorDataCaptureType(0, 1u, HxEndEffectorVelocityDataCaptureTypeToken));
    return capture;
  }

  // The columns of configure(), in the flat order: per manipulator as configured, its own
  // quantities, then its links', then its end effectors'.
  static Columns expectedColumns() {
    return Columns()
        .add(2, "Base Positions", 300, 0, kPlacement)
        .add(2, "Center of Mass", 400, 0, {"X", "Y", "Z"})
        .add(2, "link0:Joint Positions", 100, 0, {""})
        .add(2, "link1:Joint Positions", 100, 1, {""})
        .add(2, "link1:External Forces", 500, 1, kForce)
        .add(2, "link2:Joint Positions", 100, 2, {""})
        .add(2, "EE[0]:End Effector Placements", 600, 0, kPlacement)
        .add(2, "EE[1]:End Effector Placements", 600, 1, kPlacement)
        .add(0, "link2:Joint Velocities", 200, 2, {""})
        .add(0, "EE[1]:End Effector Velocities", 700, 1, kMotion);
  }

  // Captures, allocates a record, stamps and stores it, and returns its values.
  std::vector<double> captureAndStore(const HxSystemDataCapture& capture, bool captured = true) {
    EXPECT_EQ(capture.captureData(simulation), captured);
    HxSystemDataStorage record;
    capture.allocateStorage(record);
    record.setTime(0.25);
    record.setPathPointIndex(3);
    EXPECT_TRUE(capture.storeData(record));
    std::vector<double> values;
    record.getRealElements(values, false);
    return values;
  }

  HxScriptedSimulation simulation;
};

// The capture's flat values (getDataElements) as plain doubles.
std::vector<double> flatValues(const HxSystemDataCapture& capture, double unwritten) {
  HxSystemDataCapture::Values flat(40, HxXmlBasicType<double>(unwritten));
  capture.getDataElements(flat);
  std::vector<double> result;
  for (const auto& value : flat.vectorContainer()) result.push_back(value.value());
  return result;
}

// With nothing disabled the labels ("Time", "Point Path Index", then the "Manip[m]:" columns
// with link and "EE[e]" prefixes) and the stored values agree one to one, manipulator 2 first
// as configured; the capture's own flat values are the same, less time and index.
TEST_F(TwoManipulatorSystem, LabelsAndFlatOrderAgreeOneToOneWhenNothingIsDisabled) {
  const HxSystemDataCapture capture = configure();
  const Columns expected = expectedColumns();
  EXPECT_EQ(capture.elementSize(), 40u);
  Labels labels;
  capture.getStringElements(labels);
  EXPECT_EQ(labels, expected.labels);
  EXPECT_EQ(captureAndStore(capture), expected.values);
  EXPECT_EQ(flatValues(capture, -7.0), std::vector<double>(expected.values.begin() + 2, expected.values.end()));
}

// Disabled columns: the record is sized by active columns; the label list keeps its full
// length with empty strings at its end; a one-column type keeps its label (but not its
// value); getDataElements packs the active values and leaves its tail unwritten.
TEST_F(TwoManipulatorSystem, DisabledColumnsShrinkTheRecordButNotTheLabelList) {
  HxSystemDataCapture capture = configure();
  // Two columns of a 7-column type; the only column of a 1-column type; the last column of
  // another 7-column type, with flags beyond its end (ignored). Unknown keys are refused.
  ASSERT_TRUE(capture.setDisableFlags(2, HxBasePositionDataCaptureTypeToken, flags({true, false, false, true})));
  ASSERT_TRUE(capture.setDisableFlags(2, "link0", HxJointPositionDataCaptureTypeToken, flags({true})));
  ASSERT_TRUE(capture.setDisableFlags(2, 1u, HxEndEffectorPlacementDataCaptureTypeToken,
                                      flags({false, false, false, false, false, false, true, true, true})));
  EXPECT_FALSE(capture.setDisableFlags(1, HxBasePositionDataCaptureTypeToken, flags({true})));
  EXPECT_FALSE(capture.setDisableFlags(2, HxBaseVelocityDataCaptureTypeToken, flags({true})));
  EXPECT_FALSE(capture.setDisableFlags(2, "wrist", HxJointPositionDataCaptureTypeToken, flags({true})));
  EXPECT_FALSE(capture.setDisableFlags(2, 5u, HxEndEffectorPlacementDataCaptureTypeToken, flags({true})));
  EXPECT_EQ(capture.elementSize(), 40u);  // flags leave the element size alone

  Columns expected = expectedColumns();
  expected.remove("Manip[2]:Base Positions:Translation X");
  expected.remove("Manip[2]:Base Positions:Quaternion 0");
  expected.remove("Manip[2]:EE[1]:End Effector Placements:Quaternion 3");
  expected.remove("Manip[2]:link0:Joint Positions", true);
  expected.labels.resize(42);
  Labels labels(50, std::string("stale text"));
  capture.getStringElements(labels);
  EXPECT_EQ(labels, expected.labels);
  EXPECT_EQ(captureAndStore(capture), expected.values);  // 2 + 40 - 4 values
  std::vector<double> flat(expected.values.begin() + 2, expected.values.end());
  flat.resize(40, -7.0);
  EXPECT_EQ(flatValues(capture, -7.0), flat);
}

// An empty configuration captures but stores nothing and labels time and index only. A failed
// capture (an unknown link of the first manipulator) still captures and stores all the rest.
TEST_F(TwoManipulatorSystem, CaptureAndStoreResults) {
  HxSystemDataCapture capture;
  HxSystemDataStorage record;
  Labels labels;
  EXPECT_TRUE(capture.captureData(simulation));
  capture.allocateStorage(record);
  EXPECT_EQ(record.elementSize(), 2u);
  EXPECT_FALSE(capture.storeData(record));
  capture.getStringElements(labels);
  EXPECT_EQ(labels, (Labels{"Time", "Point Path Index"}));

  capture = configure();
  ASSERT_TRUE(capture.addLinkDataCaptureType(2, "noSuchLink", HxJointPositionDataCaptureTypeToken));
  std::vector<double> expected = expectedColumns().values;
  expected.insert(expected.begin() + 2 + 7 + 3 + 1 + 1 + 6 + 1, 0.0);  // after link2, never captured
  EXPECT_EQ(captureAndStore(capture, false), expected);
}

// Adds create a manipulator capture only when they succeed; an unknown or wrong-level token
// changes nothing, also on an existing manipulator; every add form updates the element size.
TEST(HxSystemDataCapture, AddsCheckTokenAndLevelAndKeepTheElementSize) {
  HxSystemDataCapture capture;
  EXPECT_FALSE(capture.addManipulatorDataCaptureType(3, HxJointPositionDataCaptureTypeToken));
  EXPECT_FALSE(capture.addManipulatorDataCaptureType(3, HxToken("noSuchType")));
  EXPECT_FALSE(capture.addLinkDataCaptureType(3, "elbow", HxCenterOfMassDataCaptureTypeToken));
  EXPECT_FALSE(capture.addEndEffectorDataCaptureType(3, 0u, HxCenterOfMassDataCaptureTypeToken));
  EXPECT_FALSE(capture.addEndEffectorDataCaptureType(3, HxCenterOfMassDataCaptureTypeToken, 2u));
  EXPECT_EQ(capture.manipulatorDataCaptureVector().size(), 0u);

  EXPECT_TRUE(capture.addManipulatorDataCaptureType(3, HxCenterOfMassDataCaptureTypeToken));
  ASSERT_EQ(capture.manipulatorDataCaptureVector().size(), 1u);
  EXPECT_EQ(capture.manipulatorDataCaptureVector()[0].manipulatorIndex(), 3u);
  const HxSystemDataCapture before = capture;
  EXPECT_FALSE(capture.addManipulatorDataCaptureType(3, HxExternalForceDataCaptureTypeToken));
  EXPECT_FALSE(capture.addLinkDataCaptureType(3, "elbow", HxReachTargetDataCaptureTypeToken));
  EXPECT_FALSE(capture.addEndEffectorDataCaptureType(3, 1u, HxToken("noSuchType")));
  EXPECT_FALSE(capture.addEndEffectorDataCaptureType(3, 1u, HxJointTorqueDataCaptureType()));
  EXPECT_EQ(capture, before);
  EXPECT_EQ(capture.elementSize(), 3u);

  const HxScriptedSimulation arm(1, std::vector<std::string>{"a", "b"}, 0);
  EXPECT_TRUE(capture.addLinkDataCaptureType(3, HxJointTorqueDataCaptureTypeToken, arm.manipulators()[0]));
  EXPECT_TRUE(capture.addEndEffectorDataCaptureType(3, HxEndEffectorVelocityDataCaptureType(), 2u));
  EXPECT_TRUE(capture.addEndEffectorDataCaptureType(3, 4u, HxReachTargetDataCaptureType()));
  EXPECT_TRUE(capture.isDataCaptureTypeIncluded(3, "a", HxJointTorqueDataCaptureTypeToken));
  EXPECT_TRUE(capture.isDataCaptureTypeIncluded(3, 4u, HxReachTargetDataCaptureTypeToken));
  EXPECT_EQ(capture.numDataCaptureTypes(3, 1u), 1u);
  EXPECT_EQ(capture.numDataCaptureTypes(5), 0u);
  EXPECT_EQ(capture.numDataCaptureTypes(5, "b"), 0u);
  EXPECT_EQ(capture.elementSize(), 3u + 2u + 12u + 20u);
}

// Pruning after a removal looks at the manipulator-level types and at the sub-captures of the
// level removed from only, so an entry can go while the other level's captures remain.
TEST(HxSystemDataCapture, RemovalPrunesByTheLevelRemovedFrom) {
  HxSystemDataCapture capture;
  capture.addManipulatorDataCaptureType(1, HxBaseVelocityDataCaptureTypeToken);
  capture.addEndEffectorDataCaptureType(1, HxEndEffectorPlacementDataCaptureTypeToken, 1u);
  EXPECT_TRUE(capture.removeManipulatorDataCaptureType(1, HxBaseVelocityDataCaptureTypeToken));
  EXPECT_EQ(capture.manipulatorDataCaptureVector().size(), 0u);  // end effector and all
  EXPECT_EQ(capture.elementSize(), 0u);

  capture.addLinkDataCaptureType(1, "elbow", HxJointPositionDataCaptureTypeToken);
  capture.addEndEffectorDataCaptureType(1, 0u, HxEndEffectorPlacementDataCaptureTypeToken);
  EXPECT_TRUE(capture.removeEndEffectorDataCaptureType(1, 0u, HxEndEffectorPlacementDataCaptureTypeToken));
  EXPECT_EQ(capture.manipulatorDataCaptureVector().size(), 0u);  // link captures and all

  // A link removal that leaves link captures keeps the entry; the last one prunes it.
  capture.addLinkDataCaptureType(1, "elbow", HxJointPositionDataCaptureTypeToken);
  capture.addLinkDataCaptureType(1, "wrist", HxJointPositionDataCaptureTypeToken);
  capture.addLinkDataCaptureType(1, "wrist", HxJointTorqueDataCaptureTypeToken);
  EXPECT_TRUE(capture.removeLinkDataCaptureType(1, HxJointPositionDataCaptureTypeToken));
  ASSERT_EQ(capture.manipulatorDataCaptureVector().size(), 1u);
  EXPECT_EQ(capture.elementSize(), 1u);
  EXPECT_FALSE(capture.removeLinkDataCaptureType(1, "elbow", HxJointTorqueDataCaptureTypeToken));
  EXPECT_TRUE(capture.removeLinkDataCaptureType(1, "wrist", HxJointTorqueDataCaptureTypeToken));
  EXPECT_EQ(capture.manipulatorDataCaptureVector().size(), 0u);

  // A failed removal still prunes an entry left without types at both looked-at levels.
  HxManipulatorDataCapture bare;
  bare.setManipulatorIndex(6);
  capture.addManipulatorDataCapture(bare);
  EXPECT_FALSE(capture.removeEndEffectorDataCaptureType(6, HxEndEffectorPlacementDataCaptureTypeToken));
  EXPECT_EQ(capture.manipulatorDataCaptureVector().size(), 0u);

  // Manipulator-level types keep the entry through an end-effector removal.
  capture.addManipulatorDataCaptureType(2, HxCenterOfMassDataCaptureTypeToken);
  capture.addEndEffectorDataCaptureType(2, HxEndEffectorVelocityDataCaptureTypeToken, 2u);
  EXPECT_TRUE(capture.removeEndEffectorDataCaptureType(2, HxEndEffectorVelocityDataCaptureTypeToken));
  EXPECT_EQ(capture.manipulatorDataCaptureVector().size(), 1u);
  EXPECT_EQ(capture.elementSize(), 3u);

  capture.setLabel("kept");
  capture.removeAllDataCaptureTypes();
  EXPECT_EQ(capture.manipulatorDataCaptureVector().size(), 0u);
  EXPECT_EQ(capture.elementSize(), 0u);
  EXPECT_EQ(capture.label(), "kept");
}

// Of two entries with the same manipulator index, every keyed operation acts on the last.
TEST(HxSystemDataCapture, DuplicateManipulatorIndexActsOnTheLastEntry) {
  HxSystemDataCapture capture;
  HxManipulatorDataCapture first;
  first.setManipulatorIndex(1);
  first.addDataCaptureType(HxCenterOfMassDataCaptureTypeToken);
  HxManipulatorDataCapture second = first;
  second.addDataCaptureType(HxBasePositionDataCaptureTypeToken);
  EXPECT_TRUE(capture.addManipulatorDataCapture(first));
  EXPECT_TRUE(capture.addManipulatorDataCapture(second));
  EXPECT_EQ(capture.elementSize(), 13u);

  unsigned int position = 99;
  EXPECT_FALSE(capture.findIndex(0, position));
  EXPECT_EQ(position, 99u);
  EXPECT_TRUE(capture.findIndex(1, position));
  EXPECT_EQ(position, 1u);
  EXPECT_EQ(capture.manipulatorDataCapture(1), &capture.manipulatorDataCaptureVector()[1]);
  EXPECT_EQ(capture.numDataCaptureTypes(1), 2u);
  EXPECT_TRUE(capture.addManipulatorDataCaptureType(1, HxBaseVelocityDataCaptureTypeToken));
  EXPECT_TRUE(capture.setDisableFlags(1, HxCenterOfMassDataCaptureTypeToken, flags({true})));
  EXPECT_EQ(capture.manipulatorDataCaptureVector()[0], first);

  EXPECT_TRUE(capture.removeManipulatorDataCapture(1));
  ASSERT_EQ(capture.manipulatorDataCaptureVector().size(), 1u);
  EXPECT_EQ(capture.manipulatorDataCaptureVector()[0], first);
  EXPECT_EQ(capture.elementSize(), 3u);
}

}  // namespace
