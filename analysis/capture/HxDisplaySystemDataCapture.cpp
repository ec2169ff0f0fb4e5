#include "analysis/capture/HxDisplaySystemDataCapture.h"

#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

HxDisplaySystemDataCapture::HxDisplaySystemDataCapture() : m_plotType(0u) {}

HxDisplaySystemDataCapture::HxDisplaySystemDataCapture(const HxDisplaySystemDataCapture& other)
    : HxXmlCompoundType(other),
      m_title(other.m_title),
      m_leftSystemDataCapture(other.m_leftSystemDataCapture),
      m_rightSystemDataCapture(other.m_rightSystemDataCapture),
      m_plotType(other.m_plotType) {}

HxDisplaySystemDataCapture& HxDisplaySystemDataCapture::operator=(const HxDisplaySystemDataCapture& other) {
  if (this != &other) {
    HxXmlCompoundType::operator=(other);
    m_title = other.m_title;
    m_leftSystemDataCapture = other.m_leftSystemDataCapture;
    m_rightSystemDataCapture = other.m_rightSystemDataCapture;
    m_plotType = other.m_plotType;
  }
  return *this;
}

HxDisplaySystemDataCapture::~HxDisplaySystemDataCapture() = default;

void HxDisplaySystemDataCapture::registerEnumerations() {
  const std::vector<std::string>& names = plotTypeTokens();
  for (unsigned int value = 0; value < names.size(); ++value) m_plotType.setEnumString(value, names[value]);
}

void HxDisplaySystemDataCapture::registerComponents() {
  registerEnumerations();
  registerComponent(HxSimAnalysis::HxTitleToken, &m_title);
  registerComponent(HxSimAnalysis::HxLeftSystemDataCaptureToken, &m_leftSystemDataCapture);
  registerComponent(HxSimAnalysis::HxRightSystemDataCaptureToken, &m_rightSystemDataCapture);
  registerComponent(HxSimAnalysis::HxPlotTypeToken, &m_plotType);
}

HxXmlObject* HxDisplaySystemDataCapture::clone() const { return new HxDisplaySystemDataCapture(*this); }

HxXmlObject* HxDisplaySystemDataCapture::newObject() const { return new HxDisplaySystemDataCapture(); }

HxBoolean HxDisplaySystemDataCapture::equality(const HxXmlObject* other) const {
  const auto* display = dynamic_cast<const HxDisplaySystemDataCapture*>(other);
  return display != nullptr && *this == *display;
}

const HxToken& HxDisplaySystemDataCapture::token() const { return classToken(); }

const HxToken& HxDisplaySystemDataCapture::classToken() { return HxSimAnalysis::HxDisplaySystemDataCaptureToken; }

HxXmlObject* HxDisplaySystemDataCapture::creator() { return new HxDisplaySystemDataCapture(); }

HxDisplaySystemDataCapture HxDisplaySystemDataCapture::nullObject() { return HxDisplaySystemDataCapture(); }

bool HxDisplaySystemDataCapture::operator==(const HxDisplaySystemDataCapture& other) const {
  return HxXmlCompoundType::operator==(other) && m_title == other.m_title &&
         m_leftSystemDataCapture == other.m_leftSystemDataCapture &&
         m_rightSystemDataCapture == other.m_rightSystemDataCapture && m_plotType == other.m_plotType;
}

const std::string& HxDisplaySystemDataCapture::title() const { return m_title.value(); }

void HxDisplaySystemDataCapture::setTitle(const std::string& title) { m_title = title; }

const HxSystemDataCapture& HxDisplaySystemDataCapture::leftSystemDataCapture() const {
  return m_leftSystemDataCapture;
}

HxSystemDataCapture& HxDisplaySystemDataCapture::leftSystemDataCapture() { return m_leftSystemDataCapture; }

void HxDisplaySystemDataCapture::setLeftSystemDataCapture(const HxSystemDataCapture& capture) {
  m_leftSystemDataCapture = capture;
}

const HxSystemDataCapture& HxDisplaySystemDataCapture::rightSystemDataCapture() const {
  return m_rightSystemDataCapture;
}

HxSystemDataCapture& HxDisplaySystemDataCapture::rightSystemDataCapture() { return m_rightSystemDataCapture; }

void HxDisplaySystemDataCapture::setRightSystemDataCapture(const HxSystemDataCapture& capture) {
  m_rightSystemDataCapture = capture;
}

unsigned int HxDisplaySystemDataCapture::plotType() const { return m_plotType.value(); }

void HxDisplaySystemDataCapture::setPlotType(unsigned int plotType) { m_plotType = plotType; }

HxBoolean HxDisplaySystemDataCapture::setPlotType(const std::string& name) {
  const std::vector<std::string>& names = plotTypeTokens();
  for (unsigned int value = 0; value < names.size(); ++value) {
    if (names[value] == name) {
      m_plotType = value;
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
