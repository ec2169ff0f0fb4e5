#pragma once
// HxXmlWriter: streaming, indented XML output.

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "framework/HxToken.h"
#include "framework/HxTypes.h"

class HxXmlObject;

/// Writes well-formed, escaped, indented XML to an output stream as it goes; no document is
/// held in memory.
///
/// The XML declaration is written before the first element. Elements are named by tokens; a
/// namespaced token ("URI#local") is written with a prefix, and its namespace is declared on
/// the root element when registered with `registerNamespacePrefix`, otherwise on the element
/// that uses it. Child elements go on lines of their own, indented by two blanks per level;
/// text stays on the line of its element.
///
/// Scalars: `writeScalar` writes the value of the attribute announced by `addAttribute`, or
/// the text of the current element. In data mode (inside a group of scalars) scalars are
/// separated by blanks and strings are quoted ("..." with \" and \\ escaped) so that the reader
/// can split them again.
///
/// Once the stream fails, further output is dropped; `good` tells.
class HxXmlWriter {
 public:
  /// `name` names the document (written as a comment after the declaration).
  HxXmlWriter(const std::string& name, std::ostream& stream);
  /// Flushes; does not close elements left open (a document abandoned stays unclosed).
  virtual ~HxXmlWriter();
  HxXmlWriter(const HxXmlWriter&) = delete;
  HxXmlWriter& operator=(const HxXmlWriter&) = delete;

  /// Starts an element; the start tag stays open for attributes until content follows.
  void startElement(const HxToken& token);
  /// Ends the current element (`<a/>` when it had no content). No-op when none is open.
  void endElement();
  /// Announces an attribute of the current start tag; the next `writeScalar` is its value.
  void addAttribute(const HxToken& token);
  /// Writes a scalar value (see class comment). `isString` asks for quoting in data mode.
  void writeScalar(std::string_view text, bool isString = false);
  /// Data mode on or off for the current element (ending the element also ends it).
  void setDataMode(bool on);
  bool dataMode() const { return dataMode_; }

  /// Writes a whole object as one element named by its token. Returns the object's result.
  HxBoolean writeObject(const HxXmlObject& object);
  /// Writes a whole object as one element named `token`.
  HxBoolean writeObject(const HxXmlObject& object, const HxToken& token);

  /// Number of open elements.
  int depth() const { return static_cast<int>(open_); }
  const std::string& name() const { return name_; }
  /// Whether the stream is still good.
  HxBoolean good() const { return stream_.good(); }
  std::ostream& stream() { return stream_; }

  /// Registers a preferred prefix for a namespace URI; registered namespaces are declared on
  /// the root element of every document.
  static void registerNamespacePrefix(const std::string& uri, const std::string& prefix);

 private:
  void closeStartTag();
  void writeName(const HxToken& token, bool declareIfNeeded);
  void writeEscaped(std::string_view text, bool inAttribute);
  void newLineIndent(size_t level);

  std::string name_;
  std::ostream& stream_;
  bool declarationWritten_ = false;
  bool startTagOpen_ = false;
  bool attributePending_ = false;
  bool dataMode_ = false;
  bool firstScalar_ = true;
  // Element stack: names are reused between elements so that steady-state writing does not
  // allocate; hasChildren_/hasText_ tell how to close each element.
  std::vector<std::string> names_;
  std::vector<char> hasChildren_;
  std::vector<char> hasText_;
  size_t open_ = 0;
};
