#include "simulation/mujoco/HxMujocoSimulation.h"

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <mujoco/mujoco.h>

#include "framework/HxPrint.h"
#include "simulation/HxBasePowerConverter.h"
#include "simulation/mujoco/HxMujocoController.h"
#include "simulation/mujoco/HxMujocoExtras.h"
#include "simulation/mujoco/HxMujocoHandles.h"
#include "simulation/mujoco/HxMujocoJacobian.h"
#include "simulation/mujoco/HxMujocoKinematics.h"
#include "simulation/mujoco/HxMujocoLayout.h"
#include "simulation/mujoco/HxMujocoRefresh.h"
#include "simulation/mujoco/HxMujocoStepper.h"

namespace {

const std::string kEmptyName;
const std::vector<HxEndEffectorPlacement> kNoPoints;

// A virtual file system of the engine, emptied when it goes.
struct HxModelTextFile {
  mjVFS vfs;
  HxModelTextFile() { mj_defaultVFS(&vfs); }
  ~HxModelTextFile() { mj_deleteVFS(&vfs); }
  HxModelTextFile(const HxModelTextFile&) = delete;
  HxModelTextFile& operator=(const HxModelTextFile&) = delete;
};

}  // namespace

struct HxMujocoSimulation::Impl {
  HxMujocoModelPtr model;
  HxMujocoDataPtr data;
  HxMujocoLayouts layouts;
  HxMujocoController controller;
  HxMujocoStepper stepper;
  HxMujocoJacobian jacobian;  // for the singularity flag
  Mode mode = Mode::Dynamic;
  std::string error;
  std::string extrasError;  // why the last load failed on its extras
  double singularityThreshold = 1e-3;
  // The data as the manipulators' kinematics may read it; a new one per model, so that
  // kinematics kept from an earlier model never read this one's data.
  std::shared_ptr<HxMujocoLiveData> live = std::make_shared<HxMujocoLiveData>();

  Impl() = default;
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;
  ~Impl() { live->data = nullptr; }

  void clear() {
    live->data = nullptr;
    live = std::make_shared<HxMujocoLiveData>();
    controller.clear();
    layouts.clear();
    data.reset();
    model.reset();
  }

  // The data is about to change: the kinematics evaluate on their own until it is published.
  void withdraw() { live->data = nullptr; }
  // The data holds its state evaluated as the mode evaluates it (HxMujocoStepper::evaluate).
  void publish() {
    live->data = data.get();
    live->stage = mode == Mode::Dynamic ? HxMujocoLiveData::Stage::Acceleration : HxMujocoLiveData::Stage::Velocity;
  }

  // Takes a loaded model (null: the load failed with `message`) at its initial state and
  // divides it into manipulators. False, with `error` set and nothing kept, on failure.
  bool adopt(HxMujocoModelOwner loaded, const std::string& failurePrefix, const char* message) {
    if (!loaded) {
      error = failurePrefix + message;
      return false;
    }
    model = HxMujocoModelPtr(std::move(loaded));
    data = hxMujocoMakeData(model.get());
    // Initial state: the first keyframe when there is one.
    if (model->nkey > 0) mj_resetDataKeyframe(model.get(), data.get(), 0);
    mj_forward(model.get(), data.get());
    std::vector<HxMujocoManipulatorLayout> built;
    std::string layoutError;
    if (!hxMujocoBuildLayouts(model.get(), data.get(), built, layoutError)) {
      clear();
      error = failurePrefix + layoutError;
      return false;
    }
    for (auto& layout : built) layouts.push_back(std::make_shared<const HxMujocoManipulatorLayout>(std::move(layout)));
    controller.setUp(model, layouts);
    jacobian.resize(model.get(), layouts);
    stepper.acknowledgeWarnings(data.get());
    return true;
  }

  // Restarts the control output from the current state and evaluates the state.
  void start() {
    withdraw();
    controller.restartOutputs(data.get(), mode == Mode::Kinematic);
    HxMujocoStepper::evaluate(model.get(), data.get(), mode == Mode::Dynamic, controller);
    publish();
  }
};

HxMujocoSimulation::HxMujocoSimulation() : impl_(std::make_unique<Impl>()) {}
HxMujocoSimulation::~HxMujocoSimulation() = default;

HxBoolean HxMujocoSimulation::loadFile(const std::string& fileName, Mode mode) {
  return loadFile(fileName, LoadExtras(), mode);
}

HxBoolean HxMujocoSimulation::loadString(const std::string& modelText, Mode mode) {
  return loadString(modelText, LoadExtras(), mode);
}

HxBoolean HxMujocoSimulation::loadFile(const std::string& fileName, const LoadExtras& extras, Mode mode) {
  impl_->clear();
  resizeManipulators(0);
  char message[1024] = "";
  HxMujocoModelOwner model(mj_loadXML(fileName.c_str(), nullptr, message, sizeof message));
  impl_->extrasError.clear();
  // The motors go in right after the load: the engine saves the model it loaded last.
  if (model && !extras.motors.empty() && !hxMujocoAddMotors(model, extras.motors, fileName, impl_->extrasError)) {
    model.reset();
  }
  const char* reason = impl_->extrasError.empty() ? message : impl_->extrasError.c_str();
  return finishLoad(impl_->adopt(std::move(model), "cannot load model '" + fileName + "': ", reason), mode);
}

