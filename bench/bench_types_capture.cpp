// captureData of every captured quantity on a 7-joint manipulator of the scripted simulation,
// on the dynamic and the kinematic path: time per call and heap allocations per call after
// the first call (counter "allocsPerCall", expected 0).
//
// Baseline: BM_TypesCapture_Baseline reads one joint position straight out of the simulation
// with the same index checks and writes it into a plain double, so each figure can be read as
// a ratio to the bare cost of reaching the data.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "analysis/types/HxDataCaptureTypes.h"
#include "simulation/HxBasePowerConverter.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/support/HxAllocationCounter.h"

namespace {

constexpr HxU32 kJoints = 7;
constexpr HxU32 kJoint = 3;
constexpr HxU32 kEndEffector = 1;

// One 7-joint manipulator with two end effectors in which every quantity has data on both
// paths.
std::unique_ptr<HxScriptedSimulation> makeSimulation(bool dynamics) {
  auto sim = std::make_unique<HxScriptedSimulation>(1, kJoints, 2);
  sim->setDynamicsEnabled(dynamics);
  sim->setPowerDataAvailable(true);
  sim->setControlOutputTime(1.0);
  sim->setJointPositions(0, {0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7});
  sim->setJointVelocities(0, {1.1, 1.2, 1.3, 1.4, 1.5, 1.6, 1.7});
  sim->torque(0).setValues({2.1, 2.2, 2.3, 2.4, 2.5, 2.6, 2.7});
  sim->controlInput(0).setValues({3.1, 3.2, 3.3, 3.4, 3.5, 3.6, 3.7});
  sim->individualSimulator(0).setJointAccelerations({4.1, 4.2, 4.3, 4.4, 4.5, 4.6, 4.7});
  sim->individualSimulator(0).setJointTorques({5.1, 5.2, 5.3, 5.4, 5.5, 5.6, 5.7});
  sim->individualSimulator(0).mutableLinkForceStates()[kJoint] =
      HxLinkForceState(true, HxGeneralForce(1, 2, 3, 4, 5, 6));
  sim->externalForce(0).mutableForces()[kJoint] = HxGeneralForce(6, 5, 4, 3, 2, 1);
  sim->manipulator(0).mutableJointDrive(kJoint).setPowerConverter(std::make_shared<HxDcElectricMotor>(0.8));
  const HxEndEffectorPlacement placement(HxVector(0.5, 0.0, 0.3), HxOrientation(0.5, 0.5, 0.5, 0.5));
  sim->setEndEffectorPlacement(0, kEndEffector, placement);
  sim->setDesiredPlacement(0, kEndEffector, placement);
  sim->setHeldPlacement(0, kEndEffector, placement);
  sim->setEndEffectorVelocity(0, kEndEffector, HxGeneralMotion(0.1, 0.2, 0.3, 0.4, 0.5, 0.6));
  sim->setEndEffectorAcceleration(0, kEndEffector, HxGeneralMotion(1, 2, 3, 4, 5, 6));
  sim->setCenterOfMass(0, HxVector(0.1, 0.2, 0.3));
  return sim;
}

// Captures one quantity per iteration; the control-output time advances each time so the
// finite-difference velocities take their time-step branch.
void captureLoop(benchmark::State& state, const std::function<HxDataCaptureType*()>& make) {
  const bool dynamics = state.range(0) != 0;
  std::unique_ptr<HxScriptedSimulation> sim = makeSimulation(dynamics);
  std::unique_ptr<HxDataCaptureType> type(make());
  const HxU32 element = type->type() == 2 ? kEndEffector : kJoint;

  // The first call may size the working state; everything after it must not allocate.
  type->captureData(*sim, 0, element);
  HxAllocationCounter counter;
  std::uint64_t calls = 0;
  for (auto _ : state) {
    sim->advanceTime(1e-3);
    benchmark::DoNotOptimize(type->captureData(*sim, 0, element));
    benchmark::DoNotOptimize(type->data()[0].value());
    ++calls;
  }
  state.counters["allocsPerCall"] =
      calls ? static_cast<double>(counter.allocations()) / static_cast<double>(calls) : 0.0;
  state.SetItemsProcessed(static_cast<std::int64_t>(calls));
}

// The bare cost: one joint position read through the same const references, into a double.
void BM_TypesCapture_Baseline(benchmark::State& state) {
  std::unique_ptr<HxScriptedSimulation> sim = makeSimulation(true);
  const HxSystemSimulation& simulation = *sim;
  HxU32 m = 0;
  HxU32 j = kJoint;
  double value = 0.0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(m);
    benchmark::DoNotOptimize(j);
    value = 0.0;
    if (simulation.dynamicsEnabled() && m < simulation.activeStates().size()) {
      const std::vector<double>& positions = simulation.activeStates()[m].positionState().jointPositions();
      if (j < positions.size()) value = positions[j];
    }
    benchmark::DoNotOptimize(value);
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}
BENCHMARK(BM_TypesCapture_Baseline);

template <class T>
void registerType(const char* name) {
  benchmark::RegisterBenchmark((std::string("BM_TypesCapture_") + name).c_str(),
                               [](benchmark::State& state) { captureLoop(state, [] { return new T(); }); })
      ->ArgName("dynamics")
      ->Arg(1)
      ->Arg(0);
}

void registerAll() {
  registerType<HxBaseAccelerationDataCaptureType>("BaseAcceleration");
  registerType<HxBasePositionDataCaptureType>("BasePosition");
  registerType<HxBaseVelocityDataCaptureType>("BaseVelocity");
  registerType<HxCenterOfMassDataCaptureType>("CenterOfMass");
  registerType<HxManipulatorPowerDataCaptureType>("ManipulatorPower");
  registerType<HxControlInputDataCaptureType>("ControlInput");
  registerType<HxControlOutputActualJointVelocityDataCaptureType>("ControlOutputActualJointVelocity");
  registerType<HxControlOutputJointVelocityDataCaptureType>("ControlOutputJointVelocity");
  registerType<HxControlOutputJointPositionDataCaptureType>("ControlOutputJointPosition");
  registerType<HxControlTorqueDataCaptureType>("ControlTorque");
  registerType<HxExternalForceDataCaptureType>("ExternalForce");
  registerType<HxJointAccelerationDataCaptureType>("JointAcceleration");
  registerType<HxJointPositionDataCaptureType>("JointPosition");
  registerType<HxJointTorqueDataCaptureType>("JointTorque");
  registerType<HxJointVelocityDataCaptureType>("JointVelocity");
  registerType<HxMotorPowerDataCaptureType>("MotorPower");
  registerType<HxStructuralForceDataCaptureType>("StructuralForce");
  registerType<HxEndEffectorAccelerationDataCaptureType>("EndEffectorAcceleration");
  registerType<HxEndEffectorPlacementDataCaptureType>("EndEffectorPlacement");
  registerType<HxEndEffectorVelocityDataCaptureType>("EndEffectorVelocity");
  registerType<HxReachTargetDataCaptureType>("ReachTarget");
}

}  // namespace

int main(int argc, char** argv) {
  registerAll();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
