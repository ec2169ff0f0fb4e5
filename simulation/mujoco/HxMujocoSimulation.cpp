#include "simulation/mujoco/HxMujocoSimulation.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <utility>

#include <mujoco/mujoco.h>

#include "framework/HxPrint.h"
#include "simulation/HxBasePowerConverter.h"
#include "simulation/mujoco/HxMujocoKinematics.h"
#include "simulation/mujoco/HxMujocoLayout.h"

namespace {

// Controller constants (README: "Controller").
constexpr double kIkGain = 5.0;              // 1/s: control-output speed per unit of end-effector error
constexpr double kIkDamping = 0.05;          // damping of the least-squares solution
constexpr double kMaxJointSpeed = 1.5;       // rad/s (m/s for slide joints) of the control output
constexpr double kPdBandwidth = 25.0;        // rad/s: natural frequency of the joint PD loops
constexpr double kPdDampingRatio = 1.0;
constexpr double kJointLimitMargin = 1e-3;   // rad (m): distance to a limit that counts as at the limit

// Rotation vector (world frame) that takes orientation `from` to orientation `to`.
void rotationError(double out[3], const double to[4], const double from[4]) {
  double local[3];
  mju_subQuat(local, to, from);  // in the frame of `from`
  mju_rotVecQuat(out, local, from);
}

// Placement `world` expressed relative to the frame (basePos, baseQuat).
HxEndEffectorPlacement relativeTo(const double basePos[3], const double baseQuat[4], const HxEndEffectorPlacement& world) {
  double invPos[3], invQuat[4], pos[3], quat[4];
  const double wp[3] = {world.translation()[0], world.translation()[1], world.translation()[2]};
  const double wq[4] = {world.orientation()[0], world.orientation()[1], world.orientation()[2], world.orientation()[3]};
  mju_negPose(invPos, invQuat, basePos, baseQuat);
  mju_mulPose(pos, quat, invPos, invQuat, wp, wq);
  return HxEndEffectorPlacement(HxVector(pos[0], pos[1], pos[2]), HxOrientation(quat[0], quat[1], quat[2], quat[3]));
}

HxGeneralForce wrenchAtPoint(const mjtNum* comBased, const mjtNum* center, const mjtNum* point) {
  // MuJoCo's com-based wrenches are (torque, force) about the tree's centre of mass.
  const double force[3] = {comBased[3], comBased[4], comBased[5]};
  double arm[3], shift[3];
  mju_sub3(arm, center, point);
  mju_cross(shift, arm, force);
  return HxGeneralForce(force[0], force[1], force[2], comBased[0] + shift[0], comBased[1] + shift[1],
                        comBased[2] + shift[2]);
}

const std::string kEmptyName;
const std::vector<HxEndEffectorPlacement> kNoPoints;

}  // namespace

/// Controller state of one manipulator.
struct HxMujocoControl {
  std::vector<double> position;          // control output positions
  std::vector<double> velocity;          // control output velocities
  std::vector<double> previousVelocity;  // for kinematic-mode accelerations
  std::vector<HxEndEffectorPlacement> path;
  HxU32 index = 0;
  HxU32 controlled = 0;
  bool completed = false;
  double reachedAt = -1.0;
};

struct HxMujocoSimulation::Impl {
  HxMujocoModelPtr model;
  mjData* data = nullptr;
  mjData* controlData = nullptr;  // scratch for the inverse kinematics at the control output
  std::vector<std::shared_ptr<const HxMujocoManipulatorLayout>> layouts;
  std::vector<HxMujocoControl> controls;
  Mode mode = Mode::Dynamic;
  std::string error;
  double translationTolerance = 1e-3;
  double orientationTolerance = 1e-3;
  double dwellTime = 0.0;
  double singularityThreshold = 1e-3;
  int warningCounts[mjNWARNING] = {};

  // Work buffers sized at load.
  std::vector<double> jacp, jacr, jacobian, gram;

  ~Impl() { clear(); }

  void clear() {
    if (data) mj_deleteData(data);
    if (controlData) mj_deleteData(controlData);
    data = controlData = nullptr;
    layouts.clear();
    controls.clear();
    model.reset();
  }

  const mjModel* m() const { return model.get(); }

