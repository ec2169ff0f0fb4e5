#pragma once
// Reading an MRD recording (as written by HxMrdOutputWriter): streamed sample by sample from its
// file, or loaded into memory; and repairing one whose recording was killed before it finished.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "framework/HxTypes.h"
#include "tools/lib/HxRepair.h"

/// The fields of an MRD header line: "total<TAB>channels<TAB>samples<TAB>fourth", padded with
/// blanks to 80 characters. A recording that was never finished keeps an all-blank header.
struct HxMrdHeader {
  /// Characters of the header line before its line end.
  static constexpr std::size_t kWidth = 80;
  /// True when the 80 header characters are all blanks.
  bool blank = true;
  /// The header text without its trailing blanks.
  std::string text;
  HxU32 totalValues = 0;
  HxU32 channels = 0;
  HxU32 samples = 0;
  double fourthValue = 0.0;
};

/// What the reader may be told.
struct HxMrdLoadOptions {
  /// Values per sample to use whatever the header says; 0 lets the reader decide.
  HxU32 valuesPerSample = 0;
};

/// Reads an MRD recording without holding its samples: `open` (once per reader) reads the header
/// and the labels and finds the layout (values per sample, whole samples, the bytes of a partial
/// last sample), and `read` then yields the values of the whole samples in order.
///
/// Values per sample (V), in order of precedence:
/// 1. `options.valuesPerSample` when not 0;
/// 2. the header's channel count when channels × samples equals the number of values held;
/// 3. with a finished header whose sample count divides the values held: values / samples
///    (fewer values than labels when columns were disabled: the labels list still holds one
///    entry per column of the configuration);
/// 4. otherwise (blank header, or one that contradicts the data): the first sample's known
///    layout, the number of labels less the empty labels at the end, when every whole sample
///    keeps the sample layout (a finite, non-decreasing time, then a whole, non-negative
///    path-point index); when it does not, the one V from 2 to the number of labels that divides
///    the data and keeps every sample's layout;
/// 5. when no V of rule 4 fits and divides the data (a file cut short): the header's channel
///    count, else the one V from 2 to the number of labels that gives at least one whole sample,
///    whose whole samples keep the sample layout.
/// The sample count is the number of whole samples the data holds; the bytes of a partial last
/// sample (a recording killed while it was written) are dropped.
/// Only rules 4 and 5 read the samples (once, to check their layout); each recovery and a dropped
/// partial sample add a sentence to `warnings()`.
///
/// `open` returns false, with one sentence in `error`, when nothing can be recovered: a path that
/// is not a regular file, a file shorter than its header, a header that is neither blank nor four
/// fields, a label line that is truncated or malformed, or data that fits no layout (or more than
/// one).
class HxMrdReader {
 public:
  HxMrdReader() = default;
  ~HxMrdReader();
  HxMrdReader(const HxMrdReader&) = delete;
  HxMrdReader& operator=(const HxMrdReader&) = delete;

  /// Reads the regular file at `path` (refusing directories, devices, FIFOs and sockets before
  /// opening them for reading).
  HxBoolean open(const std::string& path, const HxMrdLoadOptions& options, std::string& error);
  /// Reads the recording held in `bytes`, which must outlive the reader.
  HxBoolean openBytes(const std::string& bytes, const HxMrdLoadOptions& options, std::string& error);

  const HxMrdHeader& header() const { return header_; }
  /// The labels as stored (blanks appear as "_"), including empty labels at the end.
  const std::vector<std::string>& labels() const { return labels_; }
  /// Values per sample as recovered from the file (may be below labels().size() when columns
  /// were disabled).
  HxU32 valuesPerSample() const { return valuesPerSample_; }
  /// Whole samples held.
  std::uint64_t sampleCount() const { return sampleCount_; }
  /// Offset of the first sample in the file.
  std::uint64_t dataOffset() const { return dataOffset_; }
  /// Bytes after the last whole sample (a partial sample), which are not read.
  std::uint64_t partialBytes() const { return partialBytes_; }
  /// True when the header is that of a finished recording of exactly the whole samples held.
  bool finished() const { return finished_; }
  /// Every disagreement between header, labels and data, and how it was resolved, one sentence
  /// each.
  const std::vector<std::string>& warnings() const { return warnings_; }

  /// Reads up to `capacity` of the values of the whole samples not yet read, sample after sample,
  /// into `values`. Returns how many were read: 0 once every whole sample has been read, or on
  /// failure (the file cannot be read or became shorter), with `error` set.
  std::size_t read(float* values, std::size_t capacity, std::string& error);

 private:
  HxBoolean start(const HxMrdLoadOptions& options, std::string& error);
  HxBoolean readLabels(std::string& error);
  HxBoolean findLayout(const HxMrdLoadOptions& options, std::string& error);
  HxU32 recoverValuesPerSample(std::string& error);
  /// Reads `size` bytes at `offset`; false with `error` set when they cannot all be read.
  HxBoolean readAt(std::uint64_t offset, char* data, std::size_t size, std::string& error);

  std::string path_;
  int fd_ = -1;
  const std::string* bytes_ = nullptr;
  std::uint64_t size_ = 0;
  HxMrdHeader header_;
  std::vector<std::string> labels_;
  std::vector<std::string> warnings_;
  HxU32 valuesPerSample_ = 0;
  std::uint64_t sampleCount_ = 0;
  std::uint64_t dataOffset_ = 0;
  std::uint64_t partialBytes_ = 0;
  bool finished_ = false;
  std::uint64_t nextValue_ = 0;
  std::vector<char> buffer_;
};

/// An MRD recording in memory.
struct HxMrdFile {
  HxMrdHeader header;
  /// The labels as stored (blanks appear as "_"), including empty labels at the end.
  std::vector<std::string> labels;
  /// Values per sample as recovered from the file.
  HxU32 valuesPerSample = 0;
  HxU32 sampleCount = 0;
  /// sampleCount × valuesPerSample values, sample by sample.
  std::vector<float> values;
  /// As HxMrdReader::warnings().
  std::vector<std::string> warnings;

  /// Value `column` of sample `sample` (no bounds check).
  float value(std::size_t sample, std::size_t column) const { return values[sample * valuesPerSample + column]; }
};

/// Reads the MRD file held in `bytes` into `file` with an HxMrdReader (same rules and errors).
HxBoolean hxParseMrd(const std::string& bytes, const HxMrdLoadOptions& options, HxMrdFile& file, std::string& error);

/// Reads the MRD file at `path` into memory with an HxMrdReader. Returns false, with `error` set,
/// when the file cannot be read or understood.
HxBoolean hxLoadMrdFile(const std::string& path, const HxMrdLoadOptions& options, HxMrdFile& file, std::string& error);

/// Repairs the MRD file at `path` as left by a recording that was killed before it finished: a
/// blank header, or a partial last sample. The header is written as the writer would have
/// written it for the whole samples held and the partial sample dropped (through hxRewriteFile).
/// A finished file is left untouched; with `inspectOnly` nothing is changed and the outcome says
/// what a repair would do.
HxFileRepair hxRepairMrdFile(const std::string& path, bool inspectOnly);
