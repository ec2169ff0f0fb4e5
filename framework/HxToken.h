#pragma once
/// \file
/// HxToken: the name of an XML element or attribute.

#include <string>
#include <string_view>
#include <utility>

/// An XML element or attribute name, held as text and compared by its text.
///
/// A namespaced token is the namespace URI immediately followed by the local name,
/// for example "http://example.org/namespace/sm#time". The namespace part runs up to and
/// including the last '#'; a token without '#' has no namespace. The XML writer turns such a
/// token into a prefixed name with an xmlns declaration, and the reader rebuilds the full text
/// from the namespace URI and local name it meets, so tokens survive a round trip.
class HxToken {
 public:
  HxToken() = default;
  /// A token with the text `text`; null gives the empty token. Implicit, so literals can stand for
  /// tokens.
  HxToken(const char* text) : text_(text ? text : "") {}  // NOLINT: implicit by design
  /// A token with the text `text`.
  explicit HxToken(std::string text) : text_(std::move(text)) {}

  /// Appends text; this is how a namespaced token is formed from a namespace token.
  HxToken& operator+=(const std::string& text) {
    text_ += text;
    return *this;
  }

  /// Replaces the text (keeps the capacity of the held string: no allocation once it is
  /// large enough).
  void assign(std::string_view text) { text_.assign(text.data(), text.size()); }
  /// Appends text (keeps the capacity of the held string, as `assign`).
  void append(std::string_view text) { text_.append(text.data(), text.size()); }

  /// The full text of the token.
  const std::string& token() const { return text_; }
  /// The full text, so a token reads as a string.
  operator const std::string&() const { return text_; }  // NOLINT: implicit by design

  /// The namespace URI part (up to and including the last '#'), empty when there is none.
  std::string_view namespaceUri() const;
  /// The local name (after the last '#'), or the whole text when there is no namespace.
  std::string_view localName() const;

  /// Same full text.
  bool operator==(const HxToken& other) const { return text_ == other.text_; }
  /// Full text equal to `other`.
  bool operator==(const std::string& other) const { return text_ == other; }
  /// Different full text.
  bool operator!=(const HxToken& other) const { return text_ != other.text_; }
  /// Full text different from `other`.
  bool operator!=(const std::string& other) const { return text_ != other; }
  /// Orders by full text (byte-wise), for maps keyed by token.
  bool operator<(const HxToken& other) const { return text_ < other.text_; }

 private:
  std::string text_;
};