  // Restarts the control output from the current state. In kinematic mode the state is the
  // control output, so the manipulators (a free base too) hold still from here.
  void syncControlOutput() {
    const bool kinematic = mode == Mode::Kinematic;
    for (std::size_t k = 0; k < layouts.size(); ++k) {
      const auto& layout = *layouts[k];
      auto& control = controls[k];
      for (std::size_t j = 0; j < layout.joints.size(); ++j) {
        control.position[j] = data->qpos[layout.qposAddresses[j]];
        control.velocity[j] = 0.0;
        control.previousVelocity[j] = 0.0;
        if (kinematic) data->qvel[layout.dofAddresses[j]] = 0.0;
      }
      if (kinematic && layout.freeJoint >= 0) mju_zero(data->qvel + layout.freeDofAddress, 6);
    }
  }

  void restartPaths() {
    for (auto& control : controls) {
      control.index = 0;
      control.completed = false;
      control.reachedAt = -1.0;
    }
  }

  // Jacobian rows (3 or 6) of end effector `e` restricted to the manipulator's joints, in `d`.
  int endEffectorJacobian(const mjData* d, const HxMujocoManipulatorLayout& layout,
                          const HxMujocoEndEffectorLayout& e) {
    const int nv = m()->nv;
    if (e.objectType == mjOBJ_SITE) {
      mj_jacSite(m(), d, jacp.data(), jacr.data(), e.objectId);
    } else {
      mj_jacBody(m(), d, jacp.data(), jacr.data(), e.objectId);
    }
    const int rows = e.point ? 3 : 6;
    const int n = static_cast<int>(layout.joints.size());
    for (int r = 0; r < 3; ++r) {
      for (int j = 0; j < n; ++j) {
        jacobian[r * n + j] = jacp[r * nv + layout.dofAddresses[j]];
        if (rows == 6) jacobian[(r + 3) * n + j] = jacr[r * nv + layout.dofAddresses[j]];
      }
    }
    return rows;
  }

  // True when the smallest singular value of the Jacobian held in `jacobian` (rows x n) is
  // below `threshold`. With G the smaller Gram matrix (J J' or J'J, k = min(rows, n)), that
  // is "the smallest eigenvalue of G is below threshold^2", decided without computing it: a
  // Cholesky factorisation of G - threshold^2 I meets a non-positive pivot exactly when the
  // matrix is not positive definite.
  bool singularBelow(int rows, int n, double threshold) {
    if (threshold <= 0.0) return false;  // singular values are never negative
    const bool wide = rows <= n;
    const int k = wide ? rows : n;
    double* g = gram.data();
    for (int a = 0; a < k; ++a) {
      for (int b = 0; b <= a; ++b) {
        double sum = a == b ? -threshold * threshold : 0.0;
        if (wide) {
          for (int j = 0; j < n; ++j) sum += jacobian[a * n + j] * jacobian[b * n + j];
        } else {
          for (int r = 0; r < rows; ++r) sum += jacobian[r * n + a] * jacobian[r * n + b];
        }
        g[a * k + b] = sum;
      }
    }
    // Lower-triangular factor in place, row by row.
    for (int a = 0; a < k; ++a) {
      for (int b = 0; b <= a; ++b) {
        double sum = g[a * k + b];
        for (int c = 0; c < b; ++c) sum -= g[a * k + c] * g[b * k + c];
        if (a == b) {
          if (!(sum > 0.0)) return true;
          g[a * k + a] = std::sqrt(sum);
        } else {
          g[a * k + b] = sum / g[b * k + b];
        }
      }
    }
    return false;
  }

  // Moves to the next path point once the current one has been reached and held.
  void advancePath(HxMujocoControl& control) {
    if (control.reachedAt < 0.0 || control.index + 1 >= control.path.size()) return;
    if (data->time - control.reachedAt + 1e-12 < dwellTime) return;
    ++control.index;
    control.reachedAt = -1.0;
  }

  // True when manipulator k has a path to follow with an end effector.
  bool follows(std::size_t k) const { return !controls[k].path.empty() && !layouts[k]->endEffectors.empty(); }

  // One control-output update of every manipulator over `dt`: damped least-squares inverse
  // kinematics toward the current path point, evaluated at the control output. Trees are
  // independent, so one evaluation of the control data serves every manipulator.
  void updateControlOutputs(double dt) {
    // Paths move on; the control outputs (on the base where it actually is) are loaded.
    mjData* s = controlData;
    bool anyFollows = false;
    for (std::size_t k = 0; k < layouts.size(); ++k) {
      const auto& layout = *layouts[k];
      auto& control = controls[k];
      std::copy(control.velocity.begin(), control.velocity.end(), control.previousVelocity.begin());
      advancePath(control);
      if (!follows(k)) {
        std::fill(control.velocity.begin(), control.velocity.end(), 0.0);
        continue;
      }
      for (std::size_t j = 0; j < layout.joints.size(); ++j) s->qpos[layout.qposAddresses[j]] = control.position[j];
      if (layout.freeJoint >= 0) mju_copy(s->qpos + layout.freeQposAddress, data->qpos + layout.freeQposAddress, 7);
      anyFollows = true;
    }
    if (!anyFollows) return;
    mj_kinematics(m(), s);
    mj_comPos(m(), s);
    for (std::size_t k = 0; k < layouts.size(); ++k) {
      if (follows(k)) solveControlOutput(k, dt);
    }
  }

