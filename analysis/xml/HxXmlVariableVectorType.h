#pragma once
/// \file
/// HxXmlVariableVectorType<T>: serialisable owning vector of polymorphic elements.

#include <cstddef>
#include <ios>
#include <memory>
#include <ostream>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "analysis/xml/HxXmlCountAttribute.h"
#include "analysis/xml/HxXmlVectorStream.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxPrint.h"
#include "framework/HxToken.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlBaseVariableCompoundType.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlObject.h"
#include "framework/HxXmlObjectVisitor.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlSchema.h"
#include "framework/HxXmlTokens.h"
#include "framework/HxXmlWriter.h"

/// A serialisable vector of objects of different classes derived from the abstract
/// `ElementType`. It owns its elements through pointers (deleting them when they are replaced,
/// erased, cleared or when the vector goes), writes each element under the element's own
/// token and, when reading, makes each element from its token through the creators that the
/// concrete subclass registers in `registerComponentCreators()` (or, failing that, the
/// reader's object factory).
///
/// A subclass provides `clone`, `equality`, `newObject`, `token` and
/// `registerComponentCreators`:
///
///     class HxShapeVector : public HxXmlVariableVectorType<HxShape> {
///       void registerComponentCreators() override {
///         registerComponentCreator(HxCircle::classToken(), &HxCircle::creator);
///       }
///       ...
///     };
///
/// A slot may be null (the sized constructor makes null slots); each operation says how it
/// treats one. XML form: a "count" attribute with the number of slots, the base's library list
/// (when not empty), then one child per non-null slot named by the element's token. A count
/// attribute that cannot be reserved (negative or above 1,073,741,823, which the toolkit's
/// vectors refuse as a length error) is reported (type 4) and reading goes on without the
/// reservation; see HxXmlCountAttribute.
///
/// Bad indices are reported through Hx::Print (type 4); `operator[]` still returns slot 0,
/// every other operation refuses with false.
template <class ElementType>
class HxXmlVariableVectorType : public HxXmlBaseVariableCompoundType {
 public:
  /// The slots: owned pointers, possibly null.
  using ContainerType = std::vector<ElementType*>;

  /// An empty vector.
  HxXmlVariableVectorType() = default;
  /// `n` null slots.
  explicit HxXmlVariableVectorType(HxU32 n) : slots_(n, nullptr) {}
  /// Copies the base, then every element by `clone()` (a null slot, or a clone that is not an
  /// `ElementType`, gives a null slot).
  HxXmlVariableVectorType(const HxXmlVariableVectorType& other);
  /// Takes the base and the elements over, leaving `other` empty.
  HxXmlVariableVectorType(HxXmlVariableVectorType&& other) noexcept
      : HxXmlBaseVariableCompoundType(std::move(other)), slots_(std::move(other.slots_)) {
    other.slots_.clear();
  }
  /// Self-assignment does nothing; otherwise assigns the base and replaces every element by a
  /// clone of the source's.
  HxXmlVariableVectorType& operator=(const HxXmlVariableVectorType& other);
  /// Deletes every element.
  ~HxXmlVariableVectorType() override;

  /// Hands the vector to `visitor->visit(this)`.
  void accept(HxXmlObjectVisitor* visitor) const override;
  /// Replaces the contents by the children of the element the reader is on, each made from its
  /// token. Returns the base's result: false when the reader is not on an element start or a
  /// child's token has no creator (elements read before it stay).
  HxBoolean read(HxXmlReader& reader) override;
  /// Writes the count attribute (slots, null ones included), the base's library list and every
  /// non-null element under its own token. Returns the base's result.
  HxBoolean write(HxXmlWriter& writer) const override;
  /// A complex type: the count attribute and a repeated choice of the library list and every
  /// element that a registered creator makes.
  void writeSchema(HxXmlSchema& schema) const override;
  /// Reads the child element named `token`: the library list (then `processLibraries()`), or a
  /// new element made by the creator of `token` or by the reader's object factory, appended.
  /// An unregistered token is reported (type 4) and gives false.
  HxBoolean readValueFromToken(const HxToken& token, HxXmlReader& reader) override;

