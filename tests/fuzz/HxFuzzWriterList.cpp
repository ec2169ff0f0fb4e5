// A writer list (hxrecord --writers): reads as hxrecord reads it, and round-trips.

#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "tests/fuzz/HxFuzzRoundTrip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return HxFuzz::roundTrip<HxOutputWriterVector>(data, size, HxSimAnalysis::HxOutputWriterVectorToken);
}
