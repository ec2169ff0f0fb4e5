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
    : m_systemDataVector(other.m_systemDataVector),
      m_outputWriterVector(other.m_outputWriterVector),
      m_saving(other.m_saving) {}

HxSystemStoredData& HxSystemStoredData::operator=(const HxSystemStoredData& other) {
  if (this != &other) {
    m_systemDataVector = other.m_systemDataVector;
    m_outputWriterVector = other.m_outputWriterVector;
  }
  return *this;
}

HxSystemStoredData::~HxSystemStoredData() {
  for (std::ofstream* stream : m_outputStreams) delete stream;
  m_outputStreams.clear();
}

bool HxSystemStoredData::operator==(const HxSystemStoredData& other) const {
  return m_systemDataVector == other.m_systemDataVector && m_outputWriterVector == other.m_outputWriterVector;
}

void HxSystemStoredData::setOutputWriterVector(const HxOutputWriterVector& writers) {
  m_outputWriterVector = writers;
}

HxSystemDataStorage& HxSystemStoredData::sampleRecord() {
  return dynamic_cast<HxSystemDataStorage&>(m_systemDataVector[1]);
}

void HxSystemStoredData::allocateStorage(const HxSystemDataCapture& capture) {
  if (m_systemDataVector.size() != 0) {
    // Reuse the elements in place: the configuration copy and the record.
    dynamic_cast<HxSystemDataCapture&>(m_systemDataVector[0]) = capture;
    capture.allocateStorage(sampleRecord());
    return;
  }
  m_systemDataVector.pushBack(capture);
  HxSystemDataStorage storage;
  capture.allocateStorage(storage);
  m_systemDataVector.pushBack(storage);
}

void HxSystemStoredData::beginSaveToFile(const std::string& fileName) {
  // A save in progress is abandoned, not finished: its files are closed without trailers.
  for (std::ofstream* stream : m_outputStreams) delete stream;
  m_outputStreams.clear();

  const HxU32 writers = m_outputWriterVector.size();
  if (writers == 0) {
    m_saving = true;
    return;
  }

  m_outputStreams.reserve(writers);
  for (HxU32 i = 0; i < writers; ++i) {
    HxBaseOutputWriter& writer = m_outputWriterVector[i];
    std::ofstream* stream = new HxRecordingFileStream();
    m_outputStreams.push_back(stream);
    writer.openFile(fileName + writer.fileExtension(), *stream);
    writer.initialize(m_systemDataVector, *stream);

    // The label block, from the configuration copy; then the data block stays open.
    const HxBaseSystemDataComponent& labels = m_systemDataVector[0];
    writer.writeComponentOpening(labels, *stream);
    writer.writeDataComponent(labels, *stream);
    writer.writeComponentClosing(labels, *stream);
    writer.writeComponentOpening(m_systemDataVector[1], *stream);
    // The header and the label block reach the file now; the samples follow in large writes.
    stream->flush();
  }
  m_saving = true;
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
  const HxBaseSystemDataComponent& storage = m_systemDataVector[1];
  // Streams exist only between beginSaveToFile and the next one; without them (a save never
  // begun) the sample only updates the record.
  const std::size_t count = std::min<std::size_t>(m_outputWriterVector.size(), m_outputStreams.size());
  for (std::size_t i = 0; i < count; ++i) {
    m_outputWriterVector[static_cast<HxU32>(i)].writeDataComponent(storage, *m_outputStreams[i]);
  }
}

void HxSystemStoredData::finishSaveToFile() {
  if (!m_saving) return;
  const std::size_t count = std::min<std::size_t>(m_outputWriterVector.size(), m_outputStreams.size());
  for (std::size_t i = 0; i < count; ++i) {
    HxBaseOutputWriter& writer = m_outputWriterVector[static_cast<HxU32>(i)];
    std::ofstream& stream = *m_outputStreams[i];
    writer.writeComponentClosing(m_systemDataVector[1], stream);
    writer.finalize(m_systemDataVector, stream);
    stream.close();  // sets the failbit itself when closing fails
  }
  m_saving = false;
}
