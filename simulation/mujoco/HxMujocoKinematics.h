#pragma once
// HxMujocoKinematics: the kinematics of one manipulator, answered by MuJoCo on scratch engine
// data. Internal to simulation/mujoco.

#include <cstdint>
#include <memory>
#include <vector>

#include <mujoco/mujoco.h>

#include "simulation/HxManipulatorKinematics.h"
#include "simulation/mujoco/HxMujocoHandles.h"
#include "simulation/mujoco/HxMujocoLayout.h"

class HxPositionState;
class HxVelocityState;
class HxAccelerationState;

/// The simulation's own engine data, as the kinematics of its manipulators may read it. The
/// simulation sets `data` after each evaluation of its state, with the stages that evaluation
/// covered, and clears it while the data changes and once it lets the data go.
struct HxMujocoLiveData {
  /// Stages of an evaluation, in order; each needs the ones before it.
  enum class Stage { None, Position, Velocity, Acceleration };
  /// The data, evaluated for the state it holds up to `stage`; null when not to be read.
  const mjData* data = nullptr;
  Stage stage = Stage::None;
};

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
/// A state that is, bit for bit, the one the simulation's own data holds (`live`) is answered
/// from that data, which the simulation has evaluated already, without evaluating anything;
/// the answers are the same bits, since the same engine functions see the same inputs. This
/// holds only for a fixed base whose trees carry no joint outside the manipulator and no mocap
/// body (so that nothing but its joints moves them); other manipulators always use the scratch.
///
/// Repeated queries for one state are answered from the evaluation already on the scratch
/// data: each stage (positions; velocities; accelerations) is evaluated again only when an
/// input it depends on differs bit for bit from what was loaded last, so the placement,
/// velocity, acceleration and centre of mass of every end effector of one sample cost one
/// evaluation, whichever state object (the simulation's, a copy, one built by the caller)
/// hands the values in.
class HxMujocoKinematics : public HxManipulatorKinematics {
 public:
  /// Kinematics of the manipulator `layout` of `model`, reading the simulation's data through
  /// `live` when given.
  HxMujocoKinematics(HxMujocoModelPtr model, std::shared_ptr<const HxMujocoManipulatorLayout> layout,
                     std::shared_ptr<const HxMujocoLiveData> live = nullptr);
  HxMujocoKinematics(const HxMujocoKinematics&) = delete;
  HxMujocoKinematics& operator=(const HxMujocoKinematics&) = delete;

  HxBoolean endEffectorPlacement(HxU32 endEffector, const State& state, HxEndEffectorPlacement& out) const override;
  HxBoolean endEffectorVelocity(HxU32 endEffector, const State& state, HxGeneralMotion& out) const override;
  HxBoolean endEffectorAcceleration(HxU32 endEffector, const State& state, HxGeneralMotion& out) const override;
  HxBoolean centerOfMass(const State& state, HxVector& out) const override;

  /// Evaluations made on the scratch data so far (a query answered from the simulation's data
  /// or from the scratch's last evaluation makes none).
  std::uint64_t scratchEvaluations() const { return scratchEvaluations_; }

 private:
  using Stage = HxMujocoLiveData::Stage;
  /// The simulation's data when it holds `state` evaluated up to `stage` and may be read for
  /// this manipulator; else null.
  const mjData* liveFor(const State& state, Stage stage) const;
  /// The data holding `state` evaluated up to `stage`: the simulation's, else the scratch,
  /// evaluated as needed; null when the state's sizes do not match the manipulator.
  const mjData* evaluated(const State& state, Stage stage) const;
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
  std::shared_ptr<const HxMujocoLiveData> live_;
  // Whether the simulation's data may answer for this manipulator (see the class comment).
  bool liveEligible_ = false;
  mutable std::uint64_t scratchEvaluations_ = 0;
  // What the scratch data holds: the last stage evaluated, and the free base's inputs as the
  // caller gave them (the scratch keeps them normalised and rotated). Joint inputs are
  // compared with the scratch's qpos, qvel and qacc themselves.
  mutable Stage evaluated_ = Stage::None;
  mutable double basePlacement_[7] = {};     // translation, then orientation (w, x, y, z)
  mutable double baseVelocity_[6] = {};      // linear, then angular, world frame
  mutable double baseAcceleration_[6] = {};  // linear, then angular, world frame
};
