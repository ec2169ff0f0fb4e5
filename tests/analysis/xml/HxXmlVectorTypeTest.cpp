#include "analysis/xml/HxXmlVectorType.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

#include "tests/support/HxAllocationCounter.h"
#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace {

using namespace HxXmlTest;
using Doubles = HxXmlVectorType<HxXmlBasicType<double>>;
using Points = HxXmlVectorType<Point>;

const std::string kRead = " HxXmlVectorType<T>::read(HxXmlReader&): ";
const std::string kMismatch = "HxXmlVectorType Error: array size not equal to attribute value -- ";
const std::string kWhere = "Filename: test.xml, Line count: N\n|";

Doubles doubles(const std::vector<double>& values) {
  Doubles vector;
  for (double value : values) vector.pushBack(value);
  return vector;
}

std::vector<double> values(const Doubles& vector) {
  std::vector<double> out;
  for (const auto& value : vector.vectorContainer()) out.push_back(value.value());
  return out;
}

// The two type-3 lines of a count attribute that differs from the elements read.
std::string mismatch(const std::string& expected, int actual) {
  return "3" + kRead + kMismatch + expected + ", actual -- " + std::to_string(actual) + "\n|3" + kRead + kWhere;
}

// Bad indices are refused with their exact messages (note the blank in "( 3)"), the context
// naming the element type; unlike the polymorphic vector, an empty erase range is valid and
// resizeToAtLeast never shrinks.
TEST(HxXmlVectorType, EditingMessagesAndAsymmetries) {
  Hx::ScopedPrintCapture capture;
  Doubles vector = doubles({0, 1, 2});
  EXPECT_FALSE(vector.erase(3) || vector.erase(1, 4) || vector.erase(2, 1));
  const std::string range = "4 HxXmlVectorType<T>::erase(HxU32, HxU32): ";
  EXPECT_EQ(messages(capture),
            "4 HxXmlVectorType<T>::erase(HxU32): HxXmlVectorType<ElementType>::erase(): index (3) exceeds "
            "vector size (3).\n|" +
                range + "index (4) exceeds vector size ( 3).\n|" + range + "first (2) is bigger than last (1).\n|");
  EXPECT_NE(capture.records()[0].context.find("ElementType = HxXmlBasicType<double>"), std::string::npos);
  EXPECT_EQ(values(vector), (std::vector<double>{0, 1, 2}));

  capture.clear();
  EXPECT_TRUE(vector.erase(2, 2) && vector.erase(0) && vector.erase(1, 2));  // the last: last equal to the size
  EXPECT_EQ(values(vector), (std::vector<double>{1}));
  EXPECT_EQ(messages(capture), "");

  vector = doubles({0, 1, 2, 3, 4});
  vector.resizeToAtLeast(2);
  vector.resizeToAtLeast(6);
  EXPECT_TRUE(vector.leftRotate(0) && !vector.leftRotate(6) && vector.leftRotate(2));
  EXPECT_EQ(values(vector), (std::vector<double>{2, 3, 4, 0, 0, 1}));
  vector = doubles({1, 2});
  vector.append(vector);  // appending to itself
  EXPECT_EQ(values(vector), (std::vector<double>{1, 2, 1, 2}));
}

