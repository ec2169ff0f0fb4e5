#include "analysis/types/HxDataCaptureType.h"

#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {
const std::string versionString("3.0.0");
}  // namespace

HxDataCaptureType::HxDataCaptureType() = default;
HxDataCaptureType::HxDataCaptureType(const HxDataCaptureType& other) = default;
HxDataCaptureType& HxDataCaptureType::operator=(const HxDataCaptureType& other) = default;
HxDataCaptureType::~HxDataCaptureType() = default;

void HxDataCaptureType::registerComponents() {
  registerComponent(HxSimAnalysis::HxDisableFlagsToken, &m_disableFlags);
  registerComponent(HxSimAnalysis::HxDataLabelsToken, &m_dataLabels);
}

const HxDataCaptureType::FlagVector& HxDataCaptureType::disableFlags() const { return m_disableFlags; }

void HxDataCaptureType::setDisableFlags(const FlagVector& flags) { m_disableFlags = flags; }

const std::string& HxDataCaptureType::label(const HxU32& index) const {
  if (index >= m_dataLabels.size()) {
    return m_emptyLabel;
  }
  return m_dataLabels[index].value();
}

HxU32 HxDataCaptureType::activeDataSize() const {
  const HxU32 columns = dataSize();
  const HxU32 flags = m_disableFlags.size();
  HxU32 count = 0;
  for (HxU32 i = 0; i < columns; ++i) {
    // A column without a flag is on.
    if (i >= flags || !m_disableFlags[i].value()) {
      ++count;
    }
  }
  return count;
}

const HxDataCaptureType::DataVector& HxDataCaptureType::data() const { return m_data; }

bool HxDataCaptureType::operator==(const HxDataCaptureType& other) const {
  if (!HxXmlCompoundType::operator==(other)) {
    return false;
  }
  if (!(m_disableFlags == other.m_disableFlags)) {
    return false;
  }
  if (!(m_dataLabels == other.m_dataLabels)) {
    return false;
  }
  return m_data == other.m_data;
}

void HxDataCaptureType::initializeColumns(HxU32 count, const char* const* labels) {
  m_data.resize(count);
  m_dataLabels.resize(count);
  for (HxU32 i = 0; i < count; ++i) {
    m_dataLabels[i] = std::string(labels[i]);
  }
}

void HxDataCaptureType::resetData() const {
  const HxU32 columns = dataSize();
  if (m_data.size() != columns) {
    // The constructors size the buffer, so this branch only guards against a buffer of
    // another size; it is left at once with the right size.
    m_data.assign(columns, HxXmlBasicType<double>(0.0));
    return;
  }
  for (HxU32 i = 0; i < columns; ++i) {
    m_data[i].value() = 0.0;
  }
}
