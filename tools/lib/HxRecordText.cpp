// How hxrecord writes seconds and library messages into its own messages.

#include "tools/lib/HxRecordText.h"

#include <iomanip>
#include <sstream>

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

std::string hxSecondsText(double seconds) {
  std::ostringstream text;
  text << std::setprecision(6) << seconds;
  return text.str();
}

std::string hxOneLine(const std::string& text) {
  std::string line;
  bool blank = false;
  for (char c : text) {
    if (c == '\n' || c == '\r' || c == '\t' || c == ' ') {
      blank = !line.empty();
      continue;
    }
    if (blank) line += ' ';
    blank = false;
    line += c;
  }
  return line;
}
