#pragma once
// HxMujocoRefresh: the published state of one manipulator, refreshed in place from evaluated
// engine data and the controller, one kind of state per function. Nothing here allocates or
// changes the controller. Internal to simulation/mujoco; the quantities, frames and units are
// described in simulation/mujoco/README.md.

#include <mujoco/mujoco.h>

#include "simulation/HxEndEffectorPlacement.h"
#include "simulation/HxIndividualDynamicSimulator.h"
#include "simulation/HxManipulatorActiveState.h"
#include "simulation/HxManipulatorData.h"
#include "simulation/mujoco/HxMujocoController.h"
#include "simulation/mujoco/HxMujocoJacobian.h"
#include "simulation/mujoco/HxMujocoLayout.h"

/// What the state of one manipulator is refreshed from.
struct HxMujocoRefreshSource {
  const mjModel* model;
  const mjData* data;  ///< evaluated at the current time
  const HxMujocoManipulatorLayout& layout;
  const HxMujocoControlState& control;
  bool dynamic;  ///< dynamic mode: accelerations and forces come from the engine
};

namespace HxMujocoRefresh {

/// Joint positions, velocities and accelerations; base placement (root body frame), velocity
/// and acceleration (of its origin).
void motion(const HxMujocoRefreshSource& in, HxManipulatorActiveState& active);

/// Net joint torques and the links' structural forces (`simulator`), the links' external
/// forces, the actuators' controls and their joint torques; zero forces in kinematic mode.
void forces(const HxMujocoRefreshSource& in, HxIndividualDynamicSimulator& simulator,
            HxManipulatorExternalForce& external, HxManipulatorControlInput& inputs, HxManipulatorTorque& torques);

/// The controller's joint positions and velocities, on the base of the `actual` state.
void controlOutput(const HxMujocoRefreshSource& in, const HxManipulatorActiveState& actual, HxPositionState& position,
                   HxVelocityState& velocity);

/// Every end effector's placement and desired placement, relative to `base`. The controlled
/// end effector is asked to reach the current path point, every other one to keep its offset
/// from the controlled one; without a path every end effector is asked to stay.
void placements(const HxMujocoRefreshSource& in, const HxCoordSystemXform& base,
                HxManipulatorEndEffectorPlacement& actual, HxManipulatorEndEffectorPlacement& desired);

/// The events of the state: a joint at a limit, an end effector's Jacobian with a singular
/// value below `singularityThreshold` (loaded into `jacobian`), a contact of the manipulator.
void events(const HxMujocoRefreshSource& in, HxMujocoJacobian& jacobian, double singularityThreshold,
            HxPropagationResultData& result);

}  // namespace HxMujocoRefresh
