#pragma once
// Owning handles of MuJoCo's model and data: every mjModel and mjData of the engine is held
// by one of these from the moment it is made, so none is deleted by hand. Internal to
// simulation/mujoco.

#include <memory>

#include <mujoco/mujoco.h>

/// Deletes what MuJoCo made, with MuJoCo's own functions.
struct HxMujocoDeleter {
  void operator()(mjModel* model) const { mj_deleteModel(model); }
  void operator()(mjData* data) const { mj_deleteData(data); }
};

/// Sole owner of a compiled model, as a load returns it.
using HxMujocoModelOwner = std::unique_ptr<mjModel, HxMujocoDeleter>;
/// Shared owner of a compiled model: the simulation and each manipulator's kinematics, which a
/// host may keep after the simulation loaded another model. Made from an HxMujocoModelOwner,
/// whose deleter it keeps.
using HxMujocoModelPtr = std::shared_ptr<const mjModel>;
/// Sole owner of engine data.
using HxMujocoDataPtr = std::unique_ptr<mjData, HxMujocoDeleter>;

/// Fresh data of `model` at its reference configuration.
inline HxMujocoDataPtr hxMujocoMakeData(const mjModel* model) { return HxMujocoDataPtr(mj_makeData(model)); }
