#include "analysis/capture/HxSystemDataCapture.h"

#include <algorithm>

#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxNumberText.h"
#include "simulation/HxIndividualManipulator.h"
#include "simulation/HxSystemSimulation.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// Calls `visit(type)` for every type of a manipulator capture in flat order: its
// manipulator-level types, then each link capture's types, then each end-effector capture's.
template <class Visit>
void forEachType(const HxManipulatorDataCapture& capture, Visit visit) {
  const HxDataCaptureTypeVector& types = capture.dataCaptureVector();
  for (HxU32 i = 0; i < types.size(); ++i) visit(types[i]);
  const auto& links = capture.linkDataCaptureVector();
  for (HxU32 l = 0; l < links.size(); ++l) {
    const HxDataCaptureTypeVector& linkTypes = links[l].dataCaptureVector();
    for (HxU32 i = 0; i < linkTypes.size(); ++i) visit(linkTypes[i]);
  }
  const auto& endEffectors = capture.endEffectorDataCaptureVector();
  for (HxU32 e = 0; e < endEffectors.size(); ++e) {
    const HxDataCaptureTypeVector& endEffectorTypes = endEffectors[e].dataCaptureVector();
    for (HxU32 i = 0; i < endEffectorTypes.size(); ++i) visit(endEffectorTypes[i]);
  }
}

// One value vector per type of a list, each sized to the type's active size.
HxManipulatorDataStorage::QuantityVector shapeOf(const HxDataCaptureTypeVector& types) {
  HxManipulatorDataStorage::QuantityVector quantities;
  quantities.reserve(types.size());
  for (HxU32 i = 0; i < types.size(); ++i) {
    quantities.pushBack(HxManipulatorDataStorage::ValueVector(types[i].activeDataSize()));
  }
  return quantities;
}
}  // namespace

HxSystemDataCapture::HxSystemDataCapture() = default;

HxSystemDataCapture::HxSystemDataCapture(const HxSystemDataCapture& other)
    : HxBaseSystemDataComponent(other),
      label_(other.label_),
      manipulatorDataCaptureVector_(other.manipulatorDataCaptureVector_),
      elementSize_(other.elementSize_) {}

HxSystemDataCapture& HxSystemDataCapture::operator=(const HxSystemDataCapture& other) {
  if (this != &other) {
    HxBaseSystemDataComponent::operator=(other);
    label_ = other.label_;
    manipulatorDataCaptureVector_ = other.manipulatorDataCaptureVector_;
    elementSize_ = other.elementSize_;
  }
  return *this;
}

HxSystemDataCapture::~HxSystemDataCapture() = default;

void HxSystemDataCapture::registerComponents() {
  registerComponent(HxSimAnalysis::HxSystemDataCaptureLabelToken, &label_);
  registerComponent(HxSimAnalysis::HxManipulatorDataCaptureVectorToken, &manipulatorDataCaptureVector_);
}

HxBoolean HxSystemDataCapture::write(HxXmlWriter& writer) const { return HxBaseSystemDataComponent::write(writer); }

HxBoolean HxSystemDataCapture::read(HxXmlReader& reader) {
  const HxBoolean result = HxBaseSystemDataComponent::read(reader);
  computeElementSize();
  return result;
}

HxXmlObject* HxSystemDataCapture::clone() const { return new HxSystemDataCapture(*this); }

HxXmlObject* HxSystemDataCapture::newObject() const { return new HxSystemDataCapture(); }

HxBoolean HxSystemDataCapture::equality(const HxXmlObject* other) const {
  const auto* capture = dynamic_cast<const HxSystemDataCapture*>(other);
  return capture != nullptr && *this == *capture;
}

const HxToken& HxSystemDataCapture::token() const { return classToken(); }

const HxToken& HxSystemDataCapture::classToken() { return HxSimAnalysis::HxGeneralCaptureToken; }

HxXmlObject* HxSystemDataCapture::creator() { return new HxSystemDataCapture(); }

