#include "analysis/xml/HxXmlVectorType.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "framework/HxXmlWriter.h"
#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace {

using namespace HxXmlTest;
using Doubles = HxXmlVectorType<HxXmlBasicType<double>>;
using Points = HxXmlVectorType<Point>;

const std::string kRead = " HxXmlVectorType<T>::read(HxXmlReader&): ";
const std::string kMismatch = "HxXmlVectorType Error: array size not equal to attribute value -- ";
const std::string kWhere = "Filename: test.xml, Line count: N\n|";

const auto doubles = &xmlVector<double>;
const auto values = &plain<double>;

// The two type-3 lines of a count attribute that differs from the elements read.
std::string mismatch(const std::string& expected, int actual) {
  return "3" + kRead + kMismatch + expected + ", actual -- " + std::to_string(actual) + "\n|3" + kRead + kWhere;
}

// Bad indices are refused with their exact messages (note the blank in "( 3)"), the context naming
// the element type; unlike the polymorphic vector, an empty erase range is valid and
// resizeToAtLeast never shrinks. Special doubles and awkward strings read back equal without a
// message; reading replaces what was there. (Vectors of compounds and nested vectors: the round
// trip of examples/config and the recorder's golden XML, which the framework reads back.)
TEST(HxXmlVectorType, EditingMessagesAsymmetriesAndRoundTrips) {
  Hx::ScopedPrintCapture capture;
  Doubles vector = doubles({0, 1, 2});
  EXPECT_FALSE(vector.erase(3) || vector.erase(1, 4) || vector.erase(2, 1));
  const std::string range = "4 HxXmlVectorType<T>::erase(HxU32, HxU32): ";
  EXPECT_EQ(messages(capture),
            "4 HxXmlVectorType<T>::erase(HxU32): HxXmlVectorType<ElementType>::erase(): index (3) exceeds "
            "vector size (3).\n|" +
                range + "index (4) exceeds vector size ( 3).\n|" + range + "first (2) is bigger than last (1).\n|");
  EXPECT_EQ(values(vector), (std::vector<double>{0, 1, 2}));

  capture.clear();
  EXPECT_TRUE(vector.erase(2, 2) && vector.erase(0) && vector.erase(1, 2));  // the last: last equal to the size
  EXPECT_TRUE(values(vector) == std::vector<double>{1} && messages(capture).empty());

  vector = doubles({0, 1, 2, 3, 4});
  vector.resizeToAtLeast(2);
  vector.resizeToAtLeast(6);
  EXPECT_TRUE(vector.leftRotate(0) && !vector.leftRotate(6) && vector.leftRotate(2));
  EXPECT_EQ(values(vector), (std::vector<double>{2, 3, 4, 0, 0, 1}));
  vector = doubles({1, 2});
  vector.append(vector);  // appending to itself
  EXPECT_EQ(values(vector), (std::vector<double>{1, 2, 1, 2}));

  const Doubles numbers = doubles(
      {0.1, -1e300, 5e-324, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN(), -0.0});
  expectReadsBack(numbers, writeToString(numbers, "numbers"));
  const auto strings = xmlVector<std::string>({"plain", "with blanks", "quo\"te\\", "", "<&>"});
  expectReadsBack(strings, writeToString(strings, "strings"));
  Doubles read = numbers;
  EXPECT_TRUE(readFromString(read, writeToString(Doubles(), "empty")) && read.size() == 0u);
  // The comparison the round trips rely on tells sizes and elements apart.
  EXPECT_FALSE(doubles({1, 2}) == doubles({1}) || doubles({1, 2}) == doubles({1, 3}) || numbers.equality(&strings));
}

