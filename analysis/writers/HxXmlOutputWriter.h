#pragma once
/// \file
/// HxXmlOutputWriter: the recording as one streamed XML document.

#include <cstddef>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "analysis/capture/HxSystemDataVector.h"
#include "analysis/writers/HxBaseOutputWriter.h"

class HxSystemDataStorage;
class HxXmlWriter;

/// Writes the recording as one XML document (".xml"), streamed element by element through the
/// polymorphic vector's streaming operations: a root element named by the framework's default
/// token with a count attribute of 0 (deliberately: the count is that of an always-empty
/// vector, not the number of samples), the capture configuration as one "generalCapture"
/// element, one "generalStorage" element per sample, and the root's end tag written by
/// `finalize`. A recording never finished leaves the document unclosed.
///
/// Samples are written fast without changing a byte: the first sample record of a shape is
/// written through the framework and its text kept as a template; each later record of the same
/// shape is the template with its values' texts (the record's own text block, `elementText`,
/// the very texts the framework would write) put in their places, so a sample's values are not
/// turned into text a second time. A record whose written text does not match its strings
/// slot for slot is always written through the framework.
///
/// The `HxXmlWriter` writes through a stream of this writer's own that shares the caller's
/// stream buffer. Before an XML writer is discarded (a second `initialize`, or the destructor)
/// that stream is detached, so discarding it neither writes a footer nor touches the caller's
/// stream, which the recorder may already have destroyed.
class HxXmlOutputWriter : public HxBaseOutputWriter {
 public:
  HxXmlOutputWriter();
  /// Copies the base; the copy holds no XML writer.
  HxXmlOutputWriter(const HxXmlOutputWriter& other);
  /// Assigns the base; the target keeps its own XML writer.
  HxXmlOutputWriter& operator=(const HxXmlOutputWriter& other);
  /// Releases a held XML writer without writing its footer or touching the stream.
  ~HxXmlOutputWriter() override;

  HxXmlObject* clone() const override;
  HxXmlObject* newObject() const override;
  /// False for null or for an object of another class, else `operator==`.
  HxBoolean equality(const HxXmlObject* other) const override;
  const HxToken& token() const override;
  /// "xmlOutputWriter".
  static const HxToken& classToken();
  /// A new default writer, for registration in `HxOutputWriterVector`.
  static HxXmlObject* creator();
  /// A default writer, holding no XML writer.
  static HxXmlOutputWriter nullObject();
  /// Compares the framework base only: all XML writers are equal.
  bool operator==(const HxXmlOutputWriter& other) const { return HxBaseOutputWriter::operator==(other); }

  /// "XML".
  const std::string& formatDescriptor() const override;
  /// ".xml".
  const std::string& fileExtension() const override;
  /// Text mode; see `HxBaseOutputWriter::openFile`.
  void openFile(const std::string& fileName, std::ofstream& stream) override;
  /// Discards a held XML writer (without its footer), then starts the document: a new XML
  /// writer named "capturedDataStream", the root element and its count attribute. A stream
  /// already failed or bad gets nothing and leaves no XML writer held.
  void initialize(const HxSystemDataVector& data, std::ostream& stream) override;
  /// Ends the root element and releases the XML writer. Nothing without an XML writer.
  void finalize(const HxSystemDataVector& data, std::ostream& stream) override;
  /// Writes nothing.
  void writeComponentOpening(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;
  /// Writes the component as one complete element under its own token. Nothing without an
  /// XML writer.
  void writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;
  /// Writes nothing.
  void writeComponentClosing(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;

  /// Whether a document is open (an XML writer is held).
  bool documentOpen() const { return xmlWriter_ != nullptr; }

 private:
  /// Detaches the writer's stream from the caller's buffer and deletes a held XML writer.
  void discardXmlWriter();
  /// Writes `record` through the framework into a template, checks its value slots against the
  /// record's strings and writes the text to the document. Returns whether the template holds.
  bool buildTemplate(const HxSystemDataStorage& record) const;
  /// Writes `record` as the template with its current values.
  void writeFromTemplate(const HxSystemDataStorage& record) const;
  /// Hands bytes to the document's buffer, as the XML writer would.
  void put(const char* data, std::size_t size) const;

  static const std::string m_theFormatDescriptor;
  static const std::string m_theFileExtension;

  HxXmlWriter* xmlWriter_ = nullptr;
  // Always empty: only its stream header and footer are written.
  HxSystemDataVector emptyVector_;
  // The stream the XML writer writes to; it shares the caller's stream buffer while a
  // document is open and has none otherwise.
  mutable std::ostream documentStream_{nullptr};
  std::streambuf* documentBuffer_ = nullptr;

  // Sample template: the text of a record written through the framework, the positions of
  // its value texts in document order, and the shape of the record it was made for.
  mutable std::stringbuf render_;
  mutable std::string template_;
  mutable std::vector<std::pair<std::size_t, std::size_t>> slots_;
  mutable std::vector<std::size_t> shape_;
  mutable std::vector<std::size_t> shapeProbe_;
  mutable bool templateKnown_ = false;
  mutable bool templateUsable_ = false;
  mutable std::string row_;
};
