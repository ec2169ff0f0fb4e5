#pragma once
// HxMujocoController: the path-following controller of every manipulator: damped
// least-squares inverse kinematics at the control output, joint PD control with gravity and
// Coriolis compensation, and path progress. Internal to simulation/mujoco; the controller is
// described in simulation/mujoco/README.md ("Controller").

#include <cstddef>
#include <vector>

#include <mujoco/mujoco.h>

#include "framework/HxTypes.h"
#include "simulation/HxEndEffectorPlacement.h"
#include "simulation/mujoco/HxMujocoHandles.h"
#include "simulation/mujoco/HxMujocoJacobian.h"
#include "simulation/mujoco/HxMujocoLayout.h"

/// Controller state of one manipulator.
struct HxMujocoControlState {
  std::vector<double> position;          ///< control output positions
  std::vector<double> velocity;          ///< control output velocities
  std::vector<double> previousVelocity;  ///< the velocities one step earlier
  std::vector<HxEndEffectorPlacement> path;
  HxU32 index = 0;          ///< path point headed for or held
  HxU32 controlled = 0;     ///< end effector that follows the path
  bool completed = false;   ///< the last path point was reached
  double reachedAt = -1.0;  ///< time the current path point was reached, negative before
};

/// The controller of every manipulator of one model. Its work buffers and its evaluation data
/// are made by setUp(), so that stepping does not allocate.
///
/// Path progress moves in two places only, both parts of a step: advancePaths() takes the next
/// path point once the current one was reached and held, updateProgress() notes a point
/// reached in the newly evaluated state. Changing a path or the controlled end effector
/// restarts or keeps the progress; it never moves it.
class HxMujocoController {
 public:
  /// Sets the controller up for `model` divided into `layouts`: control outputs at zero,
  /// paths from the layouts' path points. Tolerances and dwell time are kept.
  void setUp(HxMujocoModelPtr model, const HxMujocoLayouts& layouts);
  /// Drops the model and every manipulator.
  void clear();

  /// Number of manipulators.
  std::size_t size() const { return states_.size(); }
  /// Layout of manipulator k (k below size()).
  const HxMujocoManipulatorLayout& layout(std::size_t k) const { return *layouts_[k]; }
  /// Controller state of manipulator k (k below size()).
  const HxMujocoControlState& state(std::size_t k) const { return states_[k]; }
  /// True when manipulator k has a path to follow and an end effector to follow it with.
  bool follows(std::size_t k) const;

  /// Replaces the path of manipulator k and restarts it at its first point.
  void setPath(std::size_t k, const std::vector<HxEndEffectorPlacement>& points);
  /// Selects the end effector of manipulator k that follows the path; `e` is not checked.
  void setControlled(std::size_t k, HxU32 e) { states_[k].controlled = e; }
  /// Distance (m) and angle (rad) within which a path point counts as reached.
  void setReachTolerances(double translation, double orientation);
  /// Time (s) a reached path point is held before the next one is taken.
  void setDwellTime(double seconds) { dwellTime_ = seconds; }
  /// Every manipulator back to the first point of its path.
  void restartPaths();

  /// Restarts the control output from the joint positions in `data`, at rest. In kinematic
  /// mode the state is the control output, so the velocities in `data` (a free base's too)
  /// are set to zero as well.
  void restartOutputs(mjData* data, bool kinematic);
  /// Takes the next path point of every manipulator whose current one was reached and has
  /// been held for the dwell time at `time`.
  void advancePaths(double time);
  /// Moves every control output on by `dt`: inverse kinematics toward the current path point,
  /// evaluated at the control output on the base placement of `data`.
  void updateOutputs(const mjData* data, double dt);
  /// Sets the controls of `data` from joint PD control toward the control output. Needs the
  /// position and velocity stages of `data` (mj_step1).
  void applyJointControl(mjData* data) const;
  /// Notes the current path point of every manipulator as reached when its controlled end
  /// effector, in evaluated `data`, is within the tolerances of it.
  void updateProgress(const mjData* data);

 private:
  /// The inverse-kinematics update of manipulator k over `dt`, from the evaluated control data.
  void solveOutput(std::size_t k, double dt);

  HxMujocoModelPtr model_;
  HxMujocoLayouts layouts_;
  std::vector<HxMujocoControlState> states_;
  HxMujocoDataPtr controlData_;  // the control outputs, evaluated for the inverse kinematics
  HxMujocoJacobian jacobian_;
  double translationTolerance_ = 1e-3;
  double orientationTolerance_ = 1e-3;
  double dwellTime_ = 0.0;
};
