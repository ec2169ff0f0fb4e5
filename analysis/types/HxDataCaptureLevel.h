#pragma once
/// \file
/// Level codes of the data capture types.

#include "framework/HxTypes.h"

/// Level codes of `HxDataCaptureType::type()`: where a type is captured, and so which capture
/// class accepts it.
namespace HxDataCaptureLevel {
/// Captured once per manipulator (`HxManipulatorDataCapture`).
constexpr HxU32 Manipulator = 0;
/// Captured per link (joint) of a manipulator (`HxLinkDataCapture`).
constexpr HxU32 Link = 1;
/// Captured per end effector of a manipulator (`HxEndEffectorDataCapture`).
constexpr HxU32 EndEffector = 2;
}  // namespace HxDataCaptureLevel
