#pragma once
// HxMujocoExtras: what a host adds to a model as it is loaded (motors on joints), and what the
// model names without it taking effect (path-point sites of no manipulator). Internal to
// simulation/mujoco.

#include <string>
#include <vector>

#include <mujoco/mujoco.h>

#include "simulation/mujoco/HxMujocoHandles.h"
#include "simulation/mujoco/HxMujocoLayout.h"
#include "simulation/mujoco/HxMujocoSimulation.h"

/// Adds `motors` to `model`, which must be the model the engine loaded last (from the file
/// `fileName`, or from text when `fileName` is empty): the engine saves that model as MJCF into
/// a private temporary file (removed at once), each motor becomes a `<motor>` actuator declared
/// as a DC electric motor in that text (with `<size nuser_actuator="1"/>` when the model has no
/// user value per actuator), and the text is loaded again as if it stood beside `fileName`, so
/// that the files the model refers to are found as before. On success `model` is the new model.
/// Returns false with a message in `error` ("motor on joint 'j': <reason>", or why the motors
/// cannot be added) and `model` unchanged otherwise.
bool hxMujocoAddMotors(HxMujocoModelOwner& model, const std::vector<HxMujocoSimulation::AddedMotor>& motors,
                       const std::string& fileName, std::string& error);

/// Names of the sites whose name starts with "path:" that are no path point of any of `layouts`,
/// in model order.
std::vector<std::string> hxMujocoUnmatchedPathSites(const mjModel* model, const HxMujocoLayouts& layouts);
