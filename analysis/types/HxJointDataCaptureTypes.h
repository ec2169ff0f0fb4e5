#pragma once
/// \file
/// The joint-space quantities: link-level data capture types of one column each.
///
/// `captureData(simulation, manipulatorIndex, elementIndex)` reads joint `elementIndex` of
/// manipulator `manipulatorIndex`; it returns false, with the column at 0.0, when an index is
/// out of range or (for the types that need them) the dynamics are off.

#include "analysis/types/HxDataCaptureType.h"

/// What a joint velocity computed by finite differences keeps of the previous sample.
struct HxJointSample {
  /// Control-output time of the sample.
  double time;
  /// Joint position at the sample.
  double position;
};

/// Joint position: the dynamics' active state, or the control output when the dynamics are
/// off.
class HxJointPositionDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxJointPositionDataCaptureType);
  /// Read a row at a time (`HxJointRow`).
  HxJointRowSource jointRowSource() const override;
};

/// Joint velocity. With dynamics: the active state's joint velocity. Without: the control
/// output's joint velocity when the control-output time has not advanced since the previous
/// sample (the first sample included), else the finite difference of the control output's
/// joint position over the time step. Keeps the previous time and position between samples,
/// so one object serves one joint.
class HxJointVelocityDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxJointVelocityDataCaptureType);
  /// Read a row at a time (`HxJointRow`).
  HxJointRowSource jointRowSource() const override;

 private:
  /// The previous sample; its time starts so high that the first sample never counts as a
  /// time step.
  mutable HxJointSample previous_{1e300, 0.0};
};

/// Joint acceleration from the dynamic simulator; needs dynamics.
class HxJointAccelerationDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxJointAccelerationDataCaptureType);
  /// Read a row at a time (`HxJointRow`).
  HxJointRowSource jointRowSource() const override;
};

/// Joint torque computed by the dynamic simulator; needs dynamics.
class HxJointTorqueDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxJointTorqueDataCaptureType);
  /// Read a row at a time (`HxJointRow`).
  HxJointRowSource jointRowSource() const override;
};

/// Control input value of the joint; needs dynamics. Not created from XML by
/// HxDataCaptureTypeVector.
class HxControlInputDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxControlInputDataCaptureType);
  /// Read a row at a time (`HxJointRow`).
  HxJointRowSource jointRowSource() const override;
};

/// Joint torque applied by the control system; needs dynamics.
class HxControlTorqueDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxControlTorqueDataCaptureType);
  /// Read a row at a time (`HxJointRow`).
  HxJointRowSource jointRowSource() const override;
};

/// Joint position of the control output, on either path. Not created from XML by
/// HxDataCaptureTypeVector.
class HxControlOutputJointPositionDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxControlOutputJointPositionDataCaptureType);
  /// Read a row at a time (`HxJointRow`).
  HxJointRowSource jointRowSource() const override;
};

/// Joint velocity of the control output, on either path.
class HxControlOutputJointVelocityDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxControlOutputJointVelocityDataCaptureType);
  /// Read a row at a time (`HxJointRow`).
  HxJointRowSource jointRowSource() const override;
};

/// The control output's actual joint velocity: the finite difference of its joint position
/// over the control-output time step (at the first sample, over the time since 0). Always
/// returns false, also after writing the velocity into its buffer: callers see the column as
/// not captured while `data()` holds the value. Keeps the previous time and position between
/// samples, so one object serves one joint. Not created from XML by HxDataCaptureTypeVector.
class HxControlOutputActualJointVelocityDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxControlOutputActualJointVelocityDataCaptureType);

 private:
  /// The previous sample, at time 0 before the first.
  mutable HxJointSample previous_{0.0, 0.0};
};
