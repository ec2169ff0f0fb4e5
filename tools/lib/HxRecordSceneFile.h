#pragma once
// HxRecordSceneFile: hxrecord's scene side file (--scene), which adds motors and path points to
// a model (a URDF arm has neither), and the warnings about what a loaded scene lacks.

#include <string>
#include <vector>

#include "framework/HxTypes.h"
#include "simulation/HxEndEffectorPlacement.h"
#include "simulation/mujoco/HxMujocoSimulation.h"

/// What a scene side file adds to a model:
///
///     {"motors": [{"joint": "shoulder", "gear": 50, "efficiency": 0.85, "ctrlrange": [-1, 1]}],
///      "pathPoints": {"arm_base": [{"position": [0.3, 0, 0.4], "orientation": [1, 0, 0, 0]}]}}
///
/// Both keys are optional. A motor names a joint of the model; gear (default 1), efficiency (in
/// (0, 1], default 1) and ctrlrange (two numbers, the lower first; without it the control is not
/// limited) are optional. pathPoints maps a manipulator's root body name to its new path: world
/// positions (m) and orientations (quaternion w, x, y, z, normalised; default 1, 0, 0, 0).
struct HxRecordScene {
  /// One manipulator's path.
  struct Path {
    std::string manipulator;
    std::vector<HxEndEffectorPlacement> points;
  };
  /// The motors, handed to the simulation's load.
  HxMujocoSimulation::LoadExtras extras;
  /// The paths, in the order of the file.
  std::vector<Path> paths;
};

/// Reads the scene side file `file` into `scene`. Returns false with a one-line message in
/// `error` ("scene file 'F': ...": the line and column of a syntax error, the place of a value,
/// "motors[1].gear: expected a number, found a string") for a file that cannot be read, is not
/// JSON or does not have the form above (an unknown key included).
HxBoolean hxReadRecordScene(const std::string& file, HxRecordScene& scene, std::string& error);

/// Gives each path of `scene` to the manipulator of `simulation` whose root body it names.
/// Returns false with a message in `error` for a name no manipulator has (naming those there
/// are); `file` and `modelName` name the files in it.
HxBoolean hxApplyRecordScenePaths(const HxRecordScene& scene, HxMujocoSimulation& simulation, const std::string& file,
                                  const std::string& modelName, std::string& error);

/// The warnings about the scene loaded in `simulation`, one line per object: a "path:" site that
/// is no path point, a manipulator without path points, a joint driven by no DC motor.
std::vector<std::string> hxRecordSceneWarnings(const HxMujocoSimulation& simulation);
