#include "analysis/capture/HxLinkDataCapture.h"

#include "analysis/capture/HxCaptureTypeListOps.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxSystemSimulation.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

HxDataCaptureTypeVector HxLinkDataCapture::m_theAvailableDataCaptureTypeVector;
HxBoolean HxLinkDataCapture::m_theAvailableTypesReady = false;

HxLinkDataCapture::HxLinkDataCapture() = default;

HxLinkDataCapture::HxLinkDataCapture(const HxLinkDataCapture& other)
    : HxXmlCompoundType(other),
      m_linkIdentifier(other.m_linkIdentifier),
      m_dataCaptureVector(other.m_dataCaptureVector) {}

HxLinkDataCapture& HxLinkDataCapture::operator=(const HxLinkDataCapture& other) {
  if (this != &other) {
    HxXmlCompoundType::operator=(other);
    m_linkIdentifier = other.m_linkIdentifier;
    m_dataCaptureVector = other.m_dataCaptureVector;
  }
  return *this;
}

HxLinkDataCapture::~HxLinkDataCapture() = default;

void HxLinkDataCapture::registerComponents() {
  registerComponent(HxSimAnalysis::HxLinkIdentificationToken, &m_linkIdentifier);
  registerComponent(HxSimAnalysis::HxDataCaptureTypeVectorToken, &m_dataCaptureVector);
}

HxXmlObject* HxLinkDataCapture::clone() const { return new HxLinkDataCapture(*this); }

HxXmlObject* HxLinkDataCapture::newObject() const { return new HxLinkDataCapture(); }

HxBoolean HxLinkDataCapture::equality(const HxXmlObject* other) const {
  const auto* capture = dynamic_cast<const HxLinkDataCapture*>(other);
  return capture != nullptr && *this == *capture;
}

const HxToken& HxLinkDataCapture::token() const { return classToken(); }

const HxToken& HxLinkDataCapture::classToken() { return HxSimAnalysis::HxLinkDataCaptureToken; }

HxXmlObject* HxLinkDataCapture::creator() { return new HxLinkDataCapture(); }

HxLinkDataCapture HxLinkDataCapture::nullObject() { return HxLinkDataCapture(); }

bool HxLinkDataCapture::operator==(const HxLinkDataCapture& other) const {
  return HxXmlCompoundType::operator==(other) && m_linkIdentifier == other.m_linkIdentifier &&
         m_dataCaptureVector == other.m_dataCaptureVector;
}

void HxLinkDataCapture::setLinkIdentifier(const std::string& identifier) { m_linkIdentifier = identifier; }

const std::string& HxLinkDataCapture::linkIdentifier() const { return m_linkIdentifier.value(); }

const HxDataCaptureTypeVector& HxLinkDataCapture::dataCaptureVector() const { return m_dataCaptureVector; }

HxBoolean HxLinkDataCapture::captureData(const HxSystemSimulation& simulation,
                                         unsigned int const& manipulatorIndex) const {
  const HxU32 count = m_dataCaptureVector.size();
  if (count == 0) return true;

  // Resolve the link once for all types; an unknown manipulator counts as an unknown link.
  const HxLink* link = nullptr;
  const auto& manipulators = simulation.manipulators();
  if (manipulatorIndex < manipulators.size()) {
    link = manipulators[manipulatorIndex].findLink(m_linkIdentifier.value());
  }

  HxBoolean result = true;
  for (HxU32 i = 0; i < count; ++i) {
    if (link == nullptr) {
      result = false;
      continue;
    }
    const HxU32 linkIndex = link->index();
    if (!m_dataCaptureVector[i].captureData(simulation, manipulatorIndex, linkIndex)) result = false;
  }
  return result;
}

const HxDataCaptureType* HxLinkDataCapture::dataCaptureType(const HxToken& token) const {
  return HxCaptureTypeListOps::find(m_dataCaptureVector, token);
}

HxBoolean HxLinkDataCapture::addDataCaptureType(const HxToken& token) {
  return HxCaptureTypeListOps::addByToken(m_dataCaptureVector, token, HxCaptureTypeListOps::LinkLevel);
}

HxBoolean HxLinkDataCapture::removeDataCaptureType(const HxToken& token) {
  return HxCaptureTypeListOps::removeByToken(m_dataCaptureVector, token);
}

HxBoolean HxLinkDataCapture::isDataCaptureTypeIncluded(const HxToken& token) const {
  return dataCaptureType(token) != nullptr;
}

unsigned int HxLinkDataCapture::numDataCaptureTypes() const { return m_dataCaptureVector.size(); }

HxBoolean HxLinkDataCapture::setDisableFlags(const HxToken& token, const Flags& flags) {
  return HxCaptureTypeListOps::setDisableFlags(m_dataCaptureVector, token, flags);
}

void HxLinkDataCapture::removeAllDataCaptureTypes() { m_dataCaptureVector.clear(); }

const HxDataCaptureTypeVector& HxLinkDataCapture::allAvailableDataCaptureTypes() {
  if (m_theAvailableTypesReady) return m_theAvailableDataCaptureTypeVector;
  m_theAvailableDataCaptureTypeVector.clear();
  HxCaptureTypeListOps::collectAvailable(m_theAvailableDataCaptureTypeVector, HxCaptureTypeListOps::LinkLevel);
  m_theAvailableTypesReady = true;
  return m_theAvailableDataCaptureTypeVector;
}
