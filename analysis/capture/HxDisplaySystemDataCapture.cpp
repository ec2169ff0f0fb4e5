#include "analysis/capture/HxDisplaySystemDataCapture.h"

#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

HxDisplaySystemDataCapture::HxDisplaySystemDataCapture() : plotType_(0u) {}

void HxDisplaySystemDataCapture::registerEnumerations() {
  const std::vector<std::string>& names = plotTypeTokens();
  for (unsigned int value = 0; value < names.size(); ++value) plotType_.setEnumString(value, names[value]);
}

void HxDisplaySystemDataCapture::registerComponents() {
  registerEnumerations();
  registerComponent(HxSimAnalysis::HxTitleToken, &title_);
  registerComponent(HxSimAnalysis::HxLeftSystemDataCaptureToken, &leftSystemDataCapture_);
  registerComponent(HxSimAnalysis::HxRightSystemDataCaptureToken, &rightSystemDataCapture_);
  registerComponent(HxSimAnalysis::HxPlotTypeToken, &plotType_);
}

HX_XML_SERIALISABLE_DEFINITIONS(HxDisplaySystemDataCapture, HxSimAnalysis::HxDisplaySystemDataCaptureToken)

const std::string& HxDisplaySystemDataCapture::title() const { return title_.value(); }

void HxDisplaySystemDataCapture::setTitle(const std::string& title) { title_ = title; }

const HxSystemDataCapture& HxDisplaySystemDataCapture::leftSystemDataCapture() const { return leftSystemDataCapture_; }

HxSystemDataCapture& HxDisplaySystemDataCapture::leftSystemDataCapture() { return leftSystemDataCapture_; }

void HxDisplaySystemDataCapture::setLeftSystemDataCapture(const HxSystemDataCapture& capture) {
  leftSystemDataCapture_ = capture;
}

const HxSystemDataCapture& HxDisplaySystemDataCapture::rightSystemDataCapture() const {
  return rightSystemDataCapture_;
}

HxSystemDataCapture& HxDisplaySystemDataCapture::rightSystemDataCapture() { return rightSystemDataCapture_; }

void HxDisplaySystemDataCapture::setRightSystemDataCapture(const HxSystemDataCapture& capture) {
  rightSystemDataCapture_ = capture;
}

unsigned int HxDisplaySystemDataCapture::plotType() const { return plotType_.value(); }

void HxDisplaySystemDataCapture::setPlotType(unsigned int plotType) { plotType_ = plotType; }

HxBoolean HxDisplaySystemDataCapture::setPlotType(const std::string& name) {
  const std::vector<std::string>& names = plotTypeTokens();
  for (unsigned int value = 0; value < names.size(); ++value) {
    if (names[value] == name) {
      plotType_ = value;
      return true;
    }
  }
  return false;
}

unsigned int HxDisplaySystemDataCapture::numPlotTypes() { return 2; }

const std::vector<std::string>& HxDisplaySystemDataCapture::plotTypeTokens() {
  // Filled whenever found empty, so once; the names are the local names of the plot tokens.
  static std::vector<std::string> names;
  if (names.empty()) {
    names.emplace_back(HxSimAnalysis::HxScrollingCruveToken.localName());
    names.emplace_back(HxSimAnalysis::HxBarChartToken.localName());
  }
  return names;
}
