// pendulum_host: records a simulator of your own through libhxSimulationAnalysis.
//
// The example to copy. It shows the three things a host does:
//   1. Put its simulator behind the simulation interface: a class derived from
//      HxSystemSimulation that refreshes the state vectors after each step, and an
//      HxManipulatorKinematics that computes end-effector placements and motions for any state.
//      The simulator here is a planar double pendulum (two revolute joints, two uniform rods,
//      gravity) integrated with RK4 at 1 ms, driven by a joint-space PD controller with gravity
//      compensation that tracks a sine per joint.
//   2. Say in code what to capture for which manipulator, link and end effector.
//   3. Record: give the recorder all five writers, then step, capture and save every 10 ms.
//
// Build against an installed copy, with CMake (CMakeLists.txt beside this file):
//     cmake -S examples/host -B build-host -DCMAKE_PREFIX_PATH=/path/to/prefix && cmake --build build-host
// or as one file, with pkg-config:
//     g++ -std=c++17 pendulum_host.cpp $(pkg-config --cflags --libs hxSimulationAnalysis) -o pendulum_host
//
// Run: pendulum_host [BASE] writes BASE.csv, .xml, .mrd, .m and .nb (default BASE: pendulum).
// Exit status 0 on success, 1 when an output file cannot be written, 2 on a bad command line.
//
// Frames: world z up; the pendulum hangs from a fixed pivot (its base frame) and swings in the
// x-z plane. Both joints turn about -y, so a positive angle swings a link towards +x; angles are
// measured from the downward vertical. SI units throughout.

#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/storage/HxSystemStoredData.h"
#include "analysis/types/HxReachTargetDataCaptureType.h"
#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "analysis/writers/HxXmlOutputWriter.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxBasePowerConverter.h"
#include "simulation/HxSystemSimulation.h"

namespace {

using Joint2 = std::array<double, 2>;

constexpr double kPi = 3.14159265358979323846;
constexpr double kTimestep = 0.001;         // s
constexpr int kStepsPerSample = 10;         // one sample every 10 ms
constexpr int kStepCount = 2000;            // 2 s of simulated time
const HxVector kJointAxis(0.0, -1.0, 0.0);  // both joints, in the base frame

/// The pendulum: two uniform rods hanging from a pivot, where its base frame sits.
struct PendulumModel {
  Joint2 mass{2.0, 1.0};    // kg
  Joint2 length{0.6, 0.5};  // m
  double gravity = 9.81;    // m/s^2, along world -z
  HxCoordSystemXform base{HxVector(0.0, 0.0, 1.5), HxOrientation()};
  double gear = 50.0;       // motor speed = gear * joint speed
  double efficiency = 0.8;  // of each DC motor

  double centre(int i) const { return 0.5 * length[i]; }                          // joint to rod centre
  double inertia(int i) const { return mass[i] * length[i] * length[i] / 12.0; }  // about rod centre
};

/// Joint torques that hold the pendulum still against gravity at joint positions q.
Joint2 gravityTorques(const PendulumModel& p, const Joint2& q) {
  const double s1 = std::sin(q[0]);
  const double s12 = std::sin(q[0] + q[1]);
  return {p.gravity * (p.mass[0] * p.centre(0) * s1 + p.mass[1] * (p.length[0] * s1 + p.centre(1) * s12)),
          p.gravity * p.mass[1] * p.centre(1) * s12};
}

/// Joint accelerations from M(q) qdd + c(q, qd) + g(q) = tau (no friction, no contact).
Joint2 jointAccelerations(const PendulumModel& p, const Joint2& q, const Joint2& qd, const Joint2& tau) {
  const double m2 = p.mass[1], l1 = p.length[0], c1 = p.centre(0), c2 = p.centre(1);
  const double h = m2 * l1 * c2 * std::sin(q[1]);
  const double k = m2 * l1 * c2 * std::cos(q[1]);
  const double m22 = p.inertia(1) + m2 * c2 * c2;
  const double m12 = m22 + k;
  const double m11 = p.inertia(0) + p.mass[0] * c1 * c1 + m2 * l1 * l1 + m22 + 2.0 * k;
  const Joint2 g = gravityTorques(p, q);
  const double r1 = tau[0] - g[0] + h * (2.0 * qd[0] * qd[1] + qd[1] * qd[1]);
  const double r2 = tau[1] - g[1] - h * qd[0] * qd[0];
  const double det = m11 * m22 - m12 * m12;
  return {(m22 * r1 - m12 * r2) / det, (m11 * r2 - m12 * r1) / det};
}

/// A link's direction from its joint, at angle `phi` from the downward vertical (base frame).
HxVector along(double phi) { return HxVector(std::sin(phi), 0.0, -std::cos(phi)); }

/// The tip frame in the base frame, for link angles phi = (q1, q1 + q2). The frame turns with
/// the lower link; its -z axis points along it.
HxCoordSystemXform tipInBase(const PendulumModel& p, const Joint2& phi) {
  return HxCoordSystemXform(along(phi[0]) * p.length[0] + along(phi[1]) * p.length[1],
                            HxOrientation::fromAxisAngle(kJointAxis, phi[1]));
}

/// The pendulum's kinematics in closed form, for whatever state the library asks about. One
/// end effector, 0: the tip. The base is fixed, so no base motion is added.
class PendulumKinematics : public HxManipulatorKinematics {
 public:
  explicit PendulumKinematics(const PendulumModel& model) : model_(model) {}

