#include "analysis/xml/HxXmlVariableVectorType.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace {

using namespace HxXmlTest;

const std::string kClass = " HxXmlVariableVectorType<T>::";          // in contexts
const std::string kText = "HxXmlVariableVectorType<ElementType>::";  // in texts

ShapeVector threeShapes() {
  ShapeVector vector;
  vector.pushBack(Circle("c"));
  vector.pushBack(Square("s"));
  vector.pushBack(Circle("d"));
  return vector;
}

// The labels of the elements in order, "-" for a null slot.
std::string labels(const ShapeVector& vector) {
  std::string out;
  for (const Shape* shape : vector.vectorContainer()) out += shape ? shape->label.value() : std::string("-");
  return out;
}

// A shape whose clone is not a shape: the vector stores a null slot for it.
class Impostor : public Circle {
 public:
  HxXmlObject* clone() const override { return new HxXmlBasicType<double>(0); }
};

// Bad indices are refused with their exact texts (type 4, naming the reporting function);
// unlike the homogeneous vector, an empty erase range is an error and resize never grows.
TEST(HxXmlVariableVectorType, EditingMessagesAndAsymmetries) {
  Hx::ScopedPrintCapture capture;
  ShapeVector vector = threeShapes();
  EXPECT_FALSE(vector.exchange(5, Square("x")) || vector.erase(3) || vector.erase(1, 1) || vector.erase(0, 4));
  const std::string range = "4" + kClass + "erase(HxU32, HxU32): " + kText + "erase: bad first/last indices: ";
  EXPECT_EQ(messages(capture), "4" + kClass + "exchange(HxU32, const ElementType&): " + kText +
                                   "exchange: bad index, 5\n|4" + kClass + "erase(HxU32): " + kText +
                                   "erase: bad index, 3\n|" + range + "1/1\n|" + range + "0/4\n|");
  EXPECT_EQ(labels(vector), "csd");

  // operator[] reports a null slot or an index past the end and still returns slot 0; the
  // const form words its first message otherwise.
  capture.clear();
  ShapeVector withNull(2);
  const ShapeVector& constant = withNull;
  EXPECT_TRUE(withNull.exchange(0, Circle("first")) && withNull[1].label.value() == "first");
  EXPECT_EQ(constant[5].label.value(), "first");
  const std::string mutableForm = "4" + kClass + "operator[](HxU32): ";
  const std::string constForm = "4" + kClass + "operator[](HxU32) const: ";
  const std::string fallback = "Will attempt to return the first vector element.\n|";
  EXPECT_EQ(messages(capture), mutableForm + "bad index\n|" + mutableForm + fallback + constForm + kText +
                                   "operator[]: bad index\n|" + constForm + fallback);

  capture.clear();
  // (The first replaces an element by itself.)
  EXPECT_TRUE(vector.exchange(1, vector[1]) && vector.exchange(2, Circle("x")) && vector.erase(0, 2));
  EXPECT_EQ(labels(vector), "x");
  vector = threeShapes();
  EXPECT_TRUE(vector.erase(1));
  vector.resize(10);
  EXPECT_EQ(labels(vector), "cd");
  vector.resize(1);
  vector.assign(3, vector[0]);  // assigning from an element of the vector itself
  vector.pushBack(Impostor());
  EXPECT_TRUE(labels(vector) == "ccc-" && &vector[0] != &vector[1] && messages(capture).empty());
}

// Copies are deep; comparison goes element by element through equality(), so another class with the
// same members, a null slot or a foreign object compares unequal. Elements are written under their
// own tokens and read back by token (creator first, then the reader's factory) without a message; a
// null slot counts but is not written. (The streaming interface is pinned by the XML writer's
// golden file; here only its refusal of a null writer.)
TEST(HxXmlVariableVectorType, CopiesComparisonAndRoundTripByToken) {
  const ShapeVector source = threeShapes();
  ShapeVector copy(source);
  EXPECT_TRUE(copy == source && &copy[0] != &source[0]);
  ShapeVector& assigned = copy;
  assigned = source;
  assigned = copy;  // self-assignment
  EXPECT_TRUE(assigned == source);
  assigned.exchange(2, Square("d"));
  const HxXmlBasicType<double> foreign;
  EXPECT_FALSE(assigned == source || ShapeVector(1) == ShapeVector(1) || source.equality(nullptr) ||
               source.equality(&foreign));

  ShapeVector vector(1);
  vector.pushBack(Circle("c"));
  vector.pushBack(Square("s"));
  const std::string text = writeToString(vector, "shapes");
  EXPECT_NE(text.find(" count=\"3\">"), std::string::npos) << text;
  vector.erase(0);
  expectReadsBack(vector, text);

  const TriangleFactory factory;
  vector.pushBack(Triangle("t"));
  expectReadsBack(vector, writeToString(vector, "shapes"), &factory);
  EXPECT_FALSE(vector.writeBodyToStream(nullptr) || vector.appendElementToStream(nullptr, Circle()));
}

