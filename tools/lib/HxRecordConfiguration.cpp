// Reading hxrecord's configuration documents, every problem placed at its file and line.

#include "tools/lib/HxRecordConfiguration.h"

#include "analysis/hdf5/HxHdf5ObjectFactory.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "tools/lib/HxRecordText.h"
#include "tools/lib/HxRecordValidation.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

bool startsWith(const std::string& text, const std::string& start) { return text.compare(0, start.size(), start) == 0; }

// A library message in the user's words: on one line, without the name of the class or
// function that printed it, the file and line it names (the message is placed anew) or the
// namespace of module tokens.
std::string libraryMessage(const std::string& message) {
  std::string text = hxOneLine(message);
  if (startsWith(text, "Hx")) {
    // "HxXmlCompoundType Error: ...", "HxXmlVariableVectorType::read() error: ..."
    const std::size_t colon = text.find(": ");
    const std::size_t blank = text.find(' ');
    if (colon != std::string::npos &&
        (blank == colon || text.compare(blank, 8, " Error: ") == 0 || text.compare(blank, 8, " error: ") == 0)) {
      text.erase(0, colon + 2);
    }
  }
  for (const char* place : {" File: ", " Filename: "}) {
    const std::size_t at = text.find(place);
    if (at != std::string::npos) text.erase(at);
  }
  const std::string& ns = HxSimAnalysis::ns.token();
  for (std::size_t at = text.find(ns); at != std::string::npos; at = text.find(ns, at)) text.erase(at, ns.size());
  return text;
}

// The objects of the libraries beside libhxSimulationAnalysis that a document may name: the
// HDF5 writer in a writer list.
const HxHdf5ObjectFactory& objectFactory() {
  static const HxHdf5ObjectFactory factory;
  return factory;
}

bool open(HxXmlReader& reader, const std::string& name, const std::string* text) {
  reader.setObjectFactory(&objectFactory());
  return text != nullptr ? reader.openMemory(*text, name) : reader.openFile(name);
}

// Moves the reader to the root element's start; false at a parse error or the document's end.
bool findRoot(HxXmlReader& reader) {
  for (;;) {
    const int kind = reader.next();
    if (kind == HxXmlReader::StartElement || kind == HxXmlReader::EmptyElement) return true;
    if (kind == HxXmlReader::Error || kind == HxXmlReader::EndOfDocument) return false;
  }
}

// The first pass: the document is well-formed, its root is `rootToken` and it holds what
// `root` reads, as hxValidateConfiguration checks it.
void checkDocument(const std::string& name, const std::string* text, const HxToken& rootToken, HxXmlObject& root,
                   HxRecordMessages& messages) {
  // The reader's own report of a parse error is taken from errorMessage().
  const Hx::ScopedPrintCapture quiet([](Hx::Print::PrintType, const std::string&, const std::string&) {});
  HxXmlReader reader;
  if (!open(reader, name, text) || !findRoot(reader)) {
    if (reader.hasError()) {
      messages.addLast(HxRecordMessages::Syntax, reader.errorMessage());
    } else {
      messages.add(HxRecordMessages::Syntax, reader.lineNumber(), [] { return "the document holds no element"; });
    }
    return;
  }
  if (reader.name() != rootToken) {
    messages.add(HxRecordMessages::Syntax, reader.lineNumber(), [&] {
      return "the root element is '" + hxDisplayToken(reader.name()) + "', expected '" + hxDisplayToken(rootToken) +
             "'";
    });
    return;
  }
  hxValidateConfiguration(reader, root, messages, objectFactory().tokens());
  // The rest of the document must be well-formed too.
  while (!reader.hasError() && reader.next() != HxXmlReader::EndOfDocument) {
  }
  if (reader.hasError()) messages.addLast(HxRecordMessages::Syntax, reader.errorMessage());
}

// The second pass: the library reads the document into `root`; whatever it prints about it is
// an error.
void readDocument(const std::string& name, const std::string* text, HxXmlObject& root, HxRecordMessages& messages) {
  HxXmlReader reader;
  const Hx::ScopedPrintCapture capture([&](Hx::Print::PrintType type, const std::string&, const std::string& message) {
    if (type < Hx::Print::Warning) return;
    // The reader's own report of a parse error is taken from errorMessage() below.
    if (reader.hasError() && startsWith(message, reader.errorMessage())) return;
    messages.add(HxRecordMessages::Library, reader.lineNumber(), [&] { return libraryMessage(message); });
  });
  const HxBoolean read = open(reader, name, text) && reader.readObject(root);
  if (reader.hasError()) {
    messages.addLast(HxRecordMessages::Syntax, reader.errorMessage());
  } else if (!read && messages.empty()) {
    messages.add(HxRecordMessages::Library, reader.lineNumber(), [] { return "invalid content"; });
  }
}

}  // namespace

HxBoolean hxReadConfiguration(const std::string& name, const std::string* text, const HxToken& rootToken,
                              HxXmlObject& root, std::vector<std::string>& errors,
                              [[maybe_unused]] std::vector<std::string>& warnings) {
  HxRecordMessages messages(name);
  checkDocument(name, text, rootToken, root, messages);
  if (messages.empty()) readDocument(name, text, root, messages);
  if (messages.empty()) return true;
  const std::vector<std::string> lines = messages.lines();
  errors.insert(errors.end(), lines.begin(), lines.end());
  return false;
}
