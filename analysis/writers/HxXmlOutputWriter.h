#pragma once
/// \file
/// HxXmlOutputWriter: the recording as one streamed XML document.

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataVector.h"
#include "analysis/writers/HxBaseOutputWriter.h"
#include "framework/HxXmlWriter.h"

/// Writes the recording as one XML document ("XML", ".xml", text mode), streamed element by
/// element through the polymorphic vector's streaming operations. `initialize` discards a held
/// XML writer (without its footer) and starts the document: a new XML writer named
/// "capturedDataStream" and a root element named by the framework's default token with a count
/// attribute of 0 (deliberately: the count is that of an always-empty vector, not the number of
/// samples); a stream already failed or bad gets nothing and leaves no XML writer held. Each
/// component is then written as one complete element under its own token, the capture
/// configuration as "generalCapture" and each sample as "generalStorage" (openings and closings
/// write nothing), and `finalize` ends the root element and releases the XML writer. Without an
/// XML writer nothing is written. A recording never finished leaves the document unclosed.
///
/// Samples are written fast without changing a byte. A component that is an `HxElementSource`
/// and describes its layout (the sample record) is written through the framework the first time
/// its layout comes; then its layout probe, whose elements all differ, is written through the
/// framework into memory as the template, the `HxXmlWriter` reporting where each scalar lands,
/// and the probe's texts name the element of each slot. Each later component of that layout is
/// the template with its own element texts (`elementText`, the very texts the framework would
/// write) in the slots, so that its values are not turned into text a second time. The template
/// is used only if, filled with the first component's texts, it gives what the framework wrote
/// for it; otherwise, and for every other component, the framework writes.
///
/// The `HxXmlWriter` writes through a stream of this writer's own that shares the caller's
/// stream buffer. Before an XML writer is discarded (a second `initialize`, or the destructor)
/// that stream is detached, so discarding it neither writes a footer nor touches the caller's
/// stream, which the recorder may already have destroyed.
class HxXmlOutputWriter : public HxBaseOutputWriter {
  HX_XML_SERIALISABLE_HOOKS(HxXmlOutputWriter);
  HX_OUTPUT_WRITER_MEMBERS(HxXmlOutputWriter);
  /// Copies the base only: the copy holds no XML writer.
  HxXmlOutputWriter(const HxXmlOutputWriter& other);
  /// Assigns the base only: the target keeps its own XML writer.
  HxXmlOutputWriter& operator=(const HxXmlOutputWriter& other);
  /// Releases a held XML writer without writing its footer or touching the stream.
  ~HxXmlOutputWriter() override;
  /// A default writer, holding no XML writer.
  static HxXmlOutputWriter nullObject();

  /// Whether a document is open (an XML writer is held).
  bool documentOpen() const { return xmlWriter_ != nullptr; }

 private:
  /// Detaches the writer's stream from the caller's buffer and deletes a held XML writer.
  void discardXmlWriter();
  /// Writes `component` through the framework into `text` (memory, not the document), reporting
  /// where its scalars land into `spans` unless null. Returns whether it was written.
  bool render(const HxBaseSystemDataComponent& component, std::string& text, std::vector<HxXmlScalarSpan>* spans) const;
  /// Writes `component` through the framework to the document and makes the template of its
  /// layout from `source`'s layout probe. Returns whether the template holds.
  bool buildTemplate(const HxBaseSystemDataComponent& component, const HxElementSource& source) const;
  /// Writes the template with `text`'s elements in its slots at `out`, which has room for the
  /// template, `text`'s block and HxWriterRow::kCopySlack bytes; returns the end of what it
  /// wrote.
  char* fillTemplate(const HxElementText& text, char* out) const;
  /// Hands bytes to the document's buffer, as the XML writer would.
  void put(const char* data, std::size_t size) const;

  HxXmlWriter* xmlWriter_ = nullptr;
  // Always empty: only its stream header and footer are written.
  HxSystemDataVector emptyVector_;
  // The stream the XML writer writes to; it shares the caller's stream buffer while a
  // document is open and has none otherwise.
  mutable std::ostream documentStream_{nullptr};
  std::streambuf* documentBuffer_ = nullptr;

  // Sample template: the text of a layout probe written through the framework, where its
  // element texts landed (slots), the element each slot holds, and the layout it was made for
  // (with the layout of the component at hand beside it). The component's own text while the
  // template is made, and the row that a filled template is written from.
  mutable std::stringbuf render_;
  mutable std::string template_;  // followed by kCopySlack bytes of padding
  mutable std::size_t templateSize_ = 0;
  mutable std::vector<HxXmlScalarSpan> slots_;
  mutable std::vector<std::size_t> slotElements_;
  mutable std::vector<HxU32> layout_;
  mutable std::vector<HxU32> layoutAtHand_;
  mutable std::uint64_t describedStamp_ = 0;  // layout stamp of the component described last
  mutable bool templateKnown_ = false;
  mutable bool templateUsable_ = false;
  mutable bool documentHasElement_ = false;
  mutable std::string rendered_;
  mutable std::string row_;
};
