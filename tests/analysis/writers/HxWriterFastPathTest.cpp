// The writers' fast paths: a component's text block (elementText) and its reals (elementValues)
// must give, byte for byte, the files that its string elements give.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/capture/HxSystemDataVector.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "framework/HxNumberText.h"

namespace {

/// A component that gives its elements only as strings: the path every writer falls back to.
class StringsOnly : public HxBaseSystemDataComponent {
 public:
  StringsOnly(unsigned int kind, std::vector<std::string> strings) : kind_(kind), strings_(std::move(strings)) {}

  unsigned int type() const override { return kind_; }
  void getStringElements(std::vector<std::string>& elements) const override { elements = strings_; }

  HxXmlObject* clone() const override { return new StringsOnly(*this); }
  HxXmlObject* newObject() const override { return new StringsOnly(kind_, {}); }
  HxBoolean equality(const HxXmlObject* other) const override { return other == this; }
  const HxToken& token() const override {
    static const HxToken name("stringsOnly");
    return name;
  }

 protected:
  unsigned int kind_;
  std::vector<std::string> strings_;
};

/// The same elements also as a text block, laid out as `HxElementText` describes.
class WithBlock : public StringsOnly {
 public:
  WithBlock(unsigned int kind, std::vector<std::string> strings) : StringsOnly(kind, std::move(strings)) {
    offsets_.push_back(0);
    for (const std::string& s : strings_) {
      chars_ += s;
      chars_ += ',';
      offsets_.push_back(static_cast<HxU32>(chars_.size()));
    }
    text_.chars = chars_.data();
    text_.offsets = offsets_.data();
    text_.count = strings_.size();
  }
  const HxElementText* elementText() const override { return &text_; }

