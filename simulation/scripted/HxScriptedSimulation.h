#pragma once
// HxScriptedSimulation: a simulation whose every state and computed answer is set directly,
// for tests and examples; HxScriptedKinematics, the kinematics it gives its manipulators.

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "framework/HxTypes.h"
#include "simulation/HxManipulatorKinematics.h"
#include "simulation/HxSystemSimulation.h"

/// Kinematics that answer what was set: a placement, velocity and acceleration per end
/// effector and one centre of mass, or, when a function is set for a query, whatever the
/// function computes from the state it is given (so a test can check which state a caller
/// passes). resolvePlacement() returns the held entry unchanged: entries are taken as world
/// placements. Queries for an end effector at or past the count given at construction return
/// false with the identity placement / zero motion.
class HxScriptedKinematics : public HxManipulatorKinematics {
 public:
  using PlacementFunction = std::function<HxEndEffectorPlacement(HxU32, const HxManipulatorActiveState&)>;
  using MotionFunction = std::function<HxGeneralMotion(HxU32, const HxManipulatorActiveState&)>;
  using CenterOfMassFunction = std::function<HxVector(const HxManipulatorActiveState&)>;

  /// Answers for `endEffectorCount` end effectors: identity placements, zero motions, zero
  /// centre of mass.
  explicit HxScriptedKinematics(HxU32 endEffectorCount);

  /// Number of end effectors answered for.
  HxU32 endEffectorCount() const { return static_cast<HxU32>(placements_.size()); }

  /// Set the answer for end effector `e`; false when `e` is not below endEffectorCount().
  HxBoolean setPlacement(HxU32 e, const HxEndEffectorPlacement& placement);
  HxBoolean setVelocity(HxU32 e, const HxGeneralMotion& velocity);
  HxBoolean setAcceleration(HxU32 e, const HxGeneralMotion& acceleration);
  void setCenterOfMass(const HxVector& centerOfMass) { centerOfMass_ = centerOfMass; }

  /// Compute the answer with `function` instead of the set value; an empty function restores
  /// the set values.
  void setPlacementFunction(PlacementFunction function) { placementFunction_ = std::move(function); }
  void setVelocityFunction(MotionFunction function) { velocityFunction_ = std::move(function); }
  void setAccelerationFunction(MotionFunction function) { accelerationFunction_ = std::move(function); }
  void setCenterOfMassFunction(CenterOfMassFunction function) { centerOfMassFunction_ = std::move(function); }

  HxBoolean endEffectorPlacement(HxU32 endEffector, const State& state, HxEndEffectorPlacement& out) const override;
  HxBoolean endEffectorVelocity(HxU32 endEffector, const State& state, HxGeneralMotion& out) const override;
  HxBoolean endEffectorAcceleration(HxU32 endEffector, const State& state, HxGeneralMotion& out) const override;
  HxBoolean centerOfMass(const State& state, HxVector& out) const override;
  /// The held entry `endEffector` unchanged; false (identity) when it is not below entry.size().
  HxBoolean resolvePlacement(const HxManipulatorEndEffectorPlacement& entry, HxU32 endEffector,
                             const HxPositionState& state, HxEndEffectorPlacement& out) const override;

 private:
  std::vector<HxEndEffectorPlacement> placements_;
  std::vector<HxGeneralMotion> velocities_;
  std::vector<HxGeneralMotion> accelerations_;
  HxVector centerOfMass_;
  PlacementFunction placementFunction_;
  MotionFunction velocityFunction_;
  MotionFunction accelerationFunction_;
  CenterOfMassFunction centerOfMassFunction_;
};

/// A simulation set entirely by its user, for tests and examples.
///
///     HxScriptedSimulation sim(2 /*manipulators*/, 7 /*joints*/, 2 /*end effectors*/);
///     sim.setDynamicsEnabled(true);
///     sim.activeState(0).mutablePositionState().setJointPositions({0.1, 0.2, 0, 0, 0, 0, 0});
///     sim.setEndEffectorPlacement(0, 1, HxEndEffectorPlacement({0.5, 0, 0.3}, HxOrientation()));
///     sim.advanceTime(0.01);
///
/// Every per-manipulator vector is sized to the number of manipulators and every per-joint
/// vector to the number of joints, all zero; a test that needs a shorter vector resizes it
/// through the public mutable accessors (mutableActiveStates() etc.). Each manipulator has
/// one link per joint (identifier "link<j>" or as given, index j), frame end effectors, drives
/// of ratio 1 without converter, and an HxScriptedKinematics. Initially the system state is
/// present, dynamics are off, power data is unavailable and the time is 0.
///
/// The shortcut accessors taking a manipulator index `m` do not check it: it must be below
/// numberOfManipulators().
class HxScriptedSimulation : public HxSystemSimulation {
 public:
  /// `manipulators` manipulators of `joints` joints (links "link0", "link1", ...) and
  /// `endEffectors` end effectors each.
  HxScriptedSimulation(HxU32 manipulators, HxU32 joints, HxU32 endEffectors);
  /// As above with one link per identifier in `linkIdentifiers` (the joint count is its size).
  HxScriptedSimulation(HxU32 manipulators, const std::vector<std::string>& linkIdentifiers, HxU32 endEffectors);

