#include "analysis/xml/HxXmlPairType.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "framework/HxXmlObjectVisitor.h"
#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace {

using HxXmlTest::Circle;
using HxXmlTest::Point;
using HxXmlTest::readFromString;
using HxXmlTest::ShapeVector;
using HxXmlTest::writeToString;
using Doubles = HxXmlVectorType<HxXmlBasicType<double>>;
using Points = HxXmlVectorType<Point>;
using PointPair = HxXmlPairType<Point, Point>;
using NamedPair = HxXmlPairType<HxXmlBasicType<std::string>, PointPair>;

// Pairs (also nested, and holding a vector) are written as first/second and read back equal,
// without a message, each member xmlInit-ed before it reads.
TEST(HxXmlPairType, RoundTrips) {
  Hx::ScopedPrintCapture capture;
  const NamedPair named(std::string("left and right"), PointPair(Point(1, 2, "a"), Point(3, 4, "b")));
  const std::string text = writeToString(named, "named");
  EXPECT_NE(text.find("<first>"), std::string::npos) << text;
  EXPECT_NE(text.find("<second>"), std::string::npos) << text;
  NamedPair read;
  EXPECT_TRUE(readFromString(read, text));
  EXPECT_TRUE(read == named);
  EXPECT_TRUE(read.first().xmlInitialized());
  EXPECT_TRUE(read.second().second().xmlInitialized());

  HxXmlPairType<HxXmlBasicType<double>, Doubles> withVector;
  withVector.set(2.5, Doubles(3, 1.0));
  HxXmlPairType<HxXmlBasicType<double>, Doubles> withVectorRead;
  EXPECT_TRUE(readFromString(withVectorRead, writeToString(withVector, "p")));
  EXPECT_TRUE(withVectorRead == withVector);

  // Members in any order; an empty element leaves the pair as it is.
  PointPair swapped;
  EXPECT_TRUE(readFromString(swapped, "<p><second><x>2</x></second><first><x>1</x></first></p>"));
  EXPECT_EQ(swapped.first().x.value(), 1.0);
  EXPECT_EQ(swapped.second().x.value(), 2.0);
  EXPECT_TRUE(readFromString(swapped, "<p/>"));
  EXPECT_EQ(swapped.first().x.value(), 1.0);
  EXPECT_TRUE(capture.records().empty()) << capture.text();

  EXPECT_TRUE(named.token() == HxXml::HxPairTypeToken);
  std::unique_ptr<HxXmlObject> clone(named.clone());
  EXPECT_TRUE(named.equality(clone.get()));
  EXPECT_FALSE(named.equality(nullptr));
  EXPECT_FALSE(named.equality(&read.first()));
  PointPair edited;
  edited.setFirst(Point(1, 0, ""));
  edited.setSecond(Point(2, 0, ""));
  EXPECT_EQ(edited.pairContainer().second.x.value(), 2.0);
  EXPECT_FALSE(edited == PointPair::nullObject());
}

// A child other than first or second is reported with two type-4 messages naming file, line
// and the element met; the rest is read and the result is false.
TEST(HxXmlPairType, UnexpectedChildIsReported) {
  Hx::ScopedPrintCapture capture;
  PointPair read;
  EXPECT_FALSE(readFromString(read, "<p>\n<first><x>1</x></first>\n<third><x>9</x></third>\n<second><x>2</x></second>\n</p>"));
  EXPECT_EQ(read.first().x.value(), 1.0);
  EXPECT_EQ(read.second().x.value(), 2.0);
  ASSERT_GE(capture.records().size(), 2u);
  EXPECT_EQ(capture.records()[0].text, "HxXmlPairType Error: file not valid.\n\tFormat not correct.\n\tFile: test.xml\n\tLine: 3");
  EXPECT_EQ(capture.records()[1].text, "\tExpected first or second but received third.");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(capture.records()[i].type, Hx::Print::Error);
    EXPECT_TRUE(HxXmlTest::contextNames(capture.records()[i], "HxXmlPairType", "read(HxXmlReader&)"));
  }

  // Hostile forms never crash: truncated, mismatched, stray text (the reader stays in step).
  EXPECT_FALSE(readFromString(read, "<p><first><x>1</x></first><second>"));
  EXPECT_FALSE(readFromString(read, "<p><first></second></p>"));
  capture.clear();
  EXPECT_TRUE(readFromString(read, "<p>text<first><x>5</x></first></p>"));
  EXPECT_TRUE(capture.records().empty()) << capture.text();
}

