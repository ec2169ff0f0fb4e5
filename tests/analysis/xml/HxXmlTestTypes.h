#pragma once
// Small serialisable types and helpers shared by the container tests (and, for vectors of basic
// values, by the tests of the classes built on them).

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

/// A compound of two scalars, the element of the compound vectors under test.
class Point : public HxXmlCompoundType {
  HX_XML_SERIALISABLE(Point);

 public:
  Point() = default;
  Point(double xValue, const std::string& nameValue) : x(xValue), name(nameValue) {}
  void registerComponents() override {
    registerComponent("x", &x);
    registerComponent("name", &name);
  }
  bool operator==(const Point& other) const { return componentsEqual(other); }

  HxXmlBasicType<double> x;
  HxXmlBasicType<std::string> name;
};
HX_XML_SERIALISABLE_DEFINITIONS_WITH((inline), nameToken<kPoint>(), Point)

/// Abstract element class of the polymorphic vector under test.
class Shape : public HxXmlCompoundType {
 public:
  Shape() = default;
  explicit Shape(const std::string& labelValue) : label(labelValue) {}
  void registerComponents() override { registerComponent("label", &label); }
  bool operator==(const Shape& other) const { return label == other.label; }

  HxXmlBasicType<std::string> label;
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

/// An XML vector holding `values`.
template <class T>
HxXmlVectorType<HxXmlBasicType<T>> xmlVector(const std::vector<T>& values) {
  HxXmlVectorType<HxXmlBasicType<T>> vector;
  for (const T& value : values) vector.pushBack(HxXmlBasicType<T>(value));
  return vector;
}

/// The values an XML vector holds.
template <class T>
std::vector<T> plain(const HxXmlVectorType<HxXmlBasicType<T>>& vector) {
  std::vector<T> values;
  for (const auto& element : vector.vectorContainer()) values.push_back(element.value());
  return values;
}

/// Expects `text` to read back, without a message, into an object equal to `written`.
template <class T>
void expectReadsBack(const T& written, const std::string& text, const HxXmlObjectFactory* factory = nullptr) {
  Hx::ScopedPrintCapture capture;
  T read;
  EXPECT_TRUE(readFromString(read, text, factory) && read == written && capture.text().empty())
      << text << capture.text();
}

/// The captured messages as one text, each "type function: text|", where the function is the
/// reporting signature without its return type and "[with ...]" list (so
/// "HxXmlVectorType<T>::erase(HxU32)") and a positive "Line count" reads "N".
inline std::string messages(const Hx::ScopedPrintCapture& capture) {
  static const std::regex returnType("^.*? (?=(\\w+(<[^>]*>)?::)+[\\w\\[\\]]+\\()"), with(" \\[with .*");
  std::string out;
  for (const Hx::PrintRecord& record : capture.records()) {
    out += std::to_string(record.type) + " " +
           std::regex_replace(std::regex_replace(record.context, with, ""), returnType, "") + ": " + record.text + "|";
  }
  return std::regex_replace(out, std::regex("Line count: [1-9][0-9]*"), "Line count: N");
}

}  // namespace HxXmlTest
