#pragma once
/// \file
/// HxMujocoSimulation: a multi-manipulator simulation run by the MuJoCo physics engine, with a
/// path-following controller, behind the HxSystemSimulation interface.

#include <memory>
#include <string>
#include <vector>

#include "framework/HxTypes.h"
#include "simulation/HxEndEffectorPlacement.h"
#include "simulation/HxSystemSimulation.h"

/// A MuJoCo model (MJCF or URDF) seen as a system of manipulators, stepped by the engine and
/// driven by a path-following controller. After every step all the queries of
/// HxSystemSimulation answer from the engine's state, refreshed in place without allocating.
///
///     HxMujocoSimulation sim;
///     if (!sim.loadFile("examples/models/two_arms_table.xml")) return 1;  // message printed
///     while (!sim.allPathsCompleted() && sim.time() < 20.0) {
///       sim.step();
///       capture.captureData(sim);
///       recorder.saveCapturedData(sim.time(), sim.pathPointIndex(0), capture);
///     }
///
/// Model conventions (end effectors, DC motors, path points, initial state), the controller
/// and the frames and units of every quantity are described in simulation/mujoco/README.md.
/// Not thread-safe: step and read on one thread.
class HxMujocoSimulation : public HxSystemSimulation {
 public:
  /// How the state advances.
  enum class Mode {
    Dynamic,    ///< the engine integrates the dynamics; the controller acts through the actuators
    Kinematic,  ///< the state follows the control output; kinematics only
  };

  /// An empty simulation (no model, no manipulators).
  HxMujocoSimulation();
  ~HxMujocoSimulation() override;

  /// Loads and compiles a model file (MJCF or URDF, by its content) and sets the system up in
  /// `mode` at its initial state. On failure returns false, prints an error message
  /// ("cannot load model '<file>': <engine message>"), keeps lastError() and leaves the
  /// simulation empty.
  HxBoolean loadFile(const std::string& fileName, Mode mode = Mode::Dynamic);
  /// As loadFile, from model text (MJCF or URDF). The model cannot refer to other files.
  /// Failure message: "cannot load model text: <engine message>".
  HxBoolean loadString(const std::string& modelText, Mode mode = Mode::Dynamic);
  /// A motor a host adds to a joint as the model is loaded: a MuJoCo `<motor>` actuator on the
  /// joint, declared as a DC electric motor of that efficiency (see README.md).
  struct AddedMotor {
    std::string joint;                 ///< the model's name of a hinge or slide joint that has no actuator
    double gear = 1.0;                 ///< the actuator's gear: joint torque (force) per unit of control
    double efficiency = 1.0;           ///< the motor's efficiency, in (0, 1]
    bool ctrlLimited = false;          ///< whether the control is clamped to ctrlRange
    double ctrlRange[2] = {0.0, 0.0};  ///< lower and upper limit of the control, when ctrlLimited
  };
  /// What a load adds to the model (none by default).
  struct LoadExtras {
    std::vector<AddedMotor> motors;  ///< motors to add, each on a joint of its own
  };
  /// As loadFile, with `extras` added to the model before it is set up. A failure of the extras
  /// (an unknown joint, a joint that has an actuator already, a value out of range) fails the
  /// load as any other does, and lastExtrasError() then says why ("motor on joint '<j>':
  /// <reason>").
  HxBoolean loadFile(const std::string& fileName, const LoadExtras& extras, Mode mode = Mode::Dynamic);
  /// As loadString, with `extras` added (see the loadFile above).
  HxBoolean loadString(const std::string& modelText, const LoadExtras& extras, Mode mode = Mode::Dynamic);
  /// True when a model is loaded.
  HxBoolean isLoaded() const;
  /// Message of the last failed load or step; empty after a success.
  const std::string& lastError() const;
  /// Why the last load failed on its extras; empty when it did not.
  const std::string& lastExtrasError() const;
  /// The version of the MuJoCo engine the simulation runs on, e.g. "2.2.2".
  static std::string engineVersion();

