#pragma once
// Helpers shared by the writer tests: a component with chosen strings (optionally also as a text
// block), and the recorder's calling order replayed on a stream.

#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/capture/HxSystemDataVector.h"
#include "analysis/writers/HxBaseOutputWriter.h"

namespace HxWriterTest {

/// A system data component of a chosen kind whose string elements are given; with `block` it
/// also offers them as a text block, laid out as `HxElementText` describes.
class FakeComponent : public HxBaseSystemDataComponent, public HxElementSource {
 public:
  FakeComponent(unsigned int kind, std::vector<std::string> strings, bool block = false)
      : kind_(kind), block_(block), strings_(std::move(strings)) {}

  unsigned int type() const override { return kind_; }
  void getStringElements(std::vector<std::string>& elements) const override { elements = strings_; }
  const HxElementText* elementText() const override {
    if (!block_) return nullptr;
    chars_.clear();
    offsets_.assign(1, 0);
    for (const std::string& s : strings_) offsets_.push_back(static_cast<HxU32>((chars_ += s + ",").size()));
    text_ = {chars_.data(), offsets_.data(), strings_.size()};
    return &text_;
  }
  const HxElementValues* elementValues() const override { return nullptr; }

  HxXmlObject* clone() const override { return new FakeComponent(*this); }
  HxXmlObject* newObject() const override { return new FakeComponent(kind_, {}); }
  HxBoolean equality(const HxXmlObject* other) const override { return other == this; }
  const HxToken& token() const override {
    static const HxToken name("fakeComponent");
    return name;
  }

 private:
  unsigned int kind_;
  bool block_;
  std::vector<std::string> strings_;
  mutable std::string chars_;
  mutable std::vector<HxU32> offsets_;
  mutable HxElementText text_;
};

/// Labels (kind 0) and samples (kind 1).
inline FakeComponent labels(std::vector<std::string> strings) { return FakeComponent(0, std::move(strings)); }
inline FakeComponent sample(std::vector<std::string> strings) { return FakeComponent(1, std::move(strings)); }

/// The bytes the recorder writes for one file: header, label block, data block with the
/// samples, and, when `finish` is true, the closing of the data block and the trailer.
inline std::string recorded(HxBaseOutputWriter& writer, const HxBaseSystemDataComponent& labelComponent,
                            const std::vector<const HxBaseSystemDataComponent*>& samples, bool finish = true) {
  std::ostringstream stream;
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
  return stream.str();
}

/// The same for label and sample texts.
inline std::string recorded(HxBaseOutputWriter& writer, std::vector<std::string> labelTexts,
                            const std::vector<std::vector<std::string>>& samples, bool finish = true) {
  std::vector<FakeComponent> components;
  for (const std::vector<std::string>& values : samples) components.push_back(sample(values));
  std::vector<const HxBaseSystemDataComponent*> pointers;
  for (const FakeComponent& c : components) pointers.push_back(&c);
  return recorded(writer, labels(std::move(labelTexts)), pointers, finish);
}

}  // namespace HxWriterTest
