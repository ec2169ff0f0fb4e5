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
  registerComponent(HxSimAnalysis::HxDisableFlagsToken, &disableFlags_);
  registerComponent(HxSimAnalysis::HxDataLabelsToken, &dataLabels_);
}

const HxDataCaptureType::FlagVector& HxDataCaptureType::disableFlags() const { return disableFlags_; }

void HxDataCaptureType::setDisableFlags(const FlagVector& flags) { disableFlags_ = flags; }

const std::string& HxDataCaptureType::label(const HxU32& index) const {
  if (index >= dataLabels_.size()) {
    static const std::string empty;
    return empty;
  }
  return dataLabels_[index].value();
}

HxU32 HxDataCaptureType::activeDataSize() const {
  const HxU32 columns = dataSize();
  const HxU32 flags = disableFlags_.size();
  HxU32 count = 0;
  for (HxU32 i = 0; i < columns; ++i) {
    // A column without a flag is on.
    if (i >= flags || !disableFlags_[i].value()) {
      ++count;
    }
  }
  return count;
}

const HxDataCaptureType::DataVector& HxDataCaptureType::data() const { return data_; }

bool HxDataCaptureType::operator==(const HxDataCaptureType& other) const {
  if (!HxXmlCompoundType::operator==(other)) {
    return false;
  }
  if (!(disableFlags_ == other.disableFlags_)) {
    return false;
  }
  if (!(dataLabels_ == other.dataLabels_)) {
    return false;
  }
  return data_ == other.data_;
}

void HxDataCaptureType::initializeColumns(HxU32 count, const char* const* labels) {
  data_.resize(count);
  dataLabels_.resize(count);
  for (HxU32 i = 0; i < count; ++i) {
    dataLabels_[i] = std::string(labels[i]);
  }
}

void HxDataCaptureType::resetData() const {
  const HxU32 columns = dataSize();
  if (data_.size() != columns) {
    // The constructors size the buffer, so this branch only guards against a buffer of
    // another size; it is left at once with the right size.
    data_.assign(columns, HxXmlBasicType<double>(0.0));
    return;
  }
  for (HxU32 i = 0; i < columns; ++i) {
    data_[i].value() = 0.0;
  }
}
