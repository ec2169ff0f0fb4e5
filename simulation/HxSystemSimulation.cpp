#include "simulation/HxSystemSimulation.h"

void HxSystemSimulation::resizeManipulators(HxU32 count) {
  systemPositionStates_.resize(count);
  systemVelocityStates_.resize(count);
  activeStates_.resize(count);
  controlOutputPositionStates_.resize(count);
  controlOutputVelocityStates_.resize(count);
  individualSimulators_.resize(count);
  manipulators_.resize(count);
  controlInputs_.resize(count);
  torques_.resize(count);
  externalForces_.resize(count);
  endEffectorPlacements_.resize(count);
  desiredEndEffectorPlacements_.resize(count);
  propagationResults_.resize(count);
}
