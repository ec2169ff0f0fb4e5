#include "analysis/xml/HxXmlVariableVectorType.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace {

using HxXmlTest::Circle;
using HxXmlTest::readFromString;
using HxXmlTest::Shape;
using HxXmlTest::ShapeVector;
using HxXmlTest::Square;
using HxXmlTest::Triangle;
using HxXmlTest::writeToString;

ShapeVector threeShapes() {
  ShapeVector vector;
  vector.pushBack(Circle("c", 1));
  vector.pushBack(Square("s", 2));
  vector.pushBack(Circle("d", 3));
  return vector;
}

std::string labels(const ShapeVector& vector) {
  std::string out;
  for (const Shape* shape : vector.vectorContainer()) out += shape ? shape->label.value() : std::string("-");
  return out;
}

// A shape whose clone is not a shape: the vector stores a null slot instead.
class Impostor : public Circle {
 public:
  HxXmlObject* clone() const override { return new HxXmlBasicType<double>(0); }
};

// Every bad index is reported with its exact text, type 4 and the reporting function; erase
// refuses an empty range and resize never grows (both differ from HxXmlVectorType on purpose).
TEST(HxXmlVariableVectorType, EditingAndIndexMessages) {
  Hx::ScopedPrintCapture capture;
  ShapeVector vector = threeShapes();

  EXPECT_FALSE(vector.exchange(5, Square("x", 1)));
  EXPECT_FALSE(vector.erase(3));
  EXPECT_FALSE(vector.erase(1, 1));
  EXPECT_FALSE(vector.erase(0, 4));
  ASSERT_EQ(capture.records().size(), 4u);
  EXPECT_EQ(capture.records()[0].text, "HxXmlVariableVectorType<ElementType>::exchange: bad index, 5\n");
  EXPECT_EQ(capture.records()[1].text, "HxXmlVariableVectorType<ElementType>::erase: bad index, 3\n");
  EXPECT_EQ(capture.records()[2].text, "HxXmlVariableVectorType<ElementType>::erase: bad first/last indices: 1/1\n");
  EXPECT_EQ(capture.records()[3].text, "HxXmlVariableVectorType<ElementType>::erase: bad first/last indices: 0/4\n");
  EXPECT_TRUE(HxXmlTest::contextNames(capture.records()[0], "HxXmlVariableVectorType", "exchange("));
  EXPECT_TRUE(HxXmlTest::contextNames(capture.records()[1], "HxXmlVariableVectorType", "erase(HxU32)"));
  EXPECT_TRUE(HxXmlTest::contextNames(capture.records()[2], "HxXmlVariableVectorType", "erase(HxU32, HxU32)"));
  for (const auto& record : capture.records()) {
    EXPECT_EQ(record.type, Hx::Print::Error);
    EXPECT_TRUE(HxXmlTest::contextHas(record, "ElementType = HxXmlTest::Shape"));
  }
  EXPECT_EQ(labels(vector), "csd");

  // operator[] reports a bad index and still returns slot 0; the const form words it otherwise.
  capture.clear();
  ShapeVector two;
  two.pushBack(Circle("first", 1));
  two.pushBack(Circle("second", 1));
  EXPECT_EQ(two[5].label.value(), "first");
  const ShapeVector& constTwo = two;
  EXPECT_EQ(constTwo[5].label.value(), "first");
  EXPECT_EQ(constTwo[1].label.value(), "second");
  ASSERT_EQ(capture.records().size(), 4u);
  EXPECT_EQ(capture.records()[0].text, "bad index\n");
  EXPECT_EQ(capture.records()[1].text, "Will attempt to return the first vector element.\n");
  EXPECT_EQ(capture.records()[2].text, "HxXmlVariableVectorType<ElementType>::operator[]: bad index\n");
  EXPECT_EQ(capture.records()[3].text, "Will attempt to return the first vector element.\n");
  EXPECT_TRUE(HxXmlTest::contextHas(capture.records()[2], "::operator[](HxU32) const"));
  for (const auto& record : capture.records()) EXPECT_EQ(record.type, Hx::Print::Error);

  // A null slot is a bad index too.
  capture.clear();
  ShapeVector withNull(2);
  EXPECT_TRUE(withNull.exchange(0, Square("zero", 1)));
  EXPECT_EQ(withNull[1].label.value(), "zero");
  EXPECT_EQ(capture.records().size(), 2u);

  capture.clear();
  EXPECT_TRUE(vector.exchange(1, vector[1]));  // replacing an element by itself
  EXPECT_TRUE(vector.exchange(1, Circle("x", 4)));
  EXPECT_EQ(labels(vector), "cxd");
  EXPECT_TRUE(vector.erase(0, 2));
  EXPECT_EQ(labels(vector), "d");
  vector = threeShapes();
  EXPECT_TRUE(vector.erase(1));
  EXPECT_EQ(labels(vector), "cd");
  vector.resize(10);
  EXPECT_EQ(vector.size(), 2u);
  vector = threeShapes();
  vector.resize(1);
  EXPECT_EQ(labels(vector), "c");
  vector.assign(3, vector[0]);  // assigning from an element of the vector itself
  EXPECT_EQ(labels(vector), "ccc");
  EXPECT_NE(&vector[0], &vector[1]);
  vector.pushBack(Impostor());
  EXPECT_EQ(vector.size(), 4u);
  EXPECT_EQ(vector.vectorContainer()[3], nullptr);
  vector.clear();
  EXPECT_EQ(vector.size(), 0u);
  EXPECT_TRUE(capture.records().empty()) << capture.text();
}