 private:
  std::string chars_;
  std::vector<HxU32> offsets_;
  HxElementText text_;
};

using WriterFactory = std::unique_ptr<HxBaseOutputWriter> (*)();

template <class Writer>
std::unique_ptr<HxBaseOutputWriter> make() {
  return std::make_unique<Writer>();
}

/// What the recorder writes for one file, with the given label component and samples.
std::string recorded(HxBaseOutputWriter& writer, const HxBaseSystemDataComponent& labels,
                     const std::vector<const HxBaseSystemDataComponent*>& samples) {
  std::ostringstream out;
  const HxSystemDataVector data;
  const StringsOnly dataBlock(1, {});
  writer.initialize(data, out);
  writer.writeComponentOpening(labels, out);
  writer.writeDataComponent(labels, out);
  writer.writeComponentClosing(labels, out);
  writer.writeComponentOpening(dataBlock, out);
  for (const HxBaseSystemDataComponent* sample : samples) writer.writeDataComponent(*sample, out);
  writer.writeComponentClosing(dataBlock, out);
  writer.finalize(data, out);
  return out.str();
}

double fromBits(std::uint64_t bits) {
  double value = 0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

/// Values whose texts and floats are easy to get wrong: signed zeros, subnormals of both
/// widths, halfway cases of the narrowing, overflow to infinity, infinities and NaNs of every
/// sign and payload.
std::vector<double> specialValues() {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double halfLeastFloat = std::ldexp(1.0, -150);
  const double overflowThreshold = std::ldexp(2.0 - std::ldexp(1.0, -24), 127);
  return {0.0,
          -0.0,
          5e-324,
          -5e-324,
          2.2250738585072009e-308,
          std::numeric_limits<double>::min(),
          std::ldexp(1.0, -149),                 // the least float subnormal
          halfLeastFloat,                        // half of it: a tie, narrowed to zero
          std::nextafter(halfLeastFloat, 1.0),  // just above the tie: narrowed up
          1e-40,
          1.0 / 3.0,
          0.1,
          1.0 + std::ldexp(1.0, -24),        // halfway between two floats: to even
          1.0 + 3.0 * std::ldexp(1.0, -24),  // halfway: to even, upwards
          16777217.0,
          static_cast<double>(std::numeric_limits<float>::max()),
          std::nextafter(overflowThreshold, 0.0),  // below the overflow threshold
          overflowThreshold,                       // at it: infinity
          1e300,
          -1e300,
          std::numeric_limits<double>::max(),
          inf,
          -inf,
          nan,
          -nan,
          fromBits(0x7FF8000000000123u),
          fromBits(0xFFF0000000000001u),
          123456789.125,
          -2.5e-17};
}

/// A sample record holding `values` as the manipulator-level data of one manipulator, in
/// quantities of up to five values.
HxSystemDataStorage recordOf(const std::vector<double>& values) {
  HxManipulatorDataStorage::QuantityVector quantities;
  for (std::size_t k = 0; k < values.size(); k += 5) {
    quantities.pushBack(HxManipulatorDataStorage::ValueVector(
        static_cast<HxU32>(std::min<std::size_t>(5, values.size() - k))));
  }
  HxManipulatorDataStorage manipulator;
  manipulator.setManipulatorLevelData(quantities);
  HxSystemDataStorage::ManipulatorDataVector manipulators;
  manipulators.pushBack(manipulator);
  HxSystemDataStorage record;
  record.setManipulatorDataVector(manipulators);
  record.computeElementSize();
  for (std::size_t k = 0; k < values.size(); ++k) {
    record.setSpecificManipulatorLevelData(0, static_cast<HxU32>(k / 5), static_cast<HxU32>(k % 5), values[k]);
  }
  return record;
}

StringsOnly stringsOf(const HxSystemDataStorage& record) {
  std::vector<std::string> strings;
  record.getStringElements(strings);
  return StringsOnly(record.type(), strings);
}

class HxWriterFastPathTest : public ::testing::TestWithParam<std::pair<const char*, WriterFactory>> {};

// Rows built from a text block equal rows built from strings, for labels, samples and another
// kind, with no, one and several elements (blanks, quotes and commas pass unchanged).
TEST_P(HxWriterFastPathTest, TextBlockRowsEqualStringRows) {
  const std::vector<std::vector<std::string>> lists = {
      {}, {"only"}, {"Time", "Point Path Index", "a 'b' \"c\"", "", "1,5", "-inf"}};
  for (const auto& labelStrings : lists) {
    for (const auto& sampleStrings : lists) {
      const StringsOnly labels(0, labelStrings);
      const WithBlock labelsBlock(0, labelStrings);
      const StringsOnly sample(1, sampleStrings);
      const WithBlock sampleBlock(1, sampleStrings);
      const StringsOnly other(2, sampleStrings);
      const WithBlock otherBlock(2, sampleStrings);
      const std::unique_ptr<HxBaseOutputWriter> writer = GetParam().second();
      EXPECT_EQ(recorded(*writer, labelsBlock, {&sampleBlock, &otherBlock, &sampleBlock}),
                recorded(*writer, labels, {&sample, &other, &sample}))
          << labelStrings.size() << " labels, " << sampleStrings.size() << " values";
    }
  }
}

// A sample record (text block and reals) writes exactly what its strings write: special values
// across several samples, a large path-point index, and an element size left stale by a
// reshaped record (larger: the missing elements are empty texts; smaller: values dropped).
TEST_P(HxWriterFastPathTest, SampleRecordWritesWhatItsStringsWrite) {
  const std::vector<double> values = specialValues();
  HxSystemDataStorage record = recordOf(values);
  std::vector<std::string> labelStrings(values.size() + 2, "v");
  const StringsOnly labels(0, labelStrings);

  std::vector<std::unique_ptr<HxSystemDataStorage>> records;
  std::vector<StringsOnly> strings;
  const double times[] = {0.0, -0.0, 1e-9, std::numeric_limits<double>::quiet_NaN()};
  const unsigned int indices[] = {0u, 7u, 16777217u, 4294967295u};
  for (int s = 0; s < 4; ++s) {
    record.setTime(times[s]);
    record.setPathPointIndex(indices[s]);
    // Rotate the values so that each lands in several positions.
    for (std::size_t k = 0; k < values.size(); ++k) {
      record.setSpecificManipulatorLevelData(0, static_cast<HxU32>(k / 5), static_cast<HxU32>(k % 5),
                                             values[(k + static_cast<std::size_t>(s)) % values.size()]);
    }
    records.push_back(std::make_unique<HxSystemDataStorage>(record));
    records.back()->computeElementSize();
    strings.push_back(stringsOf(*records.back()));
  }
  // Reshaped without recomputing the size: four elements fewer, then four more.
  std::vector<double> longer = values;
  longer.insert(longer.end(), {1.0, 2.0, 3.0, 4.0});
  for (const std::size_t size : {values.size() - 4, values.size() + 4}) {
    const HxSystemDataStorage reshaped =
        recordOf(std::vector<double>(longer.begin(), longer.begin() + static_cast<std::ptrdiff_t>(size)));
    records.push_back(std::make_unique<HxSystemDataStorage>(record));
    records.back()->setManipulatorDataVector(reshaped.manipulatorDataVector());
    strings.push_back(stringsOf(*records.back()));
  }

  std::vector<const HxBaseSystemDataComponent*> fast;
  std::vector<const HxBaseSystemDataComponent*> slow;
  for (const auto& r : records) fast.push_back(r.get());
  for (const StringsOnly& s : strings) slow.push_back(&s);
  const std::unique_ptr<HxBaseOutputWriter> writer = GetParam().second();
  EXPECT_EQ(recorded(*writer, labels, fast), recorded(*writer, labels, slow));
}

INSTANTIATE_TEST_SUITE_P(
    FourWriters, HxWriterFastPathTest,
    ::testing::Values(std::make_pair("Text", &make<HxTextOutputWriter>),
                      std::make_pair("Mrd", &make<HxMrdOutputWriter>),
                      std::make_pair("Matlab", &make<HxMatlabOutputWriter>),
                      std::make_pair("Mathematica", &make<HxMathematicaOutputWriter>)),
    [](const ::testing::TestParamInfo<HxWriterFastPathTest::ParamType>& writer) {
      return std::string(writer.param.first);
    });

// The record's text block and reals agree with its strings: element i of the block is string
// i, string i is the toolkit's text of real i (the index in decimal), the separators are commas,
// and a setter makes both new.
TEST(HxSystemDataStorageFastPath, BlockAndRealsAgreeWithTheStrings) {
  HxSystemDataStorage record = recordOf(specialValues());
  record.setTime(0.25);
  record.setPathPointIndex(4294967295u);
  for (int round = 0; round < 2; ++round) {
    std::vector<std::string> strings;
    record.getStringElements(strings);
    const HxElementText& text = *record.elementText();
    const HxElementValues& reals = *record.elementValues();
    ASSERT_EQ(text.count, strings.size());
    ASSERT_EQ(reals.count, strings.size());
    ASSERT_EQ(text.offsets[0], 0u);
    for (std::size_t i = 0; i < strings.size(); ++i) {
      EXPECT_EQ(std::string(text.element(i)), strings[i]) << i;
      EXPECT_EQ(text.chars[text.offsets[i + 1] - 1], ',') << i;
      EXPECT_EQ(i == 1 ? HxINT2STRING(static_cast<unsigned int>(reals.values[i]), 10)
                       : HxDOUBLE2STRING(reals.values[i]),
                strings[i])
          << i;
    }
    EXPECT_EQ(strings[0], round == 0 ? "0.25" : "-1.5");
    EXPECT_EQ(strings[1], round == 0 ? "4294967295" : "3");
    record.setTime(-1.5);
    record.setPathPointIndex(3);
  }
}

// The MRD floats of the special values, pinned: the text path itself gives these bytes.
TEST(HxMrdOutputWriterFastPath, SpecialValuesNarrowAsTheirTexts) {
  auto bytesOf = [](const HxBaseSystemDataComponent& sample) {
    HxMrdOutputWriter writer;
    const std::string file = recorded(writer, StringsOnly(0, {"x"}), {&sample});
    return file.substr(file.size() - 4 * (specialValues().size() + 2));
  };
  const HxSystemDataStorage record = recordOf(specialValues());
  const std::string fast = bytesOf(record);
  EXPECT_EQ(fast, bytesOf(stringsOf(record)));
  auto at = [&fast](std::size_t value) { return fast.substr(4 * (value + 2), 4); };
  EXPECT_EQ(at(1), std::string("\x80\x00\x00\x00", 4));   // -0
  EXPECT_EQ(at(2), std::string("\x00\x00\x00\x00", 4));   // a double subnormal: 0
  EXPECT_EQ(at(3), std::string("\x80\x00\x00\x00", 4));   // and its negative: -0
  EXPECT_EQ(at(6), std::string("\x00\x00\x00\x01", 4));   // the least float subnormal
  EXPECT_EQ(at(7), std::string("\x00\x00\x00\x00", 4));   // half of it, a tie: to even
  EXPECT_EQ(at(8), std::string("\x00\x00\x00\x01", 4));   // above the tie
  EXPECT_EQ(at(12), std::string("\x3F\x80\x00\x00", 4));  // tie: to even, down
  EXPECT_EQ(at(13), std::string("\x3F\x80\x00\x02", 4));  // tie: to even, up
  EXPECT_EQ(at(16), std::string("\x7F\x7F\xFF\xFF", 4));  // below the threshold: the largest float
  EXPECT_EQ(at(17), std::string("\x7F\x80\x00\x00", 4));  // at it: infinity
  EXPECT_EQ(at(22), std::string("\xFF\x80\x00\x00", 4));  // -inf
  // Every NaN, whatever its sign and payload, is the float of the text "nan".
  for (const std::size_t k : {24u, 25u, 26u}) EXPECT_EQ(at(k), at(23)) << k;
}

}  // namespace
