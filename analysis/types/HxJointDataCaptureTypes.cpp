#include "analysis/types/HxJointDataCaptureTypes.h"

#include <typeinfo>
#include <vector>

#include "analysis/types/HxDataCaptureTypeDefinitions.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxSystemSimulation.h"

namespace {
const std::string versionString("3.0.0");

using HxDataCaptureLookup::elementOf;

const std::vector<double>& jointPositionsOf(const HxPositionState& state) { return state.jointPositions(); }
const std::vector<double>& jointVelocitiesOf(const HxVelocityState& state) { return state.jointVelocities(); }
const std::vector<double>& activeJointPositionsOf(const HxManipulatorActiveState& state) {
  return state.positionState().jointPositions();
}
const std::vector<double>& activeJointVelocitiesOf(const HxManipulatorActiveState& state) {
  return state.velocityState().jointVelocities();
}
const std::vector<double>& jointAccelerationsOf(const HxIndividualDynamicSimulator& simulator) {
  return simulator.jointAccelerations();
}
const std::vector<double>& jointTorquesOf(const HxIndividualDynamicSimulator& simulator) {
  return simulator.jointTorques();
}
const std::vector<double>& controlInputsOf(const HxManipulatorControlInput& input) { return input.values(); }
const std::vector<double>& controlTorquesOf(const HxManipulatorTorque& torque) { return torque.values(); }

// Joint j of manipulator m's control-output position; null when m or j is out of range.
const double* controlOutputPosition(const HxSystemSimulation& simulation, HxU32 m, HxU32 j) {
  return elementOf(simulation.controlOutputPositionStates(), m, j, jointPositionsOf);
}

// The finite difference of `position` over the time since the previous sample, into `column`;
// the position becomes the previous one. False, nothing changed, without a position.
bool differentiate(const double* position, double time, HxJointSample& previous, double& column) {
  if (position == nullptr) return false;
  column = (*position - previous.position) / (time - previous.time);
  previous.position = *position;
  return true;
}
}  // namespace

// Joint j of `row` into column 0 (reset to 0.0 first), as every plain joint read does.
#define HX_JOINT_ROW_CAPTURE(ClassName, row)                                                                     \
  HxBoolean ClassName::captureData(const HxSystemSimulation& simulation, const HxU32& m, const HxU32& j) const { \
    resetData();                                                                                                 \
    return row(simulation, m).read(j, &column(0));                                                               \
  }                                                                                                              \
  HxJointRowSource ClassName::jointRowSource() const { return {row, &typeid(ClassName), 1}; }

// A joint quantity of one column: element j of the per-joint vector that `select` picks out of
// entry m of `simulation.source()`; with `needsDynamics`, false (the column left at 0.0) when the
// simulation does not integrate the dynamics.
#define HX_JOINT_VALUE_TYPE(ClassName, Description, Label, needsDynamics, source, select)   \
  HX_DATA_CAPTURE_TYPE_DEFINITIONS(ClassName, Description, HxDataCaptureLevel::Link, Label) \
  namespace {                                                                               \
  HxJointRow ClassName##Row(const HxSystemSimulation& simulation, HxU32 m) {                \
    if ((needsDynamics) && !simulation.dynamicsEnabled()) return HxJointRow::absent();      \
    return HxJointRow::at(simulation.source(), m, select);                                  \
  }                                                                                         \
  }                                                                                         \
  HX_JOINT_ROW_CAPTURE(ClassName, ClassName##Row)

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxJointPositionDataCaptureType, "Joint Positions", HxDataCaptureLevel::Link,
                                 "Joint Position")

namespace {
HxJointRow jointPositionRow(const HxSystemSimulation& simulation, HxU32 m) {
  if (simulation.dynamicsEnabled()) return HxJointRow::at(simulation.activeStates(), m, activeJointPositionsOf);
  // Without dynamics the commanded state is the state.
  return HxJointRow::at(simulation.controlOutputPositionStates(), m, jointPositionsOf);
}
}  // namespace