  HxBoolean endEffectorPlacement(HxU32 endEffector, const HxManipulatorActiveState& state,
                                 HxEndEffectorPlacement& out) const override {
    Joint2 phi[1];
    out = HxEndEffectorPlacement();
    if (endEffector != 0 || !linkAngles(state, 1, phi)) return false;
    out = state.positionState().coordSystemXform() * tipInBase(model_, phi[0]);
    return true;
  }

  HxBoolean endEffectorVelocity(HxU32 endEffector, const HxManipulatorActiveState& state,
                                HxGeneralMotion& out) const override {
    return tipMotion(endEffector, state, 1, out);
  }

  HxBoolean endEffectorAcceleration(HxU32 endEffector, const HxManipulatorActiveState& state,
                                    HxGeneralMotion& out) const override {
    return tipMotion(endEffector, state, 2, out);
  }

  HxBoolean centerOfMass(const HxManipulatorActiveState& state, HxVector& out) const override {
    Joint2 phi[1];
    out = HxVector();
    if (!linkAngles(state, 1, phi)) return false;
    const PendulumModel& p = model_;
    const HxVector upper = along(phi[0][0]) * p.centre(0);
    const HxVector lower = along(phi[0][0]) * p.length[0] + along(phi[0][1]) * p.centre(1);
    const HxVector com = (upper * p.mass[0] + lower * p.mass[1]) * (1.0 / (p.mass[0] + p.mass[1]));
    out = state.positionState().coordSystemXform().transformPoint(com);
    return true;
  }

 private:
  // The link angles (q1, q1 + q2) and as many of their derivatives as `count` - 1 asks for, from
  // the state's joint positions, velocities and accelerations; false unless it has two joints.
  static bool linkAngles(const HxManipulatorActiveState& state, int count, Joint2* phi) {
    const std::vector<double>* joint[3] = {&state.positionState().jointPositions(),
                                           &state.velocityState().jointVelocities(),
                                           &state.accelerationState().jointAccelerations()};
    for (int i = 0; i < count; ++i) {
      if (joint[i]->size() != 2) return false;
      phi[i] = {(*joint[i])[0], (*joint[i])[0] + (*joint[i])[1]};
    }
    return true;
  }

  // The tip's velocity (`order` 1) or acceleration (`order` 2). The tip moves, for each link,
  // along the link's tangent (cos, 0, sin) at the link's rate; an acceleration adds the
  // centripetal part, rate^2 back towards each joint. Linear part: sum over the links of
  // length * (tangential * tangent + inward * (-along)); the angular part turns about the joint
  // axis. Both turned into the world frame.
  bool tipMotion(HxU32 endEffector, const HxManipulatorActiveState& state, int order, HxGeneralMotion& out) const {
    Joint2 phi[3];
    out = HxGeneralMotion();
    if (endEffector != 0 || !linkAngles(state, order + 1, phi)) return false;
    const Joint2& rate = phi[1];
    const Joint2& tangential = phi[order];
    const Joint2 inward = order == 1 ? Joint2{0.0, 0.0} : Joint2{rate[0] * rate[0], rate[1] * rate[1]};
    HxVector linear;
    for (int i = 0; i < 2; ++i) {
      const HxVector tangent(std::cos(phi[0][i]), 0.0, std::sin(phi[0][i]));
      linear = linear + (tangent * tangential[i] - along(phi[0][i]) * inward[i]) * model_.length[i];
    }
    const HxOrientation& r = state.positionState().coordSystemXform().orientation();
    out = HxGeneralMotion(r.rotate(linear), r.rotate(kJointAxis * tangential[1]));
    return true;
  }

