#include "analysis/capture/HxManipulatorDataCapture.h"

#include <string>

#include "analysis/capture/HxCaptureTypeListOps.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxIndividualManipulator.h"
#include "simulation/HxSystemSimulation.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

HxDataCaptureTypeVector HxManipulatorDataCapture::m_theAvailableDataCaptureTypeVector;
HxBoolean HxManipulatorDataCapture::m_theAvailableTypesReady = false;

HxManipulatorDataCapture::HxManipulatorDataCapture() : m_manipulatorIndex(0u) {}

HxManipulatorDataCapture::HxManipulatorDataCapture(const HxManipulatorDataCapture& other)
    : HxXmlCompoundType(other),
      m_manipulatorIndex(other.m_manipulatorIndex),
      m_dataCaptureVector(other.m_dataCaptureVector),
      m_linkDataCaptureVector(other.m_linkDataCaptureVector),
      m_endEffectorDataCaptureVector(other.m_endEffectorDataCaptureVector) {}

HxManipulatorDataCapture& HxManipulatorDataCapture::operator=(const HxManipulatorDataCapture& other) {
  if (this != &other) {
    HxXmlCompoundType::operator=(other);
    m_manipulatorIndex = other.m_manipulatorIndex;
    m_dataCaptureVector = other.m_dataCaptureVector;
    m_linkDataCaptureVector = other.m_linkDataCaptureVector;
    m_endEffectorDataCaptureVector = other.m_endEffectorDataCaptureVector;
  }
  return *this;
}

HxManipulatorDataCapture::~HxManipulatorDataCapture() = default;

void HxManipulatorDataCapture::registerComponents() {
  registerComponent(HxSimAnalysis::HxManipulatorIndexToken, &m_manipulatorIndex);
  registerComponent(HxSimAnalysis::HxDataCaptureTypeVectorToken, &m_dataCaptureVector);
  registerComponent(HxSimAnalysis::HxLinkDataCaptureVectorToken, &m_linkDataCaptureVector);
  registerComponent(HxSimAnalysis::HxEndEffectorDataCaptureVectorToken, &m_endEffectorDataCaptureVector);
}

HxXmlObject* HxManipulatorDataCapture::clone() const { return new HxManipulatorDataCapture(*this); }

HxXmlObject* HxManipulatorDataCapture::newObject() const { return new HxManipulatorDataCapture(); }

HxBoolean HxManipulatorDataCapture::equality(const HxXmlObject* other) const {
  const auto* capture = dynamic_cast<const HxManipulatorDataCapture*>(other);
  return capture != nullptr && *this == *capture;
}

const HxToken& HxManipulatorDataCapture::token() const { return classToken(); }

const HxToken& HxManipulatorDataCapture::classToken() { return HxSimAnalysis::HxManipulatorDataCaptureToken; }

HxXmlObject* HxManipulatorDataCapture::creator() { return new HxManipulatorDataCapture(); }

HxManipulatorDataCapture HxManipulatorDataCapture::nullObject() { return HxManipulatorDataCapture(); }

bool HxManipulatorDataCapture::operator==(const HxManipulatorDataCapture& other) const {
  return HxXmlCompoundType::operator==(other) && m_manipulatorIndex == other.m_manipulatorIndex &&
         m_dataCaptureVector == other.m_dataCaptureVector &&
         m_linkDataCaptureVector == other.m_linkDataCaptureVector &&
         m_endEffectorDataCaptureVector == other.m_endEffectorDataCaptureVector;
}

unsigned int HxManipulatorDataCapture::manipulatorIndex() const { return m_manipulatorIndex.value(); }

void HxManipulatorDataCapture::setManipulatorIndex(unsigned int const& index) { m_manipulatorIndex = index; }

const HxDataCaptureTypeVector& HxManipulatorDataCapture::dataCaptureVector() const { return m_dataCaptureVector; }

const HxManipulatorDataCapture::LinkDataCaptureVector& HxManipulatorDataCapture::linkDataCaptureVector() const {
  return m_linkDataCaptureVector;
}

const HxManipulatorDataCapture::EndEffectorDataCaptureVector&
HxManipulatorDataCapture::endEffectorDataCaptureVector() const {
  return m_endEffectorDataCaptureVector;
}

