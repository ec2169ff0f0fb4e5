#pragma once
/// \file
/// HxBaseOutputWriter: the contract between the recorder and one output file format.

#include <fstream>
#include <ostream>
#include <string>

#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlSerialisable.h"

class HxBaseSystemDataComponent;
class HxSystemDataVector;

/// Abstract output writer: turns the recorder's stream of components into one file of one
/// format. The recorder (`HxSystemStoredData`) drives it in this order: `openFile`,
/// `initialize` (file header), the label block (`writeComponentOpening`, `writeDataComponent`,
/// `writeComponentClosing` on the capture configuration), `writeComponentOpening` on the sample
/// record, `writeDataComponent` once per sample, `writeComponentClosing` on the sample record
/// and `finalize` (trailer).
///
/// A component is told apart only by its `type()`: 0 for the capture configuration, whose
/// string elements are the column labels, 1 for a sample record, whose string elements are
/// the values.
///
/// A writer serialises as an empty element carrying only its token. Writers report nothing:
/// a stream that failed to open stays failed and every later write to it is lost silently.
class HxBaseOutputWriter : public HxXmlCompoundType {
  HX_XML_MEMBERWISE_COPY(HxBaseOutputWriter);
  HxBaseOutputWriter();

  /// Human-readable name of the format ("Comma-Delimited Text", "XML", ...).
  virtual const std::string& formatDescriptor() const = 0;
  /// File name extension, leading dot included (".csv", ".xml", ...).
  virtual const std::string& fileExtension() const = 0;
  /// Opens `fileName` for output on `stream`, replacing any existing file. Does nothing at all
  /// when `stream` already has a file open. On failure the stream's failbit is set.
  virtual void openFile(const std::string& fileName, std::ofstream& stream) = 0;
  /// Writes whatever precedes the first component (file header).
  virtual void initialize(const HxSystemDataVector& data, std::ostream& stream) = 0;
  /// Writes whatever follows the last component (trailer, header patch).
  virtual void finalize(const HxSystemDataVector& data, std::ostream& stream) = 0;
  /// Opens the block of one component.
  virtual void writeComponentOpening(const HxBaseSystemDataComponent& component, std::ostream& stream) const = 0;
  /// Writes one component's contents: once for the labels, once per sample.
  virtual void writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream& stream) const = 0;
  /// Closes the block of one component.
  virtual void writeComponentClosing(const HxBaseSystemDataComponent& component, std::ostream& stream) const = 0;

  /// All writers compare as their compound bases do.
  bool operator==(const HxBaseOutputWriter& other) const { return HxXmlCompoundType::operator==(other); }

 protected:
  /// The common `openFile`: opens in text mode, or binary mode when `binary` is true.
  static void openOutputFile(const std::string& fileName, std::ofstream& stream, bool binary);
};

/// Declares, inside a concrete writer (after HX_XML_SERIALISABLE or, for a writer with its own
/// copy, HX_XML_SERIALISABLE_HOOKS), the members that every writer has: its default
/// constructor, `operator==`, the format's name and file extension
/// (`m_theFormatDescriptor`, `m_theFileExtension`) and the overrides of the writer contract.
/// What each override writes is told by the writer's class comment.
#define HX_OUTPUT_WRITER_MEMBERS(ClassName)                                                                    \
 private:                                                                                                      \
  static const std::string m_theFormatDescriptor;                                                              \
  static const std::string m_theFileExtension;                                                                 \
                                                                                                               \
 public:                                                                                                       \
  /** A writer that has written nothing yet. */                                                                \
  ClassName();                                                                                                 \
  /** Compares the framework base only: all writers of one class are equal. */                                 \
  bool operator==(const ClassName& other) const { return HxBaseOutputWriter::operator==(other); }              \
  const std::string& formatDescriptor() const override;                                                        \
  const std::string& fileExtension() const override;                                                           \
  void openFile(const std::string& fileName, std::ofstream& stream) override;                                  \
  void initialize(const HxSystemDataVector& data, std::ostream& stream) override;                              \
  void finalize(const HxSystemDataVector& data, std::ostream& stream) override;                                \
  void writeComponentOpening(const HxBaseSystemDataComponent& component, std::ostream& stream) const override; \
  void writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;    \
  void writeComponentClosing(const HxBaseSystemDataComponent& component, std::ostream& stream) const override

/// Defines, in a writer's source file, the members of HX_OUTPUT_WRITER_MEMBERS that all writers
/// share and the serialisable-object hooks: the hooks under `ClassToken`, the default
/// constructor, the format's name and extension, and `openFile` (binary mode when
/// `Binary` is true).
#define HX_OUTPUT_WRITER_DEFINITIONS(ClassName, ClassToken, FormatDescriptor, FileExtension, Binary) \
  HX_XML_SERIALISABLE_DEFINITIONS(ClassName, ClassToken)                                             \
  ClassName::ClassName() = default;                                                                  \
  const std::string ClassName::m_theFormatDescriptor(FormatDescriptor);                              \
  const std::string ClassName::m_theFileExtension(FileExtension);                                    \
  const std::string& ClassName::formatDescriptor() const { return m_theFormatDescriptor; }           \
  const std::string& ClassName::fileExtension() const { return m_theFileExtension; }                 \
  void ClassName::openFile(const std::string& fileName, std::ofstream& stream) {                     \
    openOutputFile(fileName, stream, Binary);                                                        \
  }
