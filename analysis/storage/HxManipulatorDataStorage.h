#pragma once
/// \file
/// HxManipulatorDataStorage: the values of one manipulator within one captured sample.

#include "analysis/capture/HxFlatOrder.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlSerialisable.h"

/// The values of one manipulator within one sample: one value vector per configured quantity
/// at manipulator level, and the same per link and per end effector.
///
/// The shape (how many quantities, how many values each) is given once by the capture
/// configuration (`HxSystemDataCapture::allocateStorage`); afterwards the specific setters only
/// overwrite values in place. They never grow a vector: a write whose indices or run do not fit
/// stores nothing and returns false, silently.
///
/// `forEachValue` visits the values in the flat order of a sample (`HxFlatOrder`).
class HxManipulatorDataStorage : public HxXmlCompoundType {
 public:
  /// The values of one quantity.
  using ValueVector = HxXmlVectorType<HxXmlBasicType<double>>;
  /// One value vector per quantity, in configuration order.
  using QuantityVector = HxXmlVectorType<ValueVector>;
  /// One quantity vector per link or end effector, in configuration order.
  using ElementVector = HxXmlVectorType<QuantityVector>;

  /// No quantities, no links, no end effectors.
  HxManipulatorDataStorage() = default;
  /// The given data (and so shape), taken over.
  HxManipulatorDataStorage(QuantityVector&& manipulatorLevelData, ElementVector&& linkLevelData,
                           ElementVector&& endEffectorData);

  /// Registers "manipulatorLevelData", "linkLevelData" and "endEffectorData", in this order.
  void registerComponents() override;

  HX_XML_SERIALISABLE(HxManipulatorDataStorage);
  /// Takes the data over, leaving `other` without any.
  HxManipulatorDataStorage(HxManipulatorDataStorage&& other) = default;

  /// Compares the registered members in registration order.
  bool operator==(const HxManipulatorDataStorage& other) const { return componentsEqual(other); }

  /// Manipulator-level data, [quantity][value].
  virtual const QuantityVector& manipulatorLevelData() const;
  /// Replaces the manipulator-level data (and so its shape).
  virtual void setManipulatorLevelData(const QuantityVector& data);
  /// Stores `value` at [quantity][offset]; false (nothing stored) for an index out of range.
  virtual HxBoolean setSpecificManipulatorLevelData(HxU32 quantity, HxU32 offset, double value);
  /// Copies the n values into [quantity][offset .. offset+n-1]; false (nothing stored) when n is
  /// 0, the quantity does not exist or the run does not fit.
  virtual HxBoolean setSpecificManipulatorLevelData(HxU32 quantity, HxU32 offset, const ValueVector& values);

  /// Link-level data, [link][quantity][value].
  virtual const ElementVector& linkLevelData() const;
  /// Replaces the link-level data (and so its shape).
  virtual void setLinkLevelData(const ElementVector& data);
  /// Stores `value` at [link][quantity][offset]; false (nothing stored) for an index out of
  /// range.
  virtual HxBoolean setSpecificLinkLevelData(HxU32 link, HxU32 quantity, HxU32 offset, double value);
  /// Copies the n values into [link][quantity][offset .. offset+n-1]; false (nothing stored)
  /// when n is 0, the link or the quantity does not exist or the run does not fit.
  virtual HxBoolean setSpecificLinkLevelData(HxU32 link, HxU32 quantity, HxU32 offset, const ValueVector& values);

  /// End-effector data, [end effector][quantity][value].
  virtual const ElementVector& endEffectorData() const;
  /// Replaces the end-effector data (and so its shape).
  virtual void setEndEffectorData(const ElementVector& data);
  /// Stores `value` at [endEffector][quantity][offset]; false (nothing stored) for an index out
  /// of range.
  virtual HxBoolean setSpecificEndEffectorData(HxU32 endEffector, HxU32 quantity, HxU32 offset, double value);
  /// Copies the n values into [endEffector][quantity][offset .. offset+n-1]; false (nothing
  /// stored) when n is 0, the end effector or the quantity does not exist or the run does not
  /// fit.
  virtual HxBoolean setSpecificEndEffectorData(HxU32 endEffector, HxU32 quantity, HxU32 offset,
                                               const ValueVector& values);

  /// Number of values in flat order.
  HxU32 numValues() const;

  /// Calls `visit(double)` for every value in flat order. Does not allocate.
  template <class Visitor>
  void forEachValue(Visitor&& visit) const {
    forEachValueOf(*this, [&visit](const HxXmlBasicType<double>& value) { visit(value.value()); });
  }
  /// Calls `visit(HxXmlBasicType<double>&)` for every value in flat order, which it may change.
  /// Does not allocate.
  template <class Visitor>
  void forEachValue(Visitor&& visit) {
    forEachValueOf(*this, visit);
  }

 private:
  // Walks the standard containers: one call per vector instead of one per value.
  template <class Self, class Visitor>
  static void forEachValueOf(Self& self, Visitor&& visit) {
    HxFlatOrder::forEachLevelEntry(self.manipulatorLevelData_, self.linkLevelData_.vectorContainer(),
                                   self.endEffectorData_.vectorContainer(), [&visit](HxU32, HxU32, auto& quantities) {
                                     for (auto& values : quantities.vectorContainer()) {
                                       for (auto& value : values.vectorContainer()) visit(value);
                                     }
                                   });
  }

  QuantityVector manipulatorLevelData_;
  ElementVector linkLevelData_;
  ElementVector endEffectorData_;
};
