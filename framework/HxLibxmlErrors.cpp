#include "framework/HxLibxmlErrors.h"

#include <libxml/globals.h>

#include <cctype>
#include <string_view>

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// Messages that libxml2 writes through its generic channel rather than as structured errors;
// every error it reports is also raised as a structured error, which the handler gets.
void ignoreGenericMessage(void*, const char*, ...) {}
}  // namespace

HxLibxmlErrorRoute::HxLibxmlErrorRoute(void* context, xmlStructuredErrorFunc handler)
    : structured_(xmlStructuredError),
      structuredContext_(xmlStructuredErrorContext),
      generic_(xmlGenericError),
      genericContext_(xmlGenericErrorContext) {
  xmlSetStructuredErrorFunc(context, handler);
  xmlSetGenericErrorFunc(nullptr, &ignoreGenericMessage);
}

HxLibxmlErrorRoute::~HxLibxmlErrorRoute() {
  xmlSetStructuredErrorFunc(structuredContext_, structured_);
  xmlSetGenericErrorFunc(genericContext_, generic_);
}

std::string hxLibxmlMessage(const char* text) {
  std::string_view message = text ? std::string_view(text) : std::string_view("malformed document");
  if (message.compare(0, 3, "xml") == 0) {
    std::size_t end = 3;
    while (end < message.size() && (std::isalnum(static_cast<unsigned char>(message[end])) || message[end] == '_')) {
      ++end;
    }
    if (message.compare(end, 2, ": ") == 0) message.remove_prefix(end + 2);
  }
  std::string line;
  for (const char c : message) {
    if (c != '\n' && c != '\r') {
      line += c;
    } else if (!line.empty() && line.back() != ' ') {
      line += ' ';
    }
  }
  while (!line.empty() && line.back() == ' ') line.pop_back();
  return line;
}

// Messages that libxml2 writes through its generic channel rather than as structured errors;
// every error it reports is also raised as a structured error, which the reader keeps.
void ignoreGenericMessage(void*, const char*, ...) {}
