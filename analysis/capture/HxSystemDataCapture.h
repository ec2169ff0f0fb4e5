#pragma once
/// \file
/// HxSystemDataCapture: the capture configuration of a whole simulated system.

#include <string>
#include <vector>

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/capture/HxCaptureListIndex.h"
#include "analysis/capture/HxCapturePlan.h"
#include "analysis/capture/HxFlatStorePlan.h"
#include "analysis/capture/HxManipulatorDataCapture.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlSerialisable.h"

class HxIndividualManipulator;
class HxSystemDataStorage;
class HxSystemSimulation;

/// The capture configuration of one simulated multi-manipulator system: which quantities are
/// captured for which manipulator, link and end effector (component kind 0).
///
/// Usage:
///
///     HxSystemDataCapture capture;
///     capture.addManipulatorDataCaptureType(1, HxSimAnalysis::HxBasePositionDataCaptureTypeToken);
///     capture.addLinkDataCaptureType(1, HxSimAnalysis::HxJointPositionDataCaptureTypeToken,
///                                    simulation.manipulators()[1]);
///     capture.addEndEffectorDataCaptureType(1, HxSimAnalysis::HxEndEffectorPlacementDataCaptureTypeToken, 1u);
///     HxSystemDataStorage record;
///     capture.allocateStorage(record);          // once, after configuring
///     // per sample:
///     capture.captureData(simulation);          // the types read the simulation
///     record.setTime(t);
///     capture.storeData(record);                // active values into the record
///
/// Keyed operations name a manipulator by its index in the simulated system (m); the record is
/// indexed by the manipulator capture's position in the list instead. The lookup by m takes
/// the last matching entry (below the system level the first match wins). The element size
/// counts every column, disabled ones included; the record is sized by active columns only.
/// Reports failure by result only; prints nothing.
class HxSystemDataCapture : public HxBaseSystemDataComponent {
 public:
  /// Disable flags of one data capture type, one per column.
  using Flags = HxXmlVectorType<HxXmlBasicType<bool>>;
  /// Captured values, in flat order.
  using Values = HxXmlVectorType<HxXmlBasicType<double>>;
  /// The manipulator captures, held by value.
  using ManipulatorDataCaptureVector = HxXmlVectorType<HxManipulatorDataCapture>;

  /// Empty label, no manipulator captures, element size 0.
  HxSystemDataCapture() = default;

  /// Registers "systemDataCaptureLabel", then "manipulatorDataCaptureVector".
  void registerComponents() override;
  /// The base write.
  HxBoolean write(HxXmlWriter& writer) const override;
  /// The base read, then `computeElementSize()`; returns the base read's result.
  HxBoolean read(HxXmlReader& reader) override;

  HX_XML_SERIALISABLE(HxSystemDataCapture);

  /// Compares the registered members in registration order (not the element size).
  bool operator==(const HxSystemDataCapture& other) const { return componentsEqual(other); }

  /// `HxSystemDataComponentKind::Capture` (0).
  unsigned int type() const override;
  /// The column labels in the flat order of a sample (`HxFlatOrder`): "Time", "Point Path
  /// Index", then those of every type. The prefix P = "Manip[m]:" names the manipulator, to
  /// which a link capture's types add the link identifier and ":", an end-effector capture's
  /// types "EE[e]:".
  /// A type of 0 or 1 columns gives one label P + description, whatever its flags; a wider type
  /// gives P + description + ":" + column label for each enabled column. The list is sized by
  /// the element size plus 2, so disabled columns leave empty strings at its end (and a
  /// disabled 1-column type a label without a value). Reuses the caller's strings: no
  /// allocation once warm.
  void getStringElements(std::vector<std::string>& labels) const override;

  /// The configuration's label (free text, serialised as "systemDataCaptureLabel").
  virtual const std::string& label() const;
  /// Replaces the label.
  virtual void setLabel(const std::string& label);
  /// The manipulator captures, in the order they were created; a record's manipulator positions
  /// follow this order.
  virtual const ManipulatorDataCaptureVector& manipulatorDataCaptureVector() const;

  /// Makes every configured type read the simulation (every manipulator capture is called even
  /// after a failure). True when all succeeded, and for an empty configuration. The capture is
  /// worked out once per configuration (`HxCapturePlan`): the library's plain joint reads are
  /// taken a row at a time rather than through each type's `captureData`, with the same values
  /// and result; the types' values are then kept side by side in one block.
  virtual HxBoolean captureData(const HxSystemSimulation& simulation) const;

