#include "analysis/capture/HxSystemDataCapture.h"

#include <algorithm>
#include <utility>

#include "analysis/capture/HxFlatOrder.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxNumberText.h"
#include "simulation/HxIndividualManipulator.h"
#include "simulation/HxSystemSimulation.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// One value vector per type of a list, each sized to the type's active size; `largest` becomes
// at least the largest data size of the types.
HxManipulatorDataStorage::QuantityVector shapeOf(const HxDataCaptureTypeVector& types, HxU32& largest) {
  HxManipulatorDataStorage::QuantityVector quantities;
  quantities.reserve(types.size());
  for (HxU32 i = 0; i < types.size(); ++i) {
    quantities.vectorContainer().emplace_back(types[i].activeDataSize());
    largest = std::max<HxU32>(largest, types[i].data().size());
  }
  return quantities;
}
}  // namespace

void HxSystemDataCapture::registerComponents() {
  registerComponent(HxSimAnalysis::HxSystemDataCaptureLabelToken, &label_);
  registerComponent(HxSimAnalysis::HxManipulatorDataCaptureVectorToken, &manipulatorDataCaptureVector_);
}

HxBoolean HxSystemDataCapture::write(HxXmlWriter& writer) const { return HxBaseSystemDataComponent::write(writer); }

HxBoolean HxSystemDataCapture::read(HxXmlReader& reader) {
  listIndex_.forget();
  configurationChanged();
  const HxBoolean result = HxBaseSystemDataComponent::read(reader);
  computeElementSize();
  return result;
}

HX_XML_SERIALISABLE_DEFINITIONS(HxSystemDataCapture, HxSimAnalysis::HxGeneralCaptureToken)

unsigned int HxSystemDataCapture::type() const { return HxSystemDataComponentKind::Capture; }

const std::string& HxSystemDataCapture::label() const { return label_.value(); }

void HxSystemDataCapture::setLabel(const std::string& label) { label_ = label; }

const HxSystemDataCapture::ManipulatorDataCaptureVector& HxSystemDataCapture::manipulatorDataCaptureVector() const {
  return manipulatorDataCaptureVector_;
}

HxBoolean HxSystemDataCapture::captureData(const HxSystemSimulation& simulation) const {
  makeCapturePlan();
  return capturePlan_.capture(simulation);
}

void HxSystemDataCapture::makeCapturePlan() const {
  if (capturePlan_.made()) return;
  capturePlan_.make(manipulatorDataCaptureVector_);
  plan_.forget();
}

HxBoolean HxSystemDataCapture::findIndex(unsigned int const& m, unsigned int& position) const {
  // Of several entries for m, the last one is found (as by walking the whole list); the index
  // keeps the answer per m while the list is being built.
  return listIndex_.find(manipulatorDataCaptureVector_, m, position);
}

template <class Add>
HxBoolean HxSystemDataCapture::addToManipulator(unsigned int const& m, Add add) {
  HxBoolean result = false;
  unsigned int position = 0;
  configurationChanged();
  if (findIndex(m, position)) {
    result = add(manipulatorDataCaptureVector_[position]);
    listIndex_.changed(position);
  } else {
    // A manipulator capture is never created empty: it is kept only if the add succeeded.
    HxManipulatorDataCapture capture;
    capture.setManipulatorIndex(m);
    result = add(capture);
    if (result) {
      manipulatorDataCaptureVector_.vectorContainer().push_back(std::move(capture));
      listIndex_.appended(manipulatorDataCaptureVector_);
    }
  }
  if (result) computeElementSize();
  return result;
}

HxBoolean HxSystemDataCapture::addManipulatorDataCaptureType(unsigned int const& m, const HxToken& token) {
  return addToManipulator(m, [&](HxManipulatorDataCapture& c) { return c.addDataCaptureType(token); });
}

