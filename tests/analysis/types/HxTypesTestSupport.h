#pragma once
// The table of the 21 captured quantities and helpers shared by their tests (and, for flag
// vectors, by the capture and recorder tests).

#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "analysis/types/HxDataCaptureTypes.h"
#include "simulation/HxBasePowerConverter.h"
#include "simulation/HxSystemSimulation.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace HxTypesTest {

using Labels = std::vector<std::string>;

inline const Labels kMotionLabels = {"Linear X", "Linear Y", "Linear Z", "Angular X", "Angular Y", "Angular Z"};
inline const Labels kPlacementLabels = {"Translation X", "Translation Y", "Translation Z", "Quaternion 0",
                                        "Quaternion 1",  "Quaternion 2",  "Quaternion 3"};
inline const Labels kForceLabels = {"Force X", "Force Y", "Force Z", "Moment X", "Moment Y", "Moment Z"};
// clang-format off
inline const Labels kReachLabels = {
    "Target Reached", "Translation Error", "Orientation Error", "Desired X", "Desired Y", "Desired Z",
    "Desired Quaternion 0", "Desired Quaternion 1", "Desired Quaternion 2", "Desired Quaternion 3", "Actual X",
    "Actual Y", "Actual Z", "Actual Quaternion 0", "Actual Quaternion 1", "Actual Quaternion 2", "Actual Quaternion 3",
    "Hit Joint Limit", "Hit Singularity", "Collision Occurred"};
// clang-format on

/// When captureData reports success on a simulation that holds everything it reads.
enum Succeeds { OnBothPaths, OnlyWithDynamics, Never };

/// One row per class: how to make it and what it must say about itself.
struct TypeRow {
  std::string name;  // the token's local name without "DataCaptureType"
  HxXmlObject* (*create)();
  const HxToken& (*classToken)();
  const char* description;
  HxU32 level;
  Labels labels;
  Succeeds succeeds;
};

inline void PrintTo(const TypeRow& type, std::ostream* os) { *os << type.name; }

template <class T>
TypeRow row(std::string name, const char* description, HxU32 level, Labels labels, Succeeds succeeds) {
  name[0] = static_cast<char>(name[0] - 'A' + 'a');
  return TypeRow{name, &T::creator, &T::classToken, description, level, std::move(labels), succeeds};
}
// A row of class Hx<Name>DataCaptureType, whose token's local name is <name>DataCaptureType.
#define HX_TYPE_ROW(Name, ...) row<Hx##Name##DataCaptureType>(#Name, __VA_ARGS__)

/// The 21 classes.
inline std::vector<TypeRow> allTypes() {
  return {
      HX_TYPE_ROW(BaseAcceleration, "Base Accelerations", 0, kMotionLabels, OnlyWithDynamics),
      HX_TYPE_ROW(BasePosition, "Base Positions", 0, kPlacementLabels, OnBothPaths),
      HX_TYPE_ROW(BaseVelocity, "Base Velocities", 0, kMotionLabels, OnBothPaths),
      HX_TYPE_ROW(CenterOfMass, "Center of Mass", 0, {"X", "Y", "Z"}, OnBothPaths),
      HX_TYPE_ROW(ManipulatorPower, "Manipulator Power", 0, {"Manipulator Power"}, OnlyWithDynamics),
      HX_TYPE_ROW(ControlInput, "Control Input", 1, {"Control Input"}, OnlyWithDynamics),
      HX_TYPE_ROW(ControlOutputActualJointVelocity, "Control Output Actual Joint Velocities", 1, {"Joint Velocity"},
                  Never),
      HX_TYPE_ROW(ControlOutputJointVelocity, "Control Output Joint Velocities", 1, {"Joint Velocity"}, OnBothPaths),
      HX_TYPE_ROW(ControlOutputJointPosition, "Control Output Joint Positions", 1, {"Joint Position"}, OnBothPaths),
      HX_TYPE_ROW(ControlTorque, "Control Torques", 1, {"Control Torque"}, OnlyWithDynamics),
      HX_TYPE_ROW(ExternalForce, "External Forces", 1, kForceLabels, OnlyWithDynamics),
      HX_TYPE_ROW(JointAcceleration, "Joint Accelerations", 1, {"Joint Acceleration"}, OnlyWithDynamics),
      HX_TYPE_ROW(JointPosition, "Joint Positions", 1, {"Joint Position"}, OnBothPaths),
      HX_TYPE_ROW(JointTorque, "Joint Torques", 1, {"Joint Torque"}, OnlyWithDynamics),
      HX_TYPE_ROW(JointVelocity, "Joint Velocities", 1, {"Joint Velocity"}, OnBothPaths),
      HX_TYPE_ROW(MotorPower, "Motor Power", 1, {"Motor Power"}, OnlyWithDynamics),
      HX_TYPE_ROW(StructuralForce, "Structural Forces", 1, kForceLabels, OnlyWithDynamics),
      HX_TYPE_ROW(EndEffectorAcceleration, "End Effector Accelerations", 2, kMotionLabels, OnlyWithDynamics),
      HX_TYPE_ROW(EndEffectorPlacement, "End Effector Placements", 2, kPlacementLabels, OnBothPaths),
      HX_TYPE_ROW(EndEffectorVelocity, "End Effector Velocities", 2, kMotionLabels, OnBothPaths),
      HX_TYPE_ROW(ReachTarget, "Reach Target", 2, kReachLabels, OnBothPaths),
  };
}

