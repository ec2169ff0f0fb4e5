#pragma once
/// \file
/// HxSystemDataVector: a polymorphic list of system data components.

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/xml/HxXmlVariableVectorType.h"

/// An owning, serialisable list of system data components: capture configurations
/// ("generalCapture") and sample records ("generalStorage"), each read back from XML by its
/// element name. Element `type()` tells the two kinds apart (0 and 1). Written as
/// "systemDataVector".
class HxSystemDataVector : public HxXmlVariableVectorType<HxBaseSystemDataComponent> {
 public:
  HxSystemDataVector();
  /// Deep copy: every component is cloned.
  HxSystemDataVector(const HxSystemDataVector& other);
  /// Replaces every component by a clone of the source's.
  HxSystemDataVector& operator=(const HxSystemDataVector& other);
  ~HxSystemDataVector() override;

  /// Registers nothing of its own.
  virtual void registerComponents();
  /// Registers `HxSystemDataCapture::creator` under "generalCapture", then
  /// `HxSystemDataStorage::creator` under "generalStorage".
  void registerComponentCreators() override;

  /// The polymorphic vector's write.
  HxBoolean write(HxXmlWriter& writer) const override;
  /// The polymorphic vector's read.
  HxBoolean read(HxXmlReader& reader) override;
  /// Hands the vector to the visitor's polymorphic-vector form.
  void accept(HxXmlObjectVisitor* visitor) const override;

  HxXmlObject* clone() const override;
  HxXmlObject* newObject() const override;
  /// False for null or for an object of another class, else `operator==`.
  HxBoolean equality(const HxXmlObject* other) const override;
  /// "systemDataVector".
  const HxToken& token() const override;
  /// "systemDataVector", the element name of the class.
  static const HxToken& classToken();
  /// A new empty vector, owned by the caller.
  static HxXmlObject* creator();
  /// A default, empty vector.
  static HxSystemDataVector nullObject();

  /// The polymorphic vector's comparison.
  bool operator==(const HxSystemDataVector& other) const;
  /// Negation of `operator==`.
  bool operator!=(const HxSystemDataVector& other) const { return !(*this == other); }
};
