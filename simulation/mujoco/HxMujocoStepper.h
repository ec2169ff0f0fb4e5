#pragma once
// HxMujocoStepper: how the engine data moves on by one step in either mode, with the
// controller in the loop, and how the state at one instant is evaluated. Internal to
// simulation/mujoco; the sequence is described in simulation/mujoco/README.md ("Modes and
// the step").

#include <string>

#include <mujoco/mujoco.h>

#include "simulation/mujoco/HxMujocoController.h"

/// Steps and evaluates one model's engine data. Remembers how many warnings of each kind the
/// engine had raised, to report each new one once.
class HxMujocoStepper {
 public:
  /// Takes the warnings the engine raised so far in `data` as reported (after a load or a reset).
  void acknowledgeWarnings(const mjData* data);

  /// Evaluates the whole state of `data` at its time: in dynamic mode the forward dynamics with
  /// the controller's joint control in the loop, in kinematic mode kinematics, collisions and,
  /// when the model asks for it, the energy.
  static void evaluate(const mjModel* model, mjData* data, bool dynamic, const HxMujocoController& controller);

  /// Advances `data` by one timestep: path progress and control outputs move on, the state is
  /// integrated (dynamic) or set to the control output (kinematic), the new state is evaluated
  /// and a path point it reaches is noted; path progress moves nowhere else. Engine warnings
  /// are printed, the last one kept in `error`; false when one of them means the engine reset
  /// an unstable state (the control output then restarts from it).
  bool step(const mjModel* model, mjData* data, bool dynamic, HxMujocoController& controller, std::string& error);

 private:
  /// Reports warnings raised since the last call; false when the state was unstable.
  bool collectWarnings(const mjData* data, std::string& error);

  int warningCounts_[mjNWARNING] = {};
};
