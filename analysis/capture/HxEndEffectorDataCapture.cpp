#include "analysis/capture/HxEndEffectorDataCapture.h"

#include <string>

#include "analysis/capture/HxCaptureTypeListOps.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxSystemSimulation.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

HxDataCaptureTypeVector HxEndEffectorDataCapture::m_theAvailableDataCaptureTypeVector;
HxBoolean HxEndEffectorDataCapture::m_theAvailableTypesReady = false;

HxEndEffectorDataCapture::HxEndEffectorDataCapture() : endEffectorIndex_(0u) {}

void HxEndEffectorDataCapture::registerComponents() {
  registerComponent(HxSimAnalysis::HxEndEffectorIndexToken, &endEffectorIndex_);
  registerComponent(HxSimAnalysis::HxDataCaptureTypeVectorToken, &dataCaptureVector_);
}

HX_XML_SERIALISABLE_DEFINITIONS(HxEndEffectorDataCapture, HxSimAnalysis::HxEndEffectorDataCaptureToken)

void HxEndEffectorDataCapture::setEndEffectorIndex(unsigned int index) { endEffectorIndex_ = index; }

unsigned int HxEndEffectorDataCapture::endEffectorIndex() const { return endEffectorIndex_.value(); }

const HxDataCaptureTypeVector& HxEndEffectorDataCapture::dataCaptureVector() const { return dataCaptureVector_; }

HxBoolean HxEndEffectorDataCapture::captureData(const HxSystemSimulation& simulation,
                                                unsigned int const& manipulatorIndex) const {
  // Only the last type's result counts, unlike the other two levels.
  HxBoolean result = true;
  const HxU32 endEffector = endEffectorIndex_.value();
  for (HxU32 i = 0; i < dataCaptureVector_.size(); ++i) {
    result = dataCaptureVector_[i].captureData(simulation, manipulatorIndex, endEffector);
  }
  return result;
}

const HxDataCaptureType* HxEndEffectorDataCapture::dataCaptureType(const HxToken& token) const {
  return HxCaptureTypeListOps::find(dataCaptureVector_, token);
}

HxBoolean HxEndEffectorDataCapture::addDataCaptureType(const HxToken& token) {
  return HxCaptureTypeListOps::addByToken(dataCaptureVector_, token, HxDataCaptureLevel::EndEffector);
}

HxBoolean HxEndEffectorDataCapture::addDataCaptureType(const HxDataCaptureType& type) {
  if (type.type() != HxDataCaptureLevel::EndEffector) return false;
  // Adding by object replaces a type of the same token, flags included.
  removeDataCaptureType(type.token());
  dataCaptureVector_.pushBack(type);
  return true;
}

HxBoolean HxEndEffectorDataCapture::removeDataCaptureType(const HxToken& token) {
  return HxCaptureTypeListOps::removeByToken(dataCaptureVector_, token);
}

HxBoolean HxEndEffectorDataCapture::isDataCaptureTypeIncluded(const HxToken& token) const {
  return dataCaptureType(token) != nullptr;
}

unsigned int HxEndEffectorDataCapture::numDataCaptureTypes() const { return dataCaptureVector_.size(); }

HxBoolean HxEndEffectorDataCapture::setDisableFlags(const HxToken& token, const Flags& flags) {
  return HxCaptureTypeListOps::setDisableFlags(dataCaptureVector_, token, flags);
}

void HxEndEffectorDataCapture::removeAllDataCaptureTypes() { dataCaptureVector_.clear(); }

const HxDataCaptureTypeVector& HxEndEffectorDataCapture::allAvailableDataCaptureTypes() {
  if (m_theAvailableTypesReady) return m_theAvailableDataCaptureTypeVector;
  m_theAvailableDataCaptureTypeVector.clear();
  HxCaptureTypeListOps::collectAvailable(m_theAvailableDataCaptureTypeVector, HxDataCaptureLevel::EndEffector);
  m_theAvailableTypesReady = true;
  return m_theAvailableDataCaptureTypeVector;
}
