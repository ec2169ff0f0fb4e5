#include "analysis/storage/HxSystemDataStorage.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxNumberText.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// Gives a string room for the longest number text, so that later assignments do not allocate.
void reserveNumberText(std::string& text) {
  if (text.capacity() < static_cast<std::string::size_type>(HxDoubleTextCapacity)) {
    text.reserve(HxDoubleTextCapacity);
  }
}

// Shape stamps, unique across every record of the process.
std::uint64_t nextShapeStamp() {
  static std::atomic<std::uint64_t> counter{0};
  return counter.fetch_add(1, std::memory_order_relaxed) + 1;
}
}  // namespace

HxSystemDataStorage::HxSystemDataStorage() : time_(0.0), pathPointIndex_(0u), shapeStamp_(nextShapeStamp()) {}

HxSystemDataStorage::HxSystemDataStorage(const HxSystemDataStorage& other)
    : HxBaseSystemDataComponent(other),
      manipulatorDataVector_((other.syncNested(), other.manipulatorDataVector_)),
      time_(other.time_),
      pathPointIndex_(other.pathPointIndex_),
      elementSize_(other.elementSize_),
      shapeStamp_(nextShapeStamp()) {}

HxSystemDataStorage& HxSystemDataStorage::operator=(const HxSystemDataStorage& other) {
  if (this != &other) {
    other.syncNested();
    discardFlatValues();
    HxBaseSystemDataComponent::operator=(other);
    manipulatorDataVector_ = other.manipulatorDataVector_;
    time_ = other.time_;
    pathPointIndex_ = other.pathPointIndex_;
    elementSize_ = other.elementSize_;
  }
  return *this;
}

HxSystemDataStorage::~HxSystemDataStorage() = default;

void HxSystemDataStorage::registerComponents() {
  registerComponent(HxSimAnalysis::HxManipulatorDataVectorToken, &manipulatorDataVector_);
  registerComponent(HxSimAnalysis::HxTimeToken, &time_);
  registerComponent(HxSimAnalysis::HxPathPointIndexToken, &pathPointIndex_);
}

HxBoolean HxSystemDataStorage::read(HxXmlReader& reader) {
  discardFlatValues();
  const HxBoolean result = HxBaseSystemDataComponent::read(reader);
  computeElementSize();
  return result;
}

HX_XML_SERIALISABLE_DEFINITIONS(HxSystemDataStorage, HxSimAnalysis::HxGeneralStorageToken)

HxSystemDataStorage HxSystemDataStorage::nullObject() { return HxSystemDataStorage(); }

const HxSystemDataStorage::ComponentMap& HxSystemDataStorage::componentMap() const {
  syncNested();
  return HxBaseSystemDataComponent::componentMap();
}

bool HxSystemDataStorage::operator==(const HxSystemDataStorage& other) const {
  syncNested();
  other.syncNested();
  return componentsEqual(other) && elementSize_ == other.elementSize_;
}

void HxSystemDataStorage::discardFlatValues() {
  flatAhead_ = false;
  textValid_ = false;
  valuesValid_ = false;
  shapeStamp_ = nextShapeStamp();
}

void HxSystemDataStorage::syncNested() const {
  if (!flatAhead_) return;
  flatAhead_ = false;
  // The array matches the shape (see beginDirectStore): the values follow time and index.
  const double* from = values_.data() + 2;
  for (HxManipulatorDataStorage& manipulator : manipulatorDataVector_.vectorContainer()) {
    manipulator.forEachValue([&from](HxXmlBasicType<double>& value) { value.value() = *from++; });
  }
}

double* HxSystemDataStorage::beginDirectStore() {
  if (!valuesValid_) refreshValues();
  if (!shapeMatches_) return nullptr;
  flatAhead_ = true;
  textValid_ = false;
  return values_.data();
}

unsigned int HxSystemDataStorage::type() const { return HxSystemDataComponentKind::Record; }

void HxSystemDataStorage::refreshValues() const {
  const HxU32 size = elementSize_;
  if (values_.size() != size) values_.resize(size);
  double* const out = values_.data();

  // A stale element size bounds what is kept.
  std::size_t position = 0;
  forEachElement(false, [&](double value) {
    if (position < size) out[position] = value;
    ++position;
  });
  valueCount_ = position < size ? position : size;
  shapeMatches_ = position == size && size >= 2;
  for (std::size_t k = valueCount_; k < size; ++k) out[k] = 0.0;

  valuesView_.values = out;
  valuesView_.count = size;
  valuesValid_ = true;
}