  // The inverse-kinematics update of manipulator k over `dt`, from the evaluated control data.
  void solveControlOutput(std::size_t k, double dt) {
    const auto& layout = *layouts[k];
    auto& control = controls[k];
    const int n = static_cast<int>(layout.joints.size());
    const mjData* s = controlData;

    // End-effector error (translation, then rotation for a frame end effector), world frame.
    const HxMujocoEndEffectorLayout& e = layout.endEffectors[control.controlled];
    const HxEndEffectorPlacement current = HxMujocoKinematics::placementIn(m(), s, e);
    const HxEndEffectorPlacement& target = control.path[control.index];
    double residual[6];
    for (int i = 0; i < 3; ++i) residual[i] = target.translation()[i] - current.translation()[i];
    const int rows = endEffectorJacobian(s, layout, e);
    if (rows == 6) {
      const double to[4] = {target.orientation()[0], target.orientation()[1], target.orientation()[2], target.orientation()[3]};
      const double from[4] = {current.orientation()[0], current.orientation()[1], current.orientation()[2], current.orientation()[3]};
      rotationError(residual + 3, to, from);
    }

    // dq = J' (J J' + lambda^2 I)^-1 error.
    double a[36], y[6];
    for (int r = 0; r < rows; ++r) {
      for (int c = 0; c < rows; ++c) {
        double sum = r == c ? kIkDamping * kIkDamping : 0.0;
        for (int j = 0; j < n; ++j) sum += jacobian[r * n + j] * jacobian[c * n + j];
        a[r * rows + c] = sum;
      }
    }
    mju_cholFactor(a, rows, 0.0);
    mju_cholSolve(y, a, residual, rows);
    double fastest = 0.0;
    for (int j = 0; j < n; ++j) {
      double v = 0.0;
      for (int r = 0; r < rows; ++r) v += jacobian[r * n + j] * y[r];
      control.velocity[j] = kIkGain * v;
      fastest = std::max(fastest, std::fabs(control.velocity[j]));
    }
    const double scale = fastest > kMaxJointSpeed ? kMaxJointSpeed / fastest : 1.0;

    // Integrate within the joint limits; the velocity is what the position actually did.
    for (int j = 0; j < n; ++j) {
      const int joint = layout.joints[j];
      double next = control.position[j] + scale * control.velocity[j] * dt;
      if (m()->jnt_limited[joint]) next = std::clamp(next, m()->jnt_range[2 * joint], m()->jnt_range[2 * joint + 1]);
      control.velocity[j] = (next - control.position[j]) / dt;
      control.position[j] = next;
    }
  }

  // Joint PD control with gravity and Coriolis compensation (the engine's bias force), sent
  // through the joints' actuators. Needs mj_step1's position and velocity stages.
  void applyJointControl() {
    const mjModel* mm = m();
    for (std::size_t k = 0; k < layouts.size(); ++k) {
      const auto& layout = *layouts[k];
      const auto& control = controls[k];
      for (std::size_t j = 0; j < layout.joints.size(); ++j) {
        const int u = layout.actuators[j];
        if (u < 0 || mm->actuator_gaintype[u] != mjGAIN_FIXED || mm->actuator_biastype[u] != mjBIAS_NONE) continue;
        const int dof = layout.dofAddresses[j];
        const double inertia = data->qM[mm->dof_Madr[dof]];
        const double kp = inertia * kPdBandwidth * kPdBandwidth;
        const double kd = 2.0 * kPdDampingRatio * kPdBandwidth * inertia;
        const double torque = kp * (control.position[j] - data->qpos[layout.qposAddresses[j]]) +
                              kd * (control.velocity[j] - data->qvel[dof]) + data->qfrc_bias[dof];
        const double perControl = mm->actuator_gear[6 * u] * mm->actuator_gainprm[mjNGAIN * u];
        if (perControl == 0.0) continue;
        double ctrl = torque / perControl;
        if (mm->actuator_ctrllimited[u]) {
          ctrl = std::clamp(ctrl, mm->actuator_ctrlrange[2 * u], mm->actuator_ctrlrange[2 * u + 1]);
        }
        data->ctrl[u] = ctrl;
      }
    }
  }

