#pragma once
/// \file
/// HxSystemStoredData: the recorder.

#include <cstddef>
#include <fstream>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataVector.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/writers/HxRecordingFileStream.h"

class HxSystemDataCapture;
class HxSystemDataStorage;

/// The state of one writer's output file as the recorder last saw it (see
/// `HxSystemStoredData::outputFileState`).
struct HxOutputFileState {
  /// The file was opened by the current (or last) save.
  bool open = false;
  /// Opening, a write or the close failed: the stream refuses every later write.
  bool failed = false;
  /// The system's error number (errno) seen at the first failure; 0 when none was set.
  int error = 0;
  /// Samples handed to the stream while it was still good: all samples of the save when it did
  /// not fail. A sample is in the file once the stream has been flushed or closed.
  unsigned long long samples = 0;
};

/// The recorder: keeps a copy of the capture configuration and one sample record, owns one
/// output file per writer, and drives the writers over the files' life.
///
///     HxSystemStoredData recorder;
///     HxOutputWriterVector writers;
///     writers.pushBack(HxTextOutputWriter());
///     writers.pushBack(HxMrdOutputWriter());
///     recorder.setOutputWriterVector(writers);
///     recorder.allocateStorage(capture);        // shape the sample record
///     recorder.beginSaveToFile("out/run");      // out/run.csv, out/run.mrd
///     while (stepping) {
///       capture.captureData(simulation);        // read the simulation
///       recorder.saveCapturedData(time, pathPointIndex, capture);
///     }
///     recorder.finishSaveToFile();              // trailers; files closed
///
/// Two states, idle and saving. Nothing is reported: a file that cannot be opened leaves its
/// stream failed and its writes are lost, while the other writers' files are unaffected. A
/// system data vector whose elements are not a capture and a record raises std::bad_cast.
class HxSystemStoredData {
 public:
  /// Size of each output file's stream buffer (see HxRecordingFileStream).
  static constexpr std::size_t kFileBufferBytes = HxRecordingFileStream::kBufferBytes;

  /// No configuration, no writers, no streams, idle.
  HxSystemStoredData();
  /// Copies the system data vector, the writers and the saving flag as it stands, but no
  /// streams: a copy of a recorder that is saving believes it is saving and owns no file.
  HxSystemStoredData(const HxSystemStoredData& other);
  /// Copies only the system data vector and the writers; streams and flag stay the target's.
  HxSystemStoredData& operator=(const HxSystemStoredData& other);
  /// Deletes the streams (closing the files) without writing any trailer.
  virtual ~HxSystemStoredData();

  /// Equal when the system data vectors and the writer vectors are equal.
  bool operator==(const HxSystemStoredData& other) const;
  /// Negation of `operator==`.
  bool operator!=(const HxSystemStoredData& other) const { return !(*this == other); }

  /// Replaces the writers by a copy of `writers`.
  void setOutputWriterVector(const HxOutputWriterVector& writers);

  /// Keeps a copy of `capture` and shapes the sample record to it (active sizes: disabled
  /// columns take no room). Call again after changing the configuration or its disable flags.
  void allocateStorage(const HxSystemDataCapture& capture);

  /// Starts a set of files named `fileName` plus each writer's extension. Files of an earlier
  /// save still open are closed unfinished (no trailer: an MRD header stays blank, an XML
  /// document unclosed). Each writer then writes its header and the label block, and opens
  /// its data block; these reach the file at once (the stream is flushed), while samples are
  /// gathered in each stream's 1 MiB buffer. With no writers, no file is made. Enters the
  /// saving state.
  void beginSaveToFile(const std::string& fileName);

  /// Stamps the sample record with `time` (the path-point index stays what it last was), fills
  /// it from `capture` (`storeData`) and hands it to every writer. Only valid while saving.
  void saveCapturedData(double time, const HxSystemDataCapture& capture);
  /// As above, also stamping `pathPointIndex`.
  void saveCapturedData(double time, unsigned int pathPointIndex, const HxSystemDataCapture& capture);

  /// Closes every writer's data block, writes its trailer and closes its file (a failed close
  /// sets the stream's failbit). Does nothing when not saving. Leaves the saving state.
  void finishSaveToFile();

  /// Number of output files of the current (or last) save: one per writer once a save began.
  HxU32 outputFileCount() const { return static_cast<HxU32>(fileStates_.size()); }
  /// The state of writer `writer`'s file; a default state for an index past the last file.
  HxOutputFileState outputFileState(HxU32 writer) const;
  /// Index of the first writer whose file failed, or -1 when none has. Cheap enough to ask after
  /// every sample.
  int failedOutputFile() const { return firstFailedFile_; }
  /// Hands the samples gathered in every stream's buffer to the operating system now, so that a
  /// recording killed later keeps them; a failure this reveals shows in the file states.
  void flushOutputFiles();

 private:
  HxSystemDataStorage& sampleRecord();
  // The capture's storeData on the record, by its direct route where that is the same.
  static void storeSample(const HxSystemDataCapture& capture, HxSystemDataStorage& storage);
  void writeSample();
  // Records a failure of stream `index` when its state turned bad since it was last looked at.
  void noteStreamState(std::size_t index);

  HxSystemDataVector systemDataVector_;
  HxOutputWriterVector outputWriterVector_;
  std::vector<HxRecordingFileStream*> outputStreams_;
  bool saving_ = false;
  // What the file-state queries report: one entry per stream, and the first that failed.
  std::vector<HxOutputFileState> fileStates_;
  int firstFailedFile_ = -1;
};
