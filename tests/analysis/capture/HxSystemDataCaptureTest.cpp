// The system capture configuration: labels and flat value order, disabled columns, capture and
// store over a scripted simulation, the system-level lookup (last match), pruning, level
// checks, element size and the XML form.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/types/HxDataCaptureTypes.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxPrint.h"
#include "simulation/HxScriptedSimulation.h"
#include "tests/analysis/capture/HxCaptureTestSupport.h"

namespace {

using namespace HxSimAnalysis;
using HxCaptureTest::flags;
using HxCaptureTest::readFromString;
using HxCaptureTest::writeToString;
using Labels = std::vector<std::string>;

const Labels kPlacement = {"Translation X", "Translation Y", "Translation Z", "Quaternion 0",
                           "Quaternion 1",  "Quaternion 2",  "Quaternion 3"};
const Labels kMotion = {"Linear X", "Linear Y", "Linear Z", "Angular X", "Angular Y", "Angular Z"};
const Labels kForce = {"Force X", "Force Y", "Force Z", "Moment X", "Moment Y", "Moment Z"};

void appendLabels(Labels& out, const std::string& prefix, const Labels& columns) {
  for (const std::string& column : columns) out.push_back(prefix + ":" + column);
}

// A system of three manipulators (3 joints "link0".."link2", 2 end effectors each) whose every
// quantity has a value that tells where it came from, on the dynamic path.
class TwoManipulatorSystem : public ::testing::Test {
 protected:
  TwoManipulatorSystem() : simulation(3, 3, 2) {
    simulation.setDynamicsEnabled(true);
    for (HxU32 m = 0; m < 3; ++m) {
      const double base = 1000.0 * (m + 1);
      simulation.setJointPositions(m, {base + 1, base + 2, base + 3});
      simulation.setJointVelocities(m, {base + 11, base + 12, base + 13});
      HxPositionState& position = simulation.activeState(m).mutablePositionState();
      position.setCoordSystemXform(
          HxCoordSystemXform(HxVector(base + 21, base + 22, base + 23), HxOrientation(base + 24, base + 25, base + 26, base + 27)));
      simulation.setCenterOfMass(m, HxVector(base + 31, base + 32, base + 33));
      std::vector<HxGeneralForce> forces;
      for (HxU32 j = 0; j < 3; ++j) {
        const double f = base + 100 + 10 * j;
        forces.emplace_back(f + 1, f + 2, f + 3, f + 4, f + 5, f + 6);
      }
      simulation.externalForce(m).setForces(forces);
      for (HxU32 e = 0; e < 2; ++e) {
        const double p = base + 200 + 20 * e;
        simulation.setEndEffectorPlacement(
            m, e, HxEndEffectorPlacement(HxVector(p + 1, p + 2, p + 3), HxOrientation(p + 4, p + 5, p + 6, p + 7)));
        simulation.setEndEffectorVelocity(m, e, HxGeneralMotion(p + 11, p + 12, p + 13, p + 14, p + 15, p + 16));
      }
    }
  }

  // Manipulator 2 is configured before manipulator 0.
  HxSystemDataCapture configure() {
    HxSystemDataCapture capture;
    capture.setLabel("two arms");
    EXPECT_TRUE(capture.addManipulatorDataCaptureType(2, HxBasePositionDataCaptureTypeToken));
    EXPECT_TRUE(capture.addManipulatorDataCaptureType(2, HxCenterOfMassDataCaptureTypeToken));
    EXPECT_TRUE(capture.addLinkDataCaptureType(2, HxJointPositionDataCaptureTypeToken, simulation.manipulators()[2]));
    EXPECT_TRUE(capture.addLinkDataCaptureType(2, "link1", HxExternalForceDataCaptureTypeToken));
    EXPECT_TRUE(capture.addEndEffectorDataCaptureType(2, HxEndEffectorPlacementDataCaptureTypeToken, 2u));
    EXPECT_TRUE(capture.addLinkDataCaptureType(0, "link2", HxJointVelocityDataCaptureTypeToken));
    EXPECT_TRUE(capture.addEndEffectorDataCaptureType(0, 1u, HxEndEffectorVelocityDataCaptureTypeToken));
    return capture;
  }

