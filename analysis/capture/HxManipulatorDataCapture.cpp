#include "analysis/capture/HxManipulatorDataCapture.h"

#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>

#include "analysis/capture/HxCaptureTypeListOps.h"
#include "analysis/capture/HxFlatOrder.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "simulation/HxIndividualManipulator.h"
#include "simulation/HxSystemSimulation.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// From this many links on, the capture loop fetches ahead what the next links' captures read:
// fewer stay in the nearest caches from one sample to the next (a link's captures read more than
// half a kilobyte).
constexpr HxU32 kLinksFetchedAhead = 64;

// With many links, a link's types are reached through two pointers, to its list of types and to
// each type, that lead to far caches: before link `position` captures, the list of the link four
// ahead and the types of the link two ahead (whose list came meanwhile) are fetched, far enough
// ahead for the far caches to answer in time.
void fetchAhead(const HxManipulatorDataCapture::LinkDataCaptureVector::ContainerType& links, HxU32 position) {
  if (position + 4 < links.size()) links[position + 4].prefetchTypeList();
  if (position + 2 < links.size()) links[position + 2].prefetchTypes();
}

// The full size of a list of types.
HxU32 sizeOf(const HxDataCaptureTypeVector& types) {
  HxU32 size = 0;
  for (HxU32 i = 0; i < types.size(); ++i) size += types[i].dataSize();
  return size;
}
}  // namespace

// A growing list of captures moves them (their types are not cloned again).
static_assert(std::is_nothrow_move_constructible_v<HxManipulatorDataCapture> &&
                  std::is_nothrow_move_constructible_v<HxLinkDataCapture> &&
                  std::is_nothrow_move_constructible_v<HxEndEffectorDataCapture>,
              "captures move without throwing");

HxDataCaptureTypeVector HxManipulatorDataCapture::m_theAvailableDataCaptureTypeVector;
HxBoolean HxManipulatorDataCapture::m_theAvailableTypesReady = false;

HxManipulatorDataCapture::HxManipulatorDataCapture() : manipulatorIndex_(0u) {}

void HxManipulatorDataCapture::registerComponents() {
  registerComponent(HxSimAnalysis::HxManipulatorIndexToken, &manipulatorIndex_);
  registerComponent(HxSimAnalysis::HxDataCaptureTypeVectorToken, &dataCaptureVector_);
  registerComponent(HxSimAnalysis::HxLinkDataCaptureVectorToken, &linkDataCaptureVector_);
  registerComponent(HxSimAnalysis::HxEndEffectorDataCaptureVectorToken, &endEffectorDataCaptureVector_);
}

HxBoolean HxManipulatorDataCapture::read(HxXmlReader& reader) {
  forgetLists();
  return HxXmlCompoundType::read(reader);
}

void HxManipulatorDataCapture::forgetLists() const {
  linkPositions_.forget();
  endEffectorPositions_.forget();
  tally_.kept = false;
}

template <class Change>
HxBoolean HxManipulatorDataCapture::changeTypes(const HxDataCaptureTypeVector& types, Change change) {
  const HxU32 before = sizeOf(types);
  const HxBoolean result = change();
  tally_.size += sizeOf(types) - before;
  return result;
}

HxU32 HxManipulatorDataCapture::elementCount() const {
  if (!tally_.kept) {
    HxU32 size = 0;
    HxFlatOrder::forEachCaptureEntry(
        *this, [&size](HxU32, HxU32, const auto& entry) { size += sizeOf(entry.dataCaptureVector()); });
    tally_.size = size;
    tally_.kept = true;
  }
  return tally_.size;
}

HX_XML_SERIALISABLE_DEFINITIONS(HxManipulatorDataCapture, HxSimAnalysis::HxManipulatorDataCaptureToken)

unsigned int HxManipulatorDataCapture::manipulatorIndex() const { return manipulatorIndex_.value(); }

void HxManipulatorDataCapture::setManipulatorIndex(unsigned int const& index) { manipulatorIndex_ = index; }

const HxDataCaptureTypeVector& HxManipulatorDataCapture::dataCaptureVector() const { return dataCaptureVector_; }

const HxManipulatorDataCapture::LinkDataCaptureVector& HxManipulatorDataCapture::linkDataCaptureVector() const {
  return linkDataCaptureVector_;
}

const HxManipulatorDataCapture::EndEffectorDataCaptureVector& HxManipulatorDataCapture::endEffectorDataCaptureVector()
    const {
  return endEffectorDataCaptureVector_;
}

