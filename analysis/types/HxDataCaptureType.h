#pragma once
/// \file
/// HxDataCaptureType: abstract base of the captured quantities.

#include <algorithm>
#include <memory>
#include <string>

#include "analysis/types/HxJointRow.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxToken.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlSerialisable.h"

class HxSystemSimulation;

/// One quantity that is recorded from a running simulation (a joint position, an end-effector
/// placement, a force, a power...).
///
/// A concrete data capture type knows its XML token, a description, its number of columns
/// (`dataSize`), a label per column, the level at which it is captured (`type`: 0 manipulator,
/// 1 link/joint, 2 end effector) and how to read its values out of an `HxSystemSimulation`
/// into its own buffer (`captureData`). Columns may be switched off one by one with
/// `disableFlags`; a switched-off column stays in the buffer but is left out of storage and
/// output by the caller.
///
/// Serialised members: "disableFlags" and "dataLabels". The capture buffer is copied and
/// compared but never serialised.
///
/// The captured values live in a plain array of doubles inside the object (`values`), which is
/// what a capture writes and what a recorder copies from; the buffer of serialisable reals that
/// `data` returns is brought up to date from it when `data` is called.
///
/// Several concrete types keep history between samples, so one object serves exactly one
/// manipulator, link or end effector, and must be captured from one thread at a time.
class HxDataCaptureType : public HxXmlCompoundType {
 public:
  /// One switch-off flag per column.
  using FlagVector = HxXmlVectorType<HxXmlBasicType<bool> >;
  /// One label per column.
  using LabelVector = HxXmlVectorType<HxXmlBasicType<std::string> >;
  /// The capture buffer: one value per column.
  using DataVector = HxXmlVectorType<HxXmlBasicType<double> >;

  /// Empty flags, labels and buffer; concrete constructors size the labels and the buffer.
  HxDataCaptureType();
  /// Copies flags, labels and buffer.
  HxDataCaptureType(const HxDataCaptureType& other);
  /// Assigns flags, labels and buffer.
  HxDataCaptureType& operator=(const HxDataCaptureType& other);
  ~HxDataCaptureType() override;

  /// Registers "disableFlags" and then "dataLabels".
  void registerComponents() override;

  /// One flag per column; true switches the column off. May be shorter or longer than
  /// `dataSize()`: columns without a flag are on, flags beyond the last column are ignored.
  virtual const FlagVector& disableFlags() const;
  /// Replaces the whole flag vector.
  virtual void setDisableFlags(const FlagVector& flags);
  /// Label of column `index`; the empty string when `index` is not below the number of labels.
  virtual const std::string& label(const HxU32& index) const;
  /// Human-readable name of the quantity.
  virtual const std::string& description() const = 0;
  /// Reads the quantity for manipulator `manipulatorIndex` (and, for link and end-effector
  /// level types, joint or end effector `elementIndex` of it) from `simulation` into the
  /// buffer. The buffer is first reset to `dataSize()` zeros. Returns false, leaving the
  /// buffer as it stands (zeros or the columns filled so far), when an index is out of range
  /// or the simulation does not provide the quantity; prints nothing.
  virtual HxBoolean captureData(const HxSystemSimulation& simulation, const HxU32& manipulatorIndex,
                                const HxU32& elementIndex) const = 0;
  /// Number of columns.
  virtual HxU32 dataSize() const = 0;
  /// Number of columns that are not switched off by `disableFlags`.
  virtual HxU32 activeDataSize() const;
  /// Level code: 0 manipulator, 1 link/joint, 2 end effector.
  virtual HxU32 type() const = 0;
  /// The whole capture buffer, all `dataSize()` columns, switched-off ones included, brought up
  /// to date from `values()` by this call (so, like a capture, from one thread at a time).
  virtual const DataVector& data() const;

  /// The captured values as a plain array of `valueCount()` doubles, all columns, switched-off
  /// ones included: the same values as `data()`, read without bringing that buffer up to date.
  /// Valid as long as the object lives.
  const double* values() const { return values_; }
  /// Number of values in `values()`: the number of columns the object was made with.
  HxU32 valueCount() const { return valueCount_; }
  /// Sets all `valueCount()` values from `values[0]` on, as a capture of those values would: for
  /// a host that captured them elsewhere (another copy of this type, another thread) and
  /// records them here.
  void setCapturedValues(const double* values) const;

  /// For a capture of many link-level types at once: how to read this type's values for every
  /// joint of a manipulator in one go (`HxJointRow`), giving what `captureData` gives. No reader
  /// (the default) when the type is only read through `captureData`. A derived class inherits
  /// the source of its base, which names the base: the reader is for objects of that class only.
  virtual HxJointRowSource jointRowSource() const { return {}; }

