#include "analysis/storage/HxManipulatorDataStorage.h"

#include <cstdint>
#include <string>
#include <utility>

#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {

// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// Stores one value at [quantity][offset] of a quantity vector; nothing when out of range.
HxBoolean storeValue(HxManipulatorDataStorage::QuantityVector& quantities, HxU32 quantity, HxU32 offset, double value) {
  if (quantity >= quantities.size()) return false;
  HxManipulatorDataStorage::ValueVector& values = quantities[quantity];
  if (offset >= values.size()) return false;
  values[offset] = value;
  return true;
}

// Copies a run of values to [quantity][offset ..]; nothing unless the whole, non-empty run fits.
HxBoolean storeValues(HxManipulatorDataStorage::QuantityVector& quantities, HxU32 quantity, HxU32 offset,
                      const HxManipulatorDataStorage::ValueVector& source) {
  const auto& from = source.vectorContainer();
  const std::size_t n = from.size();
  if (n == 0 || quantity >= quantities.size()) return false;
  auto& to = quantities[quantity].vectorContainer();
  // Compared in 64 bits so that a huge offset cannot wrap around.
  if (static_cast<std::uint64_t>(offset) + n > to.size()) return false;
  for (std::size_t k = 0; k < n; ++k) to[offset + k].value() = from[k].value();
  return true;
}

}  // namespace

HxManipulatorDataStorage::HxManipulatorDataStorage(QuantityVector&& manipulatorLevelData, ElementVector&& linkLevelData,
                                                   ElementVector&& endEffectorData)
    : manipulatorLevelData_(std::move(manipulatorLevelData)),
      linkLevelData_(std::move(linkLevelData)),
      endEffectorData_(std::move(endEffectorData)) {}

void HxManipulatorDataStorage::registerComponents() {
  registerComponent(HxSimAnalysis::HxManipulatorLevelDataToken, &manipulatorLevelData_);
  registerComponent(HxSimAnalysis::HxLinkLevelDataToken, &linkLevelData_);
  registerComponent(HxSimAnalysis::HxEndEffectorDataToken, &endEffectorData_);
}

HX_XML_SERIALISABLE_DEFINITIONS(HxManipulatorDataStorage, HxSimAnalysis::HxManipulatorDataStorageToken)

const HxManipulatorDataStorage::QuantityVector& HxManipulatorDataStorage::manipulatorLevelData() const {
  return manipulatorLevelData_;
}

void HxManipulatorDataStorage::setManipulatorLevelData(const QuantityVector& data) { manipulatorLevelData_ = data; }

HxBoolean HxManipulatorDataStorage::setSpecificManipulatorLevelData(HxU32 quantity, HxU32 offset, double value) {
  return storeValue(manipulatorLevelData_, quantity, offset, value);
}

HxBoolean HxManipulatorDataStorage::setSpecificManipulatorLevelData(HxU32 quantity, HxU32 offset,
                                                                    const ValueVector& values) {
  return storeValues(manipulatorLevelData_, quantity, offset, values);
}

const HxManipulatorDataStorage::ElementVector& HxManipulatorDataStorage::linkLevelData() const {
  return linkLevelData_;
}

void HxManipulatorDataStorage::setLinkLevelData(const ElementVector& data) { linkLevelData_ = data; }

HxBoolean HxManipulatorDataStorage::setSpecificLinkLevelData(HxU32 link, HxU32 quantity, HxU32 offset, double value) {
  if (link >= linkLevelData_.size()) return false;
  return storeValue(linkLevelData_[link], quantity, offset, value);
}

HxBoolean HxManipulatorDataStorage::setSpecificLinkLevelData(HxU32 link, HxU32 quantity, HxU32 offset,
                                                             const ValueVector& values) {
  if (link >= linkLevelData_.size()) return false;
  return storeValues(linkLevelData_[link], quantity, offset, values);
}

const HxManipulatorDataStorage::ElementVector& HxManipulatorDataStorage::endEffectorData() const {
  return endEffectorData_;
}

void HxManipulatorDataStorage::setEndEffectorData(const ElementVector& data) { endEffectorData_ = data; }

HxBoolean HxManipulatorDataStorage::setSpecificEndEffectorData(HxU32 endEffector, HxU32 quantity, HxU32 offset,
                                                               double value) {
  if (endEffector >= endEffectorData_.size()) return false;
  return storeValue(endEffectorData_[endEffector], quantity, offset, value);
}

HxBoolean HxManipulatorDataStorage::setSpecificEndEffectorData(HxU32 endEffector, HxU32 quantity, HxU32 offset,
                                                               const ValueVector& values) {
  if (endEffector >= endEffectorData_.size()) return false;
  return storeValues(endEffectorData_[endEffector], quantity, offset, values);
}

HxU32 HxManipulatorDataStorage::numValues() const {
  HxU32 count = 0;
  forEachValue([&count](double) { ++count; });
  return count;
}