  // Evaluates the whole state at the current time: dynamic mode runs the forward dynamics
  // with the controller in the loop, kinematic mode the kinematics and collision detection.
  void evaluate() {
    const mjModel* mm = m();
    if (mode == Mode::Dynamic) {
      mj_step1(mm, data);
      applyJointControl();
      mj_fwdActuation(mm, data);
      mj_fwdAcceleration(mm, data);
      mj_fwdConstraint(mm, data);
      mj_sensorAcc(mm, data);
      mj_rnePostConstraint(mm, data);
    } else {
      mj_kinematics(mm, data);
      mj_comPos(mm, data);
      mj_comVel(mm, data);
      mj_collision(mm, data);
      // The energy, when the model asks for it, as mj_step1 gives it in dynamic mode.
      if (mm->opt.enableflags & mjENBL_ENERGY) {
        mj_tendon(mm, data);
        mj_crb(mm, data);
        mj_energyPos(mm, data);
        mj_energyVel(mm, data);
      }
    }
  }

  // Integrates the evaluated dynamic state over one timestep.
  void integrate() {
    const mjModel* mm = m();
    mj_checkAcc(mm, data);
    if (mm->opt.integrator == mjINT_EULER) {
      mj_Euler(mm, data);
    } else if (mm->opt.integrator == mjINT_RK4) {
      mj_RungeKutta(mm, data, 4);
    } else {
      mj_step2(mm, data);
    }
  }

  // Reports warnings the engine raised since the last call; false when one of them means the
  // engine reset an unstable state.
  bool collectWarnings() {
    bool stable = true;
    for (int w = 0; w < mjNWARNING; ++w) {
      if (data->warning[w].number == warningCounts[w]) continue;
      warningCounts[w] = data->warning[w].number;
      if (w == mjWARN_BADQPOS || w == mjWARN_BADQVEL || w == mjWARN_BADQACC) stable = false;
      error = std::string("engine warning: ") + mju_warningText(w, data->warning[w].lastinfo);
      Hx::Print::instance().ostream(Hx::Print::Warning, __PRETTY_FUNCTION__) << error << "\n";
    }
    return stable;
  }
};

HxMujocoSimulation::HxMujocoSimulation() : impl_(std::make_unique<Impl>()) {}
HxMujocoSimulation::~HxMujocoSimulation() = default;

HxBoolean HxMujocoSimulation::loadFile(const std::string& fileName, Mode mode) {
  impl_->clear();
  resizeManipulators(0);
  char message[1024] = "";
  mjModel* model = mj_loadXML(fileName.c_str(), nullptr, message, sizeof message);
  return adopt(model, "cannot load model '" + fileName + "': ", message, mode);
}

HxBoolean HxMujocoSimulation::loadString(const std::string& modelText, Mode mode) {
  impl_->clear();
  resizeManipulators(0);
  // The text goes through a one-file virtual file system; the engine tells MJCF from URDF by
  // the root element.
  auto vfs = std::make_unique<mjVFS>();
  mj_defaultVFS(vfs.get());
  const char* name = "hxmodel.xml";
  char message[1024] = "";
  mjModel* model = nullptr;
  if (mj_makeEmptyFileVFS(vfs.get(), name, static_cast<int>(modelText.size()) + 1) == 0) {
    std::memcpy(vfs->filedata[mj_findFileVFS(vfs.get(), name)], modelText.c_str(), modelText.size() + 1);
    model = mj_loadXML(name, vfs.get(), message, sizeof message);
  } else {
    std::strcpy(message, "no room for the model text");
  }
  mj_deleteVFS(vfs.get());
  return adopt(model, "cannot load model text: ", message, mode);
}

