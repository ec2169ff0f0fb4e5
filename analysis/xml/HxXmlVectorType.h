#pragma once
/// \file
/// HxXmlVectorType<T>: serialisable vector of elements of one class, held by value.

#include <algorithm>
#include <cstddef>
#include <ios>
#include <ostream>
#include <string>
#include <typeinfo>
#include <vector>

#include "analysis/xml/HxXmlCountAttribute.h"
#include "analysis/xml/HxXmlVectorStream.h"
#include "framework/HxPrint.h"
#include "framework/HxToken.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlObject.h"
#include "framework/HxXmlObjectVisitor.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlSchema.h"
#include "framework/HxXmlSerialisable.h"
#include "framework/HxXmlTokens.h"
#include "framework/HxXmlWriter.h"

/// A serialisable vector of elements that are all of the one concrete class `ElementType`,
/// held by value. `ElementType` is an HxXmlObject with a default constructor, copy,
/// assignment, `operator==`, `read` and `write`.
///
/// XML form: the vector's element carries a "count" attribute with the number of elements.
/// Scalars (elements whose `isBasicType()` is true) are written together as one "group" child
/// holding all values in data mode; any other element is written inside its own "element"
/// child:
///
///     <v count="3"><group>1.5 2 -0.25</group></v>
///     <v count="2"><element>...</element><element>...</element></v>
///
/// Reading accepts both forms (every child other than "group" is read as one element, whatever
/// its name) and reports, without failing, a count attribute that differs from the number of
/// elements read (type 3, two messages). A count attribute that cannot be reserved (negative or
/// above 1,073,741,823) is reported (type 4) and reading goes on; see HxXmlCountAttribute.
///
/// Usage while recording (the streaming interface writes a vector that grows as it is written):
///
///     HxXmlWriter* writer = nullptr;
///     samples.writeHeaderToStream(stream, writer, "recording", token);
///     for (...) samples.appendElementToStream(writer, sample);  // no allocation once warm
///     samples.writeFooterToStream(writer);                        // deletes the writer
///
/// Bad indices are reported through Hx::Print (type 4) and refused with false.
template <class ElementType>
class HxXmlVectorType : public HxXmlObject {
 public:
  /// The standard vector that holds the elements.
  using ContainerType = std::vector<ElementType>;

  /// An empty vector.
  HxXmlVectorType() = default;
  /// `n` default elements.
  explicit HxXmlVectorType(HxU32 n) : vector_(n) {}
  /// `n` copies of `value`.
  HxXmlVectorType(HxU32 n, const ElementType& value) : vector_(n, value) {}
  /// Moves the elements; copies the flags.
  HxXmlVectorType(HxXmlVectorType&&) = default;
  /// Move-assigns the elements; assigns the flags.
  HxXmlVectorType& operator=(HxXmlVectorType&&) = default;

  /// Hands the vector to `visitor->visit(this)`.
  void accept(HxXmlObjectVisitor* visitor) const override;
  /// Replaces the contents by the elements of the element the reader is on (see class
  /// comment). Returns false only when the reader is not on an element start; size mismatches
  /// and format errors are reported and the read still succeeds.
  HxBoolean read(HxXmlReader& reader) override;
  /// Writes the count attribute and the elements. Returns whether the writer was good before
  /// the vector was written.
  HxBoolean write(HxXmlWriter& writer) const override;
  /// A complex type: the count attribute and either one "group" of scalars or repeated
  /// "element" children described by a default element's schema.
  void writeSchema(HxXmlSchema& schema) const override;

