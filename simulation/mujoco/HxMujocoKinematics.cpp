#include "simulation/mujoco/HxMujocoKinematics.h"

#include <cstdint>
#include <cstring>
#include <utility>

#include "simulation/HxEndEffectorPlacement.h"
#include "simulation/HxManipulatorActiveState.h"
#include "simulation/mujoco/HxMujocoConversions.h"

namespace {

// Whether the manipulator's answers depend on its joints alone, so that any data holding them
// answers as the scratch does: a fixed base directly under the world, and a tree whose every
// joint is the manipulator's, with no mocap body and the end effectors on it.
bool movedByItsJointsAlone(const mjModel* m, const HxMujocoManipulatorLayout& layout) {
  const int root = layout.rootBody;
  if (layout.freeJoint >= 0 || root <= 0 || root >= m->nbody || m->body_parentid[root] != 0) return false;
  std::vector<bool> own(static_cast<std::size_t>(m->njnt), false);
  for (const int joint : layout.joints) {
    if (joint < 0 || joint >= m->njnt) return false;
    own[static_cast<std::size_t>(joint)] = true;
  }
  for (int b = 0; b < m->nbody; ++b) {
    if (m->body_rootid[b] != root) continue;
    if (m->body_mocapid[b] >= 0) return false;
    for (int j = m->body_jntadr[b]; j >= 0 && j < m->body_jntadr[b] + m->body_jntnum[b]; ++j) {
      if (!own[static_cast<std::size_t>(j)]) return false;
    }
  }
  for (const HxMujocoEndEffectorLayout& e : layout.endEffectors) {
    const bool site = e.objectType == mjOBJ_SITE;
    const int body = !site ? e.objectId : e.objectId >= 0 && e.objectId < m->nsite ? m->site_bodyid[e.objectId] : -1;
    if (body < 0 || body >= m->nbody || m->body_rootid[body] != root) return false;
  }
  return true;
}

// Whether two doubles are the same bits (0.0 and -0.0 differ, a NaN equals itself).
bool sameBits(double a, double b) {
  std::uint64_t x = 0, y = 0;
  std::memcpy(&x, &a, sizeof x);
  std::memcpy(&y, &b, sizeof y);
  return x == y;
}

// Whether `values` holds, bit for bit, the `data` entries at `addresses`.
bool sameAs(const std::vector<double>& values, const mjtNum* data, const std::vector<int>& addresses) {
  if (values.size() != addresses.size()) return false;
  for (std::size_t j = 0; j < values.size(); ++j) {
    if (!sameBits(values[j], data[addresses[j]])) return false;
  }
  return true;
}

// Stores `value` in `slot`; true when that changed the slot. Bit-for-bit: an evaluation stands
// only for exactly the inputs it was made from (0.0 and -0.0 differ, a NaN equals itself).
bool store(double& slot, double value) {
  std::uint64_t held = 0, given = 0;
  std::memcpy(&held, &slot, sizeof held);
  std::memcpy(&given, &value, sizeof given);
  if (held == given) return false;
  slot = value;
  return true;
}

// The free joint holds the linear part of a base motion in the world frame and the angular
// part in the body frame of orientation `quat`.
void loadFreeMotion(double* out, const double motion[6], const double quat[4]) {
  double inverse[4];
  mju_negQuat(inverse, quat);
  for (int i = 0; i < 3; ++i) out[i] = motion[i];
  mju_rotVecQuat(out + 3, motion + 3, inverse);
}

}  // namespace

HxMujocoKinematics::HxMujocoKinematics(HxMujocoModelPtr model, std::shared_ptr<const HxMujocoManipulatorLayout> layout,
                                       std::shared_ptr<const HxMujocoLiveData> live)
    : model_(std::move(model)),
      layout_(std::move(layout)),
      scratch_(hxMujocoMakeData(model_.get())),
      live_(std::move(live)),
      liveEligible_(live_ != nullptr && movedByItsJointsAlone(model_.get(), *layout_)) {
  mj_resetData(model_.get(), scratch_.get());
}

const mjData* HxMujocoKinematics::liveFor(const State& state, Stage stage) const {
  if (!liveEligible_ || live_->data == nullptr || live_->stage < stage) return nullptr;
  const mjData* d = live_->data;
  const HxMujocoManipulatorLayout& layout = *layout_;
  if (!sameAs(state.positionState().jointPositions(), d->qpos, layout.qposAddresses)) return nullptr;
  if (stage >= Stage::Velocity && !sameAs(state.velocityState().jointVelocities(), d->qvel, layout.dofAddresses)) {
    return nullptr;
  }
  if (stage >= Stage::Acceleration &&
      !sameAs(state.accelerationState().jointAccelerations(), d->qacc, layout.dofAddresses)) {
    return nullptr;
  }
  return d;
}

const mjData* HxMujocoKinematics::evaluated(const State& state, Stage stage) const {
  if (const mjData* d = liveFor(state, stage)) return d;
  return evaluate(state, stage) ? scratch_.get() : nullptr;
}

