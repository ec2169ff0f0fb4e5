#include "simulation/scripted/HxScriptedSimulation.h"

#include <string>

namespace {

std::vector<std::string> numberedLinks(HxU32 joints) {
  std::vector<std::string> identifiers;
  identifiers.reserve(joints);
  for (HxU32 j = 0; j < joints; ++j) identifiers.push_back("link" + std::to_string(j));
  return identifiers;
}

}  // namespace

HxScriptedKinematics::HxScriptedKinematics(HxU32 endEffectorCount)
    : placements_(endEffectorCount), velocities_(endEffectorCount), accelerations_(endEffectorCount) {}

HxBoolean HxScriptedKinematics::setPlacement(HxU32 e, const HxEndEffectorPlacement& placement) {
  if (e >= placements_.size()) return false;
  placements_[e] = placement;
  return true;
}

HxBoolean HxScriptedKinematics::setVelocity(HxU32 e, const HxGeneralMotion& velocity) {
  if (e >= velocities_.size()) return false;
  velocities_[e] = velocity;
  return true;
}

HxBoolean HxScriptedKinematics::setAcceleration(HxU32 e, const HxGeneralMotion& acceleration) {
  if (e >= accelerations_.size()) return false;
  accelerations_[e] = acceleration;
  return true;
}

HxBoolean HxScriptedKinematics::endEffectorPlacement(HxU32 endEffector, const HxManipulatorActiveState& state,
                                                     HxEndEffectorPlacement& out) const {
  if (endEffector >= placements_.size()) {
    out = HxEndEffectorPlacement();
    return false;
  }
  out = placementFunction_ ? placementFunction_(endEffector, state) : placements_[endEffector];
  return true;
}

HxBoolean HxScriptedKinematics::endEffectorVelocity(HxU32 endEffector, const HxManipulatorActiveState& state,
                                                    HxGeneralMotion& out) const {
  if (endEffector >= velocities_.size()) {
    out = HxGeneralMotion();
    return false;
  }
  out = velocityFunction_ ? velocityFunction_(endEffector, state) : velocities_[endEffector];
  return true;
}

HxBoolean HxScriptedKinematics::endEffectorAcceleration(HxU32 endEffector, const HxManipulatorActiveState& state,
                                                        HxGeneralMotion& out) const {
  if (endEffector >= accelerations_.size()) {
    out = HxGeneralMotion();
    return false;
  }
  out = accelerationFunction_ ? accelerationFunction_(endEffector, state) : accelerations_[endEffector];
  return true;
}

HxBoolean HxScriptedKinematics::centerOfMass(const HxManipulatorActiveState& state, HxVector& out) const {
  out = centerOfMassFunction_ ? centerOfMassFunction_(state) : centerOfMass_;
  return true;
}

HxBoolean HxScriptedKinematics::resolvePlacement(const HxManipulatorEndEffectorPlacement& entry, HxU32 endEffector,
                                                 const HxPositionState& /*state*/, HxEndEffectorPlacement& out) const {
  if (endEffector >= entry.size()) {
    out = HxEndEffectorPlacement();
    return false;
  }
  out = entry[endEffector];
  return true;
}

HxScriptedSimulation::HxScriptedSimulation(HxU32 manipulators, HxU32 joints, HxU32 endEffectors)
    : HxScriptedSimulation(manipulators, numberedLinks(joints), endEffectors) {}

HxScriptedSimulation::HxScriptedSimulation(HxU32 manipulators, const std::vector<std::string>& linkIdentifiers,
                                           HxU32 endEffectors) {
  const HxU32 joints = static_cast<HxU32>(linkIdentifiers.size());
  resizeManipulators(manipulators);
  setSystemStatePresent(true);
  kinematics_.reserve(manipulators);
  for (HxU32 m = 0; m < manipulators; ++m) {
    systemPositionState(m) = HxPositionState(joints);
    systemVelocityState(m) = HxVelocityState(joints);
    activeState(m) = HxManipulatorActiveState(joints);
    controlOutputPositionState(m) = HxPositionState(joints);
    controlOutputVelocityState(m) = HxVelocityState(joints);
    individualSimulator(m) = HxIndividualDynamicSimulator(joints, joints);
    controlInput(m).setValues(std::vector<double>(joints, 0.0));
    torque(m).setValues(std::vector<double>(joints, 0.0));
    externalForce(m).setForces(std::vector<HxGeneralForce>(joints));
    endEffectorPlacementEntry(m) = HxManipulatorEndEffectorPlacement(endEffectors);
    desiredPlacementEntry(m) = HxManipulatorEndEffectorPlacement(endEffectors);

    // The model: one link per joint, frame end effectors, scripted kinematics.
    kinematics_.push_back(std::make_shared<HxScriptedKinematics>(endEffectors));
    HxIndividualManipulator& model = manipulator(m);
    model.setName("manipulator" + std::to_string(m));
    model.setKinematics(kinematics_.back());
    for (HxU32 j = 0; j < joints; ++j) model.addLink(HxLink(linkIdentifiers[j], j));
    for (HxU32 e = 0; e < endEffectors; ++e) model.addEndEffector(HxControl::HxFrameEndEffectorToken);
    model.setJointCount(joints);
  }
}

void HxScriptedSimulation::setActiveState(HxU32 m, const HxManipulatorActiveState& state) {
  activeState(m) = state;
  individualSimulator(m).setActiveState(state);
}

void HxScriptedSimulation::setJointPositions(HxU32 m, const std::vector<double>& positions) {
  systemPositionState(m).setJointPositions(positions);
  controlOutputPositionState(m).setJointPositions(positions);
  activeState(m).mutablePositionState().setJointPositions(positions);
  individualSimulator(m).mutableActiveState().mutablePositionState().setJointPositions(positions);
}

void HxScriptedSimulation::setJointVelocities(HxU32 m, const std::vector<double>& velocities) {
  systemVelocityState(m).setJointVelocities(velocities);
  controlOutputVelocityState(m).setJointVelocities(velocities);
  activeState(m).mutableVelocityState().setJointVelocities(velocities);
  individualSimulator(m).mutableActiveState().mutableVelocityState().setJointVelocities(velocities);
}

HxBoolean HxScriptedSimulation::setEndEffectorPlacement(HxU32 m, HxU32 e, const HxEndEffectorPlacement& placement) {
  return kinematics(m).setPlacement(e, placement);
}

HxBoolean HxScriptedSimulation::setEndEffectorVelocity(HxU32 m, HxU32 e, const HxGeneralMotion& velocity) {
  return kinematics(m).setVelocity(e, velocity);
}

HxBoolean HxScriptedSimulation::setEndEffectorAcceleration(HxU32 m, HxU32 e, const HxGeneralMotion& acceleration) {
  return kinematics(m).setAcceleration(e, acceleration);
}

void HxScriptedSimulation::setDesiredPlacement(HxU32 m, HxU32 e, const HxEndEffectorPlacement& placement) {
  std::vector<HxEndEffectorPlacement>& placements = desiredPlacementEntry(m).mutablePlacements();
  if (e >= placements.size()) placements.resize(e + 1);
  placements[e] = placement;
}

void HxScriptedSimulation::setHeldPlacement(HxU32 m, HxU32 e, const HxEndEffectorPlacement& placement) {
  std::vector<HxEndEffectorPlacement>& placements = endEffectorPlacementEntry(m).mutablePlacements();
  if (e >= placements.size()) placements.resize(e + 1);
  placements[e] = placement;
}
