#include "analysis/types/HxDataCaptureType.h"

#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {
const std::string versionString("3.0.0");
}  // namespace

HxDataCaptureType::HxDataCaptureType() = default;

HxDataCaptureType::HxDataCaptureType(const HxDataCaptureType& other)
    : HxXmlCompoundType(other), disableFlags_(other.disableFlags_), dataLabels_(other.dataLabels_) {
  copyValuesFrom(other);
}

HxDataCaptureType& HxDataCaptureType::operator=(const HxDataCaptureType& other) {
  if (this == &other) return *this;
  HxXmlCompoundType::operator=(other);
  disableFlags_ = other.disableFlags_;
  dataLabels_ = other.dataLabels_;
  copyValuesFrom(other);
  return *this;
}

HxDataCaptureType::~HxDataCaptureType() = default;

void HxDataCaptureType::sizeValues(HxU32 count) {
  placed_.reset();
  if (count > kLocalValues) {
    wide_ = std::make_unique<double[]>(count);
    values_ = wide_.get();
  } else {
    wide_.reset();
    values_ = local_;
  }
  valueCount_ = count;
  for (HxU32 i = 0; i < count; ++i) values_[i] = 0.0;
  data_.resize(count);
}

void HxDataCaptureType::copyValuesFrom(const HxDataCaptureType& other) {
  if (valueCount_ != other.valueCount_) sizeValues(other.valueCount_);
  setCapturedValues(other.values_);
}

void HxDataCaptureType::placeValues(double* at, std::shared_ptr<double[]> block) const {
  if (at == values_) return;
  for (HxU32 i = 0; i < valueCount_; ++i) at[i] = values_[i];
  values_ = at;
  placed_ = std::move(block);
}

void HxDataCaptureType::setCapturedValues(const double* values) const {
  for (HxU32 i = 0; i < valueCount_; ++i) values_[i] = values[i];
}

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

const HxDataCaptureType::DataVector& HxDataCaptureType::data() const {
  for (HxU32 i = 0; i < valueCount_; ++i) data_[i].value() = values_[i];
  return data_;
}

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
  if (valueCount_ != other.valueCount_) return false;
  for (HxU32 i = 0; i < valueCount_; ++i) {
    if (!(values_[i] == other.values_[i])) return false;
  }
  return true;
}

void HxDataCaptureType::initializeColumns(HxU32 count, const char* const* labels) {
  sizeValues(count);
  dataLabels_.resize(count);
  for (HxU32 i = 0; i < count; ++i) {
    dataLabels_[i] = std::string(labels[i]);
  }
}
