// The pair (round trips, unexpected children) and the visitor's forms for the containers.
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
  EXPECT_TRUE(occurrences(text, "<first>") == 2u && occurrences(text, "<second>") == 2u) << text;
  expectReadsBack(named, text);
  EXPECT_FALSE(named.second() == PointPair(Point(1, 2, "a"), Point(3, 4, "c")));
  EXPECT_TRUE(named.token() == HxXml::HxPairTypeToken);

  const HxXmlPairType<HxXmlBasicType<double>, Doubles> withVector(2.5, Doubles(3, 1.0));
  expectReadsBack(withVector, writeToString(withVector, "p"));

  Hx::ScopedPrintCapture capture;
  PointPair read;
  EXPECT_TRUE(readFromString(read, "<p><second><x>2</x></second><first><x>1</x></first></p>"));
  EXPECT_TRUE(read.first().xmlInitialized() && read.second().xmlInitialized());
  EXPECT_TRUE(read.first().x.value() == 1.0 && read.second().x.value() == 2.0);
  EXPECT_TRUE(readFromString(read, "<p/>") && read.first().x.value() == 1.0);
  EXPECT_EQ(messages(capture), "");
}

// A child other than first or second is reported with two type-4 messages naming file, line
// and the element met; the rest is read and the result is false. Truncated or mismatched
// documents fail; stray text ends the pair without a message.
TEST(HxXmlPairType, UnexpectedChildIsReported) {
  Hx::ScopedPrintCapture capture;
  PointPair read;
  EXPECT_FALSE(
      readFromString(read, "<p>\n<first><x>1</x></first>\n<third><x>9</x></third>\n<second><x>2</x></second>\n</p>"));
  EXPECT_TRUE(read.first().x.value() == 1.0 && read.second().x.value() == 2.0);
  const std::string context = "4 HxXmlPairType<A, B>::read(HxXmlReader&): ";
  EXPECT_EQ(messages(capture), context + "HxXmlPairType Error: file not valid.\n\tFormat not correct.\n\tFile: "
                                         "test.xml\n\tLine: 3|" +
                                   context + "\tExpected first or second but received third.|");

  EXPECT_FALSE(readFromString(read, "<p><first><x>1</x></first><second>") ||
               readFromString(read, "<p><first></second></p>"));
  capture.clear();
  EXPECT_TRUE(readFromString(read, "<p>text<first><x>5</x></first></p>"));
  EXPECT_EQ(read.first().x.value(), 1.0);  // the text ends the pair before its first member
  EXPECT_EQ(messages(capture), "");
}

// Walks `object` as the element `token` and tells in one line the description list of the
// object entered first, the token of every object entered and the number of exits.
std::string walk(const HxXmlObject& object, const char* token, bool descend = true) {
  class Recorder : public HxXmlObjectVisitor {
   public:
    HxBoolean enter(const HxXmlObject* entered) override {
      if (line.empty()) {
        for (const std::string& description : descriptions()) line += description + " | ";
      }
      line += currentToken().token() + " ";
      HxXmlObjectVisitor::enter(entered);
      return descend;
    }
    void exit(const HxXmlObject*) override { ++exits; }
    std::string line;
    int exits = 0;
    bool descend = true;
  } recorder;
  recorder.descend = descend;
  recorder.setCurrentToken(token);
  object.accept(&recorder);
  return recorder.line + "| " + std::to_string(recorder.exits) + " exits";
}

// Each container describes itself (pointer type name, then "token (count)" or the token),
// descends under element, first/second or each element's own token unless the entry hook
// refuses or the vector is empty, and reports a null slot of the polymorphic vector.
TEST(HxXmlObjectVisitor, ContainerForms) {
  Hx::ScopedPrintCapture capture;
  Points points;
  points.pushBack(Point(1, 1, "a"));
  points.pushBack(Point(2, 2, "b"));
  const std::string vector = std::string(typeid(const Points*).name()) + " | ";
  EXPECT_EQ(walk(points, "points"), vector + "points (2) | points element x id name element x id name | 9 exits");
  EXPECT_EQ(walk(Points(), "none"), vector + "none (0) | none | 1 exits");
  EXPECT_EQ(walk(points, "points", false), vector + "points (2) | points | 1 exits");
  EXPECT_EQ(walk(PointPair(Point(1, 1, "a"), Point(2, 2, "b")), "pair"),
            std::string(typeid(const PointPair*).name()) + " | pair | pair first x id name second x id name | 9 exits");
  EXPECT_EQ(messages(capture), "");

  ShapeVector shapes(1);
  shapes.pushBack(Circle("c", 1));
  EXPECT_EQ(walk(shapes, "shapes"), std::string(typeid(const HxXmlVariableVectorType<Shape>*).name()) +
                                        " | shapes (2) | shapes circle label size | 4 exits");
  EXPECT_EQ(messages(capture), "4 HxXmlObjectVisitor::visit(const HxXmlVariableVectorType<T>*): Visitor: "
                               "HxXmlVariableVectorType 0 is non-HxXmlObject\n|");
}

}  // namespace
