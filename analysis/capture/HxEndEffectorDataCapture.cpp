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

HxEndEffectorDataCapture::HxEndEffectorDataCapture() : m_endEffectorIndex(0u) {}

HxEndEffectorDataCapture::HxEndEffectorDataCapture(const HxEndEffectorDataCapture& other)
    : HxXmlCompoundType(other),
      m_endEffectorIndex(other.m_endEffectorIndex),
      m_dataCaptureVector(other.m_dataCaptureVector) {}

HxEndEffectorDataCapture& HxEndEffectorDataCapture::operator=(const HxEndEffectorDataCapture& other) {
  if (this != &other) {
    HxXmlCompoundType::operator=(other);
    m_endEffectorIndex = other.m_endEffectorIndex;
    m_dataCaptureVector = other.m_dataCaptureVector;
  }
  return *this;
}

HxEndEffectorDataCapture::~HxEndEffectorDataCapture() = default;

void HxEndEffectorDataCapture::registerComponents() {
  registerComponent(HxSimAnalysis::HxEndEffectorIndexToken, &m_endEffectorIndex);
  registerComponent(HxSimAnalysis::HxDataCaptureTypeVectorToken, &m_dataCaptureVector);
}

HxXmlObject* HxEndEffectorDataCapture::clone() const { return new HxEndEffectorDataCapture(*this); }

HxXmlObject* HxEndEffectorDataCapture::newObject() const { return new HxEndEffectorDataCapture(); }

HxBoolean HxEndEffectorDataCapture::equality(const HxXmlObject* other) const {
  const auto* capture = dynamic_cast<const HxEndEffectorDataCapture*>(other);
  return capture != nullptr && *this == *capture;
}

const HxToken& HxEndEffectorDataCapture::token() const { return classToken(); }

const HxToken& HxEndEffectorDataCapture::classToken() { return HxSimAnalysis::HxEndEffectorDataCaptureToken; }

HxXmlObject* HxEndEffectorDataCapture::creator() { return new HxEndEffectorDataCapture(); }

HxEndEffectorDataCapture HxEndEffectorDataCapture::nullObject() { return HxEndEffectorDataCapture(); }

bool HxEndEffectorDataCapture::operator==(const HxEndEffectorDataCapture& other) const {
  return HxXmlCompoundType::operator==(other) && m_endEffectorIndex == other.m_endEffectorIndex &&
         m_dataCaptureVector == other.m_dataCaptureVector;
}

void HxEndEffectorDataCapture::setEndEffectorIndex(unsigned int index) { m_endEffectorIndex = index; }

unsigned int HxEndEffectorDataCapture::endEffectorIndex() const { return m_endEffectorIndex.value(); }

const HxDataCaptureTypeVector& HxEndEffectorDataCapture::dataCaptureVector() const { return m_dataCaptureVector; }

HxBoolean HxEndEffectorDataCapture::captureData(const HxSystemSimulation& simulation,
                                                unsigned int const& manipulatorIndex) const {
  // Only the last type's result counts, unlike the other two levels.
  HxBoolean result = true;
  const HxU32 endEffector = m_endEffectorIndex.value();
  for (HxU32 i = 0; i < m_dataCaptureVector.size(); ++i) {
    result = m_dataCaptureVector[i].captureData(simulation, manipulatorIndex, endEffector);
  }
  return result;
}

const HxDataCaptureType* HxEndEffectorDataCapture::dataCaptureType(const HxToken& token) const {
  return HxCaptureTypeListOps::find(m_dataCaptureVector, token);
}

HxBoolean HxEndEffectorDataCapture::addDataCaptureType(const HxToken& token) {
  return HxCaptureTypeListOps::addByToken(m_dataCaptureVector, token, HxCaptureTypeListOps::EndEffectorLevel);
}

HxBoolean HxEndEffectorDataCapture::addDataCaptureType(const HxDataCaptureType& type) {
  if (type.type() != HxCaptureTypeListOps::EndEffectorLevel) return false;
  // Adding by object replaces a type of the same token, flags included.
  removeDataCaptureType(type.token());
  m_dataCaptureVector.pushBack(type);
  return true;
}

HxBoolean HxEndEffectorDataCapture::removeDataCaptureType(const HxToken& token) {
  return HxCaptureTypeListOps::removeByToken(m_dataCaptureVector, token);
}

HxBoolean HxEndEffectorDataCapture::isDataCaptureTypeIncluded(const HxToken& token) const {
  return dataCaptureType(token) != nullptr;
}

unsigned int HxEndEffectorDataCapture::numDataCaptureTypes() const { return m_dataCaptureVector.size(); }

HxBoolean HxEndEffectorDataCapture::setDisableFlags(const HxToken& token, const Flags& flags) {
  return HxCaptureTypeListOps::setDisableFlags(m_dataCaptureVector, token, flags);
}

void HxEndEffectorDataCapture::removeAllDataCaptureTypes() { m_dataCaptureVector.clear(); }

const HxDataCaptureTypeVector& HxEndEffectorDataCapture::allAvailableDataCaptureTypes() {
  if (m_theAvailableTypesReady) return m_theAvailableDataCaptureTypeVector;
  m_theAvailableDataCaptureTypeVector.clear();
  HxCaptureTypeListOps::collectAvailable(m_theAvailableDataCaptureTypeVector,
                                         HxCaptureTypeListOps::EndEffectorLevel);
  m_theAvailableTypesReady = true;
  return m_theAvailableDataCaptureTypeVector;
}
