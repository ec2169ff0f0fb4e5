#include "simulation/HxIndividualManipulator.h"

#include <atomic>

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

// An end-effector query of the kinematics (placement, velocity or acceleration).
template <class Result>
using EndEffectorQuery = HxBoolean (HxManipulatorKinematics::*)(HxU32, const HxManipulatorActiveState&, Result&) const;

// What `query` of `kinematics` writes for end effector `index` and `state`: its answer, or the
// identity placement or zero motion when it has none.
template <class Result>
Result endEffectorAnswer(const HxManipulatorKinematics& kinematics, EndEffectorQuery<Result> query, HxU32 index,
                         const HxManipulatorActiveState& state) {
  Result result;
  (kinematics.*query)(index, state, result);
  return result;
}

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

std::uint64_t HxIndividualManipulator::LinksStamp::next() {
  // Counted across threads: manipulators may be built on any thread.
  static std::atomic<std::uint64_t> counter{0};
  return counter.fetch_add(1, std::memory_order_relaxed) + 1;
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
  return endEffectorAnswer(*kinematics_, &HxManipulatorKinematics::endEffectorPlacement, index, state);
}

HxGeneralMotion HxIndividualManipulator::endEffectorVelocity(HxU32 index, const HxManipulatorActiveState& state) const {
  return endEffectorAnswer(*kinematics_, &HxManipulatorKinematics::endEffectorVelocity, index, state);
}

HxGeneralMotion HxIndividualManipulator::endEffectorAcceleration(HxU32 index,
                                                                 const HxManipulatorActiveState& state) const {
  return endEffectorAnswer(*kinematics_, &HxManipulatorKinematics::endEffectorAcceleration, index, state);
}

HxVector HxIndividualManipulator::centerOfMass(const HxManipulatorActiveState& state) const {
  HxVector com;
  kinematics_->centerOfMass(state, com);
  return com;
}