HxBoolean HxMujocoSimulation::loadString(const std::string& modelText, const LoadExtras& extras, Mode mode) {
  impl_->clear();
  resizeManipulators(0);
  // The text goes through a one-file virtual file system; the engine tells MJCF from URDF by
  // the root element.
  char message[1024] = "";
  HxMujocoModelOwner model;
  {
    auto file = std::make_unique<HxModelTextFile>();
    const char* name = "hxmodel.xml";
    if (mj_makeEmptyFileVFS(&file->vfs, name, static_cast<int>(modelText.size()) + 1) == 0) {
      std::memcpy(file->vfs.filedata[mj_findFileVFS(&file->vfs, name)], modelText.c_str(), modelText.size() + 1);
      model.reset(mj_loadXML(name, &file->vfs, message, sizeof message));
    } else {
      std::strcpy(message, "no room for the model text");
    }
  }
  impl_->extrasError.clear();
  if (model && !extras.motors.empty() && !hxMujocoAddMotors(model, extras.motors, "", impl_->extrasError)) {
    model.reset();
  }
  const char* reason = impl_->extrasError.empty() ? message : impl_->extrasError.c_str();
  return finishLoad(impl_->adopt(std::move(model), "cannot load model text: ", reason), mode);
}

HxBoolean HxMujocoSimulation::finishLoad(bool adopted, Mode mode) {
  Impl& s = *impl_;
  if (!adopted) {
    Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__) << s.error << "\n";
    return false;
  }
  s.mode = mode;

  // The system: one manipulator per layout, every per-manipulator vector sized once here.
  const HxU32 count = static_cast<HxU32>(s.layouts.size());
  resizeManipulators(count);
  for (HxU32 k = 0; k < count; ++k) {
    const std::shared_ptr<const HxMujocoManipulatorLayout>& layout = s.layouts[k];
    const HxU32 n = layout->jointCount();
    const HxU32 endEffectors = static_cast<HxU32>(layout->endEffectors.size());

    HxIndividualManipulator manipulator(std::make_shared<HxMujocoKinematics>(s.model, layout, s.live));
    manipulator.setName(layout->name);
    for (HxU32 j = 0; j < n; ++j) manipulator.addLink(HxLink(layout->linkNames[j], j));
    for (const auto& e : layout->endEffectors) {
      manipulator.addEndEffector(e.point ? HxControl::HxPointEndEffectorToken : HxControl::HxFrameEndEffectorToken);
    }
    manipulator.setJointCount(n);
    for (HxU32 j = 0; j < n; ++j) {
      const int u = layout->actuators[j];
      if (u < 0) continue;
      const double gear = s.model->actuator_gear[6 * u];
      const double efficiency = hxMujocoMotorEfficiency(s.model.get(), u);
      std::shared_ptr<const HxBasePowerConverter> motor;
      if (efficiency > 0.0) motor = std::make_shared<HxDcElectricMotor>(gear * efficiency);
      manipulator.mutableJointDrive(j) = HxJointDrive(gear, motor);
    }
    mutableManipulators()[k] = manipulator;

    std::vector<HxJointKind> kinds(n, HxJointKind::Unknown);
    for (HxU32 j = 0; j < n; ++j) {
      const int type = s.model->jnt_type[layout->joints[j]];
      if (type == mjJNT_HINGE) kinds[j] = HxJointKind::Revolute;
      if (type == mjJNT_SLIDE) kinds[j] = HxJointKind::Prismatic;
    }
    setJointKinds(k, std::move(kinds));
    std::vector<std::string> names;
    for (const auto& e : layout->endEffectors) names.push_back(e.name);
    setEndEffectorNames(k, std::move(names));

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
  }

  setSystemStatePresent(true);
  s.start();
  s.error.clear();
  refresh();
  return true;
}

HxBoolean HxMujocoSimulation::isLoaded() const { return impl_->model != nullptr; }
const std::string& HxMujocoSimulation::lastError() const { return impl_->error; }
const std::string& HxMujocoSimulation::lastExtrasError() const { return impl_->extrasError; }
std::string HxMujocoSimulation::engineVersion() { return mj_versionString(); }
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
  impl_->start();
  refresh();
  return true;
}

void HxMujocoSimulation::reset() {
  Impl& s = *impl_;
  if (!isLoaded()) return;
  s.withdraw();
  if (s.model->nkey > 0) {
    mj_resetDataKeyframe(s.model.get(), s.data.get(), 0);
  } else {
    mj_resetData(s.model.get(), s.data.get());
  }
  s.stepper.acknowledgeWarnings(s.data.get());
  s.controller.restartPaths();
  s.start();
  refresh();
}

