#pragma once
/// \file
/// HxSystemDataStorage: one captured sample of the whole simulated system (the sample record).

#include <cstdint>
#include <string>
#include <vector>

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/storage/HxManipulatorDataStorage.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlSerialisable.h"

/// One captured sample of the whole system: the simulation time, the path-point index and one
/// `HxManipulatorDataStorage` per captured manipulator (component kind 1).
///
/// Life of a record: `HxSystemDataCapture::allocateStorage` gives it its shape and element size
/// once; then, per sample, the recorder stamps it (`setTime`, `setPathPointIndex`), the
/// capture fills it (through the specific setters with `storeData`, or straight into the
/// array of reals with `storeDataDirect`), and every output writer reads it back flat, as reals
/// (`elementValues`, `getRealElements`) or as text (`elementText`, `getStringElements`).
///
/// Elements in the flat order of a sample (`HxFlatOrder`): the time, the path-point index, then
/// the values of every manipulator. The element size counts the two leading elements.
///
/// Text cache: several writers ask for the same sample, so the record turns its values into
/// reals in flat order (`elementValues`) and into text (`elementText`) at most once per sample,
/// each only when first asked for. Every setter (and `setManipulatorDataVector`,
/// `computeElementSize`, assignment, `read`) marks both stale; `setTime` and
/// `setPathPointIndex` mark the text stale and update their element of the reals. The
/// text is one block of chars with an offset per element, made with `HxDOUBLE2STRING` straight
/// into the block; `getStringElements` copies it into the caller's strings. Once warm, none of
/// this allocates: the block is sized for the longest texts of the current element size, and
/// the caller's strings keep capacity for the longest number text. The caches are not part of
/// the value (not copied, not compared, not serialised).
///
/// Values kept flat: a capture may write a sample straight into the array of reals
/// (`beginDirectStore`, the recorder's route), which then holds values newer than the nested
/// `HxManipulatorDataStorage` objects. Those are brought up to date from the array only when
/// something reads them: `manipulatorDataVector`, the XML form (`write`, `componentMap`),
/// equality, copy and assignment, `getRealElements`, and every setter or change of shape (which
/// then work on the nested objects as before). What any of these gives is the same as if the
/// sample had been stored through the setters.
///
/// Not thread-safe: `getStringElements`, `elementText`, `elementValues` and the readers above
/// are const but refresh the caches or the nested objects.
class HxSystemDataStorage : public HxBaseSystemDataComponent, public HxElementSource {
 public:
  /// One storage per captured manipulator, in the order of the capture configuration.
  using ManipulatorDataVector = HxXmlVectorType<HxManipulatorDataStorage>;
  /// The values of one quantity.
  using ValueVector = HxManipulatorDataStorage::ValueVector;

  HX_XML_SERIALISABLE_HOOKS(HxSystemDataStorage);
  /// No manipulators, time 0, path-point index 0, element size 0.
  HxSystemDataStorage();
  /// Copies everything but the text cache (the element size included).
  HxSystemDataStorage(const HxSystemDataStorage& other);
  /// Assigns everything but the caches (the element size included); marks the caches stale.
  HxSystemDataStorage& operator=(const HxSystemDataStorage& other);
  ~HxSystemDataStorage() override;
  /// A default, empty record.
  static HxSystemDataStorage nullObject();
  /// Compares the registered members in registration order, then the element size.
  bool operator==(const HxSystemDataStorage& other) const;

  /// Registers "manipulatorDataVector", "time" and "pathPointIndex", in this order.
  void registerComponents() override;
  /// The base read, then `computeElementSize()` (the element size is not written), so that a
  /// record reads back equal to the one written; marks the caches stale. Returns the base
  /// read's result.
  HxBoolean read(HxXmlReader& reader) override;
  /// The registered members, brought up to date first (the XML form and generic readers go
  /// through here).
  const ComponentMap& componentMap() const override;