HxBoolean HxSystemDataCapture::addLinkDataCaptureType(unsigned int const& m, const HxToken& token,
                                                      const HxIndividualManipulator& manipulator) {
  return addToManipulator(m, [&](HxManipulatorDataCapture& c) { return c.addLinkDataCaptureType(token, manipulator); });
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
  configurationChanged();
  HxManipulatorDataCapture& capture = manipulatorDataCaptureVector_[position];
  const HxBoolean result = remove(capture);
  listIndex_.changed(position);

  // Pruning looks at the manipulator-level types and at the sub-captures of one level only:
  // the end-effector captures after an end-effector removal, the link captures otherwise. An
  // entry whose other sub-captures are still populated is erased all the same.
  const HxU32 subCaptures =
      endEffectorLevel ? capture.endEffectorDataCaptureVector().size() : capture.linkDataCaptureVector().size();
  if (capture.dataCaptureVector().size() == 0 && subCaptures == 0) {
    manipulatorDataCaptureVector_.erase(position);
    listIndex_.forget();
  }

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
  return removeFromManipulator(m, false,
                               [&](HxManipulatorDataCapture& c) { return c.removeLinkDataCaptureType(link, token); });
}

HxBoolean HxSystemDataCapture::removeEndEffectorDataCaptureType(unsigned int const& m, const HxToken& token) {
  return removeFromManipulator(m, true,
                               [&](HxManipulatorDataCapture& c) { return c.removeEndEffectorDataCaptureType(token); });
}

HxBoolean HxSystemDataCapture::removeEndEffectorDataCaptureType(unsigned int const& m, unsigned int const& e,
                                                                const HxToken& token) {
  return removeFromManipulator(
      m, true, [&](HxManipulatorDataCapture& c) { return c.removeEndEffectorDataCaptureType(e, token); });
}

HxBoolean HxSystemDataCapture::addManipulatorDataCapture(const HxManipulatorDataCapture& capture) {
  configurationChanged();
  manipulatorDataCaptureVector_.pushBack(capture);
  listIndex_.appended(manipulatorDataCaptureVector_);
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
  configurationChanged();
  manipulatorDataCaptureVector_.erase(position);
  listIndex_.forget();
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
  configurationChanged();
  return manipulatorDataCaptureVector_[position].setDisableFlags(token, flags);
}

HxBoolean HxSystemDataCapture::setDisableFlags(unsigned int const& m, const std::string& link, const HxToken& token,
                                               const Flags& flags) {
  unsigned int position = 0;
  if (!findIndex(m, position)) return false;
  configurationChanged();
  return manipulatorDataCaptureVector_[position].setDisableFlags(link, token, flags);
}

HxBoolean HxSystemDataCapture::setDisableFlags(unsigned int const& m, unsigned int const& e, const HxToken& token,
                                               const Flags& flags) {
  unsigned int position = 0;
  if (!findIndex(m, position)) return false;
  configurationChanged();
  return manipulatorDataCaptureVector_[position].setDisableFlags(e, token, flags);
}

void HxSystemDataCapture::allocateStorage(HxSystemDataStorage& storage) const {
  HxSystemDataStorage::ManipulatorDataVector manipulators;
  manipulators.reserve(manipulatorDataCaptureVector_.size());
  HxU32 largest = 0;

  // Position p of the record belongs to the manipulator capture at position p, and each entry of
  // that capture (a link or end-effector capture without types included) to its own list. Each
  // part is made once and moved to its place.
  for (HxU32 p = 0; p < manipulatorDataCaptureVector_.size(); ++p) {
    const HxManipulatorDataCapture& capture = manipulatorDataCaptureVector_[p];
    HxManipulatorDataStorage::QuantityVector own;
    HxManipulatorDataStorage::ElementVector links;
    HxManipulatorDataStorage::ElementVector endEffectors;
    links.reserve(capture.linkDataCaptureVector().size());
    endEffectors.reserve(capture.endEffectorDataCaptureVector().size());
    HxFlatOrder::forEachCaptureEntry(capture, [&](HxU32 level, HxU32, const auto& entry) {
      HxManipulatorDataStorage::QuantityVector shape = shapeOf(entry.dataCaptureVector(), largest);
      if (level == HxDataCaptureLevel::Manipulator) {
        own = std::move(shape);
      } else {
        (level == HxDataCaptureLevel::Link ? links : endEffectors).vectorContainer().push_back(std::move(shape));
      }
    });
    manipulators.vectorContainer().emplace_back(std::move(own), std::move(links), std::move(endEffectors));
  }

  storage.takeManipulatorDataVector(std::move(manipulators));
  storage.computeElementSize();
  // storeData then never grows its scratch buffer, nor storeDataDirect its plan for this record.
  activeData_.reserve(largest);
  makeCapturePlan();
  plan_.make(manipulatorDataCaptureVector_, storage);
}

