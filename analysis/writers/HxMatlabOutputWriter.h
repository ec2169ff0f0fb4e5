#pragma once
/// \file
/// HxMatlabOutputWriter: the recording as a MATLAB script.

#include <string>
#include <vector>

#include "analysis/writers/HxBaseOutputWriter.h"

/// Writes the recording as a MATLAB script (".m") that assigns the labels to `Description`
/// and the samples, one row each, to `Data`:
///
///     Description=[
///     'Time'<TAB>'Point Path Index'<TAB>...'<last label>'
///     ];
///     Data=[
///     0<TAB>0<TAB>...<last value>;
///     ...
///     ];
///
/// Strings are written as they stand (a quote in a label is not doubled). The final "];" of
/// `Data` is written by `writeComponentClosing` when the recording is finished.
class HxMatlabOutputWriter : public HxBaseOutputWriter {
 public:
  HxMatlabOutputWriter();
  /// Copies the base; the copy starts with empty scratch buffers.
  HxMatlabOutputWriter(const HxMatlabOutputWriter& other);
  /// Assigns the base; the target keeps its scratch buffers.
  HxMatlabOutputWriter& operator=(const HxMatlabOutputWriter& other);
  ~HxMatlabOutputWriter() override;

  HxXmlObject* clone() const override;
  HxXmlObject* newObject() const override;
  /// False for null or for an object of another class, else `operator==`.
  HxBoolean equality(const HxXmlObject* other) const override;
  const HxToken& token() const override;
  /// "matlabOutputWriter".
  static const HxToken& classToken();
  /// A new default writer, for registration in `HxOutputWriterVector`.
  static HxXmlObject* creator();
  /// A default writer.
  static HxMatlabOutputWriter nullObject();
  /// Compares the framework base only: all MATLAB writers are equal.
  bool operator==(const HxMatlabOutputWriter& other) const { return HxBaseOutputWriter::operator==(other); }

  /// "MATLAB".
  const std::string& formatDescriptor() const override;
  /// ".m".
  const std::string& fileExtension() const override;
  /// Text mode; see `HxBaseOutputWriter::openFile`.
  void openFile(const std::string& fileName, std::ofstream& stream) override;
  /// Writes nothing.
  void initialize(const HxSystemDataVector& data, std::ostream& stream) override;
  /// Writes nothing.
  void finalize(const HxSystemDataVector& data, std::ostream& stream) override;
  /// "Description=[\n" for labels (type 0), "Data=[\n" for a sample (type 1), else nothing.
  void writeComponentOpening(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;
  /// One line: labels quoted and tab-separated, ending "'\n"; values tab-separated, ending
  /// ";\n". A component of another type writes nothing.
  void writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;
  /// "];\n", whatever the type.
  void writeComponentClosing(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;

 private:
  static const std::string m_theFormatDescriptor;
  static const std::string m_theFileExtension;

  // Reused by every writeDataComponent: the component's strings and the line being built.
  mutable std::vector<std::string> scratch_;
  mutable std::string row_;
};