  /// The element at `index`. A bad index or a null slot is reported (type 4, two messages) and
  /// slot 0 is returned instead; the caller must not index an empty vector or one whose slot 0
  /// is null that way.
  virtual const ElementType& operator[](HxU32 index) const;
  /// The element at `index`, writable; a bad index or a null slot is treated as by the const form.
  virtual ElementType& operator[](HxU32 index);
  /// Replaces the element at `index` by a clone of `element`. A bad index is reported
  /// (type 4) and gives false.
  virtual HxBoolean exchange(HxU32 index, const ElementType& element);
  /// Deletes the element at `index` and closes the gap. A bad index is reported (type 4) and
  /// gives false.
  virtual HxBoolean erase(HxU32 index);
  /// Deletes the half-open range [first, last). `last` above the size or not above `first`
  /// (an empty range, unlike HxXmlVectorType) is reported (type 4) and gives false.
  virtual HxBoolean erase(HxU32 first, HxU32 last);
  /// Appends a clone of `element` (a null slot when the clone is not an `ElementType`).
  virtual void pushBack(const ElementType& element);
  /// Appends `element` itself, taking it over (nothing for null): for an element made to be
  /// stored, where a clone would be the same.
  void pushBackOwned(std::unique_ptr<ElementType> element) {
    if (element == nullptr) return;
    slots_.push_back(element.get());
    element.release();
  }
  /// The slots.
  virtual const ContainerType& vectorContainer() const { return slots_; }
  /// Reserves room for `n` slots.
  virtual void reserve(HxU32 n) { slots_.reserve(n); }
  /// Only shrinks: deletes the elements from `n` on. An `n` not below the size changes
  /// nothing (the vector is never grown here).
  virtual void resize(HxU32 n);
  /// Deletes every element and empties the slots.
  virtual void clear();
  /// Replaces the contents by `n` clones of `element` (which may be an element of this vector).
  /// Takes a non-const reference, unlike the homogeneous vector's `assign`.
  virtual void assign(HxU32 n, ElementType& element);
  /// Number of slots, null ones included.
  virtual HxU32 size() const { return static_cast<HxU32>(slots_.size()); }

  /// Starts streaming the vector into `stream`: creates a writer on the heap (stored in
  /// `writer`, which the caller must not have pointing at a writer it still owns) and starts
  /// the element `token` with the count attribute (slots now) and the library list. Returns
  /// false, creating nothing, when the stream has failed.
  virtual HxBoolean writeHeaderToStream(std::ostream& stream, HxXmlWriter*& writer, const std::string& name,
                                        const HxToken& token) const;
  /// Streams every non-null element. False for a null writer.
  virtual HxBoolean writeBodyToStream(HxXmlWriter* writer) const;
  /// Streams one element under its own token. False for a null writer.
  virtual HxBoolean appendElementToStream(HxXmlWriter* writer, const ElementType& element) const;
  /// Ends the vector's element, deletes the writer and nulls the caller's pointer. False for a
  /// null writer.
  virtual HxBoolean writeFooterToStream(HxXmlWriter*& writer) const;

  /// The bases equal, the sizes equal and the elements pairwise equal (`left.equality(&right)`);
  /// a null slot on either side makes them unequal.
  bool operator==(const HxXmlVariableVectorType& other) const;
  /// Negation of `operator==`.
  bool operator!=(const HxXmlVariableVectorType& other) const { return !(*this == other); }

 private:
  /// A clone of `element` as an `ElementType`, owned by the caller; null for a null element or
  /// a clone of another class (which is deleted).
  static ElementType* cloneElement(const ElementType* element);
  /// `object` as an `ElementType`, taking ownership; deletes an object of another class.
  static ElementType* adopt(HxXmlObject* object);
  static void writeElement(HxXmlWriter& writer, const ElementType& element);
  void deleteElements();

  ContainerType slots_;
};

// ---------------------------------------------------------------------------------------------

template <class ElementType>
HxXmlVariableVectorType<ElementType>::HxXmlVariableVectorType(const HxXmlVariableVectorType& other)
    : HxXmlBaseVariableCompoundType(other) {
  slots_.reserve(other.slots_.size());
  for (const ElementType* element : other.slots_) {
    slots_.push_back(cloneElement(element));
  }
}

template <class ElementType>
HxXmlVariableVectorType<ElementType>& HxXmlVariableVectorType<ElementType>::operator=(
    const HxXmlVariableVectorType& other) {
  if (this == &other) {
    return *this;
  }
  HxXmlBaseVariableCompoundType::operator=(other);
  deleteElements();
  slots_.assign(other.slots_.size(), nullptr);
  for (std::size_t i = 0; i < other.slots_.size(); ++i) {
    slots_[i] = cloneElement(other.slots_[i]);
  }
  return *this;
}

template <class ElementType>
HxXmlVariableVectorType<ElementType>::~HxXmlVariableVectorType() {
  deleteElements();
}

template <class ElementType>
void HxXmlVariableVectorType<ElementType>::accept(HxXmlObjectVisitor* visitor) const {
  visitor->visit(this);
}

