#pragma once
/// \file
/// HxMathematicaOutputWriter: the recording as a Mathematica notebook.

#include <string>
#include <vector>

#include "analysis/writers/HxBaseOutputWriter.h"

/// Writes the recording as a Mathematica notebook (".nb", front end 5.2) of three input
/// cells: the first assigns the table (label row, then one row per sample) to `Data`; the
/// second defines, per column, a variable named after its label (":", blank, "-", "[" and "]"
/// removed) holding that column's samples; the third sets `variables` to the label row.
///
/// Header (`initialize`) and trailer (`finalize`) are fixed text; the contact rows come from
/// `HxMathematicaContacts.h`. The position comments of the header are fixed too and are not
/// recomputed for the file at hand. Rows are brace lists with a blank before each separating
/// comma: `{"Time" ,"Point Path Index"}` for labels, `,{0 ,0}` for a sample, labels quoted
/// (not escaped), values bare.
class HxMathematicaOutputWriter : public HxBaseOutputWriter {
 public:
  HxMathematicaOutputWriter();
  /// Copies the base; the copy starts with empty scratch buffers.
  HxMathematicaOutputWriter(const HxMathematicaOutputWriter& other);
  /// Assigns the base; the target keeps its scratch buffers.
  HxMathematicaOutputWriter& operator=(const HxMathematicaOutputWriter& other);
  ~HxMathematicaOutputWriter() override;

  HxXmlObject* clone() const override;
  HxXmlObject* newObject() const override;
  /// False for null or for an object of another class, else `operator==`.
  HxBoolean equality(const HxXmlObject* other) const override;
  const HxToken& token() const override;
  /// "mathematicaOutputWriter".
  static const HxToken& classToken();
  /// A new default writer, for registration in `HxOutputWriterVector`.
  static HxXmlObject* creator();
  /// A default writer.
  static HxMathematicaOutputWriter nullObject();
  /// Compares the framework base only: all Mathematica writers are equal.
  bool operator==(const HxMathematicaOutputWriter& other) const { return HxBaseOutputWriter::operator==(other); }

  /// "Mathematica".
  const std::string& formatDescriptor() const override;
  /// ".nb".
  const std::string& fileExtension() const override;
  /// Text mode; see `HxBaseOutputWriter::openFile`.
  void openFile(const std::string& fileName, std::ofstream& stream) override;
  /// Writes the notebook header, up to and including the opening of `Data`.
  void initialize(const HxSystemDataVector& data, std::ostream& stream) override;
  /// Writes the notebook trailer: the end of the first cell, the second and third cells and
  /// the notebook options.
  void finalize(const HxSystemDataVector& data, std::ostream& stream) override;
  /// Writes nothing.
  void writeComponentOpening(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;
  /// Writes one row: `{"label" ,"label"}` for labels, `,{value ,value}` for a sample, then
  /// "}\n" (also for no strings or another type).
  void writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;
  /// Writes nothing.
  void writeComponentClosing(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;

  /// The exact header text that `initialize` writes.
  static const std::string& headerText();
  /// The exact trailer text that `finalize` writes.
  static const std::string& trailerText();

 private:
  static const std::string m_theFormatDescriptor;
  static const std::string m_theFileExtension;

  // Reused by every writeDataComponent: the component's strings and the row being built.
  mutable std::vector<std::string> scratch_;
  mutable std::string row_;
};
