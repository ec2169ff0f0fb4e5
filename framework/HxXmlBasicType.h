#pragma once
/// \file
/// HxXmlBasicType<T>: serialisable scalar (string, double, unsigned int, bool).

#include <string>

#include "framework/HxXmlObject.h"
#include "framework/HxXmlSerialisable.h"

/// A serialisable scalar. Instantiated for std::string, double, unsigned int and bool.
///
/// Written as the text of its element, as an attribute value, or as one scalar of a group in
/// data mode. Doubles use the shortest text that reads back exactly (HxDOUBLE2STRING, "inf",
/// "-inf", "nan"); bools "true"/"false" (read also "1"/"0"); unsigned ints decimal. A text that
/// does not parse is reported (type 4, with file and line) and makes `read` return false,
/// leaving the value unchanged.
template <class T>
class HxXmlBasicType : public HxXmlObject {
 public:
  /// The wrapped scalar type.
  using ValueType = T;

  HxXmlBasicType() : value_() {}
  /// Wraps `value`; implicit, so a plain value can stand where the wrapper is expected.
  HxXmlBasicType(const T& value) : value_(value) {}  // NOLINT: implicit by design
  /// Takes the value over; copies the flags.
  HxXmlBasicType(HxXmlBasicType&&) = default;
  /// Takes the value over; assigns the flags.
  HxXmlBasicType& operator=(HxXmlBasicType&&) = default;
  /// Assigns the value only; the flags are kept.
  HxXmlBasicType& operator=(const T& value) {
    value_ = value;
    return *this;
  }

  /// The value.
  const T& value() const { return value_; }
  /// The value, writable in place.
  T& value() { return value_; }
  /// Replaces the value.
  void setValue(const T& value) { value_ = value; }
  /// The value, so the wrapper reads as a plain `T`.
  operator const T&() const { return value_; }  // NOLINT: implicit by design

  // The class token, "basicType", is shared by every instantiation.
  HX_XML_SERIALISABLE(HxXmlBasicType);

  HxBoolean read(HxXmlReader& reader) override;
  HxBoolean readAttribute(HxXmlReader& reader) override;
  HxBoolean write(HxXmlWriter& writer) const override;
  void writeSchema(HxXmlSchema& schema) const override;
  HxBoolean isBasicType() const override { return true; }

  /// Values equal (two NaNs count as equal, so a NaN survives a round-trip comparison).
  bool operator==(const HxXmlBasicType& other) const;

  /// Parses `text` into the value; false (value unchanged) when it does not parse.
  HxBoolean fromText(const std::string& text);
  /// Text form of the value.
  std::string toText() const;

 private:
  T value_;
};

extern template class HxXmlBasicType<std::string>;
extern template class HxXmlBasicType<double>;
extern template class HxXmlBasicType<unsigned int>;
extern template class HxXmlBasicType<bool>;
