#pragma once
/// \file
/// HxXmlSchema: writes an XML Schema (XSD) describing objects' elements.

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "framework/HxToken.h"
#include "framework/HxTypes.h"

class HxXmlObject;

/// Writes an XML Schema document describing the element of one root object and, through the
/// objects' `writeSchema`, everything beneath it.
///
/// The target namespace is that of the root token. Elements of the target namespace are
/// declared qualified, elements without a namespace (the framework's own, such as "group",
/// "element", "first") unqualified, and elements of any other namespace are admitted by a
/// wildcard. Child elements of a compound may come in any order (they are read by token), so
/// they are declared in a repeated choice.
class HxXmlSchema {
 public:
  /// A schema writer on `stream`, which must outlive it; failures show in the stream's state.
  explicit HxXmlSchema(std::ostream& stream);

  /// Writes the whole schema document for `root` held in an element named `rootToken`.
  HxBoolean writeDocument(const HxXmlObject& root, const HxToken& rootToken);

  // Building blocks for HxXmlObject::writeSchema implementations. Each object describes the
  // content of the element that its parent declared.
  /// Opens a complex type, with mixed content (text between the children) when `mixed`;
  /// `endComplexType` closes it.
  void beginComplexType(bool mixed = false);
  /// Closes the innermost complex type, admitting foreign-namespace attributes by a wildcard when
  /// one of its attributes belongs to another namespace.
  void endComplexType();
  /// Opens a choice of child elements, repeated any number of times unless `repeated` is
  /// false; `endChoice` closes it.
  void beginChoice(bool repeated = true);
  /// Closes the innermost choice.
  void endChoice();
  /// Opens a sequence of child elements, in the order declared; `endSequence` closes it.
  void beginSequence();
  /// Closes the innermost sequence.
  void endSequence();
  /// Declares a child element holding `content` (described by its writeSchema).
  void element(const HxToken& token, const HxXmlObject& content, int minOccurs = 0, int maxOccurs = 1);
  /// Declares a child element with simple content of an XSD built-in type ("xs:double").
  void simpleElement(const HxToken& token, const std::string& xsdType, int minOccurs = 0, int maxOccurs = 1);
  /// Declares an attribute of an XSD built-in type.
  void attribute(const HxToken& token, const std::string& xsdType);
  /// Declares an attribute whose simple type `content` describes (scalars only).
  void attribute(const HxToken& token, const HxXmlObject& content);
  /// Simple content of an XSD built-in type, for scalars (writes an xs:simpleType).
  void simpleContent(const std::string& xsdType);
  /// Simple content restricted to the given names, for enumerations.
  void enumerationContent(const std::string* names, int count);
  /// Any content (used where nothing more precise is known).
  void anyContent();

  /// The output stream, for content the building blocks do not cover.
  std::ostream& stream() { return stream_; }

 private:
  void indent();
  void line(const std::string& text);
  void writeAttributeValue(std::string_view text);
  // A union of `memberType` and the tokens `names[0 .. count - 1]`.
  void unionWithNames(const std::string& memberType, const std::string* names, int count);
  // Opens a group of element declarations (choice or sequence) with its wildcard bookkeeping.
  void beginGroup(const std::string& openingTag);
  // Closes the group opened last.
  void endGroup(const std::string& closingTag);
  // Starts an attribute declaration for `token` (name and form, the tag left open); false, with
  // nothing written, for an attribute of another namespace, which the enclosing type then admits.
  bool openAttributeDeclaration(const HxToken& token);
  // Writes the opening of an element declaration for `token`; returns false when the token's
  // namespace is a foreign one (a wildcard was written instead, or is due).
  bool openElementDeclaration(const HxToken& token, int minOccurs, int maxOccurs, bool selfClosing,
                              const std::string& typeAttribute);
  void writeOccurs(int minOccurs, int maxOccurs);
  std::ostream& stream_;
  std::string targetNamespace_;
  int level_ = 0;
  // Per open complex type: whether an attribute of a foreign namespace asks for a wildcard.
  std::vector<char> foreignAttributes_;
  // Per open choice or sequence: the foreign namespaces already admitted by a wildcard.
  std::vector<std::vector<std::string>> wildcards_;
};
