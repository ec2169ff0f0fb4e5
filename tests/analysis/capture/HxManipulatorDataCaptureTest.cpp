// One manipulator's capture at its three levels: the add, remove and lookup rules, level
// checks, pruning of sub-captures, the arguments and results of captureData, the available
// types per level, and the XML forms.

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/capture/HxEndEffectorDataCapture.h"
#include "analysis/capture/HxLinkDataCapture.h"
#include "analysis/capture/HxManipulatorDataCapture.h"
#include "analysis/types/HxDataCaptureTypes.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxPrint.h"
#include "simulation/HxScriptedSimulation.h"
#include "tests/analysis/capture/HxCaptureTestSupport.h"

namespace {

using namespace HxSimAnalysis;
using HxCaptureTest::flags;
using HxCaptureTest::probeLog;
using HxCaptureTest::readFromString;
using HxCaptureTest::writeToString;
template <HxU32 Level, bool Result>
using Probe = HxCaptureTest::HxProbeDataCaptureType<Level, Result>;

TEST(HxManipulatorDataCapture, AddByTokenKeepsOneTypePerTokenAndChecksTheLevel) {
  HxManipulatorDataCapture capture;
  EXPECT_TRUE(capture.addDataCaptureType(HxBasePositionDataCaptureTypeToken));
  EXPECT_TRUE(capture.addDataCaptureType(HxBasePositionDataCaptureTypeToken));
  EXPECT_EQ(capture.numDataCaptureTypes(), 1u);

  // Wrong level and unknown token at each level: refused, nothing changes.
  EXPECT_FALSE(capture.addDataCaptureType(HxJointPositionDataCaptureTypeToken));
  EXPECT_FALSE(capture.addDataCaptureType(HxToken("noSuchType")));
  EXPECT_EQ(capture.numDataCaptureTypes(), 1u);

  HxLinkDataCapture link;
  EXPECT_FALSE(link.addDataCaptureType(HxBasePositionDataCaptureTypeToken));
  EXPECT_FALSE(link.addDataCaptureType(HxEndEffectorPlacementDataCaptureTypeToken));
  EXPECT_TRUE(link.addDataCaptureType(HxJointTorqueDataCaptureTypeToken));
  EXPECT_EQ(link.numDataCaptureTypes(), 1u);

  HxEndEffectorDataCapture endEffector;
  EXPECT_FALSE(endEffector.addDataCaptureType(HxJointTorqueDataCaptureTypeToken));
  EXPECT_FALSE(endEffector.addDataCaptureType(HxJointTorqueDataCaptureType()));
  EXPECT_TRUE(endEffector.addDataCaptureType(HxReachTargetDataCaptureTypeToken));
  EXPECT_EQ(endEffector.numDataCaptureTypes(), 1u);

  // Types that no creator is registered for are not created by token.
  EXPECT_FALSE(link.addDataCaptureType(HxControlInputDataCaptureTypeToken));
}

TEST(HxManipulatorDataCapture, SubCaptureIsCreatedOnlyWhenItsFirstTypeIsAccepted) {
  HxManipulatorDataCapture capture;
  EXPECT_FALSE(capture.addLinkDataCaptureType("elbow", HxBasePositionDataCaptureTypeToken));
  EXPECT_FALSE(capture.addEndEffectorDataCaptureType(0u, HxJointPositionDataCaptureTypeToken));
  EXPECT_EQ(capture.linkDataCaptureVector().size(), 0u);
  EXPECT_EQ(capture.endEffectorDataCaptureVector().size(), 0u);

  EXPECT_TRUE(capture.addLinkDataCaptureType("elbow", HxJointPositionDataCaptureTypeToken));
  EXPECT_TRUE(capture.addLinkDataCaptureType("elbow", HxJointVelocityDataCaptureTypeToken));
  EXPECT_EQ(capture.linkDataCaptureVector().size(), 1u);
  EXPECT_EQ(capture.numDataCaptureTypes("elbow"), 2u);
  EXPECT_EQ(capture.numDataCaptureTypes("wrist"), 0u);
  EXPECT_TRUE(capture.isDataCaptureTypeIncluded("elbow", HxJointVelocityDataCaptureTypeToken));
  EXPECT_FALSE(capture.isDataCaptureTypeIncluded("wrist", HxJointVelocityDataCaptureTypeToken));

  // Adding to all end effectors: the level is checked first; zero end effectors is a success.
  EXPECT_FALSE(capture.addEndEffectorDataCaptureType(HxJointPositionDataCaptureTypeToken, 2u));
  EXPECT_TRUE(capture.addEndEffectorDataCaptureType(HxEndEffectorVelocityDataCaptureTypeToken, 0u));
  EXPECT_EQ(capture.endEffectorDataCaptureVector().size(), 0u);
  EXPECT_TRUE(capture.addEndEffectorDataCaptureType(HxEndEffectorVelocityDataCaptureTypeToken, 2u));
  ASSERT_EQ(capture.endEffectorDataCaptureVector().size(), 2u);
  EXPECT_EQ(capture.endEffectorDataCaptureVector()[1].endEffectorIndex(), 1u);
  EXPECT_EQ(capture.numDataCaptureTypes(1u), 1u);
  EXPECT_EQ(capture.numDataCaptureTypes(5u), 0u);
}

TEST(HxManipulatorDataCapture, AddToAllLinksSkipsAbsentLinkPositionsAndReusesExistingCaptures) {
  HxIndividualManipulator manipulator;
  manipulator.addLink(HxLink("base", 0));
  manipulator.addAbsentLink();
  manipulator.addLink(HxLink("tip", 2));

  HxManipulatorDataCapture capture;
  ASSERT_TRUE(capture.addLinkDataCaptureType("tip", HxJointTorqueDataCaptureTypeToken));
  EXPECT_FALSE(capture.addLinkDataCaptureType(HxEndEffectorPlacementDataCaptureTypeToken, manipulator));
  EXPECT_FALSE(capture.addLinkDataCaptureType(HxToken("noSuchType"), manipulator));
  EXPECT_EQ(capture.linkDataCaptureVector().size(), 1u);

  EXPECT_TRUE(capture.addLinkDataCaptureType(HxJointPositionDataCaptureTypeToken, manipulator));
  ASSERT_EQ(capture.linkDataCaptureVector().size(), 2u);
  EXPECT_EQ(capture.linkDataCaptureVector()[0].linkIdentifier(), "tip");
  EXPECT_EQ(capture.linkDataCaptureVector()[1].linkIdentifier(), "base");
  EXPECT_EQ(capture.numDataCaptureTypes("tip"), 2u);
  EXPECT_EQ(capture.numDataCaptureTypes("base"), 1u);
}

TEST(HxManipulatorDataCapture, EndEffectorAddByObjectReplacesWhileAddByTokenKeeps) {
  HxManipulatorDataCapture capture;
  HxReachTargetDataCaptureType target;
  target.setTranslationTolerance(0.05);
  target.setDisableFlags(flags({true}));
  ASSERT_TRUE(capture.addEndEffectorDataCaptureType(0u, target));

  // By token: the existing type, with its flags and tolerance, stays.
  EXPECT_TRUE(capture.addEndEffectorDataCaptureType(0u, HxReachTargetDataCaptureTypeToken));
  const auto* kept = dynamic_cast<const HxReachTargetDataCaptureType*>(
      capture.endEffectorDataCapture(0u)->dataCaptureType(HxReachTargetDataCaptureTypeToken));
  ASSERT_NE(kept, nullptr);
  EXPECT_DOUBLE_EQ(kept->translationTolerance(), 0.05);
  EXPECT_EQ(kept->disableFlags().size(), 1u);

  // By object: replaced, flags and all.
  EXPECT_TRUE(capture.addEndEffectorDataCaptureType(HxReachTargetDataCaptureType(), 1u));
  EXPECT_EQ(capture.numDataCaptureTypes(0u), 1u);
  const auto* replaced = dynamic_cast<const HxReachTargetDataCaptureType*>(
      capture.endEffectorDataCapture(0u)->dataCaptureType(HxReachTargetDataCaptureTypeToken));
  ASSERT_NE(replaced, nullptr);
  EXPECT_DOUBLE_EQ(replaced->translationTolerance(), 0.001);
  EXPECT_EQ(replaced->disableFlags().size(), 0u);

  EXPECT_FALSE(capture.addEndEffectorDataCaptureType(HxJointPositionDataCaptureType(), 3u));
  EXPECT_EQ(capture.endEffectorDataCaptureVector().size(), 1u);
}

TEST(HxManipulatorDataCapture, RemovalsPruneEmptySubCapturesOnly) {
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

  // Removing the token from one link capture that does not hold it fails and keeps it.
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
  EXPECT_EQ(capture.numDataCaptureTypes(), 0u);
  EXPECT_EQ(capture.linkDataCaptureVector().size(), 0u);
  EXPECT_EQ(capture.endEffectorDataCaptureVector().size(), 0u);
}

TEST(HxManipulatorDataCapture, LookupsTakeTheFirstOfDuplicateSubCaptures) {
  HxManipulatorDataCapture capture;
  HxLinkDataCapture first;
  first.setLinkIdentifier("elbow");
  first.addDataCaptureType(HxJointPositionDataCaptureTypeToken);
  HxLinkDataCapture second;
  second.setLinkIdentifier("elbow");
  second.addDataCaptureType(HxJointPositionDataCaptureTypeToken);
  second.addDataCaptureType(HxJointTorqueDataCaptureTypeToken);
  capture.addLinkDataCapture(first);
  capture.addLinkDataCapture(second);
  ASSERT_EQ(capture.linkDataCaptureVector().size(), 2u);

  unsigned int position = 99;
  EXPECT_TRUE(capture.findIndex("elbow", position));
  EXPECT_EQ(position, 0u);
  EXPECT_EQ(capture.numDataCaptureTypes("elbow"), 1u);
  position = 99;
  EXPECT_FALSE(capture.findIndex("wrist", position));
  EXPECT_EQ(position, 99u);

  HxEndEffectorDataCapture e0;
  e0.setEndEffectorIndex(4);
  capture.addEndEffectorDataCapture(e0);
  capture.addEndEffectorDataCapture(e0);
  EXPECT_TRUE(capture.findIndex(4u, position));
  EXPECT_EQ(position, 0u);
  EXPECT_TRUE(capture.removeEndEffectorDataCapture(4u));
  EXPECT_TRUE(capture.removeEndEffectorDataCapture(4u));
  EXPECT_FALSE(capture.removeEndEffectorDataCapture(4u));
  EXPECT_TRUE(capture.removeLinkDataCapture("elbow"));
  EXPECT_EQ(capture.numDataCaptureTypes("elbow"), 2u);
}

TEST(HxManipulatorDataCapture, SetDisableFlagsReachesTheKeyedType) {
  HxManipulatorDataCapture capture;
  capture.addDataCaptureType(HxBaseVelocityDataCaptureTypeToken);
  capture.addLinkDataCaptureType("elbow", HxExternalForceDataCaptureTypeToken);
  capture.addEndEffectorDataCaptureType(2u, HxEndEffectorAccelerationDataCaptureTypeToken);

  EXPECT_TRUE(capture.setDisableFlags(HxBaseVelocityDataCaptureTypeToken, flags({true})));
  EXPECT_TRUE(capture.setDisableFlags("elbow", HxExternalForceDataCaptureTypeToken, flags({false, true})));
  EXPECT_TRUE(capture.setDisableFlags(2u, HxEndEffectorAccelerationDataCaptureTypeToken, flags({true, true})));
  EXPECT_FALSE(capture.setDisableFlags(HxCenterOfMassDataCaptureTypeToken, flags({true})));
  EXPECT_FALSE(capture.setDisableFlags("wrist", HxExternalForceDataCaptureTypeToken, flags({true})));
  EXPECT_FALSE(capture.setDisableFlags(0u, HxEndEffectorAccelerationDataCaptureTypeToken, flags({true})));

  EXPECT_EQ(capture.dataCaptureType(HxBaseVelocityDataCaptureTypeToken)->activeDataSize(), 5u);
  EXPECT_EQ(capture.linkDataCapture("elbow")->dataCaptureType(HxExternalForceDataCaptureTypeToken)->activeDataSize(),
            5u);
  EXPECT_EQ(
      capture.endEffectorDataCapture(2u)->dataCaptureType(HxEndEffectorAccelerationDataCaptureTypeToken)->activeDataSize(),
      4u);
}

// Reads a manipulator capture holding probe types (made by the reader's factory).
HxManipulatorDataCapture probeCapture(unsigned int manipulatorIndex, const std::string& linkIdentifier) {
  HxManipulatorDataCapture capture;
  capture.setManipulatorIndex(manipulatorIndex);
  capture.addLinkDataCaptureType(linkIdentifier, HxJointPositionDataCaptureTypeToken);
  std::string text = writeToString(capture);
  // Swap the written joint position for probes at both levels.
  const std::string jointPosition = "sm:jointPositionDataCaptureType";
  const std::string probe1 = "sm:probe1Ok";
  for (std::size_t at; (at = text.find(jointPosition)) != std::string::npos;) text.replace(at, jointPosition.size(), probe1);
  const std::string emptyVector = "<sm:dataCaptureTypeVector count=\"0\"/>";
  const std::size_t at = text.find(emptyVector);
  EXPECT_NE(at, std::string::npos) << text;
  if (at != std::string::npos) {
    text.replace(at, emptyVector.size(),
                 "<sm:dataCaptureTypeVector count=\"1\"><sm:probe0Ok/></sm:dataCaptureTypeVector>");
  }
  HxCaptureTest::HxProbeFactory factory;
  HxManipulatorDataCapture read;
  EXPECT_TRUE(readFromString(read, text, &factory)) << text;
  return read;
}

TEST(HxManipulatorDataCapture, EachLevelPassesItsOwnKeyToTheTypes) {
  HxScriptedSimulation simulation(2, std::vector<std::string>{"shoulder", "elbow", "wrist"}, 1);
  HxManipulatorDataCapture capture = probeCapture(1, "wrist");
  ASSERT_EQ(capture.numDataCaptureTypes(), 1u);
  ASSERT_EQ(capture.numDataCaptureTypes("wrist"), 1u);

  // Manipulator level: its own index and the fixed element index 4294967294.
  probeLog() = {};
  const HxDataCaptureTypeVector& types = capture.dataCaptureVector();
  EXPECT_TRUE(types[0].captureData(simulation, 1, 0));
  EXPECT_TRUE(capture.captureData(simulation));
  EXPECT_EQ(probeLog().calls, 3);
  // The link probe runs after the manipulator-level one, with the link's index.
  EXPECT_EQ(probeLog().manipulatorIndex, 1u);
  EXPECT_EQ(probeLog().elementIndex, 2u);
  EXPECT_DOUBLE_EQ(types[0].data()[1].value(), 4294967294.0);
  EXPECT_EQ(HxManipulatorDataCapture::ManipulatorLevelElementIndex, 4294967294u);
}

TEST(HxManipulatorDataCapture, UnknownLinkFailsWithoutCallingItsTypes) {
  HxScriptedSimulation simulation(2, std::vector<std::string>{"shoulder", "elbow"}, 1);
  HxManipulatorDataCapture capture = probeCapture(0, "forearm");
  probeLog() = {};
  EXPECT_FALSE(capture.captureData(simulation));
  EXPECT_EQ(probeLog().calls, 1);  // the manipulator-level probe only

  // A manipulator index the simulation does not have is an unknown link too.
  HxLinkDataCapture link = capture.linkDataCaptureVector()[0];
  link.setLinkIdentifier("elbow");
  probeLog() = {};
  EXPECT_TRUE(link.captureData(simulation, 1));
  EXPECT_EQ(probeLog().elementIndex, 1u);
  EXPECT_FALSE(link.captureData(simulation, 2));
  EXPECT_EQ(probeLog().calls, 1);

  HxLinkDataCapture empty;
  EXPECT_TRUE(empty.captureData(simulation, 7));
}

TEST(HxEndEffectorDataCapture, ReportsTheLastTypesResultOnly) {
  HxScriptedSimulation simulation(1, 2, 1);
  HxEndEffectorDataCapture capture;
  capture.setEndEffectorIndex(3);
  EXPECT_TRUE(capture.captureData(simulation, 0));  // empty

  ASSERT_TRUE(capture.addDataCaptureType(Probe<2, false>()));
  ASSERT_TRUE(capture.addDataCaptureType(Probe<2, true>()));
  probeLog() = {};
  EXPECT_TRUE(capture.captureData(simulation, 5));
  EXPECT_EQ(probeLog().calls, 2);
  EXPECT_EQ(probeLog().manipulatorIndex, 5u);
  EXPECT_EQ(probeLog().elementIndex, 3u);

  HxEndEffectorDataCapture reversed;
  reversed.addDataCaptureType(Probe<2, true>());
  reversed.addDataCaptureType(Probe<2, false>());
  EXPECT_FALSE(reversed.captureData(simulation, 0));

  // The manipulator capture still ANDs the end-effector results in.
  HxManipulatorDataCapture manipulator;
  manipulator.addEndEffectorDataCapture(reversed);
  EXPECT_FALSE(manipulator.captureData(simulation));
}

TEST(HxManipulatorDataCapture, AvailableTypesAreThoseOfEachLevelBuiltOnce) {
  const HxDataCaptureTypeVector& manipulatorTypes = HxManipulatorDataCapture::allAvailableDataCaptureTypes();
  const HxDataCaptureTypeVector& linkTypes = HxLinkDataCapture::allAvailableDataCaptureTypes();
  const HxDataCaptureTypeVector& endEffectorTypes = HxEndEffectorDataCapture::allAvailableDataCaptureTypes();
  // 18 types can be created by token: 5 manipulator-level, 9 link-level, 4 end-effector-level.
  EXPECT_EQ(manipulatorTypes.size(), 5u);
  EXPECT_EQ(linkTypes.size(), 9u);
  EXPECT_EQ(endEffectorTypes.size(), 4u);
  for (HxU32 i = 0; i < manipulatorTypes.size(); ++i) EXPECT_EQ(manipulatorTypes[i].type(), 0u);
  for (HxU32 i = 0; i < linkTypes.size(); ++i) EXPECT_EQ(linkTypes[i].type(), 1u);
  for (HxU32 i = 0; i < endEffectorTypes.size(); ++i) EXPECT_EQ(endEffectorTypes[i].type(), 2u);
  // In the creator map's key order (token text).
  for (HxU32 i = 1; i < linkTypes.size(); ++i) EXPECT_LT(linkTypes[i - 1].token().token(), linkTypes[i].token().token());
  EXPECT_EQ(linkTypes.findDataCaptureByToken(HxControlInputDataCaptureTypeToken, nullptr), nullptr);
  EXPECT_EQ(&HxLinkDataCapture::allAvailableDataCaptureTypes(), &linkTypes);
  EXPECT_EQ(HxLinkDataCapture::allAvailableDataCaptureTypes().size(), 9u);
}

TEST(HxManipulatorDataCapture, XmlRoundTripsAtEveryLevel) {
  HxManipulatorDataCapture capture;
  capture.setManipulatorIndex(4);
  capture.addDataCaptureType(HxBasePositionDataCaptureTypeToken);
  capture.setDisableFlags(HxBasePositionDataCaptureTypeToken, flags({false, true, true}));
  capture.addLinkDataCaptureType("elbow joint", HxExternalForceDataCaptureTypeToken);
  capture.addLinkDataCaptureType("wrist", HxJointPositionDataCaptureTypeToken);
  HxReachTargetDataCaptureType target;
  target.setTranslationTolerance(0.02);
  target.setOrientationTolerance(0.1);
  capture.addEndEffectorDataCaptureType(target, 2u);

  Hx::ScopedPrintCapture messages;
  const std::string text = writeToString(capture);
  EXPECT_NE(text.find("<sm:manipulatorDataCapture"), std::string::npos) << text;
  EXPECT_LT(text.find("sm:manipulatorIndex"), text.find("sm:dataCaptureTypeVector"));
  EXPECT_LT(text.find("sm:dataCaptureTypeVector"), text.find("sm:linkDataCaptureVector"));
  EXPECT_LT(text.find("sm:linkDataCaptureVector"), text.find("sm:endEffectorDataCaptureVector"));
  EXPECT_NE(text.find("<sm:linkIdentification>elbow joint</sm:linkIdentification>"), std::string::npos) << text;

  HxManipulatorDataCapture read;
  ASSERT_TRUE(readFromString(read, text));
  EXPECT_EQ(read, capture);
  EXPECT_TRUE(read.equality(&capture));
  EXPECT_FALSE(read.equality(&capture.linkDataCaptureVector()[0]));
  EXPECT_FALSE(read.equality(nullptr));

  HxLinkDataCapture link;
  ASSERT_TRUE(readFromString(link, writeToString(capture.linkDataCaptureVector()[0])));
  EXPECT_EQ(link, capture.linkDataCaptureVector()[0]);
  HxEndEffectorDataCapture endEffector;
  ASSERT_TRUE(readFromString(endEffector, writeToString(capture.endEffectorDataCaptureVector()[1])));
  EXPECT_EQ(endEffector, capture.endEffectorDataCaptureVector()[1]);
  EXPECT_NE(endEffector, capture.endEffectorDataCaptureVector()[0]);
  EXPECT_TRUE(messages.records().empty()) << messages.text();

  // clone and newObject keep the class.
  std::unique_ptr<HxXmlObject> clone(capture.clone());
  EXPECT_TRUE(capture.equality(clone.get()));
  std::unique_ptr<HxXmlObject> fresh(capture.newObject());
  EXPECT_TRUE(HxManipulatorDataCapture().equality(fresh.get()));
}

}  // namespace
