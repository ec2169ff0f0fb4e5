// The configuration's capture plan against the captures themselves: every type of every level,
// on both paths, sample after sample, while the simulation changes under it; and the values it
// keeps side by side, across changes of the configuration and copies.

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/capture/HxEndEffectorDataCapture.h"
#include "analysis/capture/HxFlatOrder.h"
#include "analysis/capture/HxLinkDataCapture.h"
#include "analysis/capture/HxManipulatorDataCapture.h"
#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/types/HxDataCaptureTypes.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/support/HxAllocationCounter.h"

namespace {

using namespace HxSimAnalysis;

constexpr HxU32 kJoints = 3;

// Every value the types read, distinct per sample, manipulator, quantity and joint.
void setSample(HxScriptedSimulation& simulation, int k) {
  for (HxU32 m = 0; m < simulation.numberOfManipulators(); ++m) {
    auto value = [&](int quantity, HxU32 j) { return 1000.0 * k + 100.0 * m + 10.0 * quantity + j + 0.25; };
    HxManipulatorActiveState& active = simulation.activeState(m);
    HxIndividualDynamicSimulator& simulator = simulation.individualSimulator(m);
    std::vector<std::vector<double>*> rows = {
        &active.mutablePositionState().mutableJointPositions(),
        &active.mutableVelocityState().mutableJointVelocities(),
        &simulator.mutableActiveState().mutableAccelerationState().mutableJointAccelerations(),
        &simulator.mutableJointTorques(),
        &simulation.torque(m).mutableValues(),
        &simulation.controlInput(m).mutableValues(),
        &simulation.controlOutputPositionState(m).mutableJointPositions(),
        &simulation.controlOutputVelocityState(m).mutableJointVelocities(),
        &simulation.systemPositionState(m).mutableJointPositions(),
        &simulation.systemVelocityState(m).mutableJointVelocities(),
    };
    for (std::size_t q = 0; q < rows.size(); ++q) {
      for (HxU32 j = 0; j < rows[q]->size(); ++j) (*rows[q])[j] = value(static_cast<int>(q), j);
    }
    std::vector<HxGeneralForce>& forces = simulation.externalForce(m).mutableForces();
    for (HxU32 j = 0; j < forces.size(); ++j) {
      forces[j] = HxGeneralForce(value(20, j), value(21, j), value(22, j), value(23, j), value(24, j), value(25, j));
    }
    simulation.setCenterOfMass(m, HxVector(value(30, 0), value(30, 1), value(30, 2)));
  }
}

// Every type's values, in flat order.
std::vector<double> valuesOf(const HxSystemDataCapture& capture) {
  std::vector<double> values;
  HxFlatOrder::forEachCapturedType(capture.manipulatorDataCaptureVector(),
                                   [&](const HxFlatPosition&, const HxDataCaptureType& type) {
                                     values.insert(values.end(), type.values(), type.values() + type.valueCount());
                                   });
  return values;
}

// Every type the library has, at every level, for manipulators 0 and 1 (end effectors 0 and 1,
// of which the simulation has only 0), and for manipulator 5, which it does not have; an
// unknown link on manipulator 0, and a link capture of manipulator 1 with its types removed.
HxSystemDataCapture everyType(const HxScriptedSimulation& simulation) {
  HxSystemDataCapture capture;
  for (const HxU32 m : {0u, 1u, 5u}) {
    const HxDataCaptureTypeVector& own = HxManipulatorDataCapture::allAvailableDataCaptureTypes();
    for (HxU32 i = 0; i < own.size(); ++i) EXPECT_TRUE(capture.addManipulatorDataCaptureType(m, own[i].token()));
    const HxDataCaptureTypeVector& links = HxLinkDataCapture::allAvailableDataCaptureTypes();
    for (HxU32 i = 0; i < links.size(); ++i) {
      EXPECT_TRUE(capture.addLinkDataCaptureType(m, links[i].token(), simulation.manipulators()[m == 5 ? 0 : m]));
    }
    const HxDataCaptureTypeVector& endEffectors = HxEndEffectorDataCapture::allAvailableDataCaptureTypes();
    for (HxU32 i = 0; i < endEffectors.size(); ++i) {
      EXPECT_TRUE(capture.addEndEffectorDataCaptureType(m, endEffectors[i].token(), 2u));
    }
  }
  EXPECT_TRUE(capture.addLinkDataCaptureType(0, "nowhere", HxJointPositionDataCaptureTypeToken));
  EXPECT_TRUE(capture.addLinkDataCaptureType(0, "nowhere", HxExternalForceDataCaptureTypeToken));
  EXPECT_TRUE(capture.addLinkDataCaptureType(1, "emptied", HxJointTorqueDataCaptureTypeToken));
  EXPECT_TRUE(capture.removeLinkDataCaptureType(1, "emptied", HxJointTorqueDataCaptureTypeToken));
  return capture;
}

// The plan captures every type as the manipulator captures themselves do, one after the other:
// the same values in every type, history included, and the same result, on the dynamic and the
// kinematic path, with the time standing still, with rows shorter than the links and with a
// manipulator's link list replaced. What it stores is what the captures' values give.
TEST(HxCapturePlan, CapturesAsTheManipulatorCapturesDo) {
  HxScriptedSimulation simulation(2, kJoints, 1);
  simulation.setPowerDataAvailable(true);
  simulation.setSystemStatePresent(true);
  const HxSystemDataCapture planned = everyType(simulation);
  const HxSystemDataCapture reference = planned;
  HxSystemDataStorage plannedRecord, referenceRecord;
  planned.allocateStorage(plannedRecord);
  reference.allocateStorage(referenceRecord);

  for (int k = 0; k < 12; ++k) {
    SCOPED_TRACE("sample " + std::to_string(k));
    simulation.setDynamicsEnabled(k < 4 || k >= 8);
    if (k != 2 && k != 6) simulation.advanceTime(0.01);  // the history types see a step or none
    if (k == 9) {
      // Rows shorter than the links: the last joint's torque and external force are missing.
      simulation.individualSimulator(1).mutableJointTorques().resize(kJoints - 1);
      simulation.externalForce(1).mutableForces().resize(kJoints - 1);
    }
    if (k == 10) {
      // Manipulator 0's links given again in reverse order, without link1: every link capture
      // of it looks its link up again, and finds another index or none.
      simulation.manipulator(0).clearLinks();
      simulation.manipulator(0).addLink(HxLink("link2", 0));
      simulation.manipulator(0).addLink(HxLink("link0", 2));
    }
    setSample(simulation, k);

    HxBoolean expected = true;
    for (HxU32 p = 0; p < reference.manipulatorDataCaptureVector().size(); ++p) {
      if (!reference.manipulatorDataCaptureVector()[p].captureData(simulation)) expected = false;
    }
    EXPECT_EQ(planned.captureData(simulation), expected);
    EXPECT_EQ(valuesOf(planned), valuesOf(reference));

    ASSERT_TRUE(planned.storeDataDirect(plannedRecord));
    ASSERT_TRUE(reference.storeData(referenceRecord));
    EXPECT_TRUE(plannedRecord == referenceRecord);
  }
  // The dynamic path read the rows: the first joint of manipulator 1 holds sample 11's values.
  const HxLinkDataCapture& link = planned.manipulatorDataCapture(1)->linkDataCaptureVector()[0];
  EXPECT_EQ(link.dataCaptureType(HxJointPositionDataCaptureTypeToken)->values()[0], 11000.0 + 100.0 + 0.25);
}

// An end-effector capture counts its last type's result only, and so does the plan: on the
// kinematic path without the placements held for the end effectors, the placement fails while the
// velocity succeeds, so the capture succeeds only with the velocity last.
TEST(HxCapturePlan, AnEndEffectorCountsItsLastTypeOnly) {
  HxScriptedSimulation simulation(1, kJoints, 1);
  simulation.setSystemStatePresent(true);
  simulation.mutableEndEffectorPlacements().clear();
  setSample(simulation, 1);
  for (const bool placementLast : {false, true}) {
    HxSystemDataCapture capture;
    const HxToken& placement = HxEndEffectorPlacementDataCaptureTypeToken;
    const HxToken& velocity = HxEndEffectorVelocityDataCaptureTypeToken;
    ASSERT_TRUE(capture.addEndEffectorDataCaptureType(0, 0u, placementLast ? velocity : placement));
    ASSERT_TRUE(capture.addEndEffectorDataCaptureType(0, 0u, placementLast ? placement : velocity));
    const HxSystemDataCapture reference = capture;
    EXPECT_EQ(reference.manipulatorDataCaptureVector()[0].captureData(simulation), !placementLast);
    EXPECT_EQ(capture.captureData(simulation), !placementLast);
    EXPECT_EQ(valuesOf(capture), valuesOf(reference));
  }
}

// The values the plan keeps side by side stay the types' own: they survive a change of the
// configuration (the plan is made again, and an added type joins them), a copy of the
// configuration captures into its own types, and types copied out of it outlive it.
TEST(HxCapturePlan, KeptValuesFollowTheConfiguration) {
  HxScriptedSimulation simulation(1, kJoints, 0);
  simulation.setDynamicsEnabled(true);
  auto capture = std::make_unique<HxSystemDataCapture>();
  ASSERT_TRUE(capture->addLinkDataCaptureType(0, HxJointPositionDataCaptureTypeToken, simulation.manipulators()[0]));
  setSample(simulation, 1);
  ASSERT_TRUE(capture->captureData(simulation));
  const std::vector<double> first = valuesOf(*capture);
  EXPECT_EQ(first, (std::vector<double>{1000.25, 1001.25, 1002.25}));

  // A type added: the values captured so far are kept, the new type's start at zero.
  ASSERT_TRUE(capture->addManipulatorDataCaptureType(0, HxCenterOfMassDataCaptureTypeToken));
  EXPECT_EQ(valuesOf(*capture), (std::vector<double>{0, 0, 0, 1000.25, 1001.25, 1002.25}));
  setSample(simulation, 2);
  HxAllocationCounter counter;
  ASSERT_TRUE(capture->captureData(simulation));
  HxSystemDataStorage record;
  capture->allocateStorage(record);
  ASSERT_TRUE(capture->storeDataDirect(record));  // the record's first store makes its array
  counter.restart();
  ASSERT_TRUE(capture->captureData(simulation));
  ASSERT_TRUE(capture->storeDataDirect(record));
  EXPECT_EQ(counter.allocations(), 0u);
  std::vector<double> stored;
  record.getRealElements(stored, false);
  EXPECT_EQ(stored, (std::vector<double>{0, 0, 2300.25, 2300.25 + 1, 2300.25 + 2, 2000.25, 2001.25, 2002.25}));

  // A copy captures into its own types; a type copied out outlives the configuration.
  HxSystemDataCapture copy = *capture;
  const HxJointPositionDataCaptureType kept = dynamic_cast<const HxJointPositionDataCaptureType&>(
      capture->manipulatorDataCapture(0)->linkDataCaptureVector()[2].dataCaptureVector()[0]);
  setSample(simulation, 3);
  ASSERT_TRUE(copy.captureData(simulation));
  EXPECT_EQ(valuesOf(*capture).back(), 2002.25);
  EXPECT_EQ(valuesOf(copy).back(), 3002.25);
  capture.reset();
  EXPECT_EQ(kept.values()[0], 2002.25);
  EXPECT_EQ(kept.data()[0].value(), 2002.25);
}

}  // namespace
