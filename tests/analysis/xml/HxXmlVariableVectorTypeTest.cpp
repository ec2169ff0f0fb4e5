#include "analysis/xml/HxXmlVariableVectorType.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace {

using namespace HxXmlTest;

ShapeVector threeShapes() {
  ShapeVector vector;
  vector.pushBack(Circle("c", 1));
  vector.pushBack(Square("s", 2));
  vector.pushBack(Circle("d", 3));
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
  EXPECT_FALSE(vector.exchange(5, Square("x", 1)));
  EXPECT_FALSE(vector.erase(3));
  EXPECT_FALSE(vector.erase(1, 1));
  EXPECT_FALSE(vector.erase(0, 4));
  const std::string prefix = "HxXmlVariableVectorType<ElementType>::";
  const std::vector<std::string> range = {"HxXmlVariableVectorType<", ">::erase(HxU32, HxU32)"};
  expectMessages(capture, {{prefix + "exchange: bad index, 5\n", Hx::Print::Error,
                            {"HxXmlVariableVectorType<", ">::exchange(", "ElementType = HxXmlTest::Shape"}},
                           {prefix + "erase: bad index, 3\n", Hx::Print::Error,
                            {"HxXmlVariableVectorType<", ">::erase(HxU32)"}},
                           {prefix + "erase: bad first/last indices: 1/1\n", Hx::Print::Error, range},
                           {prefix + "erase: bad first/last indices: 0/4\n", Hx::Print::Error, range}});
  EXPECT_EQ(labels(vector), "csd");

  // operator[] reports a null slot or an index past the end and still returns slot 0; the
  // const form words its first message otherwise.
  capture.clear();
  ShapeVector withNull(2);
  EXPECT_TRUE(withNull.exchange(0, Circle("first", 1)));
  EXPECT_EQ(withNull[1].label.value(), "first");
  const ShapeVector& constant = withNull;
  EXPECT_EQ(constant[5].label.value(), "first");
  const std::string fallback = "Will attempt to return the first vector element.\n";
  expectMessages(capture, {{"bad index\n", Hx::Print::Error, {"HxXmlVariableVectorType<", ">::operator[](HxU32)"}},
                           {fallback, Hx::Print::Error, {"HxXmlVariableVectorType<"}},
                           {prefix + "operator[]: bad index\n", Hx::Print::Error, {">::operator[](HxU32) const"}},
                           {fallback, Hx::Print::Error, {"HxXmlVariableVectorType<"}}});

  capture.clear();
  EXPECT_TRUE(vector.exchange(1, vector[1]));  // replacing an element by itself
  EXPECT_TRUE(vector.exchange(2, Circle("x", 4)));
  EXPECT_TRUE(vector.erase(0, 2));
  EXPECT_EQ(labels(vector), "x");
  vector = threeShapes();
  EXPECT_TRUE(vector.erase(1));
  vector.resize(10);
  EXPECT_EQ(labels(vector), "cd");
  vector.resize(1);
  vector.assign(3, vector[0]);  // assigning from an element of the vector itself
  vector.pushBack(Impostor());
  EXPECT_EQ(labels(vector), "ccc-");
  EXPECT_NE(&vector[0], &vector[1]);
  EXPECT_TRUE(capture.records().empty()) << capture.text();
}

// Copies are deep; comparison goes element by element through equality(), so another class
// with the same members, a null slot or a foreign object compares unequal.
TEST(HxXmlVariableVectorType, CopyAndComparison) {
  const ShapeVector source = threeShapes();
  ShapeVector copy(source);
  EXPECT_TRUE(copy == source);
  EXPECT_NE(&copy[0], &source[0]);
  ShapeVector& assigned = copy;
  assigned = source;
  assigned = copy;  // self-assignment
  EXPECT_TRUE(assigned == source);
  assigned.exchange(2, Square("d", 3));
  EXPECT_FALSE(assigned == source);
  EXPECT_FALSE(ShapeVector(1) == ShapeVector(1));
  EXPECT_FALSE(source.equality(nullptr));
  const HxXmlBasicType<double> foreign;
  EXPECT_FALSE(source.equality(&foreign));
}

