// A display description (examples/config/display_description.xml): reads through the same path
// as hxrecord's configurations, and round-trips.

#include "analysis/capture/HxDisplaySystemDataCapture.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "tests/fuzz/HxFuzzRoundTrip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return HxFuzz::roundTrip<HxDisplaySystemDataCapture>(data, size, HxSimAnalysis::HxDisplaySystemDataCaptureToken);
}