// Reading Doubles, row by row: a count attribute that differs from the children read gives two
// type-3 lines with file and line and the read still succeeds; children without a count always
// report (expected 0); an empty element returns before the check; a count that cannot be reserved
// (its bounds are checked with the polymorphic vector) is reported (type 4) and reading goes on,
// a count past the range of long saturates; a group without character data is a format error
// (type 4); unknown child names are read as elements; a truncated document fails.
TEST(HxXmlVectorType, ReadingRows) {
  const std::string reserve = "4" + kRead + "HxXmlVectorType Error: count attribute \"99999999999999999999999\" ";
  const std::string dataMode = "4" + kRead + "HxXmlVectorType Error: XML parser should be in data mode\n|";
  const struct {
    std::string document;
    bool result;
    std::vector<double> values;
    std::string messages;  // "*": not checked
  } rows[] = {
      {"<v count=\"3\">\n<element>1</element>\n<element>2</element>\n</v>", true, {1, 2}, mismatch("3", 2)},
      {"<v><group>1 2 3</group></v>", true, {1, 2, 3}, mismatch("0", 3)},
      {"<v count=\"3\"/>", true, {}, ""},
      {"<v count=\"99999999999999999999999\"><group>1 2</group></v>",
       true,
       {1, 2},
       reserve + "cannot be reserved.\n|" + mismatch("9223372036854775807", 2)},
      {"<v count=\"1\"><group/><element>4</element></v>", true, {4}, dataMode},
      {"<v count=\"1\"><group>  </group><element>4</element></v>", true, {4}, dataMode},
      {"<v count=\"2\"><bogus>1.5</bogus><element>2</element></v>", true, {1.5, 2}, ""},
      {"<v count=\"3\"><group>1 2", false, {}, "*"},
  };
  Doubles vector;  // each read replaces what the one before left
  for (const auto& row : rows) {
    SCOPED_TRACE(row.document);
    Hx::ScopedPrintCapture capture;
    EXPECT_EQ(readFromString(vector, row.document), row.result);
    EXPECT_TRUE(!row.result || values(vector) == row.values);
    EXPECT_TRUE(row.messages == "*" || messages(capture) == row.messages) << messages(capture);
  }
}

// A large count that can be reserved reserves only a bounded amount ahead; a count that is no
// number is ignored; a truncated compound fails. Stray text ends the list, and the parent reads on
// in step. The streaming interface writes a document that reads back; its count is the size at
// header time, so a reader reports the appended element as a mismatch and still succeeds. A failed
// stream creates no writer; a null writer is refused.
TEST(HxXmlVectorType, ReservationParentsAndStreaming) {
  Hx::ScopedPrintCapture capture;
  Points points;
  EXPECT_TRUE(readFromString(points, "<v count=\"1000000000\"><element/></v>") && points.size() == 1u);
  EXPECT_LE(points.vectorContainer().capacity() * sizeof(Point), HxXmlCountAttribute::maxReservedBytes);
  EXPECT_TRUE(readFromString(points, "<v count=\"many\"/>"));
  EXPECT_EQ(messages(capture), mismatch("1000000000", 1));
  EXPECT_FALSE(readFromString(points, "<v count=\"1\"><element><x>1</x>"));

  capture.clear();
  HxXmlPairType<Doubles, HxXmlBasicType<double>> parent;
  EXPECT_TRUE(readFromString(parent,
                             "<p><first count=\"2\"><element>1</element>junk<element>2</element>"
                             "<group>3</group></first><second>5</second></p>"));
  EXPECT_TRUE(values(parent.first()) == std::vector<double>{1} && parent.second().value() == 5.0);
  EXPECT_TRUE(
      readFromString(parent, "<p><first count=\"2\"><group>1<!-- c -->2</group></first><second>6</second></p>"));
  EXPECT_TRUE(values(parent.first()) == (std::vector<double>{1, 2}) && parent.second().value() == 6.0);
  EXPECT_EQ(messages(capture), mismatch("2", 1));

  const Doubles vector = doubles({1, 2});
  std::ostringstream stream, failed;
  HxXmlWriter* writer = nullptr;
  ASSERT_TRUE(vector.writeHeaderToStream(stream, writer, "recording", "samples") && vector.writeBodyToStream(writer) &&
              vector.appendElementToStream(writer, 3.0) && vector.writeFooterToStream(writer) && writer == nullptr);
  capture.clear();
  Doubles read;
  EXPECT_TRUE(readFromString(read, stream.str()) && values(read) == (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(messages(capture), mismatch("2", 3));
  failed.setstate(std::ios::failbit);
  EXPECT_FALSE(vector.writeHeaderToStream(failed, writer, "x", "x") || writer != nullptr ||
               vector.writeBodyToStream(nullptr) || vector.appendElementToStream(nullptr, 1.0) ||
               vector.writeFooterToStream(writer));
}

}  // namespace
