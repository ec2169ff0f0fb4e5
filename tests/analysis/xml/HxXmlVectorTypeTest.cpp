#include "analysis/xml/HxXmlVectorType.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <ostream>
#include <regex>
#include <streambuf>
#include <string>
#include <vector>

#define HX_ALLOCATION_COUNTER_NO_OPERATORS
#include "bench/HxAllocationCounter.h"
#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace {

using namespace HxXmlTest;
using Doubles = HxXmlVectorType<HxXmlBasicType<double>>;
using Points = HxXmlVectorType<Point>;

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

// Bad indices are refused with their exact messages (note the blank in "( 3)"); unlike the
// polymorphic vector, an empty erase range is valid and resizeToAtLeast never shrinks.
TEST(HxXmlVectorType, EditingMessagesAndAsymmetries) {
  Hx::ScopedPrintCapture capture;
  Doubles vector = doubles({0, 1, 2});
  EXPECT_FALSE(vector.erase(3));
  EXPECT_FALSE(vector.erase(1, 4));
  EXPECT_FALSE(vector.erase(2, 1));
  const std::vector<std::string> range = {"HxXmlVectorType<", ">::erase(HxU32, HxU32)"};
  expectMessages(capture, {{"HxXmlVectorType<ElementType>::erase(): index (3) exceeds vector size (3).\n",
                            Hx::Print::Error,
                            {"HxXmlVectorType<", ">::erase(HxU32)", "ElementType = HxXmlBasicType<double>"}},
                           {"index (4) exceeds vector size ( 3).\n", Hx::Print::Error, range},
                           {"first (2) is bigger than last (1).\n", Hx::Print::Error, range}});
  EXPECT_EQ(values(vector), (std::vector<double>{0, 1, 2}));

  capture.clear();
  EXPECT_TRUE(vector.erase(2, 2));
  EXPECT_TRUE(vector.erase(0));
  EXPECT_TRUE(vector.erase(1, 2));  // last equal to the size
  EXPECT_EQ(values(vector), (std::vector<double>{1}));
  EXPECT_TRUE(capture.records().empty()) << capture.text();

  vector = doubles({0, 1, 2, 3, 4});
  vector.resizeToAtLeast(2);
  vector.resizeToAtLeast(6);
  EXPECT_TRUE(vector.leftRotate(0));
  EXPECT_FALSE(vector.leftRotate(6));
  EXPECT_TRUE(vector.leftRotate(2));
  EXPECT_EQ(values(vector), (std::vector<double>{2, 3, 4, 0, 0, 1}));
  vector = doubles({1, 2});
  vector.append(vector);  // appending to itself
  EXPECT_EQ(values(vector), (std::vector<double>{1, 2, 1, 2}));
}

// Scalars are written as one group element, compounds one wrapper each, nested vectors as
// wrappers holding groups, an empty vector as count 0; all read back equal without a message.
TEST(HxXmlVectorType, RoundTrips) {
  const Doubles numbers = doubles({0.1, -1e300, 5e-324, std::numeric_limits<double>::infinity(),
                                   std::numeric_limits<double>::quiet_NaN(), 3});
  const std::string numbersText = writeToString(numbers, "numbers");
  EXPECT_NE(numbersText.find(" count=\"6\">\n  <group>"), std::string::npos) << numbersText;
  EXPECT_EQ(occurrences(numbersText, "<group>"), 1u) << numbersText;
  EXPECT_EQ(occurrences(numbersText, "<element"), 0u) << numbersText;
  expectReadsBack(numbers, numbersText);

  HxXmlVectorType<HxXmlBasicType<std::string>> strings;
  for (const char* text : {"plain", "with blanks", "quo\"te\\", "", "<&>"}) strings.pushBack(std::string(text));
  expectReadsBack(strings, writeToString(strings, "strings"));

  Points points;
  points.pushBack(Point(1.5, 1, "one"));
  points.pushBack(Point(-2, 2, "two words"));
  const std::string pointsText = writeToString(points, "points");
  EXPECT_EQ(occurrences(pointsText, "<element>"), 2u) << pointsText;
  EXPECT_EQ(occurrences(pointsText, "<group"), 0u) << pointsText;
  expectReadsBack(points, pointsText);

  HxXmlVectorType<Doubles> nested;
  nested.pushBack(doubles({1, 2}));
  nested.pushBack(Doubles());
  nested.pushBack(doubles({3}));
  expectReadsBack(nested, writeToString(nested, "nested"));

  // Reading replaces what was there.
  const std::string emptyText = writeToString(Doubles(), "empty");
  EXPECT_NE(emptyText.find(" count=\"0\"/>"), std::string::npos) << emptyText;
  Doubles read = numbers;
  EXPECT_TRUE(readFromString(read, emptyText));
  EXPECT_EQ(read.size(), 0u);

  // The comparison the round trips rely on tells sizes and elements apart.
  EXPECT_FALSE(doubles({1, 2}) == doubles({1}));
  EXPECT_FALSE(doubles({1, 2}) == doubles({1, 3}));
  EXPECT_FALSE(numbers.equality(&points));
  const std::unique_ptr<HxXmlObject> copy(numbers.clone());
  EXPECT_TRUE(numbers.equality(copy.get()));
  EXPECT_TRUE(Points::classToken() == HxXml::HxVectorTypeToken);
}