  static Labels expectedLabels() {
    Labels labels = {"Time", "Point Path Index"};
    appendLabels(labels, "Manip[2]:Base Positions", kPlacement);
    appendLabels(labels, "Manip[2]:Center of Mass", {"X", "Y", "Z"});
    labels.push_back("Manip[2]:link0:Joint Positions");
    labels.push_back("Manip[2]:link1:Joint Positions");
    appendLabels(labels, "Manip[2]:link1:External Forces", kForce);
    labels.push_back("Manip[2]:link2:Joint Positions");
    appendLabels(labels, "Manip[2]:EE[0]:End Effector Placements", kPlacement);
    appendLabels(labels, "Manip[2]:EE[1]:End Effector Placements", kPlacement);
    labels.push_back("Manip[0]:link2:Joint Velocities");
    appendLabels(labels, "Manip[0]:EE[1]:End Effector Velocities", kMotion);
    return labels;
  }

  // The value that a label names, read back from the simulation's own state.
  double valueNamedBy(const std::string& label) {
    const HxU32 m = static_cast<HxU32>(std::stoul(label.substr(6)));
    const std::string rest = label.substr(label.find("]:") + 2);
    auto column = [](const std::string& text, const Labels& names) {
      const std::string name = text.substr(text.rfind(':') + 1);
      for (HxU32 i = 0; i < names.size(); ++i) {
        if (names[i] == name) return i;
      }
      ADD_FAILURE() << "no column " << name;
      return 0u;
    };
    auto linkIndex = [](const std::string& text) { return static_cast<HxU32>(text[4] - '0'); };
    auto endEffector = [](const std::string& text) { return static_cast<HxU32>(text[3] - '0'); };

    const HxManipulatorActiveState& state = simulation.activeStates()[m];
    if (rest.rfind("Base Positions:", 0) == 0) {
      const HxU32 c = column(rest, kPlacement);
      const HxCoordSystemXform& base = state.positionState().coordSystemXform();
      return c < 3 ? base.translation()[c] : base.orientation()[c - 3];
    }
    if (rest.rfind("Center of Mass:", 0) == 0) {
      return 1000.0 * (m + 1) + 31 + column(rest, {"X", "Y", "Z"});
    }
    if (rest.find(":Joint Positions") != std::string::npos) {
      return state.positionState().jointPositions()[linkIndex(rest)];
    }
    if (rest.find(":Joint Velocities") != std::string::npos) {
      return state.velocityState().jointVelocities()[linkIndex(rest)];
    }
    if (rest.find(":External Forces:") != std::string::npos) {
      return simulation.manipulatorExternalForces()[m].forces()[linkIndex(rest)][column(rest, kForce)];
    }
    if (rest.find(":End Effector Placements:") != std::string::npos) {
      const double p = 1000.0 * (m + 1) + 200 + 20 * endEffector(rest);
      return p + 1 + column(rest, kPlacement);
    }
    if (rest.find(":End Effector Velocities:") != std::string::npos) {
      const double p = 1000.0 * (m + 1) + 200 + 20 * endEffector(rest);
      return p + 11 + column(rest, kMotion);
    }
    ADD_FAILURE() << "no oracle for " << label;
    return 0.0;
  }