  PendulumModel model_;
};

/// The simulated system: one manipulator, the pendulum. Every vector the captured quantities
/// read is sized once here and refreshed in place after each step.
class PendulumSimulation : public HxSystemSimulation {
 public:
  explicit PendulumSimulation(const PendulumModel& model) : model_(model) {
    resizeManipulators(1);
    setDynamicsEnabled(true);     // the state comes from integrating the dynamics
    setPowerDataAvailable(true);  // motor torques are known: power can be recorded
    setSystemStatePresent(true);

    // The model: links named as a capture configuration names them, DC-motor drives, and the
    // tip as a point end effector that our kinematics answers for.
    HxIndividualManipulator& pendulum = mutableManipulators()[0];
    pendulum.setName("pendulum");
    pendulum.setKinematics(std::make_shared<PendulumKinematics>(model_));
    pendulum.addLink(HxLink("upper_link", 0));
    pendulum.addLink(HxLink("lower_link", 1));
    pendulum.setJointCount(2);
    for (HxU32 j = 0; j < 2; ++j) {
      pendulum.mutableJointDrive(j) =
          HxJointDrive(model_.gear, std::make_shared<HxDcElectricMotor>(model_.gear * model_.efficiency));
    }
    pendulum.addEndEffector(HxControl::HxPointEndEffectorToken);

    // Two joints, one link force state per link, one end-effector entry.
    HxManipulatorActiveState state(2);
    state.mutablePositionState().setCoordSystemXform(model_.base);
    mutableActiveStates()[0] = state;
    mutableIndividualSimulators()[0] = HxIndividualDynamicSimulator(2, 2);
    mutableSystemPositionStates()[0] = state.positionState();
    mutableSystemVelocityStates()[0] = state.velocityState();
    mutableControlOutputPositionStates()[0] = state.positionState();
    mutableControlOutputVelocityStates()[0] = state.velocityState();
    mutableManipulatorTorques()[0].setValues({0.0, 0.0});
    mutableEndEffectorPlacements()[0] = HxManipulatorEndEffectorPlacement(1);
    mutableDesiredEndEffectorPlacements()[0] = HxManipulatorEndEffectorPlacement(1);

    // Starts on the reference: hanging straight down, moving as the reference does.
    reference();
    qd_ = qdRef_;
    control();
    publish();
  }

  double time() const { return time_; }

  /// Advances one timestep: RK4 on (q, qd) with the controller's torque held over the step.
  void step() {
    using State = std::array<double, 4>;
    auto f = [this](const State& x) {
      const Joint2 a = jointAccelerations(model_, {x[0], x[1]}, {x[2], x[3]}, tau_);
      return State{x[2], x[3], a[0], a[1]};
    };
    auto plus = [](State x, double s, const State& d) {
      for (int i = 0; i < 4; ++i) x[i] += s * d[i];
      return x;
    };
    const double h = kTimestep;
    const State x{q_[0], q_[1], qd_[0], qd_[1]};
    const State k1 = f(x), k2 = f(plus(x, h / 2, k1)), k3 = f(plus(x, h / 2, k2)), k4 = f(plus(x, h, k3));
    const State next = plus(plus(plus(plus(x, h / 6, k1), h / 3, k2), h / 3, k3), h / 6, k4);
    q_ = {next[0], next[1]};
    qd_ = {next[2], next[3]};
    time_ = ++steps_ * h;  // counted, so that sample times carry no rounding drift
    reference();
    control();
    publish();
  }

 private:
  // The reference the controller tracks (its control output): a sine per joint.
  void reference() {
    const Joint2 amplitude{0.8, 1.0};  // rad
    const Joint2 frequency{0.5, 0.8};  // Hz
    for (int j = 0; j < 2; ++j) {
      const double w = 2.0 * kPi * frequency[j];
      qRef_[j] = amplitude[j] * std::sin(w * time_);
      qdRef_[j] = amplitude[j] * w * std::cos(w * time_);
    }
  }

