#include "simulation/HxSystemSimulation.h"

#include <utility>

namespace {
const std::string kNoName;
}  // namespace

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
  jointKinds_.resize(count);
  endEffectorNames_.resize(count);
}

HxJointKind HxSystemSimulation::jointKind(HxU32 manipulator, HxU32 joint) const {
  if (manipulator >= jointKinds_.size() || joint >= jointKinds_[manipulator].size()) return HxJointKind::Unknown;
  return jointKinds_[manipulator][joint];
}

const std::string& HxSystemSimulation::endEffectorName(HxU32 manipulator, HxU32 e) const {
  if (manipulator >= endEffectorNames_.size() || e >= endEffectorNames_[manipulator].size()) return kNoName;
  return endEffectorNames_[manipulator][e];
}

void HxSystemSimulation::setJointKinds(HxU32 m, std::vector<HxJointKind> kinds) {
  if (m >= jointKinds_.size()) jointKinds_.resize(static_cast<std::size_t>(m) + 1);
  jointKinds_[m] = std::move(kinds);
}

void HxSystemSimulation::setEndEffectorNames(HxU32 m, std::vector<std::string> names) {
  if (m >= endEffectorNames_.size()) endEffectorNames_.resize(static_cast<std::size_t>(m) + 1);
  endEffectorNames_[m] = std::move(names);
}
