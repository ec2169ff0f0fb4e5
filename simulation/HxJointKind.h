#pragma once
/// \file
/// HxJointKind: how a joint moves, which decides the units of its joint-space quantities.

/// How a joint moves. A revolute joint's position is an angle (rad), its torque a moment (N m);
/// a prismatic joint's position is a length (m), its torque a force (N).
enum class HxJointKind {
  Unknown,    ///< not known (no simulation, or the simulation does not say)
  Revolute,   ///< turns about an axis (MuJoCo hinge)
  Prismatic,  ///< slides along an axis (MuJoCo slide)
};
