#include "simulation/scripted/HxScriptedSimulation.h"

#include <string>

namespace {

std::vector<std::string> numberedLinks(HxU32 joints) {
  std::vector<std::string> identifiers;
  identifiers.reserve(joints);
  for (HxU32 j = 0; j < joints; ++j) identifiers.push_back("link" + std::to_string(j));
  return identifiers;
}

// Sets entry `e` of the answers `held` to `value`; false when there is no such entry.
template <class Answer>
HxBoolean setAnswer(std::vector<Answer>& held, HxU32 e, const Answer& value) {
  if (e >= held.size()) return false;
  held[e] = value;
  return true;
}

// The answer for end effector `e`: what `function` computes from `state` when it is set, else
// the held one; false with the default answer when `e` is past the held answers.
template <class Answer, class Function>
HxBoolean answer(const std::vector<Answer>& held, const Function& function, HxU32 e,
                 const HxManipulatorActiveState& state, Answer& out) {
  if (e >= held.size()) {
    out = Answer();
    return false;
  }
  out = function ? function(e, state) : held[e];
  return true;
}

// Sets entry `e` of `entry`, growing it to e + 1 entries first when it is shorter.
void setGrowing(HxManipulatorEndEffectorPlacement& entry, HxU32 e, const HxEndEffectorPlacement& placement) {
  std::vector<HxEndEffectorPlacement>& placements = entry.mutablePlacements();
  if (e >= placements.size()) placements.resize(e + 1);
  placements[e] = placement;
}

}  // namespace

HxScriptedKinematics::HxScriptedKinematics(HxU32 endEffectorCount)
    : placements_(endEffectorCount), velocities_(endEffectorCount), accelerations_(endEffectorCount) {}

HxBoolean HxScriptedKinematics::setPlacement(HxU32 e, const HxEndEffectorPlacement& placement) {
  return setAnswer(placements_, e, placement);
}

HxBoolean HxScriptedKinematics::setVelocity(HxU32 e, const HxGeneralMotion& velocity) {
  return setAnswer(velocities_, e, velocity);
}

HxBoolean HxScriptedKinematics::setAcceleration(HxU32 e, const HxGeneralMotion& acceleration) {
  return setAnswer(accelerations_, e, acceleration);
}

HxBoolean HxScriptedKinematics::endEffectorPlacement(HxU32 endEffector, const State& state,
                                                     HxEndEffectorPlacement& out) const {
  return answer(placements_, placementFunction_, endEffector, state, out);
}

HxBoolean HxScriptedKinematics::endEffectorVelocity(HxU32 endEffector, const State& state, HxGeneralMotion& out) const {
  return answer(velocities_, velocityFunction_, endEffector, state, out);
}

HxBoolean HxScriptedKinematics::endEffectorAcceleration(HxU32 endEffector, const State& state,
                                                        HxGeneralMotion& out) const {
  return answer(accelerations_, accelerationFunction_, endEffector, state, out);
}

HxBoolean HxScriptedKinematics::centerOfMass(const State& state, HxVector& out) const {
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
  setGrowing(desiredPlacementEntry(m), e, placement);
}

void HxScriptedSimulation::setHeldPlacement(HxU32 m, HxU32 e, const HxEndEffectorPlacement& placement) {
  setGrowing(endEffectorPlacementEntry(m), e, placement);
}
