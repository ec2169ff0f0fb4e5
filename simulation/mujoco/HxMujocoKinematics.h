#pragma once
// HxMujocoKinematics: the kinematics of one manipulator, answered by MuJoCo on scratch engine
// data. Internal to simulation/mujoco.

#include <memory>
#include <vector>

#include <mujoco/mujoco.h>

#include "simulation/HxManipulatorKinematics.h"
#include "simulation/mujoco/HxMujocoHandles.h"
#include "simulation/mujoco/HxMujocoLayout.h"

class HxPositionState;
class HxVelocityState;
class HxAccelerationState;

/// Answers end-effector placement, velocity, acceleration and centre of mass of one
/// manipulator for any active state: the state is written into a scratch mjData of its own
/// (made at set-up) and MuJoCo evaluates it (mj_kinematics, mj_comPos, mj_comVel,
/// mj_rnePostConstraint, mj_objectVelocity, mj_objectAcceleration). The other manipulators in
/// the scratch data stay at the model's reference configuration; they do not influence the
/// result because trees are independent.
///
/// Results are in the world frame; motions are of the end-effector frame origin, linear then
/// angular. Accelerations are kinematic (gravity removed). A fixed base takes its placement
/// from the model; a free base takes it from the state. Queries do not allocate; they are not
/// thread-safe (one scratch per object).
///
/// Repeated queries for one state are answered from the evaluation already on the scratch
/// data: each stage (positions; velocities; accelerations) is evaluated again only when an
/// input it depends on differs bit for bit from what was loaded last, so the placement,
/// velocity, acceleration and centre of mass of every end effector of one sample cost one
/// evaluation, whichever state object (the simulation's, a copy, one built by the caller)
/// hands the values in.
class HxMujocoKinematics : public HxManipulatorKinematics {
 public:
  HxMujocoKinematics(HxMujocoModelPtr model, std::shared_ptr<const HxMujocoManipulatorLayout> layout);
  HxMujocoKinematics(const HxMujocoKinematics&) = delete;
  HxMujocoKinematics& operator=(const HxMujocoKinematics&) = delete;

  HxBoolean endEffectorPlacement(HxU32 endEffector, const State& state, HxEndEffectorPlacement& out) const override;
  HxBoolean endEffectorVelocity(HxU32 endEffector, const State& state, HxGeneralMotion& out) const override;
  HxBoolean endEffectorAcceleration(HxU32 endEffector, const State& state, HxGeneralMotion& out) const override;
  HxBoolean centerOfMass(const State& state, HxVector& out) const override;

 private:
  /// Stages of an evaluation, in order; each needs the ones before it.
  enum class Stage { None, Position, Velocity, Acceleration };
  /// Makes the scratch data hold `state` evaluated up to `stage`, re-evaluating only the
  /// stages whose inputs changed since the last call; false when the state's sizes do not
  /// match the manipulator (the stages evaluated so far stay valid).
  bool evaluate(const State& state, Stage stage) const;
  /// The velocity or the acceleration stage (`stage`) of evaluate(): loads the joint values
  /// `joints` into qvel or qacc and, for a free base, `base` into `held` (baseVelocity_ or
  /// baseAcceleration_) and the free joint; the positions must be evaluated.
  bool evaluateMotion(Stage stage, const std::vector<double>& joints, const HxGeneralMotion& base,
                      double held[6]) const;
  /// endEffectorVelocity() (`stage` Velocity) or endEffectorAcceleration() (`stage` Acceleration).
  bool endEffectorMotion(HxU32 endEffector, const State& state, Stage stage, HxGeneralMotion& out) const;

  HxMujocoModelPtr model_;
  std::shared_ptr<const HxMujocoManipulatorLayout> layout_;
  HxMujocoDataPtr scratch_;
  // What the scratch data holds: the last stage evaluated, and the free base's inputs as the
  // caller gave them (the scratch keeps them normalised and rotated). Joint inputs are
  // compared with the scratch's qpos, qvel and qacc themselves.
  mutable Stage evaluated_ = Stage::None;
  mutable double basePlacement_[7] = {};     // translation, then orientation (w, x, y, z)
  mutable double baseVelocity_[6] = {};      // linear, then angular, world frame
  mutable double baseAcceleration_[6] = {};  // linear, then angular, world frame
};