  // Switches and time.
  using HxSystemSimulation::setControlOutputTime;
  using HxSystemSimulation::setDynamicsEnabled;
  using HxSystemSimulation::setPowerDataAvailable;
  using HxSystemSimulation::setSystemStatePresent;
  /// Adds `dt` seconds to the control output time.
  void advanceTime(double dt) { setControlOutputTime(controlOutputTime() + dt); }

  // What the system is made of (none set initially: joint kinds Unknown, no end-effector names).
  using HxSystemSimulation::setEndEffectorNames;
  using HxSystemSimulation::setJointKinds;

  // Whole vectors, for tests that resize or replace them.
  using HxSystemSimulation::mutableActiveStates;
  using HxSystemSimulation::mutableControlOutputPositionStates;
  using HxSystemSimulation::mutableControlOutputVelocityStates;
  using HxSystemSimulation::mutableDesiredEndEffectorPlacements;
  using HxSystemSimulation::mutableEndEffectorPlacements;
  using HxSystemSimulation::mutableIndividualSimulators;
  using HxSystemSimulation::mutableManipulatorControlInputs;
  using HxSystemSimulation::mutableManipulatorExternalForces;
  using HxSystemSimulation::mutableManipulators;
  using HxSystemSimulation::mutableManipulatorTorques;
  using HxSystemSimulation::mutablePropagationResults;
  using HxSystemSimulation::mutableSystemPositionStates;
  using HxSystemSimulation::mutableSystemVelocityStates;

  // Entry m of each vector.
  HxPositionState& systemPositionState(HxU32 m) { return mutableSystemPositionStates()[m]; }
  HxVelocityState& systemVelocityState(HxU32 m) { return mutableSystemVelocityStates()[m]; }
  HxManipulatorActiveState& activeState(HxU32 m) { return mutableActiveStates()[m]; }
  HxPositionState& controlOutputPositionState(HxU32 m) { return mutableControlOutputPositionStates()[m]; }
  HxVelocityState& controlOutputVelocityState(HxU32 m) { return mutableControlOutputVelocityStates()[m]; }
  HxIndividualDynamicSimulator& individualSimulator(HxU32 m) { return mutableIndividualSimulators()[m]; }
  HxIndividualManipulator& manipulator(HxU32 m) { return mutableManipulators()[m]; }
  HxManipulatorControlInput& controlInput(HxU32 m) { return mutableManipulatorControlInputs()[m]; }
  HxManipulatorTorque& torque(HxU32 m) { return mutableManipulatorTorques()[m]; }
  HxManipulatorExternalForce& externalForce(HxU32 m) { return mutableManipulatorExternalForces()[m]; }
  HxManipulatorEndEffectorPlacement& endEffectorPlacementEntry(HxU32 m) { return mutableEndEffectorPlacements()[m]; }
  HxManipulatorEndEffectorPlacement& desiredPlacementEntry(HxU32 m) { return mutableDesiredEndEffectorPlacements()[m]; }
  HxPropagationResultData& propagationResult(HxU32 m) { return mutablePropagationResults()[m]; }
  /// The scripted kinematics of manipulator m.
  HxScriptedKinematics& kinematics(HxU32 m) { return *kinematics_[m]; }

  // State shortcuts that keep related vectors consistent.

  /// Sets manipulator m's active state in activeStates() and in its dynamic simulator.
  void setActiveState(HxU32 m, const HxManipulatorActiveState& state);
  /// Sets manipulator m's joint positions everywhere: system position state, control output
  /// position state, active state and the dynamic simulator's active state.
  void setJointPositions(HxU32 m, const std::vector<double>& positions);
  /// As setJointPositions(), for the joint velocities.
  void setJointVelocities(HxU32 m, const std::vector<double>& velocities);

  // Computed answers (forwarded to kinematics(m)); false when e is out of range.
  HxBoolean setEndEffectorPlacement(HxU32 m, HxU32 e, const HxEndEffectorPlacement& placement);
  HxBoolean setEndEffectorVelocity(HxU32 m, HxU32 e, const HxGeneralMotion& velocity);
  HxBoolean setEndEffectorAcceleration(HxU32 m, HxU32 e, const HxGeneralMotion& acceleration);
  void setCenterOfMass(HxU32 m, const HxVector& centerOfMass) { kinematics(m).setCenterOfMass(centerOfMass); }

  /// Sets the placement end effector e of manipulator m is asked to reach (entry e of
  /// desiredEndEffectorPlacements()[m], grown when needed); it is resolved unchanged.
  void setDesiredPlacement(HxU32 m, HxU32 e, const HxEndEffectorPlacement& placement);
  /// Sets entry e of endEffectorPlacements()[m] (grown when needed), the placement the
  /// kinematic path reports; it is resolved unchanged.
  void setHeldPlacement(HxU32 m, HxU32 e, const HxEndEffectorPlacement& placement);
  /// Sets the kind of end effector e of manipulator m; false when there is no such one.
  HxBoolean setEndEffectorToken(HxU32 m, HxU32 e, const HxToken& token) {
    return manipulator(m).setEndEffectorToken(e, token);
  }

 private:
  std::vector<std::shared_ptr<HxScriptedKinematics>> kinematics_;
};
