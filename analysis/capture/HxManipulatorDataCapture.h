#pragma once
/// \file
/// HxManipulatorDataCapture: what is captured for one manipulator, at its three levels.

#include <string>

#include "analysis/capture/HxEndEffectorDataCapture.h"
#include "analysis/capture/HxFirstPositions.h"
#include "analysis/capture/HxLinkDataCapture.h"
#include "analysis/types/HxDataCaptureTypeVector.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlSerialisable.h"

class HxIndividualManipulator;
class HxSystemSimulation;

/// What is captured for one manipulator of the simulated system: its manipulator-level types
/// (level 0), one `HxLinkDataCapture` per captured link (keyed by identifier) and one
/// `HxEndEffectorDataCapture` per captured end effector (keyed by index).
///
/// Lookups of link and end-effector captures take the first match. The add operations keep
/// every list at one level, one type per token, and create a sub-capture only once its first
/// type was accepted (so a failed add changes nothing); `addLinkDataCapture` and
/// `addEndEffectorDataCapture` push without any check. Removals across sub-captures erase a
/// sub-capture whose last type went. Written as "manipulatorDataCapture" with the children
/// "manipulatorIndex", "dataCaptureTypeVector", "linkDataCaptureVector" and
/// "endEffectorDataCaptureVector". Reports failure by result only; prints nothing.
class HxManipulatorDataCapture : public HxXmlCompoundType {
 public:
  /// Disable flags of one data capture type, one per column.
  using Flags = HxXmlVectorType<HxXmlBasicType<bool>>;
  /// The link captures, held by value.
  using LinkDataCaptureVector = HxXmlVectorType<HxLinkDataCapture>;
  /// The end-effector captures, held by value.
  using EndEffectorDataCaptureVector = HxXmlVectorType<HxEndEffectorDataCapture>;

  /// Element index given to manipulator-level types, which ignore it (minus two as unsigned).
  static constexpr unsigned int ManipulatorLevelElementIndex = 4294967294u;

  /// Manipulator 0, nothing captured.
  HxManipulatorDataCapture();

  /// Registers "manipulatorIndex", "dataCaptureTypeVector", "linkDataCaptureVector" and
  /// "endEffectorDataCaptureVector", in this order.
  void registerComponents() override;
  /// The base read (the sub-capture look-ups are rebuilt afterwards).
  HxBoolean read(HxXmlReader& reader) override;

  HX_XML_SERIALISABLE(HxManipulatorDataCapture);
  /// Takes the members over (the types and sub-captures are not cloned), leaving `other` empty.
  HxManipulatorDataCapture(HxManipulatorDataCapture&& other) = default;

  /// Compares the registered members in registration order.
  bool operator==(const HxManipulatorDataCapture& other) const { return componentsEqual(other); }

  /// Index of the manipulator in the simulated system.
  virtual unsigned int manipulatorIndex() const;
  /// Sets the index of the manipulator in the simulated system; not range-checked.
  virtual void setManipulatorIndex(unsigned int const& index);

  /// The manipulator-level types, in the order they were added.
  virtual const HxDataCaptureTypeVector& dataCaptureVector() const;
  /// The link captures, in the order they were created.
  virtual const LinkDataCaptureVector& linkDataCaptureVector() const;
  /// The end-effector captures, in the order they were created.
  virtual const EndEffectorDataCaptureVector& endEffectorDataCaptureVector() const;

  /// Captures one sample: the manipulator-level types (with element index
  /// `ManipulatorLevelElementIndex`), then every link capture, then every end-effector capture.
  /// Every call is made even after a failure; false when any failed.
  virtual HxBoolean captureData(const HxSystemSimulation& simulation) const;

  /// The manipulator-level type with that token, or null.
  virtual const HxDataCaptureType* dataCaptureType(const HxToken& token) const;
  /// Adds a manipulator-level type by token: true and unchanged when present; false for an
  /// unknown token or a type of another level.
  virtual HxBoolean addDataCaptureType(const HxToken& token);
  /// Adds a link-level type to every link of `manipulator` (positions without a link are
  /// skipped). False for an unknown token or a type that is not link-level; true otherwise.
  virtual HxBoolean addLinkDataCaptureType(const HxToken& token, const HxIndividualManipulator& manipulator);
  /// Adds a link-level type to one link, creating its link capture when needed (only if the
  /// type is accepted). Returns the link capture's add result.
  virtual HxBoolean addLinkDataCaptureType(const std::string& linkIdentifier, const HxToken& token);
  /// Adds an end-effector-level type to end effectors 0 .. numEndEffectors-1. False for an
  /// unknown token or a type that is not end-effector-level; true otherwise (also for 0).
  virtual HxBoolean addEndEffectorDataCaptureType(const HxToken& token, unsigned int numEndEffectors);
  /// As above, adding copies of `type` (replacing types of its token).
  virtual HxBoolean addEndEffectorDataCaptureType(const HxDataCaptureType& type, unsigned int numEndEffectors);
  /// Adds an end-effector-level type to one end effector, creating its capture when needed.
  virtual HxBoolean addEndEffectorDataCaptureType(unsigned int endEffectorIndex, const HxToken& token);
  /// Adds a copy of `type` to one end effector (replacing a type of its token), creating its
  /// capture when needed (only if the type is accepted). False when `type` is not
  /// end-effector-level.
  virtual HxBoolean addEndEffectorDataCaptureType(unsigned int endEffectorIndex, const HxDataCaptureType& type);

