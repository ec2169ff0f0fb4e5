#include "analysis/storage/HxSystemStoredData.h"

#include <algorithm>
#include <memory>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

/// An output file stream with a buffer large enough for many sample rows, so that a file is
/// written in a few large system calls instead of one or two per sample.
class HxRecordingFileStream : public std::ofstream {
 public:
  static constexpr std::size_t kBufferSize = 1 << 16;

  HxRecordingFileStream() : buffer_(new char[kBufferSize]) { rdbuf()->pubsetbuf(buffer_.get(), kBufferSize); }
  /// Closes (flushing into the buffer's file) while the buffer still exists.
  ~HxRecordingFileStream() override { close(); }

 private:
  std::unique_ptr<char[]> buffer_;
};
}  // namespace

HxSystemStoredData::HxSystemStoredData() = default;

HxSystemStoredData::HxSystemStoredData(const HxSystemStoredData& other)
    : systemDataVector_(other.systemDataVector_),
      outputWriterVector_(other.outputWriterVector_),
      saving_(other.saving_) {}

HxSystemStoredData& HxSystemStoredData::operator=(const HxSystemStoredData& other) {
  if (this != &other) {
    systemDataVector_ = other.systemDataVector_;
    outputWriterVector_ = other.outputWriterVector_;
  }
  return *this;
}

HxSystemStoredData::~HxSystemStoredData() {
  for (std::ofstream* stream : outputStreams_) delete stream;
  outputStreams_.clear();
}

bool HxSystemStoredData::operator==(const HxSystemStoredData& other) const {
  return systemDataVector_ == other.systemDataVector_ && outputWriterVector_ == other.outputWriterVector_;
}

void HxSystemStoredData::setOutputWriterVector(const HxOutputWriterVector& writers) { outputWriterVector_ = writers; }

HxSystemDataStorage& HxSystemStoredData::sampleRecord() {
  return dynamic_cast<HxSystemDataStorage&>(systemDataVector_[1]);
}

void HxSystemStoredData::allocateStorage(const HxSystemDataCapture& capture) {
  if (systemDataVector_.size() != 0) {
    // Reuse the elements in place: the configuration copy and the record.
    dynamic_cast<HxSystemDataCapture&>(systemDataVector_[0]) = capture;
    capture.allocateStorage(sampleRecord());
    return;
  }
  systemDataVector_.pushBack(capture);
  HxSystemDataStorage storage;
  capture.allocateStorage(storage);
  systemDataVector_.pushBack(storage);
}

void HxSystemStoredData::beginSaveToFile(const std::string& fileName) {
  // A save in progress is abandoned, not finished: its files are closed without trailers.
  for (std::ofstream* stream : outputStreams_) delete stream;
  outputStreams_.clear();

  const HxU32 writers = outputWriterVector_.size();
  if (writers == 0) {
    saving_ = true;
    return;
  }

  outputStreams_.reserve(writers);
  for (HxU32 i = 0; i < writers; ++i) {
    HxBaseOutputWriter& writer = outputWriterVector_[i];
    std::ofstream* stream = new HxRecordingFileStream();
    outputStreams_.push_back(stream);
    writer.openFile(fileName + writer.fileExtension(), *stream);
    writer.initialize(systemDataVector_, *stream);

    // The label block, from the configuration copy; then the data block stays open.
    const HxBaseSystemDataComponent& labels = systemDataVector_[0];
    writer.writeComponentOpening(labels, *stream);
    writer.writeDataComponent(labels, *stream);
    writer.writeComponentClosing(labels, *stream);
    writer.writeComponentOpening(systemDataVector_[1], *stream);
    // The header and the label block reach the file now; the samples follow in large writes.
    stream->flush();
  }
  saving_ = true;
}

void HxSystemStoredData::saveCapturedData(double time, const HxSystemDataCapture& capture) {
  HxSystemDataStorage& storage = sampleRecord();
  storage.setTime(time);
  capture.storeData(storage);
  writeSample();
}

void HxSystemStoredData::saveCapturedData(double time, unsigned int pathPointIndex,
                                          const HxSystemDataCapture& capture) {
  HxSystemDataStorage& storage = sampleRecord();
  storage.setTime(time);
  storage.setPathPointIndex(pathPointIndex);
  capture.storeData(storage);
  writeSample();
}

void HxSystemStoredData::writeSample() {
  const HxBaseSystemDataComponent& storage = systemDataVector_[1];
  // Streams exist only between beginSaveToFile and the next one; without them (a save never
  // begun) the sample only updates the record.
  const std::size_t count = std::min<std::size_t>(outputWriterVector_.size(), outputStreams_.size());
  for (std::size_t i = 0; i < count; ++i) {
    outputWriterVector_[static_cast<HxU32>(i)].writeDataComponent(storage, *outputStreams_[i]);
  }
}

void HxSystemStoredData::finishSaveToFile() {
  if (!saving_) return;
  const std::size_t count = std::min<std::size_t>(outputWriterVector_.size(), outputStreams_.size());
  for (std::size_t i = 0; i < count; ++i) {
    HxBaseOutputWriter& writer = outputWriterVector_[static_cast<HxU32>(i)];
    std::ofstream& stream = *outputStreams_[i];
    writer.writeComponentClosing(systemDataVector_[1], stream);
    writer.finalize(systemDataVector_, stream);
    stream.close();  // sets the failbit itself when closing fails
  }
  saving_ = false;
}