void HxSystemDataStorage::refreshText() const {
  if (!valuesValid_) refreshValues();
  const HxU32 size = elementSize_;
  // Room for the longest text of every element and its separator, and the padding past the
  // block: sized once per shape.
  const std::size_t capacity = static_cast<std::size_t>(size) * (HxDoubleTextCapacity + 1) + HxElementTextPadding;
  if (textChars_.size() < capacity) textChars_.resize(capacity);
  const std::size_t offsetCount = static_cast<std::size_t>(size) + 1;
  if (textOffsets_.size() != offsetCount) textOffsets_.resize(offsetCount);

  char* const begin = textChars_.data();
  HxU32* const offsets = textOffsets_.data();
  const double* const values = values_.data();
  char* p = begin;
  offsets[0] = 0;
  for (std::size_t k = 0; k < size; ++k) {
    if (k < valueCount_) {
      if (k == 1) {
        // The index as the toolkit's integer text (at most 10 digits: no allocation).
        HxINT2STRING(pathPointIndex_.value(), 10, indexText_);
        p = std::copy(indexText_.begin(), indexText_.end(), p);
      } else {
        p = HxDOUBLE2STRING(values[k], p);
      }
    }
    *p++ = ',';
    offsets[k + 1] = static_cast<HxU32>(p - begin);
  }

  textView_.chars = begin;
  textView_.offsets = offsets;
  textView_.count = size;
  textView_.padded = true;
  textValid_ = true;
}

const HxElementValues* HxSystemDataStorage::elementValues() const {
  if (!valuesValid_) refreshValues();
  return &valuesView_;
}

const HxElementText* HxSystemDataStorage::elementText() const {
  if (!textValid_) refreshText();
  return &textView_;
}

void HxSystemDataStorage::getStringElements(std::vector<std::string>& elements) const {
  const HxElementText& text = *elementText();
  if (elements.size() != text.count) elements.resize(text.count);
  for (std::size_t k = 0; k < text.count; ++k) {
    reserveNumberText(elements[k]);
    const std::string_view element = text.element(k);
    elements[k].assign(element.data(), element.size());
  }
}

const HxSystemDataStorage::ManipulatorDataVector& HxSystemDataStorage::manipulatorDataVector() const {
  syncNested();
  return manipulatorDataVector_;
}

void HxSystemDataStorage::setManipulatorDataVector(const ManipulatorDataVector& data) {
  discardFlatValues();
  manipulatorDataVector_ = data;
}

void HxSystemDataStorage::takeManipulatorDataVector(ManipulatorDataVector&& data) {
  discardFlatValues();
  manipulatorDataVector_ = std::move(data);
}

HxBoolean HxSystemDataStorage::setSpecificManipulatorLevelData(HxU32 manipulator, HxU32 quantity, HxU32 offset,
                                                               double value) {
  invalidateText();
  if (manipulator >= manipulatorDataVector_.size()) return false;
  return manipulatorDataVector_[manipulator].setSpecificManipulatorLevelData(quantity, offset, value);
}

HxBoolean HxSystemDataStorage::setSpecificManipulatorLevelData(HxU32 manipulator, HxU32 quantity, HxU32 offset,
                                                               const ValueVector& values) {
  invalidateText();
  if (manipulator >= manipulatorDataVector_.size()) return false;
  return manipulatorDataVector_[manipulator].setSpecificManipulatorLevelData(quantity, offset, values);
}

HxBoolean HxSystemDataStorage::setSpecificLinkLevelData(HxU32 manipulator, HxU32 link, HxU32 quantity, HxU32 offset,
                                                        double value) {
  invalidateText();
  if (manipulator >= manipulatorDataVector_.size()) return false;
  return manipulatorDataVector_[manipulator].setSpecificLinkLevelData(link, quantity, offset, value);
}

HxBoolean HxSystemDataStorage::setSpecificLinkLevelData(HxU32 manipulator, HxU32 link, HxU32 quantity, HxU32 offset,
                                                        const ValueVector& values) {
  invalidateText();
  if (manipulator >= manipulatorDataVector_.size()) return false;
  return manipulatorDataVector_[manipulator].setSpecificLinkLevelData(link, quantity, offset, values);
}

