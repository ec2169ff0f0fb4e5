// Steps per second of the default two-arm scene, in both modes, against plain mj_step on the
// same model (the baseline: the engine alone, without controller and state refresh). Then the
// kinematics queries one recorded sample makes of a manipulator (placement, velocity and
// acceleration of both end effectors, centre of mass) for the sample's state, against the
// same queries each finding another state loaded (the baseline: every query evaluates).
#include <benchmark/benchmark.h>
#include <mujoco/mujoco.h>

#include <algorithm>
#include <cstdint>
#include <string>

// The counting operators live in this unit; GCC sees their malloc/free through inlining.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#include "tests/support/HxAllocationCounter.h"
#pragma GCC diagnostic pop
#include "simulation/mujoco/HxMujocoSimulation.h"

namespace {

const std::string kScene = std::string(HX_SOURCE_DIR) + "/examples/models/two_arms_table.xml";

void runScene(benchmark::State& state, HxMujocoSimulation::Mode mode) {
  HxMujocoSimulation sim;
  if (!sim.loadFile(kScene, mode)) {
    state.SkipWithError(sim.lastError().c_str());
    return;
  }
  HxAllocationCounter counter;
  std::int64_t steps = 0;
  for (auto _ : state) {
    // Restart the path now and then so that the arms keep moving.
    if (sim.allPathsCompleted()) sim.reset();
    benchmark::DoNotOptimize(sim.step());
    ++steps;
  }
  state.SetItemsProcessed(steps);
  state.counters["allocs_per_step"] =
      benchmark::Counter(static_cast<double>(counter.allocations()) / static_cast<double>(steps > 0 ? steps : 1));
}

void BM_MujocoSimulation_Dynamic(benchmark::State& state) { runScene(state, HxMujocoSimulation::Mode::Dynamic); }
void BM_MujocoSimulation_Kinematic(benchmark::State& state) { runScene(state, HxMujocoSimulation::Mode::Kinematic); }

// Baseline: mj_step alone on the same model with constant controls.
void BM_MujocoSimulation_EngineOnly(benchmark::State& state) {
  char error[512];
  mjModel* m = mj_loadXML(kScene.c_str(), nullptr, error, sizeof error);
  if (!m) {
    state.SkipWithError(error);
    return;
  }
  mjData* d = mj_makeData(m);
  mj_resetDataKeyframe(m, d, 0);
  std::int64_t steps = 0;
  for (auto _ : state) {
    mj_step(m, d);
    benchmark::DoNotOptimize(d->qpos[0]);
    ++steps;
  }
  state.SetItemsProcessed(steps);
  mj_deleteData(d);
  mj_deleteModel(m);
}

// The seven queries of one sample for manipulator 0. Samples alternate between two states of
// the arm; with `perQuery` the state alternates from query to query instead, so that no query
// finds its state already evaluated (as every query did before evaluations were kept).
void runSampleQueries(benchmark::State& state, bool perQuery) {
  HxMujocoSimulation sim;
  if (!sim.loadFile(kScene)) {
    state.SkipWithError(sim.lastError().c_str());
    return;
  }
  for (int step = 0; step < 300; ++step) sim.step();  // moving, so every stage has work
  const HxManipulatorActiveState first = sim.activeStates()[0];
  sim.step();
  const HxManipulatorActiveState second = sim.activeStates()[0];
  const HxManipulatorActiveState* states[2] = {&first, &second};
  const HxManipulatorKinematics& kinematics = sim.manipulators()[0].kinematics();
  HxEndEffectorPlacement placement;
  HxGeneralMotion motion;
  HxVector com;
  int which = 0;
  auto next = [&]() -> const HxManipulatorActiveState& {
    if (perQuery) which ^= 1;
    return *states[which];
  };
  const HxAllocationCounter counter;
  for (auto _ : state) {
    for (HxU32 e = 0; e < 2; ++e) {
      kinematics.endEffectorPlacement(e, next(), placement);
      kinematics.endEffectorVelocity(e, next(), motion);
      kinematics.endEffectorAcceleration(e, next(), motion);
    }
    kinematics.centerOfMass(next(), com);
    benchmark::DoNotOptimize(com);
    if (!perQuery) which ^= 1;
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["allocs_per_sample"] = benchmark::Counter(
      static_cast<double>(counter.allocations()) / static_cast<double>(std::max<std::int64_t>(state.iterations(), 1)));
}

void BM_MujocoKinematics_SampleSameState(benchmark::State& state) { runSampleQueries(state, false); }
void BM_MujocoKinematics_SampleFreshEachQuery(benchmark::State& state) { runSampleQueries(state, true); }

}  // namespace

BENCHMARK(BM_MujocoSimulation_Dynamic);
BENCHMARK(BM_MujocoSimulation_Kinematic);
BENCHMARK(BM_MujocoSimulation_EngineOnly);
BENCHMARK(BM_MujocoKinematics_SampleSameState)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MujocoKinematics_SampleFreshEachQuery)->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
