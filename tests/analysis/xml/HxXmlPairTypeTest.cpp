// The pair (round trips, reading), and for all containers the visitor's forms and the XML Schema
// under module names. (The module tokens' texts and prefix are pinned by the golden XML file and
// the round trip of examples/config.)
#include "analysis/xml/HxXmlPairType.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

#include "analysis/xml/HxSimAnalysisTokens.h"
#include "tests/analysis/xml/HxXmlTestTypes.h"
#include "tests/support/HxScopedTempDir.h"

namespace {

using namespace HxXmlTest;
using Doubles = HxXmlVectorType<HxXmlBasicType<double>>;
using Points = HxXmlVectorType<Point>;
using PointPair = HxXmlPairType<Point, Point>;

// Pairs (here nested) read back equal. Reading: members in any order, each
// xmlInit-ed first; an empty element or stray text before the members leaves the pair as it is;
// a child other than first or second gives two type-4 lines naming file, line and the element,
// the rest is read and the result is false; a truncated document fails.
TEST(HxXmlPairType, RoundTripsAndReading) {
  const HxXmlPairType<HxXmlBasicType<std::string>, PointPair> named(std::string("left and right"),
                                                                    PointPair(Point(1, "a"), Point(3, "b")));
  expectReadsBack(named, writeToString(named, "named"));
  EXPECT_FALSE(named.second() == PointPair(Point(1, "a"), Point(3, "c")));

  const std::string context = "4 HxXmlPairType<A, B>::read(HxXmlReader&): ";
  const struct {
    std::string document;
    bool result;
    double first, second;  // x of each afterwards (0: not checked)
    std::string messages;  // "*": not checked
  } rows[] = {
      {"<p><second><x>2</x></second><first><x>1</x></first></p>", true, 1, 2, ""},
      {"<p/>", true, 1, 2, ""},
      {"<p>text<first><x>5</x></first></p>", true, 1, 2, ""},
      {"<p>\n<first><x>3</x></first>\n<third><x>9</x></third>\n<second><x>4</x></second>\n</p>", false, 3, 4,
       context + "HxXmlPairType Error: file not valid.\n\tFormat not correct.\n\tFile: test.xml\n\tLine: 3|" + context +
           "\tExpected first or second but received third.|"},
      {"<p><first><x>1</x></first><second>", false, 0, 0, "*"},
  };
  PointPair read;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.document);
    Hx::ScopedPrintCapture capture;
    EXPECT_EQ(readFromString(read, row.document), row.result);
    EXPECT_TRUE(row.first == 0 || (read.first().x.value() == row.first && read.second().x.value() == row.second));
    EXPECT_TRUE(row.messages == "*" || messages(capture) == row.messages) << messages(capture);
  }
  EXPECT_TRUE(read.first().xmlInitialized() && read.second().xmlInitialized());
}

// Walks `object` as the element `token` and tells in one line the description list of the
// object entered first, "depth:token" of every object entered and the number of exits.
std::string walk(const HxXmlObject& object, const char* token, bool descend = true) {
  WalkRecorder recorder;
  recorder.descend = [descend](const HxXmlObject*) { return descend; };
  recorder.setCurrentToken(token);
  object.accept(&recorder);
  return recorder.first + recorder.entered + "| " + std::to_string(recorder.exits) + " exits";
}

// Each container describes itself (pointer type name, then "token (count)" or the token),
// descends under element, first/second or each element's own token unless the entry hook
// refuses or the vector is empty, and reports a null slot of the polymorphic vector.
TEST(HxXmlObjectVisitor, ContainerForms) {
  Hx::ScopedPrintCapture capture;
  const Points points(2, Point(1, "a"));
  const std::string vector = std::string(typeid(const Points*).name()) + " | ";
  EXPECT_EQ(walk(points, "points"),
            vector + "points (2) | 0:points 1:element 2:x 2:name 1:element 2:x 2:name | 7 exits");
  EXPECT_EQ(walk(Points(), "none"), vector + "none (0) | 0:none | 1 exits");
  EXPECT_EQ(walk(points, "points", false), vector + "points (2) | 0:points | 1 exits");
  EXPECT_EQ(walk(PointPair(Point(1, "a"), Point(2, "b")), "pair"),
            std::string(typeid(const PointPair*).name()) +
                " | pair | 0:pair 1:first 2:x 2:name 1:second 2:x 2:name | 7 exits");
  EXPECT_EQ(messages(capture), "");

  ShapeVector shapes(1);
  shapes.pushBack(Circle("c"));
  EXPECT_EQ(walk(shapes, "shapes"), std::string(typeid(const HxXmlVariableVectorType<Shape>*).name()) +
                                        " | shapes (2) | 0:shapes 1:circle 2:label | 3 exits");
  EXPECT_EQ(messages(capture),
            "4 HxXmlObjectVisitor::visit(const HxXmlVariableVectorType<T>*): Visitor: "
            "HxXmlVariableVectorType 0 is non-HxXmlObject\n|");
}

inline constexpr char kDocument[] = "http://www.hxtoolkit.org/namespace/sm#systemDataVector";

// One member of each container form, under module (namespaced) names (the nested vector holds
// the vector of compounds and the vector of scalars).
class Document : public HxXmlCompoundType {
  HX_XML_SERIALISABLE(Document);

 public:
  Document() = default;
  void registerComponents() override {
    registerComponent(HxSimAnalysis::HxDataCaptureTypeVectorToken, &shapes);
    registerComponent(HxSimAnalysis::HxManipulatorDataVectorToken, &nested);
    registerComponent(HxSimAnalysis::HxLeftSystemDataCaptureToken, &pair);
  }
  ShapeVector shapes;
  HxXmlVectorType<Doubles> nested;
  HxXmlPairType<HxXmlBasicType<std::string>, Doubles> pair;
};
HX_XML_SERIALISABLE_DEFINITIONS(Document, nameToken<kDocument>())

// What the containers write validates against their schema; a stray child does not.
TEST(HxXmlContainerSchema, WrittenContainersValidate) {
  if (!xmllintAvailable()) GTEST_SKIP() << "xmllint is not installed";
  const HxScopedTempDir dir("container-schema");
  const std::string schemaPath = dir.file("containers.xsd");
  Document document;
  document.shapes.pushBack(Circle("c"));
  document.shapes.pushBack(Square("s"));
  document.shapes.setAddLibraries({"libHxShapes"});
  document.nested.pushBack(Doubles(2, 1.5));
  document.pair.set(std::string("name"), Doubles(1, 2.0));
  ASSERT_TRUE(document.createSchema(schemaPath, document.token()));
  std::string instance = writeToString(document, document.token());
  const std::string validate = "--schema '" + schemaPath + "'";
  EXPECT_TRUE(xmllintAccepts(instance, validate)) << instance;
  EXPECT_FALSE(xmllintAccepts(instance.replace(instance.find("<group>"), 0, "<bogus/>"), validate));
}

}  // namespace