  /// Adds a manipulator-level type for manipulator m, creating its capture when needed (only
  /// if the type is accepted). False, nothing changed, for an unknown or wrong-level token.
  virtual HxBoolean addManipulatorDataCaptureType(unsigned int const& m, const HxToken& token);
  /// Adds a link-level type to every link of `manipulator`, for manipulator m.
  virtual HxBoolean addLinkDataCaptureType(unsigned int const& m, const HxToken& token,
                                           const HxIndividualManipulator& manipulator);
  /// Adds a link-level type to one link of manipulator m.
  virtual HxBoolean addLinkDataCaptureType(unsigned int const& m, const std::string& link, const HxToken& token);
  /// Adds an end-effector-level type to end effectors 0 .. numEndEffectors-1 of manipulator m.
  virtual HxBoolean addEndEffectorDataCaptureType(unsigned int const& m, const HxToken& token,
                                                  unsigned int const& numEndEffectors);
  /// As above with copies of `type` (replacing types of its token).
  virtual HxBoolean addEndEffectorDataCaptureType(unsigned int const& m, const HxDataCaptureType& type,
                                                  unsigned int const& numEndEffectors);
  /// Adds a copy of `type` to end effector e of manipulator m.
  virtual HxBoolean addEndEffectorDataCaptureType(unsigned int const& m, unsigned int const& e,
                                                  const HxDataCaptureType& type);
  /// Adds a type by token to end effector e of manipulator m.
  virtual HxBoolean addEndEffectorDataCaptureType(unsigned int const& m, unsigned int const& e, const HxToken& token);

  /// Removes a type of manipulator m; false when m or the type is not there. Pruning: the
  /// manipulator capture is then erased if it has no manipulator-level types and no
  /// sub-captures of the level removed from (end-effector captures for the end-effector
  /// removals, link captures for the others), even when the other level is still populated.
  /// The element size is recomputed when the removal succeeded.
  /// This overload removes a manipulator-level type.
  virtual HxBoolean removeManipulatorDataCaptureType(unsigned int const& m, const HxToken& token);
  /// Removes a link-level type from every link capture of manipulator m.
  virtual HxBoolean removeLinkDataCaptureType(unsigned int const& m, const HxToken& token);
  /// Removes a link-level type from one link capture of manipulator m.
  virtual HxBoolean removeLinkDataCaptureType(unsigned int const& m, const std::string& link, const HxToken& token);
  /// Removes an end-effector-level type from every end-effector capture of manipulator m.
  virtual HxBoolean removeEndEffectorDataCaptureType(unsigned int const& m, const HxToken& token);
  /// Removes an end-effector-level type from end effector e of manipulator m.
  virtual HxBoolean removeEndEffectorDataCaptureType(unsigned int const& m, unsigned int const& e,
                                                     const HxToken& token);

  /// Appends a copy (no check for an entry of the same index); recomputes the element size.
  /// Always true.
  virtual HxBoolean addManipulatorDataCapture(const HxManipulatorDataCapture& capture);
  /// The (last) capture of manipulator m, or null.
  virtual const HxManipulatorDataCapture* manipulatorDataCapture(unsigned int const& m) const;
  /// Erases the (last) capture of manipulator m; false when there is none.
  virtual HxBoolean removeManipulatorDataCapture(unsigned int const& m);

  /// Whether manipulator m captures the token at manipulator level; false when m is not
  /// captured.
  virtual HxBoolean isDataCaptureTypeIncluded(unsigned int const& m, const HxToken& token) const;
  /// Whether manipulator m captures the token at that link; false when m or the link is not
  /// captured.
  virtual HxBoolean isDataCaptureTypeIncluded(unsigned int const& m, const std::string& link,
                                              const HxToken& token) const;
  /// Whether manipulator m captures the token at end effector e; false when m or the end
  /// effector is not captured.
  virtual HxBoolean isDataCaptureTypeIncluded(unsigned int const& m, unsigned int const& e, const HxToken& token) const;

  /// Number of manipulator-level types of manipulator m; 0 when m is not captured.
  virtual unsigned int numDataCaptureTypes(unsigned int const& m) const;
  /// Number of types of manipulator m at that link; 0 when m or the link is not captured.
  virtual unsigned int numDataCaptureTypes(unsigned int const& m, const std::string& link) const;
  /// Number of types of manipulator m at end effector e; 0 when m or the end effector is not
  /// captured.
  virtual unsigned int numDataCaptureTypes(unsigned int const& m, unsigned int const& e) const;

