#pragma once
/// \file
/// The Cartesian quantities: placements, motions and centre of mass of a manipulator's base
/// (manipulator level) and of its end effectors (end-effector level).
///
/// Placements have 7 columns (translation X, Y, Z, then orientation components 0 to 3 in the
/// order HxOrientation::operator[] gives them); motions 6 (linear X, Y, Z, angular X, Y, Z);
/// the centre of mass 3. `captureData` returns false, with the columns filled so far (zeros),
/// when an index is out of range or the source it needs is missing.

#include "analysis/types/HxDataCaptureType.h"
#include "simulation/HxEndEffectorPlacement.h"
#include "simulation/HxManipulatorActiveState.h"
#include "simulation/HxMath.h"

/// Placement of the manipulator's base: the dynamics' active state, or the system position
/// state when the dynamics are off (false when the system state is absent).
class HxBasePositionDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxBasePositionDataCaptureType);
};

/// Velocity of the manipulator's base: the dynamics' active state, or the system velocity
/// state when the dynamics are off (false when the system state is absent).
class HxBaseVelocityDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxBaseVelocityDataCaptureType);
};

/// Acceleration of the manipulator's base from the dynamic simulator; needs dynamics.
class HxBaseAccelerationDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxBaseAccelerationDataCaptureType);
};

/// Centre of mass of the whole manipulator, for the dynamic simulator's active state, or for
/// the system position state when the dynamics are off (false when it is absent).
class HxCenterOfMassDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxCenterOfMassDataCaptureType);

 private:
  /// Scratch state of the kinematic path, kept so that a capture does not allocate; only its
  /// position state is ever set.
  mutable HxManipulatorActiveState kinematicState_;
};

/// Placement of an end effector. With dynamics: computed by the manipulator for the active
/// state. Without: resolved from the simulation's held end-effector placements for the
/// system position state. Keeps its working state between samples, so one object serves one
/// end effector.
class HxEndEffectorPlacementDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxEndEffectorPlacementDataCaptureType);

 private:
  /// Working state, refreshed from the simulation when it has an entry for the manipulator.
  mutable HxManipulatorActiveState workingState_;
  /// The last computed placement.
  mutable HxEndEffectorPlacement placement_;
};

/// Velocity of an end effector, computed by the end effector for the working state (the
/// active state with dynamics, the system state without). Keeps its working state between
/// samples, so one object serves one end effector.
class HxEndEffectorVelocityDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxEndEffectorVelocityDataCaptureType);

 private:
  mutable HxManipulatorActiveState workingState_;
  /// Receives the end effector's six components before they are copied into the buffer.
  mutable HxGeneralMotion motion_;
};

/// Acceleration of an end effector, computed by the end effector for the active state; needs
/// dynamics. Keeps its working state between samples, so one object serves one end effector.
class HxEndEffectorAccelerationDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxEndEffectorAccelerationDataCaptureType);

 private:
  mutable HxManipulatorActiveState workingState_;
  /// Receives the end effector's six components before they are copied into the buffer.
  mutable HxGeneralMotion motion_;
};
