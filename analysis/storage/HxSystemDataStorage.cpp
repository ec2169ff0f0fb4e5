#include "analysis/storage/HxSystemDataStorage.h"

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

void HxSystemDataStorage::refreshText() const {
  const HxU32 size = m_elementSize;
  if (m_text.size() != size) {
    m_text.resize(size);
    for (std::string& text : m_text) reserveNumberText(text);
  }
  if (size > 0) HxDOUBLE2STRING(m_time.value(), m_text[0]);
  if (size > 1) HxINT2STRING(m_pathPointIndex.value(), 10, m_text[1]);

  // The values in flat order; a stale element size bounds what is written.
  HxU32 position = 2;
  for (HxU32 m = 0; m < m_manipulatorDataVector.size(); ++m) {
    m_manipulatorDataVector[m].forEachValue([&](double value) {
      if (position < size) HxDOUBLE2STRING(value, m_text[position]);
      ++position;
    });
  }
  for (; position < size; ++position) m_text[position].clear();
  m_textValid = true;
}

void HxSystemDataStorage::getStringElements(std::vector<std::string>& elements) const {
  if (!m_textValid) refreshText();
  if (elements.size() != m_text.size()) elements.resize(m_text.size());
  for (std::size_t k = 0; k < m_text.size(); ++k) {
    reserveNumberText(elements[k]);
    elements[k] = m_text[k];
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
