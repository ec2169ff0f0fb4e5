#include "analysis/types/HxDataCaptureTypeVector.h"

#include <vector>

#include "analysis/types/HxCartesianDataCaptureTypes.h"
#include "analysis/types/HxForcePowerDataCaptureTypes.h"
#include "analysis/types/HxJointDataCaptureTypes.h"
#include "analysis/types/HxReachTargetDataCaptureType.h"
#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {
const std::string versionString("3.0.0");
}  // namespace

HxDataCaptureTypeVector::HxDataCaptureTypeVector() = default;
HxDataCaptureTypeVector::HxDataCaptureTypeVector(const HxDataCaptureTypeVector& other) = default;
HxDataCaptureTypeVector& HxDataCaptureTypeVector::operator=(const HxDataCaptureTypeVector& other) = default;
HxDataCaptureTypeVector::~HxDataCaptureTypeVector() = default;

const HxToken& HxDataCaptureTypeVector::classToken() { return HxSimAnalysis::HxDataCaptureTypeVectorToken; }

HxXmlObject* HxDataCaptureTypeVector::creator() { return new HxDataCaptureTypeVector(); }

const HxDataCaptureTypeVector& HxDataCaptureTypeVector::nullObject() {
  static const HxDataCaptureTypeVector empty;
  return empty;
}

HxXmlObject* HxDataCaptureTypeVector::clone() const { return new HxDataCaptureTypeVector(*this); }

HxXmlObject* HxDataCaptureTypeVector::newObject() const { return new HxDataCaptureTypeVector(); }

HxBoolean HxDataCaptureTypeVector::equality(const HxXmlObject* other) const {
  const HxDataCaptureTypeVector* same = dynamic_cast<const HxDataCaptureTypeVector*>(other);
  return same != nullptr && *this == *same;
}

const HxToken& HxDataCaptureTypeVector::token() const { return classToken(); }

void HxDataCaptureTypeVector::registerComponents() {}

void HxDataCaptureTypeVector::registerComponentCreators() {
  // ControlInput, ControlOutputJointPosition and ControlOutputActualJointVelocity are left
  // out on purpose: they are not read from configuration files.
  registerComponentCreator(HxBaseAccelerationDataCaptureType::classToken(), HxBaseAccelerationDataCaptureType::creator);
  registerComponentCreator(HxBasePositionDataCaptureType::classToken(), HxBasePositionDataCaptureType::creator);
  registerComponentCreator(HxBaseVelocityDataCaptureType::classToken(), HxBaseVelocityDataCaptureType::creator);
  registerComponentCreator(HxCenterOfMassDataCaptureType::classToken(), HxCenterOfMassDataCaptureType::creator);
  registerComponentCreator(HxControlTorqueDataCaptureType::classToken(), HxControlTorqueDataCaptureType::creator);
  registerComponentCreator(HxEndEffectorAccelerationDataCaptureType::classToken(),
                           HxEndEffectorAccelerationDataCaptureType::creator);
  registerComponentCreator(HxEndEffectorPlacementDataCaptureType::classToken(),
                           HxEndEffectorPlacementDataCaptureType::creator);
  registerComponentCreator(HxEndEffectorVelocityDataCaptureType::classToken(),
                           HxEndEffectorVelocityDataCaptureType::creator);
  registerComponentCreator(HxExternalForceDataCaptureType::classToken(), HxExternalForceDataCaptureType::creator);
  registerComponentCreator(HxJointAccelerationDataCaptureType::classToken(),
                           HxJointAccelerationDataCaptureType::creator);
  registerComponentCreator(HxJointPositionDataCaptureType::classToken(), HxJointPositionDataCaptureType::creator);
  registerComponentCreator(HxJointVelocityDataCaptureType::classToken(), HxJointVelocityDataCaptureType::creator);
  registerComponentCreator(HxJointTorqueDataCaptureType::classToken(), HxJointTorqueDataCaptureType::creator);
  registerComponentCreator(HxMotorPowerDataCaptureType::classToken(), HxMotorPowerDataCaptureType::creator);
  registerComponentCreator(HxReachTargetDataCaptureType::classToken(), HxReachTargetDataCaptureType::creator);
  registerComponentCreator(HxStructuralForceDataCaptureType::classToken(), HxStructuralForceDataCaptureType::creator);
  registerComponentCreator(HxControlOutputJointVelocityDataCaptureType::classToken(),
                           HxControlOutputJointVelocityDataCaptureType::creator);
  registerComponentCreator(HxManipulatorPowerDataCaptureType::classToken(),
                           HxManipulatorPowerDataCaptureType::creator);
}

HxDataCaptureType* HxDataCaptureTypeVector::newDataCaptureByToken(const HxToken& token) const {
  HxXmlObject* object = newObjectFromToken(token);
  HxDataCaptureType* type = dynamic_cast<HxDataCaptureType*>(object);
  if (type == nullptr) {
    // Not a data capture type: nobody else would own it.
    delete object;
  }
  return type;
}

HxDataCaptureType* HxDataCaptureTypeVector::findDataCaptureByToken(const HxToken& token, HxU32* index) const {
  const std::vector<HxDataCaptureType*>& slots = vectorContainer();
  for (std::size_t i = 0; i < slots.size(); ++i) {
    if (slots[i] != nullptr && slots[i]->token() == token) {
      if (index != nullptr) {
        *index = static_cast<HxU32>(i);
      }
      return slots[i];
    }
  }
  return nullptr;
}
