// A capture configuration (hxrecord --capture): reads as hxrecord reads it, and round-trips.

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "tests/fuzz/HxFuzzRoundTrip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return HxFuzz::roundTrip<HxSystemDataCapture>(data, size, HxSimAnalysis::HxGeneralCaptureToken);
}