  /// Appends a copy of `element`.
  virtual void pushBack(const ElementType& element) { vector_.push_back(element); }
  /// Removes the element at `index`, keeping the order of the rest. An index not below the
  /// size is reported (type 4) and gives false.
  virtual HxBoolean erase(HxU32 index);
  /// Removes the half-open range [first, last); an empty range removes nothing and succeeds.
  /// `last` above the size or `first` above `last` is reported (type 4) and gives false.
  virtual HxBoolean erase(HxU32 first, HxU32 last);
  /// The underlying standard vector.
  virtual const ContainerType& vectorContainer() const { return vector_; }
  /// The underlying standard vector, writable in place.
  virtual ContainerType& vectorContainer() { return vector_; }
  /// Reserves room for `n` elements.
  virtual void reserve(HxU32 n) { vector_.reserve(n); }
  /// Grows with default elements or drops the tail.
  virtual void resize(HxU32 n) { vector_.resize(n); }
  /// Grows to `n` with default elements when `n` is above the size; never shrinks.
  virtual void resizeToAtLeast(HxU32 n);
  /// Destroys all elements.
  virtual void clear() { vector_.clear(); }
  /// Replaces the contents by `n` copies of `element`.
  virtual void assign(HxU32 n, const ElementType& element) { vector_.assign(n, element); }
  /// Number of elements.
  virtual HxU32 size() const { return static_cast<HxU32>(vector_.size()); }
  /// Rotates left so that the element at `n` becomes the first; false (nothing changed) when
  /// `n` is not below the size.
  virtual HxBoolean leftRotate(HxU32 n);

  /// Starts streaming the vector into `stream`: creates a writer on the heap (stored in
  /// `writer`, which the caller must not have pointing at a writer it still owns), starts the
  /// element `token` with the count attribute of the current size and, for scalars, the group
  /// element. Returns false, creating nothing, when the stream has failed.
  virtual HxBoolean writeHeaderToStream(std::ostream& stream, HxXmlWriter*& writer, const std::string& name,
                                        const HxToken& token) const;
  /// Streams every current element. False for a null writer.
  virtual HxBoolean writeBodyToStream(HxXmlWriter* writer) const;
  /// Streams one element (a scalar as its value, anything else inside an "element" child).
  /// False for a null writer. Does not allocate once the writer is warm.
  virtual HxBoolean appendElementToStream(HxXmlWriter* writer, const ElementType& element) const;
  /// Ends the group (for scalars) and the vector's element, deletes the writer and nulls the
  /// caller's pointer. False for a null writer.
  virtual HxBoolean writeFooterToStream(HxXmlWriter*& writer) const;
  /// Appends copies of all of `other`'s elements in order (`other` may be this vector).
  virtual void append(const HxXmlVectorType& other);

  /// The element at `index`, without a bounds test.
  const ElementType& operator[](HxU32 index) const { return vector_[index]; }
  /// The element at `index`, writable, without a bounds test.
  ElementType& operator[](HxU32 index) { return vector_[index]; }

  /// Equal sizes and elements pairwise equal (`ElementType::operator==`).
  bool operator==(const HxXmlVectorType& other) const;

  // The class token, `HxXml::HxVectorTypeToken`, is shared by every homogeneous vector.
  HX_XML_SERIALISABLE(HxXmlVectorType);

 private:
  /// Whether the element class is a scalar (decided once, on a default element).
  static bool elementIsBasicType();
  /// Writes one element as `write` and the streaming interface do.
  static void writeElement(HxXmlWriter& writer, const ElementType& element);

  ContainerType vector_;
};

// ---------------------------------------------------------------------------------------------

HX_XML_SERIALISABLE_DEFINITIONS_WITH((template <class ElementType>), HxXml::HxVectorTypeToken,
                                     HxXmlVectorType<ElementType>)

template <class ElementType>
void HxXmlVectorType<ElementType>::accept(HxXmlObjectVisitor* visitor) const {
  visitor->visit(this);
}