  /// Moves the values to `at`, room for `valueCount()` doubles inside `block`, which the object
  /// keeps alive from then on; they stay there until the object is given another number of
  /// values. For a configuration that keeps all its types' values side by side, in the order a
  /// sample lists them, so that they are stored with one copy. Changes no value.
  void placeValues(double* at, std::shared_ptr<double[]> block) const;

  /// For a loop over many types, whose objects would come from far caches: asks the processor to
  /// fetch what `captureData` reads and writes of this object first (its class, and the start of
  /// its values, which lie within the object's first 72 bytes), without reading the object. A
  /// hint only; it changes nothing.
  void prefetch() const {
    const char* const object = reinterpret_cast<const char*>(this);
    __builtin_prefetch(object);
    __builtin_prefetch(object + 64, 1);
  }

  /// Equal when the flags, the labels and the buffers are equal (checked in that order).
  bool operator==(const HxDataCaptureType& other) const;
  /// Negation of `operator==`.
  bool operator!=(const HxDataCaptureType& other) const { return !(*this == other); }

 protected:
  /// Sizes the labels and the buffer for `count` columns and sets the labels, in column order.
  void initializeColumns(HxU32 count, const char* const* labels);
  /// Sets every value to zero. Allocates nothing, and touches only the values: a type of one
  /// value (most link quantities) writes one double, not a call to clear memory.
  void resetData() const {
    if (valueCount_ == 1) {
      values_[0] = 0.0;
      return;
    }
    std::fill_n(values_, valueCount_, 0.0);
  }
  /// Column `index` of the buffer, for the concrete `captureData`.
  double& column(HxU32 index) const { return values_[index]; }
  /// Columns `first` to `first + count - 1` from `values[0]` to `values[count - 1]`.
  template <class Values>
  void setColumns(HxU32 first, const Values& values, HxU32 count) const {
    for (HxU32 i = 0; i < count; ++i) column(first + i) = values[i];
  }
  /// Seven columns from `first`: a placement's translation (X, Y, Z), then its orientation
  /// (components 0 to 3).
  template <class Placement>
  void setPlacementColumns(HxU32 first, const Placement& placement) const {
    setColumns(first, placement.translation(), 3);
    setColumns(first + 3, placement.orientation(), 4);
  }

 private:
  /// Makes room for `count` values, all zero, and as many serialisable reals for `data`.
  void sizeValues(HxU32 count);
  /// Takes `other`'s number of values and its values.
  void copyValuesFrom(const HxDataCaptureType& other);

  /// Columns a type keeps inside the object; a type of more columns keeps them on the heap.
  static constexpr HxU32 kLocalValues = 7;

  /// The captured values, written by the const `captureData`: `local_` or `wide_`. First, with
  /// the local values, so that what a capture touches of the object (its class, this pointer
  /// and its values) lies in its first cache lines.
  mutable double* values_ = local_;
  HxU32 valueCount_ = 0;
  mutable double local_[kLocalValues] = {};
  std::unique_ptr<double[]> wide_;
  /// Where `values_` points when `placeValues` moved the values out of the object.
  mutable std::shared_ptr<double[]> placed_;
  /// What `data` returns: the values as serialisable reals, brought up to date by `data`.
  mutable DataVector data_;
  /// Serialised as "disableFlags".
  FlagVector disableFlags_;
  /// Serialised as "dataLabels"; set by `initializeColumns`.
  LabelVector dataLabels_;
};

/// Declares, inside a concrete data capture type, the members that every one of them has:
/// construction, copy of every member (working state between samples included) and the
/// serialisable-object hooks (HX_XML_SERIALISABLE), the class-wide constants
/// `m_theDescription` and `m_theDataSize`, and the overrides of `description`, `dataSize`,
/// `type` and `captureData`.
#define HX_DATA_CAPTURE_TYPE_MEMBERS(ClassName)                                              \
  HX_XML_SERIALISABLE(ClassName);                                                            \
  /** Sizes the labels and the buffer for the class's columns and sets the labels. */        \
  ClassName();                                                                               \
  const std::string& description() const override;                                           \
  HxU32 dataSize() const override;                                                           \
  HxU32 type() const override;                                                               \
  HxBoolean captureData(const HxSystemSimulation& simulation, const HxU32& manipulatorIndex, \
                        const HxU32& elementIndex) const override;                           \
  /** The description, built at load time. */                                                \
  static const std::string m_theDescription;                                                 \
  /** The number of columns. */                                                              \
  static const HxU32 m_theDataSize