HxSystemDataCapture HxSystemDataCapture::nullObject() { return HxSystemDataCapture(); }

bool HxSystemDataCapture::operator==(const HxSystemDataCapture& other) const {
  return HxBaseSystemDataComponent::operator==(other) && label_ == other.label_ &&
         manipulatorDataCaptureVector_ == other.manipulatorDataCaptureVector_;
}

unsigned int HxSystemDataCapture::type() const { return 0; }

const std::string& HxSystemDataCapture::label() const { return label_.value(); }

void HxSystemDataCapture::setLabel(const std::string& label) { label_ = label; }

const HxSystemDataCapture::ManipulatorDataCaptureVector& HxSystemDataCapture::manipulatorDataCaptureVector() const {
  return manipulatorDataCaptureVector_;
}

HxBoolean HxSystemDataCapture::captureData(const HxSystemSimulation& simulation) const {
  HxBoolean result = true;
  for (HxU32 p = 0; p < manipulatorDataCaptureVector_.size(); ++p) {
    if (!manipulatorDataCaptureVector_[p].captureData(simulation)) result = false;
  }
  return result;
}

HxBoolean HxSystemDataCapture::findIndex(unsigned int const& m, unsigned int& position) const {
  // The whole list is walked: of several entries for m, the last one is found.
  HxBoolean found = false;
  for (HxU32 p = 0; p < manipulatorDataCaptureVector_.size(); ++p) {
    if (manipulatorDataCaptureVector_[p].manipulatorIndex() == m) {
      position = p;
      found = true;
    }
  }
  return found;
}

template <class Add>
HxBoolean HxSystemDataCapture::addToManipulator(unsigned int const& m, Add add) {
  HxBoolean result = false;
  unsigned int position = 0;
  if (findIndex(m, position)) {
    result = add(manipulatorDataCaptureVector_[position]);
  } else {
    // A manipulator capture is never created empty: it is kept only if the add succeeded.
    HxManipulatorDataCapture capture;
    capture.setManipulatorIndex(m);
    result = add(capture);
    if (result) manipulatorDataCaptureVector_.pushBack(capture);
  }
  if (result) computeElementSize();
  return result;
}

HxBoolean HxSystemDataCapture::addManipulatorDataCaptureType(unsigned int const& m, const HxToken& token) {
  return addToManipulator(m, [&](HxManipulatorDataCapture& c) { return c.addDataCaptureType(token); });
}

HxBoolean HxSystemDataCapture::addLinkDataCaptureType(unsigned int const& m, const HxToken& token,
                                                      const HxIndividualManipulator& manipulator) {
  return addToManipulator(m,
                          [&](HxManipulatorDataCapture& c) { return c.addLinkDataCaptureType(token, manipulator); });
}

HxBoolean HxSystemDataCapture::addLinkDataCaptureType(unsigned int const& m, const std::string& link,
                                                      const HxToken& token) {
  return addToManipulator(m, [&](HxManipulatorDataCapture& c) { return c.addLinkDataCaptureType(link, token); });
}

HxBoolean HxSystemDataCapture::addEndEffectorDataCaptureType(unsigned int const& m, const HxToken& token,
                                                             unsigned int const& numEndEffectors) {
  return addToManipulator(
      m, [&](HxManipulatorDataCapture& c) { return c.addEndEffectorDataCaptureType(token, numEndEffectors); });
}

HxBoolean HxSystemDataCapture::addEndEffectorDataCaptureType(unsigned int const& m, const HxDataCaptureType& type,
                                                             unsigned int const& numEndEffectors) {
  return addToManipulator(
      m, [&](HxManipulatorDataCapture& c) { return c.addEndEffectorDataCaptureType(type, numEndEffectors); });
}

HxBoolean HxSystemDataCapture::addEndEffectorDataCaptureType(unsigned int const& m, unsigned int const& e,
                                                             const HxDataCaptureType& type) {
  return addToManipulator(m, [&](HxManipulatorDataCapture& c) { return c.addEndEffectorDataCaptureType(e, type); });
}

