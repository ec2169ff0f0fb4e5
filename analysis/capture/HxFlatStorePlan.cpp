#include "analysis/capture/HxFlatStorePlan.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <tuple>

#include "analysis/capture/HxFlatOrder.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/types/HxDataCaptureType.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// Flat order of two places: manipulator, then level (own, links, end effectors), then the
// link or end-effector position, then the quantity.
bool before(const HxFlatPosition& a, const HxFlatPosition& b) {
  return std::tie(a.manipulator, a.level, a.element, a.quantity) <
         std::tie(b.manipulator, b.level, b.element, b.quantity);
}
bool same(const HxFlatPosition& a, const HxFlatPosition& b) { return !before(a, b) && !before(b, a); }
}  // namespace

bool HxFlatStorePlan::madeFor(const HxSystemDataStorage& record) const {
  return record_ == &record && stamp_ == record.shapeStamp();
}

void HxFlatStorePlan::make(const ManipulatorCaptures& captures, const HxSystemDataStorage& record) {
  // The record's quantities in flat order, each with its place in the array (after time and
  // index).
  slots_.clear();
  HxU32 offset = 2;
  const HxSystemDataStorage::ManipulatorDataVector& manipulators = record.manipulatorDataVector();
  for (HxU32 m = 0; m < manipulators.size(); ++m) {
    const HxManipulatorDataStorage& manipulator = manipulators[m];
    HxFlatOrder::forEachLevelEntry(
        manipulator.manipulatorLevelData(), manipulator.linkLevelData(), manipulator.endEffectorData(),
        [&](HxU32 level, HxU32 element, const HxManipulatorDataStorage::QuantityVector& quantities) {
          for (HxU32 q = 0; q < quantities.size(); ++q) {
            const HxU32 size = quantities[q].size();
            slots_.push_back(Slot{HxFlatPosition{level, m, element, q}, offset, size});
            offset += size;
          }
        });
  }

  // Both walks are in flat order: each type meets its quantity (or learns there is none) by
  // one merge.
  entries_.clear();
  picked_.clear();
  std::size_t next = 0;
  HxFlatOrder::forEachCapturedType(captures, [&](const HxFlatPosition& at, const HxDataCaptureType& type) {
    while (next < slots_.size() && before(slots_[next].at, at)) ++next;
    if (next == slots_.size() || !same(slots_[next].at, at)) return;  // the record has no such quantity

    // The active values; a run that does not fit, or an empty one, is not stored at all.
    const auto& flags = type.disableFlags().vectorContainer();
    const HxU32 size = type.valueCount();
    const std::size_t firstPicked = picked_.size();
    bool allActive = true;
    for (HxU32 j = 0; j < size; ++j) {
      if (j < flags.size() && flags[j].value()) {
        allActive = false;
      } else {
        picked_.push_back(j);
      }
    }
    const HxU32 active = static_cast<HxU32>(picked_.size() - firstPicked);
    if (allActive) picked_.resize(firstPicked);
    if (active == 0 || active > slots_[next].size) {
      picked_.resize(firstPicked);
      return;
    }
    const Entry entry{type.values(), slots_[next].offset, active, allActive ? 0 : static_cast<HxU32>(firstPicked + 1)};
    // Values that follow the last run's both where they are and where they go join it: a
    // configuration whose values are kept side by side stores its whole sample as a few runs.
    if (!entries_.empty()) {
      Entry& last = entries_.back();
      if (last.picked == 0 && entry.picked == 0 && last.from + last.count == entry.from &&
          last.to + last.count == entry.to) {
        last.count += entry.count;
        return;
      }
    }
    entries_.push_back(entry);
  });
  record_ = &record;
  stamp_ = record.shapeStamp();
}

void HxFlatStorePlan::store(double* values) const {
  for (const Entry& entry : entries_) {
    double* const to = values + entry.to;
    if (entry.picked == 0) {
      std::memcpy(to, entry.from, entry.count * sizeof(double));
    } else {
      const HxU32* const picked = picked_.data() + entry.picked - 1;
      for (HxU32 k = 0; k < entry.count; ++k) to[k] = entry.from[picked[k]];
    }
  }
}
