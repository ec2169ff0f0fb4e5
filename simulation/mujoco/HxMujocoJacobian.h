#pragma once
// HxMujocoJacobian: the Jacobian of one end effector restricted to its manipulator's joints,
// as the controller's inverse kinematics and the singularity flag use it. Internal to
// simulation/mujoco.

#include <cstddef>
#include <vector>

#include <mujoco/mujoco.h>

#include "simulation/mujoco/HxMujocoLayout.h"

/// Work buffers for the Jacobian of one end effector at a time, sized once at load so that
/// loading a Jacobian and testing it do not allocate.
class HxMujocoJacobian {
 public:
  /// Sizes the buffers for the manipulators `layouts` of `model`.
  void resize(const mjModel* model, const HxMujocoLayouts& layouts);

  /// Loads the Jacobian of end effector `e` of `layout` in evaluated data `d` (after
  /// mj_kinematics and mj_comPos): linear rows, then for a frame end effector the angular rows;
  /// one column per joint of the manipulator. Returns the number of rows (3 or 6).
  int load(const mjModel* model, const mjData* d, const HxMujocoManipulatorLayout& layout,
           const HxMujocoEndEffectorLayout& e);
  /// Number of rows of the Jacobian last loaded.
  int rows() const { return rows_; }
  /// Number of columns (joints) of the Jacobian last loaded.
  int columns() const { return columns_; }
  /// Entry (r, c) of the Jacobian last loaded.
  double operator()(int r, int c) const { return values_[static_cast<std::size_t>(r * columns_ + c)]; }

  /// True when the smallest singular value of the Jacobian last loaded is below `threshold`
  /// (never for a threshold of 0 or less).
  bool smallestSingularValueBelow(double threshold);

 private:
  std::vector<double> jacp_, jacr_;  // MuJoCo's 3 x nv translational and rotational Jacobians
  std::vector<double> values_;       // rows_ x columns_, row by row
  std::vector<double> gram_;         // up to 6 x 6
  int rows_ = 0;
  int columns_ = 0;
};
