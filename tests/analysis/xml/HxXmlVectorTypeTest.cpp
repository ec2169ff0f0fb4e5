#include "analysis/xml/HxXmlVectorType.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace {

using HxXmlTest::Point;
using HxXmlTest::readFromString;
using HxXmlTest::writeToString;
using Doubles = HxXmlVectorType<HxXmlBasicType<double>>;
using Strings = HxXmlVectorType<HxXmlBasicType<std::string>>;
using Points = HxXmlVectorType<Point>;
using Nested = HxXmlVectorType<Doubles>;

Doubles doubles(const std::vector<double>& values) {
  Doubles vector;
  for (double value : values) vector.pushBack(value);
  return vector;
}

std::vector<double> values(const Doubles& vector) {
  std::vector<double> out;
  for (HxU32 i = 0; i < vector.size(); ++i) out.push_back(vector[i]);
  return out;
}

std::size_t occurrences(const std::string& text, const std::string& what) {
  std::size_t count = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++count;
  return count;
}

// A compound holding a vector followed by a scalar: shows whether a vector's read leaves the
// reader in step for its parent.
class Holder : public HxXmlCompoundType {
 public:
  HxXmlObject* clone() const override { return new Holder(*this); }
  HxXmlObject* newObject() const override { return new Holder(); }
  HxBoolean equality(const HxXmlObject*) const override { return false; }
  const HxToken& token() const override {
    static const HxToken token("holder");
    return token;
  }
  void registerComponents() override {
    registerComponent("values", &values);
    registerComponent("after", &after);
  }
  Doubles values;
  HxXmlBasicType<double> after;
};

// Editing operations, their messages (text, type, reporting function) and the deliberate
// differences from the polymorphic vector: an empty erase range is valid, resize grows.
TEST(HxXmlVectorType, EditingAndIndexMessages) {
  Hx::ScopedPrintCapture capture;
  Doubles vector = doubles({0, 1, 2});

  EXPECT_FALSE(vector.erase(3));
  ASSERT_EQ(capture.records().size(), 1u);
  EXPECT_EQ(capture.records()[0].text, "HxXmlVectorType<ElementType>::erase(): index (3) exceeds vector size (3).\n");
  EXPECT_EQ(capture.records()[0].type, Hx::Print::Error);
  EXPECT_TRUE(HxXmlTest::contextNames(capture.records()[0], "HxXmlVectorType", "erase(HxU32)"));
  EXPECT_TRUE(HxXmlTest::contextHas(capture.records()[0], "ElementType = HxXmlBasicType<double>"));

  capture.clear();
  EXPECT_FALSE(vector.erase(1, 4));
  EXPECT_FALSE(vector.erase(2, 1));
  ASSERT_EQ(capture.records().size(), 2u);
  EXPECT_EQ(capture.records()[0].text, "index (4) exceeds vector size ( 3).\n");
  EXPECT_EQ(capture.records()[1].text, "first (2) is bigger than last (1).\n");
  for (const auto& record : capture.records()) {
    EXPECT_EQ(record.type, Hx::Print::Error);
    EXPECT_TRUE(HxXmlTest::contextNames(record, "HxXmlVectorType", "erase(HxU32, HxU32)"));
  }
  EXPECT_EQ(values(vector), (std::vector<double>{0, 1, 2}));

  capture.clear();
  EXPECT_TRUE(vector.erase(2, 2));  // an empty range is valid here
  EXPECT_EQ(vector.size(), 3u);
  EXPECT_TRUE(vector.erase(1, 3));  // last equal to the size is valid
  EXPECT_EQ(values(vector), (std::vector<double>{0}));
  vector = doubles({0, 1, 2});
  EXPECT_TRUE(vector.erase(0, 3));
  EXPECT_EQ(vector.size(), 0u);
  vector = doubles({0, 1, 2});
  EXPECT_TRUE(vector.erase(1));
  EXPECT_EQ(values(vector), (std::vector<double>{0, 2}));
  EXPECT_TRUE(capture.records().empty());

  vector = doubles({0, 1, 2, 3, 4});
  vector.resizeToAtLeast(2);
  EXPECT_EQ(vector.size(), 5u);
  vector.resizeToAtLeast(7);
  EXPECT_EQ(values(vector), (std::vector<double>{0, 1, 2, 3, 4, 0, 0}));
  vector.resize(5);
  EXPECT_TRUE(vector.leftRotate(0));
  EXPECT_EQ(values(vector), (std::vector<double>{0, 1, 2, 3, 4}));
  EXPECT_FALSE(vector.leftRotate(5));
  EXPECT_TRUE(vector.leftRotate(2));
  EXPECT_EQ(values(vector), (std::vector<double>{2, 3, 4, 0, 1}));

  vector = doubles({1, 2});
  vector.append(vector);
  vector.append(doubles({3}));
  EXPECT_EQ(values(vector), (std::vector<double>{1, 2, 1, 2, 3}));
  vector.assign(2, 7.0);
  EXPECT_EQ(values(vector), (std::vector<double>{7, 7}));
  EXPECT_EQ(values(Doubles(2, 4.0)), (std::vector<double>{4, 4}));
  EXPECT_EQ(Points(3).size(), 3u);
  vector.clear();
  EXPECT_EQ(vector.size(), 0u);
  EXPECT_TRUE(capture.records().empty());
}

