#include "framework/HxPrint.h"

#include <cstdio>
#include <locale>
#include <utility>

namespace Hx {

namespace {
const char* typeName(Print::PrintType type) {
  switch (type) {
    case Print::Debug:
      return "Debug";
    case Print::Info:
      return "Info";
    case Print::Notice:
      return "Notice";
    case Print::Warning:
      return "Warning";
    case Print::Error:
      return "Error";
  }
  return "Message";
}
}  // namespace

Print& Print::instance() {
  static Print printer;
  return printer;
}

PrintMessage Print::ostream(PrintType type, const char* context) { return PrintMessage(*this, type, context); }

Print::Sink Print::setSink(Sink sink) {
  std::lock_guard<std::mutex> lock(mutex_);
  Sink previous = std::move(sink_);
  sink_ = std::move(sink);
  return previous;
}

void Print::writeToStandardError(PrintType type, const std::string& context, const std::string& text) {
  // One fprintf per message so that messages of different threads do not interleave.
  const bool endsWithNewLine = !text.empty() && text.back() == '\n';
  std::fprintf(stderr, "[%s] %s: %s%s", typeName(type), context.c_str(), text.c_str(), endsWithNewLine ? "" : "\n");
}

void Print::deliver(PrintType type, const std::string& context, const std::string& text) {
  // The sink runs outside the lock so that it may print itself.
  Sink sink;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    sink = sink_;
  }
  if (sink) {
    sink(type, context, text);
  } else {
    writeToStandardError(type, context, text);
  }
}

PrintMessage::PrintMessage(Print& printer, Print::PrintType type, const char* context)
    : std::ostream(nullptr), printer_(printer), type_(type), context_(context ? context : "") {
  rdbuf(&buffer_);
  // Numbers in messages read the same whatever the program's locale.
  imbue(std::locale::classic());
}

PrintMessage::~PrintMessage() { printer_.deliver(type_, context_, buffer_.str()); }

ScopedPrintCapture::ScopedPrintCapture() {
  previous_ =
      Print::instance().setSink([this](Print::PrintType type, const std::string& context, const std::string& text) {
        records_.push_back(PrintRecord{type, context, text});
      });
}

ScopedPrintCapture::ScopedPrintCapture(Print::Sink handler)
    : previous_(Print::instance().setSink(std::move(handler))) {}

ScopedPrintCapture::~ScopedPrintCapture() { Print::instance().setSink(std::move(previous_)); }

std::string ScopedPrintCapture::text() const {
  std::string all;
  for (const PrintRecord& record : records_) all += record.text;
  return all;
}

}  // namespace Hx