HxBoolean HxSystemDataStorage::setSpecificEndEffectorData(HxU32 manipulator, HxU32 endEffector, HxU32 quantity,
                                                          HxU32 offset, double value) {
  invalidateText();
  if (manipulator >= manipulatorDataVector_.size()) return false;
  return manipulatorDataVector_[manipulator].setSpecificEndEffectorData(endEffector, quantity, offset, value);
}

HxBoolean HxSystemDataStorage::setSpecificEndEffectorData(HxU32 manipulator, HxU32 endEffector, HxU32 quantity,
                                                          HxU32 offset, const ValueVector& values) {
  invalidateText();
  if (manipulator >= manipulatorDataVector_.size()) return false;
  return manipulatorDataVector_[manipulator].setSpecificEndEffectorData(endEffector, quantity, offset, values);
}

double HxSystemDataStorage::time() const { return time_.value(); }

void HxSystemDataStorage::setTime(const double& time) {
  time_ = time;
  // Only the first element changes: the array keeps the values (and those ahead of the nested
  // objects stay so).
  textValid_ = false;
  if (valuesValid_ && !values_.empty()) values_[0] = time;
}

unsigned int HxSystemDataStorage::pathPointIndex() const { return pathPointIndex_.value(); }

void HxSystemDataStorage::setPathPointIndex(unsigned int index) {
  pathPointIndex_ = index;
  textValid_ = false;
  if (valuesValid_ && values_.size() > 1) values_[1] = static_cast<double>(index);
}

void HxSystemDataStorage::computeElementSize() {
  HxU32 size = 2;
  for (HxU32 m = 0; m < manipulatorDataVector_.size(); ++m) size += manipulatorDataVector_[m].numValues();
  elementSize_ = size;
  invalidateText();
  shapeStamp_ = nextShapeStamp();
}

HxU32 HxSystemDataStorage::elementSize(bool excludeTimeAndIndex) const {
  return excludeTimeAndIndex ? elementSize_ - 2 : elementSize_;
}

void HxSystemDataStorage::getRealElements(std::vector<double>& out, bool excludeTimeAndIndex) const {
  // A size never computed would wrap when excluding time and index; treat it as empty.
  syncNested();
  const HxU32 size = (excludeTimeAndIndex && elementSize_ < 2) ? 0 : elementSize(excludeTimeAndIndex);
  if (out.size() != size) out.resize(size);

  HxU32 position = 0;
  forEachElement(excludeTimeAndIndex, [&](double value) {
    if (position < size) out[position] = value;
    ++position;
  });
}

void HxSystemDataStorage::describeLayout(std::vector<HxU32>& layout) const {
  layout.clear();
  layout.push_back(elementSize_);
  layout.push_back(manipulatorDataVector_.size());
  for (const HxManipulatorDataStorage& manipulator : manipulatorDataVector_.vectorContainer()) {
    const HxManipulatorDataStorage::ElementVector& links = manipulator.linkLevelData();
    const HxManipulatorDataStorage::ElementVector& endEffectors = manipulator.endEffectorData();
    layout.push_back(links.size());
    layout.push_back(endEffectors.size());
    HxFlatOrder::forEachLevelEntry(manipulator.manipulatorLevelData(), links.vectorContainer(),
                                   endEffectors.vectorContainer(),
                                   [&layout](HxU32, HxU32, const HxManipulatorDataStorage::QuantityVector& quantities) {
                                     layout.push_back(quantities.size());
                                     for (const ValueVector& values : quantities.vectorContainer()) {
                                       layout.push_back(values.size());
                                     }
                                   });
  }
}

HxBaseSystemDataComponent* HxSystemDataStorage::newLayoutProbe() const {
  auto* probe = new HxSystemDataStorage(*this);
  probe->setTime(0.0);
  probe->setPathPointIndex(1u);
  double next = 2.0;
  for (HxManipulatorDataStorage& manipulator : probe->manipulatorDataVector_.vectorContainer()) {
    manipulator.forEachValue([&next](HxXmlBasicType<double>& value) { value = next++; });
  }
  probe->invalidateText();
  return probe;
}
