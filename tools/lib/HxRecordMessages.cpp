// The messages hxrecord gives about one configuration document.

#include "tools/lib/HxRecordMessages.h"

#include <algorithm>
#include <limits>

#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// Names longer than this get no suggestion: an edit distance costs the product of the lengths.
constexpr std::size_t kLongestSuggestedName = 200;

std::size_t editDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

}  // namespace

bool HxRecordMessages::count(Kind kind, int line) {
  const std::size_t seen = total_[kind]++;
  if (seen == keptPerKind) firstLeftOut_[kind] = line;
  return seen < keptPerKind;
}

std::string HxRecordMessages::placed(int line, const std::string& text) const {
  return fileName_ + ":" + std::to_string(line) + ": " + text;
}

void HxRecordMessages::addLast(Kind kind, const std::string& message) {
  if (count(kind, 0)) kept_.push_back(Message{kind, std::numeric_limits<int>::max(), message});
}

std::vector<std::string> HxRecordMessages::lines() const {
  std::vector<Message> sorted = kept_;
  std::stable_sort(sorted.begin(), sorted.end(), [](const Message& a, const Message& b) { return a.line < b.line; });
  std::size_t left[KindCount] = {};
  for (const Message& message : sorted) ++left[message.kind];
  std::vector<std::string> lines;
  for (const Message& message : sorted) {
    lines.push_back(message.text);
    if (--left[message.kind] == 0 && total_[message.kind] > keptPerKind) {
      lines.push_back(
          placed(firstLeftOut_[message.kind],
                 "... and " + std::to_string(total_[message.kind] - keptPerKind) + " more messages like this"));
    }
  }
  return lines;
}

// `text` on one line (control characters as blanks), cut to a length that fits in a message at
// a character boundary.
std::string hxExcerpt(const std::string& text) {
  constexpr std::size_t kLongest = 60;
  std::string line = text;
  if (line.size() > kLongest) {
    std::size_t end = kLongest - 3;
    while (end > 0 && (static_cast<unsigned char>(line[end]) & 0xC0) == 0x80) --end;
    line = line.substr(0, end) + "...";
  }
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  return line;
}

std::string hxQuotedExcerpt(const std::string& text) { return "'" + hxExcerpt(text) + "'"; }

// "a, b, c"
std::string hxCommaList(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

// "unknown quantity 'x'; did you mean 'y'? Known quantities: a, b"; `where` names the element
// that holds the unknown one, when that helps.
std::string hxUnknownNameMessage(const std::string& name, const HxKnownNames& names, const std::string& where) {
  std::string message = std::string("unknown ") + names.singular + " " + hxQuotedExcerpt(name);
  if (!where.empty()) message += (names.elements ? " in " : " of ") + hxQuotedExcerpt(where);
  if (names.known.empty())
    return message + std::string(", which ") + (names.elements ? "holds" : "takes") + " no " + names.plural;
  // A known element name without the module's namespace (or in another one).
  const std::string& ns = HxSimAnalysis::ns.token();
  std::vector<std::string> everywhere;
  if (names.elements) {
    everywhere = names.known;
    for (const auto& entry : names.elsewhere) everywhere.push_back(entry.first);
  }
  for (const std::string& known : everywhere) {
    if (name.size() >= known.size() && name.compare(name.size() - known.size(), known.size(), known) == 0 &&
        (name.size() == known.size() ||
         std::string("#/:").find(name[name.size() - known.size() - 1]) != std::string::npos)) {
      return message + ": the name needs the namespace '" + ns + "' (write sm:" + known + " with xmlns:sm=\"" + ns +
             "\")";
    }
  }
  const std::string* closest = nullptr;
  const std::string* note = nullptr;
  std::size_t best = 0;
  auto consider = [&](const std::string& candidate, const std::string* candidateNote) {
    const std::size_t distance = editDistance(name, candidate);
    if (!closest || distance < best) {
      closest = &candidate;
      note = candidateNote;
      best = distance;
    }
  };
  if (name.size() <= kLongestSuggestedName) {
    for (const std::string& known : names.known) consider(known, nullptr);
    for (const auto& [other, otherNote] : names.elsewhere) consider(other, &otherNote);
  }
  if (closest && best <= std::max<std::size_t>(2, closest->size() / 3)) {
    message += "; did you mean '" + *closest + "'" + (note ? " (" + *note + ")" : std::string()) + "?";
  } else {
    message += ".";
  }
  return message + " Known " + names.plural + ": " + hxCommaList(names.known);
}