template <class ElementType>
HxBoolean HxXmlVectorType<ElementType>::read(HxXmlReader& reader) {
  const HxBoolean result = HxXmlObject::read(reader);
  if (!result) {
    return false;
  }
  vector_.clear();

  // The count attribute announces the size; every attribute is walked and a later count wins.
  long expectedCount = 0;
  const int attributeCount = reader.attributeCount();
  for (int i = 0; i < attributeCount; ++i) {
    if (reader.attributeName(i) == HxXml::HxCountToken) {
      const char* text = reader.attributeValue(i);
      expectedCount = HxXmlCountAttribute::parse(text);
      if (!HxXmlCountAttribute::reserve(vector_, expectedCount)) {
        Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
            << "HxXmlVectorType Error: count attribute \"" << (text != nullptr ? text : "")
            << "\" cannot be reserved.\n";
      }
    }
  }
  if (reader.nodeKind() == HxXmlReader::EmptyElement) {
    return true;
  }

  // Children: one group of scalars read in data mode, or one child per element.
  const int depth = reader.depth();
  long actualCount = 0;
  int kind = reader.next();
  while (kind == HxXmlReader::EmptyElement || kind == HxXmlReader::StartElement) {
    if (reader.name() == HxXml::HxGroupToken) {
      const int groupDepth = reader.depth();
      if (kind == HxXmlReader::StartElement && reader.next() == HxXmlReader::Text) {
        reader.setDataMode(1);
        while (reader.nextScalar()) {
          vector_.emplace_back();
          vector_.back().read(reader);
          ++actualCount;
        }
      } else {
        Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
            << "HxXmlVectorType Error: XML parser should be in data mode\n";
      }
      if (kind == HxXmlReader::StartElement) {
        reader.skipToEndOf(groupDepth);
      }
    } else {
      vector_.emplace_back();
      reader.readChild(vector_.back());
      ++actualCount;
    }
    kind = reader.next();
  }
  // Anything else (stray text) ends the list; leave the reader on this element's end.
  if (kind != HxXmlReader::Error && kind != HxXmlReader::EndOfDocument) {
    reader.skipToEndOf(depth);
  }

  if (expectedCount != actualCount) {
    const char* fileName = reader.fileName();
    Hx::Print::instance().ostream(Hx::Print::Warning, __PRETTY_FUNCTION__)
        << "HxXmlVectorType Error: array size not equal to attribute value -- " << expectedCount << ", actual -- "
        << actualCount << "\n";
    Hx::Print::instance().ostream(Hx::Print::Warning, __PRETTY_FUNCTION__)
        << "Filename: " << (fileName != nullptr ? fileName : "") << ", Line count: " << reader.lineNumber() << "\n";
  }
  return result;
}

template <class ElementType>
HxBoolean HxXmlVectorType<ElementType>::write(HxXmlWriter& writer) const {
  // The base comes first, then the count attribute (the polymorphic vector has the opposite
  // order; both are kept).
  const HxBoolean result = HxXmlObject::write(writer);
  HxXmlVectorStream::writeCount(writer, size());

  // Scalars share one group element; other elements get one wrapper each.
  const std::size_t count = vector_.size();
  for (std::size_t i = 0; i < count; ++i) {
    const ElementType& element = vector_[i];
    if (element.isBasicType()) {
      if (i == 0) {
        writer.startElement(HxXml::HxGroupToken);
        writer.setDataMode(true);
      }
      element.write(writer);
      if (i + 1 == count) {
        writer.endElement();
      }
    } else {
      writer.startElement(HxXml::HxElementToken);
      element.write(writer);
      writer.endElement();
    }
  }
  return result;
}

template <class ElementType>
void HxXmlVectorType<ElementType>::writeSchema(HxXmlSchema& schema) const {
  const ElementType prototype{};
  schema.beginComplexType();
  schema.beginSequence();
  if (prototype.isBasicType()) {
    schema.simpleElement(HxXml::HxGroupToken, "xs:string", 0, 1);
  } else {
    schema.element(HxXml::HxElementToken, prototype, 0, -1);
  }
  schema.endSequence();
  schema.attribute(HxXml::HxCountToken, "xs:unsignedInt");
  schema.endComplexType();
}

template <class ElementType>
HxBoolean HxXmlVectorType<ElementType>::erase(HxU32 index) {
  if (index >= vector_.size()) {
    Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
        << "HxXmlVectorType<ElementType>::erase(): index (" << index << ") exceeds vector size (" << vector_.size()
        << ").\n";
    return false;
  }
  vector_.erase(vector_.begin() + index);
  return true;
}

template <class ElementType>
HxBoolean HxXmlVectorType<ElementType>::erase(HxU32 first, HxU32 last) {
  if (last > vector_.size()) {
    Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
        << "index (" << last << ") exceeds vector size ( " << vector_.size() << ").\n";
    return false;
  }
  if (first > last) {
    Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
        << "first (" << first << ") is bigger than last (" << last << ").\n";
    return false;
  }
  vector_.erase(vector_.begin() + first, vector_.begin() + last);
  return true;
}

template <class ElementType>
void HxXmlVectorType<ElementType>::resizeToAtLeast(HxU32 n) {
  if (n > vector_.size()) {
    vector_.resize(n);
  }
}

template <class ElementType>
HxBoolean HxXmlVectorType<ElementType>::leftRotate(HxU32 n) {
  if (n >= vector_.size()) {
    return false;
  }
  std::rotate(vector_.begin(), vector_.begin() + n, vector_.end());
  return true;
}

