// The system capture configuration: labels and flat value order, disabled columns, capture and
// store over a scripted simulation, the system-level lookup (last match), pruning and level checks.

#include <algorithm>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/types/HxDataCaptureTypes.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxScriptedSimulation.h"
#include "tests/analysis/capture/HxCaptureTestSupport.h"

namespace {

using namespace HxSimAnalysis;
using HxCaptureTest::flags;
using Labels = std::vector<std::string>;

const Labels kPlacement = {"Translation X", "Translation Y", "Translation Z", "Quaternion 0",
                           "Quaternion 1",  "Quaternion 2",  "Quaternion 3"};
const Labels kMotion = {"Linear X", "Linear Y", "Linear Z", "Angular X", "Angular Y", "Angular Z"};
const Labels kForce = {"Force X", "Force Y", "Force Z", "Moment X", "Moment Y", "Moment Z"};
const Labels kXyz = {"X", "Y", "Z"};

// Column labels of one quantity under a prefix.
void appendLabels(Labels& out, const std::string& prefix, const Labels& columns) {
  for (const std::string& column : columns) out.push_back(prefix + ":" + column);
}

// Three manipulators of links "link0".."link2" and 2 end effectors, on the dynamic path. Every
// value tells where it came from: 1000 (m + 1) + quantity offset + 10 element + column.
class TwoManipulatorSystem : public ::testing::Test {
 protected:
  TwoManipulatorSystem() : simulation(3, 3, 2) {
    simulation.setDynamicsEnabled(true);
    for (HxU32 m = 0; m < 3; ++m) {
      auto v = [m](int offset, int element, int column) { return 1000.0 * (m + 1) + offset + 10 * element + column; };
      std::vector<double> positions, velocities;
      std::vector<HxGeneralForce> forces;
      for (int j = 0; j < 3; ++j) {
        positions.push_back(v(100, j, 0));
        velocities.push_back(v(200, j, 0));
        forces.emplace_back(v(500, j, 0), v(500, j, 1), v(500, j, 2), v(500, j, 3), v(500, j, 4), v(500, j, 5));
      }
      simulation.setJointPositions(m, positions);
      simulation.setJointVelocities(m, velocities);
      simulation.externalForce(m).setForces(forces);
      simulation.activeState(m).mutablePositionState().setCoordSystemXform(HxCoordSystemXform(
          HxVector(v(300, 0, 0), v(300, 0, 1), v(300, 0, 2)),
          HxOrientation(v(300, 0, 3), v(300, 0, 4), v(300, 0, 5), v(300, 0, 6))));
      simulation.setCenterOfMass(m, HxVector(v(400, 0, 0), v(400, 0, 1), v(400, 0, 2)));
      for (int e = 0; e < 2; ++e) {
        simulation.setEndEffectorPlacement(m, e, HxEndEffectorPlacement(HxVector(v(600, e, 0), v(600, e, 1), v(600, e, 2)),
                                                                        HxOrientation(v(600, e, 3), v(600, e, 4),
                                                                                      v(600, e, 5), v(600, e, 6))));
        simulation.setEndEffectorVelocity(
            m, e, HxGeneralMotion(v(700, e, 0), v(700, e, 1), v(700, e, 2), v(700, e, 3), v(700, e, 4), v(700, e, 5)));
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

  static Labels expectedLabels() {
    Labels labels = {"Time", "Point Path Index"};
    appendLabels(labels, "Manip[2]:Base Positions", kPlacement);
    appendLabels(labels, "Manip[2]:Center of Mass", kXyz);
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

  // The value that a label names, by the numbering of the constructor.
  static double valueNamedBy(const std::string& label) {
    static const std::regex form(R"(Manip\[(\d)\]:(?:link(\d):|EE\[(\d)\]:)?([^:]+):?(.*))");
    static const std::map<std::string, std::pair<int, Labels>> quantities = {
        {"Joint Positions", {100, {""}}},         {"Joint Velocities", {200, {""}}},
        {"Base Positions", {300, kPlacement}},     {"Center of Mass", {400, kXyz}},
        {"External Forces", {500, kForce}},        {"End Effector Placements", {600, kPlacement}},
        {"End Effector Velocities", {700, kMotion}}};
    std::smatch match;
    if (!std::regex_match(label, match, form) || quantities.count(match[4]) == 0) {
      ADD_FAILURE() << "no value for " << label;
      return -1.0;
    }
    const auto& [offset, columns] = quantities.at(match[4]);
    const auto column = std::find(columns.begin(), columns.end(), match[5].str()) - columns.begin();
    const int element = match[2].matched ? std::stoi(match[2]) : match[3].matched ? std::stoi(match[3]) : 0;
    return 1000.0 * (std::stoi(match[1]) + 1) + offset + 10 * element + static_cast<double>(column);
  }

  HxScriptedSimulation simulation;
};

TEST_F(TwoManipulatorSystem, LabelsAndFlatOrderAgreeOneToOneWhenNothingIsDisabled) {
  const HxSystemDataCapture capture = configure();
  EXPECT_EQ(capture.elementSize(), 40u);
  Labels labels;
  capture.getStringElements(labels);
  EXPECT_EQ(labels, expectedLabels());

  // Capture, stamp and store: each value sits where its label says.
  ASSERT_TRUE(capture.captureData(simulation));
  HxSystemDataStorage record;
  capture.allocateStorage(record);
  record.setTime(0.25);
  record.setPathPointIndex(3);
  ASSERT_TRUE(capture.storeData(record));
  std::vector<double> values;
  record.getRealElements(values, false);
  ASSERT_EQ(values.size(), labels.size());
  EXPECT_EQ(values[0], 0.25);
  EXPECT_EQ(values[1], 3.0);
  for (std::size_t k = 2; k < labels.size(); ++k) EXPECT_EQ(values[k], valueNamedBy(labels[k])) << labels[k];

  // The capture's own flat values are the same, less time and index.
  HxSystemDataCapture::Values flat;
  capture.getDataElements(flat);
  ASSERT_EQ(flat.size(), 40u);
  for (HxU32 k = 0; k < flat.size(); ++k) EXPECT_EQ(flat[k].value(), values[k + 2]) << labels[k + 2];
}

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

  // Labels: full length, over a caller's longer list of stale text; the disabled columns of
  // wide types leave empty strings at the end; the 1-column type keeps its label.
  const Labels disabled = {"Manip[2]:Base Positions:Translation X", "Manip[2]:Base Positions:Quaternion 0",
                           "Manip[2]:EE[1]:End Effector Placements:Quaternion 3"};
  auto isDisabled = [&](const std::string& label) {
    return std::find(disabled.begin(), disabled.end(), label) != disabled.end();
  };
  Labels expected;
  for (const std::string& label : expectedLabels()) {
    if (!isDisabled(label)) expected.push_back(label);
  }
  expected.resize(42);
  Labels labels(50, std::string("stale text"));
  capture.getStringElements(labels);
  EXPECT_EQ(labels, expected);

  // The record is sized by active columns (40 - 4) and holds exactly the enabled values.
  ASSERT_TRUE(capture.captureData(simulation));
  HxSystemDataStorage record;
  capture.allocateStorage(record);
  EXPECT_EQ(record.elementSize(), 38u);
  ASSERT_TRUE(capture.storeData(record));
  std::vector<double> values;
  record.getRealElements(values, true);
  std::vector<double> enabled;
  for (const std::string& label : expectedLabels()) {
    if (label.rfind("Manip", 0) == 0 && label != "Manip[2]:link0:Joint Positions" && !isDisabled(label)) {
      enabled.push_back(valueNamedBy(label));
    }
  }
  EXPECT_EQ(values, enabled);

  // getDataElements: full length, active values packed, the last 4 positions not written.
  HxSystemDataCapture::Values flat(40, HxXmlBasicType<double>(-7.0));
  capture.getDataElements(flat);
  ASSERT_EQ(flat.size(), 40u);
  for (HxU32 k = 0; k < 40; ++k) EXPECT_EQ(flat[k].value(), k < 36 ? enabled[k] : -7.0) << k;
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
  EXPECT_FALSE(capture.captureData(simulation));
  capture.allocateStorage(record);
  EXPECT_TRUE(capture.storeData(record));
  std::vector<double> values;
  record.getRealElements(values, false);
  capture.getStringElements(labels);
  ASSERT_EQ(values.size(), labels.size());
  for (std::size_t k = 2; k < labels.size(); ++k) {
    const bool unknown = labels[k].find("noSuchLink") != std::string::npos;
    EXPECT_TRUE(unknown || values[k] == valueNamedBy(labels[k])) << labels[k] << " holds " << values[k];
  }
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

  HxIndividualManipulator arm;
  arm.addLink(HxLink("a", 0));
  arm.addLink(HxLink("b", 1));
  EXPECT_TRUE(capture.addLinkDataCaptureType(3, HxJointTorqueDataCaptureTypeToken, arm));
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