// Scalars are written as one group element, compounds one wrapper each, nested vectors as
// wrappers holding groups, an empty vector as count 0; all read back equal without a message,
// and reading replaces what was there.
TEST(HxXmlVectorType, RoundTrips) {
  const Doubles numbers = doubles({0.1, -1e300, 5e-324, std::numeric_limits<double>::infinity(),
                                   std::numeric_limits<double>::quiet_NaN(), 3});
  const std::string numbersText = writeToString(numbers, "numbers");
  EXPECT_NE(numbersText.find(" count=\"6\">\n  <group>"), std::string::npos) << numbersText;
  EXPECT_TRUE(occurrences(numbersText, "<group>") == 1u && occurrences(numbersText, "<element") == 0u);
  expectReadsBack(numbers, numbersText);

  HxXmlVectorType<HxXmlBasicType<std::string>> strings;
  for (const char* text : {"plain", "with blanks", "quo\"te\\", "", "<&>"}) strings.pushBack(std::string(text));
  expectReadsBack(strings, writeToString(strings, "strings"));

  Points points;
  points.pushBack(Point(1.5, 1, "one"));
  points.pushBack(Point(-2, 2, "two words"));
  const std::string pointsText = writeToString(points, "points");
  EXPECT_TRUE(occurrences(pointsText, "<element>") == 2u && occurrences(pointsText, "<group") == 0u) << pointsText;
  expectReadsBack(points, pointsText);

  HxXmlVectorType<Doubles> nested;
  nested.pushBack(doubles({1, 2}));
  nested.pushBack(Doubles());
  nested.pushBack(doubles({3}));
  expectReadsBack(nested, writeToString(nested, "nested"));

  const std::string emptyText = writeToString(Doubles(), "empty");
  EXPECT_NE(emptyText.find(" count=\"0\"/>"), std::string::npos) << emptyText;
  Doubles read = numbers;
  EXPECT_TRUE(readFromString(read, emptyText) && read.size() == 0u);

  // The comparison the round trips rely on tells sizes and elements apart.
  EXPECT_FALSE(doubles({1, 2}) == doubles({1}) || doubles({1, 2}) == doubles({1, 3}) || numbers.equality(&points));
  const std::unique_ptr<HxXmlObject> copy(numbers.clone());
  EXPECT_TRUE(numbers.equality(copy.get()) && Points::classToken() == HxXml::HxVectorTypeToken);
}

// A count attribute that differs from the children read gives two type-3 lines with file and
// line and the read still succeeds; children without a count always report (expected 0); an
// empty element returns before the check; counts that cannot be reserved are reported (type 4)
// and reading goes on; a large count that can be reserved reserves only a bounded amount ahead.
TEST(HxXmlVectorType, CountAttributes) {
  Hx::ScopedPrintCapture capture;
  Doubles vector;
  EXPECT_TRUE(readFromString(vector, "<v count=\"3\">\n<element>1</element>\n<element>2</element>\n</v>"));
  EXPECT_EQ(values(vector), (std::vector<double>{1, 2}));
  EXPECT_TRUE(readFromString(vector, "<v><group>1 2 3</group></v>") && vector.size() == 3u);
  EXPECT_TRUE(readFromString(vector, "<v count=\"3\"/>") && vector.size() == 0u);
  EXPECT_EQ(messages(capture), mismatch("3", 2) + mismatch("0", 3));

  const std::pair<const char*, const char*> counts[] = {
      {"-5", "-5"}, {"99999999999", "99999999999"}, {"2000000000", "2000000000"},
      {"99999999999999999999999", "9223372036854775807"}};
  for (const auto& [count, parsed] : counts) {
    capture.clear();
    EXPECT_TRUE(readFromString(vector, "<v count=\"" + std::string(count) + "\"><group>1 2</group></v>"));
    EXPECT_EQ(vector.size(), 2u);
    EXPECT_EQ(messages(capture), "4" + kRead + "HxXmlVectorType Error: count attribute \"" + count +
                                     "\" cannot be reserved.\n|" + mismatch(parsed, 2));
  }
  capture.clear();
  Points points;
  EXPECT_TRUE(readFromString(points, "<v count=\"1000000000\"><element/></v>") && points.size() == 1u);
  EXPECT_LE(points.vectorContainer().capacity() * sizeof(Point), HxXmlCountAttribute::maxReservedBytes);
  EXPECT_TRUE(readFromString(points, "<v count=\"many\"/>"));
  EXPECT_EQ(messages(capture), mismatch("1000000000", 1));
}