HxBoolean HxSystemDataCapture::addEndEffectorDataCaptureType(unsigned int const& m, unsigned int const& e,
                                                             const HxToken& token) {
  return addToManipulator(m, [&](HxManipulatorDataCapture& c) { return c.addEndEffectorDataCaptureType(e, token); });
}

template <class Remove>
HxBoolean HxSystemDataCapture::removeFromManipulator(unsigned int const& m, bool endEffectorLevel, Remove remove) {
  unsigned int position = 0;
  if (!findIndex(m, position)) return false;
  HxManipulatorDataCapture& capture = manipulatorDataCaptureVector_[position];
  const HxBoolean result = remove(capture);

  // Pruning looks at the manipulator-level types and at the sub-captures of one level only:
  // the end-effector captures after an end-effector removal, the link captures otherwise. An
  // entry whose other sub-captures are still populated is erased all the same.
  const HxU32 subCaptures = endEffectorLevel ? capture.endEffectorDataCaptureVector().size()
                                             : capture.linkDataCaptureVector().size();
  if (capture.dataCaptureVector().size() == 0 && subCaptures == 0) manipulatorDataCaptureVector_.erase(position);

  if (result) computeElementSize();
  return result;
}

HxBoolean HxSystemDataCapture::removeManipulatorDataCaptureType(unsigned int const& m, const HxToken& token) {
  return removeFromManipulator(m, false, [&](HxManipulatorDataCapture& c) { return c.removeDataCaptureType(token); });
}

HxBoolean HxSystemDataCapture::removeLinkDataCaptureType(unsigned int const& m, const HxToken& token) {
  return removeFromManipulator(m, false,
                               [&](HxManipulatorDataCapture& c) { return c.removeLinkDataCaptureType(token); });
}

HxBoolean HxSystemDataCapture::removeLinkDataCaptureType(unsigned int const& m, const std::string& link,
                                                         const HxToken& token) {
  return removeFromManipulator(
      m, false, [&](HxManipulatorDataCapture& c) { return c.removeLinkDataCaptureType(link, token); });
}

HxBoolean HxSystemDataCapture::removeEndEffectorDataCaptureType(unsigned int const& m, const HxToken& token) {
  return removeFromManipulator(
      m, true, [&](HxManipulatorDataCapture& c) { return c.removeEndEffectorDataCaptureType(token); });
}

HxBoolean HxSystemDataCapture::removeEndEffectorDataCaptureType(unsigned int const& m, unsigned int const& e,
                                                                const HxToken& token) {
  return removeFromManipulator(
      m, true, [&](HxManipulatorDataCapture& c) { return c.removeEndEffectorDataCaptureType(e, token); });
}

HxBoolean HxSystemDataCapture::addManipulatorDataCapture(const HxManipulatorDataCapture& capture) {
  manipulatorDataCaptureVector_.pushBack(capture);
  computeElementSize();
  return true;
}

const HxManipulatorDataCapture* HxSystemDataCapture::manipulatorDataCapture(unsigned int const& m) const {
  unsigned int position = 0;
  return findIndex(m, position) ? &manipulatorDataCaptureVector_[position] : nullptr;
}

HxBoolean HxSystemDataCapture::removeManipulatorDataCapture(unsigned int const& m) {
  unsigned int position = 0;
  if (!findIndex(m, position)) return false;
  manipulatorDataCaptureVector_.erase(position);
  computeElementSize();
  return true;
}

HxBoolean HxSystemDataCapture::isDataCaptureTypeIncluded(unsigned int const& m, const HxToken& token) const {
  const HxManipulatorDataCapture* capture = manipulatorDataCapture(m);
  return capture != nullptr && capture->isDataCaptureTypeIncluded(token);
}

HxBoolean HxSystemDataCapture::isDataCaptureTypeIncluded(unsigned int const& m, const std::string& link,
                                                         const HxToken& token) const {
  const HxManipulatorDataCapture* capture = manipulatorDataCapture(m);
  return capture != nullptr && capture->isDataCaptureTypeIncluded(link, token);
}

