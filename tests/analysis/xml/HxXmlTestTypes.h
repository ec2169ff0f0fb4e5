#pragma once
// Small serialisable types and helpers shared by the container tests.

#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/xml/HxXmlPairType.h"
#include "analysis/xml/HxXmlVariableVectorType.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlSerialisable.h"
#include "framework/HxXmlWriter.h"
#include "tests/framework/HxFrameworkTestTypes.h"

namespace HxXmlTest {

/// Class tokens of the test classes.
inline constexpr char kPoint[] = "point";
inline constexpr char kCircle[] = "circle";
inline constexpr char kSquare[] = "square";
inline constexpr char kTriangle[] = "triangle";
inline constexpr char kShapes[] = "shapes";

using HxFrameworkTest::holdsInOrder;
using HxFrameworkTest::nameToken;
using HxFrameworkTest::readFromString;
using HxFrameworkTest::writeToString;

/// A compound with a few scalar members, the element of the compound vectors under test.
class Point : public HxXmlCompoundType {
  HX_XML_SERIALISABLE(Point);

 public:
  Point() = default;
  Point(double xValue, unsigned int idValue, const std::string& nameValue) : x(xValue), id(idValue), name(nameValue) {}
  void registerComponents() override {
    registerComponent("x", &x);
    registerComponent("id", &id);
    registerComponent("name", &name);
  }
  bool operator==(const Point& other) const { return x == other.x && id == other.id && name == other.name; }

  HxXmlBasicType<double> x;
  HxXmlBasicType<unsigned int> id;
  HxXmlBasicType<std::string> name;
};
HX_XML_SERIALISABLE_DEFINITIONS_WITH((inline), nameToken<kPoint>(), Point)

/// Abstract element class of the polymorphic vector under test.
class Shape : public HxXmlCompoundType {
 public:
  Shape() = default;
  Shape(const std::string& labelValue, double sizeValue) : label(labelValue), size(sizeValue) {}
  void registerComponents() override {
    registerComponent("label", &label);
    registerComponent("size", &size);
  }
  bool operator==(const Shape& other) const { return label == other.label && size == other.size; }

  HxXmlBasicType<std::string> label;
  HxXmlBasicType<double> size;
};

/// The concrete shapes differ only in their class and token.
template <const char* kName>
class ShapeOf : public Shape {
  HX_XML_SERIALISABLE(ShapeOf);

 public:
  ShapeOf() = default;
  using Shape::Shape;
};
HX_XML_SERIALISABLE_DEFINITIONS_WITH((template <const char* kName>), nameToken<kName>(), ShapeOf<kName>)
using Circle = ShapeOf<kCircle>;
using Square = ShapeOf<kSquare>;
using Triangle = ShapeOf<kTriangle>;  // the vector has no creator for it; only the factory makes it

/// The polymorphic vector under test: creators for circles and squares, and one registered
/// under "notAShape" that makes something other than a shape.
class ShapeVector : public HxXmlVariableVectorType<Shape> {
  HX_XML_SERIALISABLE(ShapeVector);

 public:
  ShapeVector() = default;
  using HxXmlVariableVectorType::HxXmlVariableVectorType;
  void registerComponentCreators() override {
    registerComponentCreatorsOf<Circle, Square>();
    registerComponentCreator("notAShape", []() -> HxXmlObject* { return new HxXmlBasicType<double>(1.0); });
  }
};
HX_XML_SERIALISABLE_DEFINITIONS_WITH((inline), nameToken<kShapes>(), ShapeVector)

/// An object factory that makes triangles.
class TriangleFactory : public HxXmlObjectFactory {
 public:
  HxXmlObject* newObjectFromToken(const HxToken& token) const override {
    return token == Triangle::classToken() ? new Triangle() : nullptr;
  }
};

/// Expects `text` to read back, without a message, into an object equal to `written`.
template <class T>
void expectReadsBack(const T& written, const std::string& text, const HxXmlObjectFactory* factory = nullptr) {
  Hx::ScopedPrintCapture capture;
  T read;
  EXPECT_TRUE(readFromString(read, text, factory) && read == written) << text;
  EXPECT_EQ(capture.text(), "");
}

/// The document that the streaming interface writes for `vector` with `appended` appended after
/// its body; "" when a step fails.
template <class Vector, class Element>
std::string streamed(const Vector& vector, const Element& appended) {
  std::ostringstream stream;
  HxXmlWriter* writer = nullptr;
  const bool written = vector.writeHeaderToStream(stream, writer, "recording", "samples") &&
                       vector.writeBodyToStream(writer) && vector.appendElementToStream(writer, appended) &&
                       vector.writeFooterToStream(writer);
  return written && writer == nullptr ? stream.str() : std::string();
}

/// Expects a failed stream (`state`) to create no writer and every streaming step to refuse a
/// null writer.
template <class Vector, class Element>
void expectStreamingRefusals(const Vector& vector, const Element& element, std::ios::iostate state) {
  std::ostringstream failed;
  failed.setstate(state);
  HxXmlWriter* writer = nullptr;
  EXPECT_FALSE(vector.writeHeaderToStream(failed, writer, "x", "x") || writer != nullptr ||
               vector.writeBodyToStream(nullptr) || vector.appendElementToStream(nullptr, element) ||
               vector.writeFooterToStream(writer));
}

/// How often `what` occurs in `text`.
inline std::size_t occurrences(const std::string& text, const std::string& what) {
  std::size_t count = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++count;
  return count;
}

/// The captured messages as one text, each "type function: text|", where the function is the
/// reporting signature without its return type and "[with ...]" list (so
/// "HxXmlVectorType<ElementType>::erase(HxU32)") and a positive "Line count" reads "N".
inline std::string messages(const Hx::ScopedPrintCapture& capture) {
  std::string out;
  for (const Hx::PrintRecord& record : capture.records()) {
    const std::string& context = record.context;
    std::size_t start = context.find('(');
    for (int depth = 0; start > 0 && (depth > 0 || context[start - 1] != ' '); --start) {
      depth += context[start - 1] == '>' ? 1 : context[start - 1] == '<' ? -1 : 0;
    }
    out += std::to_string(record.type) + " " + context.substr(start, context.find(" [with") - start) + ": " +
           record.text + "|";
  }
  return std::regex_replace(out, std::regex("Line count: [1-9][0-9]*"), "Line count: N");
}

}  // namespace HxXmlTest
