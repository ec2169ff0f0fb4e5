#pragma once
/// \file
/// HxOutputWriterVector: the set of output writers a recorder uses.

#include "analysis/writers/HxBaseOutputWriter.h"
#include "analysis/xml/HxXmlVariableVectorType.h"

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
  /// Deep copy: every writer is cloned.
  HxOutputWriterVector(const HxOutputWriterVector& other);
  /// Replaces every writer by a clone of the source's.
  HxOutputWriterVector& operator=(const HxOutputWriterVector& other);
  ~HxOutputWriterVector() override;

  HxXmlObject* clone() const override;
  HxXmlObject* newObject() const override;
  /// False for null or for an object of another class, else `operator==`.
  HxBoolean equality(const HxXmlObject* other) const override;
  /// "outputWriterVector".
  const HxToken& token() const override;
  /// "outputWriterVector", the element name of the class.
  static const HxToken& classToken();
  /// A default, empty vector.
  static HxOutputWriterVector nullObject();

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
