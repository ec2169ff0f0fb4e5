#include "analysis/xml/HxXmlPairType.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

#include "framework/HxXmlObjectVisitor.h"
#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace {

using namespace HxXmlTest;
using Doubles = HxXmlVectorType<HxXmlBasicType<double>>;
using Points = HxXmlVectorType<Point>;
using PointPair = HxXmlPairType<Point, Point>;

// Pairs (nested, and holding a vector) are written as first/second and read back equal without
// a message, each member xmlInit-ed before it reads; members may come in any order, and an
// empty element leaves the pair as it is.
TEST(HxXmlPairType, RoundTrips) {
  const HxXmlPairType<HxXmlBasicType<std::string>, PointPair> named(std::string("left and right"),
                                                                    PointPair(Point(1, 2, "a"), Point(3, 4, "b")));
  const std::string text = writeToString(named, "named");
  EXPECT_EQ(occurrences(text, "<first>"), 2u) << text;
  EXPECT_EQ(occurrences(text, "<second>"), 2u) << text;
  expectReadsBack(named, text);
  EXPECT_FALSE(named.second() == PointPair(Point(1, 2, "a"), Point(3, 4, "c")));
  EXPECT_TRUE(named.token() == HxXml::HxPairTypeToken);

  const HxXmlPairType<HxXmlBasicType<double>, Doubles> withVector(2.5, Doubles(3, 1.0));
  expectReadsBack(withVector, writeToString(withVector, "p"));

  Hx::ScopedPrintCapture capture;
  PointPair read;
  EXPECT_TRUE(readFromString(read, "<p><second><x>2</x></second><first><x>1</x></first></p>"));
  EXPECT_TRUE(read.first().xmlInitialized() && read.second().xmlInitialized());
  EXPECT_EQ(read.first().x.value(), 1.0);
  EXPECT_EQ(read.second().x.value(), 2.0);
  EXPECT_TRUE(readFromString(read, "<p/>"));
  EXPECT_EQ(read.first().x.value(), 1.0);
  EXPECT_TRUE(capture.records().empty()) << capture.text();
}

// A child other than first or second is reported with two type-4 messages naming file, line
// and the element met; the rest is read and the result is false. Truncated or mismatched
// documents fail; stray text ends the pair without a message.
TEST(HxXmlPairType, UnexpectedChildIsReported) {
  Hx::ScopedPrintCapture capture;
  PointPair read;
  EXPECT_FALSE(readFromString(read, "<p>\n<first><x>1</x></first>\n<third><x>9</x></third>\n<second><x>2</x></second>\n</p>"));
  EXPECT_EQ(read.first().x.value(), 1.0);
  EXPECT_EQ(read.second().x.value(), 2.0);
  const std::vector<std::string> context = {"HxXmlPairType<", ">::read(HxXmlReader&)"};
  expectMessages(capture, {{"HxXmlPairType Error: file not valid.\n\tFormat not correct.\n\tFile: test.xml\n\tLine: 3",
                            Hx::Print::Error, context},
                           {"\tExpected first or second but received third.", Hx::Print::Error, context}});

  EXPECT_FALSE(readFromString(read, "<p><first><x>1</x></first><second>"));
  EXPECT_FALSE(readFromString(read, "<p><first></second></p>"));
  capture.clear();
  EXPECT_TRUE(readFromString(read, "<p>text<first><x>5</x></first></p>"));
  EXPECT_EQ(read.first().x.value(), 1.0);  // the text ends the pair before its first member
  EXPECT_TRUE(capture.records().empty()) << capture.text();
}

// Records, at each entry, the current token and the description list.
class RecordingVisitor : public HxXmlObjectVisitor {
 public:
  explicit RecordingVisitor(const HxToken& token, bool descendValue = true) : descend(descendValue) {
    setCurrentToken(token);
  }
  HxBoolean enter(const HxXmlObject* object) override {
    tokens.push_back(currentToken().token());
    if (descriptions.empty()) descriptions = HxXmlObjectVisitor::descriptions();
    HxXmlObjectVisitor::enter(object);
    return descend;
  }
  void exit(const HxXmlObject*) override { ++exits; }

  std::vector<std::string> tokens;
  std::vector<std::string> descriptions;  // of the first object entered
  int exits = 0;
  bool descend;
};

// Each container describes itself (pointer type name, then "token (count)" or the token),
// descends under element, first/second or each element's own token unless the entry hook
// refuses, and reports a null slot of the polymorphic vector.
TEST(HxXmlObjectVisitor, ContainerForms) {
  Hx::ScopedPrintCapture capture;
  Points points;
  points.pushBack(Point(1, 1, "a"));
  points.pushBack(Point(2, 2, "b"));
  RecordingVisitor visitor("points");
  points.accept(&visitor);
  EXPECT_EQ(visitor.descriptions, (std::vector<std::string>{typeid(const Points*).name(), "points (2)"}));
  EXPECT_EQ(visitor.tokens,
            (std::vector<std::string>{"points", "element", "x", "id", "name", "element", "x", "id", "name"}));
  EXPECT_EQ(visitor.exits, static_cast<int>(visitor.tokens.size()));

  RecordingVisitor empty("none");
  Points().accept(&empty);
  EXPECT_EQ(empty.descriptions[1], "none (0)");
  EXPECT_EQ(empty.tokens.size(), 1u);
  RecordingVisitor refusing("points", false);
  points.accept(&refusing);
  EXPECT_EQ(refusing.tokens.size(), 1u);
  EXPECT_EQ(refusing.exits, 1);

  RecordingVisitor pairVisitor("pair");
  const PointPair pair(Point(1, 1, "a"), Point(2, 2, "b"));
  pair.accept(&pairVisitor);
  EXPECT_EQ(pairVisitor.descriptions, (std::vector<std::string>{typeid(const PointPair*).name(), "pair"}));
  EXPECT_EQ(pairVisitor.tokens,
            (std::vector<std::string>{"pair", "first", "x", "id", "name", "second", "x", "id", "name"}));
  EXPECT_TRUE(capture.records().empty()) << capture.text();

  ShapeVector shapes(1);
  shapes.pushBack(Circle("c", 1));
  RecordingVisitor shapeVisitor("shapes");
  shapes.accept(&shapeVisitor);
  EXPECT_EQ(shapeVisitor.descriptions[1], "shapes (2)");
  ASSERT_GE(shapeVisitor.tokens.size(), 2u);
  EXPECT_EQ(shapeVisitor.tokens[1], "circle");
  expectMessages(capture, {{"Visitor: HxXmlVariableVectorType 0 is non-HxXmlObject\n", Hx::Print::Error,
                            {"HxXmlObjectVisitor::visit("}}});
}

}  // namespace
