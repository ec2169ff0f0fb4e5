#pragma once
// Loading an MRD recording (as written by HxMrdOutputWriter) into memory.

#include <cstddef>
#include <string>
#include <vector>

#include "framework/HxTypes.h"

/// The fields of an MRD header line: "total<TAB>channels<TAB>samples<TAB>fourth", padded with
/// blanks to 80 characters. A recording that was never finished keeps an all-blank header.
struct HxMrdHeader {
  /// True when the 80 header characters are all blanks.
  bool blank = true;
  /// The header text without its trailing blanks.
  std::string text;
  HxU32 totalValues = 0;
  HxU32 channels = 0;
  HxU32 samples = 0;
  double fourthValue = 0.0;
};

/// What the loader may be told.
struct HxMrdLoadOptions {
  /// Values per sample to use whatever the header says; 0 lets the loader decide.
  HxU32 valuesPerSample = 0;
};

/// An MRD recording in memory.
struct HxMrdFile {
  HxMrdHeader header;
  /// The labels as stored (blanks appear as "_"), including empty labels at the end.
  std::vector<std::string> labels;
  /// Values per sample as recovered from the file (may be below labels.size() when columns
  /// were disabled).
  HxU32 valuesPerSample = 0;
  HxU32 sampleCount = 0;
  /// sampleCount × valuesPerSample values, sample by sample.
  std::vector<float> values;
  /// Every disagreement between header, labels and data that the loader found, and how it
  /// resolved it, one sentence each.
  std::vector<std::string> warnings;

  /// Value `column` of sample `sample` (no bounds check).
  float value(std::size_t sample, std::size_t column) const { return values[sample * valuesPerSample + column]; }
};

/// Parses the bytes of an MRD file.
///
/// Values per sample (V), in order of precedence:
/// 1. `options.valuesPerSample` when not 0;
/// 2. the header's channel count when channels × samples equals the number of values held;
/// 3. with a finished header whose sample count divides the values held: values / samples
///    (fewer values than labels when columns were disabled: the labels list still holds one
///    entry per column of the configuration);
/// 4. otherwise (blank header, or one that contradicts the data): the first sample's known
///    layout, the number of labels less the empty labels at the end; when that does not fit
///    the data, the one V from 2 to the number of labels that divides the data and keeps every
///    sample's layout (a finite, non-decreasing time, then a whole, non-negative path-point
///    index). The sample count is then the file's size divided by V.
/// Each recovery adds a sentence to `file.warnings`.
///
/// Returns false, with one sentence in `error`, when nothing can be recovered: a file shorter
/// than its header, a header that is neither blank nor four fields, a label line that is
/// truncated or malformed, data that is not whole 4-byte values, or a size that fits no layout
/// (or more than one).
HxBoolean hxParseMrd(const std::string& bytes, const HxMrdLoadOptions& options, HxMrdFile& file, std::string& error);

/// Reads the file at `path` and parses it with `hxParseMrd`. Returns false, with `error` set,
/// when the file cannot be read or parsed.
HxBoolean hxLoadMrdFile(const std::string& path, const HxMrdLoadOptions& options, HxMrdFile& file, std::string& error);
