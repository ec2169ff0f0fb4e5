#pragma once
/// \file
/// HxEndEffector and the end-effector kind tokens of namespace HxControl.

#include "framework/HxToken.h"
#include "framework/HxTypes.h"

class HxGeneralMotion;
class HxIndividualManipulator;
class HxManipulatorActiveState;

/// Kind tokens of end effectors.
namespace HxControl {
/// Kind of an end effector that is a point: it has a position but no orientation to reach.
inline const HxToken HxPointEndEffectorToken("pointEndEffector");
/// Kind of an end effector that is a full frame: position and orientation.
inline const HxToken HxFrameEndEffectorToken("frameEndEffector");
}  // namespace HxControl

/// One end effector of a manipulator: its index within the manipulator and its kind token
/// (HxControl::HxPointEndEffectorToken or HxControl::HxFrameEndEffectorToken).
class HxEndEffector {
 public:
  /// End effector 0, a frame.
  HxEndEffector() : token_(HxControl::HxFrameEndEffectorToken) {}
  /// End effector `index` of kind `token`; neither is checked.
  HxEndEffector(HxU32 index, const HxToken& token) : index_(index), token_(token) {}

  /// Index of the end effector within its manipulator.
  HxU32 index() const { return index_; }
  /// Kind of the end effector.
  const HxToken& token() const { return token_; }
  /// Replaces the kind; not checked.
  void setToken(const HxToken& token) { token_ = token; }

  /// Writes the six motion components (linear X, Y, Z, angular X, Y, Z) of this end
  /// effector's velocity, for `manipulator` (the one it belongs to) in `state`, into `out`.
  /// Returns false, with `out` zero, when the manipulator's kinematics cannot compute it.
  HxBoolean velocity(const HxIndividualManipulator& manipulator, const HxManipulatorActiveState& state,
                     HxGeneralMotion& out) const;
  /// As velocity(), for the acceleration.
  HxBoolean acceleration(const HxIndividualManipulator& manipulator, const HxManipulatorActiveState& state,
                         HxGeneralMotion& out) const;

 private:
  HxU32 index_ = 0;
  HxToken token_;
};