HxBoolean HxSystemDataCapture::isDataCaptureTypeIncluded(unsigned int const& m, unsigned int const& e,
                                                         const HxToken& token) const {
  const HxManipulatorDataCapture* capture = manipulatorDataCapture(m);
  return capture != nullptr && capture->isDataCaptureTypeIncluded(e, token);
}

unsigned int HxSystemDataCapture::numDataCaptureTypes(unsigned int const& m) const {
  const HxManipulatorDataCapture* capture = manipulatorDataCapture(m);
  return capture != nullptr ? capture->numDataCaptureTypes() : 0;
}

unsigned int HxSystemDataCapture::numDataCaptureTypes(unsigned int const& m, const std::string& link) const {
  const HxManipulatorDataCapture* capture = manipulatorDataCapture(m);
  return capture != nullptr ? capture->numDataCaptureTypes(link) : 0;
}

unsigned int HxSystemDataCapture::numDataCaptureTypes(unsigned int const& m, unsigned int const& e) const {
  const HxManipulatorDataCapture* capture = manipulatorDataCapture(m);
  return capture != nullptr ? capture->numDataCaptureTypes(e) : 0;
}

HxBoolean HxSystemDataCapture::setDisableFlags(unsigned int const& m, const HxToken& token, const Flags& flags) {
  unsigned int position = 0;
  if (!findIndex(m, position)) return false;
  return manipulatorDataCaptureVector_[position].setDisableFlags(token, flags);
}

HxBoolean HxSystemDataCapture::setDisableFlags(unsigned int const& m, const std::string& link, const HxToken& token,
                                               const Flags& flags) {
  unsigned int position = 0;
  if (!findIndex(m, position)) return false;
  return manipulatorDataCaptureVector_[position].setDisableFlags(link, token, flags);
}

HxBoolean HxSystemDataCapture::setDisableFlags(unsigned int const& m, unsigned int const& e, const HxToken& token,
                                               const Flags& flags) {
  unsigned int position = 0;
  if (!findIndex(m, position)) return false;
  return manipulatorDataCaptureVector_[position].setDisableFlags(e, token, flags);
}

void HxSystemDataCapture::allocateStorage(HxSystemDataStorage& storage) const {
  HxSystemDataStorage::ManipulatorDataVector manipulators;
  manipulators.reserve(manipulatorDataCaptureVector_.size());
  HxU32 largest = 0;

  // Position p of the record belongs to the manipulator capture at position p.
  for (HxU32 p = 0; p < manipulatorDataCaptureVector_.size(); ++p) {
    const HxManipulatorDataCapture& capture = manipulatorDataCaptureVector_[p];
    HxManipulatorDataStorage manipulator;
    manipulator.setManipulatorLevelData(shapeOf(capture.dataCaptureVector()));

    HxManipulatorDataStorage::ElementVector links;
    for (HxU32 l = 0; l < capture.linkDataCaptureVector().size(); ++l) {
      links.pushBack(shapeOf(capture.linkDataCaptureVector()[l].dataCaptureVector()));
    }
    manipulator.setLinkLevelData(links);

    HxManipulatorDataStorage::ElementVector endEffectors;
    for (HxU32 e = 0; e < capture.endEffectorDataCaptureVector().size(); ++e) {
      endEffectors.pushBack(shapeOf(capture.endEffectorDataCaptureVector()[e].dataCaptureVector()));
    }
    manipulator.setEndEffectorData(endEffectors);

    manipulators.pushBack(manipulator);
    forEachType(capture, [&largest](const HxDataCaptureType& type) {
      largest = std::max<HxU32>(largest, type.data().size());
    });
  }

  storage.setManipulatorDataVector(manipulators);
  storage.computeElementSize();
  // storeData then never grows its scratch buffer.
  activeData_.reserve(largest);
}

