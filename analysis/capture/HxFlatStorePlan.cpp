#include "analysis/capture/HxFlatStorePlan.h"

#include <algorithm>
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
  std::size_t next = 0;
  HxFlatOrder::forEachCapturedType(captures, [&](const HxFlatPosition& at, const HxDataCaptureType& type) {
    while (next < slots_.size() && before(slots_[next].at, at)) ++next;
    Entry entry;
    entry.type = &type;
    if (next < slots_.size() && same(slots_[next].at, at)) {
      entry.offset = slots_[next].offset;
      entry.slots = slots_[next].size;
    }
    const auto& flags = type.disableFlags().vectorContainer();
    entry.firstDisabled = static_cast<HxU32>(flags.size());
    for (std::size_t j = 0; j < flags.size(); ++j) {
      if (flags[j].value()) {
        entry.firstDisabled = static_cast<HxU32>(j);
        break;
      }
    }
    entries_.push_back(entry);
  });
  record_ = &record;
  stamp_ = record.shapeStamp();
}

void HxFlatStorePlan::store(double* values) const {
  for (const Entry& entry : entries_) {
    const auto& data = entry.type->data().vectorContainer();
    const std::size_t size = data.size();
    double* to = values + entry.offset;
    if (entry.firstDisabled >= size) {
      // Nothing switched off among the values (the usual case): the whole run, if it fits.
      if (size == 0 || size > entry.slots) continue;
      for (std::size_t k = 0; k < size; ++k) to[k] = data[k].value();
      continue;
    }
    // Some values switched off: count the active ones first, since a run that does not fit is
    // not stored at all.
    const auto& flags = entry.type->disableFlags().vectorContainer();
    const std::size_t flagged = std::min(flags.size(), size);
    std::size_t active = size - flagged;
    for (std::size_t j = 0; j < flagged; ++j) active += flags[j].value() ? 0 : 1;
    if (active == 0 || active > entry.slots) continue;
    for (std::size_t j = 0; j < size; ++j) {
      if (j < flagged && flags[j].value()) continue;
      *to++ = data[j].value();
    }
  }
}
