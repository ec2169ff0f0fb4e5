#include "simulation/HxIndividualManipulator.h"

#include "simulation/HxManipulatorActiveState.h"

namespace {

// The kinematics of a manipulator that has none: nothing can be computed, every query
// answers the identity placement, zero motion or zero vector and false.
class HxNoKinematics : public HxManipulatorKinematics {
 public:
  HxBoolean endEffectorPlacement(HxU32, const HxManipulatorActiveState&, HxEndEffectorPlacement& out) const override {
    out = HxEndEffectorPlacement();
    return false;
  }
  HxBoolean endEffectorVelocity(HxU32, const HxManipulatorActiveState&, HxGeneralMotion& out) const override {
    out = HxGeneralMotion();
    return false;
  }
  HxBoolean endEffectorAcceleration(HxU32, const HxManipulatorActiveState&, HxGeneralMotion& out) const override {
    out = HxGeneralMotion();
    return false;
  }
  HxBoolean centerOfMass(const HxManipulatorActiveState&, HxVector& out) const override {
    out = HxVector();
    return false;
  }
  HxBoolean resolvePlacement(const HxManipulatorEndEffectorPlacement&, HxU32, const HxPositionState&,
                             HxEndEffectorPlacement& out) const override {
    out = HxEndEffectorPlacement();
    return false;
  }
};

const std::shared_ptr<const HxManipulatorKinematics>& noKinematics() {
  static const std::shared_ptr<const HxManipulatorKinematics> instance = std::make_shared<HxNoKinematics>();
  return instance;
}

}  // namespace

HxIndividualManipulator::HxIndividualManipulator() : kinematics_(noKinematics()) {}

HxIndividualManipulator::HxIndividualManipulator(std::shared_ptr<const HxManipulatorKinematics> kinematics)
    : kinematics_(kinematics ? std::move(kinematics) : noKinematics()) {}

void HxIndividualManipulator::setKinematics(std::shared_ptr<const HxManipulatorKinematics> kinematics) {
  kinematics_ = kinematics ? std::move(kinematics) : noKinematics();
}

const HxLink* HxIndividualManipulator::link(HxU32 position) const {
  if (position >= links_.size() || !links_[position]) return nullptr;
  return &*links_[position];
}

const HxLink* HxIndividualManipulator::findLink(const std::string& identifier) const {
  for (const std::optional<HxLink>& slot : links_) {
    if (slot && slot->identifier() == identifier) return &*slot;
  }
  return nullptr;
}

HxU32 HxIndividualManipulator::addEndEffector(const HxToken& token) {
  const HxU32 index = numberOfEndEffectors();
  endEffectors_.emplace_back(index, token);
  return index;
}

HxBoolean HxIndividualManipulator::setEndEffectorToken(HxU32 index, const HxToken& token) {
  if (index >= endEffectors_.size()) return false;
  endEffectors_[index].setToken(token);
  return true;
}

HxEndEffectorPlacement HxIndividualManipulator::endEffectorPlacement(HxU32 index,
                                                                     const HxManipulatorActiveState& state) const {
  HxEndEffectorPlacement placement;
  kinematics_->endEffectorPlacement(index, state, placement);
  return placement;
}

HxGeneralMotion HxIndividualManipulator::endEffectorVelocity(HxU32 index, const HxManipulatorActiveState& state) const {
  HxGeneralMotion velocity;
  kinematics_->endEffectorVelocity(index, state, velocity);
  return velocity;
}

HxGeneralMotion HxIndividualManipulator::endEffectorAcceleration(HxU32 index,
                                                                 const HxManipulatorActiveState& state) const {
  HxGeneralMotion acceleration;
  kinematics_->endEffectorAcceleration(index, state, acceleration);
  return acceleration;
}

HxVector HxIndividualManipulator::centerOfMass(const HxManipulatorActiveState& state) const {
  HxVector com;
  kinematics_->centerOfMass(state, com);
  return com;
}