// Comparison, the class token and the object-making members.
TEST(HxXmlVectorType, ComparisonAndObjectMembers) {
  const Doubles a = doubles({1, 2});
  EXPECT_TRUE(a == doubles({1, 2}));
  EXPECT_FALSE(a == doubles({1, 3}));
  EXPECT_FALSE(a == doubles({1}));
  EXPECT_TRUE(Doubles() == Doubles::nullObject());
  EXPECT_TRUE(a.equality(&a));
  EXPECT_FALSE(a.equality(nullptr));
  const Points points;
  EXPECT_FALSE(a.equality(&points));

  std::unique_ptr<HxXmlObject> copy(a.clone());
  EXPECT_TRUE(a.equality(copy.get()));
  std::unique_ptr<HxXmlObject> fresh(a.newObject());
  EXPECT_TRUE(Doubles().equality(fresh.get()));
  EXPECT_TRUE(a.token() == HxXml::HxVectorTypeToken);
  EXPECT_TRUE(Points::classToken() == HxXml::HxVectorTypeToken);
}

// Scalars are written as one group element, compounds one wrapper each, nested vectors as
// wrappers holding groups; all read back equal and without a message.
TEST(HxXmlVectorType, RoundTrips) {
  Hx::ScopedPrintCapture capture;

  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Doubles numbers = doubles({0.1, -1e300, 5e-324, std::numeric_limits<double>::infinity(), nan, 3});
  const std::string numbersText = writeToString(numbers, "numbers");
  EXPECT_NE(numbersText.find(" count=\"6\">\n  <group>"), std::string::npos) << numbersText;
  EXPECT_EQ(occurrences(numbersText, "<group>"), 1u) << numbersText;
  EXPECT_EQ(occurrences(numbersText, "<element"), 0u) << numbersText;
  Doubles numbersRead = doubles({9});
  EXPECT_TRUE(readFromString(numbersRead, numbersText));
  EXPECT_TRUE(numbersRead == numbers);

  Strings strings;
  for (const char* text : {"plain", "with blanks", "quo\"te\\", "", "<&>"}) strings.pushBack(std::string(text));
  Strings stringsRead;
  EXPECT_TRUE(readFromString(stringsRead, writeToString(strings, "strings")));
  EXPECT_TRUE(stringsRead == strings);

  Points points;
  points.pushBack(Point(1.5, 1, "one"));
  points.pushBack(Point(-2, 2, "two words"));
  const std::string pointsText = writeToString(points, "points");
  EXPECT_EQ(occurrences(pointsText, "<element>"), 2u) << pointsText;
  EXPECT_EQ(occurrences(pointsText, "<group"), 0u) << pointsText;
  Points pointsRead;
  EXPECT_TRUE(readFromString(pointsRead, pointsText));
  EXPECT_TRUE(pointsRead == points);

  Nested nested;
  nested.pushBack(doubles({1, 2}));
  nested.pushBack(Doubles());
  nested.pushBack(doubles({3}));
  Nested nestedRead;
  EXPECT_TRUE(readFromString(nestedRead, writeToString(nested, "nested")));
  EXPECT_TRUE(nestedRead == nested);

  const std::string emptyText = writeToString(Doubles(), "empty");
  EXPECT_NE(emptyText.find(" count=\"0\"/>"), std::string::npos) << emptyText;
  EXPECT_TRUE(readFromString(numbersRead, emptyText));
  EXPECT_EQ(numbersRead.size(), 0u);

  EXPECT_TRUE(capture.records().empty()) << capture.text();
}