// Records what the visitor saw at each entry: the current token and the description list.
class RecordingVisitor : public HxXmlObjectVisitor {
 public:
  struct Entry {
    std::string token;
    std::vector<std::string> descriptions;
  };
  HxBoolean enter(const HxXmlObject* object) override {
    entries.push_back({currentToken().token(), descriptions()});
    HxXmlObjectVisitor::enter(object);
    return descend;
  }
  void exit(const HxXmlObject*) override { ++exits; }

  std::vector<Entry> entries;
  int exits = 0;
  bool descend = true;
};

// Each container describes itself (pointer type name, "token (count)" or the token) and
// descends under element, first/second or the element's own token.
TEST(HxXmlObjectVisitor, ContainerForms) {
  Hx::ScopedPrintCapture capture;
  Points points;
  points.pushBack(Point(1, 1, "a"));
  points.pushBack(Point(2, 2, "b"));
  RecordingVisitor visitor;
  visitor.setCurrentToken("points");
  points.accept(&visitor);
  ASSERT_GE(visitor.entries.size(), 3u);
  EXPECT_EQ(visitor.entries[0].descriptions,
            (std::vector<std::string>{typeid(const Points*).name(), "points (2)"}));
  EXPECT_EQ(std::string(typeid(const Points*).name()).rfind("PK15HxXmlVectorType", 0), 0u);
  std::vector<std::string> childTokens;
  for (std::size_t i = 1; i < visitor.entries.size(); ++i) childTokens.push_back(visitor.entries[i].token);
  EXPECT_EQ(childTokens[0], "element");
  EXPECT_EQ(visitor.exits, static_cast<int>(visitor.entries.size()));

  // An empty vector is described with its count 0 and not descended into.
  RecordingVisitor empty;
  empty.setCurrentToken("none");
  Points().accept(&empty);
  ASSERT_EQ(empty.entries.size(), 1u);
  EXPECT_EQ(empty.entries[0].descriptions[1], "none (0)");
  EXPECT_EQ(empty.exits, 1);

  // The entry hook can refuse the descent.
  RecordingVisitor refusing;
  refusing.descend = false;
  points.accept(&refusing);
  EXPECT_EQ(refusing.entries.size(), 1u);
  EXPECT_EQ(refusing.exits, 1);

  // The pair: described by its token, members under first and second.
  RecordingVisitor pairVisitor;
  pairVisitor.setCurrentToken("pair");
  const PointPair pair(Point(1, 1, "a"), Point(2, 2, "b"));
  pair.accept(&pairVisitor);
  ASSERT_GE(pairVisitor.entries.size(), 3u);
  EXPECT_EQ(pairVisitor.entries[0].descriptions, (std::vector<std::string>{typeid(const PointPair*).name(), "pair"}));
  std::vector<std::string> pairTokens;
  for (const auto& entry : pairVisitor.entries) pairTokens.push_back(entry.token);
  EXPECT_NE(std::find(pairTokens.begin(), pairTokens.end(), "first"), pairTokens.end());
  EXPECT_NE(std::find(pairTokens.begin(), pairTokens.end(), "second"), pairTokens.end());
  EXPECT_TRUE(capture.records().empty()) << capture.text();

  // The polymorphic vector: elements under their own tokens; a null slot is reported.
  ShapeVector shapes(1);
  shapes.pushBack(Circle("c", 1));
  RecordingVisitor shapeVisitor;
  shapeVisitor.setCurrentToken("shapes");
  shapes.accept(&shapeVisitor);
  ASSERT_GE(shapeVisitor.entries.size(), 2u);
  EXPECT_EQ(shapeVisitor.entries[0].descriptions[1], "shapes (2)");
  EXPECT_EQ(shapeVisitor.entries[1].token, "circle");
  ASSERT_EQ(capture.records().size(), 1u);
  EXPECT_EQ(capture.records()[0].text, "Visitor: HxXmlVariableVectorType 0 is non-HxXmlObject\n");
  EXPECT_EQ(capture.records()[0].type, Hx::Print::Error);
  EXPECT_TRUE(HxXmlTest::contextHas(capture.records()[0], "HxXmlObjectVisitor::visit("));
}

}  // namespace