// A count attribute that differs from the children read gives two type-3 lines with file and
// line and the read still succeeds; children without a count always report (expected 0); an
// empty element returns before the check.
TEST(HxXmlVectorType, SizeMismatchIsReportedNotFailed) {
  Hx::ScopedPrintCapture capture;
  Doubles vector;
  EXPECT_TRUE(readFromString(vector, "<v count=\"3\">\n<element>1</element>\n<element>2</element>\n</v>"));
  EXPECT_EQ(values(vector), (std::vector<double>{1, 2}));
  ASSERT_EQ(capture.records().size(), 2u);
  EXPECT_TRUE(std::regex_match(capture.records()[1].text, std::regex("Filename: test\\.xml, Line count: [1-9][0-9]*\n")))
      << capture.records()[1].text;
  const std::vector<std::string> context = {"HxXmlVectorType<", ">::read(HxXmlReader&)"};
  expectMessages(capture, {{"HxXmlVectorType Error: array size not equal to attribute value -- 3, actual -- 2\n",
                            Hx::Print::Warning, context},
                           {capture.records()[1].text, Hx::Print::Warning, context}});

  capture.clear();
  EXPECT_TRUE(readFromString(vector, "<v><group>1 2 3</group></v>"));
  EXPECT_EQ(vector.size(), 3u);
  ASSERT_EQ(capture.records().size(), 2u);
  EXPECT_EQ(capture.records()[0].text, "HxXmlVectorType Error: array size not equal to attribute value -- 0, actual -- 3\n");

  capture.clear();
  EXPECT_TRUE(readFromString(vector, "<v count=\"3\"/>"));
  EXPECT_EQ(vector.size(), 0u);
  EXPECT_TRUE(capture.records().empty()) << capture.text();
}

// Counts that cannot be reserved are reported and never crash or throw; reading goes on; a
// large count that can be reserved reserves only a bounded amount ahead.
TEST(HxXmlVectorType, HostileCountAttributes) {
  for (const std::string count : {"-5", "99999999999", "2000000000", "99999999999999999999999"}) {
    SCOPED_TRACE(count);
    Hx::ScopedPrintCapture capture;
    Doubles vector;
    EXPECT_TRUE(readFromString(vector, "<v count=\"" + count + "\"><group>1 2</group></v>"));
    EXPECT_EQ(vector.size(), 2u);
    ASSERT_EQ(capture.records().size(), 3u) << capture.text();
    EXPECT_EQ(capture.records()[0].text, "HxXmlVectorType Error: count attribute \"" + count + "\" cannot be reserved.\n");
    EXPECT_EQ(capture.records()[0].type, Hx::Print::Error);
    EXPECT_EQ(capture.records()[1].type, Hx::Print::Warning);
  }

  Hx::ScopedPrintCapture capture;
  Points points;
  EXPECT_TRUE(readFromString(points, "<v count=\"1000000000\"><element/></v>"));
  EXPECT_EQ(points.size(), 1u);
  EXPECT_LE(points.vectorContainer().capacity() * sizeof(Point), HxXmlCountAttribute::maxReservedBytes);
  EXPECT_NE(capture.text().find("-- 1000000000, actual -- 1"), std::string::npos) << capture.text();
  capture.clear();
  EXPECT_TRUE(readFromString(points, "<v count=\"many\"/>"));
  EXPECT_TRUE(capture.records().empty());
}