template <class ElementType>
HxBoolean HxXmlVariableVectorType<ElementType>::read(HxXmlReader& reader) {
  clear();
  // The count attribute only reserves slots; it is not checked against the elements read.
  const int attributeCount = reader.attributeCount();
  for (int i = 0; i < attributeCount; ++i) {
    if (reader.attributeName(i) == HxXml::HxCountToken) {
      const char* text = reader.attributeValue(i);
      if (!HxXmlCountAttribute::reserve(slots_, HxXmlCountAttribute::parse(text))) {
        Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
            << "HxXmlVariableVectorType::read() error: count attribute \"" << (text != nullptr ? text : "")
            << "\" cannot be reserved.\n";
      }
    }
  }
  return HxXmlBaseVariableCompoundType::read(reader);
}

template <class ElementType>
HxBoolean HxXmlVariableVectorType<ElementType>::write(HxXmlWriter& writer) const {
  // The count attribute comes first, then the base (the homogeneous vector has the opposite
  // order; both are kept).
  HxXmlVectorStream::writeCount(writer, size());
  const HxBoolean result = HxXmlBaseVariableCompoundType::write(writer);
  for (const ElementType* element : slots_) {
    if (element != nullptr) {
      writeElement(writer, *element);
    }
  }
  return result;
}

template <class ElementType>
void HxXmlVariableVectorType<ElementType>::writeSchema(HxXmlSchema& schema) const {
  schema.beginComplexType();
  schema.beginChoice(true);
  const HxXmlVectorType<HxXmlBasicType<std::string>> libraries;
  schema.element(HxXml::HxAddLibrariesToken, libraries, 0, 1);
  for (const auto& entry : creatorMap()) {
    const std::unique_ptr<HxXmlObject> prototype(entry.second != nullptr ? entry.second() : nullptr);
    if (prototype != nullptr) {
      schema.element(entry.first, *prototype, 0, 1);
    }
  }
  schema.endChoice();
  schema.attribute(HxXml::HxCountToken, "xs:unsignedInt");
  schema.endComplexType();
}

template <class ElementType>
HxBoolean HxXmlVariableVectorType<ElementType>::readValueFromToken(const HxToken& token, HxXmlReader& reader) {
  if (token == HxXml::HxAddLibrariesToken) {
    readLibraryList(reader);
    processLibraries();
    return true;
  }

  // Make the element from its token: the registered creator first, then the reader's factory.
  std::unique_ptr<ElementType> element(adopt(newObjectFromToken(token)));
  if (element == nullptr && reader.objectFactory() != nullptr) {
    element.reset(adopt(reader.objectFactory()->newObjectFromToken(token)));
  }
  if (element == nullptr) {
    Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
        << "HxXmlVariableVectorType::readValueFromToken() error:\n\t" << '"' << token.token() << '"'
        << " tag not registered.\n";
    return false;
  }

  reader.readChild(*element);
  slots_.push_back(element.get());
  element.release();
  return true;
}

template <class ElementType>
const ElementType& HxXmlVariableVectorType<ElementType>::operator[](HxU32 index) const {
  if (index < slots_.size() && slots_[index] != nullptr) {
    return *slots_[index];
  }
  Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
      << "HxXmlVariableVectorType<ElementType>::operator[]: bad index\n";
  Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
      << "Will attempt to return the first vector element.\n";
  return *slots_[0];
}

template <class ElementType>
ElementType& HxXmlVariableVectorType<ElementType>::operator[](HxU32 index) {
  if (index < slots_.size() && slots_[index] != nullptr) {
    return *slots_[index];
  }
  Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__) << "bad index\n";
  Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
      << "Will attempt to return the first vector element.\n";
  return *slots_[0];
}

template <class ElementType>
HxBoolean HxXmlVariableVectorType<ElementType>::exchange(HxU32 index, const ElementType& element) {
  if (index >= slots_.size()) {
    Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
        << "HxXmlVariableVectorType<ElementType>::exchange: bad index, " << index << "\n";
    return false;
  }
  // Clone before deleting: `element` may be the element being replaced.
  ElementType* copy = cloneElement(&element);
  delete slots_[index];
  slots_[index] = copy;
  return true;
}

template <class ElementType>
HxBoolean HxXmlVariableVectorType<ElementType>::erase(HxU32 index) {
  if (index >= slots_.size()) {
    Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
        << "HxXmlVariableVectorType<ElementType>::erase: bad index, " << index << "\n";
    return false;
  }
  delete slots_[index];
  slots_.erase(slots_.begin() + index);
  return true;
}

template <class ElementType>
HxBoolean HxXmlVariableVectorType<ElementType>::erase(HxU32 first, HxU32 last) {
  if (last > slots_.size() || last <= first) {
    Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
        << "HxXmlVariableVectorType<ElementType>::erase: bad first/last indices: " << first << "/" << last << "\n";
    return false;
  }
  for (HxU32 i = first; i < last; ++i) {
    delete slots_[i];
  }
  slots_.erase(slots_.begin() + first, slots_.begin() + last);
  return true;
}

