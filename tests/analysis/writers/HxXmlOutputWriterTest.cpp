// The XML writer: one streamed document of the configuration and every sample.

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
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlTokens.h"
#include "framework/HxXmlWriter.h"

namespace {

struct Recording {
  HxSystemDataCapture capture;
  HxSystemDataStorage storage;
};

Recording makeRecording() {
  Recording r;
  r.capture.setLabel("two quantities");
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

// The document reads back, through the framework, as the configuration followed by every
// sample, each equal to what was written; the root announces a count of 0.
TEST(HxXmlOutputWriter, DocumentReadsBackAsConfigurationAndSamples) {
  Recording r = makeRecording();
  HxXmlOutputWriter writer;
  std::ostringstream out;
  const HxSystemDataVector data;
  writer.initialize(data, out);
  EXPECT_TRUE(writer.documentOpen());
  writer.writeDataComponent(r.capture, out);
  HxSystemDataStorage first;
  HxSystemDataStorage second;
  setSample(r.storage, 0.0, 0, 1.5);
  first = r.storage;
  writer.writeDataComponent(r.storage, out);
  setSample(r.storage, 0.125, 4, -2.75e-9);
  second = r.storage;
  writer.writeDataComponent(r.storage, out);
  writer.finalize(data, out);
  EXPECT_FALSE(writer.documentOpen());

  const std::string xml = out.str();
  EXPECT_NE(xml.find("<default"), std::string::npos) << xml;
  EXPECT_NE(xml.find("count=\"0\""), std::string::npos) << xml;
  EXPECT_NE(xml.find("capturedDataStream"), std::string::npos) << xml;
  EXPECT_EQ(xml.rfind("</default>"), xml.size() - std::string("</default>\n").size()) << xml;

  Hx::ScopedPrintCapture messages;
  HxXmlReader reader;
  ASSERT_TRUE(reader.openMemory(xml, "recording.xml"));
  HxSystemDataVector back;
  ASSERT_TRUE(reader.readObject(back)) << messages.text();
  ASSERT_EQ(back.size(), 3u);
  EXPECT_EQ(back[0].type(), 0u);
  EXPECT_TRUE(back[0].equality(&r.capture));
  for (HxU32 i : {1u, 2u}) {
    auto& storage = dynamic_cast<HxSystemDataStorage&>(back[i]);
    storage.computeElementSize();  // not serialised
    EXPECT_TRUE(storage == (i == 1 ? first : second)) << "sample " << i;
  }
}

// Samples after the first of a shape are written from a template; the document is byte for
// byte what the framework writes element by element, across value changes (long, short,
// negative, inf and nan texts), a change of the record's shape and a component of another kind.
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
  ASSERT_TRUE(referenceVector.writeHeaderToStream(reference, referenceWriter, "capturedDataStream",
                                                  HxXml::HxDefaultToken));
  writer.initialize(data, fast);
  auto both = [&](const HxBaseSystemDataComponent& component) {
    writer.writeDataComponent(component, fast);
    referenceVector.appendElementToStream(referenceWriter, component);
  };
  both(r.capture);
  const double values[] = {0.0, 1.0 / 3.0, -1e300, 12345678.875, std::numeric_limits<double>::infinity(),
                           std::numeric_limits<double>::quiet_NaN(), 5e-324, -0.0};
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
}

// With no samples the document still holds the root and the configuration; abandoned before
// finalize it has no closing tag.
TEST(HxXmlOutputWriter, EmptyAndUnfinishedDocuments) {
  const Recording r = makeRecording();
  HxXmlOutputWriter writer;
  std::ostringstream finished;
  writeDocument(writer, finished, r, true);
  EXPECT_NE(finished.str().find("generalCapture"), std::string::npos);
  EXPECT_NE(finished.str().find("</default>"), std::string::npos);

  std::ostringstream unfinished;
  writeDocument(writer, unfinished, r, false);
  EXPECT_NE(unfinished.str().find("generalStorage"), std::string::npos);
  EXPECT_EQ(unfinished.str().find("</default>"), std::string::npos);
}

// A second initialize drops the first document without its footer and without touching its
// stream again, even when that stream no longer exists; the destructor does the same.
TEST(HxXmlOutputWriter, DiscardsAnOpenDocumentWithoutFooter) {
  const Recording r = makeRecording();
  HxXmlOutputWriter writer;
  auto first = std::make_unique<std::ostringstream>();
  writeDocument(writer, *first, r, false);
  const std::string firstText = first->str();
  first.reset();  // as the recorder deletes its streams before starting again

  std::ostringstream second;
  writeDocument(writer, second, r, true);
  EXPECT_EQ(second.str().find("<default"), second.str().rfind("<default"));
  EXPECT_NE(second.str().find("</default>"), std::string::npos);
  EXPECT_EQ(firstText.find("</default>"), std::string::npos);

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
}

// A stream that already failed gets no document, and every later call writes nothing.
TEST(HxXmlOutputWriter, FailedStreamGetsNothing) {
  const Recording r = makeRecording();
  HxXmlOutputWriter writer;
  std::ostringstream out;
  out.setstate(std::ios::failbit);
  writeDocument(writer, out, r, true);
  EXPECT_FALSE(writer.documentOpen());
  EXPECT_EQ(out.str(), "");

  const HxXmlOutputWriter copy(writer);
  EXPECT_FALSE(copy.documentOpen());
}

}  // namespace