bool HxMujocoKinematics::evaluate(const State& state, Stage stage) const {
  const mjModel* m = model_.get();
  mjData* d = scratch_.get();
  const HxMujocoManipulatorLayout& layout = *layout_;
  const std::size_t n = layout.joints.size();
  const bool freeBase = layout.freeJoint >= 0;

  // Positions: joints, and the base when it is free.
  const auto& position = state.positionState();
  if (position.jointPositions().size() != n) return false;
  bool changed = evaluated_ == Stage::None;
  for (std::size_t j = 0; j < n; ++j) changed |= store(d->qpos[layout.qposAddresses[j]], position.jointPositions()[j]);
  if (freeBase) {
    const HxCoordSystemXform& base = position.coordSystemXform();
    for (int i = 0; i < 3; ++i) changed |= store(basePlacement_[i], base.translation()[i]);
    for (int i = 0; i < 4; ++i) changed |= store(basePlacement_[3 + i], base.orientation()[i]);
  }
  if (changed) {
    if (freeBase) {
      double* q = d->qpos + layout.freeQposAddress;
      mju_copy3(q, basePlacement_);
      mju_copy4(q + 3, basePlacement_ + 3);
      mju_normalize4(q + 3);
    }
    mj_kinematics(m, d);
    mj_comPos(m, d);
    evaluated_ = Stage::Position;
    ++scratchEvaluations_;
  }
  if (stage == Stage::Position) return true;

  // Velocities, then accelerations.
  const HxVelocityState& velocity = state.velocityState();
  if (!evaluateMotion(Stage::Velocity, velocity.jointVelocities(), velocity.baseVelocity(), baseVelocity_)) {
    return false;
  }
  if (stage == Stage::Velocity) return true;
  const HxAccelerationState& acceleration = state.accelerationState();
  return evaluateMotion(Stage::Acceleration, acceleration.jointAccelerations(), acceleration.baseAcceleration(),
                        baseAcceleration_);
}

bool HxMujocoKinematics::evaluateMotion(Stage stage, const std::vector<double>& joints, const HxGeneralMotion& base,
                                        double held[6]) const {
  mjData* d = scratch_.get();
  const HxMujocoManipulatorLayout& layout = *layout_;
  const std::size_t n = layout.joints.size();
  const bool freeBase = layout.freeJoint >= 0;
  if (joints.size() != n) return false;

  // Joints, and the base when it is free, as the caller gave it (world frame).
  double* const q = stage == Stage::Velocity ? d->qvel : d->qacc;
  bool changed = evaluated_ < stage;
  for (std::size_t j = 0; j < n; ++j) changed |= store(q[layout.dofAddresses[j]], joints[j]);
  if (freeBase) {
    for (int i = 0; i < 6; ++i) changed |= store(held[i], base[i]);
  }
  if (!changed) return true;
  if (freeBase) {
    const double* baseQuat = d->qpos + layout.freeQposAddress + 3;  // normalised
    loadFreeMotion(q + layout.freeDofAddress, held, baseQuat);
  }
  if (stage == Stage::Velocity) {
    mj_comVel(model_.get(), d);
  } else {
    mj_rnePostConstraint(model_.get(), d);
  }
  evaluated_ = stage;
  ++scratchEvaluations_;
  return true;
}

HxBoolean HxMujocoKinematics::endEffectorPlacement(HxU32 endEffector, const State& state,
                                                   HxEndEffectorPlacement& out) const {
  out = HxEndEffectorPlacement();
  const mjData* d = endEffector < layout_->endEffectors.size() ? evaluated(state, Stage::Position) : nullptr;
  if (d == nullptr) return false;
  out = HxMujocoConvert::endEffectorPlacement(d, layout_->endEffectors[endEffector]);
  return true;
}

HxBoolean HxMujocoKinematics::endEffectorVelocity(HxU32 endEffector, const State& state, HxGeneralMotion& out) const {
  return endEffectorMotion(endEffector, state, Stage::Velocity, out);
}

HxBoolean HxMujocoKinematics::endEffectorAcceleration(HxU32 endEffector, const State& state,
                                                      HxGeneralMotion& out) const {
  return endEffectorMotion(endEffector, state, Stage::Acceleration, out);
}

bool HxMujocoKinematics::endEffectorMotion(HxU32 endEffector, const State& state, Stage stage,
                                           HxGeneralMotion& out) const {
  out = HxGeneralMotion();
  const mjData* d = endEffector < layout_->endEffectors.size() ? evaluated(state, stage) : nullptr;
  if (d == nullptr) return false;
  const HxMujocoEndEffectorLayout& e = layout_->endEffectors[endEffector];
  const auto motion = stage == Stage::Velocity ? HxMujocoConvert::objectVelocity : HxMujocoConvert::objectAcceleration;
  out = motion(model_.get(), d, e.objectType, e.objectId);
  return true;
}

HxBoolean HxMujocoKinematics::centerOfMass(const State& state, HxVector& out) const {
  out = HxVector();
  const mjData* d = evaluated(state, Stage::Position);
  if (d == nullptr) return false;
  out = HxMujocoConvert::vector(d->subtree_com + 3 * layout_->rootBody);
  return true;
}
