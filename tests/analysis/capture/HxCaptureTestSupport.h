#pragma once
// Helpers shared by the capture tests: XML round trips, flag vectors, and a probe data capture
// type that records how it is called.

#include <sstream>
#include <string>
#include <vector>

#include "analysis/types/HxDataCaptureType.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlWriter.h"

namespace HxCaptureTest {

using Flags = HxXmlVectorType<HxXmlBasicType<bool>>;

inline Flags flags(std::initializer_list<bool> values) {
  Flags result;
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

/// Reads `object` from a whole document.
inline HxBoolean readFromString(HxXmlObject& object, const std::string& text,
                                const HxXmlObjectFactory* factory = nullptr) {
  HxXmlReader reader;
  reader.setObjectFactory(factory);
  if (!reader.openMemory(text, "test.xml")) return false;
  return reader.readObject(object);
}

/// What the probe types saw at their last capture, and how often they were called.
struct ProbeLog {
  int calls = 0;
  HxU32 manipulatorIndex = 0;
  HxU32 elementIndex = 0;
};

inline ProbeLog& probeLog() {
  static ProbeLog log;
  return log;
}

/// A data capture type of a chosen level and capture result, two columns wide, that records
/// its calls in `probeLog()`. Not registered with the type vector: tests add it by object or
/// read it through `HxProbeFactory`.
template <HxU32 Level, bool Result>
class HxProbeDataCaptureType : public HxDataCaptureType {
 public:
  HxProbeDataCaptureType() {
    static const char* const labels[] = {"A", "B"};
    initializeColumns(2, labels);
  }
  static const HxToken& classToken() {
    static const HxToken token = [] {
      HxToken t(HxSimAnalysis::ns);
      t += std::string("probe") + std::to_string(Level) + (Result ? "Ok" : "Fail");
      return t;
    }();
    return token;
  }
  static HxXmlObject* creator() { return new HxProbeDataCaptureType(); }
  HxXmlObject* clone() const override { return new HxProbeDataCaptureType(*this); }
  HxXmlObject* newObject() const override { return new HxProbeDataCaptureType(); }
  HxBoolean equality(const HxXmlObject* other) const override {
    const auto* probe = dynamic_cast<const HxProbeDataCaptureType*>(other);
    return probe != nullptr && *this == *probe;
  }
  const HxToken& token() const override { return classToken(); }
  const std::string& description() const override {
    static const std::string text = "Probe";
    return text;
  }
  HxU32 dataSize() const override { return 2; }
  HxU32 type() const override { return Level; }
  HxBoolean captureData(const HxSystemSimulation&, const HxU32& manipulatorIndex,
                        const HxU32& elementIndex) const override {
    resetData();
    ProbeLog& log = probeLog();
    ++log.calls;
    log.manipulatorIndex = manipulatorIndex;
    log.elementIndex = elementIndex;
    column(0) = manipulatorIndex;
    column(1) = elementIndex;
    return Result;
  }
};

/// Makes probe types from their tokens while reading.
class HxProbeFactory : public HxXmlObjectFactory {
 public:
  HxXmlObject* newObjectFromToken(const HxToken& token) const override {
    if (token == HxProbeDataCaptureType<0, true>::classToken()) return new HxProbeDataCaptureType<0, true>();
    if (token == HxProbeDataCaptureType<1, true>::classToken()) return new HxProbeDataCaptureType<1, true>();
    return nullptr;
  }
};

}  // namespace HxCaptureTest
