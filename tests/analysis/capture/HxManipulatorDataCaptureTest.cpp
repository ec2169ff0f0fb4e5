// One manipulator's capture at its three levels: the add, remove and lookup rules, level checks,
// pruning of sub-captures, what captureData passes and returns, and the available types per level.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/capture/HxEndEffectorDataCapture.h"
#include "analysis/capture/HxLinkDataCapture.h"
#include "analysis/capture/HxManipulatorDataCapture.h"
#include "analysis/types/HxDataCaptureTypes.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/analysis/types/HxTypesTestSupport.h"

namespace {

using namespace HxSimAnalysis;
using HxTypesTest::flags;

// A token already present is accepted again without a copy; a sub-capture is kept only once its
// first type was accepted (the level checks themselves are pinned through the system capture);
// adding to all of zero end effectors succeeds and changes nothing. Adding to all links skips
// absent link positions and adds to an existing link capture in place. An end-effector type
// added by object replaces the one of its token (flags and all); added by token, the existing
// one stays.
TEST(HxManipulatorDataCapture, AddRules) {
  HxManipulatorDataCapture capture;
  EXPECT_TRUE(capture.addDataCaptureType(HxBasePositionDataCaptureTypeToken));
  const HxManipulatorDataCapture once = capture;
  EXPECT_TRUE(capture.addDataCaptureType(HxBasePositionDataCaptureTypeToken));
  EXPECT_FALSE(capture.addLinkDataCaptureType("elbow", HxControlInputDataCaptureTypeToken));  // no creator
  EXPECT_FALSE(capture.addEndEffectorDataCaptureType(HxJointPositionDataCaptureType(), 2u));
  EXPECT_TRUE(capture.addEndEffectorDataCaptureType(HxEndEffectorVelocityDataCaptureTypeToken, 0u) && capture == once);
  EXPECT_TRUE(capture.addEndEffectorDataCaptureType(HxEndEffectorVelocityDataCaptureTypeToken, 2u));
  ASSERT_EQ(capture.endEffectorDataCaptureVector().size(), 2u);
  EXPECT_EQ(capture.endEffectorDataCaptureVector()[1].endEffectorIndex(), 1u);

  HxIndividualManipulator manipulator;
  manipulator.addLink(HxLink("base", 0));
  manipulator.addAbsentLink();
  manipulator.addLink(HxLink("tip", 2));
  ASSERT_TRUE(capture.addLinkDataCaptureType("tip", HxJointTorqueDataCaptureTypeToken));
  EXPECT_FALSE(capture.addLinkDataCaptureType(HxEndEffectorPlacementDataCaptureTypeToken, manipulator) ||
               capture.addLinkDataCaptureType(HxToken("noSuchType"), manipulator));
  EXPECT_EQ(capture.linkDataCaptureVector().size(), 1u);
  EXPECT_TRUE(capture.addLinkDataCaptureType(HxJointPositionDataCaptureTypeToken, manipulator));
  ASSERT_EQ(capture.linkDataCaptureVector().size(), 2u);
  EXPECT_EQ(capture.linkDataCaptureVector()[1].linkIdentifier(), "base");
  EXPECT_TRUE(capture.numDataCaptureTypes("tip") == 2u && capture.numDataCaptureTypes("base") == 1u);

  HxReachTargetDataCaptureType target;
  target.setTranslationTolerance(0.05);
  target.setDisableFlags(flags({true}));
  ASSERT_TRUE(capture.addEndEffectorDataCaptureType(0u, target));
  auto held = [&] {
    return dynamic_cast<const HxReachTargetDataCaptureType&>(
        *capture.endEffectorDataCapture(0u)->dataCaptureType(HxReachTargetDataCaptureTypeToken));
  };
  EXPECT_TRUE(capture.addEndEffectorDataCaptureType(0u, HxReachTargetDataCaptureTypeToken) && held() == target);
  EXPECT_TRUE(capture.addEndEffectorDataCaptureType(HxReachTargetDataCaptureType(), 1u));
  EXPECT_TRUE(capture.numDataCaptureTypes(0u) == 2u && held() == HxReachTargetDataCaptureType());
}

// Removals prune the link and end-effector captures they leave empty, never the manipulator
// level. Link and end-effector lookups take the first of two sub-captures with the same key.
TEST(HxManipulatorDataCapture, RemovalsPruneEmptySubCapturesAndLookupsTakeTheFirstDuplicate) {
  HxManipulatorDataCapture capture;
  ASSERT_TRUE(capture.addDataCaptureType(HxCenterOfMassDataCaptureTypeToken));
  ASSERT_TRUE(capture.addLinkDataCaptureType("a", HxJointPositionDataCaptureTypeToken));
  ASSERT_TRUE(capture.addLinkDataCaptureType("b", HxJointPositionDataCaptureTypeToken));
  ASSERT_TRUE(capture.addLinkDataCaptureType("b", HxJointTorqueDataCaptureTypeToken));
  ASSERT_TRUE(capture.addEndEffectorDataCaptureType(HxEndEffectorPlacementDataCaptureTypeToken, 2u));
  ASSERT_TRUE(capture.addEndEffectorDataCaptureType(1u, HxEndEffectorVelocityDataCaptureTypeToken));

  // From all links: "a" loses its last type and goes, "b" keeps its torque.
  EXPECT_TRUE(capture.removeLinkDataCaptureType(HxJointPositionDataCaptureTypeToken));
  ASSERT_EQ(capture.linkDataCaptureVector().size(), 1u);
  EXPECT_EQ(capture.linkDataCaptureVector()[0].linkIdentifier(), "b");
  EXPECT_FALSE(capture.removeLinkDataCaptureType(HxJointPositionDataCaptureTypeToken));

  // One end effector that keeps another type stays; one left empty goes.
  EXPECT_TRUE(capture.removeEndEffectorDataCaptureType(1u, HxEndEffectorPlacementDataCaptureTypeToken));
  EXPECT_NE(capture.endEffectorDataCapture(1u), nullptr);
  EXPECT_TRUE(capture.removeEndEffectorDataCaptureType(0u, HxEndEffectorPlacementDataCaptureTypeToken));
  EXPECT_EQ(capture.endEffectorDataCapture(0u), nullptr);
  EXPECT_FALSE(capture.removeEndEffectorDataCaptureType(7u, HxEndEffectorVelocityDataCaptureTypeToken));

  // A keyed removal of a token the link does not hold fails and keeps the link.
  EXPECT_FALSE(capture.removeLinkDataCaptureType("b", HxJointVelocityDataCaptureTypeToken));
  EXPECT_NE(capture.linkDataCapture("b"), nullptr);
  EXPECT_TRUE(capture.removeLinkDataCaptureType("b", HxJointTorqueDataCaptureTypeToken));
  EXPECT_EQ(capture.linkDataCapture("b"), nullptr);

  // The manipulator level never prunes anything.
  EXPECT_TRUE(capture.removeDataCaptureType(HxCenterOfMassDataCaptureTypeToken));
  EXPECT_FALSE(capture.removeDataCaptureType(HxCenterOfMassDataCaptureTypeToken));
  EXPECT_EQ(capture.endEffectorDataCaptureVector().size(), 1u);

  capture.addLinkDataCaptureType("c", HxJointPositionDataCaptureTypeToken);
  capture.removeAllDataCaptureTypes();
  EXPECT_EQ(capture, HxManipulatorDataCapture());

  HxLinkDataCapture link;
  link.setLinkIdentifier("elbow");
  link.addDataCaptureType(HxJointPositionDataCaptureTypeToken);
  capture.addLinkDataCapture(link);
  link.addDataCaptureType(HxJointTorqueDataCaptureTypeToken);
  capture.addLinkDataCapture(link);

  unsigned int position = 99;
  EXPECT_TRUE(capture.findIndex("elbow", position) && position == 0u);
  EXPECT_TRUE(capture.numDataCaptureTypes("elbow") == 1u && capture.removeLinkDataCapture("elbow"));
  EXPECT_EQ(capture.numDataCaptureTypes("elbow"), 2u);

  HxEndEffectorDataCapture endEffector;
  endEffector.setEndEffectorIndex(4);
  capture.addEndEffectorDataCapture(endEffector);
  endEffector.addDataCaptureType(HxEndEffectorVelocityDataCaptureTypeToken);
  capture.addEndEffectorDataCapture(endEffector);
  EXPECT_TRUE(capture.numDataCaptureTypes(4u) == 0u && capture.removeEndEffectorDataCapture(4u));
  EXPECT_EQ(capture.numDataCaptureTypes(4u), 1u);
}

// A link capture ANDs its types' results; an unknown link or manipulator fails and leaves the
// types' data as it was. An end-effector capture reports its last type's result only. The
// manipulator capture makes every capture even after a failure and ANDs the results. Each level's
// available types are the creatable types of its level, in token order, built once.
TEST(HxManipulatorDataCapture, CaptureResultsOfEachLevelAndAvailableTypes) {
  HxScriptedSimulation simulation(2, std::vector<std::string>{"shoulder", "elbow"}, 1);  // no dynamics
  simulation.setJointPositions(1, {0.5, 0.75});
  HxLinkDataCapture link;
  EXPECT_TRUE(link.captureData(simulation, 7));  // empty
  link.setLinkIdentifier("elbow");
  link.addDataCaptureType(HxJointPositionDataCaptureTypeToken);
  EXPECT_TRUE(link.captureData(simulation, 1));
  const HxDataCaptureType::DataVector& joint = link.dataCaptureVector()[0].data();
  EXPECT_EQ(joint[0].value(), 0.75);
  simulation.setJointPositions(1, {0.25, 0.0});
  EXPECT_FALSE(link.captureData(simulation, 2));
  link.setLinkIdentifier("wrist");
  EXPECT_TRUE(!link.captureData(simulation, 1) && joint[0].value() == 0.75);

  // Without dynamics the placement is captured and the acceleration fails.
  HxEndEffectorDataCapture lastSucceeds, lastFails;
  lastSucceeds.addDataCaptureType(HxEndEffectorAccelerationDataCaptureTypeToken);
  lastSucceeds.addDataCaptureType(HxEndEffectorPlacementDataCaptureTypeToken);
  lastFails.addDataCaptureType(HxEndEffectorPlacementDataCaptureTypeToken);
  lastFails.addDataCaptureType(HxEndEffectorAccelerationDataCaptureTypeToken);
  EXPECT_TRUE(lastSucceeds.captureData(simulation, 0) && !lastFails.captureData(simulation, 0));

  HxManipulatorDataCapture manipulator;
  manipulator.setManipulatorIndex(1);
  manipulator.addLinkDataCapture(link);
  manipulator.addLinkDataCaptureType("shoulder", HxJointPositionDataCaptureTypeToken);
  manipulator.addEndEffectorDataCapture(lastSucceeds);
  EXPECT_FALSE(manipulator.captureData(simulation));
  EXPECT_EQ(manipulator.linkDataCaptureVector()[1].dataCaptureVector()[0].data()[0].value(), 0.25);
  manipulator.removeLinkDataCapture("wrist");
  EXPECT_TRUE(manipulator.captureData(simulation));
  manipulator.addEndEffectorDataCapture(lastFails);
  EXPECT_FALSE(manipulator.captureData(simulation));

  const HxDataCaptureTypeVector* lists[] = {&HxManipulatorDataCapture::allAvailableDataCaptureTypes(),
                                            &HxLinkDataCapture::allAvailableDataCaptureTypes(),
                                            &HxEndEffectorDataCapture::allAvailableDataCaptureTypes()};
  std::size_t total = 0;
  for (HxU32 level = 0; level < 3; ++level) {
    const HxDataCaptureTypeVector& types = *lists[level];
    for (HxU32 i = 0; i < types.size(); ++i) {
      EXPECT_EQ(types[i].type(), level) << types[i].token().token();
      EXPECT_TRUE(i == 0 || types[i - 1].token() < types[i].token()) << types[i].token().token();
    }
    total += types.size();
  }
  EXPECT_EQ(total, HxDataCaptureTypeVector().creatorMap().size());
  EXPECT_EQ(&HxLinkDataCapture::allAvailableDataCaptureTypes(), lists[1]);
}

// A link capture keeps the link it looked up, yet answers as a fresh copy of it (which has
// looked nothing up) does: alternating between two simulations whose links differ, with a
// manipulator out of range, after the links changed, with a link the simulation lacks, and
// after the identifier changed.
TEST(HxManipulatorDataCapture, LinkLookupFollowsSimulationAndLinks) {
  HxScriptedSimulation first(2, std::vector<std::string>{"shoulder", "elbow"}, 1);
  HxScriptedSimulation second(1, std::vector<std::string>{"elbow", "wrist"}, 1);
  first.setJointPositions(1, {0.5, 0.75});
  second.setJointPositions(0, {0.125, 0.25});
  HxLinkDataCapture link;
  link.setLinkIdentifier("elbow");
  link.addDataCaptureType(HxJointPositionDataCaptureTypeToken);
  auto capture = [&link](const HxSystemSimulation& simulation, unsigned int m, bool result, double value) {
    const HxLinkDataCapture fresh(link);
    EXPECT_EQ(fresh.captureData(simulation, m), result);
    EXPECT_EQ(link.captureData(simulation, m), result);
    EXPECT_TRUE(link.dataCaptureVector()[0].data()[0].value() == value &&
                fresh.dataCaptureVector()[0].data()[0].value() == value)
        << m << " " << value;
  };
  capture(first, 1, true, 0.75);
  capture(second, 0, true, 0.125);
  capture(first, 1, true, 0.75);
  capture(second, 1, false, 0.75);
  first.manipulator(1).clearLinks();
  first.manipulator(1).addLink(HxLink("elbow", 0));
  capture(first, 1, true, 0.5);
  first.manipulator(1).clearLinks();
  capture(first, 1, false, 0.5);
  link.setLinkIdentifier("wrist");
  capture(second, 0, true, 0.25);
}

}  // namespace
