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

using namespace HxWriterTest;

std::string bigEndian(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, 4);
  return std::string{static_cast<char>(bits >> 24), static_cast<char>(bits >> 16), static_cast<char>(bits >> 8),
                     static_cast<char>(bits)};
}

std::string header(const std::string& fields) { return fields + std::string(80 - fields.size(), ' ') + "\n"; }

// Whole files: the header patched over its 80 blanks with total, channels (one per label, the
// empty labels of disabled columns included), samples and 1000; the label line with blanks made
// "_"; each value a big-endian float (1.5 is 3F C0 00 00). A save never finished keeps the blanks.
TEST(HxMrdOutputWriter, FilesByteForByte) {
  HxMrdOutputWriter writer;
  EXPECT_EQ(recorded(writer, {"Time", "Point Path Index", "Manip[0]:Joint Positions:Joint Position"},
                     {{"0", "0", "1.5"}, {"0.01", "2", "-0.25"}}),
            header("6\t3\t2\t1000") + "Time  -  Point_Path_Index  -  Manip[0]:Joint_Positions:Joint_Position  -\n\n\n" +
                bigEndian(0) + bigEndian(0) + std::string("\x3F\xC0\x00\x00", 4) + bigEndian(0.01f) + bigEndian(2) +
                bigEndian(-0.25f));
  EXPECT_EQ(recorded(writer, {"Time", "Point Path Index", "", ""}, {{"1", "0"}}),
            header("4\t4\t1\t1000") + "Time  -  Point_Path_Index  -    -    -\n\n\n" + bigEndian(1) + bigEndian(0));
  EXPECT_EQ(recorded(writer, {"Time", "x"}, {{"1", "0"}}, false),
            header("") + "Time  -  x  -\n\n\n" + bigEndian(1) + bigEndian(0));
  EXPECT_EQ(recorded(writer, {"Time", "x"}, {}), header("0\t2\t0\t1000") + "Time  -  x  -\n\n\n");
}

// A value is the float of the double its text reads back to; inf, nan, the largest float and
// an underflow pass too.
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

// Any kind other than labels counts as a sample but writes no bytes; the total wraps in 32
// bits; copies carry the counts; initialize resets the sample count but keeps the channels.
TEST(HxMrdOutputWriter, CountsWrapAndTravelWithCopies) {
  const HxSystemDataVector data;
  HxMrdOutputWriter writer;
  std::ostringstream out;
  writer.writeDataComponent(labels(std::vector<std::string>(65536)), out);
  const std::string::size_type labelBytes = out.str().size();
  for (int i = 0; i < 65537; ++i) writer.writeDataComponent(FakeComponent(9, {"1", "2"}), out);
  EXPECT_EQ(out.str().size(), labelBytes);

  std::ostringstream patched(header(""));
  HxMrdOutputWriter(writer).finalize(data, patched);
  EXPECT_EQ(patched.str(), header("65536\t65536\t65537\t1000"));  // 65536 x 65537 mod 2^32

  HxMrdOutputWriter assigned;
  assigned = writer;
  std::ostringstream again;
  assigned.initialize(data, again);
  EXPECT_EQ(again.str(), header(""));
  EXPECT_EQ(assigned.sampleCount(), 0u);
  EXPECT_EQ(assigned.channelCount(), 65536u);
}

}  // namespace
