#pragma once
// HxBaseSystemDataComponent: common base of capture configurations and sample records.

#include <string>
#include <vector>

#include "framework/HxTypes.h"
#include "framework/HxXmlCompoundType.h"

/// Abstract base of the system data components: a capture configuration
/// (`HxSystemDataCapture`, kind 0) and a sample record (`HxSystemDataStorage`, kind 1). Both
/// describe one sample element by element, so that output writers can treat them alike: the
/// string elements of a configuration are the column labels, those of a record the values.
class HxBaseSystemDataComponent : public HxXmlCompoundType {
 public:
  HxBaseSystemDataComponent();
  /// Copies the compound base only.
  HxBaseSystemDataComponent(const HxBaseSystemDataComponent& other);
  HxBaseSystemDataComponent& operator=(const HxBaseSystemDataComponent& other);
  ~HxBaseSystemDataComponent() override;

  /// Component kind: 0 for a capture configuration, 1 for a sample record.
  virtual unsigned int type() const = 0;
  /// Fills `elements` with the component's string elements (labels or values).
  virtual void getStringElements(std::vector<std::string>& elements) const = 0;

  /// The compound type's write.
  HxBoolean write(HxXmlWriter& writer) const override;
  /// The compound type's read.
  HxBoolean read(HxXmlReader& reader) override;
  /// The compound type's xmlInit.
  void xmlInit() override;

  /// The compound type's comparison.
  bool operator==(const HxBaseSystemDataComponent& other) const { return HxXmlCompoundType::operator==(other); }
};