  /// `HxSystemDataComponentKind::Record` (1).
  unsigned int type() const override;
  /// The sample as text, in flat order: the time and every value by `HxDOUBLE2STRING`, the
  /// path-point index by `HxINT2STRING(index, 10)`. `elements` is resized to the element size
  /// (time and index always included). See the class comment for the cache; no allocation once
  /// warm.
  void getStringElements(std::vector<std::string>& elements) const override;
  /// The per-manipulator data, by manipulator capture position.
  virtual const ManipulatorDataVector& manipulatorDataVector() const;
  /// Replaces the per-manipulator data (and so the shape); call `computeElementSize` after.
  virtual void setManipulatorDataVector(const ManipulatorDataVector& data);
  /// As `setManipulatorDataVector`, taking `data` over instead of copying it.
  void takeManipulatorDataVector(ManipulatorDataVector&& data);

  // The specific setters forward to manipulator `manipulator`'s storage; each returns false
  // (nothing stored, nothing printed) for an index out of range or a run that does not fit.
  // Each marks the caches stale, even when it fails.

  /// Stores one manipulator-level value of manipulator `manipulator` (see
  /// `HxManipulatorDataStorage::setSpecificManipulatorLevelData`); false for an index out of
  /// range.
  virtual HxBoolean setSpecificManipulatorLevelData(HxU32 manipulator, HxU32 quantity, HxU32 offset, double value);
  /// Stores a run of manipulator-level values of manipulator `manipulator`; false for an index
  /// out of range, an empty run or a run that does not fit.
  virtual HxBoolean setSpecificManipulatorLevelData(HxU32 manipulator, HxU32 quantity, HxU32 offset,
                                                    const ValueVector& values);
  /// Stores one link-level value of manipulator `manipulator` (see
  /// `HxManipulatorDataStorage::setSpecificLinkLevelData`); false for an index out of range.
  virtual HxBoolean setSpecificLinkLevelData(HxU32 manipulator, HxU32 link, HxU32 quantity, HxU32 offset, double value);
  /// Stores a run of link-level values of manipulator `manipulator`; false for an index out of
  /// range, an empty run or a run that does not fit.
  virtual HxBoolean setSpecificLinkLevelData(HxU32 manipulator, HxU32 link, HxU32 quantity, HxU32 offset,
                                             const ValueVector& values);
  /// Stores one end-effector value of manipulator `manipulator` (see
  /// `HxManipulatorDataStorage::setSpecificEndEffectorData`); false for an index out of range.
  virtual HxBoolean setSpecificEndEffectorData(HxU32 manipulator, HxU32 endEffector, HxU32 quantity, HxU32 offset,
                                               double value);
  /// Stores a run of end-effector values of manipulator `manipulator`; false for an index out
  /// of range, an empty run or a run that does not fit.
  virtual HxBoolean setSpecificEndEffectorData(HxU32 manipulator, HxU32 endEffector, HxU32 quantity, HxU32 offset,
                                               const ValueVector& values);

  /// Simulation time of the sample.
  virtual double time() const;
  /// Stamps the sample with its simulation time; marks the text stale.
  virtual void setTime(const double& time);
  /// Index of the path point being executed; 0 unless set.
  virtual unsigned int pathPointIndex() const;
  /// Sets the path-point index; marks the text stale.
  virtual void setPathPointIndex(unsigned int index);

  /// Recomputes the element size from the current shape: 2 plus the number of values.
  virtual void computeElementSize();
  /// The element size, or the element size minus 2 when `excludeTimeAndIndex` is true (which
  /// wraps below zero on a record whose size was never computed).
  virtual HxU32 elementSize(bool excludeTimeAndIndex = false) const;
  /// The sample as reals: `out` is resized to `elementSize(excludeTimeAndIndex)`; unless
  /// excluded, element 0 is the time and element 1 the path-point index, and the values follow.
  /// A record whose size was never computed yields an empty list instead of a wrapped size.
  virtual void getRealElements(std::vector<double>& out, bool excludeTimeAndIndex) const;

