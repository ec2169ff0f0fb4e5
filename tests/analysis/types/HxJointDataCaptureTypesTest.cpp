// The joint-space quantities: which source each reads on each path, its index checks, and the
// two finite-difference velocities over several samples.

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/types/HxJointDataCaptureTypes.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/analysis/types/HxTypesTestSupport.h"

namespace {

using namespace HxTypesTest;

// Manipulator 1, joint 2 of a 2-manipulator, 5-joint simulation gets a different value in
// every source, each holding 3 joints only, so that a test sees which source a type read and
// that it checks the joint against that source, not against the joint count (the sources
// these types never read, the system state and the simulator's own active state, hold zeros).
void setSources(HxScriptedSimulation& sim) {
  sim.activeState(1).mutablePositionState().setJointPositions({0, 0, 1.5});
  sim.controlOutputPositionState(1).setJointPositions({0, 0, 2.5});
  sim.activeState(1).mutableVelocityState().setJointVelocities({0, 0, 3.5});
  sim.controlOutputVelocityState(1).setJointVelocities({0, 0, 4.5});
  sim.individualSimulator(1).setJointAccelerations({0, 0, 5.5});
  sim.individualSimulator(1).setJointTorques({0, 0, 6.5});
  sim.controlInput(1).setValues({0, 0, 7.5});
  sim.torque(1).setValues({0, 0, 8.5});
}

// One sample of a finite-difference velocity on a 1-manipulator, 2-joint simulation whose
// control output gives joint 1 the velocity 7: the control-output time and position of joint
// 1, the indices asked for, and what the type returns and holds.
struct Sample {
  const char* what;
  double time, position;
  HxU32 manipulator, joint;
  bool captured;
  double velocity;
  bool dynamics = false;
};

// Captures `samples` in order with one object.
void expectSamples(const HxDataCaptureType& type, const std::vector<Sample>& samples) {
  HxScriptedSimulation sim(1, 2, 0);
  sim.controlOutputVelocityState(0).setJointVelocities({0.0, 7.0});
  sim.activeState(0).mutableVelocityState().setJointVelocities({0.0, -3.0});
  for (const Sample& sample : samples) {
    SCOPED_TRACE(sample.what);
    sim.setDynamicsEnabled(sample.dynamics);
    sim.setControlOutputTime(sample.time);
    sim.controlOutputPositionState(0).setJointPositions({0.0, sample.position});
    EXPECT_EQ(type.captureData(sim, sample.manipulator, sample.joint), sample.captured);
    EXPECT_NEAR(type.data()[0].value(), sample.velocity, 1e-12);
  }
}

// Each simple joint type reads its own source: the dynamics' with dynamics, the control output's
// without (0: refused, since every source is non-zero); a joint past the end of the type's own
// source gives false and a zero on both paths, also after a filled buffer. Without dynamics the
// joint velocity is the control output's velocity when the time has not advanced (first sample,
// repeated time) and the difference quotient of the position when it has; a refused sample does not
// move the history on; the dynamic path leaves it alone. The actual joint velocity always reports
// false, while its buffer holds the difference quotient (from time 0 and position 0 at the first
// sample); without a time step it only remembers the position, and a bad index ends the call only
// on a time step.
TEST(HxJointDataCaptureTypes, SourcesOnEachPathAndFiniteDifferenceVelocities) {
  expectSamples(HxJointVelocityDataCaptureType(),
                {{"first sample: the control output's velocity", 0.5, 0.5, 0, 1, true, 7},
                 {"a refused joint keeps time and position", 0.6, 0.9, 0, 2, false, 0},
                 {"a refused manipulator keeps them too", 0.6, 0.9, 1, 1, false, 0},
                 {"the dynamic path reads the active state", 0.6, 0.9, 0, 1, true, -3, true},
                 {"a step: (0.51 - 0.5) / (0.6 - 0.5)", 0.6, 0.51, 0, 1, true, 0.1},
                 {"the same time: the control output's velocity", 0.6, 0.8, 0, 1, true, 7},
                 {"the next step starts from there: (1.0 - 0.8) / 0.5", 1.1, 1.0, 0, 1, true, 0.4}});
  // Without a control-output velocity for the joint the sample is refused.
  HxScriptedSimulation noVelocity(1, 2, 0);
  noVelocity.controlOutputVelocityState(0).setJointVelocities({0.0});
  EXPECT_FALSE(HxJointVelocityDataCaptureType().captureData(noVelocity, 0, 1));

  expectSamples(HxControlOutputActualJointVelocityDataCaptureType(),
                {{"first sample at 2.0: 1.0 / 2.0", 2.0, 1.0, 0, 1, false, 0.5},
                 {"a step of 0.5: (1.25 - 1.0) / 0.5", 2.5, 1.25, 0, 1, false, 0.5},
                 {"the same time: zero, the position remembered", 2.5, 2.0, 0, 1, false, 0},
                 {"a step from it: (2.5 - 2.0) / 0.5", 3.0, 2.5, 0, 1, false, 1},
                 {"no step, bad joint: the time 2.0 is still taken", 2.0, 9.0, 0, 4, false, 0},
                 {"so 2.5 is a step: (3.0 - 2.5) / 0.5", 2.5, 3.0, 0, 1, false, 1}});
  expectSamples(HxControlOutputActualJointVelocityDataCaptureType(),
                {{"a step with a bad manipulator returns before taking the time", 1.0, 3.0, 1, 1, false, 0},
                 {"a step with a bad joint too", 1.0, 3.0, 0, 2, false, 0},
                 {"so the step is still from time 0: 3.0 / 1.0", 1.0, 3.0, 0, 1, false, 3}});

  HxScriptedSimulation sim(2, 5, 1);
  setSources(sim);
  const struct {
    std::shared_ptr<const HxDataCaptureType> type;
    double dynamic, kinematic;
  } rows[] = {{std::make_shared<HxJointPositionDataCaptureType>(), 1.5, 2.5},
              {std::make_shared<HxJointVelocityDataCaptureType>(), 3.5, 4.5},
              {std::make_shared<HxJointAccelerationDataCaptureType>(), 5.5, 0},
              {std::make_shared<HxJointTorqueDataCaptureType>(), 6.5, 0},
              {std::make_shared<HxControlInputDataCaptureType>(), 7.5, 0},
              {std::make_shared<HxControlTorqueDataCaptureType>(), 8.5, 0},
              {std::make_shared<HxControlOutputJointPositionDataCaptureType>(), 2.5, 2.5},
              {std::make_shared<HxControlOutputJointVelocityDataCaptureType>(), 4.5, 4.5}};
  for (const auto& row : rows) {
    for (bool dynamics : {true, false}) {
      SCOPED_TRACE(row.type->description() + (dynamics ? " dynamic" : " kinematic"));
      sim.setDynamicsEnabled(dynamics);
      const double expected = dynamics ? row.dynamic : row.kinematic;
      EXPECT_EQ(capture(*row.type, sim, 1, 2), Result(expected != 0.0, {expected}));
      EXPECT_EQ(capture(*row.type, sim, 1, 3), refused(1));
    }
  }
}

}  // namespace
