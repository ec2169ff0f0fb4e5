#pragma once
/// \file
/// HxMrdOutputWriter: the recording as an MRD file (text header and labels, big-endian floats).

#include <string>
#include <vector>

#include "analysis/writers/HxBaseOutputWriter.h"
#include "framework/HxTypes.h"

/// Writes the recording as an MRD file (".mrd", binary mode):
///
/// | offset | size | content |
/// |---|---|---|
/// | 0 | 81 | header: 80 bytes of text, then "\n" |
/// | 81 | variable | label line: labels (blanks made "_") joined by "  -  ", then "  -" and "\n\n\n" |
/// | after the labels | samples × channels × 4 | each value an IEEE-754 single, most significant byte first |
///
/// `initialize` writes 80 blanks and "\n"; `finalize` goes back to offset 0 and writes
/// "total<TAB>channels<TAB>samples<TAB>1000" over the start of the blanks, where total is
/// samples × channels in unsigned 32-bit arithmetic and channels is the number of labels. A
/// recording never finished keeps its all-blank header.
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
 public:
  HxMrdOutputWriter();
  /// Copies the base, the counts and the fourth header value; the copy starts with empty
  /// scratch buffers.
  HxMrdOutputWriter(const HxMrdOutputWriter& other);
  /// Assigns the base, the counts and the fourth header value; the target keeps its scratch
  /// buffers.
  HxMrdOutputWriter& operator=(const HxMrdOutputWriter& other);
  ~HxMrdOutputWriter() override;

  HxXmlObject* clone() const override;
  HxXmlObject* newObject() const override;
  /// False for null or for an object of another class, else `operator==`.
  HxBoolean equality(const HxXmlObject* other) const override;
  const HxToken& token() const override;
  /// "mrdOutputWriter".
  static const HxToken& classToken();
  /// A new default writer, for registration in `HxOutputWriterVector`.
  static HxXmlObject* creator();
  /// A default writer.
  static HxMrdOutputWriter nullObject();
  /// Compares the framework base only: all MRD writers are equal.
  bool operator==(const HxMrdOutputWriter& other) const { return HxBaseOutputWriter::operator==(other); }

  /// "MRD".
  const std::string& formatDescriptor() const override;
  /// ".mrd".
  const std::string& fileExtension() const override;
  /// Binary mode; see `HxBaseOutputWriter::openFile`.
  void openFile(const std::string& fileName, std::ofstream& stream) override;
  /// Writes the blank header (80 blanks and "\n") and sets the sample count to 0; the channel
  /// count is kept.
  void initialize(const HxSystemDataVector& data, std::ostream& stream) override;
  /// Patches the header at offset 0 with the counts and returns to the end position.
  void finalize(const HxSystemDataVector& data, std::ostream& stream) override;
  /// Writes nothing.
  void writeComponentOpening(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;
  /// Labels (type 0): the label line, and the channel count becomes the number of labels.
  /// A sample (type 1): one big-endian float per value. Any type other than 0 counts as a
  /// sample (another type writes no bytes but is counted).
  void writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;
  /// Writes nothing.
  void writeComponentClosing(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;

  /// Samples written since `initialize`.
  HxU32 sampleCount() const { return sampleCount_; }
  /// Number of labels in the last label component written.
  HxU32 channelCount() const { return channelCount_; }
  /// The header's last field, always 1000.
  float fourthHeaderValue() const { return fourthHeaderValue_; }

  /// Header width before its "\n".
  static constexpr HxU32 kHeaderTextWidth = 80;

 private:
  static const std::string m_theFormatDescriptor;
  static const std::string m_theFileExtension;

  // Reused by every writeDataComponent: the component's strings, one number's text (for
  // strtod, which needs it terminated) and the bytes being built.
  mutable std::vector<std::string> scratch_;
  mutable std::string number_;
  mutable std::string bytes_;
  mutable HxU32 sampleCount_ = 0;
  mutable HxU32 channelCount_ = 0;
  float fourthHeaderValue_ = 1000.0f;
};
