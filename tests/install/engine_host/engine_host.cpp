// Loads a MuJoCo model through the installed engine, steps it for 0.1 s of simulated time and
// captures the joint positions of every manipulator once; exit status 0 when all of it works.
#include <cstdio>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/mujoco/HxMujocoSimulation.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: engine_host MODEL\n", stderr);
    return 2;
  }
  HxMujocoSimulation simulation;
  if (!simulation.loadFile(argv[1])) {
    std::fprintf(stderr, "engine_host: %s\n", simulation.lastError().c_str());
    return 1;
  }
  while (simulation.time() < 0.1) {
    if (!simulation.step()) return 1;
  }
  HxSystemDataCapture capture;
  for (HxU32 m = 0; m < simulation.numberOfManipulators(); ++m) {
    if (!capture.addLinkDataCaptureType(m, HxSimAnalysis::HxJointPositionDataCaptureTypeToken,
                                        simulation.manipulators()[m])) {
      return 1;
    }
  }
  if (simulation.numberOfManipulators() == 0 || !capture.captureData(simulation)) return 1;
  std::printf("%u manipulators at t = %g s\n", simulation.numberOfManipulators(), simulation.time());
  return 0;
}
