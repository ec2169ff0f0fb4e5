#pragma once
// Helpers shared by the capture tests: flag vectors and XML round trips through memory.

#include <initializer_list>
#include <sstream>
#include <string>

#include "analysis/types/HxDataCaptureType.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlWriter.h"

namespace HxCaptureTest {

inline HxDataCaptureType::FlagVector flags(std::initializer_list<bool> values) {
  HxDataCaptureType::FlagVector result;
  for (bool value : values) result.pushBack(value);
  return result;
}

/// The document `object` writes as its own element.
inline std::string writeToString(const HxXmlObject& object) {
  std::ostringstream out;
  {
    HxXmlWriter writer("test", out);
    writer.writeObject(object);
  }
  return out.str();
}

/// Reads `object` from a whole document, making unknown elements with `factory` if given.
inline HxBoolean readFromString(HxXmlObject& object, const std::string& text,
                                const HxXmlObjectFactory* factory = nullptr) {
  HxXmlReader reader;
  reader.setObjectFactory(factory);
  return reader.openMemory(text, "test.xml") && reader.readObject(object);
}

}  // namespace HxCaptureTest
