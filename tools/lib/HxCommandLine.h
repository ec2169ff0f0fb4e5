#pragma once
// HxCommandLine: the tools' command lines, parsed by CLI11 and reported in each tool's own words.

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}  // namespace CLI

/// How a tool words the problems of a command line that only the parser can see; each receives
/// the option or argument as it was written.
struct HxCommandLineWording {
  /// The last argument is an option that takes a value, and no value follows.
  std::function<std::string(const std::string& option)> missingValue;
  /// A flag was given a value ("--quiet=yes").
  std::function<std::string(const std::string& option)> flagValue;
  /// An argument that looks like an option names none ("--bogus", "--bogus=1" as "--bogus").
  std::function<std::string(const std::string& option)> unknownOption;
  /// An argument that is not an option, beyond the positional one when the tool takes one.
  std::function<std::string(const std::string& argument)> extraArgument;

  /// The wording of the tools that read one file: "--x needs a value", "--x takes no value",
  /// "unknown option '--x'", and `tooMany` for a second file.
  static HxCommandLineWording oneFile(const std::string& tooMany) {
    return {[](const std::string& name) { return name + " needs a value"; },
            [](const std::string& name) { return name + " takes no value"; },
            [](const std::string& name) { return "unknown option '" + name + "'"; },
            [tooMany](const std::string&) { return tooMany; }};
  }
};

/// One tool's command line, parsed by CLI11: "--name value", "--name=value", "-n value" and
/// "-nvalue"; short flags may be grouped ("-qd 2"). Options are handled in command-line order,
/// so a later value of an option replaces an earlier one. Each spelling of an option ("-d",
/// "--duration") is an option of its own for CLI11, so that a handler (and a message) knows the
/// name as it was written.
///
///     HxCommandLine line(wording);
///     line.addFlag({"-q", "--quiet"}, [&] { quiet = true; });
///     line.addValue({"-d", "--duration"}, [&](const std::string& name, const std::string& value) {
///       if (!parse(value, duration)) HxCommandLine::reject("invalid value '" + value + "' for " + name);
///     });
///     std::string error;
///     if (!line.parse(arguments, error)) { print error; exit 2; }
class HxCommandLine {
 public:
  /// Receives an option's name as written and its value. Refuses the value through `reject`.
  using ValueHandler = std::function<void(const std::string& name, const std::string& value)>;
  using FlagHandler = std::function<void()>;

  explicit HxCommandLine(HxCommandLineWording wording);
  ~HxCommandLine();
  HxCommandLine(const HxCommandLine&) = delete;
  HxCommandLine& operator=(const HxCommandLine&) = delete;

  /// An option that takes one value, under each of `spellings`.
  void addValue(const std::vector<std::string>& spellings, ValueHandler handler);
  /// An option without a value, under each of `spellings`.
  void addFlag(const std::vector<std::string>& spellings, FlagHandler handler);
  /// The one argument that is not an option; `name` names it in the usage ("FILE").
  void addPositional(const std::string& name, ValueHandler handler);

  /// Parses `arguments` (without the program name), calling the handlers. Returns false with a
  /// one-line message in `error` for a refused value, a missing value, a flag given a value, an
  /// unknown option or an argument too many. A last argument "--name=" hands its empty value to
  /// the handler first, so that the handler words what is wrong with it.
  bool parse(const std::vector<std::string>& arguments, std::string& error);

  /// For a handler: refuses the value; `message` is the whole error. Does not return.
  [[noreturn]] static void reject(const std::string& message);

 private:
  HxCommandLineWording wording_;
  std::unique_ptr<CLI::App> app_;
  std::map<std::string, ValueHandler> valueHandlers_;
};
