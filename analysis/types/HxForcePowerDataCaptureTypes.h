#pragma once
/// \file
/// The force and power quantities. All four need dynamics: `captureData` returns false, with
/// zeroed columns, when the dynamics are off, when an index is out of range, or when the
/// simulation does not provide what the quantity is made of.

#include "analysis/types/HxDataCaptureType.h"

/// External wrench on a link (force X, Y, Z, moment X, Y, Z), from the dynamic simulation.
class HxExternalForceDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxExternalForceDataCaptureType);
  /// Read a row at a time (`HxJointRow`).
  HxJointRowSource jointRowSource() const override;
};

/// Structural (internal) wrench that a link transmits; false when the dynamics did not
/// compute a valid one for the link.
class HxStructuralForceDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxStructuralForceDataCaptureType);
};

/// Mechanical power of a whole manipulator: the sum of control torque times active joint
/// velocity over the joints that have both. Needs the simulation's power data.
class HxManipulatorPowerDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxManipulatorPowerDataCaptureType);
};

/// Power of the DC electric motor driving a joint: (drive scale factor * joint velocity) *
/// control torque / motor divisor. False for a joint without a converter or whose converter
/// is not an HxDcElectricMotor. Needs the simulation's power data.
class HxMotorPowerDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxMotorPowerDataCaptureType);
};
