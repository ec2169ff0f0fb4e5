#pragma once
/// \file
/// HxSystemDataVector: a polymorphic list of system data components.

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/xml/HxXmlVariableVectorType.h"
#include "framework/HxXmlSerialisable.h"

/// An owning, serialisable list of system data components: capture configurations
/// ("generalCapture") and sample records ("generalStorage"), each read back from XML by its
/// element name. Element `type()` tells the two kinds apart (0 and 1). Written as
/// "systemDataVector".
class HxSystemDataVector : public HxXmlVariableVectorType<HxBaseSystemDataComponent> {
 public:
  HxSystemDataVector();

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

  HX_XML_SERIALISABLE(HxSystemDataVector);

  /// The polymorphic vector's comparison.
  bool operator==(const HxSystemDataVector& other) const;
};