HxBoolean HxSystemDataCapture::storeData(HxSystemDataStorage& storage) const {
  if (manipulatorDataCaptureVector_.size() == 0) return false;

  // One scratch buffer serves every type; the offset within each quantity is always 0. Each
  // type is looked up once (the polymorphic vectors check every index).
  for (HxU32 p = 0; p < manipulatorDataCaptureVector_.size(); ++p) {
    const HxManipulatorDataCapture& capture = manipulatorDataCaptureVector_[p];

    const HxDataCaptureTypeVector& types = capture.dataCaptureVector();
    const HxU32 typeCount = types.size();
    for (HxU32 i = 0; i < typeCount; ++i) {
      const HxDataCaptureType& type = types[i];
      getActiveData(type.disableFlags(), type.data(), activeData_);
      storage.setSpecificManipulatorLevelData(p, i, 0, activeData_);
    }

    const auto& links = capture.linkDataCaptureVector();
    const HxU32 linkCount = links.size();
    for (HxU32 l = 0; l < linkCount; ++l) {
      const HxDataCaptureTypeVector& linkTypes = links[l].dataCaptureVector();
      const HxU32 linkTypeCount = linkTypes.size();
      for (HxU32 i = 0; i < linkTypeCount; ++i) {
        const HxDataCaptureType& type = linkTypes[i];
        getActiveData(type.disableFlags(), type.data(), activeData_);
        storage.setSpecificLinkLevelData(p, l, i, 0, activeData_);
      }
    }

    const auto& endEffectors = capture.endEffectorDataCaptureVector();
    const HxU32 endEffectorCount = endEffectors.size();
    for (HxU32 k = 0; k < endEffectorCount; ++k) {
      const HxDataCaptureTypeVector& endEffectorTypes = endEffectors[k].dataCaptureVector();
      const HxU32 endEffectorTypeCount = endEffectorTypes.size();
      for (HxU32 i = 0; i < endEffectorTypeCount; ++i) {
        const HxDataCaptureType& type = endEffectorTypes[i];
        getActiveData(type.disableFlags(), type.data(), activeData_);
        storage.setSpecificEndEffectorData(p, k, i, 0, activeData_);
      }
    }
  }
  return true;
}

void HxSystemDataCapture::getDataElements(Values& values) const {
  values.resize(elementSize_);
  HxU32 position = 0;
  for (HxU32 p = 0; p < manipulatorDataCaptureVector_.size(); ++p) {
    forEachType(manipulatorDataCaptureVector_[p], [&](const HxDataCaptureType& type) {
      const Flags& flags = type.disableFlags();
      const Values& data = type.data();
      const HxU32 dataSize = std::min<HxU32>(type.dataSize(), data.size());
      const HxU32 flagged = std::min<HxU32>(flags.size(), dataSize);
      // Active values packed from the front; disabled ones leave the tail unwritten.
      for (HxU32 j = 0; j < flagged; ++j) {
        if (!flags[j].value() && position < values.size()) values[position++] = data[j];
      }
      for (HxU32 j = flagged; j < dataSize; ++j) {
        if (position < values.size()) values[position++] = data[j];
      }
    });
  }
}

void HxSystemDataCapture::appendTypeLabels(const HxDataCaptureType& type, const std::string& prefix,
                                           std::vector<std::string>& labels, std::size_t& position) const {
  const HxU32 dataSize = type.dataSize();
  // A type one column wide (or none) keeps its one label whatever its flags say.
  if (dataSize <= 1) {
    if (position < labels.size()) labels[position].assign(prefix).append(type.description());
    ++position;
    return;
  }
  const Flags& flags = type.disableFlags();
  for (HxU32 j = 0; j < dataSize; ++j) {
    if (j < flags.size() && flags[j].value()) continue;
    if (position < labels.size()) labels[position].assign(prefix).append(type.description()).append(":").append(type.label(j));
    ++position;
  }
}

