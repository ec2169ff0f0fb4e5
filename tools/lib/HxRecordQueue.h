#pragma once
// HxRecordQueue: how hxrecord's stepping thread hands captured samples to its recording thread.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "framework/HxTypes.h"

/// The capture buffers of every data capture type of one capture configuration, in flat order,
/// seen as one array of doubles: every column, switched-off ones included. A sample captured
/// into one configuration is copied out of it and into another of the same configuration, which
/// then holds what captureData left in the first, so that the recorder stores the same record
/// from either.
///
///     HxCaptureBuffers stepping(capture), recording(copyOfCapture);
///     capture.captureData(simulation);
///     stepping.copyTo(values.data());       // values sized stepping.size()
///     recording.copyFrom(values.data());
///     recorder.saveCapturedData(time, index, copyOfCapture);
///
/// The buffers are looked up once: the configuration must not change while this object is in
/// use. Copying allocates nothing.
class HxCaptureBuffers {
 public:
  explicit HxCaptureBuffers(const HxSystemDataCapture& capture);

  /// Number of doubles of one sample.
  std::size_t size() const { return size_; }
  /// Copies the buffers, in flat order, into `values` (size() doubles).
  void copyTo(double* values) const;
  /// Sets the buffers from `values` (size() doubles), as a capture would have.
  void copyFrom(const double* values) const;

 private:
  std::vector<const HxDataCaptureType*> types_;
  std::size_t size_ = 0;
};

/// One sample on its way from the stepping thread to the recording thread.
struct HxQueuedSample {
  double time = 0.0;
  HxU32 pathPointIndex = 0;
  /// The capture buffers (HxCaptureBuffers::copyTo).
  std::vector<double> values;
};

/// A bounded ring of samples between one producing thread (the stepping thread) and one
/// consuming thread (the recording thread). Samples come out in the order they went in. All
/// room is made at construction: nothing allocates afterwards.
///
///     producer:                                consumer:
///       HxQueuedSample* s = queue.acquire();     while (HxQueuedSample* s = queue.next()) {
///       if (s == nullptr) stop;                    record *s;
///       fill *s; queue.publish();                  queue.release();
///       ...                                        if (failed) queue.stop();
///       queue.close();                           }
///
/// A full ring makes acquire() wait for the consumer; an empty one makes next() wait for the
/// producer. A slot is the producer's from acquire() to publish(), then the consumer's from
/// next() to release(); the ring's lock hands it over.
///
/// A waiting thread is woken for a batch of slots rather than for each one, which spares both
/// threads most of the switches: the consumer once kBatch samples are there (or the producer
/// closed the queue), the producer once kBatch slots are free (or the consumer stopped). So that
/// no sample waits long for the files, the consumer also takes what there is every kLongestWait.
class HxSampleQueue {
 public:
  /// Slots that wake a waiting thread (fewer when the ring holds less than twice as many).
  static constexpr std::size_t kBatch = 8;
  /// The longest a published sample waits for the consumer to wake.
  static constexpr std::chrono::milliseconds kLongestWait{100};

  /// A ring of `slots` samples (at least one) of `values` doubles each.
  HxSampleQueue(std::size_t slots, std::size_t values);
  HxSampleQueue(const HxSampleQueue&) = delete;
  HxSampleQueue& operator=(const HxSampleQueue&) = delete;

  /// Producer: the next free slot, waiting while every slot is taken; null once the consumer
  /// has stopped.
  HxQueuedSample* acquire();
  /// Producer: hands the slot of the last acquire() to the consumer.
  void publish();
  /// Producer: no more samples; next() returns null once the published ones are taken.
  void close();

  /// Consumer: the oldest published sample, waiting while there is none; null once the producer
  /// has closed the queue and every sample was taken.
  HxQueuedSample* next();
  /// Consumer: gives the slot of the last next() back to the producer.
  void release();
  /// Consumer: takes no more samples; the producer's waits end and acquire() returns null.
  void stop();
  /// Whether the consumer has stopped; cheap enough for the producer to ask at every step.
  bool stopped() const { return stopped_.load(std::memory_order_relaxed); }

 private:
  // Runs `change` under the lock; when it returns true, wakes the waiting side once the lock is
  // let go.
  template <class Change>
  void changeAndWake(Change change) {
    std::unique_lock<std::mutex> lock(mutex_);
    const bool wake = change();
    lock.unlock();
    if (wake) changed_.notify_all();
  }

  std::vector<HxQueuedSample> slots_;
  std::size_t batch_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t first_ = 0;      // the oldest published slot
  std::size_t published_ = 0;  // slots published and not released
  bool producerWaits_ = false;
  bool consumerWaits_ = false;
  bool closed_ = false;
  std::atomic<bool> stopped_{false};
};
