#include <gtest/gtest.h>

#include <ostream>
#include <streambuf>

#define HX_ALLOCATION_COUNTER_NO_OPERATORS
#include "bench/HxAllocationCounter.h"
#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace {

using HxXmlTest::Point;

// Accepts and drops everything, so that only the writing path itself can allocate.
class DiscardingBuffer : public std::streambuf {
 protected:
  int overflow(int c) override { return c; }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

// Appending samples to a stream allocates nothing once the writer is warm: the recorder
// streams every sample through this path.
TEST(HxXmlVectorType, AppendElementToStreamDoesNotAllocateOnceWarm) {
  DiscardingBuffer buffer;
  std::ostream stream(&buffer);

  HxXmlWriter* writer = nullptr;
  const HxXmlVectorType<HxXmlBasicType<double>> doubles;
  ASSERT_TRUE(doubles.writeHeaderToStream(stream, writer, "samples", "samples"));
  HxXmlBasicType<double> value;
  for (int i = 0; i < 100; ++i) {
    value = -1.2345678901234567e-300 * i;
    doubles.appendElementToStream(writer, value);
  }
  HxAllocationCounter counter;
  for (int i = 0; i < 1000; ++i) {
    value = 1.2345678901234567e+300 / (i + 1);
    doubles.appendElementToStream(writer, value);
  }
  EXPECT_EQ(counter.allocations(), 0u);
  EXPECT_TRUE(doubles.writeFooterToStream(writer));

  const HxXmlVectorType<Point> points;
  ASSERT_TRUE(points.writeHeaderToStream(stream, writer, "points", "points"));
  Point point(0, 0, "a label longer than the small-string buffer");
  for (unsigned int i = 0; i < 100; ++i) {
    point.x = -1.2345678901234567e-300 * i;
    point.id = i;
    points.appendElementToStream(writer, point);
  }
  counter.restart();
  for (unsigned int i = 0; i < 1000; ++i) {
    point.x = 1.2345678901234567e+300 / (i + 1);
    point.id = 4000000000u - i;
    points.appendElementToStream(writer, point);
  }
  EXPECT_EQ(counter.allocations(), 0u);
  EXPECT_TRUE(points.writeFooterToStream(writer));
}

}  // namespace
