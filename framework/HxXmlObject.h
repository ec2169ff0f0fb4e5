#pragma once
/// \file
/// HxXmlObject: abstract base of every serialisable object.

#include <string>

#include "framework/HxToken.h"
#include "framework/HxTypes.h"

class HxXmlObjectVisitor;
class HxXmlReader;
class HxXmlSchema;
class HxXmlWriter;

/// Abstract base of every serialisable object of the framework.
///
/// An object writes its content (attributes, child elements or text) into an element that
/// its parent has started, and reads it back from a reader positioned on that element's start
/// (see HxXmlReader for the positioning contract). It carries two flags: specified (the value
/// was present in the input or was set) and XML-initialised.
class HxXmlObject {
 public:
  HxXmlObject() = default;
  /// Copies both flags.
  HxXmlObject(const HxXmlObject&) = default;
  /// Assigns both flags.
  HxXmlObject& operator=(const HxXmlObject&) = default;

  virtual ~HxXmlObject();
  /// Hands the object to a visitor (default: `visitor->visitObject(this)`).
  virtual void accept(HxXmlObjectVisitor* visitor) const;
  /// A new heap copy, owned by the caller.
  virtual HxXmlObject* clone() const = 0;
  /// Prepares the object to be read into; sets the XML-initialised flag.
  virtual void xmlInit();
  /// Reads the object from the element the reader is positioned on. The base checks that the
  /// reader is on an element start (kind 1 or 3) and marks the object specified; it returns
  /// false otherwise.
  virtual HxBoolean read(HxXmlReader& reader);
  /// Reads the object from the reader's current attribute value. The base returns false: only
  /// scalars can be attributes.
  virtual HxBoolean readAttribute(HxXmlReader& reader);
  /// Writes the object's content. The base writes nothing and returns whether the writer is
  /// still good.
  virtual HxBoolean write(HxXmlWriter& writer) const;
  /// Describes the object's content in an XML Schema (base: any content).
  virtual void writeSchema(HxXmlSchema& schema) const;
  /// Writes an XML Schema document (to the file `fileName`) for an element named `rootToken`
  /// holding this object. Returns false when the file cannot be written.
  virtual HxBoolean createSchema(const std::string& fileName, const HxToken& rootToken) const;
  /// Whether `xmlInit` has run (or the flag was set).
  virtual HxBoolean xmlInitialized() const;
  /// Sets the XML-initialised flag.
  virtual void setXmlInitialized(HxBoolean value);
  /// Whether the value was present in the input or has been set.
  virtual HxBoolean specified() const;
  /// Sets the specified flag.
  virtual void setSpecified(HxBoolean value);
  /// True only for scalar wrappers (HxXmlBasicType, HxXmlEnumType).
  virtual HxBoolean isBasicType() const;
  /// Whether the object equals a default-constructed object of its class.
  virtual HxBoolean equalsDefault() const;
  /// Comparison hook: false for null or for an object of another class.
  virtual HxBoolean equality(const HxXmlObject* other) const = 0;
  /// A new default-constructed heap object of the same class, owned by the caller.
  virtual HxXmlObject* newObject() const = 0;
  /// The element name under which the object is written.
  virtual const HxToken& token() const = 0;

  /// Base comparison: the flags are bookkeeping, not value, so every two bases are equal.
  bool operator==(const HxXmlObject&) const { return true; }

 private:
  HxBoolean specified_ = false;
  HxBoolean xmlInitialized_ = false;
};
