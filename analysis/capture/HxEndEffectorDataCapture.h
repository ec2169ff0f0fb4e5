#pragma once
/// \file
/// HxEndEffectorDataCapture: the end-effector-level quantities captured for one end effector.

#include "analysis/types/HxDataCaptureTypeVector.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlSerialisable.h"

class HxSystemSimulation;

/// The quantities captured for one end effector of a manipulator, keyed by its index.
///
/// Holds only end-effector-level data capture types (level 2), at most one per token when
/// filled by the add operations. Written as "endEffectorDataCapture" with the children
/// "endEffectorIndex" and "dataCaptureTypeVector". Reports failure by result only; prints
/// nothing.
class HxEndEffectorDataCapture : public HxXmlCompoundType {
 public:
  /// Disable flags of one data capture type, one per column.
  using Flags = HxXmlVectorType<HxXmlBasicType<bool>>;

  /// End effector 0, no types.
  HxEndEffectorDataCapture();

  /// Registers "endEffectorIndex", then "dataCaptureTypeVector".
  void registerComponents() override;

  HX_XML_SERIALISABLE(HxEndEffectorDataCapture);
  /// Takes the members over (the types are not cloned), leaving `other` without types.
  HxEndEffectorDataCapture(HxEndEffectorDataCapture&& other) = default;

  /// Compares the registered members in registration order.
  bool operator==(const HxEndEffectorDataCapture& other) const { return componentsEqual(other); }

  /// Sets the index of the end effector within its manipulator; not range-checked.
  virtual void setEndEffectorIndex(unsigned int index);
  /// The captured types, in the order they were added.
  virtual const HxDataCaptureTypeVector& dataCaptureVector() const;
  /// Captures every type for this end effector of manipulator `manipulatorIndex`. Returns the
  /// result of the last type's capture (not the conjunction), true for an empty vector.
  virtual HxBoolean captureData(const HxSystemSimulation& simulation, unsigned int const& manipulatorIndex) const;
  /// The type with that token, or null.
  virtual const HxDataCaptureType* dataCaptureType(const HxToken& token) const;
  /// Adds a type by token: true and unchanged when already present (its flags are kept); false
  /// for an unknown token or a type that is not end-effector-level.
  virtual HxBoolean addDataCaptureType(const HxToken& token);
  /// Adds a copy of `type`, replacing a type of the same token (and its flags); false when the
  /// type is not end-effector-level.
  virtual HxBoolean addDataCaptureType(const HxDataCaptureType& type);
  /// Removes the type with that token; false when absent.
  virtual HxBoolean removeDataCaptureType(const HxToken& token);
  /// Whether a type with that token is held.
  virtual HxBoolean isDataCaptureTypeIncluded(const HxToken& token) const;
  /// Number of types held.
  virtual unsigned int numDataCaptureTypes() const;
  /// Replaces the disable flags of the type with that token; false when absent.
  virtual HxBoolean setDisableFlags(const HxToken& token, const Flags& flags);
  /// Removes every type.
  virtual void removeAllDataCaptureTypes();

  /// Index of the end effector within its manipulator.
  unsigned int endEffectorIndex() const;

  /// Every available end-effector-level type, built once on first use (not thread-safe).
  static const HxDataCaptureTypeVector& allAvailableDataCaptureTypes();

 private:
  HxXmlBasicType<unsigned int> endEffectorIndex_;
  HxDataCaptureTypeVector dataCaptureVector_;

  static HxDataCaptureTypeVector m_theAvailableDataCaptureTypeVector;
  static HxBoolean m_theAvailableTypesReady;
};
