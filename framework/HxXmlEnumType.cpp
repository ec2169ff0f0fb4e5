#include "framework/HxXmlEnumType.h"

#include <charconv>
#include <string_view>

#include "framework/HxNumberText.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlSchema.h"
#include "framework/HxXmlTokens.h"
#include "framework/HxXmlWriter.h"

template <class T>
void HxXmlEnumType<T>::setEnumString(const T& value, const std::string& name) {
  for (auto& entry : names_) {
    if (entry.first == value) {
      entry.second = name;
      return;
    }
  }
  names_.emplace_back(value, name);
}

template <class T>
HxBoolean HxXmlEnumType<T>::findEnumString(const std::string& name, T& value) const {
  for (const auto& entry : names_) {
    if (entry.second == name) {
      value = entry.first;
      return true;
    }
  }
  return false;
}

template <class T>
const std::string* HxXmlEnumType<T>::enumString(const T& value) const {
  for (const auto& entry : names_) {
    if (entry.first == value) return &entry.second;
  }
  return nullptr;
}

template <class T>
HxBoolean HxXmlEnumType<T>::fromText(const std::string& text, HxXmlReader* reader) {
  std::string_view name(text);
  while (!name.empty() && (name.front() == ' ' || name.front() == '\t' || name.front() == '\n' || name.front() == '\r'))
    name.remove_prefix(1);
  while (!name.empty() && (name.back() == ' ' || name.back() == '\t' || name.back() == '\n' || name.back() == '\r'))
    name.remove_suffix(1);
  for (const auto& entry : names_) {
    if (entry.second == name) {
      value_ = entry.first;
      return true;
    }
  }
  unsigned int number = 0;
  if (HxSTRING2UINT(name, number)) {
    value_ = static_cast<T>(number);
    return true;
  }
  auto message = Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__);
  message << "HxXmlEnumType Error: \"" << name << "\" is not a known name.";
  if (reader) message << "\n\tFile: " << reader->fileName() << "\n\tLine: " << reader->lineNumber();
  message << "\n";
  return false;
}

template <class T>
HxBoolean HxXmlEnumType<T>::read(HxXmlReader& reader) {
  if (reader.dataMode()) {
    setSpecified(true);
    return fromText(reader.scalar(), &reader);
  }
  if (!HxXmlObject::read(reader)) return false;
  std::string text;
  if (!reader.readText(text)) {
    // A parse error has been reported already; elements inside a scalar are ours to report.
    if (reader.hasError()) return false;
    Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
        << "HxXmlEnumType Error: element \"" << reader.name().token() << "\" holds elements, expected a name."
        << "\n\tFile: " << reader.fileName() << "\n\tLine: " << reader.lineNumber() << "\n";
    return false;
  }
  return fromText(text, &reader);
}

template <class T>
HxBoolean HxXmlEnumType<T>::readAttribute(HxXmlReader& reader) {
  if (!fromText(reader.currentAttributeValue(), &reader)) return false;
  setSpecified(true);
  return true;
}

template <class T>
HxBoolean HxXmlEnumType<T>::write(HxXmlWriter& writer) const {
  if (const std::string* name = enumString(value_)) {
    writer.writeScalar(*name, true);
  } else {
    char buffer[16];
    const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof buffer, value_);
    writer.writeScalar(std::string_view(buffer, static_cast<size_t>(result.ptr - buffer)));
  }
  return writer.good();
}

template <class T>
void HxXmlEnumType<T>::writeSchema(HxXmlSchema& schema) const {
  std::vector<std::string> names;
  names.reserve(names_.size());
  for (const auto& entry : names_) names.push_back(entry.second);
  schema.enumerationContent(names.data(), static_cast<int>(names.size()));
}

HX_XML_SERIALISABLE_DEFINITIONS_WITH((template <class T>), HxXml::HxEnumTypeToken, HxXmlEnumType<T>)

template class HxXmlEnumType<unsigned int>;