// A count attribute that differs from the children read gives two type-3 lines with file and
// line, and the read still succeeds; an element without a count but with children always
// reports; an empty element returns before the check.
TEST(HxXmlVectorType, SizeMismatchIsReportedNotFailed) {
  Hx::ScopedPrintCapture capture;
  Doubles vector;
  EXPECT_TRUE(readFromString(vector, "<v count=\"3\">\n<element>1</element>\n<element>2</element>\n</v>"));
  EXPECT_EQ(values(vector), (std::vector<double>{1, 2}));
  ASSERT_EQ(capture.records().size(), 2u);
  EXPECT_EQ(capture.records()[0].text, "HxXmlVectorType Error: array size not equal to attribute value -- 3, actual -- 2\n");
  EXPECT_TRUE(std::regex_match(capture.records()[1].text, std::regex("Filename: test\\.xml, Line count: [1-9][0-9]*\n")))
      << capture.records()[1].text;
  for (const auto& record : capture.records()) {
    EXPECT_EQ(record.type, Hx::Print::Warning);
    EXPECT_TRUE(HxXmlTest::contextNames(record, "HxXmlVectorType", "read(HxXmlReader&)"));
  }

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

// A group without character data is a format error (type 4); the reader stays in step.
TEST(HxXmlVectorType, GroupWithoutDataIsReported) {
  for (const char* text : {"<v count=\"1\"><group><x>1</x></group><element>4</element></v>",
                           "<v count=\"1\"><group/><element>4</element></v>",
                           "<v count=\"1\"><group>  </group><element>4</element></v>"}) {
    Hx::ScopedPrintCapture capture;
    Doubles vector;
    EXPECT_TRUE(readFromString(vector, text)) << text;
    EXPECT_EQ(values(vector), (std::vector<double>{4})) << text;
    ASSERT_EQ(capture.records().size(), 1u) << text << capture.text();
    EXPECT_EQ(capture.records()[0].text, "HxXmlVectorType Error: XML parser should be in data mode\n");
    EXPECT_EQ(capture.records()[0].type, Hx::Print::Error);
    EXPECT_TRUE(HxXmlTest::contextNames(capture.records()[0], "HxXmlVectorType", "read(HxXmlReader&)"));
  }
}

// Counts that cannot be reserved are reported and never crash or throw; reading goes on.
TEST(HxXmlVectorType, HostileCountAttributes) {
  for (const std::string count : {"-5", "99999999999", "2000000000", "99999999999999999999999"}) {
    Hx::ScopedPrintCapture capture;
    Doubles vector;
    EXPECT_TRUE(readFromString(vector, "<v count=\"" + count + "\"><group>1 2</group></v>"));
    EXPECT_EQ(vector.size(), 2u);
    ASSERT_EQ(capture.records().size(), 3u) << capture.text();
    EXPECT_EQ(capture.records()[0].text, "HxXmlVectorType Error: count attribute \"" + count + "\" cannot be reserved.\n");
    EXPECT_EQ(capture.records()[0].type, Hx::Print::Error);
    EXPECT_EQ(capture.records()[1].type, Hx::Print::Warning);
  }

  // A large count that can be reserved reserves a bounded amount ahead.
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

// Truncated or mismatched documents fail the read; unknown child names are read as elements;
// stray text ends the list; in every case the parent reads on in step.
TEST(HxXmlVectorType, HostileDocuments) {
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

  Holder holder;
  EXPECT_TRUE(readFromString(holder, "<holder><values count=\"2\"><element>1</element>junk<element>2</element>"
                                     "<group>3</group></values><after>5</after></holder>"));
  EXPECT_EQ(values(holder.values), (std::vector<double>{1}));
  EXPECT_EQ(holder.after.value(), 5.0);
  EXPECT_NE(capture.text().find("-- 2, actual -- 1"), std::string::npos) << capture.text();

  EXPECT_TRUE(readFromString(holder, "<holder><values count=\"2\"><group>1<!-- c -->2</group></values>"
                                     "<after>6</after></holder>"));
  EXPECT_EQ(values(holder.values), (std::vector<double>{1, 2}));
  EXPECT_EQ(holder.after.value(), 6.0);
}

// The streaming interface writes a document that reads back; its count is the size at header
// time, so a reader reports the appended elements as a mismatch and still succeeds.
TEST(HxXmlVectorType, Streaming) {
  Hx::ScopedPrintCapture capture;
  std::ostringstream stream;
  HxXmlWriter* writer = nullptr;
  const Doubles body = doubles({1, 2});
  ASSERT_TRUE(body.writeHeaderToStream(stream, writer, "samples", "samples"));
  ASSERT_NE(writer, nullptr);
  EXPECT_TRUE(body.writeBodyToStream(writer));
  EXPECT_TRUE(body.appendElementToStream(writer, 3.0));
  EXPECT_TRUE(body.writeFooterToStream(writer));
  EXPECT_EQ(writer, nullptr);
  EXPECT_EQ(occurrences(stream.str(), "<group>"), 1u) << stream.str();

  Doubles read;
  EXPECT_TRUE(readFromString(read, stream.str()));
  EXPECT_EQ(values(read), (std::vector<double>{1, 2, 3}));
  ASSERT_EQ(capture.records().size(), 2u);
  EXPECT_EQ(capture.records()[0].text, "HxXmlVectorType Error: array size not equal to attribute value -- 2, actual -- 3\n");

  std::ostringstream pointStream;
  Points points;
  points.pushBack(Point(1, 2, "a"));
  ASSERT_TRUE(points.writeHeaderToStream(pointStream, writer, "points", "points"));
  EXPECT_TRUE(points.writeBodyToStream(writer));
  EXPECT_TRUE(points.appendElementToStream(writer, Point(3, 4, "b")));
  EXPECT_TRUE(points.writeFooterToStream(writer));
  Points pointsRead;
  EXPECT_TRUE(readFromString(pointsRead, pointStream.str()));
  ASSERT_EQ(pointsRead.size(), 2u);
  EXPECT_TRUE(pointsRead[1] == Point(3, 4, "b"));

  // A failed stream creates no writer; a null writer is refused.
  std::ostringstream failed;
  failed.setstate(std::ios::failbit);
  EXPECT_FALSE(body.writeHeaderToStream(failed, writer, "x", "x"));
  EXPECT_EQ(writer, nullptr);
  EXPECT_FALSE(body.writeBodyToStream(nullptr));
  EXPECT_FALSE(body.appendElementToStream(nullptr, 1.0));
  EXPECT_FALSE(body.writeFooterToStream(writer));
}

}  // namespace