  /// Switches between dynamic and kinematic stepping; the control output restarts from the
  /// current state. False when no model is loaded.
  HxBoolean setMode(Mode mode);
  /// The stepping mode of the last successful load or `setMode`; `Mode::Dynamic` before any.
  Mode mode() const;

  /// Advances by one engine timestep and refreshes every query. Returns false when no model
  /// is loaded or the engine reported an unstable state (the state was reset by the engine;
  /// a warning is printed).
  HxBoolean step();
  /// Back to the initial state and the first path point of every manipulator.
  void reset();
  /// Simulation time, seconds.
  double time() const;
  /// Engine timestep, seconds (the model's option).
  double timestep() const;
  /// Mechanical energy of the whole model at time(), joules: kinetic plus potential (gravity
  /// and joint and tendon springs), as MuJoCo evaluates it (mj_energyPos, mj_energyVel) with
  /// every step. False, with `energy` 0, when no model is loaded or the model does not enable
  /// the engine's energy computation (MJCF `<option><flag energy="enable"/></option>`).
  HxBoolean mechanicalEnergy(double& energy) const;

  // Names.

  /// Name of manipulator m (its root body); empty when m is out of range.
  const std::string& manipulatorName(HxU32 m) const;
  // endEffectorName(m, e) (of HxSystemSimulation): name of end effector e of manipulator m
  // (site or body name without its prefix); empty when out of range. jointKind(m, j): hinge
  // joints are Revolute, slide joints Prismatic.

  // What the model declares without effect, for a host's warnings.

  /// Names of the model's sites named "path:..." that are no manipulator's path point (no
  /// manipulator has the root body they name, the number is missing, or the site is not on the
  /// world body), in model order.
  std::vector<std::string> unmatchedPathSites() const;
  /// How a joint is driven.
  enum class JointActuation {
    None,      ///< by no actuator
    Actuator,  ///< by an actuator not declared as a DC motor (its motor power is not computed)
    Motor,     ///< by a DC motor
  };
  /// How joint j of manipulator m is driven; None when out of range.
  JointActuation jointActuation(HxU32 m, HxU32 j) const;
  /// The model's name of joint j of manipulator m; empty when out of range.
  std::string jointName(HxU32 m, HxU32 j) const;

  // Path following. Path progress (a point reached, the dwell, the next point taken) moves
  // only with step(): the setters and reset() refresh the queries but never count a point as
  // reached.

  /// Replaces the path points of manipulator m (world placements of its controlled end
  /// effector) and restarts at the first. False when m is out of range.
  HxBoolean setPathPoints(HxU32 m, const std::vector<HxEndEffectorPlacement>& points);
  /// The path points of manipulator m (empty when m is out of range).
  const std::vector<HxEndEffectorPlacement>& pathPoints(HxU32 m) const;
  /// Index of the path point manipulator m is heading for or holding (0 when it has none or m
  /// is out of range).
  HxU32 pathPointIndex(HxU32 m) const;
  /// True when manipulator m has reached its last path point (false without path points).
  HxBoolean pathCompleted(HxU32 m) const;
  /// True when every manipulator with path points has completed its path.
  HxBoolean allPathsCompleted() const;
  /// Selects the end effector of manipulator m that follows the path (default 0). False when
  /// out of range.
  HxBoolean setControlledEndEffector(HxU32 m, HxU32 e);
  /// Tolerances within which a path point counts as reached: distance (m) and rotation angle
  /// (rad; ignored for a point end effector). Defaults 0.001 and 0.001.
  void setReachTolerances(double translation, double orientation);
  /// Time (s) a reached path point is held before the next one is taken (default 0: the next
  /// step heads for the next point).
  void setDwellTime(double seconds);

  // Event thresholds.

  /// Smallest singular value of an end-effector Jacobian below which the singularity flag is
  /// raised (default 0.001).
  void setSingularityThreshold(double threshold);
  /// The current singularity threshold.
  double singularityThreshold() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
  /// Ends a load: prints the error of a failed one (`adopted` false), else sets the system up
  /// for the model the engine part adopted and starts it in `mode`.
  HxBoolean finishLoad(bool adopted, Mode mode);
  /// Refreshes every query from the engine data, in place; path progress is left as it is.
  void refresh();
};