// The count attribute comes before the library list here (the homogeneous vector writes its base
// first); the list (names with blanks and quotes) reads back and is checked against the registered
// libraries. Counts that cannot be reserved are reported (type 4) and reading goes on; a large
// count that can be reserved reserves only a bounded amount ahead; the count is never checked
// against the elements read; a truncated document fails.
TEST(HxXmlVariableVectorType, CountLibrariesAndHostileCounts) {
  HxXmlBaseVariableCompoundType::registerLibrary("lib \"Hx\" Shapes");
  ShapeVector vector = threeShapes();
  vector.setAddLibraries({"lib \"Hx\" Shapes"});
  const std::string text = writeToString(vector, "shapes");
  EXPECT_TRUE(holdsInOrder(text, {" count=\"3\">", "<addLibraries", "<circle>"})) << text;
  expectReadsBack(vector, text);

  // A library that is not present is reported by the check, and the list still reads.
  Hx::ScopedPrintCapture capture;
  EXPECT_TRUE(readFromString(vector,
                             "<shapes count=\"1\"><addLibraries count=\"1\"><group>\"libHxMissing\"</group>"
                             "</addLibraries><circle/></shapes>"));
  EXPECT_TRUE(vector.addLibraries() == std::vector<std::string>{"libHxMissing"} && vector.size() == 1u);
  EXPECT_EQ(messages(capture),
            "4 HxXmlBaseVariableCompoundType::processLibraries(): "
            "HxXmlBaseVariableCompoundType Error: library \"libHxMissing\" is not available.\n|");

  capture.clear();
  ShapeVector read;
  std::string expected;
  for (const std::string count : {"-5", "99999999999", "2000000000", "1073741824"}) {
    EXPECT_TRUE(readFromString(read, "<shapes count=\"" + count + "\"><circle/><square/></shapes>") &&
                read.size() == 2u)
        << count;
    expected += "4" + kClass + "read(HxXmlReader&): HxXmlVariableVectorType::read() error: count attribute \"" + count +
                "\" cannot be reserved.\n|";
  }
  EXPECT_TRUE(readFromString(read, "<shapes count=\"1073741823\"><circle/></shapes>"));
  EXPECT_LE(read.vectorContainer().capacity() * sizeof(Shape*), HxXmlCountAttribute::maxReservedBytes);
  EXPECT_TRUE(readFromString(read, "<shapes count=\"7\"/>") && read.size() == 0u);
  EXPECT_EQ(messages(capture), expected);
  EXPECT_FALSE(readFromString(read, "<shapes count=\"2\"><circle><label>c</label>"));
}

// A token without a creator (or whose creator makes no shape, or only a factory knows) fails
// the read with the quoted message; elements read before it stay.
TEST(HxXmlVariableVectorType, UnknownTokenFailsTheRead) {
  for (const std::string tag : {"hexagon", "notAShape", "triangle"}) {
    SCOPED_TRACE(tag);
    Hx::ScopedPrintCapture capture;
    ShapeVector read;
    EXPECT_FALSE(readFromString(read, "<shapes count=\"2\"><circle><label>c</label></circle><" + tag +
                                          "><label>x</label></" + tag + "></shapes>"));
    EXPECT_EQ(labels(read), "c");
    EXPECT_EQ(messages(capture), "4" + kClass +
                                     "readValueFromToken(const HxToken&, HxXmlReader&): "
                                     "HxXmlVariableVectorType::readValueFromToken() error:\n\t\"" +
                                     tag + "\" tag not registered.\n|");
  }
}

}  // namespace
