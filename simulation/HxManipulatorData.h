#pragma once
// Per-manipulator data the simulation hands out besides its states:
// HxManipulatorControlInput, HxManipulatorTorque, HxManipulatorExternalForce,
// HxLinkForceState and HxPropagationResultData.

#include <utility>
#include <vector>

#include "framework/HxTypes.h"
#include "simulation/HxMath.h"

/// The control input values of one manipulator, one per joint (units of the controller:
/// joint torques for torque-controlled joints).
class HxManipulatorControlInput {
 public:
  HxManipulatorControlInput() = default;
  explicit HxManipulatorControlInput(std::vector<double> values) : values_(std::move(values)) {}

  /// The values, one per joint.
  const std::vector<double>& values() const { return values_; }
  std::vector<double>& mutableValues() { return values_; }
  void setValues(const std::vector<double>& values) { values_ = values; }

 private:
  std::vector<double> values_;
};

/// The joint torques (N m, or N for prismatic joints) that the control system applies to one
/// manipulator, one per joint.
class HxManipulatorTorque {
 public:
  HxManipulatorTorque() = default;
  explicit HxManipulatorTorque(std::vector<double> values) : values_(std::move(values)) {}

  /// The torques, one per joint.
  const std::vector<double>& values() const { return values_; }
  std::vector<double>& mutableValues() { return values_; }
  void setValues(const std::vector<double>& values) { values_ = values; }

 private:
  std::vector<double> values_;
};

/// The external wrenches acting on one manipulator's links, one per link (world frame).
class HxManipulatorExternalForce {
 public:
  HxManipulatorExternalForce() = default;
  explicit HxManipulatorExternalForce(std::vector<HxGeneralForce> forces) : forces_(std::move(forces)) {}

  /// The wrenches, one per link.
  const std::vector<HxGeneralForce>& forces() const { return forces_; }
  std::vector<HxGeneralForce>& mutableForces() { return forces_; }
  void setForces(const std::vector<HxGeneralForce>& forces) { forces_ = forces; }

 private:
  std::vector<HxGeneralForce> forces_;
};

/// The structural (internal) wrench that one link transmits to its parent, with a flag saying
/// whether the dynamics computed it. Default: not valid, zero wrench.
class HxLinkForceState {
 public:
  HxLinkForceState() = default;
  HxLinkForceState(HxBoolean valid, const HxGeneralForce& force) : valid_(valid), force_(force) {}

  /// True when force() holds a computed wrench.
  HxBoolean isValid() const { return valid_; }
  /// The wrench; meaningful only when isValid().
  const HxGeneralForce& force() const { return force_; }

  void setValid(HxBoolean valid) { valid_ = valid; }
  void setForce(const HxGeneralForce& force) { force_ = force; }

 private:
  HxBoolean valid_ = false;
  HxGeneralForce force_;
};

/// The result flags of one manipulator's last propagation (simulation) step. Default: all false.
class HxPropagationResultData {
 public:
  HxPropagationResultData() = default;
  HxPropagationResultData(HxBoolean hitJointLimit, HxBoolean hitSingularity, HxBoolean collisionOccurred)
      : hitJointLimit_(hitJointLimit), hitSingularity_(hitSingularity), collisionOccurred_(collisionOccurred) {}

  /// True when a joint reached one of its limits during the step.
  HxBoolean hitJointLimit() const { return hitJointLimit_; }
  /// True when the manipulator passed through or near a kinematic singularity during the step.
  HxBoolean hitSingularity() const { return hitSingularity_; }
  /// True when a link of the manipulator was in contact during the step.
  HxBoolean collisionOccurred() const { return collisionOccurred_; }

  void setHitJointLimit(HxBoolean value) { hitJointLimit_ = value; }
  void setHitSingularity(HxBoolean value) { hitSingularity_ = value; }
  void setCollisionOccurred(HxBoolean value) { collisionOccurred_ = value; }

 private:
  HxBoolean hitJointLimit_ = false;
  HxBoolean hitSingularity_ = false;
  HxBoolean collisionOccurred_ = false;
};