HxBoolean HxManipulatorDataCapture::captureData(const HxSystemSimulation& simulation) const {
  HxBoolean result = true;
  const unsigned int manipulator = m_manipulatorIndex.value();
  const unsigned int elementIndex = ManipulatorLevelElementIndex;

  // Every capture is made even after a failure, so that the other quantities stay current.
  for (HxU32 i = 0; i < m_dataCaptureVector.size(); ++i) {
    if (!m_dataCaptureVector[i].captureData(simulation, manipulator, elementIndex)) result = false;
  }
  for (HxU32 l = 0; l < m_linkDataCaptureVector.size(); ++l) {
    if (!m_linkDataCaptureVector[l].captureData(simulation, manipulator)) result = false;
  }
  for (HxU32 e = 0; e < m_endEffectorDataCaptureVector.size(); ++e) {
    if (!m_endEffectorDataCaptureVector[e].captureData(simulation, manipulator)) result = false;
  }
  return result;
}

const HxDataCaptureType* HxManipulatorDataCapture::dataCaptureType(const HxToken& token) const {
  return HxCaptureTypeListOps::find(m_dataCaptureVector, token);
}

HxBoolean HxManipulatorDataCapture::addDataCaptureType(const HxToken& token) {
  return HxCaptureTypeListOps::addByToken(m_dataCaptureVector, token, HxCaptureTypeListOps::ManipulatorLevel);
}

HxBoolean HxManipulatorDataCapture::addLinkDataCaptureType(const HxToken& token,
                                                           const HxIndividualManipulator& manipulator) {
  // The type is created only to check its level.
  if (!HxCaptureTypeListOps::isTokenOfLevel(token, HxCaptureTypeListOps::LinkLevel)) return false;

  for (HxU32 i = 0; i < manipulator.numberOfLinks(); ++i) {
    const HxLink* link = manipulator.link(i);
    if (link == nullptr) continue;
    unsigned int position = 0;
    if (findIndex(link->identifier(), position)) {
      m_linkDataCaptureVector[position].addDataCaptureType(token);
    } else {
      HxLinkDataCapture capture;
      capture.setLinkIdentifier(link->identifier());
      if (capture.addDataCaptureType(token)) m_linkDataCaptureVector.pushBack(capture);
    }
  }
  return true;
}

HxBoolean HxManipulatorDataCapture::addLinkDataCaptureType(const std::string& linkIdentifier,
                                                           const HxToken& token) {
  unsigned int position = 0;
  if (findIndex(linkIdentifier, position)) return m_linkDataCaptureVector[position].addDataCaptureType(token);

  // A new link capture is kept only once its first type was accepted.
  HxLinkDataCapture capture;
  capture.setLinkIdentifier(linkIdentifier);
  if (!capture.addDataCaptureType(token)) return false;
  m_linkDataCaptureVector.pushBack(capture);
  return true;
}

HxBoolean HxManipulatorDataCapture::addEndEffectorDataCaptureType(const HxToken& token,
                                                                  unsigned int numEndEffectors) {
  if (!HxCaptureTypeListOps::isTokenOfLevel(token, HxCaptureTypeListOps::EndEffectorLevel)) return false;
  for (unsigned int e = 0; e < numEndEffectors; ++e) addEndEffectorDataCaptureType(e, token);
  return true;
}

HxBoolean HxManipulatorDataCapture::addEndEffectorDataCaptureType(const HxDataCaptureType& type,
                                                                  unsigned int numEndEffectors) {
  if (type.type() != HxCaptureTypeListOps::EndEffectorLevel) return false;
  for (unsigned int e = 0; e < numEndEffectors; ++e) addEndEffectorDataCaptureType(e, type);
  return true;
}

HxBoolean HxManipulatorDataCapture::addEndEffectorDataCaptureType(unsigned int endEffectorIndex,
                                                                  const HxToken& token) {
  unsigned int position = 0;
  if (findIndex(endEffectorIndex, position)) {
    return m_endEffectorDataCaptureVector[position].addDataCaptureType(token);
  }
  HxEndEffectorDataCapture capture;
  capture.setEndEffectorIndex(endEffectorIndex);
  if (!capture.addDataCaptureType(token)) return false;
  m_endEffectorDataCaptureVector.pushBack(capture);
  return true;
}

