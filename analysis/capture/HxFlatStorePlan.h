#pragma once
/// \file
/// HxFlatStorePlan: where each captured quantity lands in a sample record's array of values.

#include <cstdint>
#include <vector>

#include "analysis/capture/HxFlatOrder.h"
#include "analysis/capture/HxManipulatorDataCapture.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxTypes.h"

class HxDataCaptureType;
class HxSystemDataStorage;

/// Where the active values of every type of a capture configuration land in one sample
/// record's flat array (`HxSystemDataStorage::beginDirectStore`), worked out once, so that a
/// sample is stored by copying each type's values once, straight into that array.
///
/// A type's values go where `storeData` would put them through the record's setters: to the
/// record's quantity at the same manipulator position, level, link or end-effector position
/// and quantity position, from its start, and only when the whole run of active values fits
/// and is not empty. So the result is that of `storeData` also for a record shaped for another
/// configuration; the plan only needs the record's element size to match its shape.
///
/// The plan belongs to one configuration object and holds pointers to its types: the owner
/// forgets it whenever its configuration or disable flags change. It names the record it was
/// made for by address and shape stamp. A copy or an assignment starts with no plan.
class HxFlatStorePlan {
 public:
  /// The manipulator captures of a configuration.
  using ManipulatorCaptures = HxXmlVectorType<HxManipulatorDataCapture>;

  /// Nothing kept.
  HxFlatStorePlan() = default;
  /// Starts with nothing kept: what is kept describes the source's owner.
  HxFlatStorePlan(const HxFlatStorePlan&) {}
  /// Forgets what is kept.
  HxFlatStorePlan& operator=(const HxFlatStorePlan&) {
    forget();
    return *this;
  }

  /// Drops the plan (the configuration changed).
  void forget() { record_ = nullptr; }
  /// Whether the plan was made for `record` as it is shaped now.
  bool madeFor(const HxSystemDataStorage& record) const;
  /// Works the plan out for `captures` and `record`, reusing the room of the last one.
  void make(const ManipulatorCaptures& captures, const HxSystemDataStorage& record);
  /// Copies the current values of every type into `values`, the record's array. Does not
  /// allocate.
  void store(double* values) const;

 private:
  // One type, or several whose values follow each other both in memory and in the array, whose
  // values are stored: `count` values from `from` to the array's `to` on, or, for one type
  // with `picked` set, the `count` values at the positions picked_[picked - 1] on of `from`
  // (the type has switched-off columns).
  struct Entry {
    const double* from = nullptr;
    HxU32 to = 0;
    HxU32 count = 0;
    HxU32 picked = 0;
  };
  // One slot of the record's quantities, in flat order, with its place in that order.
  struct Slot {
    HxFlatPosition at;
    HxU32 offset = 0;
    HxU32 size = 0;
  };

  std::vector<Entry> entries_;
  std::vector<HxU32> picked_;
  std::vector<Slot> slots_;
  const HxSystemDataStorage* record_ = nullptr;
  std::uint64_t stamp_ = 0;
};
