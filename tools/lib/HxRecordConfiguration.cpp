// Reading hxrecord's configuration documents, every problem placed at its file and line.

#include "tools/lib/HxRecordConfiguration.h"

#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "tools/lib/HxRecordText.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// The local name of a module token ("...sm#generalCapture" -> "generalCapture"); a token of
// another namespace is shown whole.
std::string displayToken(const HxToken& token) {
  const std::string& text = token.token();
  const std::string& ns = HxSimAnalysis::ns.token();
  if (text.compare(0, ns.size(), ns) == 0) return text.substr(ns.size());
  return text;
}

}  // namespace

HxBoolean hxReadConfiguration(const std::string& name, const std::string* text, const HxToken& rootToken,
                              HxXmlObject& root, std::vector<std::string>& errors, std::vector<std::string>& warnings) {
  HxXmlReader reader;
  const std::size_t errorsBefore = errors.size();
  // Library messages are placed at the reader's line when they arrive; the reader's own
  // messages already begin with "file:line:".
  auto place = [&](const std::string& message) {
    const std::string line = hxOneLine(message);
    const std::string prefix = name + ":";
    if (line.compare(0, prefix.size(), prefix) == 0) return line;
    return name + ":" + std::to_string(reader.lineNumber()) + ": " + line;
  };
  // Warnings are kept only when the document reads: after an error they are its echoes.
  std::vector<std::string> documentWarnings;
  Hx::ScopedPrintCapture capture([&](Hx::Print::PrintType type, const std::string&, const std::string& message) {
    if (type >= Hx::Print::Error) {
      errors.push_back(place(message));
    } else if (type == Hx::Print::Warning) {
      documentWarnings.push_back(place(message));
    }
  });

  const HxBoolean opened = text != nullptr ? reader.openMemory(*text, name) : reader.openFile(name);
  if (!opened) {
    if (errors.size() == errorsBefore) errors.push_back(reader.errorMessage());
    return false;
  }
  // The root element must be the expected one before the object is asked to read it.
  int kind = reader.next();
  while (kind != HxXmlReader::StartElement && kind != HxXmlReader::EmptyElement && kind != HxXmlReader::Error &&
         kind != HxXmlReader::EndOfDocument) {
    kind = reader.next();
  }
  if (kind == HxXmlReader::Error) {
    if (errors.size() == errorsBefore) errors.push_back(reader.errorMessage());
    return false;
  }
  if (kind == HxXmlReader::EndOfDocument) {
    errors.push_back(name + ":" + std::to_string(reader.lineNumber()) + ": the document holds no element");
    return false;
  }
  if (reader.name() != rootToken) {
    errors.push_back(name + ":" + std::to_string(reader.lineNumber()) + ": the root element is '" +
                     displayToken(reader.name()) + "', expected '" + displayToken(rootToken) + "'");
    return false;
  }
  const HxBoolean read = reader.readObject(root);
  if (!read && errors.size() == errorsBefore) {
    errors.push_back(reader.hasError() ? reader.errorMessage()
                                       : name + ":" + std::to_string(reader.lineNumber()) + ": invalid content");
  }
  if (!read || errors.size() != errorsBefore) return false;
  warnings.insert(warnings.end(), documentWarnings.begin(), documentWarnings.end());
  return true;
}