// Elements are written under their own tokens and read back by token (creator first, then the
// reader's factory) without a message; a null slot counts but is not written.
TEST(HxXmlVariableVectorType, RoundTripByToken) {
  ShapeVector vector(1);
  vector.pushBack(Circle("c", 1.5));
  vector.pushBack(Square("s", 2));
  const std::string text = writeToString(vector, "shapes");
  EXPECT_NE(text.find(" count=\"3\">"), std::string::npos) << text;
  EXPECT_EQ(occurrences(text, "<circle>") + occurrences(text, "<square>"), 2u) << text;
  vector.erase(0);
  expectReadsBack(vector, text);

  const TriangleFactory factory;
  vector.pushBack(Triangle("t", 3));
  expectReadsBack(vector, writeToString(vector, "shapes"), &factory);
}

// The count attribute comes before the library list here (the homogeneous vector writes its
// base first); the list reads back and is checked against the registered libraries.
TEST(HxXmlVariableVectorType, LibraryListAndCountOrder) {
  HxXmlBaseVariableCompoundType::registerLibrary("libHxShapes");
  ShapeVector vector = threeShapes();
  vector.setAddLibraries({"libHxShapes"});
  const std::string text = writeToString(vector, "shapes");
  const std::size_t count = text.find(" count=\"3\">");
  ASSERT_NE(count, std::string::npos) << text;
  EXPECT_LT(count, text.find("<addLibraries"));
  EXPECT_LT(text.find("<addLibraries"), text.find("<circle>"));
  expectReadsBack(vector, text);

  // A library that is not present is reported by the check, and the list still reads.
  Hx::ScopedPrintCapture capture;
  EXPECT_TRUE(readFromString(vector, "<shapes count=\"1\"><addLibraries count=\"1\"><group>\"libHxMissing\"</group>"
                                     "</addLibraries><circle/></shapes>"));
  EXPECT_EQ(vector.addLibraries(), std::vector<std::string>{"libHxMissing"});
  EXPECT_EQ(vector.size(), 1u);
  ASSERT_EQ(capture.records().size(), 1u);
  EXPECT_NE(capture.records()[0].text.find("libHxMissing"), std::string::npos);
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
    const std::string text = "HxXmlVariableVectorType::readValueFromToken() error:\n\t\"" + tag + "\" tag not registered.\n";
    expectMessages(capture, {{text, Hx::Print::Error, {"HxXmlVariableVectorType<", ">::readValueFromToken("}}});
  }
}

// Counts that cannot be reserved are reported (type 4) and reading goes on; the count is never
// checked against the elements read; broken documents fail.
TEST(HxXmlVariableVectorType, HostileCountAttributes) {
  for (const std::string count : {"-5", "99999999999", "2000000000", "1073741824"}) {
    SCOPED_TRACE(count);
    Hx::ScopedPrintCapture capture;
    ShapeVector read;
    EXPECT_TRUE(readFromString(read, "<shapes count=\"" + count + "\"><circle/><square/></shapes>"));
    EXPECT_EQ(read.size(), 2u);
    const std::string text = "HxXmlVariableVectorType::read() error: count attribute \"" + count + "\" cannot be reserved.\n";
    expectMessages(capture, {{text, Hx::Print::Error, {"HxXmlVariableVectorType<", ">::read("}}});
  }
  Hx::ScopedPrintCapture capture;
  ShapeVector read;
  EXPECT_TRUE(readFromString(read, "<shapes count=\"1073741823\"><circle/></shapes>"));
  EXPECT_LE(read.vectorContainer().capacity() * sizeof(Shape*), HxXmlCountAttribute::maxReservedBytes);
  EXPECT_TRUE(readFromString(read, "<shapes count=\"7\"/>"));
  EXPECT_EQ(read.size(), 0u);
  EXPECT_FALSE(readFromString(read, "<shapes count=\"2\"><circle><label>c</label>"));
  EXPECT_FALSE(readFromString(read, "<shapes><circle></square></shapes>"));
}

// The streaming interface writes each element under its own token with the header-time count
// and reads back without a message; a failed stream or a null writer is refused.
TEST(HxXmlVariableVectorType, Streaming) {
  ShapeVector vector = threeShapes();
  const std::string text = streamed(vector, Square("e", 5));
  EXPECT_NE(text.find(" count=\"3\">"), std::string::npos) << text;
  vector.pushBack(Square("e", 5));
  expectReadsBack(vector, text);
  expectStreamingRefusals(vector, Circle(), std::ios::badbit);
}

}  // namespace
