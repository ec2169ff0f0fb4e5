#pragma once
// Helpers shared by the writer and recorder tests: every writer, a component with chosen strings,
// and the recorder's calling order replayed on a stream.

#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/capture/HxSystemDataVector.h"
#include "analysis/writers/HxBaseOutputWriter.h"
#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "analysis/writers/HxXmlOutputWriter.h"

namespace HxWriterTest {

/// Every writer, in the order text, XML, MRD, MATLAB, Mathematica.
inline HxOutputWriterVector allWriters() {
  HxOutputWriterVector writers;
  writers.pushBack(HxTextOutputWriter());
  writers.pushBack(HxXmlOutputWriter());
  writers.pushBack(HxMrdOutputWriter());
  writers.pushBack(HxMatlabOutputWriter());
  writers.pushBack(HxMathematicaOutputWriter());
  return writers;
}

/// A system data component of a chosen kind whose string elements are given (no text block).
class FakeComponent : public HxBaseSystemDataComponent {
 public:
  FakeComponent(unsigned int kind, std::vector<std::string> strings) : kind_(kind), strings_(std::move(strings)) {}

  unsigned int type() const override { return kind_; }
  void getStringElements(std::vector<std::string>& elements) const override { elements = strings_; }
  HxXmlObject* clone() const override { return new FakeComponent(*this); }
  HxXmlObject* newObject() const override { return new FakeComponent(kind_, {}); }
  HxBoolean equality(const HxXmlObject* other) const override { return other == this; }
  const HxToken& token() const override {
    static const HxToken name("fakeComponent");
    return name;
  }

 private:
  unsigned int kind_;
  std::vector<std::string> strings_;
};

/// Labels (kind 0) and samples (kind 1).
inline FakeComponent labels(std::vector<std::string> strings) { return FakeComponent(0, std::move(strings)); }
inline FakeComponent sample(std::vector<std::string> strings) { return FakeComponent(1, std::move(strings)); }

/// Writes to `stream` what the recorder writes for one file: header, label block, data block
/// with the samples, and, when `finish` is true, the closing of the data block and the trailer.
inline void record(HxBaseOutputWriter& writer, const HxBaseSystemDataComponent& labelComponent,
                   const std::vector<const HxBaseSystemDataComponent*>& samples, std::ostream& stream,
                   bool finish = true) {
  const HxSystemDataVector data;
  const FakeComponent dataBlock(1, {});
  writer.initialize(data, stream);
  writer.writeComponentOpening(labelComponent, stream);
  writer.writeDataComponent(labelComponent, stream);
  writer.writeComponentClosing(labelComponent, stream);
  writer.writeComponentOpening(dataBlock, stream);
  for (const HxBaseSystemDataComponent* s : samples) writer.writeDataComponent(*s, stream);
  if (finish) {
    writer.writeComponentClosing(dataBlock, stream);
    writer.finalize(data, stream);
  }
}

/// The same bytes as a string.
inline std::string recorded(HxBaseOutputWriter& writer, const HxBaseSystemDataComponent& labelComponent,
                            const std::vector<const HxBaseSystemDataComponent*>& samples, bool finish = true) {
  std::ostringstream stream;
  record(writer, labelComponent, samples, stream, finish);
  return stream.str();
}

}  // namespace HxWriterTest