HxBoolean HxManipulatorDataCapture::captureData(const HxSystemSimulation& simulation) const {
  HxBoolean result = true;
  const unsigned int manipulator = manipulatorIndex_.value();
  const unsigned int elementIndex = ManipulatorLevelElementIndex;

  const LinkDataCaptureVector::ContainerType& links = linkDataCaptureVector_.vectorContainer();
  const bool manyLinks = links.size() >= kLinksFetchedAhead;

  // Every capture is made even after a failure, so that the other quantities stay current. The
  // manipulator-level types are called one by one; each link and end-effector capture calls its
  // own types.
  auto capture = [&](HxU32, HxU32 position, const auto& entry) {
    using Entry = std::decay_t<decltype(entry)>;
    if constexpr (std::is_same_v<Entry, HxDataCaptureTypeVector>) {
      for (HxU32 i = 0; i < entry.size(); ++i) {
        if (!entry[i].captureData(simulation, manipulator, elementIndex)) result = false;
      }
    } else {
      if constexpr (std::is_same_v<Entry, HxLinkDataCapture>) {
        if (manyLinks) fetchAhead(links, position);
      }
      if (!entry.captureData(simulation, manipulator)) result = false;
    }
  };
  HxFlatOrder::forEachLevelEntry(dataCaptureVector_, linkDataCaptureVector_, endEffectorDataCaptureVector_, capture);
  return result;
}

const HxDataCaptureType* HxManipulatorDataCapture::dataCaptureType(const HxToken& token) const {
  return HxCaptureTypeListOps::find(dataCaptureVector_, token);
}

HxBoolean HxManipulatorDataCapture::addDataCaptureType(const HxToken& token) {
  return changeTypes(dataCaptureVector_, [&] {
    return HxCaptureTypeListOps::addByToken(dataCaptureVector_, token, HxDataCaptureLevel::Manipulator);
  });
}

HxBoolean HxManipulatorDataCapture::addLinkDataCaptureType(const HxToken& token,
                                                           const HxIndividualManipulator& manipulator) {
  // The type is created only to check its level.
  if (!HxCaptureTypeListOps::isTokenOfLevel(token, HxDataCaptureLevel::Link)) return false;

  for (HxU32 i = 0; i < manipulator.numberOfLinks(); ++i) {
    const HxLink* link = manipulator.link(i);
    if (link == nullptr) continue;
    unsigned int position = 0;
    if (findIndex(link->identifier(), position)) {
      HxLinkDataCapture& capture = linkDataCaptureVector_[position];
      changeTypes(capture.dataCaptureVector(), [&] { return capture.addDataCaptureType(token); });
    } else {
      HxLinkDataCapture capture;
      capture.setLinkIdentifier(link->identifier());
      if (capture.addDataCaptureType(token)) appendLink(std::move(capture));
    }
  }
  return true;
}

HxBoolean HxManipulatorDataCapture::addLinkDataCaptureType(const std::string& linkIdentifier, const HxToken& token) {
  unsigned int position = 0;
  if (findIndex(linkIdentifier, position)) {
    HxLinkDataCapture& capture = linkDataCaptureVector_[position];
    return changeTypes(capture.dataCaptureVector(), [&] { return capture.addDataCaptureType(token); });
  }

  // A new link capture is kept only once its first type was accepted.
  HxLinkDataCapture capture;
  capture.setLinkIdentifier(linkIdentifier);
  if (!capture.addDataCaptureType(token)) return false;
  appendLink(std::move(capture));
  return true;
}

HxBoolean HxManipulatorDataCapture::addEndEffectorDataCaptureType(const HxToken& token, unsigned int numEndEffectors) {
  if (!HxCaptureTypeListOps::isTokenOfLevel(token, HxDataCaptureLevel::EndEffector)) return false;
  for (unsigned int e = 0; e < numEndEffectors; ++e) addEndEffectorDataCaptureType(e, token);
  return true;
}

HxBoolean HxManipulatorDataCapture::addEndEffectorDataCaptureType(const HxDataCaptureType& type,
                                                                  unsigned int numEndEffectors) {
  if (type.type() != HxDataCaptureLevel::EndEffector) return false;
  for (unsigned int e = 0; e < numEndEffectors; ++e) addEndEffectorDataCaptureType(e, type);
  return true;
}

HxBoolean HxManipulatorDataCapture::addEndEffectorDataCaptureType(unsigned int endEffectorIndex, const HxToken& token) {
  unsigned int position = 0;
  if (findIndex(endEffectorIndex, position)) {
    HxEndEffectorDataCapture& capture = endEffectorDataCaptureVector_[position];
    return changeTypes(capture.dataCaptureVector(), [&] { return capture.addDataCaptureType(token); });
  }
  HxEndEffectorDataCapture capture;
  capture.setEndEffectorIndex(endEffectorIndex);
  if (!capture.addDataCaptureType(token)) return false;
  appendEndEffector(std::move(capture));
  return true;
}