  /// Removes a manipulator-level type; never prunes. False when absent.
  virtual HxBoolean removeDataCaptureType(const HxToken& token);
  /// Removes the type from every link capture, last to first, erasing link captures left
  /// empty. True when any removal succeeded.
  virtual HxBoolean removeLinkDataCaptureType(const HxToken& token);
  /// As above over the end-effector captures.
  virtual HxBoolean removeEndEffectorDataCaptureType(const HxToken& token);
  /// Removes the type from one link capture, erasing it when left empty. False when the link
  /// capture or the type is absent.
  virtual HxBoolean removeLinkDataCaptureType(const std::string& linkIdentifier, const HxToken& token);
  /// As above for one end-effector capture.
  virtual HxBoolean removeEndEffectorDataCaptureType(unsigned int endEffectorIndex, const HxToken& token);

  /// Appends a copy, without checking for an existing capture of that identifier.
  virtual void addLinkDataCapture(const HxLinkDataCapture& capture);
  /// The first link capture with that identifier, or null.
  virtual const HxLinkDataCapture* linkDataCapture(const std::string& linkIdentifier) const;
  /// Appends a copy, without checking for an existing capture of that index.
  virtual void addEndEffectorDataCapture(const HxEndEffectorDataCapture& capture);
  /// The first end-effector capture with that index, or null.
  virtual const HxEndEffectorDataCapture* endEffectorDataCapture(unsigned int endEffectorIndex) const;
  /// Erases the first link capture with that identifier; false when there is none.
  virtual HxBoolean removeLinkDataCapture(const std::string& linkIdentifier);
  /// Erases the first end-effector capture with that index; false when there is none.
  virtual HxBoolean removeEndEffectorDataCapture(unsigned int endEffectorIndex);

  /// Whether the manipulator level holds the token.
  virtual HxBoolean isDataCaptureTypeIncluded(const HxToken& token) const;
  /// Whether that link capture holds the token; false when there is no such link capture.
  virtual HxBoolean isDataCaptureTypeIncluded(const std::string& linkIdentifier, const HxToken& token) const;
  /// Whether that end-effector capture holds the token; false when there is none.
  virtual HxBoolean isDataCaptureTypeIncluded(unsigned int endEffectorIndex, const HxToken& token) const;

  /// Number of manipulator-level types.
  virtual unsigned int numDataCaptureTypes() const;
  /// Number of types of that link capture; 0 when there is none.
  virtual unsigned int numDataCaptureTypes(const std::string& linkIdentifier) const;
  /// Number of types of that end-effector capture; 0 when there is none.
  virtual unsigned int numDataCaptureTypes(unsigned int endEffectorIndex) const;

  /// Replaces the disable flags of a manipulator-level type; false when absent.
  virtual HxBoolean setDisableFlags(const HxToken& token, const Flags& flags);
  /// As above in one link capture; false when the link capture or the type is absent.
  virtual HxBoolean setDisableFlags(const std::string& linkIdentifier, const HxToken& token, const Flags& flags);
  /// As above in one end-effector capture.
  virtual HxBoolean setDisableFlags(unsigned int endEffectorIndex, const HxToken& token, const Flags& flags);

  /// Clears every level, sub-captures included.
  virtual void removeAllDataCaptureTypes();

  /// Position of the first link capture with that identifier; false (position untouched)
  /// when there is none.
  virtual HxBoolean findIndex(const std::string& linkIdentifier, unsigned int& position) const;
  /// Position of the first end-effector capture with that index; false when there is none.
  virtual HxBoolean findIndex(unsigned int endEffectorIndex, unsigned int& position) const;

  /// The full size of every type of the capture at all three levels, disabled columns
  /// included. Kept while types are added, so that asking after each add costs nothing.
  HxU32 elementCount() const;

  /// Every available manipulator-level type, built once on first use (not thread-safe).
  static const HxDataCaptureTypeVector& allAvailableDataCaptureTypes();

 private:
  // The full size of the types held, while kept (see elementCount): a copy or an assignment
  // starts without it.
  struct SizeTally {
    bool kept = false;
    HxU32 size = 0;
    SizeTally() = default;
    SizeTally(const SizeTally&) noexcept {}
    SizeTally(SizeTally&& other) noexcept { other.kept = false; }
    SizeTally& operator=(const SizeTally&) {
      kept = false;
      return *this;
    }
  };

  // Appends a sub-capture (moved in: a caller's copy or one built here), keeping the look-ups
  // and the tally in step.
  void appendLink(HxLinkDataCapture capture);
  void appendEndEffector(HxEndEffectorDataCapture capture);
  // Applies `change` to the list `types` (held here) and brings the tally in step with it.
  template <class Change>
  HxBoolean changeTypes(const HxDataCaptureTypeVector& types, Change change);
  // Every list of the capture changed in some other way: the tally is counted again when asked.
  void forgetLists() const;

  HxXmlBasicType<unsigned int> manipulatorIndex_;
  HxDataCaptureTypeVector dataCaptureVector_;
  LinkDataCaptureVector linkDataCaptureVector_;
  EndEffectorDataCaptureVector endEffectorDataCaptureVector_;
  // The first link capture of each identifier and end-effector capture of each index, kept
  // while the lists are built (findIndex answers from them).
  mutable HxFirstPositions<std::string> linkPositions_;
  mutable HxFirstPositions<unsigned int> endEffectorPositions_;
  mutable SizeTally tally_;

  static HxDataCaptureTypeVector m_theAvailableDataCaptureTypeVector;
  static HxBoolean m_theAvailableTypesReady;
};