  HxScriptedSimulation simulation;
};

TEST_F(TwoManipulatorSystem, LabelsAndFlatOrderAgreeOneToOneWhenNothingIsDisabled) {
  const HxSystemDataCapture capture = configure();
  ASSERT_EQ(capture.manipulatorDataCaptureVector().size(), 2u);
  EXPECT_EQ(capture.manipulatorDataCaptureVector()[0].manipulatorIndex(), 2u);
  EXPECT_EQ(capture.manipulatorDataCaptureVector()[1].manipulatorIndex(), 0u);
  EXPECT_EQ(capture.elementSize(), 40u);

  Labels labels;
  capture.getStringElements(labels);
  EXPECT_EQ(labels, expectedLabels());

  // A second call into the same (now warm) vector gives the same list.
  capture.getStringElements(labels);
  EXPECT_EQ(labels, expectedLabels());

  // Capture, stamp and store: each value sits where its label says.
  ASSERT_TRUE(capture.captureData(simulation));
  HxSystemDataStorage record;
  capture.allocateStorage(record);
  EXPECT_EQ(record.elementSize(), 42u);
  record.setTime(0.25);
  record.setPathPointIndex(3);
  ASSERT_TRUE(capture.storeData(record));

  std::vector<double> values;
  record.getRealElements(values, false);
  ASSERT_EQ(values.size(), labels.size());
  EXPECT_DOUBLE_EQ(values[0], 0.25);
  EXPECT_DOUBLE_EQ(values[1], 3.0);
  for (std::size_t k = 2; k < labels.size(); ++k) EXPECT_DOUBLE_EQ(values[k], valueNamedBy(labels[k])) << labels[k];

  // The capture's own flat values are the same, less time and index.
  HxSystemDataCapture::Values flat;
  capture.getDataElements(flat);
  ASSERT_EQ(flat.size(), 40u);
  for (HxU32 k = 0; k < flat.size(); ++k) EXPECT_DOUBLE_EQ(flat[k].value(), values[k + 2]) << labels[k + 2];
}

TEST_F(TwoManipulatorSystem, DisabledColumnsShrinkTheRecordButNotTheLabelList) {
  HxSystemDataCapture capture = configure();
  // Two columns of a 7-column type; the only column of a 1-column type; the last column of
  // another 7-column type, with flags beyond its end (ignored).
  ASSERT_TRUE(capture.setDisableFlags(2, HxBasePositionDataCaptureTypeToken, flags({true, false, false, true})));
  ASSERT_TRUE(capture.setDisableFlags(2, "link0", HxJointPositionDataCaptureTypeToken, flags({true})));
  ASSERT_TRUE(capture.setDisableFlags(2, 1u, HxEndEffectorPlacementDataCaptureTypeToken,
                                      flags({false, false, false, false, false, false, true, true, true})));
  EXPECT_EQ(capture.elementSize(), 40u);  // flags leave the element size alone

  // Labels: full length; disabled columns of wide types leave empty strings at the end; the
  // 1-column type keeps its label.
  const std::vector<std::string> disabled = {"Manip[2]:Base Positions:Translation X",
                                             "Manip[2]:Base Positions:Quaternion 0",
                                             "Manip[2]:EE[1]:End Effector Placements:Quaternion 3"};
  Labels expected;
  for (const std::string& label : expectedLabels()) {
    if (std::find(disabled.begin(), disabled.end(), label) == disabled.end()) expected.push_back(label);
  }
  expected.resize(42);
  Labels labels(50, std::string("stale text"));
  capture.getStringElements(labels);
  EXPECT_EQ(labels, expected);
  EXPECT_EQ(labels[39], "");
  EXPECT_EQ(labels[41], "");
  EXPECT_NE(std::find(labels.begin(), labels.end(), "Manip[2]:link0:Joint Positions"), labels.end());

  // The record is sized by active columns: 40 - 4.
  ASSERT_TRUE(capture.captureData(simulation));
  HxSystemDataStorage record;
  capture.allocateStorage(record);
  EXPECT_EQ(record.elementSize(), 38u);
  const HxManipulatorDataStorage& m2 = record.manipulatorDataVector()[0];
  EXPECT_EQ(m2.manipulatorLevelData()[0].size(), 5u);
  EXPECT_EQ(m2.linkLevelData()[0][0].size(), 0u);
  EXPECT_EQ(m2.endEffectorData()[1][0].size(), 6u);
  ASSERT_TRUE(capture.storeData(record));

  // The record holds exactly the enabled values in flat order.
  std::vector<double> values;
  record.getRealElements(values, true);
  std::vector<double> enabled;
  for (const std::string& label : expectedLabels()) {
    if (label == "Time" || label == "Point Path Index" || label == "Manip[2]:link0:Joint Positions") continue;
    if (std::find(disabled.begin(), disabled.end(), label) != disabled.end()) continue;
    enabled.push_back(valueNamedBy(label));
  }
  EXPECT_EQ(values, enabled);

  // getDataElements: full length, active values packed, the last 4 positions not written.
  HxSystemDataCapture::Values flat(40, HxXmlBasicType<double>(-7.0));
  capture.getDataElements(flat);
  ASSERT_EQ(flat.size(), 40u);
  for (HxU32 k = 0; k < 36; ++k) EXPECT_DOUBLE_EQ(flat[k].value(), enabled[k]);
  for (HxU32 k = 36; k < 40; ++k) EXPECT_DOUBLE_EQ(flat[k].value(), -7.0);
}

TEST_F(TwoManipulatorSystem, FailedCapturesStillStoreWhatTheTypesHold) {
  HxSystemDataCapture capture = configure();
  EXPECT_TRUE(capture.addLinkDataCaptureType(0, "noSuchLink", HxJointPositionDataCaptureTypeToken));
  EXPECT_FALSE(capture.captureData(simulation));
  HxSystemDataStorage record;
  capture.allocateStorage(record);
  EXPECT_TRUE(capture.storeData(record));
  std::vector<double> values;
  record.getRealElements(values, false);
  EXPECT_DOUBLE_EQ(values[2], valueNamedBy("Manip[2]:Base Positions:Translation X"));
}

TEST(HxSystemDataCapture, EmptyConfiguration) {
  HxScriptedSimulation simulation(1, 2, 1);
  HxSystemDataCapture capture;
  EXPECT_EQ(capture.type(), 0u);
  EXPECT_TRUE(capture.captureData(simulation));
  EXPECT_EQ(capture.elementSize(), 0u);
  HxSystemDataStorage record;
  capture.allocateStorage(record);
  EXPECT_EQ(record.elementSize(), 2u);
  EXPECT_FALSE(capture.storeData(record));
  Labels labels;
  capture.getStringElements(labels);
  EXPECT_EQ(labels, (Labels{"Time", "Point Path Index"}));
}

TEST(HxSystemDataCapture, AddsCreateAManipulatorCaptureOnlyOnSuccess) {
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
  EXPECT_EQ(capture.elementSize(), 3u);

  // Unknown or wrong-level tokens on an existing manipulator change nothing either.
  const HxSystemDataCapture before = capture;
  EXPECT_FALSE(capture.addManipulatorDataCaptureType(3, HxExternalForceDataCaptureTypeToken));
  EXPECT_FALSE(capture.addLinkDataCaptureType(3, "elbow", HxReachTargetDataCaptureTypeToken));
  EXPECT_FALSE(capture.addEndEffectorDataCaptureType(3, 1u, HxToken("noSuchType")));
  EXPECT_FALSE(capture.addEndEffectorDataCaptureType(3, 1u, HxJointTorqueDataCaptureType()));
  EXPECT_EQ(capture, before);
  EXPECT_EQ(capture.elementSize(), 3u);

  // Every add form lands on the keyed manipulator and updates the element size.
  HxIndividualManipulator arm;
  arm.addLink(HxLink("a", 0));
  arm.addLink(HxLink("b", 1));
  EXPECT_TRUE(capture.addLinkDataCaptureType(3, HxJointTorqueDataCaptureTypeToken, arm));
  EXPECT_TRUE(capture.addEndEffectorDataCaptureType(3, HxEndEffectorVelocityDataCaptureType(), 2u));
  EXPECT_TRUE(capture.addEndEffectorDataCaptureType(3, 4u, HxReachTargetDataCaptureType()));
  EXPECT_EQ(capture.numDataCaptureTypes(3, "b"), 1u);
  EXPECT_EQ(capture.numDataCaptureTypes(3, 1u), 1u);
  EXPECT_EQ(capture.numDataCaptureTypes(3, 4u), 1u);
  EXPECT_EQ(capture.numDataCaptureTypes(5), 0u);
  EXPECT_EQ(capture.numDataCaptureTypes(5, "b"), 0u);
  EXPECT_EQ(capture.numDataCaptureTypes(5, 1u), 0u);
  EXPECT_TRUE(capture.isDataCaptureTypeIncluded(3, "a", HxJointTorqueDataCaptureTypeToken));
  EXPECT_TRUE(capture.isDataCaptureTypeIncluded(3, 4u, HxReachTargetDataCaptureTypeToken));
  EXPECT_FALSE(capture.isDataCaptureTypeIncluded(5, HxCenterOfMassDataCaptureTypeToken));
  EXPECT_EQ(capture.elementSize(), 3u + 2u + 12u + 20u);
}

TEST(HxSystemDataCapture, RemovalPrunesByTheLevelRemovedFrom) {
  // The only manipulator-level type goes while end-effector captures remain and there are no
  // link captures: the whole manipulator capture goes.
  HxSystemDataCapture capture;
  capture.addManipulatorDataCaptureType(1, HxBaseVelocityDataCaptureTypeToken);
  capture.addEndEffectorDataCaptureType(1, HxEndEffectorPlacementDataCaptureTypeToken, 1u);
  EXPECT_TRUE(capture.removeManipulatorDataCaptureType(1, HxBaseVelocityDataCaptureTypeToken));
  EXPECT_EQ(capture.manipulatorDataCaptureVector().size(), 0u);
  EXPECT_EQ(capture.elementSize(), 0u);

  // The only end-effector type goes while link captures remain and there are no
  // manipulator-level types: erased, link captures included.
  capture.addLinkDataCaptureType(1, "elbow", HxJointPositionDataCaptureTypeToken);
  capture.addEndEffectorDataCaptureType(1, 0u, HxEndEffectorPlacementDataCaptureTypeToken);
  EXPECT_TRUE(capture.removeEndEffectorDataCaptureType(1, 0u, HxEndEffectorPlacementDataCaptureTypeToken));
  EXPECT_EQ(capture.manipulatorDataCaptureVector().size(), 0u);

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
  EXPECT_FALSE(capture.removeManipulatorDataCaptureType(6, HxBaseVelocityDataCaptureTypeToken));

  // Keeps manipulator-level types: an end-effector removal does not erase.
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
  EXPECT_TRUE(capture.findIndex(1, position));
  EXPECT_EQ(position, 1u);
  position = 99;
  EXPECT_FALSE(capture.findIndex(0, position));
  EXPECT_EQ(position, 99u);
  EXPECT_EQ(capture.manipulatorDataCapture(1), &capture.manipulatorDataCaptureVector()[1]);
  EXPECT_EQ(capture.numDataCaptureTypes(1), 2u);
  EXPECT_TRUE(capture.isDataCaptureTypeIncluded(1, HxBasePositionDataCaptureTypeToken));

  EXPECT_TRUE(capture.addManipulatorDataCaptureType(1, HxBaseVelocityDataCaptureTypeToken));
  EXPECT_EQ(capture.manipulatorDataCaptureVector()[0].numDataCaptureTypes(), 1u);
  EXPECT_TRUE(capture.setDisableFlags(1, HxCenterOfMassDataCaptureTypeToken, flags({true})));
  EXPECT_EQ(capture.manipulatorDataCaptureVector()[0].dataCaptureVector()[0].disableFlags().size(), 0u);

  EXPECT_TRUE(capture.removeManipulatorDataCapture(1));
  ASSERT_EQ(capture.manipulatorDataCaptureVector().size(), 1u);
  EXPECT_EQ(capture.manipulatorDataCaptureVector()[0], first);
  EXPECT_EQ(capture.elementSize(), 3u);
  EXPECT_TRUE(capture.removeManipulatorDataCapture(1));
  EXPECT_FALSE(capture.removeManipulatorDataCapture(1));
  EXPECT_EQ(capture.manipulatorDataCapture(1), nullptr);
}

TEST(HxSystemDataCapture, GetActiveDataDropsFlaggedElementsOnly) {
  HxSystemDataCapture capture;
  HxSystemDataCapture::Values data;
  for (double v : {1.0, 2.0, 3.0, 4.0}) data.pushBack(v);
  HxSystemDataCapture::Values active;
  active.pushBack(99.0);
  capture.getActiveData(flags({true, false, true}), data, active);
  ASSERT_EQ(active.size(), 2u);
  EXPECT_DOUBLE_EQ(active[0].value(), 2.0);
  EXPECT_DOUBLE_EQ(active[1].value(), 4.0);
  capture.getActiveData(flags({false, false, false, false, true, true}), data, active);
  EXPECT_EQ(active.size(), 4u);
  capture.getActiveData(flags({}), data, active);
  EXPECT_EQ(active.size(), 4u);
}

TEST(HxSystemDataCapture, XmlRoundTripRecomputesTheElementSize) {
  HxSystemDataCapture capture;
  capture.setLabel("round trip");
  capture.addManipulatorDataCaptureType(1, HxBaseAccelerationDataCaptureTypeToken);
  capture.setDisableFlags(1, HxBaseAccelerationDataCaptureTypeToken, flags({false, true}));
  capture.addLinkDataCaptureType(1, "elbow", HxStructuralForceDataCaptureTypeToken);
  HxReachTargetDataCaptureType target;
  target.setTranslationTolerance(0.004);
  capture.addEndEffectorDataCaptureType(1, 0u, target);
  capture.addManipulatorDataCaptureType(0, HxManipulatorPowerDataCaptureTypeToken);

  Hx::ScopedPrintCapture messages;
  const std::string text = writeToString(capture);
  EXPECT_NE(text.find("<sm:generalCapture"), std::string::npos) << text;
  EXPECT_LT(text.find("sm:systemDataCaptureLabel"), text.find("sm:manipulatorDataCaptureVector"));
  HxSystemDataCapture read;
  ASSERT_TRUE(readFromString(read, text));
  EXPECT_TRUE(messages.records().empty()) << messages.text();
  EXPECT_EQ(read, capture);
  EXPECT_EQ(read.elementSize(), 6u + 6u + 20u + 1u);
  Labels expected, actual;
  capture.getStringElements(expected);
  read.getStringElements(actual);
  EXPECT_EQ(actual, expected);

  // Copies carry the element size; equality ignores it.
  HxSystemDataCapture copy(capture);
  EXPECT_EQ(copy.elementSize(), capture.elementSize());
  HxSystemDataCapture assigned;
  assigned = capture;
  EXPECT_EQ(assigned.elementSize(), capture.elementSize());
  std::unique_ptr<HxXmlObject> clone(capture.clone());
  EXPECT_TRUE(capture.equality(clone.get()));
  capture.setLabel("other");
  EXPECT_FALSE(capture.equality(clone.get()));
  EXPECT_FALSE(capture.equality(nullptr));
  EXPECT_EQ(HxSystemDataCapture::classToken(), HxGeneralCaptureToken);
}

}  // namespace