HxBoolean HxMujocoSimulation::adopt(mjModel* model, const std::string& failurePrefix, const char* message, Mode mode) {
  Impl& s = *impl_;
  if (!model) {
    s.error = failurePrefix + message;
    Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__) << s.error << "\n";
    return false;
  }
  s.model = HxMujocoModelPtr(model, [](const mjModel* m) { mj_deleteModel(const_cast<mjModel*>(m)); });
  s.mode = mode;

  // Initial state: the first keyframe when there is one.
  s.data = mj_makeData(model);
  s.controlData = mj_makeData(model);
  if (model->nkey > 0) {
    mj_resetDataKeyframe(model, s.data, 0);
    mj_resetDataKeyframe(model, s.controlData, 0);
  }
  mj_forward(model, s.data);

  std::vector<HxMujocoManipulatorLayout> layouts;
  std::string layoutError;
  if (!hxMujocoBuildLayouts(model, s.data, layouts, layoutError)) {
    s.clear();
    s.error = failurePrefix + layoutError;
    Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__) << s.error << "\n";
    return false;
  }

  // The system: one manipulator per layout, every per-manipulator vector sized once here.
  const HxU32 count = static_cast<HxU32>(layouts.size());
  resizeManipulators(count);
  s.controls.assign(count, HxMujocoControl());
  s.jacp.assign(3 * model->nv, 0.0);
  s.jacr.assign(3 * model->nv, 0.0);
  std::size_t widest = 1;
  for (const auto& layout : layouts) widest = std::max(widest, layout.joints.size());
  s.jacobian.assign(6 * widest, 0.0);
  s.gram.assign(36, 0.0);
  for (HxU32 k = 0; k < count; ++k) {
    auto layout = std::make_shared<const HxMujocoManipulatorLayout>(std::move(layouts[k]));
    s.layouts.push_back(layout);
    const HxU32 n = layout->jointCount();
    const HxU32 endEffectors = static_cast<HxU32>(layout->endEffectors.size());

    HxIndividualManipulator manipulator(std::make_shared<HxMujocoKinematics>(s.model, layout));
    manipulator.setName(layout->name);
    for (HxU32 j = 0; j < n; ++j) manipulator.addLink(HxLink(layout->linkNames[j], j));
    for (const auto& e : layout->endEffectors) {
      manipulator.addEndEffector(e.point ? HxControl::HxPointEndEffectorToken : HxControl::HxFrameEndEffectorToken);
    }
    manipulator.setJointCount(n);
    for (HxU32 j = 0; j < n; ++j) {
      const int u = layout->actuators[j];
      if (u < 0) continue;
      const double gear = model->actuator_gear[6 * u];
      const double efficiency = hxMujocoMotorEfficiency(model, u);
      std::shared_ptr<const HxBasePowerConverter> motor;
      if (efficiency > 0.0) motor = std::make_shared<HxDcElectricMotor>(gear * efficiency);
      manipulator.mutableJointDrive(j) = HxJointDrive(gear, motor);
    }
    mutableManipulators()[k] = manipulator;

    mutableSystemPositionStates()[k] = HxPositionState(n);
    mutableSystemVelocityStates()[k] = HxVelocityState(n);
    mutableActiveStates()[k] = HxManipulatorActiveState(n);
    mutableControlOutputPositionStates()[k] = HxPositionState(n);
    mutableControlOutputVelocityStates()[k] = HxVelocityState(n);
    mutableIndividualSimulators()[k] = HxIndividualDynamicSimulator(n, n);
    mutableManipulatorControlInputs()[k].mutableValues().assign(n, 0.0);
    mutableManipulatorTorques()[k].mutableValues().assign(n, 0.0);
    mutableManipulatorExternalForces()[k].mutableForces().assign(n, HxGeneralForce());
    mutableEndEffectorPlacements()[k] = HxManipulatorEndEffectorPlacement(endEffectors);
    mutableDesiredEndEffectorPlacements()[k] = HxManipulatorEndEffectorPlacement(endEffectors);
    mutablePropagationResults()[k] = HxPropagationResultData();

    HxMujocoControl& control = s.controls[k];
    control.position.assign(n, 0.0);
    control.velocity.assign(n, 0.0);
    control.previousVelocity.assign(n, 0.0);
    control.path = layout->pathPoints;
  }
  for (int w = 0; w < mjNWARNING; ++w) s.warningCounts[w] = s.data->warning[w].number;

  setSystemStatePresent(true);
  s.syncControlOutput();
  s.evaluate();
  s.error.clear();
  refresh();
  return true;
}

HxBoolean HxMujocoSimulation::isLoaded() const { return impl_->model != nullptr; }
const std::string& HxMujocoSimulation::lastError() const { return impl_->error; }
HxMujocoSimulation::Mode HxMujocoSimulation::mode() const { return impl_->mode; }
double HxMujocoSimulation::time() const { return impl_->data ? impl_->data->time : 0.0; }
double HxMujocoSimulation::timestep() const { return impl_->model ? impl_->model->opt.timestep : 0.0; }

