#include "simulation/HxManipulatorKinematics.h"

#include "simulation/HxEndEffectorPlacement.h"
#include "simulation/HxPositionState.h"

HxBoolean HxManipulatorKinematics::resolvePlacement(const HxManipulatorEndEffectorPlacement& entry, HxU32 endEffector,
                                                    const HxPositionState& state, HxEndEffectorPlacement& out) const {
  if (endEffector >= entry.size()) {
    out = HxEndEffectorPlacement();
    return false;
  }
  // Entries are relative to the manipulator's base.
  out = state.coordSystemXform() * entry[endEffector];
  return true;
}
