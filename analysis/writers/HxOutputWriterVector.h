#pragma once
/// \file
/// HxOutputWriterVector: the set of output writers a recorder uses.

#include "analysis/writers/HxBaseOutputWriter.h"
#include "analysis/xml/HxXmlVariableVectorType.h"
#include "framework/HxXmlSerialisable.h"

/// An owning, serialisable list of output writers, read back by element name:
///
///     <sm:outputWriterVector count="2">
///       <sm:textOutputWriter/>
///       <sm:mrdOutputWriter/>
///     </sm:outputWriterVector>
///
/// The recorder handles the writers' files in the order of this list.
class HxOutputWriterVector : public HxXmlVariableVectorType<HxBaseOutputWriter> {
 public:
  HxOutputWriterVector();

  HX_XML_SERIALISABLE(HxOutputWriterVector);

  /// Registers the five writers under their tokens, in this order: Mathematica, MATLAB, MRD,
  /// text, XML.
  void registerComponentCreators() override;

  /// True when some writer's token equals `token` (the first match ends the scan); false for
  /// an empty list.
  HxBoolean isWriterIncluded(const HxToken& token) const;

  /// The polymorphic vector's comparison: same size and pairwise equal writers.
  bool operator==(const HxOutputWriterVector& other) const {
    return HxXmlVariableVectorType<HxBaseOutputWriter>::operator==(other);
  }
};
