#include "simulation/HxEndEffector.h"

#include "simulation/HxIndividualManipulator.h"

HxBoolean HxEndEffector::velocity(const HxIndividualManipulator& manipulator, const HxManipulatorActiveState& state,
                                  HxGeneralMotion& out) const {
  return manipulator.kinematics().endEffectorVelocity(index_, state, out);
}

HxBoolean HxEndEffector::acceleration(const HxIndividualManipulator& manipulator, const HxManipulatorActiveState& state,
                                      HxGeneralMotion& out) const {
  return manipulator.kinematics().endEffectorAcceleration(index_, state, out);
}
