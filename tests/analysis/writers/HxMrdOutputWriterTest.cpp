// The MRD writer: blank header patched at the end, label line, big-endian float samples.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/writers/HxMrdOutputWriter.h"
#include "tests/analysis/writers/HxWriterTestSupport.h"

namespace {

using HxWriterTest::FakeComponent;
using HxWriterTest::labels;
using HxWriterTest::record;
using HxWriterTest::sample;

std::string bigEndian(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, 4);
  return std::string{static_cast<char>(bits >> 24), static_cast<char>(bits >> 16), static_cast<char>(bits >> 8),
                     static_cast<char>(bits)};
}

std::string paddedHeader(const std::string& fields) { return fields + std::string(80 - fields.size(), ' ') + "\n"; }

// The whole layout: header patched with total, channels, samples and 1000 over the blanks,
// the label line with blanks made "_", then each value as a big-endian float (1.5 is
// 3F C0 00 00).
TEST(HxMrdOutputWriter, WritesHeaderLabelLineAndBigEndianSamples) {
  HxMrdOutputWriter writer;
  std::ostringstream out;
  record(writer, out, labels({"Time", "Point Path Index", "Manip[0]:Joint Positions:Joint Position"}),
         {sample({"0", "0", "1.5"}), sample({"0.01", "2", "-0.25"})});
  const std::string expected = paddedHeader("6\t3\t2\t1000") +
                               "Time  -  Point_Path_Index  -  Manip[0]:Joint_Positions:Joint_Position  -\n\n\n" +
                               bigEndian(0.0f) + bigEndian(0.0f) + std::string("\x3F\xC0\x00\x00", 4) +
                               bigEndian(0.01f) + bigEndian(2.0f) + bigEndian(-0.25f);
  EXPECT_EQ(out.str(), expected);
  EXPECT_EQ(writer.sampleCount(), 2u);
  EXPECT_EQ(writer.channelCount(), 3u);
}

// 250 samples of 14 channels: "3500\t14\t250\t1000", 64 blanks, the newline at offset 80.
// Without samples the header reads 0, 14, 0, 1000 and no data follows the labels.
TEST(HxMrdOutputWriter, HeaderCountsSamplesAndChannels) {
  std::vector<std::string> names(14, "c");
  std::vector<std::string> values(14, "1");
  HxMrdOutputWriter writer;
  std::ostringstream out;
  record(writer, out, labels(names), std::vector<FakeComponent>(250, sample(values)));
  const std::string header = out.str().substr(0, 81);
  EXPECT_EQ(header, "3500\t14\t250\t1000" + std::string(64, ' ') + "\n");
  EXPECT_EQ(out.str().size(), 81 + 14 * 6 - 2 + 3 + 250 * 14 * 4u);

  std::ostringstream empty;
  HxMrdOutputWriter other;
  record(other, empty, labels(names), {});
  EXPECT_EQ(empty.str().substr(0, 81), paddedHeader("0\t14\t0\t1000"));
  EXPECT_EQ(empty.str().size(), 81 + 14 * 6 - 2 + 3u);
  EXPECT_EQ(empty.str().substr(empty.str().size() - 7), "c  -\n\n\n");
}

// A save never finished keeps 80 blanks; empty labels (disabled columns) keep their place.
TEST(HxMrdOutputWriter, UnfinishedFileKeepsBlankHeader) {
  HxMrdOutputWriter writer;
  std::ostringstream out;
  record(writer, out, labels({"Time", "Point Path Index", "", ""}), {sample({"1", "0"})}, false);
  EXPECT_EQ(out.str(), std::string(80, ' ') + "\n" + "Time  -  Point_Path_Index  -    -    -\n\n\n" + bigEndian(1.0f) +
                           bigEndian(0.0f));
}

// Values make a round trip through their text: the float stored is that of the double the
// text reads back to; inf and nan pass too.
TEST(HxMrdOutputWriter, StoresTheFloatOfTheTextsDouble) {
  HxMrdOutputWriter writer;
  std::ostringstream out;
  writer.writeDataComponent(sample({"0.1", "-inf", "nan", "3.4028235677973366e+38", "1e-50"}), out);
  const std::string bytes = out.str();
  ASSERT_EQ(bytes.size(), 20u);
  EXPECT_EQ(bytes.substr(0, 4), bigEndian(static_cast<float>(0.1)));
  EXPECT_EQ(bytes.substr(4, 4), bigEndian(-std::numeric_limits<float>::infinity()));
  EXPECT_EQ(static_cast<unsigned char>(bytes[8]) & 0x7F, 0x7F);  // a NaN: exponent all ones
  EXPECT_EQ(bytes.substr(12, 4), bigEndian(static_cast<float>(3.4028235677973366e+38)));
  EXPECT_EQ(bytes.substr(16, 4), bigEndian(0.0f));
}

// Any kind other than labels counts as a sample (another kind writes no bytes); initialize
// resets the sample count but keeps the channel count; the total wraps in 32 bits.
TEST(HxMrdOutputWriter, CountsWrapAndSurviveInitialize) {
  HxMrdOutputWriter writer;
  std::ostringstream out;
  const HxSystemDataVector data;
  writer.writeDataComponent(labels(std::vector<std::string>(65536)), out);
  const FakeComponent other(9, {"1", "2"});
  const std::string::size_type before = out.str().size();
  for (int i = 0; i < 65537; ++i) writer.writeDataComponent(other, out);
  EXPECT_EQ(out.str().size(), before);
  EXPECT_EQ(writer.sampleCount(), 65537u);

  std::ostringstream patched(std::string(81, ' '));
  writer.finalize(data, patched);
  EXPECT_EQ(patched.str().substr(0, 19), "65536\t65536\t65537\t1");  // 65536 x 65537 mod 2^32

  std::ostringstream again;
  writer.initialize(data, again);
  EXPECT_EQ(again.str(), std::string(80, ' ') + "\n");
  EXPECT_EQ(writer.sampleCount(), 0u);
  EXPECT_EQ(writer.channelCount(), 65536u);
}

// Copies carry the counts and the fourth header value; every MRD writer compares equal.
TEST(HxMrdOutputWriter, CopiesCarryCounts) {
  HxMrdOutputWriter writer;
  std::ostringstream out;
  writer.writeDataComponent(labels({"a", "b"}), out);
  writer.writeDataComponent(sample({"1", "2"}), out);
  const HxMrdOutputWriter copy(writer);
  EXPECT_EQ(copy.sampleCount(), 1u);
  EXPECT_EQ(copy.channelCount(), 2u);
  EXPECT_EQ(copy.fourthHeaderValue(), 1000.0f);
  HxMrdOutputWriter assigned;
  assigned = writer;
  EXPECT_EQ(assigned.channelCount(), 2u);
  EXPECT_TRUE(assigned == HxMrdOutputWriter());
}

}  // namespace
