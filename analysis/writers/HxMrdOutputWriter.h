#pragma once
/// \file
/// HxMrdOutputWriter: the recording as an MRD file (text header and labels, big-endian floats).

#include <string>
#include <vector>

#include "analysis/writers/HxBaseOutputWriter.h"
#include "framework/HxTypes.h"

/// Writes the recording as an MRD file ("MRD", ".mrd", binary mode):
///
/// | offset | size | content |
/// |---|---|---|
/// | 0 | 81 | header: 80 bytes of text, then "\n" |
/// | 81 | variable | label line: labels (blanks made "_") joined by "  -  ", then "  -" and "\n\n\n" |
/// | after the labels | samples × channels × 4 | each value an IEEE-754 single, most significant byte first |
///
/// `initialize` writes 80 blanks and "\n" and sets the sample count to 0 (the channel count is
/// kept); `finalize` goes back to offset 0, writes "total<TAB>channels<TAB>samples<TAB>1000"
/// over the start of the blanks, where total is samples × channels in unsigned 32-bit
/// arithmetic and channels is the number of labels, and returns to the end position. A
/// recording never finished keeps its all-blank header. A component's opening and closing
/// write nothing. Labels (type 0) give the label line, and the channel count becomes their
/// number; any other type counts as a sample (a type other than 1 writes no bytes but is
/// counted).
///
/// Sample values are read back from their text (`HxDOUBLE2STRING`) as `strtod` would in the C
/// locale, then narrowed to float: a value carries the precision of its text. A component that
/// gives its elements as reals (`elementValues`, as the sample record does) has them narrowed
/// directly, without text: the float is the same, because that text is the shortest that reads
/// back to exactly the same double, and a NaN (whose text is "nan" whatever its sign and
/// payload) becomes the float of `strtod("nan")`.
///
/// Nothing is checked or reported.
class HxMrdOutputWriter : public HxBaseOutputWriter {
  HX_XML_SERIALISABLE(HxMrdOutputWriter);
  HX_OUTPUT_WRITER_MEMBERS(HxMrdOutputWriter);

  /// Samples written since `initialize`.
  HxU32 sampleCount() const { return sampleCount_; }
  /// Number of labels in the last label component written.
  HxU32 channelCount() const { return channelCount_; }
  /// The header's last field, always 1000.
  float fourthHeaderValue() const { return fourthHeaderValue_; }

  /// Header width before its "\n".
  static constexpr HxU32 kHeaderTextWidth = 80;

 private:
  // Reused by every writeDataComponent: the component's strings, one number's text (for
  // strtod, which needs it terminated) and the bytes being built.
  mutable HxScratch<std::vector<std::string>> scratch_;
  mutable HxScratch<std::string> number_;
  mutable HxScratch<std::string> bytes_;
  mutable HxU32 sampleCount_ = 0;
  mutable HxU32 channelCount_ = 0;
  float fourthHeaderValue_ = 1000.0f;
};
