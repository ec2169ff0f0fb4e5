#pragma once
// HxMujocoLayout: how a compiled MuJoCo model is divided into manipulators, links, joints,
// drives and end effectors. Internal to simulation/mujoco.

#include <memory>
#include <string>
#include <vector>

#include <mujoco/mujoco.h>

#include "framework/HxTypes.h"
#include "simulation/HxEndEffectorPlacement.h"

/// One end effector: a site (MJCF) or a body (URDF link) whose name carries an end-effector
/// prefix.
struct HxMujocoEndEffectorLayout {
  std::string name;    ///< name without the prefix
  int objectType = 0;  ///< mjOBJ_SITE, or mjOBJ_XBODY: the body frame (mjOBJ_BODY is its centre of mass)
  int objectId = -1;
  bool point = false;  ///< true: point end effector, false: frame end effector
};

/// One manipulator: a kinematic tree under the world body that carries hinge or slide joints.
struct HxMujocoManipulatorLayout {
  std::string name;  ///< name of the root body
  int rootBody = -1;
  int freeJoint = -1;  ///< free joint of the root body, -1 for a fixed base
  int freeQposAddress = -1;
  int freeDofAddress = -1;
  std::vector<std::string> linkNames;  ///< per link (= per joint), body name
  std::vector<int> linkBodies;
  std::vector<int> joints;
  std::vector<int> qposAddresses;
  std::vector<int> dofAddresses;
  std::vector<int> actuators;  ///< actuator driving the joint, -1 when none
  std::vector<HxMujocoEndEffectorLayout> endEffectors;
  std::vector<HxEndEffectorPlacement> pathPoints;  ///< world placements from "path:" sites

  HxU32 jointCount() const { return static_cast<HxU32>(joints.size()); }
};

/// Prefixes of the naming conventions (documented in simulation/mujoco/README.md).
namespace HxMujocoNames {
inline constexpr const char* kFrameEndEffectorPrefix = "ee_frame:";
inline constexpr const char* kPointEndEffectorPrefix = "ee_point:";
inline constexpr const char* kPathPointPrefix = "path:";
}  // namespace HxMujocoNames

/// Divides `model` into manipulators. `data` must hold the model's initial state with
/// kinematics evaluated (path-point sites are read from it). Returns false with a message in
/// `error` when a manipulator breaks the conventions (a body with more than one joint, a ball
/// joint, a free joint below the root).
HxBoolean hxMujocoBuildLayouts(const mjModel* model, const mjData* data,
                               std::vector<HxMujocoManipulatorLayout>& layouts, std::string& error);

/// The actuator's efficiency when it is declared as a DC electric motor (first user value
/// positive), else 0.
double hxMujocoMotorEfficiency(const mjModel* model, int actuator);

/// The manipulators of one model, shared by the simulation, its controller and each
/// manipulator's kinematics.
using HxMujocoLayouts = std::vector<std::shared_ptr<const HxMujocoManipulatorLayout>>;
