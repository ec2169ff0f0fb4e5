#include "analysis/storage/HxSystemDataStorage.h"

#include <algorithm>

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
}  // namespace

HxSystemDataStorage::HxSystemDataStorage() : m_time(0.0), m_pathPointIndex(0u) {}

HxSystemDataStorage::HxSystemDataStorage(const HxSystemDataStorage& other)
    : HxBaseSystemDataComponent(other),
      m_manipulatorDataVector(other.m_manipulatorDataVector),
      m_time(other.m_time),
      m_pathPointIndex(other.m_pathPointIndex),
      m_elementSize(other.m_elementSize) {}

HxSystemDataStorage& HxSystemDataStorage::operator=(const HxSystemDataStorage& other) {
  if (this != &other) {
    HxBaseSystemDataComponent::operator=(other);
    m_manipulatorDataVector = other.m_manipulatorDataVector;
    m_time = other.m_time;
    m_pathPointIndex = other.m_pathPointIndex;
    m_elementSize = other.m_elementSize;
    invalidateText();
  }
  return *this;
}

HxSystemDataStorage::~HxSystemDataStorage() = default;

void HxSystemDataStorage::registerComponents() {
  registerComponent(HxSimAnalysis::HxManipulatorDataVectorToken, &m_manipulatorDataVector);
  registerComponent(HxSimAnalysis::HxTimeToken, &m_time);
  registerComponent(HxSimAnalysis::HxPathPointIndexToken, &m_pathPointIndex);
}

HxBoolean HxSystemDataStorage::read(HxXmlReader& reader) {
  invalidateText();
  return HxBaseSystemDataComponent::read(reader);
}

HxXmlObject* HxSystemDataStorage::clone() const { return new HxSystemDataStorage(*this); }

HxXmlObject* HxSystemDataStorage::newObject() const { return new HxSystemDataStorage(); }

HxBoolean HxSystemDataStorage::equality(const HxXmlObject* other) const {
  const auto* storage = dynamic_cast<const HxSystemDataStorage*>(other);
  return storage != nullptr && *this == *storage;
}

const HxToken& HxSystemDataStorage::token() const { return classToken(); }

const HxToken& HxSystemDataStorage::classToken() { return HxSimAnalysis::HxGeneralStorageToken; }

HxXmlObject* HxSystemDataStorage::creator() { return new HxSystemDataStorage(); }

HxSystemDataStorage HxSystemDataStorage::nullObject() { return HxSystemDataStorage(); }

bool HxSystemDataStorage::operator==(const HxSystemDataStorage& other) const {
  return HxBaseSystemDataComponent::operator==(other) && m_manipulatorDataVector == other.m_manipulatorDataVector &&
         m_time == other.m_time && m_pathPointIndex == other.m_pathPointIndex &&
         m_elementSize == other.m_elementSize;
}

unsigned int HxSystemDataStorage::type() const { return 1; }

void HxSystemDataStorage::refreshValues() const {
  const HxU32 size = m_elementSize;
  if (m_values.size() != size) m_values.resize(size);
  double* const out = m_values.data();

  // Time, index, then the values in flat order; a stale element size bounds what is kept.
  std::size_t position = 0;
  if (position < size) out[position] = m_time.value();
  ++position;
  if (position < size) out[position] = static_cast<double>(m_pathPointIndex.value());
  ++position;
  for (HxU32 m = 0; m < m_manipulatorDataVector.size(); ++m) {
    m_manipulatorDataVector[m].forEachValue([&](double value) {
      if (position < size) out[position] = value;
      ++position;
    });
  }
  m_valueCount = position < size ? position : size;
  for (std::size_t k = m_valueCount; k < size; ++k) out[k] = 0.0;

  m_valuesView.values = out;
  m_valuesView.count = size;
  m_valuesValid = true;
}

void HxSystemDataStorage::refreshText() const {
  if (!m_valuesValid) refreshValues();
  const HxU32 size = m_elementSize;
  // Room for the longest text of every element and its separator: sized once per shape.
  const std::size_t capacity = static_cast<std::size_t>(size) * (HxDoubleTextCapacity + 1);
  if (m_textChars.size() < capacity) m_textChars.resize(capacity);
  const std::size_t offsetCount = static_cast<std::size_t>(size) + 1;
  if (m_textOffsets.size() != offsetCount) m_textOffsets.resize(offsetCount);

  char* const begin = m_textChars.data();
  HxU32* const offsets = m_textOffsets.data();
  const double* const values = m_values.data();
  char* p = begin;
  offsets[0] = 0;
  for (std::size_t k = 0; k < size; ++k) {
    if (k < m_valueCount) {
      if (k == 1) {
        // The index as the toolkit's integer text (at most 10 digits: no allocation).
        HxINT2STRING(m_pathPointIndex.value(), 10, m_indexText);
        p = std::copy(m_indexText.begin(), m_indexText.end(), p);
      } else {
        p = HxDOUBLE2STRING(values[k], p);
      }
    }
    *p++ = ',';
    offsets[k + 1] = static_cast<HxU32>(p - begin);
  }

  m_textView.chars = begin;
  m_textView.offsets = offsets;
  m_textView.count = size;
  m_textValid = true;
}

