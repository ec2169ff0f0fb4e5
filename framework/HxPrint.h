#pragma once
/// \file
/// Hx::Print: the process-wide message channel of the toolkit.

#include <functional>
#include <mutex>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

/// The toolkit's message channel.
namespace Hx {

class PrintMessage;

/// The process-wide message channel.
///
/// Usage:
/// ```
/// Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
///     << "index (" << index << ") exceeds vector size (" << size << ").\n";
/// ```
///
/// `ostream` returns a stream object for one message; the message (type, context and the
/// text streamed into it) is handed to the sink when that object is destroyed, at the end of
/// the full expression. The default sink writes "[type] context: text" to standard error; a
/// program or a test installs its own with `setSink` (or `ScopedPrintCapture`).
class Print {
 public:
  /// Message types. The library uses 3 (Warning) for size mismatches and 4 (Error) for bad
  /// indices, unknown tokens and format errors.
  enum PrintType { Debug = 0, Info = 1, Notice = 2, Warning = 3, Error = 4 };

  /// Receives one complete message.
  using Sink = std::function<void(PrintType type, const std::string& context, const std::string& text)>;

  /// The process-wide printer.
  static Print& instance();

  /// A stream for one message of the given type; `context` is the full signature of the
  /// reporting function (`__PRETTY_FUNCTION__`).
  PrintMessage ostream(PrintType type, const char* context);

  /// Installs a sink and returns the previous one. An empty sink restores the default.
  Sink setSink(Sink sink);

  /// The default sink: "[type] context: text" on standard error.
  static void writeToStandardError(PrintType type, const std::string& context, const std::string& text);

  /// Delivers a finished message to the current sink.
  void deliver(PrintType type, const std::string& context, const std::string& text);

 private:
  Print() = default;
  std::mutex mutex_;
  Sink sink_;
};

/// One message being composed; see `Print::ostream`.
class PrintMessage : public std::ostream {
 public:
  /// Starts a message for `printer`; `context` must outlive the object (null counts as empty).
  /// Numbers are streamed in the classic locale, whatever the program's.
  PrintMessage(Print& printer, Print::PrintType type, const char* context);
  PrintMessage(const PrintMessage&) = delete;
  PrintMessage& operator=(const PrintMessage&) = delete;
  ~PrintMessage() override;

 private:
  Print& printer_;
  Print::PrintType type_;
  const char* context_;
  std::stringbuf buffer_;
};

/// One message as a sink received it.
struct PrintRecord {
  /// Message type.
  Print::PrintType type;
  /// Signature of the reporting function.
  std::string context;
  /// Text streamed into the message, as it was streamed.
  std::string text;
};

/// Captures every message printed during its lifetime instead of writing it to standard
/// error; restores the previous sink when destroyed. Intended for tests and for hosts that
/// want to collect diagnostics.
class ScopedPrintCapture {
 public:
  ScopedPrintCapture();
  /// Hands every message to `handler` as it arrives instead of keeping it (`records()` stays
  /// empty): for a host that places or routes each message at the moment it is printed.
  explicit ScopedPrintCapture(Print::Sink handler);
  ~ScopedPrintCapture();
  ScopedPrintCapture(const ScopedPrintCapture&) = delete;
  ScopedPrintCapture& operator=(const ScopedPrintCapture&) = delete;

  /// The captured messages, oldest first.
  const std::vector<PrintRecord>& records() const { return records_; }
  /// All message texts concatenated in order.
  std::string text() const;
  /// Forgets the captured messages; capturing goes on.
  void clear() { records_.clear(); }

 private:
  std::vector<PrintRecord> records_;
  Print::Sink previous_;
};

}  // namespace Hx