// Truncated or mismatched documents fail the read; a group without character data is a format
// error (type 4); unknown child names are read as elements; stray text ends the list; in every
// case the parent reads on in step.
TEST(HxXmlVectorType, HostileDocuments) {
  for (const char* text : {"<v count=\"1\"><group><x>1</x></group><element>4</element></v>",
                           "<v count=\"1\"><group/><element>4</element></v>",
                           "<v count=\"1\"><group>  </group><element>4</element></v>"}) {
    Hx::ScopedPrintCapture capture;
    Doubles vector;
    EXPECT_TRUE(readFromString(vector, text));
    EXPECT_EQ(values(vector), (std::vector<double>{4})) << text;
    EXPECT_EQ(messages(capture), "4" + kRead + "HxXmlVectorType Error: XML parser should be in data mode\n|") << text;
  }
  Hx::ScopedPrintCapture capture;
  Doubles vector;
  Points points;
  EXPECT_FALSE(readFromString(vector, "<v count=\"3\"><group>1 2") ||
               readFromString(vector, "<v count=\"2\"><group>1 2</grp></v>") ||
               readFromString(points, "<v count=\"1\"><element><x>1</x>"));

  capture.clear();
  EXPECT_TRUE(readFromString(vector, "<v count=\"2\"><bogus>1.5</bogus><element>2</element></v>"));
  EXPECT_EQ(values(vector), (std::vector<double>{1.5, 2}));
  HxXmlPairType<Doubles, HxXmlBasicType<double>> parent;
  EXPECT_TRUE(readFromString(parent, "<p><first count=\"2\"><element>1</element>junk<element>2</element>"
                                     "<group>3</group></first><second>5</second></p>"));
  EXPECT_TRUE(values(parent.first()) == std::vector<double>{1} && parent.second().value() == 5.0);
  EXPECT_TRUE(
      readFromString(parent, "<p><first count=\"2\"><group>1<!-- c -->2</group></first><second>6</second></p>"));
  EXPECT_TRUE(values(parent.first()) == (std::vector<double>{1, 2}) && parent.second().value() == 6.0);
  EXPECT_EQ(messages(capture), mismatch("2", 1));
}

// The streaming interface writes a document that reads back; its count is the size at header
// time, so a reader reports the appended elements as a mismatch and still succeeds. A failed
// stream creates no writer; a null writer is refused.
TEST(HxXmlVectorType, Streaming) {
  Hx::ScopedPrintCapture capture;
  const std::string text = streamed(doubles({1, 2}), HxXmlBasicType<double>(3.0));
  EXPECT_EQ(occurrences(text, "<group>"), 1u) << text;
  Doubles read;
  EXPECT_TRUE(readFromString(read, text));
  EXPECT_EQ(values(read), (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(messages(capture), mismatch("2", 3));

  Points points;
  points.pushBack(Point(1, 2, "a"));
  const std::string pointsText = streamed(points, Point(3, 4, "b"));
  points.pushBack(Point(3, 4, "b"));
  Points pointsRead;
  EXPECT_TRUE(readFromString(pointsRead, pointsText) && pointsRead == points) << pointsText;
  expectStreamingRefusals(points, Point(), std::ios::failbit);
}

// Accepts and drops everything, so that only the writing path itself can allocate.
class DiscardingBuffer : public std::streambuf {
 protected:
  int overflow(int c) override { return c; }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

// Appending samples to a stream allocates nothing once the writers are warm (100 samples), for
// scalars and for compounds: the recorder streams every sample through this path.
TEST(HxXmlVectorType, AppendElementToStreamDoesNotAllocateOnceWarm) {
  DiscardingBuffer buffer;
  std::ostream stream(&buffer);
  const Doubles numbers;
  const Points points;
  HxXmlWriter* numbersWriter = nullptr;
  HxXmlWriter* pointsWriter = nullptr;
  ASSERT_TRUE(numbers.writeHeaderToStream(stream, numbersWriter, "samples", "samples") &&
              points.writeHeaderToStream(stream, pointsWriter, "points", "points"));
  HxXmlBasicType<double> value;
  Point point(0, 0, "a label longer than the small-string buffer");
  HxAllocationCounter counter;
  for (unsigned int i = 0; i < 1100; ++i) {
    if (i == 100) counter.restart();
    value = (i % 2 == 0 ? -1.2345678901234567e-300 : 1.2345678901234567e+300) / (i + 1);
    point.x = value;
    point.id = 4000000000u - i;
    numbers.appendElementToStream(numbersWriter, value);
    points.appendElementToStream(pointsWriter, point);
  }
  EXPECT_EQ(counter.allocations(), 0u);
  EXPECT_TRUE(numbers.writeFooterToStream(numbersWriter) && points.writeFooterToStream(pointsWriter));
}

}  // namespace
