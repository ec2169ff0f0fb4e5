#pragma once
/// \file
/// HxReachTargetDataCaptureType: whether an end effector has reached the placement asked of it.

#include "analysis/types/HxDataCaptureType.h"
#include "framework/HxXmlBasicType.h"
#include "simulation/HxEndEffectorPlacement.h"
#include "simulation/HxManipulatorActiveState.h"

/// End-effector-level quantity of 20 columns: a reached flag (1.0 or 0.0), the translation
/// error (distance) and orientation error (rotation angle, radians) between the actual and
/// the desired placement, the desired and the actual placement (translation X, Y, Z and
/// orientation components 0 to 3 each), and the joint-limit, singularity and collision flags
/// of the manipulator's last propagation step.
///
/// The end effector counts as reached when the translation error is not above
/// `translationTolerance` and, unless it is a point end effector
/// (HxControl::HxPointEndEffectorToken), the orientation error is not above
/// `orientationTolerance`. Both tolerances default to 0.001 and are serialised as
/// "translationTolerance" and "orientationTolerance".
///
/// The working state and the desired placement carry over between samples: a sample without
/// a desired placement for the end effector reuses the previous one. One object serves one end
/// effector of one manipulator.
class HxReachTargetDataCaptureType : public HxDataCaptureType {
  HX_DATA_CAPTURE_TYPE_MEMBERS(HxReachTargetDataCaptureType);

 public:
  /// Registers the base's components, then "translationTolerance" and "orientationTolerance".
  void registerComponents() override;

  /// Largest translation error (distance) that counts as reached.
  double translationTolerance() const { return translationTolerance_.value(); }
  /// Sets the translation tolerance; not checked (a negative one is never met).
  void setTranslationTolerance(double tolerance) { translationTolerance_ = tolerance; }
  /// Largest orientation error (rotation angle, radians) that counts as reached.
  double orientationTolerance() const { return orientationTolerance_.value(); }
  /// Sets the orientation tolerance; not checked (a negative one is never met by a frame end
  /// effector).
  void setOrientationTolerance(double tolerance) { orientationTolerance_ = tolerance; }

  /// The base comparison and both tolerances; the working members are not compared.
  bool operator==(const HxReachTargetDataCaptureType& other) const;

 private:
  HxXmlBasicType<double> translationTolerance_{0.001};
  HxXmlBasicType<double> orientationTolerance_{0.001};
  /// The state on which the actual placement is computed.
  mutable HxManipulatorActiveState workingState_;
  /// The target of the last sample in which one was available.
  mutable HxEndEffectorPlacement desiredPlacement_;
  /// The placement computed at this sample.
  mutable HxEndEffectorPlacement actualPlacement_;
};