  /// Replaces the disable flags of a manipulator-level type of manipulator m; false when it is
  /// not there. The element size is left alone (it counts disabled columns too).
  virtual HxBoolean setDisableFlags(unsigned int const& m, const HxToken& token, const Flags& flags);
  /// Replaces the disable flags of a type of manipulator m at that link; false when it is not
  /// there. The element size is left alone.
  virtual HxBoolean setDisableFlags(unsigned int const& m, const std::string& link, const HxToken& token,
                                    const Flags& flags);
  /// Replaces the disable flags of a type of manipulator m at end effector e; false when it is
  /// not there. The element size is left alone.
  virtual HxBoolean setDisableFlags(unsigned int const& m, unsigned int const& e, const HxToken& token,
                                    const Flags& flags);

  /// Shapes `storage` to this configuration: one value vector per type, sized by its active
  /// size, per manipulator capture position; then computes the record's element size.
  virtual void allocateStorage(HxSystemDataStorage& storage) const;
  /// Copies the active values of every type (as last captured) into `storage`, which must have
  /// been shaped by `allocateStorage` for this configuration (mismatched writes are refused by
  /// the record). False for a configuration without manipulator captures. Does not allocate
  /// once warm.
  virtual HxBoolean storeData(HxSystemDataStorage& storage) const;
  /// Stores the sample as `storeData` does, with the same result in `storage` and the same
  /// return value, but copies each type's active values once, straight into the record's array
  /// of values (`HxSystemDataStorage::beginDirectStore`), instead of through the record's
  /// setters and the scratch buffer; the record's nested objects follow when read. Falls back
  /// to `storeData` for a record whose element size does not match its shape. Where the values
  /// land is worked out once per record shape and configuration (at `allocateStorage` for the
  /// record allocated there). Does not allocate once warm. The recorder's route.
  HxBoolean storeDataDirect(HxSystemDataStorage& storage) const;
  /// Resizes `values` to the element size and writes the active values packed from position 0,
  /// in flat order; with disabled columns the tail is left unwritten.
  virtual void getDataElements(Values& values) const;

  /// Clears every manipulator capture and the list; element size 0. The label is kept.
  virtual void removeAllDataCaptureTypes();

  /// Position of the last capture of manipulator m (the walk does not stop at a match); false
  /// (position untouched) when there is none.
  virtual HxBoolean findIndex(unsigned int const& m, unsigned int& position) const;

  /// Recomputes the element size: the full size of every type, disabled columns included.
  virtual void computeElementSize();

  /// `activeData` becomes `data` less the elements whose flag is true; elements without a flag
  /// are kept.
  virtual void getActiveData(const Flags& flags, const Values& data, Values& activeData) const;

  /// The element size as last computed.
  HxU32 elementSize() const { return elementSize_; }

 private:
  // Applies `add` to the capture of manipulator m, or to a new capture for m that is kept only
  // if `add` succeeded; recomputes the element size on success.
  template <class Add>
  HxBoolean addToManipulator(unsigned int const& m, Add add);
  // Applies `remove` to the capture of manipulator m and prunes it (see the source).
  template <class Remove>
  HxBoolean removeFromManipulator(unsigned int const& m, bool endEffectorLevel, Remove remove);
  // The types or their flags changed: the plans of captureData and storeDataDirect are made
  // again.
  void configurationChanged() {
    capturePlan_.forget();
    plan_.forget();
  }
  // Makes the capture plan when there is none. It moves the types' values, so the plan of
  // storeDataDirect, which reads them where they are, is then made again too.
  void makeCapturePlan() const;
  // Appends the labels of one type at `position` onward, with `prefix`.
  void appendTypeLabels(const HxDataCaptureType& type, const std::string& prefix, std::vector<std::string>& labels,
                        std::size_t& position) const;

  HxXmlBasicType<std::string> label_;
  ManipulatorDataCaptureVector manipulatorDataCaptureVector_;
  HxU32 elementSize_ = 0;
  // Scratch buffer of storeData: the active values of one type at a time.
  mutable HxScratch<Values> activeData_;
  // Scratch texts of getStringElements, kept so that later calls reuse their capacity.
  mutable HxScratch<std::string> prefix_;
  mutable HxScratch<std::string> number_;
  // Set-up look-ups (last capture per manipulator index, element counts); see HxCaptureListIndex.
  mutable HxCaptureListIndex listIndex_;
  // How captureData reads every type, and where the types' values are kept side by side.
  mutable HxCapturePlan capturePlan_;
  // Where storeDataDirect puts each type's values in the record it last stored into.
  mutable HxFlatStorePlan plan_;
};
