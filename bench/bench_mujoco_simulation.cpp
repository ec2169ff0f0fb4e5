// Steps per second of the default two-arm scene, in both modes, against plain mj_step on the
// same model (the baseline: the engine alone, without controller and state refresh).
#include <benchmark/benchmark.h>
#include <mujoco/mujoco.h>

#include <string>

// The counting operators live in this unit; GCC sees their malloc/free through inlining.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#include "bench/HxAllocationCounter.h"
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

}  // namespace

BENCHMARK(BM_MujocoSimulation_Dynamic);
BENCHMARK(BM_MujocoSimulation_Kinematic);
BENCHMARK(BM_MujocoSimulation_EngineOnly);
BENCHMARK_MAIN();
