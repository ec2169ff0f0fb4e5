#pragma once
// The messages hxrecord gives about one configuration document: bounded in number, and the
// wording of unknown names (the known ones and the closest).

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// The messages about one document, each "file:line: text", in the order of their lines. Of
/// each kind only the first `keptPerKind` are kept; the others are counted, and one line after
/// the kept ones says how many more there were. A document with a million faults costs no more
/// memory than one with twenty.
class HxRecordMessages {
 public:
  /// Kinds of message; the limit applies to each kind on its own.
  enum Kind { Syntax, UnknownName, Repeated, Count, Value, Text, Library, KindCount };
  /// Messages kept of each kind.
  static constexpr std::size_t keptPerKind = 20;

  /// Messages about the document `fileName`.
  explicit HxRecordMessages(std::string fileName) : fileName_(std::move(fileName)) {}

  /// Adds a message of `kind` at `line`; `makeText` gives its text and is called only when the
  /// message is kept.
  template <class MakeText>
  void add(Kind kind, int line, MakeText makeText) {
    if (count(kind, line)) kept_.push_back(Message{kind, line, placed(line, makeText())});
  }
  /// Adds the message of an error that ended the reading; it names file and line itself.
  void addLast(Kind kind, const std::string& message);

  /// Whether no message was added.
  bool empty() const { return kept_.empty(); }
  /// The kept messages in the order of their lines, each kind's last one followed by
  /// "file:line: ... and N more messages like this" (the line of the first one left out) when
  /// there were more.
  std::vector<std::string> lines() const;

 private:
  struct Message {
    Kind kind;
    int line;
    std::string text;
  };

  // Counts a message; true when it is kept.
  bool count(Kind kind, int line);
  std::string placed(int line, const std::string& text) const;

  std::string fileName_;
  std::vector<Message> kept_;
  std::size_t total_[KindCount] = {};
  int firstLeftOut_[KindCount] = {};
};

/// What a place holds ("quantity", "quantities") and the names known there; `elements` when
/// they are element names of the module (an attribute's are not).
struct HxKnownNames {
  HxKnownNames(const char* singularName, const char* pluralName, std::vector<std::string> knownNames = {})
      : singular(singularName), plural(pluralName), known(std::move(knownNames)) {}
  const char* singular;
  const char* plural;
  std::vector<std::string> known;
  bool elements = true;
  /// HxKnownNames known at other places, with a note on where ("captured per link"): suggested too.
  std::vector<std::pair<std::string, std::string>> elsewhere;
};

/// "unknown quantity 'x'; did you mean 'y'? Known quantities: a, b"; `where` names the element
/// that holds the unknown one, when that helps. A known element name written without the
/// module's namespace is told so instead.
std::string hxUnknownNameMessage(const std::string& name, const HxKnownNames& names, const std::string& where);

/// `text` on one line (control characters as blanks), cut to a length that fits in a message at
/// a character boundary.
std::string hxExcerpt(const std::string& text);
/// hxExcerpt(text) in single quotes.
std::string hxQuotedExcerpt(const std::string& text);
/// "a, b, c".
std::string hxCommaList(const std::vector<std::string>& names);
