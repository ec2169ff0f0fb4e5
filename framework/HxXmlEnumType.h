#pragma once
/// \file
/// HxXmlEnumType<T>: an enumerated scalar, written and read by name.

#include <string>
#include <utility>
#include <vector>

#include "framework/HxXmlObject.h"
#include "framework/HxXmlSerialisable.h"

/// An enumerated scalar (instantiated for unsigned int) whose values have names. Written as the
/// name of its value (the decimal value when it has no name); read from a name or, failing
/// that, a decimal value. An unknown name is reported (type 4, with file and line) and makes
/// `read` return false, leaving the value unchanged.
template <class T>
class HxXmlEnumType : public HxXmlObject {
 public:
  HxXmlEnumType() : value_() {}
  /// Wraps `value`, without names; implicit, so a plain value can stand where the wrapper is
  /// expected.
  HxXmlEnumType(const T& value) : value_(value) {}  // NOLINT: implicit by design
  /// Assigns the value only; names and flags are kept.
  HxXmlEnumType& operator=(const T& value) {
    value_ = value;
    return *this;
  }

  /// Gives `value` the name `name` (replacing an earlier name of that value).
  void setEnumString(const T& value, const std::string& name);
  /// Looks a name up; true and `value` set when found, false (value untouched) otherwise.
  HxBoolean findEnumString(const std::string& name, T& value) const;
  /// The name of a value, or null when it has none.
  const std::string* enumString(const T& value) const;
  /// Every named value with its name, in the order the names were first given.
  const std::vector<std::pair<T, std::string>>& enumStrings() const { return names_; }

  /// The value.
  const T& value() const { return value_; }
  /// The value, so the wrapper reads as a plain `T`.
  operator const T&() const { return value_; }  // NOLINT: implicit by design

  HxBoolean read(HxXmlReader& reader) override;
  HxBoolean readAttribute(HxXmlReader& reader) override;
  HxBoolean write(HxXmlWriter& writer) const override;
  void writeSchema(HxXmlSchema& schema) const override;
  HxBoolean isBasicType() const override { return true; }

  // The class token, "enumType", is shared by every instantiation.
  HX_XML_SERIALISABLE(HxXmlEnumType);
  /// Compares values only (names are the owner's configuration).
  bool operator==(const HxXmlEnumType& other) const { return value_ == other.value_; }

 private:
  HxBoolean fromText(const std::string& text, HxXmlReader* reader);
  T value_;
  std::vector<std::pair<T, std::string>> names_;
};

extern template class HxXmlEnumType<unsigned int>;
