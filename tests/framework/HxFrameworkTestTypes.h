#pragma once
// Serialisable test objects shared by the framework tests: a compound with every basic type,
// an enum, attributes, a read-only member and a nested compound.

#include <string>

#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlEnumType.h"

namespace HxFrameworkTest {

/// Namespace of the test tokens.
inline const std::string kNs = "http://example.org/namespace/test#";

inline HxToken testToken(const char* local) {
  HxToken token(kNs.c_str());
  token += local;
  return token;
}

class Inner : public HxXmlCompoundType {
 public:
  HxXmlBasicType<double> gain;
  HxXmlBasicType<std::string> label;

  Inner() = default;
  Inner(const Inner& other) : HxXmlCompoundType(other), gain(other.gain), label(other.label) {}
  Inner& operator=(const Inner& other) {
    HxXmlCompoundType::operator=(other);
    gain = other.gain;
    label = other.label;
    return *this;
  }
  bool operator==(const Inner& other) const { return gain == other.gain && label == other.label; }

  HxXmlObject* clone() const override { return new Inner(*this); }
  HxXmlObject* newObject() const override { return new Inner(); }
  static const HxToken& classToken() {
    static const HxToken token = testToken("inner");
    return token;
  }
  const HxToken& token() const override { return classToken(); }
  static HxXmlObject* creator() { return new Inner(); }
  HxBoolean equality(const HxXmlObject* other) const override {
    const auto* same = dynamic_cast<const Inner*>(other);
    return same && *this == *same;
  }
  void registerComponents() override {
    registerComponent(testToken("gain"), &gain);
    registerComponent(testToken("label"), &label);
  }
};

class Sample : public HxXmlCompoundType {
 public:
  enum Mode : unsigned int { Idle = 0, Running = 1, Stopped = 7 };

  HxXmlBasicType<std::string> name;
  HxXmlBasicType<double> time;
  HxXmlBasicType<unsigned int> count;
  HxXmlBasicType<bool> enabled;
  HxXmlEnumType<unsigned int> mode;
  Inner inner;
  HxXmlBasicType<std::string> version;  // read-only: written, never read back
  HxXmlBasicType<unsigned int> id;      // attribute
  HxXmlBasicType<double> scale;         // attribute
  HxXmlEnumType<unsigned int> unit;     // attribute

  Sample() { nameModes(); }
  Sample(const Sample& other)
      : HxXmlCompoundType(other),
        name(other.name),
        time(other.time),
        count(other.count),
        enabled(other.enabled),
        mode(other.mode),
        inner(other.inner),
        version(other.version),
        id(other.id),
        scale(other.scale),
        unit(other.unit) {}
  Sample& operator=(const Sample& other) {
    HxXmlCompoundType::operator=(other);
    name = other.name;
    time = other.time;
    count = other.count;
    enabled = other.enabled;
    mode = other.mode;
    inner = other.inner;
    version = other.version;
    id = other.id;
    scale = other.scale;
    unit = other.unit;
    return *this;
  }
  /// Compares everything that is read back (the read-only version is not).
  bool operator==(const Sample& other) const {
    return name == other.name && time == other.time && count == other.count && enabled == other.enabled &&
           mode == other.mode && inner == other.inner && id == other.id && scale == other.scale &&
           unit == other.unit;
  }

  HxXmlObject* clone() const override { return new Sample(*this); }
  HxXmlObject* newObject() const override { return new Sample(); }
  static const HxToken& classToken() {
    static const HxToken token = testToken("sample");
    return token;
  }
  const HxToken& token() const override { return classToken(); }
  static HxXmlObject* creator() { return new Sample(); }
  HxBoolean equality(const HxXmlObject* other) const override {
    const auto* same = dynamic_cast<const Sample*>(other);
    return same && *this == *same;
  }
  void registerComponents() override {
    registerAttributeComponent(HxToken("id"), &id);
    registerAttributeComponent(testToken("scale"), &scale);
    registerAttributeComponent(HxToken("unit"), &unit);
    registerComponent(testToken("name"), &name);
    registerComponent(testToken("time"), &time);
    registerComponent(testToken("count"), &count);
    registerComponent(testToken("enabled"), &enabled);
    registerComponent(testToken("mode"), &mode);
    registerComponent(testToken("inner"), &inner);
    registerComponentReadOnly(testToken("version"), &version);
  }

 private:
  void nameModes() {
    mode.setEnumString(Idle, "idle");
    mode.setEnumString(Running, "running");
    mode.setEnumString(Stopped, "stopped");
    unit.setEnumString(0, "metre");
    unit.setEnumString(1, "millimetre");
  }
};

/// A filled sample with awkward values.
inline Sample filledSample() {
  Sample sample;
  sample.name = std::string("arm <1> & \"two\"\ttab\nline \xC3\xBC end");
  sample.time = 0.1;
  sample.count = 4294967295u;
  sample.enabled = true;
  sample.mode = Sample::Stopped;
  sample.inner.gain = -2.5e-300;
  sample.inner.label = std::string("  padded  ");
  sample.version = std::string("v1");
  sample.id = 42u;
  sample.scale = 1e21;
  sample.unit = 1u;
  return sample;
}

}  // namespace HxFrameworkTest