void HxSystemDataCapture::getStringElements(std::vector<std::string>& labels) const {
  labels.resize(static_cast<std::size_t>(elementSize_) + 2);
  labels[0] = "Time";
  labels[1] = "Point Path Index";
  std::size_t position = 2;

  for (HxU32 p = 0; p < manipulatorDataCaptureVector_.size(); ++p) {
    const HxManipulatorDataCapture& capture = manipulatorDataCaptureVector_[p];
    HxINT2STRING(capture.manipulatorIndex(), 10, number_);
    prefix_.assign("Manip[").append(number_).append("]:");

    const HxDataCaptureTypeVector& types = capture.dataCaptureVector();
    for (HxU32 i = 0; i < types.size(); ++i) appendTypeLabels(types[i], prefix_, labels, position);

    const auto& links = capture.linkDataCaptureVector();
    for (HxU32 l = 0; l < links.size(); ++l) {
      subPrefix_.assign(prefix_).append(links[l].linkIdentifier()).append(":");
      const HxDataCaptureTypeVector& linkTypes = links[l].dataCaptureVector();
      for (HxU32 i = 0; i < linkTypes.size(); ++i) appendTypeLabels(linkTypes[i], subPrefix_, labels, position);
    }

    const auto& endEffectors = capture.endEffectorDataCaptureVector();
    for (HxU32 k = 0; k < endEffectors.size(); ++k) {
      HxINT2STRING(endEffectors[k].endEffectorIndex(), 10, number_);
      subPrefix_.assign(prefix_).append("EE[").append(number_).append("]:");
      const HxDataCaptureTypeVector& endEffectorTypes = endEffectors[k].dataCaptureVector();
      for (HxU32 i = 0; i < endEffectorTypes.size(); ++i) {
        appendTypeLabels(endEffectorTypes[i], subPrefix_, labels, position);
      }
    }
  }
  // Disabled columns leave the end of the list empty (also when the caller's strings held text).
  for (; position < labels.size(); ++position) labels[position].clear();
}

void HxSystemDataCapture::removeAllDataCaptureTypes() {
  for (HxU32 p = 0; p < manipulatorDataCaptureVector_.size(); ++p) {
    manipulatorDataCaptureVector_[p].removeAllDataCaptureTypes();
  }
  manipulatorDataCaptureVector_.clear();
  elementSize_ = 0;
}

void HxSystemDataCapture::computeElementSize() {
  HxU32 size = 0;
  for (HxU32 p = 0; p < manipulatorDataCaptureVector_.size(); ++p) {
    forEachType(manipulatorDataCaptureVector_[p], [&size](const HxDataCaptureType& type) { size += type.dataSize(); });
  }
  elementSize_ = size;
}

void HxSystemDataCapture::getActiveData(const Flags& flags, const Values& data, Values& activeData) const {
  // Work on the standard containers: one call per vector instead of one per element.
  const Values::ContainerType& source = data.vectorContainer();
  const Flags::ContainerType& disabled = flags.vectorContainer();
  Values::ContainerType& target = activeData.vectorContainer();
  const std::size_t flagged = std::min(disabled.size(), source.size());
  std::size_t first = 0;
  while (first < flagged && !disabled[first].value()) ++first;

  if (first == flagged) {
    // Nothing switched off (the usual case): the whole run, copied over the elements the
    // buffer already holds (the buffer keeps its capacity: no allocation once warm).
    const std::size_t n = source.size();
    if (target.size() > n) target.resize(n);
    const std::size_t kept = target.size();
    std::copy(source.begin(), source.begin() + static_cast<std::ptrdiff_t>(kept), target.begin());
    target.insert(target.end(), source.begin() + static_cast<std::ptrdiff_t>(kept), source.end());
    return;
  }
  target.assign(source.begin(), source.begin() + static_cast<std::ptrdiff_t>(first));
  for (std::size_t i = first; i < source.size(); ++i) {
    if (i < flagged && disabled[i].value()) continue;
    target.push_back(source[i]);
  }
}
