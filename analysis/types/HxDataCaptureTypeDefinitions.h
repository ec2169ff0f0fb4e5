#pragma once
/// \file
/// Definitions shared by every concrete data capture type; included only by the source files
/// of analysis/types/.

#include <string>
#include <vector>

#include "analysis/types/HxDataCaptureLevel.h"
#include "analysis/types/HxDataCaptureType.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxSystemSimulation.h"

/// Defines the members declared by HX_DATA_CAPTURE_TYPE_MEMBERS for `ClassName`: its token
/// (the module token named after the class, `HxSimAnalysis::ClassName##Token`), its
/// description, its level code and its column labels (the variadic list, in column order;
/// their number is the class's `m_theDataSize`).
#define HX_DATA_CAPTURE_TYPE_DEFINITIONS(ClassName, Description, Level, ...)                                           \
  namespace {                                                                                                          \
  const char* const ClassName##Labels[] = {__VA_ARGS__};                                                               \
  }                                                                                                                    \
  const std::string ClassName::m_theDescription(Description);                                                          \
  const HxU32 ClassName::m_theDataSize = static_cast<HxU32>(sizeof(ClassName##Labels) / sizeof(ClassName##Labels[0])); \
  ClassName::ClassName() { initializeColumns(m_theDataSize, ClassName##Labels); }                                      \
  HX_XML_SERIALISABLE_DEFINITIONS(ClassName, HxSimAnalysis::ClassName##Token)                                          \
  const std::string& ClassName::description() const { return m_theDescription; }                                       \
  HxU32 ClassName::dataSize() const { return m_theDataSize; }                                                          \
  HxU32 ClassName::type() const { return Level; }

/// Column labels of a placement: translation, then orientation quaternion.
#define HX_PLACEMENT_LABELS \
  "Translation X", "Translation Y", "Translation Z", "Quaternion 0", "Quaternion 1", "Quaternion 2", "Quaternion 3"
/// Column labels of a motion (velocity or acceleration): linear, then angular.
#define HX_MOTION_LABELS "Linear X", "Linear Y", "Linear Z", "Angular X", "Angular Y", "Angular Z"
/// Column labels of a force: force, then moment.
#define HX_FORCE_LABELS "Force X", "Force Y", "Force Z", "Moment X", "Moment Y", "Moment Z"

/// Look-ups shared by the concrete `captureData` functions.
namespace HxDataCaptureLookup {

/// Element `j` of the vector that `select` picks out of entry `m` of `perManipulator` (a
/// joint's value, a link's force...); null when `m` or `j` is out of range.
template <class Entry, class Select>
auto elementOf(const std::vector<Entry>& perManipulator, HxU32 m, HxU32 j, Select select)
    -> decltype(&select(perManipulator[m])[j]) {
  if (m >= perManipulator.size()) return nullptr;
  const auto& elements = select(perManipulator[m]);
  return j < elements.size() ? &elements[j] : nullptr;
}

/// Refreshes `working` from the simulation for manipulator `m`: the active state with dynamics,
/// the system position and velocity states without (both entries needed). Leaves it as it was
/// when the simulation has no entry for `m`.
inline void refreshWorkingState(const HxSystemSimulation& simulation, HxU32 m, HxManipulatorActiveState& working) {
  if (simulation.dynamicsEnabled()) {
    if (m < simulation.activeStates().size()) working = simulation.activeStates()[m];
    return;
  }
  if (!simulation.hasSystemState()) return;
  const std::vector<HxPositionState>& positions = simulation.systemPositionStates();
  const std::vector<HxVelocityState>& velocities = simulation.systemVelocityStates();
  if (m < positions.size() && m < velocities.size()) {
    working.setPositionState(positions[m]);
    working.setVelocityState(velocities[m]);
  }
}

/// Manipulator `m` when it exists and has an end effector `e`; null otherwise.
inline const HxIndividualManipulator* manipulatorWithEndEffector(const HxSystemSimulation& simulation, HxU32 m,
                                                                 HxU32 e) {
  if (m >= simulation.manipulators().size()) return nullptr;
  const HxIndividualManipulator& manipulator = simulation.manipulators()[m];
  return e < manipulator.numberOfEndEffectors() ? &manipulator : nullptr;
}

}  // namespace HxDataCaptureLookup
