#pragma once
// Serialisable test objects shared by the framework tests (a compound with every basic type,
// an enum, attributes, a read-only member, a nested compound and a member of a second
// namespace) and small helpers.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "framework/HxPrint.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlEnumType.h"
#include "framework/HxXmlObjectVisitor.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlSerialisable.h"
#include "framework/HxXmlWriter.h"
#include "tests/support/HxScopedTempDir.h"

namespace HxFrameworkTest {

/// Namespace of the test tokens.
inline const std::string kNs = "http://example.org/namespace/test#";
/// Start tag of a sample document, binding the prefix "t" to kNs.
inline const std::string kOpen = "<t:sample xmlns:t=\"" + kNs + "\">";

inline HxToken testToken(const char* local) { return HxToken(kNs + local); }

/// `piece` written `times` times in a row.
inline std::string repeat(const std::string& piece, int times) {
  std::string out;
  for (int i = 0; i < times; ++i) out += piece;
  return out;
}

/// The whole content of a file ("" when it cannot be read).
inline std::string slurp(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

/// True when `text` holds each of `pieces`, in this order.
inline bool holdsInOrder(const std::string& text, const std::vector<std::string>& pieces) {
  std::size_t at = 0;
  for (const std::string& piece : pieces) {
    if ((at = text.find(piece, at)) == std::string::npos) return false;
    at += piece.size();
  }
  return true;
}

/// Writes down a walk: "depth:token " for each object entered (the token after its last '#'), the
/// descriptions of the first object entered, and the exits. It enters the children of an object
/// unless `descend` refuses.
class WalkRecorder : public HxXmlObjectVisitor {
 public:
  HxBoolean enter(const HxXmlObject* object) override {
    if (entered.empty())
      for (const std::string& description : descriptions()) first += description + " | ";
    const std::string& token = currentToken().token();
    entered += std::to_string(depth()) + ":" + token.substr(token.rfind('#') + 1) + " ";
    return !descend || descend(object);
  }
  void exit(const HxXmlObject*) override { ++exits; }

  std::string first, entered;
  int exits = 0;
  std::function<bool(const HxXmlObject*)> descend;
};

/// The token `kName`, made on first use: the class token of a test class.
template <const char* kName>
const HxToken& nameToken() {
  static const HxToken token(kName);
  return token;
}

/// The class tokens of the test compounds, in kNs.
inline constexpr char kInner[] = "http://example.org/namespace/test#inner";
inline constexpr char kSample[] = "http://example.org/namespace/test#sample";

class Inner : public HxXmlCompoundType {
  HX_XML_SERIALISABLE(Inner);

 public:
  Inner() = default;
  HxXmlBasicType<double> gain;
  HxXmlBasicType<std::string> label;

  bool operator==(const Inner& other) const { return gain == other.gain && label == other.label; }
  void registerComponents() override {
    registerComponent(testToken("gain"), &gain);
    registerComponent(testToken("label"), &label);
  }
};
HX_XML_SERIALISABLE_DEFINITIONS_WITH((inline), nameToken<kInner>(), Inner)

class Sample : public HxXmlCompoundType {
  HX_XML_SERIALISABLE(Sample);

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
  HxXmlBasicType<double> foreign;       // of another namespace

  Sample() {
    mode.setEnumString(Idle, "idle");
    mode.setEnumString(Running, "running");
    mode.setEnumString(Stopped, "stopped");
    unit.setEnumString(0, "metre");
    unit.setEnumString(1, "millimetre");
  }
  bool operator==(const Sample& other) const { return componentsEqual(other); }
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
    registerComponent(HxToken("http://example.org/other#foreign"), &foreign);
  }
};

HX_XML_SERIALISABLE_DEFINITIONS_WITH((inline), nameToken<kSample>(), Sample)

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
  sample.foreign = 2.0;
  return sample;
}

/// The document the writer makes of `object` as the root element `token` (by default its own).
inline std::string writeToString(const HxXmlObject& object, const HxToken& token = HxToken()) {
  std::ostringstream out;
  HxXmlWriter("test", out).writeObject(object, token == HxToken() ? object.token() : token);
  return out.str();
}

/// Reads `object` from the whole document `text` (reported as "test.xml"), making unknown
/// elements with `factory` if given.
inline HxBoolean readFromString(HxXmlObject& object, const std::string& text,
                                const HxXmlObjectFactory* factory = nullptr) {
  HxXmlReader reader;
  reader.setObjectFactory(factory);
  return reader.openMemory(text, "test.xml") && reader.readObject(object);
}

/// What reading a document produced: the result, every message and what reached standard
/// error (libxml2 must print nothing itself).
struct ReadResult {
  bool result = false;
  std::vector<Hx::PrintRecord> messages;
  std::string standardError;
};

inline ReadResult readInto(HxXmlObject& object, const std::string& text, const std::string& name = "sample.xml") {
  ReadResult out;
  Hx::ScopedPrintCapture capture;
  testing::internal::CaptureStderr();
  {
    HxXmlReader reader;
    reader.openMemory(text, name);
    out.result = reader.readObject(object);
  }
  out.standardError = testing::internal::GetCapturedStderr();
  out.messages = capture.records();
  return out;
}

/// Runs xmllint with `arguments` on `document` (written to a temporary file); true when it
/// succeeds. Call only when xmllintAvailable().
inline bool xmllintAccepts(const std::string& document, const std::string& arguments = "") {
  const HxScopedTempDir dir("xmllint");
  const std::string path = dir.write("input.xml", document);
  return std::system(("xmllint --noout " + arguments + " '" + path + "' >/dev/null 2>&1").c_str()) == 0;
}

inline bool xmllintAvailable() { return std::system("command -v xmllint >/dev/null 2>&1") == 0; }

}  // namespace HxFrameworkTest
