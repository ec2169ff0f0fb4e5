// The writers' fast paths: a component's text block (elementText) and its reals (elementValues)
// must give, byte for byte, the files that its string elements give.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "tests/analysis/writers/HxWriterTestSupport.h"

namespace {

using namespace HxWriterTest;
using Components = std::vector<const HxBaseSystemDataComponent*>;

double fromBits(std::uint64_t bits) {
  double value = 0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

/// Values whose texts and floats are easy to get wrong; the MRD test below names them by index.
std::vector<double> specialValues() {
  const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  const double halfLeastFloat = std::ldexp(1.0, -150), overflow = std::ldexp(2.0 - std::ldexp(1.0, -24), 127);
  // clang-format off
  return {0.0, -0.0, 5e-324, -5e-324, 2.2250738585072009e-308, std::numeric_limits<double>::min(),  // 0-5
          std::ldexp(1.0, -149), halfLeastFloat, std::nextafter(halfLeastFloat, 1.0), 1e-40, 1.0 / 3.0, 0.1,  // 6-11
          1.0 + std::ldexp(1.0, -24), 1.0 + 3.0 * std::ldexp(1.0, -24), 16777217.0,  // 12-14: ties to even
          static_cast<double>(std::numeric_limits<float>::max()), std::nextafter(overflow, 0.0), overflow,  // 15-17
          1e300, -1e300, std::numeric_limits<double>::max(), inf, -inf, nan, -nan,  // 18-24
          fromBits(0x7FF8000000000123u), fromBits(0xFFF0000000000001u), 123456789.125, -2.5e-17};  // 25-28
  // clang-format on
}

/// A sample record holding `values` as the manipulator-level data of one manipulator, in
/// quantities of up to five values.
HxSystemDataStorage recordOf(const std::vector<double>& values) {
  HxManipulatorDataStorage::QuantityVector quantities;
  for (std::size_t k = 0; k < values.size(); k += 5) {
    const auto size = static_cast<HxU32>(std::min<std::size_t>(5, values.size() - k));
    quantities.pushBack(HxManipulatorDataStorage::ValueVector(size));
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

FakeComponent stringsOf(const HxSystemDataStorage& record) {
  std::vector<std::string> strings;
  record.getStringElements(strings);
  return FakeComponent(record.type(), strings);
}

using WriterFactory = std::unique_ptr<HxBaseOutputWriter> (*)();
template <class Writer>
std::unique_ptr<HxBaseOutputWriter> make() {
  return std::make_unique<Writer>();
}

class HxWriterFastPathTest : public ::testing::TestWithParam<std::pair<const char*, WriterFactory>> {};

// Rows from a text block equal rows from strings, for labels, samples and another kind, with
// no, one and several elements (blanks, quotes and commas pass unchanged); a sample record
// (block and reals) writes what its strings write: special values rotated over several samples,
// large indices, and an element size left stale by a reshaped record (larger: the missing
// elements are empty texts; smaller: values dropped).
TEST_P(HxWriterFastPathTest, FastPathsWriteWhatTheStringsWrite) {
  const std::unique_ptr<HxBaseOutputWriter> writer = GetParam().second();
  const std::vector<std::vector<std::string>> lists = {
      {}, {"only"}, {"Time", "Point Path Index", "a 'b' \"c\"", "", "1,5", "-inf"}};
  for (const auto& l : lists) {
    for (const auto& s : lists) {
      const FakeComponent labels(0, l), labelsBlock(0, l, true), sample(1, s), sampleBlock(1, s, true), other(2, s),
          otherBlock(2, s, true);
      EXPECT_EQ(recorded(*writer, labelsBlock, {&sampleBlock, &otherBlock, &sampleBlock}),
                recorded(*writer, labels, {&sample, &other, &sample}))
          << l.size() << " labels, " << s.size() << " values";
    }
  }

  const std::vector<double> values = specialValues();
  HxSystemDataStorage record = recordOf(values);
  std::vector<std::unique_ptr<HxSystemDataStorage>> records;
  const double times[] = {0.0, -0.0, 1e-9, std::numeric_limits<double>::quiet_NaN()};
  const unsigned int indices[] = {0u, 7u, 16777217u, 4294967295u};
  for (std::size_t s = 0; s < 4; ++s) {
    record.setTime(times[s]);
    record.setPathPointIndex(indices[s]);
    for (std::size_t k = 0; k < values.size(); ++k) {
      const double value = values[(k + s) % values.size()];
      record.setSpecificManipulatorLevelData(0, static_cast<HxU32>(k / 5), static_cast<HxU32>(k % 5), value);
    }
    records.push_back(std::make_unique<HxSystemDataStorage>(record));
  }
  std::vector<double> longer = values;
  longer.insert(longer.end(), {1.0, 2.0, 3.0, 4.0});
  for (const std::size_t size : {values.size() - 4, values.size() + 4}) {
    records.push_back(std::make_unique<HxSystemDataStorage>(record));
    const auto end = longer.begin() + static_cast<std::ptrdiff_t>(size);
    records.back()->setManipulatorDataVector(recordOf({longer.begin(), end}).manipulatorDataVector());
  }
  std::vector<FakeComponent> strings;
  for (const auto& r : records) strings.push_back(stringsOf(*r));
  Components fast, slow;
  for (std::size_t i = 0; i < records.size(); ++i) fast.push_back(records[i].get()), slow.push_back(&strings[i]);
  const FakeComponent labels(0, std::vector<std::string>(values.size() + 2, "v"));
  EXPECT_EQ(recorded(*writer, labels, fast), recorded(*writer, labels, slow));
}

INSTANTIATE_TEST_SUITE_P(FourWriters, HxWriterFastPathTest,
                         ::testing::Values(std::make_pair("Text", &make<HxTextOutputWriter>),
                                           std::make_pair("Mrd", &make<HxMrdOutputWriter>),
                                           std::make_pair("Matlab", &make<HxMatlabOutputWriter>),
                                           std::make_pair("Mathematica", &make<HxMathematicaOutputWriter>)),
                         [](const auto& writer) { return std::string(writer.param.first); });

// The MRD floats of the special values, pinned (the text path itself gives these bytes): signed
// zeros and subnormals, ties to even, the overflow threshold, infinities, and every NaN,
// whatever its sign and payload, as the float of the text "nan".
TEST(HxMrdOutputWriterFastPath, SpecialValuesNarrowAsTheirTexts) {
  auto bytesOf = [](const HxBaseSystemDataComponent& sample) {
    HxMrdOutputWriter writer;
    const std::string file = recorded(writer, FakeComponent(0, {"x"}), {&sample});
    return file.substr(file.size() - 4 * (specialValues().size() + 2));
  };
  const HxSystemDataStorage record = recordOf(specialValues());
  const std::string fast = bytesOf(record);
  EXPECT_EQ(fast, bytesOf(stringsOf(record)));
  auto at = [&fast](std::size_t value) { return fast.substr(4 * (value + 2), 4); };
  const std::pair<std::size_t, const char*> pinned[] = {
      {1, "\x80\x00\x00\x00"},  {2, "\x00\x00\x00\x00"},  {3, "\x80\x00\x00\x00"},  {6, "\x00\x00\x00\x01"},
      {7, "\x00\x00\x00\x00"},  {8, "\x00\x00\x00\x01"},  {12, "\x3F\x80\x00\x00"}, {13, "\x3F\x80\x00\x02"},
      {16, "\x7F\x7F\xFF\xFF"}, {17, "\x7F\x80\x00\x00"}, {22, "\xFF\x80\x00\x00"}, {23, "\x7F\xC0\x00\x00"}};
  for (const auto& [k, bytes] : pinned) EXPECT_EQ(at(k), std::string(bytes, 4)) << k;
  for (const std::size_t k : {24u, 25u, 26u}) EXPECT_EQ(at(k), at(23)) << k;
}

}  // namespace
