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

// Every vector registers the same creators: they are looked up in one table of the class.
HxDataCaptureTypeVector::HxDataCaptureTypeVector() { shareCreatorsOfClass<HxDataCaptureTypeVector>(); }
HX_XML_SERIALISABLE_DEFINITIONS(HxDataCaptureTypeVector, HxSimAnalysis::HxDataCaptureTypeVectorToken)

const HxDataCaptureTypeVector& HxDataCaptureTypeVector::nullObject() {
  static const HxDataCaptureTypeVector empty;
  return empty;
}

void HxDataCaptureTypeVector::registerComponents() {}

void HxDataCaptureTypeVector::registerComponentCreators() {
  // ControlInput, ControlOutputJointPosition and ControlOutputActualJointVelocity are left
  // out on purpose: they are not read from configuration files.
  registerComponentCreatorsOf<
      HxBaseAccelerationDataCaptureType, HxBasePositionDataCaptureType, HxBaseVelocityDataCaptureType,
      HxCenterOfMassDataCaptureType, HxControlTorqueDataCaptureType, HxEndEffectorAccelerationDataCaptureType,
      HxEndEffectorPlacementDataCaptureType, HxEndEffectorVelocityDataCaptureType, HxExternalForceDataCaptureType,
      HxJointAccelerationDataCaptureType, HxJointPositionDataCaptureType, HxJointVelocityDataCaptureType,
      HxJointTorqueDataCaptureType, HxMotorPowerDataCaptureType, HxReachTargetDataCaptureType,
      HxStructuralForceDataCaptureType, HxControlOutputJointVelocityDataCaptureType,
      HxManipulatorPowerDataCaptureType>();
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
