#pragma once
/// \file
/// HxXmlWriter: streaming, indented XML output.

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "framework/HxToken.h"
#include "framework/HxTypes.h"

class HxXmlObject;

/// Where the text of one scalar landed in the output: bytes [begin, end), counted from the
/// start of the report (see `HxXmlWriter::reportScalars`).
struct HxXmlScalarSpan {
  std::size_t begin = 0;  ///< Offset of the scalar's first byte.
  std::size_t end = 0;    ///< Offset just past its last byte.
};

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
/// separated by blanks and strings are quoted (`"..."` with `\"` and `\\` escaped) so that the
/// reader can split them again.
///
/// Once the stream fails, further output is dropped; `good` tells.
///
/// A caller that writes the same structure again and again with other values can learn where
/// each value lands (`reportScalars`) instead of searching the text.
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
  /// Whether the current element is in data mode.
  bool dataMode() const { return dataMode_; }
  /// While `spans` is not null, every scalar written as element text (not an attribute value)
  /// appends where its text landed: the bytes of the value as written (escaped; a quoted
  /// string with its quotes), counted from this call over what this writer puts (text written
  /// to `stream()` directly is not counted). The list is cleared first; null stops reporting.
  void reportScalars(std::vector<HxXmlScalarSpan>* spans);

  /// Writes a whole object as one element named by its token. Returns the object's result.
  HxBoolean writeObject(const HxXmlObject& object);
  /// Writes a whole object as one element named `token`.
  HxBoolean writeObject(const HxXmlObject& object, const HxToken& token);

  /// Number of open elements.
  int depth() const { return static_cast<int>(open_); }
  /// The document name given at construction.
  const std::string& name() const { return name_; }
  /// Whether the stream is still good.
  HxBoolean good() const { return stream_.good(); }
  /// The output stream. Text written to it directly goes out as is, unescaped, wherever the
  /// writer stands (inside an open start tag included).
  std::ostream& stream() { return stream_; }

  /// Registers a preferred prefix for a namespace URI; registered namespaces are declared on
  /// the root element of every document.
  static void registerNamespacePrefix(const std::string& uri, const std::string& prefix);

 private:
  // One namespace declaration in scope: declared on the element at `level` (1 = root).
  struct NamespaceBinding {
    std::string uri;
    std::string prefix;
    size_t level;
  };

  void beginOutput();
  void closeStartTag();
  void closePendingAttribute();
  // Writes the prefixed name of `token` into `out`, declaring its namespace on the open start
  // tag when it is not in scope yet.
  void qualifiedName(const HxToken& token, std::string& out);
  const std::string* prefixInScope(std::string_view uri) const;
  void declareNamespace(std::string_view uri, std::string_view prefix);
  void writeEscaped(std::string_view text, bool inAttribute, bool quoteEscapes = false);
  void newLineIndent(size_t level);
  void put(const char* text, size_t size);
  void reportScalar(size_t begin);
  void put(std::string_view text) { put(text.data(), text.size()); }
  void put(char c) { put(&c, 1); }

  std::string name_;
  std::ostream& stream_;
  bool declarationWritten_ = false;
  bool startTagOpen_ = false;
  bool attributePending_ = false;
  bool attributeDropped_ = false;
  bool dataMode_ = false;
  bool firstScalar_ = true;
  // Element stack: names are reused between elements so that steady-state writing does not
  // allocate; hasChildren_/hasText_ tell how to close each element.
  std::vector<std::string> names_;
  std::vector<char> hasChildren_;
  std::vector<char> hasText_;
  size_t open_ = 0;
  // Namespaces in scope (entries and their strings are reused), the registered ones copied at
  // construction, and the counter behind generated prefixes ("ns1", "ns2", ...).
  std::vector<NamespaceBinding> bindings_;
  size_t bindingCount_ = 0;
  std::vector<std::pair<std::string, std::string>> registered_;
  std::vector<std::pair<std::string, std::string>> assigned_;  // every prefix given so far
  unsigned generatedPrefixes_ = 0;
  std::string scratch_;
  // Bytes put so far, and the scalar report: where it goes and where it started.
  size_t written_ = 0;
  std::vector<HxXmlScalarSpan>* scalarSpans_ = nullptr;
  size_t reportStart_ = 0;
};
