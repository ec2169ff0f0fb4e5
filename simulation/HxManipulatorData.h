#pragma once
/// \file
/// Per-manipulator data the simulation hands out besides its states:
/// HxManipulatorControlInput, HxManipulatorTorque, HxManipulatorExternalForce,
/// HxLinkForceState and HxPropagationResultData.

#include <utility>
#include <vector>

#include "framework/HxTypes.h"
#include "simulation/HxMath.h"

/// The control input values of one manipulator, one per joint (units of the controller:
/// joint torques for torque-controlled joints).
class HxManipulatorControlInput {
 public:
  /// No joints.
  HxManipulatorControlInput() = default;
  /// The given values, one per joint.
  explicit HxManipulatorControlInput(std::vector<double> values) : values_(std::move(values)) {}

  /// The values, one per joint.
  const std::vector<double>& values() const { return values_; }
  /// Writable values, for the simulation that refreshes them in place.
  std::vector<double>& mutableValues() { return values_; }
  /// Replaces the values.
  void setValues(const std::vector<double>& values) { values_ = values; }

 private:
  std::vector<double> values_;
};

/// The joint torques (N m, or N for prismatic joints) that the control system applies to one
/// manipulator, one per joint.
class HxManipulatorTorque {
 public:
  /// No joints.
  HxManipulatorTorque() = default;
  /// The given torques, one per joint.
  explicit HxManipulatorTorque(std::vector<double> values) : values_(std::move(values)) {}

  /// The torques, one per joint.
  const std::vector<double>& values() const { return values_; }
  /// Writable torques, for the simulation that refreshes them in place.
  std::vector<double>& mutableValues() { return values_; }
  /// Replaces the torques.
  void setValues(const std::vector<double>& values) { values_ = values; }

 private:
  std::vector<double> values_;
};

/// The external wrenches acting on one manipulator's links, one per link (world frame).
class HxManipulatorExternalForce {
 public:
  /// No links.
  HxManipulatorExternalForce() = default;
  /// The given wrenches, one per link.
  explicit HxManipulatorExternalForce(std::vector<HxGeneralForce> forces) : forces_(std::move(forces)) {}

  /// The wrenches, one per link.
  const std::vector<HxGeneralForce>& forces() const { return forces_; }
  /// Writable wrenches, for the simulation that refreshes them in place.
  std::vector<HxGeneralForce>& mutableForces() { return forces_; }
  /// Replaces the wrenches.
  void setForces(const std::vector<HxGeneralForce>& forces) { forces_ = forces; }

 private:
  std::vector<HxGeneralForce> forces_;
};

/// The structural (internal) wrench that one link transmits to its parent, with a flag saying
/// whether the dynamics computed it. Default: not valid, zero wrench.
class HxLinkForceState {
 public:
  HxLinkForceState() = default;
  /// The wrench `force`, computed when `valid`.
  HxLinkForceState(HxBoolean valid, const HxGeneralForce& force) : valid_(valid), force_(force) {}

  /// True when force() holds a computed wrench.
  HxBoolean isValid() const { return valid_; }
  /// The wrench; meaningful only when isValid().
  const HxGeneralForce& force() const { return force_; }

  /// Sets whether the wrench was computed.
  void setValid(HxBoolean valid) { valid_ = valid; }
  /// Replaces the wrench.
  void setForce(const HxGeneralForce& force) { force_ = force; }

 private:
  HxBoolean valid_ = false;
  HxGeneralForce force_;
};

/// The result flags of one manipulator's last propagation (simulation) step. Default: all false.
class HxPropagationResultData {
 public:
  HxPropagationResultData() = default;
  /// The three flags as given.
  HxPropagationResultData(HxBoolean hitJointLimit, HxBoolean hitSingularity, HxBoolean collisionOccurred)
      : hitJointLimit_(hitJointLimit), hitSingularity_(hitSingularity), collisionOccurred_(collisionOccurred) {}

  /// True when a joint reached one of its limits during the step.
  HxBoolean hitJointLimit() const { return hitJointLimit_; }
  /// True when the manipulator passed through or near a kinematic singularity during the step.
  HxBoolean hitSingularity() const { return hitSingularity_; }
  /// True when a link of the manipulator was in contact during the step.
  HxBoolean collisionOccurred() const { return collisionOccurred_; }

  /// Sets the joint-limit flag.
  void setHitJointLimit(HxBoolean value) { hitJointLimit_ = value; }
  /// Sets the singularity flag.
  void setHitSingularity(HxBoolean value) { hitSingularity_ = value; }
  /// Sets the collision flag.
  void setCollisionOccurred(HxBoolean value) { collisionOccurred_ = value; }

 private:
  HxBoolean hitJointLimit_ = false;
  HxBoolean hitSingularity_ = false;
  HxBoolean collisionOccurred_ = false;
};
