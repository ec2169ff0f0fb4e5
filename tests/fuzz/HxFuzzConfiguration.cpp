// A configuration of hxrecord, one target per class (HX_FUZZ_CLASS, its root element
// HX_FUZZ_ROOT; see CMakeLists.txt): a document is read the way hxrecord reads its
// configurations (hxReadConfiguration), and one that reads is written with the framework's
// writer, read again, and must equal the first object and write the same text again. A document
// that does not read must say why, at its file and line, on one line per problem. A broken
// invariant is reported on standard error and ends the run with a trap, which libFuzzer records
// as a crash.

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/capture/HxDisplaySystemDataCapture.h"
#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlWriter.h"
#include "tools/lib/HxRecordConfiguration.h"

namespace {

[[noreturn]] void fail(const char* what, const std::string& detail = "") {
  std::fprintf(stderr, "invariant broken: %s\n%s\n", what, detail.c_str());
  __builtin_trap();
}

std::string written(const HxXmlObject& object) {
  std::ostringstream out;
  {
    HxXmlWriter writer("fuzz", out);
    if (!writer.writeObject(object, HxSimAnalysis::HX_FUZZ_ROOT) || !writer.good())
      fail("the writer refused what read");
  }
  return out.str();
}

// "name:line: text" on one line.
bool placed(const std::string& message, const std::string& name) {
  if (message.compare(0, name.size() + 1, name + ":") != 0) return false;
  std::size_t at = name.size() + 1;
  const std::size_t digits = at;
  while (at < message.size() && std::isdigit(static_cast<unsigned char>(message[at]))) ++at;
  return at > digits && message.compare(at, 2, ": ") == 0 && message.find('\n') == std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Hx::ScopedPrintCapture quiet;  // messages outside hxReadConfiguration's own capture
  const HxToken& root = HxSimAnalysis::HX_FUZZ_ROOT;
  const std::string name = "fuzz.xml", text(reinterpret_cast<const char*>(data), size);
  std::vector<std::string> errors, warnings;
  HX_FUZZ_CLASS first;
  if (!hxReadConfiguration(name, &text, root, first, errors, warnings)) {
    if (errors.empty()) fail("a document was refused without a message", text);
    for (const std::string& error : errors) {
      if (!placed(error, name)) fail("a message that does not name file and line on one line", error);
    }
    return 0;
  }
  if (!errors.empty()) fail("a document read with errors", errors.front());
  const std::string once = written(first);
  HX_FUZZ_CLASS second;
  if (!hxReadConfiguration("written.xml", &once, root, second, errors, warnings)) {
    fail("what the writer made does not read", once + (errors.empty() ? "" : "\n" + errors.front()));
  }
  if (!first.equality(&second)) fail("what was read back differs from what was written", once);
  if (written(second) != once) fail("writing what was read back gives another text", once);
  return 0;
}