  // PD torque with gravity compensation, then the accelerations it gives, so that a sample's
  // state, torque and acceleration belong together.
  void control() {
    const Joint2 kp{120.0, 40.0};  // N m/rad
    const Joint2 kd{15.0, 4.0};    // N m s/rad
    const Joint2 g = gravityTorques(model_, q_);
    for (int j = 0; j < 2; ++j) tau_[j] = kp[j] * (qRef_[j] - q_[j]) + kd[j] * (qdRef_[j] - qd_[j]) + g[j];
    qdd_ = jointAccelerations(model_, q_, qd_, tau_);
  }

  // Refreshes, in place, every vector the captured quantities read.
  void publish() {
    HxManipulatorActiveState& active = mutableActiveStates()[0];
    copy(q_, active.mutablePositionState().mutableJointPositions());
    copy(qd_, active.mutableVelocityState().mutableJointVelocities());
    copy(qdd_, active.mutableAccelerationState().mutableJointAccelerations());

    // The dynamics' view of the same state; without friction the net joint torque is the motor's.
    HxIndividualDynamicSimulator& dynamics = mutableIndividualSimulators()[0];
    dynamics.mutableActiveState() = active;
    copy(tau_, dynamics.mutableJointTorques());
    copy(tau_, mutableManipulatorTorques()[0].mutableValues());

    mutableSystemPositionStates()[0] = active.positionState();
    mutableSystemVelocityStates()[0] = active.velocityState();
    copy(qRef_, mutableControlOutputPositionStates()[0].mutableJointPositions());
    copy(qdRef_, mutableControlOutputVelocityStates()[0].mutableJointVelocities());

    // End-effector entries are relative to the base: where the tip is, and where the reference
    // would put it.
    mutableEndEffectorPlacements()[0].setPlacement(0, tipInBase(model_, {q_[0], q_[0] + q_[1]}));
    mutableDesiredEndEffectorPlacements()[0].setPlacement(0, tipInBase(model_, {qRef_[0], qRef_[0] + qRef_[1]}));
    // Stretched or folded, the tip cannot move along the arm.
    mutablePropagationResults()[0].setHitSingularity(std::fabs(std::sin(q_[1])) < 0.01);
    setControlOutputTime(time_);
  }

  static void copy(const Joint2& from, std::vector<double>& to) { to.assign(from.begin(), from.end()); }

