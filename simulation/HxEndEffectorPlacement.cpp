#include "simulation/HxEndEffectorPlacement.h"

#include "simulation/HxIndividualManipulator.h"

HxEndEffectorPlacement HxManipulatorEndEffectorPlacement::endEffectorPlacement(
    HxU32 e, const HxPositionState& state, const HxIndividualManipulator& manipulator) const {
  HxEndEffectorPlacement placement;
  if (!manipulator.kinematics().resolvePlacement(*this, e, state, placement)) return HxEndEffectorPlacement();
  return placement;
}
