#include "analysis/capture/HxCaptureListIndex.h"

#include <string>

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// The full size of every type of one manipulator capture (kept by the capture while it is
// built).
HxU32 sizeOf(const HxManipulatorDataCapture& capture) { return capture.elementCount(); }
}  // namespace

void HxCaptureListIndex::appended(const Captures& captures) {
  const HxU32 position = captures.size() - 1;
  if (positionsKept_) lastPosition_[captures[position].manipulatorIndex()] = position;
  if (sizesKept_ && sizes_.size() == position) {
    sizes_.push_back(0);
    changed(position);
  } else {
    sizesKept_ = false;
  }
}

void HxCaptureListIndex::changed(HxU32 position) {
  if (changed_ == kNone) {
    changed_ = position;
  } else if (changed_ != position) {
    sizesKept_ = false;  // more than one: counted afresh
  }
}

bool HxCaptureListIndex::find(const Captures& captures, HxU32 m, unsigned int& position) {
  if (!positionsKept_) {
    lastPosition_.clear();
    for (HxU32 p = 0; p < captures.size(); ++p) lastPosition_[captures[p].manipulatorIndex()] = p;
    positionsKept_ = true;
  }
  const auto found = lastPosition_.find(m);
  if (found == lastPosition_.end()) return false;
  position = found->second;
  return true;
}

HxU32 HxCaptureListIndex::elementCount(const Captures& captures) {
  if (!sizesKept_ || sizes_.size() != captures.size()) {
    sizes_.resize(captures.size());
    total_ = 0;
    for (HxU32 p = 0; p < captures.size(); ++p) {
      sizes_[p] = sizeOf(captures[p]);
      total_ += sizes_[p];
    }
    sizesKept_ = true;
  } else if (changed_ != kNone && changed_ < sizes_.size()) {
    total_ -= sizes_[changed_];
    sizes_[changed_] = sizeOf(captures[changed_]);
    total_ += sizes_[changed_];
  }
  changed_ = kNone;
  return total_;
}
