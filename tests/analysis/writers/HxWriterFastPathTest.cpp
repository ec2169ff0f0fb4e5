// The writers' fast paths: a sample record's text block (elementText) and its reals
// (elementValues) must give, byte for byte, the files that its string elements give.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "analysis/storage/HxSystemDataStorage.h"
#include "tests/analysis/writers/HxWriterTestSupport.h"
#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace {

using namespace HxWriterTest;
using Components = std::vector<const HxBaseSystemDataComponent*>;

double fromBits(std::uint64_t bits) {
  double value = 0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

/// Values whose texts and floats are easy to get wrong: signed zeros and subnormals, ties to even,
/// the float overflow threshold, infinities, and NaNs of either sign and any payload.
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

/// A sample record holding `values` as one manipulator-level quantity.
HxSystemDataStorage recordOf(const std::vector<double>& values) {
  HxManipulatorDataStorage manipulator;
  manipulator.setManipulatorLevelData(HxManipulatorDataStorage::QuantityVector(1, HxXmlTest::xmlVector(values)));
  HxSystemDataStorage record;
  record.setManipulatorDataVector(HxSystemDataStorage::ManipulatorDataVector(1, manipulator));
  record.computeElementSize();
  return record;
}

FakeComponent stringsOf(const HxSystemDataStorage& record) {
  std::vector<std::string> strings;
  record.getStringElements(strings);
  return FakeComponent(record.type(), strings);
}

template <class Writer>
class HxWriterFastPathTest : public ::testing::Test {};
using Writers =
    ::testing::Types<HxTextOutputWriter, HxMrdOutputWriter, HxMatlabOutputWriter, HxMathematicaOutputWriter>;
TYPED_TEST_SUITE(HxWriterFastPathTest, Writers);

// A sample record (text block and reals) writes what its strings write, for special values
// rotated over several samples, large indices, and an element size left stale by a reshaped
// record (larger: the missing elements are empty texts; smaller: values dropped). The labels
// come from strings, as the capture configuration gives them.
TYPED_TEST(HxWriterFastPathTest, FastPathsWriteWhatTheStringsWrite) {
  TypeParam writer;
  std::vector<double> values = specialValues();
  const std::size_t count = values.size();
  std::vector<std::unique_ptr<HxSystemDataStorage>> records;
  const double times[] = {0.0, -0.0, 1e-9, std::numeric_limits<double>::quiet_NaN()};
  const unsigned int indices[] = {0u, 7u, 16777217u, 4294967295u};
  for (std::size_t s = 0; s < 4; ++s) {
    std::rotate(values.begin(), values.begin() + 1, values.end());
    records.push_back(std::make_unique<HxSystemDataStorage>(recordOf(values)));
    records.back()->setTime(times[s]);
    records.back()->setPathPointIndex(indices[s]);
  }
  for (const std::size_t size : {count - 4, count + 4}) {
    records.push_back(std::make_unique<HxSystemDataStorage>(*records.back()));
    values.resize(size, 1.0);
    records.back()->setManipulatorDataVector(recordOf(values).manipulatorDataVector());
  }
  std::vector<FakeComponent> strings;
  Components fast, slow;
  for (const auto& r : records) strings.push_back(stringsOf(*r)), fast.push_back(r.get());
  for (const FakeComponent& s : strings) slow.push_back(&s);
  const FakeComponent labels(0, std::vector<std::string>(count + 2, "v"));
  EXPECT_EQ(recorded(writer, labels, fast), recorded(writer, labels, slow));
}

}  // namespace
