#pragma once
/// \file
/// HxTextOutputWriter: the recording as comma-delimited text.

#include <string>
#include <vector>

#include "analysis/writers/HxBaseOutputWriter.h"

/// Writes the recording as comma-delimited text (".csv"): one line of column labels, then one
/// line per sample (time, path-point index, then every value), fields separated by a single
/// "," and lines ended by the single byte 0x0A. Nothing is quoted, escaped or padded: the
/// fields are exactly the components' string elements.
///
/// With disabled columns the label line is longer than the sample lines by the number of
/// disabled columns (the capture's label list keeps empty labels at its end); the writer does
/// not reconcile the two.
class HxTextOutputWriter : public HxBaseOutputWriter {
 public:
  HxTextOutputWriter();
  /// Copies the base; the copy starts with empty scratch buffers.
  HxTextOutputWriter(const HxTextOutputWriter& other);
  /// Assigns the base; the target keeps its scratch buffers.
  HxTextOutputWriter& operator=(const HxTextOutputWriter& other);
  ~HxTextOutputWriter() override;

  HxXmlObject* clone() const override;
  HxXmlObject* newObject() const override;
  /// False for null or for an object of another class, else `operator==`.
  HxBoolean equality(const HxXmlObject* other) const override;
  const HxToken& token() const override;
  /// "textOutputWriter".
  static const HxToken& classToken();
  /// A new default writer, for registration in `HxOutputWriterVector`.
  static HxXmlObject* creator();
  /// A default writer.
  static HxTextOutputWriter nullObject();
  /// Compares the framework base only: all text writers are equal.
  bool operator==(const HxTextOutputWriter& other) const { return HxBaseOutputWriter::operator==(other); }

  /// "Comma-Delimited Text".
  const std::string& formatDescriptor() const override;
  /// ".csv".
  const std::string& fileExtension() const override;
  /// Text mode; see `HxBaseOutputWriter::openFile`.
  void openFile(const std::string& fileName, std::ofstream& stream) override;
  /// Writes nothing.
  void initialize(const HxSystemDataVector& data, std::ostream& stream) override;
  /// Writes nothing.
  void finalize(const HxSystemDataVector& data, std::ostream& stream) override;
  /// Writes nothing.
  void writeComponentOpening(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;
  /// Writes the component's strings as one line: joined by "," and ended by "\n".
  void writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;
  /// Writes nothing.
  void writeComponentClosing(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;

 private:
  static const std::string m_theFormatDescriptor;
  static const std::string m_theFileExtension;

  // Reused by every writeDataComponent: the component's strings and the line being built.
  mutable std::vector<std::string> scratch_;
  mutable std::string row_;
};