HxBoolean HxMujocoSimulation::step() {
  Impl& s = *impl_;
  if (!isLoaded()) {
    s.error = "no model loaded";
    return false;
  }
  s.withdraw();
  const bool stable = s.stepper.step(s.model.get(), s.data.get(), s.mode == Mode::Dynamic, s.controller, s.error);
  s.publish();
  refresh();
  return stable;
}

const std::string& HxMujocoSimulation::manipulatorName(HxU32 m) const {
  return m < impl_->layouts.size() ? impl_->layouts[m]->name : kEmptyName;
}

std::vector<std::string> HxMujocoSimulation::unmatchedPathSites() const {
  return isLoaded() ? hxMujocoUnmatchedPathSites(impl_->model.get(), impl_->layouts) : std::vector<std::string>();
}

HxMujocoSimulation::JointActuation HxMujocoSimulation::jointActuation(HxU32 m, HxU32 j) const {
  if (m >= impl_->layouts.size() || j >= impl_->layouts[m]->jointCount()) return JointActuation::None;
  const int actuator = impl_->layouts[m]->actuators[j];
  if (actuator < 0) return JointActuation::None;
  return hxMujocoMotorEfficiency(impl_->model.get(), actuator) > 0.0 ? JointActuation::Motor : JointActuation::Actuator;
}

std::string HxMujocoSimulation::jointName(HxU32 m, HxU32 j) const {
  if (m >= impl_->layouts.size() || j >= impl_->layouts[m]->jointCount()) return {};
  const char* name = mj_id2name(impl_->model.get(), mjOBJ_JOINT, impl_->layouts[m]->joints[j]);
  return name != nullptr ? name : "";
}

HxBoolean HxMujocoSimulation::setPathPoints(HxU32 m, const std::vector<HxEndEffectorPlacement>& points) {
  if (m >= impl_->controller.size()) return false;
  impl_->controller.setPath(m, points);
  refresh();
  return true;
}

const std::vector<HxEndEffectorPlacement>& HxMujocoSimulation::pathPoints(HxU32 m) const {
  return m < impl_->controller.size() ? impl_->controller.state(m).path : kNoPoints;
}

HxU32 HxMujocoSimulation::pathPointIndex(HxU32 m) const {
  return m < impl_->controller.size() ? impl_->controller.state(m).index : 0;
}

HxBoolean HxMujocoSimulation::pathCompleted(HxU32 m) const {
  return m < impl_->controller.size() && impl_->controller.state(m).completed;
}

HxBoolean HxMujocoSimulation::allPathsCompleted() const {
  for (std::size_t k = 0; k < impl_->controller.size(); ++k) {
    const HxMujocoControlState& state = impl_->controller.state(k);
    if (!state.path.empty() && !state.completed) return false;
  }
  return true;
}

HxBoolean HxMujocoSimulation::setControlledEndEffector(HxU32 m, HxU32 e) {
  if (m >= impl_->layouts.size() || e >= impl_->layouts[m]->endEffectors.size()) return false;
  impl_->controller.setControlled(m, e);
  refresh();
  return true;
}

void HxMujocoSimulation::setReachTolerances(double translation, double orientation) {
  impl_->controller.setReachTolerances(translation, orientation);
}

void HxMujocoSimulation::setDwellTime(double seconds) { impl_->controller.setDwellTime(seconds); }
void HxMujocoSimulation::setSingularityThreshold(double threshold) { impl_->singularityThreshold = threshold; }
double HxMujocoSimulation::singularityThreshold() const { return impl_->singularityThreshold; }

void HxMujocoSimulation::refresh() {
  Impl& s = *impl_;
  if (!isLoaded()) return;
  const bool dynamic = s.mode == Mode::Dynamic;
  setDynamicsEnabled(dynamic);
  setPowerDataAvailable(dynamic);
  setControlOutputTime(s.data->time);
  for (std::size_t k = 0; k < s.layouts.size(); ++k) {
    const HxMujocoRefreshSource in{s.model.get(), s.data.get(), *s.layouts[k], s.controller.state(k), dynamic};
    HxManipulatorActiveState& active = mutableActiveStates()[k];
    HxMujocoRefresh::motion(in, active);
    mutableSystemPositionStates()[k] = active.positionState();
    mutableSystemVelocityStates()[k] = active.velocityState();
    HxIndividualDynamicSimulator& simulator = mutableIndividualSimulators()[k];
    simulator.mutableActiveState() = active;
    HxMujocoRefresh::forces(in, simulator, mutableManipulatorExternalForces()[k], mutableManipulatorControlInputs()[k],
                            mutableManipulatorTorques()[k]);
    HxMujocoRefresh::controlOutput(in, active, mutableControlOutputPositionStates()[k],
                                   mutableControlOutputVelocityStates()[k]);
    HxMujocoRefresh::placements(in, active.positionState().coordSystemXform(), mutableEndEffectorPlacements()[k],
                                mutableDesiredEndEffectorPlacements()[k]);
    HxMujocoRefresh::events(in, s.jacobian, s.singularityThreshold, mutablePropagationResults()[k]);
  }
}