HxBoolean HxManipulatorDataCapture::addEndEffectorDataCaptureType(unsigned int endEffectorIndex,
                                                                  const HxDataCaptureType& type) {
  unsigned int position = 0;
  if (findIndex(endEffectorIndex, position)) {
    return m_endEffectorDataCaptureVector[position].addDataCaptureType(type);
  }
  HxEndEffectorDataCapture capture;
  capture.setEndEffectorIndex(endEffectorIndex);
  if (!capture.addDataCaptureType(type)) return false;
  m_endEffectorDataCaptureVector.pushBack(capture);
  return true;
}

HxBoolean HxManipulatorDataCapture::removeDataCaptureType(const HxToken& token) {
  return HxCaptureTypeListOps::removeByToken(m_dataCaptureVector, token);
}

HxBoolean HxManipulatorDataCapture::removeLinkDataCaptureType(const HxToken& token) {
  HxBoolean removed = false;
  // Last to first, so that erasing keeps the positions still to visit.
  for (HxU32 l = m_linkDataCaptureVector.size(); l-- > 0;) {
    if (m_linkDataCaptureVector[l].removeDataCaptureType(token)) removed = true;
    if (m_linkDataCaptureVector[l].numDataCaptureTypes() == 0) m_linkDataCaptureVector.erase(l);
  }
  return removed;
}

HxBoolean HxManipulatorDataCapture::removeEndEffectorDataCaptureType(const HxToken& token) {
  HxBoolean removed = false;
  for (HxU32 e = m_endEffectorDataCaptureVector.size(); e-- > 0;) {
    if (m_endEffectorDataCaptureVector[e].removeDataCaptureType(token)) removed = true;
    if (m_endEffectorDataCaptureVector[e].numDataCaptureTypes() == 0) m_endEffectorDataCaptureVector.erase(e);
  }
  return removed;
}

HxBoolean HxManipulatorDataCapture::removeLinkDataCaptureType(const std::string& linkIdentifier,
                                                              const HxToken& token) {
  unsigned int position = 0;
  if (!findIndex(linkIdentifier, position)) return false;
  const HxBoolean removed = m_linkDataCaptureVector[position].removeDataCaptureType(token);
  if (m_linkDataCaptureVector[position].numDataCaptureTypes() == 0) m_linkDataCaptureVector.erase(position);
  return removed;
}

HxBoolean HxManipulatorDataCapture::removeEndEffectorDataCaptureType(unsigned int endEffectorIndex,
                                                                     const HxToken& token) {
  unsigned int position = 0;
  if (!findIndex(endEffectorIndex, position)) return false;
  const HxBoolean removed = m_endEffectorDataCaptureVector[position].removeDataCaptureType(token);
  if (m_endEffectorDataCaptureVector[position].numDataCaptureTypes() == 0) {
    m_endEffectorDataCaptureVector.erase(position);
  }
  return removed;
}

void HxManipulatorDataCapture::addLinkDataCapture(const HxLinkDataCapture& capture) {
  m_linkDataCaptureVector.pushBack(capture);
}

const HxLinkDataCapture* HxManipulatorDataCapture::linkDataCapture(const std::string& linkIdentifier) const {
  unsigned int position = 0;
  return findIndex(linkIdentifier, position) ? &m_linkDataCaptureVector[position] : nullptr;
}

void HxManipulatorDataCapture::addEndEffectorDataCapture(const HxEndEffectorDataCapture& capture) {
  m_endEffectorDataCaptureVector.pushBack(capture);
}

const HxEndEffectorDataCapture* HxManipulatorDataCapture::endEffectorDataCapture(
    unsigned int endEffectorIndex) const {
  unsigned int position = 0;
  return findIndex(endEffectorIndex, position) ? &m_endEffectorDataCaptureVector[position] : nullptr;
}

HxBoolean HxManipulatorDataCapture::removeLinkDataCapture(const std::string& linkIdentifier) {
  unsigned int position = 0;
  if (!findIndex(linkIdentifier, position)) return false;
  m_linkDataCaptureVector.erase(position);
  return true;
}

HxBoolean HxManipulatorDataCapture::removeEndEffectorDataCapture(unsigned int endEffectorIndex) {
  unsigned int position = 0;
  if (!findIndex(endEffectorIndex, position)) return false;
  m_endEffectorDataCaptureVector.erase(position);
  return true;
}