HxBoolean HxMujocoSimulation::mechanicalEnergy(double& energy) const {
  energy = 0.0;
  if (!isLoaded() || !(impl_->model->opt.enableflags & mjENBL_ENERGY)) return false;
  energy = impl_->data->energy[0] + impl_->data->energy[1];
  return true;
}

HxBoolean HxMujocoSimulation::setMode(Mode mode) {
  if (!isLoaded()) return false;
  impl_->mode = mode;
  impl_->syncControlOutput();
  impl_->evaluate();
  refresh();
  return true;
}

void HxMujocoSimulation::reset() {
  Impl& s = *impl_;
  if (!isLoaded()) return;
  if (s.model->nkey > 0) {
    mj_resetDataKeyframe(s.model.get(), s.data, 0);
  } else {
    mj_resetData(s.model.get(), s.data);
  }
  for (int w = 0; w < mjNWARNING; ++w) s.warningCounts[w] = s.data->warning[w].number;
  s.restartPaths();
  s.syncControlOutput();
  s.evaluate();
  refresh();
}

HxBoolean HxMujocoSimulation::step() {
  Impl& s = *impl_;
  if (!isLoaded()) {
    s.error = "no model loaded";
    return false;
  }
  const double dt = s.model->opt.timestep;
  if (s.mode == Mode::Dynamic) {
    // The evaluated state at t (controls included) is integrated to t + dt; then the control
    // output moves on and the new state is evaluated with the controller in the loop.
    s.integrate();
    s.updateControlOutputs(dt);
  } else {
    // The state is the control output.
    s.updateControlOutputs(dt);
    for (std::size_t k = 0; k < s.layouts.size(); ++k) {
      const auto& layout = *s.layouts[k];
      for (std::size_t j = 0; j < layout.joints.size(); ++j) {
        s.data->qpos[layout.qposAddresses[j]] = s.controls[k].position[j];
        s.data->qvel[layout.dofAddresses[j]] = s.controls[k].velocity[j];
      }
      if (layout.freeJoint >= 0) mju_zero(s.data->qvel + layout.freeDofAddress, 6);
    }
    s.data->time += dt;
  }
  const bool stable = s.collectWarnings();
  if (!stable) s.syncControlOutput();
  s.evaluate();
  refresh();
  return stable;
}

const std::string& HxMujocoSimulation::manipulatorName(HxU32 m) const {
  return m < impl_->layouts.size() ? impl_->layouts[m]->name : kEmptyName;
}

const std::string& HxMujocoSimulation::endEffectorName(HxU32 m, HxU32 e) const {
  if (m >= impl_->layouts.size() || e >= impl_->layouts[m]->endEffectors.size()) return kEmptyName;
  return impl_->layouts[m]->endEffectors[e].name;
}

HxBoolean HxMujocoSimulation::setPathPoints(HxU32 m, const std::vector<HxEndEffectorPlacement>& points) {
  if (m >= impl_->controls.size()) return false;
  HxMujocoControl& control = impl_->controls[m];
  control.path = points;
  control.index = 0;
  control.completed = false;
  control.reachedAt = -1.0;
  refresh();
  return true;
}

const std::vector<HxEndEffectorPlacement>& HxMujocoSimulation::pathPoints(HxU32 m) const {
  return m < impl_->controls.size() ? impl_->controls[m].path : kNoPoints;
}

HxU32 HxMujocoSimulation::pathPointIndex(HxU32 m) const {
  return m < impl_->controls.size() ? impl_->controls[m].index : 0;
}

HxBoolean HxMujocoSimulation::pathCompleted(HxU32 m) const {
  return m < impl_->controls.size() && impl_->controls[m].completed;
}

HxBoolean HxMujocoSimulation::allPathsCompleted() const {
  for (const auto& control : impl_->controls) {
    if (!control.path.empty() && !control.completed) return false;
  }
  return true;
}

HxBoolean HxMujocoSimulation::setControlledEndEffector(HxU32 m, HxU32 e) {
  if (m >= impl_->layouts.size() || e >= impl_->layouts[m]->endEffectors.size()) return false;
  impl_->controls[m].controlled = e;
  refresh();
  return true;
}

void HxMujocoSimulation::setReachTolerances(double translation, double orientation) {
  impl_->translationTolerance = translation;
  impl_->orientationTolerance = orientation;
}

void HxMujocoSimulation::setDwellTime(double seconds) { impl_->dwellTime = seconds; }
void HxMujocoSimulation::setSingularityThreshold(double threshold) { impl_->singularityThreshold = threshold; }
double HxMujocoSimulation::singularityThreshold() const { return impl_->singularityThreshold; }

