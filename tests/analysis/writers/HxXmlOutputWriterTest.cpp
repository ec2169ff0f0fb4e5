// The XML writer: one streamed document of the configuration and every sample. That the document
// reads back through the framework is pinned by the recorder's end-to-end test.

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/capture/HxSystemDataVector.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/writers/HxXmlOutputWriter.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxXmlTokens.h"
#include "framework/HxXmlWriter.h"
#include "tests/analysis/writers/HxWriterTestSupport.h"

namespace {

// A configuration of centre of mass (manipulator 0) and power (manipulator 1), or with
// `powerFirst` the other way round, and its record.
struct Recording {
  explicit Recording(bool powerFirst = false) {
    const HxToken* tokens[] = {&HxSimAnalysis::HxCenterOfMassDataCaptureTypeToken,
                               &HxSimAnalysis::HxManipulatorPowerDataCaptureTypeToken};
    for (HxU32 m = 0; m < 2; ++m) EXPECT_TRUE(capture.addManipulatorDataCaptureType(m, *tokens[(m + powerFirst) % 2]));
    capture.allocateStorage(storage);
  }
  HxSystemDataCapture capture;
  HxSystemDataStorage storage;
};

// Samples after the first of a shape are written from a template; the document is byte for
// byte what the framework writes element by element (root count deliberately 0), across value
// changes (long, short, negative, inf and nan texts), changes of shape (also to one of as many
// values and quantities in other sizes, and of one record in place) and another kind.
TEST(HxXmlOutputWriter, TemplateWritesWhatTheFrameworkWrites) {
  Recording r, swapped(true), other;
  ASSERT_TRUE(other.capture.addLinkDataCaptureType(2, "wrist", HxSimAnalysis::HxExternalForceDataCaptureTypeToken));
  ASSERT_TRUE(other.capture.addManipulatorDataCaptureType(0, HxSimAnalysis::HxBasePositionDataCaptureTypeToken));
  other.capture.allocateStorage(other.storage);

  HxXmlOutputWriter writer;
  std::ostringstream fast, reference;
  HxXmlWriter* referenceWriter = nullptr;
  const HxSystemDataVector data, referenceVector;
  ASSERT_TRUE(
      referenceVector.writeHeaderToStream(reference, referenceWriter, "capturedDataStream", HxXml::HxDefaultToken));
  writer.initialize(data, fast);
  auto both = [&](const HxBaseSystemDataComponent& component) {
    writer.writeDataComponent(component, fast);
    referenceVector.appendElementToStream(referenceWriter, component);
  };
  both(r.capture);
  const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  unsigned int index = 0;
  for (const double v : {0.0, 1.0 / 3.0, -1e300, 12345678.875, inf, nan, 5e-324, -0.0}) {
    r.storage.setTime(v);
    r.storage.setPathPointIndex(index++ * 1000u);
    const double xyz[] = {v, -v, 0.1 * v};
    for (HxU32 k = 0; k < 3; ++k) r.storage.setSpecificManipulatorLevelData(0, 0, k, xyz[k]);
    r.storage.setSpecificManipulatorLevelData(1, 0, 0, 1.0 / 3.0);
    both(r.storage);
  }
  for (int i = 0; i < 3; ++i) {
    other.storage.setTime(i);
    other.storage.setSpecificLinkLevelData(2, 0, 0, 5, 1.0 / (i + 7));
    both(other.storage);
    both(swapped.storage);
  }
  // One record reshaped in place to another layout of as many values.
  HxSystemDataStorage reshaped(r.storage);
  both(reshaped);
  reshaped.setManipulatorDataVector(swapped.storage.manipulatorDataVector());
  reshaped.computeElementSize();
  both(reshaped);
  both(r.capture);
  both(r.storage);
  writer.finalize(data, fast);
  referenceVector.writeFooterToStream(referenceWriter);
  EXPECT_EQ(fast.str(), reference.str());
  EXPECT_NE(fast.str().find("count=\"0\""), std::string::npos);
}

// Once its layout has a template, a sample is the template filled with its text block: a record
// whose block shows another record's values is written with those.
TEST(HxXmlOutputWriter, LaterSamplesAreFilledFromTheTextBlock) {
  struct Borrowing : HxSystemDataStorage {
    explicit Borrowing(const HxSystemDataStorage& record) : HxSystemDataStorage(record) {}
    const HxElementText* elementText() const override {
      return lender != nullptr ? lender->elementText() : HxSystemDataStorage::elementText();
    }
    const HxSystemDataStorage* lender = nullptr;
  };
  const Recording r;
  Borrowing sample(r.storage);
  HxSystemDataStorage lender(r.storage);
  lender.setTime(42.5);
  const HxSystemDataVector data;
  HxXmlOutputWriter writer;
  std::ostringstream out;
  writer.initialize(data, out);
  writer.writeDataComponent(r.capture, out);
  writer.writeDataComponent(sample, out);
  sample.lender = &lender;
  writer.writeDataComponent(sample, out);
  EXPECT_NE(out.str().find(">42.5<"), std::string::npos);
}

// A writer discarded before finalize (as the recorder deletes its streams before starting
// again) neither closes its document nor touches the stream, even once that stream is gone. A
// stream already failed gets nothing. (That a restarted recording leaves its first document
// unclosed is pinned by the recorder's test.)
TEST(HxXmlOutputWriter, DiscardedAndFailedDocuments) {
  const Recording r;
  const HxSystemDataVector data;
  std::ostringstream kept;
  {
    HxXmlOutputWriter scoped, gone;
    scoped.initialize(data, kept);
    scoped.writeDataComponent(r.capture, kept);
    HxWriterTest::recorded(gone, r.capture, {&r.storage}, false);
  }
  EXPECT_EQ(kept.str().find("</default>"), std::string::npos);

  HxXmlOutputWriter writer;
  std::ostringstream failed;
  failed.setstate(std::ios::failbit);
  writer.initialize(data, failed);
  writer.writeDataComponent(r.storage, failed);
  writer.finalize(data, failed);
  EXPECT_EQ(failed.str(), "");
}

}  // namespace