HxBoolean HxManipulatorDataCapture::isDataCaptureTypeIncluded(const HxToken& token) const {
  return dataCaptureType(token) != nullptr;
}

HxBoolean HxManipulatorDataCapture::isDataCaptureTypeIncluded(const std::string& linkIdentifier,
                                                              const HxToken& token) const {
  const HxLinkDataCapture* capture = linkDataCapture(linkIdentifier);
  return capture != nullptr && capture->isDataCaptureTypeIncluded(token);
}

HxBoolean HxManipulatorDataCapture::isDataCaptureTypeIncluded(unsigned int endEffectorIndex,
                                                              const HxToken& token) const {
  const HxEndEffectorDataCapture* capture = endEffectorDataCapture(endEffectorIndex);
  return capture != nullptr && capture->isDataCaptureTypeIncluded(token);
}

unsigned int HxManipulatorDataCapture::numDataCaptureTypes() const { return m_dataCaptureVector.size(); }

unsigned int HxManipulatorDataCapture::numDataCaptureTypes(const std::string& linkIdentifier) const {
  const HxLinkDataCapture* capture = linkDataCapture(linkIdentifier);
  return capture != nullptr ? capture->numDataCaptureTypes() : 0;
}

unsigned int HxManipulatorDataCapture::numDataCaptureTypes(unsigned int endEffectorIndex) const {
  const HxEndEffectorDataCapture* capture = endEffectorDataCapture(endEffectorIndex);
  return capture != nullptr ? capture->numDataCaptureTypes() : 0;
}

HxBoolean HxManipulatorDataCapture::setDisableFlags(const HxToken& token, const Flags& flags) {
  return HxCaptureTypeListOps::setDisableFlags(m_dataCaptureVector, token, flags);
}

HxBoolean HxManipulatorDataCapture::setDisableFlags(const std::string& linkIdentifier, const HxToken& token,
                                                    const Flags& flags) {
  unsigned int position = 0;
  if (!findIndex(linkIdentifier, position)) return false;
  return m_linkDataCaptureVector[position].setDisableFlags(token, flags);
}

HxBoolean HxManipulatorDataCapture::setDisableFlags(unsigned int endEffectorIndex, const HxToken& token,
                                                    const Flags& flags) {
  unsigned int position = 0;
  if (!findIndex(endEffectorIndex, position)) return false;
  return m_endEffectorDataCaptureVector[position].setDisableFlags(token, flags);
}

void HxManipulatorDataCapture::removeAllDataCaptureTypes() {
  m_dataCaptureVector.clear();
  for (HxU32 l = 0; l < m_linkDataCaptureVector.size(); ++l) m_linkDataCaptureVector[l].removeAllDataCaptureTypes();
  m_linkDataCaptureVector.clear();
  for (HxU32 e = 0; e < m_endEffectorDataCaptureVector.size(); ++e) {
    m_endEffectorDataCaptureVector[e].removeAllDataCaptureTypes();
  }
  m_endEffectorDataCaptureVector.clear();
}

HxBoolean HxManipulatorDataCapture::findIndex(const std::string& linkIdentifier, unsigned int& position) const {
  for (HxU32 l = 0; l < m_linkDataCaptureVector.size(); ++l) {
    if (m_linkDataCaptureVector[l].linkIdentifier() == linkIdentifier) {
      position = l;
      return true;
    }
  }
  return false;
}

HxBoolean HxManipulatorDataCapture::findIndex(unsigned int endEffectorIndex, unsigned int& position) const {
  for (HxU32 e = 0; e < m_endEffectorDataCaptureVector.size(); ++e) {
    if (m_endEffectorDataCaptureVector[e].endEffectorIndex() == endEffectorIndex) {
      position = e;
      return true;
    }
  }
  return false;
}

const HxDataCaptureTypeVector& HxManipulatorDataCapture::allAvailableDataCaptureTypes() {
  if (m_theAvailableTypesReady) return m_theAvailableDataCaptureTypeVector;
  m_theAvailableDataCaptureTypeVector.clear();
  HxCaptureTypeListOps::collectAvailable(m_theAvailableDataCaptureTypeVector,
                                         HxCaptureTypeListOps::ManipulatorLevel);
  m_theAvailableTypesReady = true;
  return m_theAvailableDataCaptureTypeVector;
}
