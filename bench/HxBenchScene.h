// The system shared by the storage and writer benchmarks: two scripted 7-joint manipulators
// with values of every magnitude, captured with base position; joint position, velocity,
// acceleration and torque and the external force on every link; placement, velocity and
// acceleration of one end effector (194 columns, 196 values with time and path-point index).
#ifndef HX_BENCH_SCENE_H
#define HX_BENCH_SCENE_H

#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/scripted/HxScriptedSimulation.h"

/// The scripted simulation and a capture configuration over it, captured once.
struct HxBenchScene {
  static constexpr unsigned int kManipulators = 2;
  static constexpr unsigned int kJoints = 7;

  HxScriptedSimulation simulation{kManipulators, kJoints, 1};
  HxSystemDataCapture capture;

  HxBenchScene() {
    using namespace HxSimAnalysis;
    simulation.setDynamicsEnabled(true);
    double v = 0.123456789;
    auto next = [&v]() {
      v = v * 7.31 + 0.0173;
      if (v > 1000.0) v /= 997.0;
      return v;
    };
    for (unsigned int m = 0; m < kManipulators; ++m) {
      std::vector<double> positions, velocities;
      std::vector<HxGeneralForce> forces;
      for (unsigned int j = 0; j < kJoints; ++j) {
        positions.push_back(next());
        velocities.push_back(-next());
        forces.emplace_back(next(), next(), next(), next(), next(), next());
      }
      simulation.setJointPositions(m, positions);
      simulation.setJointVelocities(m, velocities);
      simulation.individualSimulator(m).setJointAccelerations(velocities);
      simulation.individualSimulator(m).setJointTorques(positions);
      simulation.externalForce(m).setForces(forces);
      simulation.activeState(m).mutablePositionState().setCoordSystemXform(
          HxCoordSystemXform(HxVector(next(), next(), next()), HxOrientation(0.5, -0.5, 0.5, 0.5)));
      simulation.setEndEffectorPlacement(
          m, 0, HxEndEffectorPlacement(HxVector(next(), next(), next()), HxOrientation(0.5, 0.5, -0.5, 0.5)));
      simulation.setEndEffectorVelocity(m, 0, HxGeneralMotion(next(), next(), next(), next(), next(), next()));
      simulation.setEndEffectorAcceleration(m, 0, HxGeneralMotion(next(), next(), next(), next(), next(), next()));

      const HxIndividualManipulator& arm = simulation.manipulators()[m];
      capture.addManipulatorDataCaptureType(m, HxBasePositionDataCaptureTypeToken);
      for (const HxToken* token : {&HxJointPositionDataCaptureTypeToken, &HxJointVelocityDataCaptureTypeToken,
                                   &HxJointAccelerationDataCaptureTypeToken, &HxJointTorqueDataCaptureTypeToken,
                                   &HxExternalForceDataCaptureTypeToken}) {
        capture.addLinkDataCaptureType(m, *token, arm);
      }
      for (const HxToken* token :
           {&HxEndEffectorPlacementDataCaptureTypeToken, &HxEndEffectorVelocityDataCaptureTypeToken,
            &HxEndEffectorAccelerationDataCaptureTypeToken}) {
        capture.addEndEffectorDataCaptureType(m, 0u, *token);
      }
    }
    capture.captureData(simulation);
  }
};

#endif  // HX_BENCH_SCENE_H
