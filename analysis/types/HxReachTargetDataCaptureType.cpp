#include "analysis/types/HxReachTargetDataCaptureType.h"

#include <vector>

#include "analysis/types/HxDataCaptureTypeDefinitions.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxEndEffector.h"
#include "simulation/HxSystemSimulation.h"

namespace {
const std::string versionString("3.0.0");

// Column positions.
constexpr HxU32 ReachedColumn = 0;
constexpr HxU32 TranslationErrorColumn = 1;
constexpr HxU32 OrientationErrorColumn = 2;
constexpr HxU32 DesiredColumn = 3;
constexpr HxU32 ActualColumn = 10;
constexpr HxU32 JointLimitColumn = 17;
constexpr HxU32 SingularityColumn = 18;
constexpr HxU32 CollisionColumn = 19;
}  // namespace

HX_DATA_CAPTURE_TYPE_DEFINITIONS(HxReachTargetDataCaptureType, "Reach Target", HxDataCaptureLevel::EndEffector,
                                 "Target Reached", "Translation Error", "Orientation Error", "Desired X", "Desired Y",
                                 "Desired Z", "Desired Quaternion 0", "Desired Quaternion 1", "Desired Quaternion 2",
                                 "Desired Quaternion 3", "Actual X", "Actual Y", "Actual Z", "Actual Quaternion 0",
                                 "Actual Quaternion 1", "Actual Quaternion 2", "Actual Quaternion 3", "Hit Joint Limit",
                                 "Hit Singularity", "Collision Occurred")

void HxReachTargetDataCaptureType::registerComponents() {
  HxDataCaptureType::registerComponents();
  registerComponent(HxSimAnalysis::HxTranslationToleranceToken, &translationTolerance_);
  registerComponent(HxSimAnalysis::HxOrientationToleranceToken, &orientationTolerance_);
}

bool HxReachTargetDataCaptureType::operator==(const HxReachTargetDataCaptureType& other) const {
  return HxDataCaptureType::operator==(other) && translationTolerance_ == other.translationTolerance_ &&
         orientationTolerance_ == other.orientationTolerance_;
}

HxBoolean HxReachTargetDataCaptureType::captureData(const HxSystemSimulation& simulation, const HxU32& m,
                                                    const HxU32& e) const {
  resetData();
  // Refresh the working state; a manipulator without an entry keeps the previous one.
  HxDataCaptureLookup::refreshWorkingState(simulation, m, workingState_);

  if (m >= simulation.manipulators().size()) return false;
  const HxIndividualManipulator& manipulator = simulation.manipulators()[m];

  // The target, when the simulation asks one of this end effector; else the previous one.
  const std::vector<HxManipulatorEndEffectorPlacement>& desired = simulation.desiredEndEffectorPlacements();
  if (m < desired.size() && e < desired[m].size()) {
    desiredPlacement_ = desired[m].endEffectorPlacement(e, workingState_.activePositionState(), manipulator);
  }

  if (e >= manipulator.numberOfEndEffectors()) return false;
  actualPlacement_ = manipulator.endEffectorPlacement(e, workingState_);

  // Errors between the actual and the desired placement.
  const double translationError = actualPlacement_.translation().distanceTo(desiredPlacement_.translation());
  double orientationError = 0.0;
  HxVector axis;
  actualPlacement_.orientation().angleAxisBetween(desiredPlacement_.orientation(), orientationError, axis);
  column(TranslationErrorColumn) = translationError;
  column(OrientationErrorColumn) = orientationError;

  // Reached: within the translation tolerance and, unless the end effector is a point that
  // has no orientation to reach, within the orientation tolerance. Equality counts as within.
  if (translationTolerance() >= translationError) {
    column(ReachedColumn) = 1.0;
    const bool isPoint = manipulator.endEffector(e).token() == HxControl::HxPointEndEffectorToken;
    if (!isPoint && orientationError > orientationTolerance()) {
      column(ReachedColumn) = 0.0;
    }
  }

  // The desired and the actual placement.
  setPlacementColumns(DesiredColumn, desiredPlacement_);
  setPlacementColumns(ActualColumn, actualPlacement_);

  // Events of the last step; a manipulator without a result leaves them at 0.0.
  const std::vector<HxPropagationResultData>& results = simulation.propagationResults();
  if (m < results.size()) {
    const HxPropagationResultData& result = results[m];
    column(JointLimitColumn) = result.hitJointLimit() ? 1.0 : 0.0;
    column(SingularityColumn) = result.hitSingularity() ? 1.0 : 0.0;
    column(CollisionColumn) = result.collisionOccurred() ? 1.0 : 0.0;
  }
  return true;
}
