// How hxrecord writes seconds and library messages into its own messages.

#include "tools/lib/HxRecordText.h"

#include <algorithm>
#include <fstream>
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

std::string hxQuotedForMessage(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      quoted += "\\n";
    } else if (c == '\t') {
      quoted += "\\t";
    } else if (byte < 0x20 || byte == 0x7F) {
      static const char digits[] = "0123456789ABCDEF";
      quoted += "\\x";
      quoted += digits[byte >> 4];
      quoted += digits[byte & 0xF];
    } else {
      quoted += c;
    }
  }
  return quoted + "'";
}

std::string hxJoinedList(const std::vector<std::string>& items) {
  std::string list;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i != 0) list += i + 1 == items.size() ? " and " : ", ";
    list += items[i];
  }
  return list;
}

std::string hxReadTextFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return file ? text.str() : std::string();
}

HxU32 hxLineOfXmlText(const std::string& document, const std::string& text) {
  if (text.empty()) return 0;
  // The spellings a writer of the document may have used: as it stands, with XML's escapes,
  // and as a double-quoted data scalar (\" and \\ escaped).
  auto replaced = [](const std::string& from, const std::vector<std::pair<char, const char*>>& escapes) {
    std::string to;
    for (const char c : from) {
      const char* escape = nullptr;
      for (const auto& [raw, spelled] : escapes) {
        if (c == raw) escape = spelled;
      }
      if (escape != nullptr) {
        to += escape;
      } else {
        to += c;
      }
    }
    return to;
  };
  const std::string escaped = replaced(text, {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}});
  const std::vector<std::string> spellings = {
      text,
      escaped,
      replaced(escaped, {{'\'', "&apos;"}, {'"', "&quot;"}}),
      "\"" + replaced(text, {{'\\', "\\\\"}, {'"', "\\\""}}) + "\"",
  };
  std::size_t best = std::string::npos;
  for (const std::string& spelling : spellings) best = std::min(best, document.find(spelling));
  if (best == std::string::npos) return 0;
  return static_cast<HxU32>(std::count(document.begin(), document.begin() + static_cast<std::ptrdiff_t>(best), '\n') +
                            1);
}
