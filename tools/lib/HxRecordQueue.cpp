// HxRecordQueue: the capture buffers as one array, and the ring between hxrecord's threads.

#include "tools/lib/HxRecordQueue.h"

#include <algorithm>
#include <string>

#include "analysis/capture/HxFlatOrder.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

HxCaptureBuffers::HxCaptureBuffers(const HxSystemDataCapture& capture) {
  HxFlatOrder::forEachCapturedType(capture.manipulatorDataCaptureVector(),
                                   [this](const HxFlatPosition&, const HxDataCaptureType& type) {
                                     types_.push_back(&type);
                                     size_ += type.valueCount();
                                   });
}

void HxCaptureBuffers::copyTo(double* values) const {
  for (const HxDataCaptureType* type : types_) {
    std::copy_n(type->values(), type->valueCount(), values);
    values += type->valueCount();
  }
}

void HxCaptureBuffers::copyFrom(const double* values) const {
  for (const HxDataCaptureType* type : types_) {
    type->setCapturedValues(values);
    values += type->valueCount();
  }
}

HxSampleQueue::HxSampleQueue(std::size_t slots, std::size_t values)
    : slots_(std::max<std::size_t>(slots, 1)), batch_(std::clamp<std::size_t>(slots / 2, 1, kBatch)) {
  for (HxQueuedSample& slot : slots_) slot.values.assign(values, 0.0);
}

HxQueuedSample* HxSampleQueue::acquire() {
  std::unique_lock<std::mutex> lock(mutex_);
  if (published_ == slots_.size() && !stopped_) {
    producerWaits_ = true;
    changed_.wait(lock, [this] { return stopped_ || published_ + batch_ <= slots_.size(); });
    producerWaits_ = false;
  }
  if (stopped_) return nullptr;
  return &slots_[(first_ + published_) % slots_.size()];
}

void HxSampleQueue::publish() {
  changeAndWake([this] {
    ++published_;
    return consumerWaits_ && published_ >= batch_;
  });
}

void HxSampleQueue::close() {
  changeAndWake([this] { return closed_ = true; });
}

HxQueuedSample* HxSampleQueue::next() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (published_ == 0 && !closed_) {
    consumerWaits_ = true;
    changed_.wait_for(lock, kLongestWait, [this] { return published_ >= batch_ || closed_; });
    consumerWaits_ = false;
  }
  if (published_ == 0) return nullptr;
  return &slots_[first_];
}

void HxSampleQueue::release() {
  changeAndWake([this] {
    first_ = (first_ + 1) % slots_.size();
    --published_;
    return producerWaits_ && published_ + batch_ <= slots_.size();
  });
}

void HxSampleQueue::stop() {
  changeAndWake([this] { return stopped_ = true; });
}
