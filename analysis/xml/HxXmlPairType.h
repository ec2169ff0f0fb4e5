#pragma once
/// \file
/// HxXmlPairType<A, B>: serialisable pair of two objects held by value.

#include <string>
#include <typeinfo>
#include <utility>

#include "framework/HxPrint.h"
#include "framework/HxToken.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlObject.h"
#include "framework/HxXmlObjectVisitor.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlSchema.h"
#include "framework/HxXmlSerialisable.h"
#include "framework/HxXmlTokens.h"
#include "framework/HxXmlWriter.h"

/// A serialisable pair of two objects held by value, written as a "first" and a "second"
/// child element:
///
///     <p><first>...</first><second>...</second></p>
///
/// Both members are HxXmlObjects with a default constructor, copy, assignment, `operator==`,
/// `read` and `write`. Reading takes the two children in any order; any other child is
/// reported (type 4, two messages naming file, line and the element met), skipped, and makes
/// `read` return false after the rest has been read.
template <class FirstType, class SecondType>
class HxXmlPairType : public HxXmlObject {
 public:
  /// The standard pair that holds the members.
  using PairType = std::pair<FirstType, SecondType>;

  /// Both members default.
  HxXmlPairType() = default;
  /// Copies of `first` and `second`.
  HxXmlPairType(const FirstType& first, const SecondType& second) : pair_(first, second) {}
  /// Moves both members; copies the flags.
  HxXmlPairType(HxXmlPairType&&) = default;
  /// Move-assigns both members; assigns the flags.
  HxXmlPairType& operator=(HxXmlPairType&&) = default;
  // The class token, `HxXml::HxPairTypeToken`, is shared by every pair.
  HX_XML_SERIALISABLE(HxXmlPairType);

  /// Hands the pair to `visitor->visit(this)`.
  void accept(HxXmlObjectVisitor* visitor) const override;
  /// Reads the members from the "first" and "second" children (each member is `xmlInit`-ed
  /// before it reads). Returns false when the reader is not on an element start or when an
  /// unexpected child was met (reported).
  HxBoolean read(HxXmlReader& reader) override;
  /// Writes the two children. Returns whether the writer was good before the pair was written.
  HxBoolean write(HxXmlWriter& writer) const override;
  /// A complex type admitting the "first" and "second" children.
  void writeSchema(HxXmlSchema& schema) const override;

  /// The first member.
  virtual const FirstType& first() const { return pair_.first; }
  /// The first member, writable in place.
  virtual FirstType& first() { return pair_.first; }
  /// Assigns the first member.
  virtual void setFirst(const FirstType& first) { pair_.first = first; }
  /// The second member.
  virtual const SecondType& second() const { return pair_.second; }
  /// The second member, writable in place.
  virtual SecondType& second() { return pair_.second; }
  /// Assigns the second member.
  virtual void setSecond(const SecondType& second) { pair_.second = second; }
  /// Assigns both members.
  virtual void set(const FirstType& first, const SecondType& second) {
    pair_.first = first;
    pair_.second = second;
  }
  /// The underlying standard pair.
  virtual const PairType& pairContainer() const { return pair_; }
  /// The underlying standard pair, writable in place.
  virtual PairType& pairContainer() { return pair_; }

  /// Both members equal.
  bool operator==(const HxXmlPairType& other) const {
    return pair_.first == other.pair_.first && pair_.second == other.pair_.second;
  }

 private:
  PairType pair_;
};

// ---------------------------------------------------------------------------------------------

HX_XML_SERIALISABLE_DEFINITIONS_WITH((template <class FirstType, class SecondType>), HxXml::HxPairTypeToken,
                                     HxXmlPairType<FirstType, SecondType>)

template <class FirstType, class SecondType>
void HxXmlPairType<FirstType, SecondType>::accept(HxXmlObjectVisitor* visitor) const {
  visitor->visit(this);
}

template <class FirstType, class SecondType>
HxBoolean HxXmlPairType<FirstType, SecondType>::read(HxXmlReader& reader) {
  HxBoolean result = HxXmlObject::read(reader);
  if (!result) {
    return false;
  }
  if (reader.nodeKind() == HxXmlReader::EmptyElement) {
    return true;
  }

  const int depth = reader.depth();
  int kind = reader.next();
  while (kind == HxXmlReader::StartElement || kind == HxXmlReader::EmptyElement) {
    if (reader.name() == HxXml::HxFirstToken) {
      pair_.first.xmlInit();
      reader.readChild(pair_.first);
    } else if (reader.name() == HxXml::HxSecondToken) {
      pair_.second.xmlInit();
      reader.readChild(pair_.second);
    } else {
      // Report the stray child, skip it and read on.
      const char* fileName = reader.fileName();
      Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
          << "HxXmlPairType Error: file not valid.\n\tFormat not correct.\n\tFile: "
          << (fileName != nullptr ? fileName : "") << "\n\tLine: " << reader.lineNumber();
      Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
          << "\tExpected " << HxXml::HxFirstToken.token() << " or " << HxXml::HxSecondToken.token() << " but received "
          << reader.name().token() << ".";
      result = false;
      reader.skipElement();
    }
    kind = reader.next();
  }
  // Anything else (stray text) ends the pair; leave the reader on this element's end.
  if (kind != HxXmlReader::Error && kind != HxXmlReader::EndOfDocument) {
    reader.skipToEndOf(depth);
  }
  return result;
}

template <class FirstType, class SecondType>
HxBoolean HxXmlPairType<FirstType, SecondType>::write(HxXmlWriter& writer) const {
  const HxBoolean result = HxXmlObject::write(writer);
  writer.startElement(HxXml::HxFirstToken);
  pair_.first.write(writer);
  writer.endElement();
  writer.startElement(HxXml::HxSecondToken);
  pair_.second.write(writer);
  writer.endElement();
  return result;
}

template <class FirstType, class SecondType>
void HxXmlPairType<FirstType, SecondType>::writeSchema(HxXmlSchema& schema) const {
  schema.beginComplexType();
  schema.beginChoice(true);
  schema.element(HxXml::HxFirstToken, pair_.first, 0, 1);
  schema.element(HxXml::HxSecondToken, pair_.second, 0, 1);
  schema.endChoice();
  schema.endComplexType();
}

// ---------------------------------------------------------------------------------------------

/// Visits a pair: describes it (pointer type name, then its token), and when the entry hook and
/// the depth gate allow, visits the first member under "first" and the second under "second";
/// then calls the exit hook.
template <class FirstType, class SecondType>
void HxXmlObjectVisitor::visit(const HxXmlPairType<FirstType, SecondType>* pair) {
  describe(pair, typeid(pair).name());
  if (enter(pair) && canDescend()) {
    beginDescent();
    const HxXmlObject* const members[] = {&pair->first(), &pair->second()};
    const HxToken* const tokens[] = {&HxXml::HxFirstToken, &HxXml::HxSecondToken};
    const char* const names[] = {"first", "second"};
    for (int i = 0; i < 2; ++i) {
      if (members[i] == nullptr) {
        Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
            << "Visitor: HxXmlPairType " << names[i] << " is non-HxXmlObject\n";
        continue;
      }
      setCurrentToken(*tokens[i]);
      members[i]->accept(this);
    }
    endDescent();
  }
  exit(pair);
}