HxBoolean HxManipulatorDataCapture::addEndEffectorDataCaptureType(unsigned int endEffectorIndex,
                                                                  const HxDataCaptureType& type) {
  unsigned int position = 0;
  if (findIndex(endEffectorIndex, position)) {
    HxEndEffectorDataCapture& capture = endEffectorDataCaptureVector_[position];
    return changeTypes(capture.dataCaptureVector(), [&] { return capture.addDataCaptureType(type); });
  }
  HxEndEffectorDataCapture capture;
  capture.setEndEffectorIndex(endEffectorIndex);
  if (!capture.addDataCaptureType(type)) return false;
  appendEndEffector(std::move(capture));
  return true;
}

HxBoolean HxManipulatorDataCapture::removeDataCaptureType(const HxToken& token) {
  return changeTypes(dataCaptureVector_,
                     [&] { return HxCaptureTypeListOps::removeByToken(dataCaptureVector_, token); });
}

HxBoolean HxManipulatorDataCapture::removeLinkDataCaptureType(const HxToken& token) {
  HxBoolean removed = false;
  tally_.kept = false;
  // Last to first, so that erasing keeps the positions still to visit.
  for (HxU32 l = linkDataCaptureVector_.size(); l-- > 0;) {
    if (linkDataCaptureVector_[l].removeDataCaptureType(token)) removed = true;
    if (linkDataCaptureVector_[l].numDataCaptureTypes() == 0) {
      linkDataCaptureVector_.erase(l);
      linkPositions_.forget();
    }
  }
  return removed;
}

HxBoolean HxManipulatorDataCapture::removeEndEffectorDataCaptureType(const HxToken& token) {
  HxBoolean removed = false;
  tally_.kept = false;
  for (HxU32 e = endEffectorDataCaptureVector_.size(); e-- > 0;) {
    if (endEffectorDataCaptureVector_[e].removeDataCaptureType(token)) removed = true;
    if (endEffectorDataCaptureVector_[e].numDataCaptureTypes() == 0) {
      endEffectorDataCaptureVector_.erase(e);
      endEffectorPositions_.forget();
    }
  }
  return removed;
}

HxBoolean HxManipulatorDataCapture::removeLinkDataCaptureType(const std::string& linkIdentifier, const HxToken& token) {
  unsigned int position = 0;
  if (!findIndex(linkIdentifier, position)) return false;
  tally_.kept = false;
  const HxBoolean removed = linkDataCaptureVector_[position].removeDataCaptureType(token);
  if (linkDataCaptureVector_[position].numDataCaptureTypes() == 0) {
    linkDataCaptureVector_.erase(position);
    linkPositions_.forget();
  }
  return removed;
}

HxBoolean HxManipulatorDataCapture::removeEndEffectorDataCaptureType(unsigned int endEffectorIndex,
                                                                     const HxToken& token) {
  unsigned int position = 0;
  if (!findIndex(endEffectorIndex, position)) return false;
  tally_.kept = false;
  const HxBoolean removed = endEffectorDataCaptureVector_[position].removeDataCaptureType(token);
  if (endEffectorDataCaptureVector_[position].numDataCaptureTypes() == 0) {
    endEffectorDataCaptureVector_.erase(position);
    endEffectorPositions_.forget();
  }
  return removed;
}

void HxManipulatorDataCapture::addLinkDataCapture(const HxLinkDataCapture& capture) { appendLink(capture); }

void HxManipulatorDataCapture::appendLink(HxLinkDataCapture capture) {
  // A copy of an element of the list itself was made before the list grows.
  linkDataCaptureVector_.vectorContainer().push_back(std::move(capture));
  const HxU32 position = linkDataCaptureVector_.size() - 1;
  const HxLinkDataCapture& appended = linkDataCaptureVector_[position];
  linkPositions_.appended(appended.linkIdentifier(), position);
  tally_.size += sizeOf(appended.dataCaptureVector());
}

const HxLinkDataCapture* HxManipulatorDataCapture::linkDataCapture(const std::string& linkIdentifier) const {
  unsigned int position = 0;
  return findIndex(linkIdentifier, position) ? &linkDataCaptureVector_[position] : nullptr;
}

void HxManipulatorDataCapture::addEndEffectorDataCapture(const HxEndEffectorDataCapture& capture) {
  appendEndEffector(capture);
}

