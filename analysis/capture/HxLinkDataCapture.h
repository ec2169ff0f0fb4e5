#pragma once
/// \file
/// HxLinkDataCapture: the link-level quantities captured for one link of a manipulator.

#include <cstdint>
#include <string>

#include "analysis/types/HxDataCaptureTypeVector.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlSerialisable.h"

class HxSystemSimulation;

/// The quantities captured for one link of a manipulator, keyed by the link's identifier.
///
/// Holds only link-level data capture types (level 1), at most one per token when filled by
/// the add operations. Written as "linkDataCapture" with the children "linkIdentification" and
/// "dataCaptureTypeVector". Reports failure by result only; prints nothing.
class HxLinkDataCapture : public HxXmlCompoundType {
 public:
  /// Disable flags of one data capture type, one per column.
  using Flags = HxXmlVectorType<HxXmlBasicType<bool>>;

  /// Empty identifier, no types.
  HxLinkDataCapture();

  /// Registers "linkIdentification", then "dataCaptureTypeVector".
  void registerComponents() override;
  /// The base read; forgets the link resolved by captureData (the identifier may change).
  HxBoolean read(HxXmlReader& reader) override;

  HX_XML_SERIALISABLE(HxLinkDataCapture);
  /// Takes the members over (the types are not cloned), leaving `other` without types.
  HxLinkDataCapture(HxLinkDataCapture&& other) = default;

  /// Compares the registered members in registration order.
  bool operator==(const HxLinkDataCapture& other) const { return componentsEqual(other); }

  /// Sets the identifier of the link within its manipulator; not checked against any model.
  virtual void setLinkIdentifier(const std::string& identifier);
  /// The captured types, in the order they were added.
  virtual const HxDataCaptureTypeVector& dataCaptureVector() const;
  /// Captures every type for this link of manipulator `manipulatorIndex`: the link is looked
  /// up by identifier in the simulation's manipulator, then each type captures with the
  /// link's index. The look-up is kept and made again only when the manipulator's links
  /// (`HxIndividualManipulator::linksStamp`) or the identifier change. True for an empty vector; false when the
  /// manipulator or the link is unknown (no type is then called) or when any type fails (every type is still called).
  virtual HxBoolean captureData(const HxSystemSimulation& simulation, unsigned int const& manipulatorIndex) const;
  /// The index of this capture's link in manipulator `manipulatorIndex` of `simulation`, looked
  /// up as `captureData` does (and kept as it keeps it); false when the manipulator or the link
  /// is unknown.
  bool resolveLink(const HxSystemSimulation& simulation, HxU32 manipulatorIndex, HxU32& index) const;
  /// The type with that token, or null.
  virtual const HxDataCaptureType* dataCaptureType(const HxToken& token) const;
  /// Adds a type by token: true and unchanged when already present; false for an unknown
  /// token or a type that is not link-level.
  virtual HxBoolean addDataCaptureType(const HxToken& token);
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

  /// Identifier of the link within its manipulator.
  const std::string& linkIdentifier() const;

  /// For a loop over many link captures, whose types come from far caches: asks the processor
  /// to fetch, ahead of `captureData`, the list of types. A hint only; it changes nothing.
  void prefetchTypeList() const;
  /// As `prefetchTypeList`, for the types themselves; reads the list, so it comes a while after.
  void prefetchTypes() const;

  /// Every available link-level type, built once on first use (not thread-safe).
  static const HxDataCaptureTypeVector& allAvailableDataCaptureTypes();

 private:
  // The last link resolved by captureData: for the manipulator links with `stamp` (0: none
  // yet), whether the identifier was found and the link's index. Not part of the value: a copy
  // or an assignment starts without it.
  struct ResolvedLink {
    std::uint64_t stamp = 0;
    bool found = false;
    HxU32 index = 0;
    ResolvedLink() = default;
    ResolvedLink(const ResolvedLink&) noexcept {}
    ResolvedLink(ResolvedLink&& other) noexcept { other.stamp = 0; }
    ResolvedLink& operator=(const ResolvedLink&) {
      stamp = 0;
      return *this;
    }
  };

  HxXmlBasicType<std::string> linkIdentifier_;
  HxDataCaptureTypeVector dataCaptureVector_;
  mutable ResolvedLink resolved_;

  static HxDataCaptureTypeVector m_theAvailableDataCaptureTypeVector;
  static HxBoolean m_theAvailableTypesReady;
};