// Truncated or mismatched documents fail the read; a group without character data is a format
// error (type 4); unknown child names are read as elements; stray text ends the list; in every
// case the parent reads on in step.
TEST(HxXmlVectorType, HostileDocuments) {
  for (const char* text : {"<v count=\"1\"><group><x>1</x></group><element>4</element></v>",
                           "<v count=\"1\"><group/><element>4</element></v>",
                           "<v count=\"1\"><group>  </group><element>4</element></v>"}) {
    SCOPED_TRACE(text);
    Hx::ScopedPrintCapture capture;
    Doubles vector;
    EXPECT_TRUE(readFromString(vector, text));
    EXPECT_EQ(values(vector), (std::vector<double>{4}));
    expectMessages(capture, {{"HxXmlVectorType Error: XML parser should be in data mode\n", Hx::Print::Error,
                              {"HxXmlVectorType<", ">::read(HxXmlReader&)"}}});
  }
  Hx::ScopedPrintCapture capture;
  Doubles vector;
  EXPECT_FALSE(readFromString(vector, "<v count=\"3\"><group>1 2"));
  EXPECT_FALSE(readFromString(vector, "<v count=\"2\"><group>1 2</grp></v>"));
  Points points;
  EXPECT_FALSE(readFromString(points, "<v count=\"1\"><element><x>1</x>"));

  capture.clear();
  EXPECT_TRUE(readFromString(vector, "<v count=\"2\"><bogus>1.5</bogus><element>2</element></v>"));
  EXPECT_EQ(values(vector), (std::vector<double>{1.5, 2}));
  EXPECT_TRUE(capture.records().empty()) << capture.text();

  HxXmlPairType<Doubles, HxXmlBasicType<double>> parent;
  EXPECT_TRUE(readFromString(parent, "<p><first count=\"2\"><element>1</element>junk<element>2</element>"
                                     "<group>3</group></first><second>5</second></p>"));
  EXPECT_EQ(values(parent.first()), (std::vector<double>{1}));
  EXPECT_EQ(parent.second().value(), 5.0);
  EXPECT_NE(capture.text().find("-- 2, actual -- 1"), std::string::npos) << capture.text();
  EXPECT_TRUE(readFromString(parent, "<p><first count=\"2\"><group>1<!-- c -->2</group></first><second>6</second></p>"));
  EXPECT_EQ(values(parent.first()), (std::vector<double>{1, 2}));
  EXPECT_EQ(parent.second().value(), 6.0);
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
  ASSERT_EQ(capture.records().size(), 2u);
  EXPECT_EQ(capture.records()[0].text, "HxXmlVectorType Error: array size not equal to attribute value -- 2, actual -- 3\n");

  Points points;
  points.pushBack(Point(1, 2, "a"));
  const std::string pointsText = streamed(points, Point(3, 4, "b"));
  points.pushBack(Point(3, 4, "b"));
  Points pointsRead;
  EXPECT_TRUE(readFromString(pointsRead, pointsText));
  EXPECT_TRUE(pointsRead == points) << pointsText;
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
  ASSERT_TRUE(numbers.writeHeaderToStream(stream, numbersWriter, "samples", "samples"));
  ASSERT_TRUE(points.writeHeaderToStream(stream, pointsWriter, "points", "points"));
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
  EXPECT_TRUE(numbers.writeFooterToStream(numbersWriter));
  EXPECT_TRUE(points.writeFooterToStream(pointsWriter));
}

}  // namespace
