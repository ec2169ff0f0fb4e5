#include "framework/HxXmlBasicType.h"

#include <charconv>
#include <cmath>
#include <string_view>

#include "framework/HxNumberText.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlSchema.h"
#include "framework/HxXmlTokens.h"
#include "framework/HxXmlWriter.h"

namespace {

std::string_view trimmed(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

// Per-type parsing, text form and schema type.
bool parse(std::string_view text, std::string& value) {
  value.assign(text.data(), text.size());
  return true;
}
bool parse(std::string_view text, double& value) { return HxSTRING2DOUBLE(text, value); }
bool parse(std::string_view text, unsigned int& value) { return HxSTRING2UINT(text, value); }
bool parse(std::string_view text, bool& value) {
  text = trimmed(text);
  if (text == "true" || text == "1") {
    value = true;
  } else if (text == "false" || text == "0") {
    value = false;
  } else {
    return false;
  }
  return true;
}

const char* typeDescription(const std::string*) { return "text"; }
const char* typeDescription(const double*) { return "a real number"; }
const char* typeDescription(const unsigned int*) { return "an unsigned integer"; }
const char* typeDescription(const bool*) { return "a boolean (true or false)"; }

const char* schemaType(const std::string*) { return "xs:string"; }
const char* schemaType(const double*) { return "xs:double"; }
const char* schemaType(const unsigned int*) { return "xs:unsignedInt"; }
const char* schemaType(const bool*) { return "xs:boolean"; }

void writeValue(HxXmlWriter& writer, const std::string& value) { writer.writeScalar(value, true); }
void writeValue(HxXmlWriter& writer, double value) {
  char buffer[HxDoubleTextCapacity];
  writer.writeScalar(std::string_view(buffer, static_cast<size_t>(HxDOUBLE2STRING(value, buffer) - buffer)));
}
void writeValue(HxXmlWriter& writer, unsigned int value) {
  char buffer[16];
  const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof buffer, value);
  writer.writeScalar(std::string_view(buffer, static_cast<size_t>(result.ptr - buffer)));
}
void writeValue(HxXmlWriter& writer, bool value) { writer.writeScalar(value ? "true" : "false"); }

std::string textOf(const std::string& value) { return value; }
std::string textOf(double value) { return HxDOUBLE2STRING(value); }
std::string textOf(unsigned int value) { return HxINT2STRING(value, 10); }
std::string textOf(bool value) { return value ? "true" : "false"; }

template <class T>
bool sameValue(const T& a, const T& b) {
  return a == b;
}
template <>
bool sameValue<double>(const double& a, const double& b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

}  // namespace

template <class T>
HxBoolean HxXmlBasicType<T>::fromText(const std::string& text) {
  return parse(text, value_);
}

template <class T>
std::string HxXmlBasicType<T>::toText() const {
  return textOf(value_);
}

template <class T>
HxBoolean HxXmlBasicType<T>::read(HxXmlReader& reader) {
  // In data mode the value is the reader's current scalar; otherwise the element's text.
  const std::string* text = nullptr;
  std::string elementText;
  if (reader.dataMode()) {
    text = &reader.scalar();
  } else {
    if (!HxXmlObject::read(reader)) return false;
    if (!reader.readText(elementText)) {
      // A parse error has been reported already; elements inside a scalar are ours to report.
      if (reader.hasError()) return false;
      Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
          << "HxXmlBasicType Error: element \"" << reader.name().token() << "\" holds elements, expected "
          << typeDescription(static_cast<const T*>(nullptr)) << ".\n\tFile: " << reader.fileName()
          << "\n\tLine: " << reader.lineNumber() << "\n";
      return false;
    }
    text = &elementText;
  }
  setSpecified(true);
  if (parse(*text, value_)) return true;
  Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
      << "HxXmlBasicType Error: \"" << *text << "\" is not " << typeDescription(static_cast<const T*>(nullptr))
      << ".\n\tFile: " << reader.fileName() << "\n\tLine: " << reader.lineNumber() << "\n";
  return false;
}

template <class T>
HxBoolean HxXmlBasicType<T>::readAttribute(HxXmlReader& reader) {
  const std::string_view text = reader.currentAttributeValue();
  if (parse(text, value_)) {
    setSpecified(true);
    return true;
  }
  Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
      << "HxXmlBasicType Error: attribute value \"" << text << "\" is not "
      << typeDescription(static_cast<const T*>(nullptr)) << ".\n\tFile: " << reader.fileName()
      << "\n\tLine: " << reader.lineNumber() << "\n";
  return false;
}

template <class T>
HxBoolean HxXmlBasicType<T>::write(HxXmlWriter& writer) const {
  writeValue(writer, value_);
  return writer.good();
}

template <class T>
void HxXmlBasicType<T>::writeSchema(HxXmlSchema& schema) const {
  schema.simpleContent(schemaType(static_cast<const T*>(nullptr)));
}

template <class T>
bool HxXmlBasicType<T>::operator==(const HxXmlBasicType& other) const {
  return sameValue(value_, other.value_);
}

HX_XML_SERIALISABLE_DEFINITIONS_WITH((template <class T>), HxXml::HxBasicTypeToken, HxXmlBasicType<T>)

template class HxXmlBasicType<std::string>;
template class HxXmlBasicType<double>;
template class HxXmlBasicType<unsigned int>;
template class HxXmlBasicType<bool>;
