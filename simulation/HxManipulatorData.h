#pragma once
/// \file
/// Per-manipulator data the simulation hands out besides its states:
/// HxManipulatorValues, HxManipulatorControlInput, HxManipulatorTorque, HxManipulatorExternalForce,
/// HxLinkForceState and HxPropagationResultData.

#include <utility>
#include <vector>

#include "framework/HxTypes.h"
#include "simulation/HxMath.h"

/// One value per joint (or per link) of one manipulator, held in a std::vector that the
/// simulation refreshes in place: the storage of HxManipulatorControlInput, HxManipulatorTorque
/// and HxManipulatorExternalForce.
template <class Value>
class HxManipulatorValues {
 public:
  /// No values.
  HxManipulatorValues() = default;
  /// The given values.
  explicit HxManipulatorValues(std::vector<Value> values) : values_(std::move(values)) {}

  /// The values.
  const std::vector<Value>& values() const { return values_; }
  /// Writable values, for the simulation that refreshes them in place.
  std::vector<Value>& mutableValues() { return values_; }
  /// Replaces the values; reuses the held storage when it is large enough.
  void setValues(const std::vector<Value>& values) { values_ = values; }

 private:
  std::vector<Value> values_;
};

/// The control input values of one manipulator, one per joint (units of the controller:
/// joint torques for torque-controlled joints).
class HxManipulatorControlInput : public HxManipulatorValues<double> {
 public:
  using HxManipulatorValues::HxManipulatorValues;
};

/// The joint torques (N m, or N for prismatic joints) that the control system applies to one
/// manipulator, one per joint.
class HxManipulatorTorque : public HxManipulatorValues<double> {
 public:
  using HxManipulatorValues::HxManipulatorValues;
};

/// The external wrenches acting on one manipulator's links, one per link (world frame).
class HxManipulatorExternalForce : private HxManipulatorValues<HxGeneralForce> {
 public:
  using HxManipulatorValues::HxManipulatorValues;

  /// The wrenches, one per link.
  const std::vector<HxGeneralForce>& forces() const { return values(); }
  /// Writable wrenches, for the simulation that refreshes them in place.
  std::vector<HxGeneralForce>& mutableForces() { return mutableValues(); }
  /// Replaces the wrenches.
  void setForces(const std::vector<HxGeneralForce>& forces) { setValues(forces); }
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
