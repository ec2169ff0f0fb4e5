#include "simulation/mujoco/HxMujocoStepper.h"

#include "framework/HxPrint.h"

void HxMujocoStepper::acknowledgeWarnings(const mjData* data) {
  for (int w = 0; w < mjNWARNING; ++w) warningCounts_[w] = data->warning[w].number;
}

void HxMujocoStepper::evaluate(const mjModel* model, mjData* data, bool dynamic, const HxMujocoController& controller) {
  if (dynamic) {
    // mj_forward with the joint control between the velocity stage and the actuation, and
    // mj_rnePostConstraint for the links' forces and the base acceleration.
    mj_step1(model, data);
    controller.applyJointControl(data);
    mj_fwdActuation(model, data);
    mj_fwdAcceleration(model, data);
    mj_fwdConstraint(model, data);
    mj_sensorAcc(model, data);
    mj_rnePostConstraint(model, data);
    return;
  }
  mj_kinematics(model, data);
  mj_comPos(model, data);
  mj_comVel(model, data);
  mj_collision(model, data);
  // The energy, when the model asks for it, as mj_step1 gives it in dynamic mode.
  if (model->opt.enableflags & mjENBL_ENERGY) {
    mj_tendon(model, data);
    mj_crb(model, data);
    mj_energyPos(model, data);
    mj_energyVel(model, data);
  }
}

bool HxMujocoStepper::step(const mjModel* model, mjData* data, bool dynamic, HxMujocoController& controller,
                           std::string& error) {
  const double dt = model->opt.timestep;
  if (dynamic) {
    // The evaluated state at t (controls included) is integrated to t + dt; then the control
    // output moves on.
    mj_checkAcc(model, data);
    if (model->opt.integrator == mjINT_EULER) {
      mj_Euler(model, data);
    } else if (model->opt.integrator == mjINT_RK4) {
      mj_RungeKutta(model, data, 4);
    } else {
      mj_step2(model, data);
    }
    controller.advancePaths(data->time);
    controller.updateOutputs(data, dt);
  } else {
    // The control output moves on and the state takes it; a free base stays at rest.
    controller.advancePaths(data->time);
    controller.updateOutputs(data, dt);
    for (std::size_t k = 0; k < controller.size(); ++k) {
      const HxMujocoManipulatorLayout& layout = controller.layout(k);
      const HxMujocoControlState& state = controller.state(k);
      for (std::size_t j = 0; j < layout.joints.size(); ++j) {
        data->qpos[layout.qposAddresses[j]] = state.position[j];
        data->qvel[layout.dofAddresses[j]] = state.velocity[j];
      }
      if (layout.freeJoint >= 0) mju_zero(data->qvel + layout.freeDofAddress, 6);
    }
    data->time += dt;
  }
  const bool stable = collectWarnings(data, error);
  if (!stable) controller.restartOutputs(data, !dynamic);
  evaluate(model, data, dynamic, controller);
  controller.updateProgress(data);
  return stable;
}

bool HxMujocoStepper::collectWarnings(const mjData* data, std::string& error) {
  bool stable = true;
  for (int w = 0; w < mjNWARNING; ++w) {
    if (data->warning[w].number == warningCounts_[w]) continue;
    warningCounts_[w] = data->warning[w].number;
    if (w == mjWARN_BADQPOS || w == mjWARN_BADQVEL || w == mjWARN_BADQACC) stable = false;
    error = std::string("engine warning: ") + mju_warningText(w, data->warning[w].lastinfo);
    Hx::Print::instance().ostream(Hx::Print::Warning, __PRETTY_FUNCTION__) << error << "\n";
  }
  return stable;
}
