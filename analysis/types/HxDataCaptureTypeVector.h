#pragma once
/// \file
/// HxDataCaptureTypeVector: an owning list of data capture types of any kind.

#include "analysis/types/HxDataCaptureType.h"
#include "analysis/xml/HxXmlVariableVectorType.h"
#include "framework/HxToken.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlSerialisable.h"

/// An owning, serialisable list of data capture types, written as "dataCaptureTypeVector"
/// with each element under its own token.
///
/// Reading creates an element for each of 18 registered tokens. The tokens of
/// HxControlInputDataCaptureType, HxControlOutputJointPositionDataCaptureType and
/// HxControlOutputActualJointVelocityDataCaptureType are deliberately not registered: an
/// element with one of them is reported as not registered and ends the read with false. Those
/// three types can still be added in code.
///
///     HxDataCaptureTypeVector types;
///     types.pushBack(HxJointPositionDataCaptureType());
///     HxU32 index = 0;
///     if (HxDataCaptureType* found = types.findDataCaptureByToken(
///             HxJointPositionDataCaptureType::classToken(), &index)) { ... }
class HxDataCaptureTypeVector : public HxXmlVariableVectorType<HxDataCaptureType> {
 public:
  HxDataCaptureTypeVector();

  HX_XML_SERIALISABLE_HOOKS(HxDataCaptureTypeVector);
  HX_XML_MEMBERWISE_COPY(HxDataCaptureTypeVector);
  /// Takes the types over (they are not cloned), leaving `other` empty.
  HxDataCaptureTypeVector(HxDataCaptureTypeVector&& other) = default;
  /// A static empty vector.
  static const HxDataCaptureTypeVector& nullObject();

  /// The vector has no members of its own to register.
  void registerComponents();
  /// Registers the creators of the 18 types that can be read from XML, in a fixed order.
  void registerComponentCreators() override;

  /// A new data capture type for `token`, owned by the caller; null when the token has no
  /// creator here.
  HxDataCaptureType* newDataCaptureByToken(const HxToken& token) const;
  /// The first element (from 0 upward) whose token is `token`, owned by the vector; its
  /// position is stored in `*index` when `index` is not null. Null, with `*index` untouched,
  /// when no element has that token.
  HxDataCaptureType* findDataCaptureByToken(const HxToken& token, HxU32* index) const;
};
