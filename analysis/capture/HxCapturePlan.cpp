#include "analysis/capture/HxCapturePlan.h"

#include <string>
#include <type_traits>
#include <typeinfo>

#include "analysis/capture/HxEndEffectorDataCapture.h"
#include "analysis/capture/HxFlatOrder.h"
#include "analysis/capture/HxLinkDataCapture.h"
#include "analysis/types/HxDataCaptureType.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

HxU32 HxCapturePlan::rowOf(const HxDataCaptureType& type, HxU32 m, std::size_t firstRow) {
  const HxJointRowSource source = type.jointRowSource();
  if (source.reader == nullptr || source.owner == nullptr || typeid(type) != *source.owner ||
      type.valueCount() != source.width) {
    return kCalled;
  }
  for (std::size_t r = firstRow; r < rowSources_.size(); ++r) {
    if (rowSources_[r].reader == source.reader && rowSources_[r].manipulator == m) return static_cast<HxU32>(r);
  }
  rowSources_.push_back(RowSource{source.reader, m});
  return static_cast<HxU32>(rowSources_.size() - 1);
}

void HxCapturePlan::make(const ManipulatorCaptures& captures) {
  groups_.clear();
  entries_.clear();
  rowSources_.clear();

  // The groups and their types in flat order, each type with its place in the block of values.
  std::vector<std::size_t> offsets;
  std::size_t total = 0;
  for (HxU32 p = 0; p < captures.size(); ++p) {
    const HxManipulatorDataCapture& capture = captures[p];
    const HxU32 m = capture.manipulatorIndex();
    const std::size_t firstRow = rowSources_.size();
    HxFlatOrder::forEachCaptureEntry(capture, [&](HxU32, HxU32, const auto& entry) {
      using Captures = std::decay_t<decltype(entry)>;
      Group group;
      group.manipulator = m;
      if constexpr (std::is_same_v<Captures, HxLinkDataCapture>) {
        group.level = Level::Link;
        group.link = &entry;
      } else if constexpr (std::is_same_v<Captures, HxEndEffectorDataCapture>) {
        group.level = Level::EndEffector;
        group.element = entry.endEffectorIndex();
      } else {
        group.element = HxManipulatorDataCapture::ManipulatorLevelElementIndex;
      }
      const HxDataCaptureTypeVector& types = entry.dataCaptureVector();
      for (HxU32 i = 0; i < types.size(); ++i) {
        const HxDataCaptureType& type = types[i];
        const HxU32 row = group.level == Level::Link ? rowOf(type, m, firstRow) : kCalled;
        entries_.push_back(Entry{&type, nullptr, row, type.valueCount()});
        offsets.push_back(total);
        total += type.valueCount();
      }
      group.end = static_cast<HxU32>(entries_.size());
      groups_.push_back(group);
    });
  }
  rows_.assign(rowSources_.size(), HxJointRow{});

  // The block of values: each type's values move there, in flat order.
  values_ = std::shared_ptr<double[]>(new double[total > 0 ? total : 1]());
  for (std::size_t e = 0; e < entries_.size(); ++e) {
    Entry& entry = entries_[e];
    entry.values = values_.get() + offsets[e];
    entry.type->placeValues(entry.values, values_);
  }
  made_ = true;
}

HxBoolean HxCapturePlan::capture(const HxSystemSimulation& simulation) const {
  for (std::size_t r = 0; r < rowSources_.size(); ++r) {
    rows_[r] = rowSources_[r].reader(simulation, rowSources_[r].manipulator);
  }

  HxBoolean result = true;
  const Entry* entry = entries_.data();
  for (const Group& group : groups_) {
    const Entry* const end = entries_.data() + group.end;
    HxU32 element = group.element;
    if (group.level == Level::Link && entry != end &&
        !group.link->resolveLink(simulation, group.manipulator, element)) {
      // A link that is not found: its types are left as they are.
      result = false;
      entry = end;
      continue;
    }
    bool groupResult = true;
    for (; entry != end; ++entry) {
      bool captured = false;
      const HxJointRow* row = entry->row != kCalled ? &rows_[entry->row] : nullptr;
      if (row != nullptr && row->kind != HxJointRow::Kind::Call) {
        captured = row->read(element, entry->values);
        if (!captured) {
          for (HxU32 k = 0; k < entry->width; ++k) entry->values[k] = 0.0;
        }
      } else {
        captured = entry->type->captureData(simulation, group.manipulator, element);
      }
      // An end-effector capture counts its last type's result only.
      if (group.level == Level::EndEffector) {
        groupResult = captured;
      } else if (!captured) {
        groupResult = false;
      }
    }
    if (!groupResult) result = false;
  }
  return result;
}