  PendulumModel model_;
  long steps_ = 0;
  double time_ = 0.0;
  Joint2 q_{}, qd_{}, qdd_{}, tau_{}, qRef_{}, qdRef_{};
};

/// What to record of manipulator 0: its base, centre of mass and power; per link its joint's
/// state, torques, reference velocity and motor power; for the tip its placement, motion and
/// distance from where the reference would put it. False when the library refuses a type.
bool configureCapture(const HxIndividualManipulator& pendulum, HxSystemDataCapture& capture) {
  namespace sm = HxSimAnalysis;
  const unsigned int m = 0;
  bool accepted = true;
  capture.setLabel("double pendulum");
  for (const HxToken* token : {&sm::HxBasePositionDataCaptureTypeToken, &sm::HxCenterOfMassDataCaptureTypeToken,
                               &sm::HxManipulatorPowerDataCaptureTypeToken}) {
    accepted = capture.addManipulatorDataCaptureType(m, *token) && accepted;
  }
  for (const HxToken* token :
       {&sm::HxJointPositionDataCaptureTypeToken, &sm::HxJointVelocityDataCaptureTypeToken,
        &sm::HxJointAccelerationDataCaptureTypeToken, &sm::HxJointTorqueDataCaptureTypeToken,
        &sm::HxControlTorqueDataCaptureTypeToken, &sm::HxControlOutputJointVelocityDataCaptureTypeToken,
        &sm::HxMotorPowerDataCaptureTypeToken}) {
    accepted = capture.addLinkDataCaptureType(m, *token, pendulum) && accepted;
  }
  const unsigned int endEffectors = pendulum.numberOfEndEffectors();
  for (const HxToken* token :
       {&sm::HxEndEffectorPlacementDataCaptureTypeToken, &sm::HxEndEffectorVelocityDataCaptureTypeToken,
        &sm::HxEndEffectorAccelerationDataCaptureTypeToken}) {
    accepted = capture.addEndEffectorDataCaptureType(m, *token, endEffectors) && accepted;
  }
  // A type with settings of its own goes in as a configured copy: within 2 cm counts as reached.
  HxReachTargetDataCaptureType reachTarget;
  reachTarget.setTranslationTolerance(0.02);
  return capture.addEndEffectorDataCaptureType(m, reachTarget, endEffectors) && accepted;
}

/// A writer list holding one writer of each class in `Writers`, in that order; the recorder
/// writes one file per writer, named by the base name and the writer's extension.
template <class... Writers>
HxOutputWriterVector writerList() {
  HxOutputWriterVector writers;
  (writers.pushBack(Writers()), ...);
  return writers;
}

/// The library never reports a file it cannot write, so the host checks first that every
/// writer's file opens (creating the directory when missing); files it created are removed
/// again on failure. False, with `error` set, when one does not.
bool checkOutputWritable(const std::string& base, const HxOutputWriterVector& writers, std::string& error) {
  namespace fs = std::filesystem;
  std::error_code code;
  const fs::path directory = fs::path(base).parent_path();
  if (!directory.empty() && !fs::is_directory(directory, code)) {
    fs::create_directories(directory, code);
    if (code) {
      error = "cannot create output directory '" + directory.string() + "': " + code.message();
      return false;
    }
  }
  std::vector<std::string> created;
  for (HxU32 i = 0; i < writers.size(); ++i) {
    const std::string path = base + writers[i].fileExtension();
    const bool existed = fs::exists(path, code);
    errno = 0;
    std::ofstream probe(path, std::ios::out | std::ios::app);  // app: an existing file is left intact
    if (!probe) {
      error = "cannot write '" + path + "': " + (errno != 0 ? std::strerror(errno) : "cannot open the file");
      for (const std::string& file : created) fs::remove(file, code);
      return false;
    }
    if (!existed) created.push_back(path);
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 2 || (argc == 2 && argv[1][0] == '-')) {
    const bool help = argc == 2 && (std::strcmp(argv[1], "-h") == 0 || std::strcmp(argv[1], "--help") == 0);
    std::fputs("usage: pendulum_host [BASE]   writes BASE.csv, .xml, .mrd, .m, .nb (default BASE: pendulum)\n",
               help ? stdout : stderr);
    return help ? 0 : 2;
  }
  const std::string base = argc == 2 ? argv[1] : "pendulum";

  // The simulation and what to capture of it.
  PendulumSimulation simulation{PendulumModel()};
  HxSystemDataCapture capture;
  if (!configureCapture(simulation.manipulators()[0], capture)) {
    std::fprintf(stderr, "pendulum_host: error: the library refused the capture configuration\n");
    return 1;
  }

  // The five writers, and a check that each one's file can be written.
  const HxOutputWriterVector writers = writerList<HxTextOutputWriter, HxXmlOutputWriter, HxMrdOutputWriter,
                                                  HxMatlabOutputWriter, HxMathematicaOutputWriter>();
  std::string error;
  if (!checkOutputWritable(base, writers, error)) {
    std::fprintf(stderr, "pendulum_host: error: %s\n", error.c_str());
    return 1;
  }

  // The recorder, shaped to the capture; the files get their headers and column labels.
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(writers);
  recorder.allocateStorage(capture);
  recorder.beginSaveToFile(base);

  int samples = 0;
  int incomplete = 0;
  for (int step = 0; step <= kStepCount; ++step) {
    // Step the simulation at 1 kHz (the first sample is the initial state).
    if (step > 0) simulation.step();
    if (step % kStepsPerSample != 0) continue;

    // Every 10 ms, each captured quantity reads the simulation; false when one could not.
    if (!capture.captureData(simulation)) ++incomplete;

    // The sample, stamped with its simulated time, goes to all five files.
    recorder.saveCapturedData(simulation.time(), capture);
    ++samples;
  }

  // Trailers written, files closed.
  recorder.finishSaveToFile();

  // The summary: columns as the library shapes a sample record (time and path-point index
  // included), extensions as the writers name them.
  HxSystemDataStorage record;
  capture.allocateStorage(record);
  std::string extensions;
  for (HxU32 i = 0; i < writers.size(); ++i) extensions += (i == 0 ? "" : ",") + writers[i].fileExtension().substr(1);
  if (incomplete > 0) {
    std::fprintf(stderr, "pendulum_host: warning: %d samples lack a quantity the simulation does not provide\n",
                 incomplete);
  }
  std::printf("Recorded %d samples of %u columns into %s.{%s}\n", samples, record.elementSize(), base.c_str(),
              extensions.c_str());
  return 0;
}