  /// The string elements of `getStringElements` as one block (see `HxElementText`), made at
  /// most once per sample. Never null.
  const HxElementText* elementText() const override;
  /// The elements in flat order as reals: the time, the path-point index as a double, then the
  /// values; as many as the element size, an element the record has no value for being 0 (its
  /// text is empty). Element i's text is exactly element i of `getStringElements`. Never null.
  const HxElementValues* elementValues() const override;
  /// The element size, the number of manipulators, and per manipulator its numbers of links and
  /// end effectors and, entry by entry in flat order, its number of quantities and the size of
  /// each. Does not allocate once `layout` has room.
  void describeLayout(std::vector<HxU32>& layout) const override;
  /// The shape stamp (see `shapeStamp`), which follows every change of the layout.
  std::uint64_t layoutStamp() const override { return shapeStamp_; }
  /// A copy whose time is 0, whose path-point index is 1 and whose values are 2, 3, ... in flat
  /// order, so that element i of its string elements is the text of i. Owned by the caller.
  HxBaseSystemDataComponent* newLayoutProbe() const override;

  /// A number that changes whenever the record's shape or element size may have changed (and
  /// differs between records): what a capture worked out about where its values land in this
  /// record stays right while the stamp is the same.
  std::uint64_t shapeStamp() const { return shapeStamp_; }
  /// The elements in flat order as an array of reals for a capture to overwrite in place with
  /// the current sample (positions 2 onward are the values; time and index are the record's
  /// own), or null when the element size does not match the shape (then use the setters).
  /// Marks the text stale and the nested objects behind the array. Does not allocate once the
  /// record's values have been made (`elementValues`).
  double* beginDirectStore();

 private:
  // Brings the nested objects up to date from the array (values written in place).
  void syncNested() const;
  // The nested objects changed (or are about to): the array and the text are remade from them
  // on demand. Values the array holds ahead of them are moved into them first.
  void invalidateText() {
    syncNested();
    textValid_ = false;
    valuesValid_ = false;
  }
  // Drops the array and the text without moving their values (the nested objects are
  // replaced as a whole); the shape may change, so the stamp is renewed.
  void discardFlatValues();
  void refreshValues() const;
  void refreshText() const;
  // Calls visit(double) for every element in flat order: the time and the path-point index
  // (unless `excludeTimeAndIndex`), then the values of every manipulator.
  template <class Visit>
  void forEachElement(bool excludeTimeAndIndex, Visit&& visit) const {
    if (!excludeTimeAndIndex) {
      visit(time_.value());
      visit(static_cast<double>(pathPointIndex_.value()));
    }
    for (const HxManipulatorDataStorage& manipulator : manipulatorDataVector_.vectorContainer()) {
      manipulator.forEachValue(visit);
    }
  }

  // Mutable: brought up to date from the array by const readers.
  mutable ManipulatorDataVector manipulatorDataVector_;
  HxXmlBasicType<double> time_;
  HxXmlBasicType<unsigned int> pathPointIndex_;
  HxU32 elementSize_ = 0;

  // The current sample in flat order, as reals (valid while valuesValid_) and as text (valid
  // while textValid_); see the class comment. the first valueCount_ elements have a value;
  // the rest (a stale element size larger than the record) have empty texts.
  mutable std::vector<double> values_;
  mutable std::size_t valueCount_ = 0;
  mutable HxElementValues valuesView_;
  mutable bool valuesValid_ = false;
  // The array holds values newer than the nested objects (then valuesValid_ is true and the
  // element size matches the shape).
  mutable bool flatAhead_ = false;
  // The element size matched the shape when the array was last made.
  mutable bool shapeMatches_ = false;
  std::uint64_t shapeStamp_;
  mutable std::vector<char> textChars_;
  mutable std::vector<HxU32> textOffsets_;
  mutable std::string indexText_;
  mutable HxElementText textView_;
  mutable bool textValid_ = false;
};