HX_JOINT_ROW_CAPTURE(HxJointPositionDataCaptureType, jointPositionRow)

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxJointVelocityDataCaptureType, "Joint Velocities", HxDataCaptureLevel::Link,
                                 "Joint Velocity")

namespace {
// With dynamics, the active state's velocities; without, only captureData (it keeps history).
HxJointRow jointVelocityRow(const HxSystemSimulation& simulation, HxU32 m) {
  if (!simulation.dynamicsEnabled()) return HxJointRow::call();
  return HxJointRow::at(simulation.activeStates(), m, activeJointVelocitiesOf);
}
}  // namespace

HxJointRowSource HxJointVelocityDataCaptureType::jointRowSource() const {
  return {jointVelocityRow, &typeid(HxJointVelocityDataCaptureType), 1};
}

HxBoolean HxJointVelocityDataCaptureType::captureData(const HxSystemSimulation& simulation, const HxU32& m,
                                                      const HxU32& j) const {
  resetData();
  // With dynamics the active state holds the velocity; the history is left alone.
  if (simulation.dynamicsEnabled()) return jointVelocityRow(simulation, m).read(j, &column(0));

  const double time = simulation.controlOutputTime();
  const double* position = controlOutputPosition(simulation, m, j);
  if (previous_.time >= time) {
    // No time step (the first sample included): take the control output's velocity and
    // remember the position for the next step.
    const double* velocity = elementOf(simulation.controlOutputVelocityStates(), m, j, jointVelocitiesOf);
    if (position == nullptr || velocity == nullptr) return false;
    previous_.position = *position;
    column(0) = *velocity;
  } else if (!differentiate(position, time, previous_, column(0))) {
    // Time advanced: the position is differentiated over the step.
    return false;
  }
  previous_.time = time;
  return true;
}

HX_JOINT_VALUE_TYPE(HxJointAccelerationDataCaptureType, "Joint Accelerations", "Joint Acceleration", true,
                    individualSimulators, jointAccelerationsOf)
HX_JOINT_VALUE_TYPE(HxJointTorqueDataCaptureType, "Joint Torques", "Joint Torque", true, individualSimulators,
                    jointTorquesOf)
HX_JOINT_VALUE_TYPE(HxControlInputDataCaptureType, "Control Input", "Control Input", true, manipulatorControlInputs,
                    controlInputsOf)
HX_JOINT_VALUE_TYPE(HxControlTorqueDataCaptureType, "Control Torques", "Control Torque", true, manipulatorTorques,
                    controlTorquesOf)
HX_JOINT_VALUE_TYPE(HxControlOutputJointPositionDataCaptureType, "Control Output Joint Positions", "Joint Position",
                    false, controlOutputPositionStates, jointPositionsOf)
HX_JOINT_VALUE_TYPE(HxControlOutputJointVelocityDataCaptureType, "Control Output Joint Velocities", "Joint Velocity",
                    false, controlOutputVelocityStates, jointVelocitiesOf)

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxControlOutputActualJointVelocityDataCaptureType,
                                 "Control Output Actual Joint Velocities", HxDataCaptureLevel::Link, "Joint Velocity")

HxBoolean HxControlOutputActualJointVelocityDataCaptureType::captureData(const HxSystemSimulation& simulation,
                                                                         const HxU32& m, const HxU32& j) const {
  resetData();
  const double time = simulation.controlOutputTime();
  const double* position = controlOutputPosition(simulation, m, j);
  if (previous_.time >= time) {
    // No time step: only remember the position; a bad index here does not end the call.
    if (position != nullptr) previous_.position = *position;
  } else if (!differentiate(position, time, previous_, column(0))) {
    // Time advanced (at the first sample, since 0): the position is differentiated over the step.
    return false;
  }
  previous_.time = time;
  // Deliberately false on every path, even with a velocity in the buffer: the column counts
  // as not captured.
  return false;
}
