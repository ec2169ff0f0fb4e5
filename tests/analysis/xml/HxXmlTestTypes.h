#pragma once
// Small serialisable types and helpers shared by the container tests.

#include <gtest/gtest.h>

#include <regex>
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
#include "tests/framework/HxFrameworkTestTypes.h"

namespace HxXmlTest {

/// Class tokens of the test classes.
inline constexpr char kPoint[] = "point";
inline constexpr char kCircle[] = "circle";
inline constexpr char kSquare[] = "square";
inline constexpr char kTriangle[] = "triangle";
inline constexpr char kShapes[] = "shapes";

using namespace HxFrameworkTest;  // documents to and from strings, class tokens

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