void HxMujocoSimulation::refresh() {
  Impl& s = *impl_;
  if (!isLoaded()) return;
  const mjModel* m = s.model.get();
  const mjData* d = s.data;
  const bool dynamic = s.mode == Mode::Dynamic;
  const double dt = m->opt.timestep;
  setDynamicsEnabled(dynamic);
  setPowerDataAvailable(dynamic);
  setControlOutputTime(d->time);

  for (std::size_t k = 0; k < s.layouts.size(); ++k) {
    const HxMujocoManipulatorLayout& layout = *s.layouts[k];
    HxMujocoControl& control = s.controls[k];
    const std::size_t n = layout.joints.size();
    const int root = layout.rootBody;

    // Active state: positions, velocities and accelerations of joints and base.
    HxManipulatorActiveState& active = mutableActiveStates()[k];
    HxPositionState& position = active.mutablePositionState();
    HxVelocityState& velocity = active.mutableVelocityState();
    HxAccelerationState& acceleration = active.mutableAccelerationState();
    const mjtNum* basePos = d->xpos + 3 * root;
    const mjtNum* baseQuat = d->xquat + 4 * root;
    const HxCoordSystemXform base(HxVector(basePos[0], basePos[1], basePos[2]),
                                  HxOrientation(baseQuat[0], baseQuat[1], baseQuat[2], baseQuat[3]));
    position.setCoordSystemXform(base);
    // Motions of the root body's frame origin (mjOBJ_XBODY), not of its centre of mass.
    velocity.setBaseVelocity(HxMujocoKinematics::velocityIn(m, d, mjOBJ_XBODY, root));
    acceleration.setBaseAcceleration(dynamic ? HxMujocoKinematics::accelerationIn(m, d, mjOBJ_XBODY, root)
                                             : HxGeneralMotion());
    for (std::size_t j = 0; j < n; ++j) {
      const int dof = layout.dofAddresses[j];
      position.mutableJointPositions()[j] = d->qpos[layout.qposAddresses[j]];
      velocity.mutableJointVelocities()[j] = d->qvel[dof];
      acceleration.mutableJointAccelerations()[j] =
          dynamic ? d->qacc[dof] : (control.velocity[j] - control.previousVelocity[j]) / dt;
    }
    mutableSystemPositionStates()[k] = position;
    mutableSystemVelocityStates()[k] = velocity;

    // Dynamic simulator: the same active state, joint torques and structural forces.
    HxIndividualDynamicSimulator& simulator = mutableIndividualSimulators()[k];
    simulator.mutableActiveState() = active;
    const mjtNum* treeCenter = d->subtree_com + 3 * root;
    for (std::size_t j = 0; j < n; ++j) {
      const int dof = layout.dofAddresses[j];
      const int body = layout.linkBodies[j];
      simulator.mutableJointTorques()[j] =
          dynamic ? d->qfrc_actuator[dof] + d->qfrc_passive[dof] + d->qfrc_constraint[dof] + d->qfrc_applied[dof] : 0.0;
      HxLinkForceState& link = simulator.mutableLinkForceStates()[j];
      link.setValid(dynamic);
      link.setForce(dynamic ? wrenchAtPoint(d->cfrc_int + 6 * body, treeCenter, d->xpos + 3 * body) : HxGeneralForce());
      mutableManipulatorExternalForces()[k].mutableForces()[j] =
          dynamic ? wrenchAtPoint(d->cfrc_ext + 6 * body, treeCenter, d->xpos + 3 * body) : HxGeneralForce();
      const int u = layout.actuators[j];
      mutableManipulatorControlInputs()[k].mutableValues()[j] = u >= 0 ? d->ctrl[u] : 0.0;
      mutableManipulatorTorques()[k].mutableValues()[j] = dynamic ? d->qfrc_actuator[dof] : 0.0;
    }

    // Control output: the controller's joint positions and velocities on the actual base.
    HxPositionState& outputPosition = mutableControlOutputPositionStates()[k];
    HxVelocityState& outputVelocity = mutableControlOutputVelocityStates()[k];
    outputPosition.setCoordSystemXform(base);
    outputVelocity.setBaseVelocity(velocity.baseVelocity());
    std::copy(control.position.begin(), control.position.end(), outputPosition.mutableJointPositions().begin());
    std::copy(control.velocity.begin(), control.velocity.end(), outputVelocity.mutableJointVelocities().begin());

    // End-effector placements relative to the base; the desired placement of the controlled
    // end effector is the path point, the others keep their offset from it.
    HxManipulatorEndEffectorPlacement& placements = mutableEndEffectorPlacements()[k];
    HxManipulatorEndEffectorPlacement& desired = mutableDesiredEndEffectorPlacements()[k];
    const bool hasTarget = !control.path.empty() && !layout.endEffectors.empty();
    HxEndEffectorPlacement controlledNow, target;
    if (hasTarget) {
      controlledNow = HxMujocoKinematics::placementIn(m, d, layout.endEffectors[control.controlled]);
      target = control.path[control.index];
    }
    for (std::size_t e = 0; e < layout.endEffectors.size(); ++e) {
      const HxEndEffectorPlacement world = HxMujocoKinematics::placementIn(m, d, layout.endEffectors[e]);
      placements.setPlacement(static_cast<HxU32>(e), relativeTo(basePos, baseQuat, world));
      HxEndEffectorPlacement wanted = world;
      if (hasTarget) {
        // wanted = target * controlledNow^-1 * world
        double invPos[3], invQuat[4], offPos[3], offQuat[4], pos[3], quat[4];
        const double cp[3] = {controlledNow.translation()[0], controlledNow.translation()[1], controlledNow.translation()[2]};
        const double cq[4] = {controlledNow.orientation()[0], controlledNow.orientation()[1],
                              controlledNow.orientation()[2], controlledNow.orientation()[3]};
        const double wp[3] = {world.translation()[0], world.translation()[1], world.translation()[2]};
        const double wq[4] = {world.orientation()[0], world.orientation()[1], world.orientation()[2], world.orientation()[3]};
        const double tp[3] = {target.translation()[0], target.translation()[1], target.translation()[2]};
        const double tq[4] = {target.orientation()[0], target.orientation()[1], target.orientation()[2], target.orientation()[3]};
        mju_negPose(invPos, invQuat, cp, cq);
        mju_mulPose(offPos, offQuat, invPos, invQuat, wp, wq);
        mju_mulPose(pos, quat, tp, tq, offPos, offQuat);
        wanted = HxEndEffectorPlacement(HxVector(pos[0], pos[1], pos[2]), HxOrientation(quat[0], quat[1], quat[2], quat[3]));
      }
      desired.setPlacement(static_cast<HxU32>(e), relativeTo(basePos, baseQuat, wanted));
    }

    // Path progress: the controlled end effector within tolerance of its path point.
    if (hasTarget && control.reachedAt < 0.0) {
      const double distance = controlledNow.translation().distanceTo(target.translation());
      double angle = 0.0;
      if (!layout.endEffectors[control.controlled].point) {
        const double to[4] = {target.orientation()[0], target.orientation()[1], target.orientation()[2], target.orientation()[3]};
        const double from[4] = {controlledNow.orientation()[0], controlledNow.orientation()[1],
                                controlledNow.orientation()[2], controlledNow.orientation()[3]};
        double rotation[3];
        rotationError(rotation, to, from);
        angle = mju_norm3(rotation);
      }
      if (distance <= s.translationTolerance && angle <= s.orientationTolerance) {
        control.reachedAt = d->time;
        if (control.index + 1 == control.path.size()) control.completed = true;
      }
    }

    // Events of the step: a joint at a limit, a singular end-effector Jacobian, a contact.
    HxPropagationResultData& result = mutablePropagationResults()[k];
    bool atLimit = false;
    for (std::size_t j = 0; j < n && !atLimit; ++j) {
      const int joint = layout.joints[j];
      if (!m->jnt_limited[joint]) continue;
      const double q = d->qpos[layout.qposAddresses[j]];
      atLimit = q <= m->jnt_range[2 * joint] + kJointLimitMargin || q >= m->jnt_range[2 * joint + 1] - kJointLimitMargin;
    }
    bool singular = false;
    for (std::size_t e = 0; e < layout.endEffectors.size() && !singular; ++e) {
      const int rows = s.endEffectorJacobian(d, layout, layout.endEffectors[e]);
      singular = s.singularBelow(rows, static_cast<int>(n), s.singularityThreshold);
    }
    bool contact = false;
    for (int c = 0; c < d->ncon && !contact; ++c) {
      contact = m->body_rootid[m->geom_bodyid[d->contact[c].geom1]] == root ||
                m->body_rootid[m->geom_bodyid[d->contact[c].geom2]] == root;
    }
    result.setHitJointLimit(atLimit);
    result.setHitSingularity(singular);
    result.setCollisionOccurred(contact);
  }
}
