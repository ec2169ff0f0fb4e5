// The XML writer: one streamed document of the configuration and every sample. That the document
// reads back through the framework is pinned by the recorder's end-to-end test.

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <sstream>
#include <string>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/capture/HxSystemDataVector.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/writers/HxXmlOutputWriter.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxXmlTokens.h"
#include "framework/HxXmlWriter.h"

namespace {

struct Recording {
  HxSystemDataCapture capture;
  HxSystemDataStorage storage;
};

Recording makeRecording() {
  Recording r;
  EXPECT_TRUE(r.capture.addManipulatorDataCaptureType(0, HxSimAnalysis::HxCenterOfMassDataCaptureTypeToken));
  EXPECT_TRUE(r.capture.addManipulatorDataCaptureType(1, HxSimAnalysis::HxManipulatorPowerDataCaptureTypeToken));
  r.capture.allocateStorage(r.storage);
  return r;
}

void setSample(HxSystemDataStorage& storage, double time, unsigned int index, double x) {
  storage.setTime(time);
  storage.setPathPointIndex(index);
  storage.setSpecificManipulatorLevelData(0, 0, 0, x);
  storage.setSpecificManipulatorLevelData(0, 0, 1, -x);
  storage.setSpecificManipulatorLevelData(0, 0, 2, 0.1 * x);
  storage.setSpecificManipulatorLevelData(1, 0, 0, 1.0 / 3.0);
}

void writeDocument(HxXmlOutputWriter& writer, std::ostream& out, const Recording& r, bool finish) {
  const HxSystemDataVector data;
  writer.initialize(data, out);
  writer.writeComponentOpening(r.capture, out);
  writer.writeDataComponent(r.capture, out);
  writer.writeComponentClosing(r.capture, out);
  writer.writeComponentOpening(r.storage, out);
  writer.writeDataComponent(r.storage, out);
  if (finish) {
    writer.writeComponentClosing(r.storage, out);
    writer.finalize(data, out);
  }
}

// Samples after the first of a shape are written from a template; the document is byte for
// byte what the framework writes element by element (root count deliberately 0), across value
// changes (long, short, negative, inf and nan texts), a change of shape and another kind.
TEST(HxXmlOutputWriter, TemplateWritesWhatTheFrameworkWrites) {
  Recording r = makeRecording();
  Recording other;
  ASSERT_TRUE(other.capture.addLinkDataCaptureType(2, "wrist", HxSimAnalysis::HxExternalForceDataCaptureTypeToken));
  ASSERT_TRUE(other.capture.addManipulatorDataCaptureType(0, HxSimAnalysis::HxBasePositionDataCaptureTypeToken));
  other.capture.allocateStorage(other.storage);

  const HxSystemDataVector data;
  HxXmlOutputWriter writer;
  std::ostringstream fast;
  std::ostringstream reference;
  HxXmlWriter* referenceWriter = nullptr;
  HxSystemDataVector referenceVector;
  ASSERT_TRUE(
      referenceVector.writeHeaderToStream(reference, referenceWriter, "capturedDataStream", HxXml::HxDefaultToken));
  writer.initialize(data, fast);
  auto both = [&](const HxBaseSystemDataComponent& component) {
    writer.writeDataComponent(component, fast);
    referenceVector.appendElementToStream(referenceWriter, component);
  };
  both(r.capture);
  const double values[] = {0.0,
                           1.0 / 3.0,
                           -1e300,
                           12345678.875,
                           std::numeric_limits<double>::infinity(),
                           std::numeric_limits<double>::quiet_NaN(),
                           5e-324,
                           -0.0};
  unsigned int index = 0;
  for (const double v : values) {
    setSample(r.storage, v, index++ * 1000u, v);
    both(r.storage);
  }
  for (int i = 0; i < 3; ++i) {
    other.storage.setTime(i);
    other.storage.setSpecificLinkLevelData(0, 0, 0, 5, 1.0 / (i + 7));
    both(other.storage);
  }
  both(r.capture);
  both(r.storage);
  writer.finalize(data, fast);
  referenceVector.writeFooterToStream(referenceWriter);
  EXPECT_EQ(fast.str(), reference.str());
  EXPECT_NE(fast.str().find("count=\"0\""), std::string::npos);
}

// A document abandoned before finalize has no closing tag: neither a second initialize nor the
// destructor writes one or touches the old stream, even once that stream is gone (as the
// recorder deletes its streams before starting again). A stream already failed gets nothing.
TEST(HxXmlOutputWriter, UnfinishedDiscardedAndFailedDocuments) {
  const Recording r = makeRecording();
  HxXmlOutputWriter writer;
  auto first = std::make_unique<std::ostringstream>();
  writeDocument(writer, *first, r, false);
  EXPECT_TRUE(writer.documentOpen());
  const std::string firstText = first->str();
  first.reset();
  EXPECT_NE(firstText.find("generalStorage"), std::string::npos);
  EXPECT_EQ(firstText.find("</default>"), std::string::npos);

  std::ostringstream second;
  writeDocument(writer, second, r, true);
  EXPECT_FALSE(writer.documentOpen());
  EXPECT_EQ(second.str().find("<default"), second.str().rfind("<default"));
  EXPECT_EQ(second.str().rfind("</default>"), second.str().size() - std::string("</default>\n").size());

  std::ostringstream kept;
  {
    HxXmlOutputWriter scoped;
    writeDocument(scoped, kept, r, false);
  }
  EXPECT_EQ(kept.str().find("</default>"), std::string::npos);
  auto gone = std::make_unique<std::ostringstream>();
  {
    HxXmlOutputWriter scoped;
    writeDocument(scoped, *gone, r, false);
    gone.reset();
  }

  std::ostringstream failed;
  failed.setstate(std::ios::failbit);
  writeDocument(writer, failed, r, true);
  EXPECT_FALSE(writer.documentOpen());
  EXPECT_EQ(failed.str(), "");
}

}  // namespace
