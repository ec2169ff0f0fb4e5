#include "simulation/mujoco/HxMujocoController.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "simulation/mujoco/HxMujocoConversions.h"

namespace {

constexpr double kIkGain = 5.0;         // 1/s: control-output speed per unit of end-effector error
constexpr double kIkDamping = 0.05;     // damping of the least-squares solution
constexpr double kMaxJointSpeed = 1.5;  // rad/s (m/s for slide joints) of the control output
constexpr double kPdBandwidth = 25.0;   // rad/s: natural frequency of the joint PD loops
constexpr double kPdDampingRatio = 1.0;

}  // namespace

void HxMujocoController::setUp(HxMujocoModelPtr model, const HxMujocoLayouts& layouts) {
  model_ = std::move(model);
  layouts_ = layouts;
  controlData_ = hxMujocoMakeData(model_.get());
  if (model_->nkey > 0) mj_resetDataKeyframe(model_.get(), controlData_.get(), 0);
  jacobian_.resize(model_.get(), layouts_);
  states_.assign(layouts_.size(), HxMujocoControlState());
  for (std::size_t k = 0; k < layouts_.size(); ++k) {
    const std::size_t n = layouts_[k]->joints.size();
    states_[k].position.assign(n, 0.0);
    states_[k].velocity.assign(n, 0.0);
    states_[k].previousVelocity.assign(n, 0.0);
    states_[k].path = layouts_[k]->pathPoints;
  }
}

void HxMujocoController::clear() {
  states_.clear();
  layouts_.clear();
  controlData_.reset();
  model_.reset();
}

bool HxMujocoController::follows(std::size_t k) const {
  return !states_[k].path.empty() && !layouts_[k]->endEffectors.empty();
}

void HxMujocoController::setPath(std::size_t k, const std::vector<HxEndEffectorPlacement>& points) {
  HxMujocoControlState& state = states_[k];
  state.path = points;
  state.index = 0;
  state.completed = false;
  state.reachedAt = -1.0;
}

void HxMujocoController::setReachTolerances(double translation, double orientation) {
  translationTolerance_ = translation;
  orientationTolerance_ = orientation;
}

void HxMujocoController::restartPaths() {
  for (HxMujocoControlState& state : states_) {
    state.index = 0;
    state.completed = false;
    state.reachedAt = -1.0;
  }
}

void HxMujocoController::restartOutputs(mjData* data, bool kinematic) {
  for (std::size_t k = 0; k < layouts_.size(); ++k) {
    const HxMujocoManipulatorLayout& layout = *layouts_[k];
    HxMujocoControlState& state = states_[k];
    for (std::size_t j = 0; j < layout.joints.size(); ++j) {
      state.position[j] = data->qpos[layout.qposAddresses[j]];
      state.velocity[j] = 0.0;
      state.previousVelocity[j] = 0.0;
      if (kinematic) data->qvel[layout.dofAddresses[j]] = 0.0;
    }
    if (kinematic && layout.freeJoint >= 0) mju_zero(data->qvel + layout.freeDofAddress, 6);
  }
}

void HxMujocoController::advancePaths(double time) {
  for (HxMujocoControlState& state : states_) {
    if (state.reachedAt < 0.0 || state.index + 1 >= state.path.size()) continue;
    if (time - state.reachedAt + 1e-12 < dwellTime_) continue;
    ++state.index;
    state.reachedAt = -1.0;
  }
}

void HxMujocoController::updateOutputs(const mjData* data, double dt) {
  // The control outputs of the manipulators that follow a path, on the base where it
  // actually is. Trees are independent, so one evaluation serves every manipulator.
  mjData* s = controlData_.get();
  bool anyFollows = false;
  for (std::size_t k = 0; k < layouts_.size(); ++k) {
    const HxMujocoManipulatorLayout& layout = *layouts_[k];
    HxMujocoControlState& state = states_[k];
    std::copy(state.velocity.begin(), state.velocity.end(), state.previousVelocity.begin());
    if (!follows(k)) {
      std::fill(state.velocity.begin(), state.velocity.end(), 0.0);
      continue;
    }
    for (std::size_t j = 0; j < layout.joints.size(); ++j) s->qpos[layout.qposAddresses[j]] = state.position[j];
    if (layout.freeJoint >= 0) mju_copy(s->qpos + layout.freeQposAddress, data->qpos + layout.freeQposAddress, 7);
    anyFollows = true;
  }
  if (!anyFollows) return;
  mj_kinematics(model_.get(), s);
  mj_comPos(model_.get(), s);
  for (std::size_t k = 0; k < layouts_.size(); ++k) {
    if (follows(k)) solveOutput(k, dt);
  }
}