HxBoolean HxSystemDataCapture::storeData(HxSystemDataStorage& storage) const {
  if (manipulatorDataCaptureVector_.size() == 0) return false;

  // One scratch buffer serves every type; the offset within each quantity is always 0.
  HxFlatOrder::forEachCapturedType(
      manipulatorDataCaptureVector_, [&](const HxFlatPosition& at, const HxDataCaptureType& type) {
        getActiveData(type.disableFlags(), type.data(), activeData_);
        if (at.level == HxDataCaptureLevel::Manipulator) {
          storage.setSpecificManipulatorLevelData(at.manipulator, at.quantity, 0, activeData_);
        } else if (at.level == HxDataCaptureLevel::Link) {
          storage.setSpecificLinkLevelData(at.manipulator, at.element, at.quantity, 0, activeData_);
        } else {
          storage.setSpecificEndEffectorData(at.manipulator, at.element, at.quantity, 0, activeData_);
        }
      });
  return true;
}

HxBoolean HxSystemDataCapture::storeDataDirect(HxSystemDataStorage& storage) const {
  if (manipulatorDataCaptureVector_.size() == 0) return false;
  makeCapturePlan();
  if (!plan_.madeFor(storage)) plan_.make(manipulatorDataCaptureVector_, storage);
  double* const values = storage.beginDirectStore();
  if (values == nullptr) return storeData(storage);
  plan_.store(values);
  return true;
}

void HxSystemDataCapture::getDataElements(Values& values) const {
  values.resize(elementSize_);
  HxU32 position = 0;
  HxFlatOrder::forEachCapturedType(manipulatorDataCaptureVector_,
                                   [&](const HxFlatPosition&, const HxDataCaptureType& type) {
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
    if (position < labels.size()) {
      labels[position].assign(prefix).append(type.description()).append(":").append(type.label(j));
    }
    ++position;
  }
}

void HxSystemDataCapture::getStringElements(std::vector<std::string>& labels) const {
  labels.resize(static_cast<std::size_t>(elementSize_) + 2);
  labels[0] = "Time";
  labels[1] = "Point Path Index";
  std::size_t position = 2;

  // The prefix names the manipulator and, below its level, the link or end effector; it is made
  // where the walk enters an entry (at the entry's first type).
  HxFlatOrder::forEachCapturedType(
      manipulatorDataCaptureVector_, [&](const HxFlatPosition& at, const HxDataCaptureType& type) {
        if (at.quantity == 0) {
          const HxManipulatorDataCapture& capture = manipulatorDataCaptureVector_[at.manipulator];
          HxINT2STRING(capture.manipulatorIndex(), 10, number_);
          prefix_.assign("Manip[").append(number_).append("]:");
          if (at.level == HxDataCaptureLevel::Link) {
            prefix_.append(capture.linkDataCaptureVector()[at.element].linkIdentifier()).append(":");
          } else if (at.level == HxDataCaptureLevel::EndEffector) {
            HxINT2STRING(capture.endEffectorDataCaptureVector()[at.element].endEffectorIndex(), 10, number_);
            prefix_.append("EE[").append(number_).append("]:");
          }
        }
        appendTypeLabels(type, prefix_, labels, position);
      });
  // Disabled columns leave the end of the list empty (also when the caller's strings held text).
  for (; position < labels.size(); ++position) labels[position].clear();
}

void HxSystemDataCapture::removeAllDataCaptureTypes() {
  for (HxU32 p = 0; p < manipulatorDataCaptureVector_.size(); ++p) {
    manipulatorDataCaptureVector_[p].removeAllDataCaptureTypes();
  }
  manipulatorDataCaptureVector_.clear();
  listIndex_.forget();
  configurationChanged();
  elementSize_ = 0;
}

void HxSystemDataCapture::computeElementSize() {
  // The full size of every type; the index counts again only the captures that changed.
  elementSize_ = listIndex_.elementCount(manipulatorDataCaptureVector_);
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