// A 2-manipulator, 7-joint, 2-end-effector simulation in which every quantity can be
// captured, with non-zero values, for manipulator 1, joint 3, end effector 1, on both paths
// (placements and base frames are the identity, whose quaternion is not zero).
inline std::unique_ptr<HxScriptedSimulation> populatedSimulation() {
  auto sim = std::make_unique<HxScriptedSimulation>(2, 7, 2);
  sim->setPowerDataAvailable(true);
  sim->setControlOutputTime(1.0);
  for (HxU32 m = 0; m < 2; ++m) {
    sim->setJointPositions(m, {0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7});
    sim->setJointVelocities(m, {1.1, 1.2, 1.3, 1.4, 1.5, 1.6, 1.7});
    sim->torque(m).setValues({2.1, 2.2, 2.3, 2.4, 2.5, 2.6, 2.7});
    sim->individualSimulator(m).mutableLinkForceStates()[3] = HxLinkForceState(true, HxGeneralForce(1, 2, 3, 4, 5, 6));
    sim->manipulator(m).mutableJointDrive(3).setPowerConverter(std::make_shared<HxDcElectricMotor>(0.8));
    sim->setEndEffectorVelocity(m, 1, HxGeneralMotion(0.1, 0.2, 0.3, 0.4, 0.5, 0.6));
    sim->setEndEffectorAcceleration(m, 1, HxGeneralMotion(1.1, 1.2, 1.3, 1.4, 1.5, 1.6));
    sim->setCenterOfMass(m, HxVector(0.1, 0.2, 0.3));
    sim->controlInput(m).setValues({3.1, 3.2, 3.3, 3.4, 3.5, 3.6, 3.7});
    sim->externalForce(m).mutableForces()[3] = HxGeneralForce(6, 5, 4, 3, 2, 1);
    sim->individualSimulator(m).setJointAccelerations({4.1, 4.2, 4.3, 4.4, 4.5, 4.6, 4.7});
    sim->individualSimulator(m).setJointTorques({5.1, 5.2, 5.3, 5.4, 5.5, 5.6, 5.7});
    sim->individualSimulator(m).setBaseAcceleration(HxGeneralMotion(7, 8, 9, 10, 11, 12));
    sim->activeState(m).mutableVelocityState().setBaseVelocity(HxGeneralMotion(1, 2, 3, 4, 5, 6));
    sim->systemVelocityState(m).setBaseVelocity(HxGeneralMotion(1, 2, 3, 4, 5, 6));
  }
  return sim;
}

/// The capture buffer of `type` as plain doubles.
inline std::vector<double> values(const HxDataCaptureType& type) { return HxXmlTest::plain(type.data()); }

/// What captureData returned and what the buffer then holds, compared in one assertion.
using Result = std::pair<bool, std::vector<double>>;
inline Result capture(const HxDataCaptureType& type, const HxSystemSimulation& sim, HxU32 m, HxU32 element) {
  return {type.captureData(sim, m, element), values(type)};  // evaluated in this order
}
inline Result captured(std::vector<double> buffer) { return {true, std::move(buffer)}; }
inline Result refused(HxU32 columns) { return {false, std::vector<double>(columns)}; }

/// A disable-flag vector holding `values`.
inline HxDataCaptureType::FlagVector flags(const std::vector<bool>& values) { return HxXmlTest::xmlVector(values); }

}  // namespace HxTypesTest