// Copies are deep; comparison goes element by element through equality(); null slots and
// foreign objects compare unequal.
TEST(HxXmlVariableVectorType, CopyAndComparison) {
  const ShapeVector source = threeShapes();
  ShapeVector copy(source);
  EXPECT_TRUE(copy == source);
  EXPECT_NE(&copy[0], &source[0]);
  ShapeVector assigned;
  assigned = source;
  assigned = assigned;
  EXPECT_TRUE(assigned == source);
  EXPECT_TRUE(source.equality(&assigned));
  EXPECT_FALSE(source.equality(nullptr));
  const HxXmlBasicType<double> foreign;
  EXPECT_FALSE(source.equality(&foreign));

  assigned.exchange(2, Square("d", 3));  // same label, other class
  EXPECT_FALSE(assigned == source);
  EXPECT_FALSE(ShapeVector(1) == ShapeVector(1));
  EXPECT_TRUE(ShapeVector() == ShapeVector());
  std::unique_ptr<HxXmlObject> clone(source.clone());
  EXPECT_TRUE(source.equality(clone.get()));
}

// Elements are written under their own tokens and read back by token (creator first, then the
// reader's factory), without a message; a null slot counts but is not written.
TEST(HxXmlVariableVectorType, RoundTripByToken) {
  Hx::ScopedPrintCapture capture;
  ShapeVector vector(1);  // slot 0 stays null
  vector.pushBack(Circle("c", 1.5));
  vector.pushBack(Square("s", 2));
  const std::string text = writeToString(vector, "shapes");
  EXPECT_NE(text.find(" count=\"3\">"), std::string::npos) << text;
  EXPECT_NE(text.find("<circle>"), std::string::npos) << text;
  EXPECT_NE(text.find("<square>"), std::string::npos) << text;

  ShapeVector read = threeShapes();
  EXPECT_TRUE(readFromString(read, text));
  ASSERT_EQ(read.size(), 2u);
  EXPECT_TRUE(read[0].equality(&vector[1]));
  EXPECT_TRUE(read[1].equality(&vector[2]));
  EXPECT_DOUBLE_EQ(read[1].area(), 4.0);

  const HxXmlTest::TriangleFactory factory;
  EXPECT_TRUE(readFromString(read,
                             "<shapes count=\"2\"><triangle><label>t</label><base>2</base><height>3</height>"
                             "</triangle><circle><label>c</label></circle></shapes>",
                             &factory));
  ASSERT_EQ(read.size(), 2u);
  EXPECT_NE(dynamic_cast<const Triangle*>(&read[0]), nullptr);
  EXPECT_DOUBLE_EQ(read[0].area(), 3.0);
  EXPECT_TRUE(capture.records().empty()) << capture.text();
}

// The count attribute comes before the library list here (the homogeneous vector writes its
// base first); the list reads back and is checked against the registered libraries.
TEST(HxXmlVariableVectorType, LibraryListAndCountOrder) {
  Hx::ScopedPrintCapture capture;
  HxXmlBaseVariableCompoundType::registerLibrary("libHxShapes");
  ShapeVector vector = threeShapes();
  vector.setAddLibraries({"libHxShapes"});
  const std::string text = writeToString(vector, "shapes");
  const std::size_t count = text.find(" count=\"3\">");
  const std::size_t libraries = text.find("<addLibraries");
  ASSERT_NE(count, std::string::npos) << text;
  ASSERT_NE(libraries, std::string::npos) << text;
  EXPECT_LT(count, libraries);
  EXPECT_LT(libraries, text.find("<circle>"));

  ShapeVector read;
  EXPECT_TRUE(readFromString(read, text));
  EXPECT_TRUE(read == vector);
  EXPECT_EQ(read.addLibraries(), std::vector<std::string>{"libHxShapes"});
  EXPECT_TRUE(capture.records().empty()) << capture.text();

  // A library that is not present is reported by the check, and the list still reads.
  EXPECT_TRUE(readFromString(read, "<shapes count=\"1\"><addLibraries count=\"1\"><group>\"libHxMissing\"</group>"
                                   "</addLibraries><circle/></shapes>"));
  EXPECT_EQ(read.addLibraries(), std::vector<std::string>{"libHxMissing"});
  EXPECT_EQ(read.size(), 1u);
  ASSERT_EQ(capture.records().size(), 1u);
  EXPECT_NE(capture.records()[0].text.find("libHxMissing"), std::string::npos);
}