void HxMujocoController::solveOutput(std::size_t k, double dt) {
  const mjModel* m = model_.get();
  const HxMujocoManipulatorLayout& layout = *layouts_[k];
  HxMujocoControlState& state = states_[k];
  const int n = static_cast<int>(layout.joints.size());

  // End-effector error (translation, then rotation for a frame end effector), world frame.
  const HxMujocoEndEffectorLayout& e = layout.endEffectors[state.controlled];
  const HxEndEffectorPlacement current = HxMujocoConvert::endEffectorPlacement(controlData_.get(), e);
  const HxEndEffectorPlacement& target = state.path[state.index];
  double residual[6];
  for (HxU32 i = 0; i < 3; ++i) residual[i] = target.translation()[i] - current.translation()[i];
  const int rows = jacobian_.load(m, controlData_.get(), layout, e);
  if (rows == 6) HxMujocoConvert::rotationError(residual + 3, target.orientation(), current.orientation());

  // dq = J' (J J' + lambda^2 I)^-1 error.
  double a[36], y[6];
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < rows; ++c) {
      double sum = r == c ? kIkDamping * kIkDamping : 0.0;
      for (int j = 0; j < n; ++j) sum += jacobian_(r, j) * jacobian_(c, j);
      a[r * rows + c] = sum;
    }
  }
  mju_cholFactor(a, rows, 0.0);  // positive definite through the damping
  mju_cholSolve(y, a, residual, rows);
  double fastest = 0.0;
  for (int j = 0; j < n; ++j) {
    double v = 0.0;
    for (int r = 0; r < rows; ++r) v += jacobian_(r, j) * y[r];
    state.velocity[j] = kIkGain * v;
    fastest = std::max(fastest, std::fabs(state.velocity[j]));
  }
  const double scale = fastest > kMaxJointSpeed ? kMaxJointSpeed / fastest : 1.0;

  // Integrate within the joint limits; the velocity is what the position actually did.
  for (int j = 0; j < n; ++j) {
    const int joint = layout.joints[j];
    double next = state.position[j] + scale * state.velocity[j] * dt;
    if (m->jnt_limited[joint]) next = std::clamp(next, m->jnt_range[2 * joint], m->jnt_range[2 * joint + 1]);
    state.velocity[j] = (next - state.position[j]) / dt;
    state.position[j] = next;
  }
}

void HxMujocoController::applyJointControl(mjData* data) const {
  // tau = M_jj w^2 (qc - q) + 2 zeta w M_jj (qc' - q') + bias, through the joint's actuator.
  // Only actuators with fixed gain and no bias (MJCF <motor>) are driven.
  const mjModel* m = model_.get();
  for (std::size_t k = 0; k < layouts_.size(); ++k) {
    const HxMujocoManipulatorLayout& layout = *layouts_[k];
    const HxMujocoControlState& state = states_[k];
    for (std::size_t j = 0; j < layout.joints.size(); ++j) {
      const int u = layout.actuators[j];
      if (u < 0 || m->actuator_gaintype[u] != mjGAIN_FIXED || m->actuator_biastype[u] != mjBIAS_NONE) continue;
      const int dof = layout.dofAddresses[j];
      const double inertia = data->qM[m->dof_Madr[dof]];
      const double kp = inertia * kPdBandwidth * kPdBandwidth;
      const double kd = 2.0 * kPdDampingRatio * kPdBandwidth * inertia;
      const double torque = kp * (state.position[j] - data->qpos[layout.qposAddresses[j]]) +
                            kd * (state.velocity[j] - data->qvel[dof]) + data->qfrc_bias[dof];
      const double perControl = m->actuator_gear[6 * u] * m->actuator_gainprm[mjNGAIN * u];
      if (perControl == 0.0) continue;
      double ctrl = torque / perControl;
      if (m->actuator_ctrllimited[u])
        ctrl = std::clamp(ctrl, m->actuator_ctrlrange[2 * u], m->actuator_ctrlrange[2 * u + 1]);
      data->ctrl[u] = ctrl;
    }
  }
}

void HxMujocoController::updateProgress(const mjData* data) {
  for (std::size_t k = 0; k < layouts_.size(); ++k) {
    HxMujocoControlState& state = states_[k];
    if (!follows(k) || state.reachedAt >= 0.0) continue;
    const HxMujocoEndEffectorLayout& e = layouts_[k]->endEffectors[state.controlled];
    const HxEndEffectorPlacement now = HxMujocoConvert::endEffectorPlacement(data, e);
    const HxEndEffectorPlacement& target = state.path[state.index];
    const double distance = now.translation().distanceTo(target.translation());
    double angle = 0.0;
    if (!e.point) {
      double rotation[3];
      HxMujocoConvert::rotationError(rotation, target.orientation(), now.orientation());
      angle = mju_norm3(rotation);
    }
    if (distance <= translationTolerance_ && angle <= orientationTolerance_) {
      state.reachedAt = data->time;
      if (state.index + 1 == state.path.size()) state.completed = true;
    }
  }
}