void HxManipulatorDataCapture::appendEndEffector(HxEndEffectorDataCapture capture) {
  endEffectorDataCaptureVector_.vectorContainer().push_back(std::move(capture));
  const HxU32 position = endEffectorDataCaptureVector_.size() - 1;
  const HxEndEffectorDataCapture& appended = endEffectorDataCaptureVector_[position];
  endEffectorPositions_.appended(appended.endEffectorIndex(), position);
  tally_.size += sizeOf(appended.dataCaptureVector());
}

const HxEndEffectorDataCapture* HxManipulatorDataCapture::endEffectorDataCapture(unsigned int endEffectorIndex) const {
  unsigned int position = 0;
  return findIndex(endEffectorIndex, position) ? &endEffectorDataCaptureVector_[position] : nullptr;
}

HxBoolean HxManipulatorDataCapture::removeLinkDataCapture(const std::string& linkIdentifier) {
  unsigned int position = 0;
  if (!findIndex(linkIdentifier, position)) return false;
  linkDataCaptureVector_.erase(position);
  forgetLists();
  return true;
}

HxBoolean HxManipulatorDataCapture::removeEndEffectorDataCapture(unsigned int endEffectorIndex) {
  unsigned int position = 0;
  if (!findIndex(endEffectorIndex, position)) return false;
  endEffectorDataCaptureVector_.erase(position);
  forgetLists();
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

unsigned int HxManipulatorDataCapture::numDataCaptureTypes() const { return dataCaptureVector_.size(); }

unsigned int HxManipulatorDataCapture::numDataCaptureTypes(const std::string& linkIdentifier) const {
  const HxLinkDataCapture* capture = linkDataCapture(linkIdentifier);
  return capture != nullptr ? capture->numDataCaptureTypes() : 0;
}

unsigned int HxManipulatorDataCapture::numDataCaptureTypes(unsigned int endEffectorIndex) const {
  const HxEndEffectorDataCapture* capture = endEffectorDataCapture(endEffectorIndex);
  return capture != nullptr ? capture->numDataCaptureTypes() : 0;
}

HxBoolean HxManipulatorDataCapture::setDisableFlags(const HxToken& token, const Flags& flags) {
  return HxCaptureTypeListOps::setDisableFlags(dataCaptureVector_, token, flags);
}

HxBoolean HxManipulatorDataCapture::setDisableFlags(const std::string& linkIdentifier, const HxToken& token,
                                                    const Flags& flags) {
  unsigned int position = 0;
  if (!findIndex(linkIdentifier, position)) return false;
  return linkDataCaptureVector_[position].setDisableFlags(token, flags);
}

HxBoolean HxManipulatorDataCapture::setDisableFlags(unsigned int endEffectorIndex, const HxToken& token,
                                                    const Flags& flags) {
  unsigned int position = 0;
  if (!findIndex(endEffectorIndex, position)) return false;
  return endEffectorDataCaptureVector_[position].setDisableFlags(token, flags);
}

void HxManipulatorDataCapture::removeAllDataCaptureTypes() {
  dataCaptureVector_.clear();
  for (HxU32 l = 0; l < linkDataCaptureVector_.size(); ++l) linkDataCaptureVector_[l].removeAllDataCaptureTypes();
  linkDataCaptureVector_.clear();
  for (HxU32 e = 0; e < endEffectorDataCaptureVector_.size(); ++e) {
    endEffectorDataCaptureVector_[e].removeAllDataCaptureTypes();
  }
  endEffectorDataCaptureVector_.clear();
  forgetLists();
}

// The first match wins (the look-ups keep the first position of each key).
HxBoolean HxManipulatorDataCapture::findIndex(const std::string& linkIdentifier, unsigned int& position) const {
  return linkPositions_.find(
      linkDataCaptureVector_, [](const HxLinkDataCapture& link) -> const std::string& { return link.linkIdentifier(); },
      linkIdentifier, position);
}

HxBoolean HxManipulatorDataCapture::findIndex(unsigned int endEffectorIndex, unsigned int& position) const {
  return endEffectorPositions_.find(
      endEffectorDataCaptureVector_,
      [](const HxEndEffectorDataCapture& endEffector) { return endEffector.endEffectorIndex(); }, endEffectorIndex,
      position);
}

const HxDataCaptureTypeVector& HxManipulatorDataCapture::allAvailableDataCaptureTypes() {
  if (m_theAvailableTypesReady) return m_theAvailableDataCaptureTypeVector;
  m_theAvailableDataCaptureTypeVector.clear();
  HxCaptureTypeListOps::collectAvailable(m_theAvailableDataCaptureTypeVector, HxDataCaptureLevel::Manipulator);
  m_theAvailableTypesReady = true;
  return m_theAvailableDataCaptureTypeVector;
}
