#pragma once
/// \file
/// HxSystemStoredData: the recorder.

#include <fstream>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataVector.h"
#include "analysis/writers/HxOutputWriterVector.h"

class HxSystemDataCapture;
class HxSystemDataStorage;

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
  /// gathered in each stream's 64 KiB buffer. With no writers, no file is made. Enters the
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

 private:
  HxSystemDataStorage& sampleRecord();
  void writeSample();

  HxSystemDataVector systemDataVector_;
  HxOutputWriterVector outputWriterVector_;
  std::vector<std::ofstream*> outputStreams_;
  bool saving_ = false;
};
