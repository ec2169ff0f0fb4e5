// HxCommandLine: CLI11 does the parsing; what it cannot take is reworded here.

#include "tools/lib/HxCommandLine.h"

#include <CLI/CLI.hpp>

#include <utility>

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// What `reject` throws through CLI11 back to `parse`.
struct Rejection {
  std::string message;
};
}  // namespace

HxCommandLine::HxCommandLine(HxCommandLineWording wording)
    : wording_(std::move(wording)), app_(std::make_unique<CLI::App>()) {
  // Help is each tool's own option with its own text; unknown arguments are worded by the tool.
  app_->set_help_flag();
  app_->allow_extras();
}

HxCommandLine::~HxCommandLine() = default;

void HxCommandLine::reject(const std::string& message) { throw Rejection{message}; }

void HxCommandLine::addValue(const std::vector<std::string>& spellings, ValueHandler handler) {
  for (const std::string& name : spellings) {
    valueHandlers_[name] = handler;
    // Run as each value is read, so that a later value replaces an earlier one.
    app_->add_option_function<std::string>(name, [name, handler](const std::string& value) { handler(name, value); })
        ->trigger_on_parse();
  }
}

void HxCommandLine::addFlag(const std::vector<std::string>& spellings, FlagHandler handler) {
  for (const std::string& name : spellings) {
    // CLI11 hands a bare flag over as "true" and "--flag=text" as the text ("--flag=true" is
    // taken as the bare flag).
    const auto flagValue = wording_.flagValue;
    app_->add_option_function<std::string>(name,
                                           [name, handler, flagValue](const std::string& value) {
                                             if (value != "true") reject(flagValue(name));
                                             handler();
                                           })
        ->expected(0)
        ->trigger_on_parse();
  }
}

void HxCommandLine::addPositional(const std::string& name, ValueHandler handler) {
  app_->add_option_function<std::string>(name, [name, handler](const std::string& value) { handler(name, value); });
}

bool HxCommandLine::parse(const std::vector<std::string>& arguments, std::string& error) {
  std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
  try {
    try {
      app_->parse(std::move(reversed));
    } catch (const CLI::ArgumentMismatch&) {
      // A value is taken from the next argument whatever it is, so only the last argument can
      // lack one: "--name", "-n", a group ending in "-qn", or "--name=" with an empty value.
      const std::string& last = arguments.back();
      const bool isLong = last.compare(0, 2, "--") == 0;
      const std::size_t equals = isLong ? last.find('=') : std::string::npos;
      const std::string name = isLong ? last.substr(0, equals) : std::string("-") + last.back();
      const auto handler = valueHandlers_.find(name);
      if (handler == valueHandlers_.end()) throw;
      if (equals != std::string::npos) handler->second(name, "");
      error = wording_.missingValue(name);
      return false;
    }
  } catch (const Rejection& rejection) {
    error = rejection.message;
    return false;
  } catch (const CLI::ParseError& parseError) {
    error = parseError.what();
    return false;
  }
  // Arguments nothing took, in command-line order; the first is reported.
  const std::vector<std::string> extras = app_->remaining();
  if (extras.empty()) return true;
  const std::string& extra = extras.front();
  if (extra[0] == '-') {
    error = wording_.unknownOption(extra.compare(0, 2, "--") == 0 ? extra.substr(0, extra.find('=')) : extra);
  } else {
    error = wording_.extraArgument(extra);
  }
  return false;
}
