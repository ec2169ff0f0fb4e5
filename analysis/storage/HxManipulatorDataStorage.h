#pragma once
/// \file
/// HxManipulatorDataStorage: the values of one manipulator within one captured sample.

#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlCompoundType.h"

/// The values of one manipulator within one sample: one value vector per configured quantity
/// at manipulator level, and the same per link and per end effector.
///
/// The shape (how many quantities, how many values each) is given once by the capture
/// configuration (`HxSystemDataCapture::allocateStorage`); afterwards the specific setters only
/// overwrite values in place. They never grow a vector: a write whose indices or run do not fit
/// stores nothing and returns false, silently.
///
/// Flat order of the values (see `forEachValue`): every value of every manipulator-level
/// quantity, quantity by quantity; then per link, every value of every quantity of that link;
/// then the same per end effector.
class HxManipulatorDataStorage : public HxXmlCompoundType {
 public:
  /// The values of one quantity.
  using ValueVector = HxXmlVectorType<HxXmlBasicType<double>>;
  /// One value vector per quantity, in configuration order.
  using QuantityVector = HxXmlVectorType<ValueVector>;
  /// One quantity vector per link or end effector, in configuration order.
  using ElementVector = HxXmlVectorType<QuantityVector>;

  /// No quantities, no links, no end effectors.
  HxManipulatorDataStorage();
  /// Copies the three data vectors, shape and values.
  HxManipulatorDataStorage(const HxManipulatorDataStorage& other);
  /// Assigns the three data vectors, shape and values.
  HxManipulatorDataStorage& operator=(const HxManipulatorDataStorage& other);
  ~HxManipulatorDataStorage() override;

  /// Registers "manipulatorLevelData", "linkLevelData" and "endEffectorData", in this order.
  void registerComponents() override;

  HxXmlObject* clone() const override;
  HxXmlObject* newObject() const override;
  /// False for null or for an object of another class, else `operator==`.
  HxBoolean equality(const HxXmlObject* other) const override;
  const HxToken& token() const override;
  /// "manipulatorDataStorage".
  static const HxToken& classToken();
  /// A new default storage, for registration in polymorphic vectors.
  static HxXmlObject* creator();
  /// A default, empty storage.
  static HxManipulatorDataStorage nullObject();

  /// Compares the compound base, then the three data vectors in order.
  bool operator==(const HxManipulatorDataStorage& other) const;
  /// Negation of `operator==`.
  bool operator!=(const HxManipulatorDataStorage& other) const { return !(*this == other); }

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
    forEachQuantityValue(manipulatorLevelData_, visit);
    for (const QuantityVector& link : linkLevelData_.vectorContainer()) forEachQuantityValue(link, visit);
    for (const QuantityVector& endEffector : endEffectorData_.vectorContainer()) {
      forEachQuantityValue(endEffector, visit);
    }
  }

 private:
  // Walks the standard containers: one call per vector instead of one per value.
  template <class Visitor>
  static void forEachQuantityValue(const QuantityVector& quantities, Visitor& visit) {
    for (const ValueVector& values : quantities.vectorContainer()) {
      for (const HxXmlBasicType<double>& value : values.vectorContainer()) visit(value.value());
    }
  }

  QuantityVector manipulatorLevelData_;
  ElementVector linkLevelData_;
  ElementVector endEffectorData_;
};
