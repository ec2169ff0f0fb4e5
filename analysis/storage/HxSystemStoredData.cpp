#include "analysis/storage/HxSystemStoredData.h"

#include <algorithm>
#include <cerrno>
#include <typeinfo>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/writers/HxRecordingFileStream.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
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
  for (HxRecordingFileStream* stream : outputStreams_) delete stream;
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
  // The record is shaped where it stays (the same as shaping one and appending a copy), so
  // that the capture's plan for storing into it is made here.
  systemDataVector_.pushBack(capture);
  systemDataVector_.pushBack(HxSystemDataStorage());
  capture.allocateStorage(sampleRecord());
}

void HxSystemStoredData::beginSaveToFile(const std::string& fileName) {
  // A save in progress is abandoned, not finished: its files are closed without trailers.
  for (HxRecordingFileStream* stream : outputStreams_) delete stream;
  outputStreams_.clear();
  fileStates_.clear();
  firstFailedFile_ = -1;

  const HxU32 writers = outputWriterVector_.size();
  if (writers == 0) {
    saving_ = true;
    return;
  }

  outputStreams_.reserve(writers);
  fileStates_.resize(writers);
  for (HxU32 i = 0; i < writers; ++i) {
    HxBaseOutputWriter& writer = outputWriterVector_[i];
    HxRecordingFileStream* stream = new HxRecordingFileStream();
    outputStreams_.push_back(stream);
    errno = 0;
    writer.openFile(fileName + writer.fileExtension(), *stream);
    fileStates_[i].open = stream->is_open();
    noteStreamState(i);
    writer.initialize(systemDataVector_, *stream);

    // The label block, from the configuration copy; then the data block stays open.
    const HxBaseSystemDataComponent& labels = systemDataVector_[0];
    writer.writeComponentOpening(labels, *stream);
    writer.writeDataComponent(labels, *stream);
    writer.writeComponentClosing(labels, *stream);
    writer.writeComponentOpening(systemDataVector_[1], *stream);
    // The header and the label block reach the file now; the samples follow in large writes.
    stream->flush();
    noteStreamState(i);
  }
  saving_ = true;
}

void HxSystemStoredData::saveCapturedData(double time, const HxSystemDataCapture& capture) {
  HxSystemDataStorage& storage = sampleRecord();
  storage.setTime(time);
  storeSample(capture, storage);
  writeSample();
}

void HxSystemStoredData::saveCapturedData(double time, unsigned int pathPointIndex,
                                          const HxSystemDataCapture& capture) {
  HxSystemDataStorage& storage = sampleRecord();
  storage.setTime(time);
  storage.setPathPointIndex(pathPointIndex);
  storeSample(capture, storage);
  writeSample();
}

void HxSystemStoredData::storeSample(const HxSystemDataCapture& capture, HxSystemDataStorage& storage) {
  // The capture's direct route gives the record exactly what storeData gives it; a class
  // derived from the capture may store differently, so it is asked through storeData.
  if (typeid(capture) == typeid(HxSystemDataCapture)) {
    capture.storeDataDirect(storage);
  } else {
    capture.storeData(storage);
  }
}

void HxSystemStoredData::writeSample() {
  const HxBaseSystemDataComponent& storage = systemDataVector_[1];
  // Streams exist only between beginSaveToFile and the next one; without them (a save never
  // begun) the sample only updates the record.
  const std::size_t count = std::min<std::size_t>(outputWriterVector_.size(), outputStreams_.size());
  for (std::size_t i = 0; i < count; ++i) {
    errno = 0;
    outputWriterVector_[static_cast<HxU32>(i)].writeDataComponent(storage, *outputStreams_[i]);
    noteStreamState(i);
    if (!fileStates_[i].failed) ++fileStates_[i].samples;
  }
}

void HxSystemStoredData::noteStreamState(std::size_t index) {
  if (index >= fileStates_.size() || fileStates_[index].failed || outputStreams_[index]->good()) return;
  fileStates_[index].failed = true;
  fileStates_[index].error = errno;
  if (firstFailedFile_ < 0) firstFailedFile_ = static_cast<int>(index);
}

HxOutputFileState HxSystemStoredData::outputFileState(HxU32 writer) const {
  return writer < fileStates_.size() ? fileStates_[writer] : HxOutputFileState();
}

void HxSystemStoredData::flushOutputFiles() {
  for (std::size_t i = 0; i < outputStreams_.size(); ++i) {
    if (!outputStreams_[i]->is_open()) continue;
    errno = 0;
    outputStreams_[i]->flush();
    noteStreamState(i);
  }
}

void HxSystemStoredData::finishSaveToFile() {
  if (!saving_) return;
  const std::size_t count = std::min<std::size_t>(outputWriterVector_.size(), outputStreams_.size());
  for (std::size_t i = 0; i < count; ++i) {
    HxBaseOutputWriter& writer = outputWriterVector_[static_cast<HxU32>(i)];
    HxRecordingFileStream& stream = *outputStreams_[i];
    errno = 0;
    writer.writeComponentClosing(systemDataVector_[1], stream);
    writer.finalize(systemDataVector_, stream);
    noteStreamState(i);
    errno = 0;
    stream.close();  // sets the failbit itself when closing fails
    noteStreamState(i);
  }
  saving_ = false;
}
