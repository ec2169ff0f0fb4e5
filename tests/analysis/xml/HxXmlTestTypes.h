#pragma once
// Small serialisable types and helpers shared by the container tests.

#include <sstream>
#include <string>

#include "analysis/xml/HxXmlPairType.h"
#include "analysis/xml/HxXmlVariableVectorType.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlWriter.h"

namespace HxXmlTest {

/// A compound with a few scalar members, the element of the compound vectors under test.
class Point : public HxXmlCompoundType {
 public:
  Point() = default;
  Point(double xValue, unsigned int idValue, const std::string& nameValue) : x(xValue), id(idValue), name(nameValue) {}

  HxXmlObject* clone() const override { return new Point(*this); }
  HxXmlObject* newObject() const override { return new Point(); }
  HxBoolean equality(const HxXmlObject* other) const override {
    const auto* point = dynamic_cast<const Point*>(other);
    return point != nullptr && *this == *point;
  }
  const HxToken& token() const override { return classToken(); }
  static const HxToken& classToken() {
    static const HxToken token("point");
    return token;
  }
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

/// Abstract element class of the polymorphic vector under test.
class Shape : public HxXmlCompoundType {
 public:
  virtual double area() const = 0;
  void registerComponents() override { registerComponent("label", &label); }
  bool operator==(const Shape& other) const { return label == other.label; }

  HxXmlBasicType<std::string> label;
};

class Circle : public Shape {
 public:
  Circle() = default;
  Circle(const std::string& labelValue, double radiusValue) : radius(radiusValue) { label = labelValue; }

  double area() const override { return 3.0 * radius * radius; }
  HxXmlObject* clone() const override { return new Circle(*this); }
  HxXmlObject* newObject() const override { return new Circle(); }
  HxBoolean equality(const HxXmlObject* other) const override {
    const auto* circle = dynamic_cast<const Circle*>(other);
    return circle != nullptr && Shape::operator==(*circle) && radius == circle->radius;
  }
  const HxToken& token() const override { return classToken(); }
  static const HxToken& classToken() {
    static const HxToken token("circle");
    return token;
  }
  static HxXmlObject* creator() { return new Circle(); }
  void registerComponents() override {
    Shape::registerComponents();
    registerComponent("radius", &radius);
  }

  HxXmlBasicType<double> radius;
};

class Square : public Shape {
 public:
  Square() = default;
  Square(const std::string& labelValue, double sideValue) : side(sideValue) { label = labelValue; }

  double area() const override { return side * side; }
  HxXmlObject* clone() const override { return new Square(*this); }
  HxXmlObject* newObject() const override { return new Square(); }
  HxBoolean equality(const HxXmlObject* other) const override {
    const auto* square = dynamic_cast<const Square*>(other);
    return square != nullptr && Shape::operator==(*square) && side == square->side;
  }
  const HxToken& token() const override { return classToken(); }
  static const HxToken& classToken() {
    static const HxToken token("square");
    return token;
  }
  static HxXmlObject* creator() { return new Square(); }
  void registerComponents() override {
    Shape::registerComponents();
    registerComponent("side", &side);
  }

  HxXmlBasicType<double> side;
};

/// A shape that the vector has no creator for; only the reader's factory makes it.
class Triangle : public Shape {
 public:
  double area() const override { return 0.5 * base * height; }
  HxXmlObject* clone() const override { return new Triangle(*this); }
  HxXmlObject* newObject() const override { return new Triangle(); }
  HxBoolean equality(const HxXmlObject* other) const override {
    const auto* triangle = dynamic_cast<const Triangle*>(other);
    return triangle != nullptr && Shape::operator==(*triangle) && base == triangle->base &&
           height == triangle->height;
  }
  const HxToken& token() const override { return classToken(); }
  static const HxToken& classToken() {
    static const HxToken token("triangle");
    return token;
  }
  void registerComponents() override {
    Shape::registerComponents();
    registerComponent("base", &base);
    registerComponent("height", &height);
  }

  HxXmlBasicType<double> base;
  HxXmlBasicType<double> height;
};

/// A creator that makes something other than a shape, registered under "notAShape".
inline HxXmlObject* makeNotAShape() { return new HxXmlBasicType<double>(1.0); }

/// The polymorphic vector under test: creators for circles and squares (and a wrong one).
class ShapeVector : public HxXmlVariableVectorType<Shape> {
 public:
  ShapeVector() = default;
  explicit ShapeVector(HxU32 n) : HxXmlVariableVectorType<Shape>(n) {}

  HxXmlObject* clone() const override { return new ShapeVector(*this); }
  HxXmlObject* newObject() const override { return new ShapeVector(); }
  HxBoolean equality(const HxXmlObject* other) const override {
    const auto* vector = dynamic_cast<const ShapeVector*>(other);
    return vector != nullptr && *this == *vector;
  }
  const HxToken& token() const override { return classToken(); }
  static const HxToken& classToken() {
    static const HxToken token("shapes");
    return token;
  }
  void registerComponentCreators() override {
    registerComponentCreator(Circle::classToken(), &Circle::creator);
    registerComponentCreator(Square::classToken(), &Square::creator);
    registerComponentCreator("notAShape", &makeNotAShape);
  }
};

/// An object factory that makes triangles.
class TriangleFactory : public HxXmlObjectFactory {
 public:
  HxXmlObject* newObjectFromToken(const HxToken& token) const override {
    return token == Triangle::classToken() ? new Triangle() : nullptr;
  }
};

/// The XML text of `object` written as the root element `token`.
inline std::string writeToString(const HxXmlObject& object, const HxToken& token) {
  std::ostringstream out;
  {
    HxXmlWriter writer("test", out);
    writer.writeObject(object, token);
  }
  return out.str();
}

/// Reads `object` from the whole document `text` (reported as "test.xml").
inline HxBoolean readFromString(HxXmlObject& object, const std::string& text,
                                const HxXmlObjectFactory* factory = nullptr) {
  HxXmlReader reader;
  reader.setObjectFactory(factory);
  if (!reader.openMemory(text, "test.xml")) {
    return false;
  }
  return reader.readObject(object);
}

/// Whether a message context (the reporting function's __PRETTY_FUNCTION__) names the member
/// `function` (its name and the start of its parameter list) of the class template `className`.
inline bool contextNames(const Hx::PrintRecord& record, const std::string& className, const std::string& function) {
  const std::size_t classAt = record.context.find(className + "<");
  return classAt != std::string::npos && record.context.find(">::" + function, classAt) != std::string::npos;
}

/// Whether a message context contains `text`.
inline bool contextHas(const Hx::PrintRecord& record, const std::string& text) {
  return record.context.find(text) != std::string::npos;
}

}  // namespace HxXmlTest
