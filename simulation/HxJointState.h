#pragma once
/// \file
/// HxJointState: the storage, construction and comparison of the per-joint states, and
/// HX_JOINT_STATE_ACCESSORS, which declares their accessors under each state's own names.

#include <utility>
#include <vector>

#include "framework/HxTypes.h"

/// One value per joint of one manipulator and the matching quantity of its base: what
/// HxPositionState (joint positions, base placement), HxVelocityState and HxAccelerationState
/// (joint velocities or accelerations, base motion) hold. Each of them declares the accessors
/// under its own names with HX_JOINT_STATE_ACCESSORS. `Derived` is the state built on it, so that
/// only states of one kind compare; `Base` is the type of the base quantity, whose default is
/// the identity placement or rest.
template <class Derived, class Base>
class HxJointState {
 public:
  /// No joints, base quantity at its default.
  HxJointState() = default;
  /// `jointCount` joints at 0, base quantity at its default.
  explicit HxJointState(HxU32 jointCount) : joints_(jointCount, 0.0) {}
  /// The given joint values and base quantity.
  HxJointState(std::vector<double> joints, const Base& base = Base()) : joints_(std::move(joints)), base_(base) {}

  /// Exact equality of every joint value and of the base quantity.
  bool operator==(const Derived& other) const { return joints_ == other.joints_ && base_ == other.base_; }
  /// Negation of `operator==`.
  bool operator!=(const Derived& other) const { return !(*this == other); }

 protected:
  /// The type of the base quantity.
  using BaseQuantity = Base;

  /// The joint values, one per joint; assignment reuses the held storage when it is large enough.
  std::vector<double> joints_;
  /// The base quantity.
  Base base_;
};

/// Declares, inside a class built on HxJointState, the accessors of its joint values and base
/// quantity under the names the state gives them: `JointsName()` returns the joint values, one
/// per joint; `MutableJointsName()` the writable values, for the simulation that produces them
/// (it refreshes them in place); `SetJointsName(values)` replaces them, reusing the held storage
/// when it is large enough; `BaseName()` returns the base quantity and `SetBaseName(value)`
/// replaces it. Written with a semicolon after it.
#define HX_JOINT_STATE_ACCESSORS(JointsName, MutableJointsName, SetJointsName, BaseName, SetBaseName) \
  /** The joint values, one per joint. */                                                             \
  const std::vector<double>& JointsName() const { return joints_; }                                   \
  /** Writable joint values, for the simulation that produces them (refresh in place). */             \
  std::vector<double>& MutableJointsName() { return joints_; }                                        \
  /** Replaces the joint values; reuses the held storage when it is large enough. */                  \
  void SetJointsName(const std::vector<double>& values) { joints_ = values; }                         \
  /** The base quantity: the placement or the motion of the base. */                                  \
  const BaseQuantity& BaseName() const { return base_; }                                              \
  /** Replaces the base quantity. */                                                                  \
  void SetBaseName(const BaseQuantity& value) { base_ = value; }                                      \
  static_assert(true, "")