const HxElementValues* HxSystemDataStorage::elementValues() const {
  if (!m_valuesValid) refreshValues();
  return &m_valuesView;
}

const HxElementText* HxSystemDataStorage::elementText() const {
  if (!m_textValid) refreshText();
  return &m_textView;
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
  return m_manipulatorDataVector;
}

void HxSystemDataStorage::setManipulatorDataVector(const ManipulatorDataVector& data) {
  m_manipulatorDataVector = data;
  invalidateText();
}

HxBoolean HxSystemDataStorage::setSpecificManipulatorLevelData(HxU32 manipulator, HxU32 quantity, HxU32 offset,
                                                               double value) {
  invalidateText();
  if (manipulator >= m_manipulatorDataVector.size()) return false;
  return m_manipulatorDataVector[manipulator].setSpecificManipulatorLevelData(quantity, offset, value);
}

HxBoolean HxSystemDataStorage::setSpecificManipulatorLevelData(HxU32 manipulator, HxU32 quantity, HxU32 offset,
                                                               const ValueVector& values) {
  invalidateText();
  if (manipulator >= m_manipulatorDataVector.size()) return false;
  return m_manipulatorDataVector[manipulator].setSpecificManipulatorLevelData(quantity, offset, values);
}

HxBoolean HxSystemDataStorage::setSpecificLinkLevelData(HxU32 manipulator, HxU32 link, HxU32 quantity, HxU32 offset,
                                                        double value) {
  invalidateText();
  if (manipulator >= m_manipulatorDataVector.size()) return false;
  return m_manipulatorDataVector[manipulator].setSpecificLinkLevelData(link, quantity, offset, value);
}

HxBoolean HxSystemDataStorage::setSpecificLinkLevelData(HxU32 manipulator, HxU32 link, HxU32 quantity, HxU32 offset,
                                                        const ValueVector& values) {
  invalidateText();
  if (manipulator >= m_manipulatorDataVector.size()) return false;
  return m_manipulatorDataVector[manipulator].setSpecificLinkLevelData(link, quantity, offset, values);
}

HxBoolean HxSystemDataStorage::setSpecificEndEffectorData(HxU32 manipulator, HxU32 endEffector, HxU32 quantity,
                                                          HxU32 offset, double value) {
  invalidateText();
  if (manipulator >= m_manipulatorDataVector.size()) return false;
  return m_manipulatorDataVector[manipulator].setSpecificEndEffectorData(endEffector, quantity, offset, value);
}

HxBoolean HxSystemDataStorage::setSpecificEndEffectorData(HxU32 manipulator, HxU32 endEffector, HxU32 quantity,
                                                          HxU32 offset, const ValueVector& values) {
  invalidateText();
  if (manipulator >= m_manipulatorDataVector.size()) return false;
  return m_manipulatorDataVector[manipulator].setSpecificEndEffectorData(endEffector, quantity, offset, values);
}

double HxSystemDataStorage::time() const { return m_time.value(); }

void HxSystemDataStorage::setTime(const double& time) {
  m_time = time;
  invalidateText();
}

unsigned int HxSystemDataStorage::pathPointIndex() const { return m_pathPointIndex.value(); }

void HxSystemDataStorage::setPathPointIndex(unsigned int index) {
  m_pathPointIndex = index;
  invalidateText();
}

void HxSystemDataStorage::computeElementSize() {
  HxU32 size = 2;
  for (HxU32 m = 0; m < m_manipulatorDataVector.size(); ++m) size += m_manipulatorDataVector[m].numValues();
  m_elementSize = size;
  invalidateText();
}

HxU32 HxSystemDataStorage::elementSize(bool excludeTimeAndIndex) const {
  return excludeTimeAndIndex ? m_elementSize - 2 : m_elementSize;
}

void HxSystemDataStorage::getRealElements(std::vector<double>& out, bool excludeTimeAndIndex) const {
  // A size never computed would wrap when excluding time and index; treat it as empty.
  const HxU32 size = (excludeTimeAndIndex && m_elementSize < 2) ? 0 : elementSize(excludeTimeAndIndex);
  if (out.size() != size) out.resize(size);

  HxU32 position = 0;
  if (!excludeTimeAndIndex) {
    if (position < size) out[position] = m_time.value();
    ++position;
    if (position < size) out[position] = static_cast<double>(m_pathPointIndex.value());
    ++position;
  }
  for (HxU32 m = 0; m < m_manipulatorDataVector.size(); ++m) {
    m_manipulatorDataVector[m].forEachValue([&](double value) {
      if (position < size) out[position] = value;
      ++position;
    });
  }
}