// An unregistered token (or a creator that makes no shape) fails the read with the quoted
// message; elements read before it stay.
TEST(HxXmlVariableVectorType, UnknownTokenFailsTheRead) {
  for (const std::string tag : {"hexagon", "notAShape", "triangle"}) {
    Hx::ScopedPrintCapture capture;
    ShapeVector read;
    EXPECT_FALSE(readFromString(read, "<shapes count=\"2\"><circle><label>c</label></circle><" + tag +
                                          "><label>x</label></" + tag + "></shapes>"));
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0].label.value(), "c");
    ASSERT_FALSE(capture.records().empty());
    const Hx::PrintRecord& record = capture.records()[0];
    EXPECT_EQ(record.text, "HxXmlVariableVectorType::readValueFromToken() error:\n\t\"" + tag + "\" tag not registered.\n");
    EXPECT_EQ(record.type, Hx::Print::Error);
    EXPECT_TRUE(HxXmlTest::contextNames(record, "HxXmlVariableVectorType", "readValueFromToken("));
  }
}

// Counts that cannot be reserved are reported (type 4) and reading goes on; the count is never
// checked against the elements read.
TEST(HxXmlVariableVectorType, HostileCountAttributes) {
  for (const std::string count : {"-5", "99999999999", "2000000000", "1073741824"}) {
    Hx::ScopedPrintCapture capture;
    ShapeVector read;
    EXPECT_TRUE(readFromString(read, "<shapes count=\"" + count + "\"><circle/><square/></shapes>"));
    EXPECT_EQ(read.size(), 2u);
    ASSERT_EQ(capture.records().size(), 1u) << capture.text();
    EXPECT_EQ(capture.records()[0].text,
              "HxXmlVariableVectorType::read() error: count attribute \"" + count + "\" cannot be reserved.\n");
    EXPECT_EQ(capture.records()[0].type, Hx::Print::Error);
    EXPECT_TRUE(HxXmlTest::contextNames(capture.records()[0], "HxXmlVariableVectorType", "read("));
  }
  Hx::ScopedPrintCapture capture;
  ShapeVector read;
  EXPECT_TRUE(readFromString(read, "<shapes count=\"1073741823\"><circle/></shapes>"));
  EXPECT_LE(read.vectorContainer().capacity() * sizeof(Shape*), HxXmlCountAttribute::maxReservedBytes);
  EXPECT_TRUE(readFromString(read, "<shapes count=\"7\"/>"));
  EXPECT_EQ(read.size(), 0u);
  EXPECT_FALSE(readFromString(read, "<shapes count=\"2\"><circle><label>c</label>"));
  EXPECT_FALSE(readFromString(read, "<shapes><circle></square></shapes>"));
  EXPECT_TRUE(capture.records().size() >= 2u);
}

// The streaming interface writes each element under its own token with the header-time count.
TEST(HxXmlVariableVectorType, Streaming) {
  Hx::ScopedPrintCapture capture;
  std::ostringstream stream;
  HxXmlWriter* writer = nullptr;
  const ShapeVector vector = threeShapes();
  ASSERT_TRUE(vector.writeHeaderToStream(stream, writer, "recording", "shapes"));
  EXPECT_TRUE(vector.writeBodyToStream(writer));
  EXPECT_TRUE(vector.appendElementToStream(writer, Square("e", 5)));
  EXPECT_TRUE(vector.writeFooterToStream(writer));
  EXPECT_EQ(writer, nullptr);
  EXPECT_NE(stream.str().find(" count=\"3\">"), std::string::npos) << stream.str();

  ShapeVector read;
  EXPECT_TRUE(readFromString(read, stream.str()));
  EXPECT_EQ(labels(read), "csde");
  EXPECT_TRUE(capture.records().empty()) << capture.text();

  std::ostringstream failed;
  failed.setstate(std::ios::badbit);
  EXPECT_FALSE(vector.writeHeaderToStream(failed, writer, "x", "x"));
  EXPECT_EQ(writer, nullptr);
  EXPECT_FALSE(vector.writeBodyToStream(nullptr));
  EXPECT_FALSE(vector.appendElementToStream(nullptr, Circle()));
  EXPECT_FALSE(vector.writeFooterToStream(writer));
}

}  // namespace
