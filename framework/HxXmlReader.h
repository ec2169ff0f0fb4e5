#pragma once
/// \file
/// HxXmlReader: pull reader over libxml2's xmlTextReader.

#include <memory>
#include <string>

#include "framework/HxToken.h"
#include "framework/HxTypes.h"

class HxXmlObject;

/// Makes objects from element tokens; a reader may carry one for polymorphic containers that
/// meet a token they have no creator for.
class HxXmlObjectFactory {
 public:
  virtual ~HxXmlObjectFactory();
  /// A new object for the token, owned by the caller, or null.
  virtual HxXmlObject* newObjectFromToken(const HxToken& token) const = 0;
};

/// Pull reader over libxml2's xmlTextReader, from a file or from text in memory.
///
/// Node kinds: 1 element start, 2 element end, 3 empty element (`<a/>`: start and end in one),
/// 4 character data, 0 end of document, -1 error. `next` skips comments, processing
/// instructions and whitespace-only text.
///
/// Positioning contract for `HxXmlObject::read`: the reader is on the object's element start
/// (kind 1 or 3); on return it is on the last node of that element (its end, or the empty
/// element itself). `readChild` enforces this after any child's read.
///
/// Safety: the network is never used, external entities are never loaded, entities are never
/// expanded, libxml2's default size and depth limits are kept, and a document type declaration
/// or entity reference ends reading with an error. An element with more than
/// `maxAttributesPerElement` attributes is an error too, found by a scan of the bytes before
/// libxml2 parses them (its check for repeated attribute names takes time quadratic in their
/// number). A malformed document makes `next` return -1; `readObject` then returns false and
/// prints a message naming file and line ("file:line: text", libxml2's text or the reader's
/// own: "the document is empty", "the document holds no element", "an element has more than
/// 256 attributes"). libxml2 writes nothing to standard error while the reader calls it.
/// Nothing throws.
class HxXmlReader {
 public:
  /// Node kinds returned by `next` and `nodeKind`.
  enum NodeKind { Error = -1, EndOfDocument = 0, StartElement = 1, EndElement = 2, EmptyElement = 3, Text = 4 };
  /// The most attributes (namespace declarations included) one element may have.
  static constexpr int maxAttributesPerElement = 256;

  HxXmlReader();
  ~HxXmlReader();
  HxXmlReader(const HxXmlReader&) = delete;
  HxXmlReader& operator=(const HxXmlReader&) = delete;

  /// Opens a file. Returns false (and prints a message) when it cannot be opened.
  HxBoolean openFile(const std::string& path);
  /// Reads from text in memory; `name` is reported as the file name in messages.
  HxBoolean openMemory(const std::string& text, const std::string& name = "<memory>");

  /// Advances to the next node and returns its kind.
  int next();
  /// Kind of the current node.
  int nodeKind() const;
  /// Depth of the current node (the root element is at depth 0).
  int depth() const;
  /// Name of the current element as a token ("namespaceURI" + "localName").
  const HxToken& name() const;
  /// Text of the current character-data node.
  const std::string& text() const;

  /// Number of attributes of the current element (namespace declarations excluded).
  int attributeCount() const;
  /// Name of the i-th attribute as a token; the empty token for a bad index.
  const HxToken& attributeName(int index) const;
  /// Value of the i-th attribute; the empty string for a bad index.
  const char* attributeValue(int index) const;
  /// Selects the attribute that `currentAttributeValue` (and HxXmlObject::readAttribute) reads.
  void setCurrentAttribute(int index);
  /// Value of the selected attribute; the empty string when the selection is not a valid index.
  const char* currentAttributeValue() const;

  /// Data mode (1 on, 0 off): the current character data is split into scalars, separated by
  /// whitespace; a scalar in double quotes may hold blanks, with `\"` and `\\` escaped.
  void setDataMode(int on);
  /// 1 in data mode, else 0. Data mode ends by itself once its scalars are used up, on `next` and
  /// on a parse error.
  int dataMode() const;
  /// In data mode: moves to the next scalar and returns true, or, when none is left, moves to
  /// the end of the element that holds the data, switches data mode off and returns false.
  HxBoolean nextScalar();
  /// The current scalar in data mode.
  const std::string& scalar() const;

  /// On an element start: collects its character data into `out` and leaves the reader on the
  /// element's end (or on the empty element). Returns false, after skipping it, when the
  /// element holds child elements.
  HxBoolean readText(std::string& out);
  /// On an element start: moves to its end without reading it (no-op on an empty element).
  HxBoolean skipElement();
  /// Reads a child object from the element start the reader is on, then makes sure the reader
  /// is on that element's end whatever the child's read did. Returns the child's result.
  HxBoolean readChild(HxXmlObject& child);
  /// Moves forward until the reader is on the end of the element that started at `depth`
  /// (no-op when it already is).
  HxBoolean skipToEndOf(int depth);
  /// On an element start: calls `readChild(name)` for each child element, the reader on the
  /// child's start, and goes on after the child's end whatever the call did; character data
  /// between children is passed over. Returns false when a call returned false (the other
  /// children are still read) or when the document ends or breaks before the element's end.
  template <class ReadChild>
  HxBoolean readChildren(ReadChild readChild);

  /// Reads a whole document into `root`: moves to the first element, reads it with
  /// `root.read`, then checks the rest of the document. Returns false, with a message naming
  /// file and line, on any parse error or when `root.read` fails.
  HxBoolean readObject(HxXmlObject& root);

  /// Name of the file (or memory document) being read.
  const char* fileName() const;
  /// Line number of the current node (0 when unknown).
  int lineNumber() const;
  /// Whether a parse error occurred.
  HxBoolean hasError() const;
  /// The first parse error as "file:line: text"; empty when there is none.
  const std::string& errorMessage() const;

  /// The object factory; null when none was set.
  const HxXmlObjectFactory* objectFactory() const;
  /// Sets the object factory (may be null); the reader does not own it, so it must outlive the
  /// reading.
  void setObjectFactory(const HxXmlObjectFactory* factory);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

template <class ReadChild>
HxBoolean HxXmlReader::readChildren(ReadChild readChild) {
  if (nodeKind() == EmptyElement) return true;
  const int parentDepth = depth();
  HxBoolean result = true;
  HxToken token;
  for (;;) {
    const int kind = next();
    if (kind == StartElement || kind == EmptyElement) {
      // The token is copied: reading the child moves the reader and with it name().
      token.assign(name().token());
      const int childDepth = depth();
      if (!readChild(token)) result = false;
      if (!skipToEndOf(childDepth)) return false;
    } else if (kind == EndElement && depth() == parentDepth) {
      return result;
    } else if (kind != Text) {
      // End of document, a parse error, or an end that is not ours.
      return false;
    }
  }
}
