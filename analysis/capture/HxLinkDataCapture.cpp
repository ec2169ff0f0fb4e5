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

void HxLinkDataCapture::registerComponents() {
  registerComponent(HxSimAnalysis::HxLinkIdentificationToken, &linkIdentifier_);
  registerComponent(HxSimAnalysis::HxDataCaptureTypeVectorToken, &dataCaptureVector_);
}

HxBoolean HxLinkDataCapture::read(HxXmlReader& reader) {
  resolved_.stamp = 0;
  return HxXmlCompoundType::read(reader);
}

HX_XML_SERIALISABLE_DEFINITIONS(HxLinkDataCapture, HxSimAnalysis::HxLinkDataCaptureToken)

void HxLinkDataCapture::setLinkIdentifier(const std::string& identifier) {
  linkIdentifier_ = identifier;
  resolved_.stamp = 0;
}

const std::string& HxLinkDataCapture::linkIdentifier() const { return linkIdentifier_.value(); }

const HxDataCaptureTypeVector& HxLinkDataCapture::dataCaptureVector() const { return dataCaptureVector_; }

bool HxLinkDataCapture::resolveLink(const HxSystemSimulation& simulation, HxU32 manipulatorIndex, HxU32& index) const {
  // An unknown manipulator counts as an unknown link. The search by identifier is made again
  // only when the manipulator's links are not those of the last search (another manipulator or
  // simulation, or links changed): the stamp names them.
  const auto& manipulators = simulation.manipulators();
  if (manipulatorIndex >= manipulators.size()) return false;
  const HxIndividualManipulator& manipulator = manipulators[manipulatorIndex];
  const std::uint64_t stamp = manipulator.linksStamp();
  if (resolved_.stamp != stamp) {
    const HxLink* link = manipulator.findLink(linkIdentifier_.value());
    resolved_.found = link != nullptr;
    resolved_.index = link != nullptr ? link->index() : 0;
    resolved_.stamp = stamp;
  }
  index = resolved_.index;
  return resolved_.found;
}

HxBoolean HxLinkDataCapture::captureData(const HxSystemSimulation& simulation,
                                         unsigned int const& manipulatorIndex) const {
  const HxU32 count = dataCaptureVector_.size();
  if (count == 0) return true;

  // The link is resolved once for all types.
  HxU32 linkIndex = 0;
  if (!resolveLink(simulation, manipulatorIndex, linkIndex)) return false;

  HxBoolean result = true;
  // Straight over the slots; a null slot (never made by the add operations) is left to the
  // vector's checked access, which reports it.
  const HxDataCaptureTypeVector::ContainerType& types = dataCaptureVector_.vectorContainer();
  for (HxU32 i = 0; i < count; ++i) {
    const HxDataCaptureType& type = types[i] != nullptr ? *types[i] : dataCaptureVector_[i];
    if (!type.captureData(simulation, manipulatorIndex, linkIndex)) result = false;
  }
  return result;
}

void HxLinkDataCapture::prefetchTypeList() const { __builtin_prefetch(dataCaptureVector_.vectorContainer().data()); }

void HxLinkDataCapture::prefetchTypes() const {
  for (const HxDataCaptureType* type : dataCaptureVector_.vectorContainer()) {
    if (type != nullptr) type->prefetch();
  }
}

const HxDataCaptureType* HxLinkDataCapture::dataCaptureType(const HxToken& token) const {
  return HxCaptureTypeListOps::find(dataCaptureVector_, token);
}

HxBoolean HxLinkDataCapture::addDataCaptureType(const HxToken& token) {
  return HxCaptureTypeListOps::addByToken(dataCaptureVector_, token, HxDataCaptureLevel::Link);
}

HxBoolean HxLinkDataCapture::removeDataCaptureType(const HxToken& token) {
  return HxCaptureTypeListOps::removeByToken(dataCaptureVector_, token);
}

HxBoolean HxLinkDataCapture::isDataCaptureTypeIncluded(const HxToken& token) const {
  return dataCaptureType(token) != nullptr;
}

unsigned int HxLinkDataCapture::numDataCaptureTypes() const { return dataCaptureVector_.size(); }

HxBoolean HxLinkDataCapture::setDisableFlags(const HxToken& token, const Flags& flags) {
  return HxCaptureTypeListOps::setDisableFlags(dataCaptureVector_, token, flags);
}

void HxLinkDataCapture::removeAllDataCaptureTypes() { dataCaptureVector_.clear(); }

const HxDataCaptureTypeVector& HxLinkDataCapture::allAvailableDataCaptureTypes() {
  if (m_theAvailableTypesReady) return m_theAvailableDataCaptureTypeVector;
  m_theAvailableDataCaptureTypeVector.clear();
  HxCaptureTypeListOps::collectAvailable(m_theAvailableDataCaptureTypeVector, HxDataCaptureLevel::Link);
  m_theAvailableTypesReady = true;
  return m_theAvailableDataCaptureTypeVector;
}