template <class ElementType>
HxBoolean HxXmlVectorType<ElementType>::writeHeaderToStream(std::ostream& stream, HxXmlWriter*& writer,
                                                            const std::string& name, const HxToken& token) const {
  if (!HxXmlVectorStream::open(stream, writer, name, token)) return false;
  HxXmlObject::write(*writer);
  // The count is the size now; elements appended later are not counted.
  HxXmlVectorStream::writeCount(*writer, size());
  if (elementIsBasicType()) {
    writer->startElement(HxXml::HxGroupToken);
    writer->setDataMode(true);
  }
  return true;
}

template <class ElementType>
HxBoolean HxXmlVectorType<ElementType>::writeBodyToStream(HxXmlWriter* writer) const {
  if (writer == nullptr) return false;
  for (const ElementType& element : vector_) writeElement(*writer, element);
  return true;
}

template <class ElementType>
HxBoolean HxXmlVectorType<ElementType>::appendElementToStream(HxXmlWriter* writer, const ElementType& element) const {
  if (writer == nullptr) return false;
  writeElement(*writer, element);
  return true;
}

template <class ElementType>
HxBoolean HxXmlVectorType<ElementType>::writeFooterToStream(HxXmlWriter*& writer) const {
  // The group of scalars, then the vector's element.
  return HxXmlVectorStream::close(writer, elementIsBasicType() ? 2 : 1);
}

template <class ElementType>
void HxXmlVectorType<ElementType>::append(const HxXmlVectorType& other) {
  if (&other != this) {
    vector_.insert(vector_.end(), other.vector_.begin(), other.vector_.end());
    return;
  }
  // Appending to itself: make room first so that the source elements stay where they are.
  const std::size_t count = vector_.size();
  vector_.reserve(2 * count);
  for (std::size_t i = 0; i < count; ++i) {
    vector_.push_back(vector_[i]);
  }
}

template <class ElementType>
bool HxXmlVectorType<ElementType>::operator==(const HxXmlVectorType& other) const {
  if (!HxXmlObject::operator==(other) || vector_.size() != other.vector_.size()) {
    return false;
  }
  for (std::size_t i = 0; i < vector_.size(); ++i) {
    if (!(vector_[i] == other.vector_[i])) {
      return false;
    }
  }
  return true;
}

template <class ElementType>
bool HxXmlVectorType<ElementType>::elementIsBasicType() {
  static const bool basic = ElementType().isBasicType();
  return basic;
}

template <class ElementType>
void HxXmlVectorType<ElementType>::writeElement(HxXmlWriter& writer, const ElementType& element) {
  if (element.isBasicType()) {
    element.write(writer);
    return;
  }
  writer.startElement(HxXml::HxElementToken);
  element.write(writer);
  writer.endElement();
}

// ---------------------------------------------------------------------------------------------

/// Visits a homogeneous vector: describes it (pointer type name, then "token (count)"), and
/// when the entry hook and the depth gate allow, visits every element under the "element"
/// token; then calls the exit hook.
template <class ElementType>
void HxXmlObjectVisitor::visit(const HxXmlVectorType<ElementType>* vector) {
  describeContainer(vector, typeid(vector).name(), vector->size());
  if (enter(vector) && canDescend() && vector->size() != 0) {
    beginDescent();
    for (HxU32 i = 0; i < vector->size(); ++i) {
      const HxXmlObject* element = &(*vector)[i];
      if (element == nullptr) {
        Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
            << "Visitor: HxXmlVectorType " << i << " is non-HxXmlObject\n";
        continue;
      }
      setCurrentToken(HxXml::HxElementToken);
      element->accept(this);
    }
    endDescent();
  }
  exit(vector);
}

// The scalar and nested-scalar vectors used throughout the toolkit are compiled once, in the
// library (HxXmlVectorType.cpp).
extern template class HxXmlVectorType<HxXmlBasicType<std::string>>;
extern template class HxXmlVectorType<HxXmlBasicType<double>>;
extern template class HxXmlVectorType<HxXmlBasicType<unsigned int>>;
extern template class HxXmlVectorType<HxXmlBasicType<bool>>;
extern template class HxXmlVectorType<HxXmlVectorType<HxXmlBasicType<double>>>;