template <class ElementType>
void HxXmlVariableVectorType<ElementType>::pushBack(const ElementType& element) {
  std::unique_ptr<ElementType> copy(cloneElement(&element));
  slots_.push_back(copy.get());
  copy.release();
}

template <class ElementType>
void HxXmlVariableVectorType<ElementType>::resize(HxU32 n) {
  if (n >= slots_.size()) {
    return;
  }
  for (std::size_t i = n; i < slots_.size(); ++i) {
    delete slots_[i];
  }
  slots_.resize(n);
}

template <class ElementType>
void HxXmlVariableVectorType<ElementType>::clear() {
  deleteElements();
  slots_.clear();
}

template <class ElementType>
void HxXmlVariableVectorType<ElementType>::assign(HxU32 n, ElementType& element) {
  // Clone first: `element` may be one of the elements about to be deleted.
  ContainerType copies(n, nullptr);
  for (HxU32 i = 0; i < n; ++i) {
    copies[i] = cloneElement(&element);
  }
  deleteElements();
  slots_.swap(copies);
}

template <class ElementType>
HxBoolean HxXmlVariableVectorType<ElementType>::writeHeaderToStream(std::ostream& stream, HxXmlWriter*& writer,
                                                                    const std::string& name,
                                                                    const HxToken& token) const {
  if (!HxXmlVectorStream::open(stream, writer, name, token)) return false;
  HxXmlVectorStream::writeCount(*writer, size());
  HxXmlBaseVariableCompoundType::write(*writer);
  return true;
}

template <class ElementType>
HxBoolean HxXmlVariableVectorType<ElementType>::writeBodyToStream(HxXmlWriter* writer) const {
  if (writer == nullptr) return false;
  for (const ElementType* element : slots_) {
    if (element != nullptr) writeElement(*writer, *element);
  }
  return true;
}

template <class ElementType>
HxBoolean HxXmlVariableVectorType<ElementType>::appendElementToStream(HxXmlWriter* writer,
                                                                      const ElementType& element) const {
  if (writer == nullptr) return false;
  writeElement(*writer, element);
  return true;
}

template <class ElementType>
HxBoolean HxXmlVariableVectorType<ElementType>::writeFooterToStream(HxXmlWriter*& writer) const {
  return HxXmlVectorStream::close(writer, 1);
}

template <class ElementType>
bool HxXmlVariableVectorType<ElementType>::operator==(const HxXmlVariableVectorType& other) const {
  if (!HxXmlBaseVariableCompoundType::operator==(other) || slots_.size() != other.slots_.size()) {
    return false;
  }
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    if (slots_[i] == nullptr || other.slots_[i] == nullptr || !slots_[i]->equality(other.slots_[i])) {
      return false;
    }
  }
  return true;
}

template <class ElementType>
ElementType* HxXmlVariableVectorType<ElementType>::cloneElement(const ElementType* element) {
  if (element == nullptr) {
    return nullptr;
  }
  return adopt(element->clone());
}

template <class ElementType>
ElementType* HxXmlVariableVectorType<ElementType>::adopt(HxXmlObject* object) {
  ElementType* element = dynamic_cast<ElementType*>(object);
  if (element == nullptr) {
    delete object;
  }
  return element;
}

template <class ElementType>
void HxXmlVariableVectorType<ElementType>::writeElement(HxXmlWriter& writer, const ElementType& element) {
  writer.startElement(element.token());
  element.write(writer);
  writer.endElement();
}

template <class ElementType>
void HxXmlVariableVectorType<ElementType>::deleteElements() {
  for (ElementType*& element : slots_) {
    delete element;
    element = nullptr;
  }
}

// ---------------------------------------------------------------------------------------------

/// Visits a polymorphic vector: describes it (pointer type name, then "token (count)"), and
/// when the entry hook and the depth gate allow, visits every non-null element under its own
/// token (a null slot is reported, type 4, and skipped); then calls the exit hook.
template <class ElementType>
void HxXmlObjectVisitor::visit(const HxXmlVariableVectorType<ElementType>* vector) {
  describeContainer(vector, typeid(vector).name(), vector->size());
  if (enter(vector) && canDescend() && vector->size() != 0) {
    beginDescent();
    const auto& slots = vector->vectorContainer();
    for (HxU32 i = 0; i < slots.size(); ++i) {
      const ElementType* element = slots[i];
      if (element == nullptr) {
        Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
            << "Visitor: HxXmlVariableVectorType " << i << " is non-HxXmlObject\n";
        continue;
      }
      setCurrentToken(element->token());
      element->accept(this);
    }
    endDescent();
  }
  exit(vector);
}
