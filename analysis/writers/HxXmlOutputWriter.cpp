#include "analysis/writers/HxXmlOutputWriter.h"

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/writers/HxWriterRow.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxNumberText.h"
#include "framework/HxXmlTokens.h"
#include "framework/HxXmlWriter.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// Name given to the XML writer of every recording.
const char* const kDocumentName = "capturedDataStream";

/// The shape of a record: every vector size of its nested data, in order. Two records of one
/// shape are written as the same elements around their values.
void recordShape(const HxSystemDataStorage& record, std::vector<std::size_t>& shape) {
  shape.clear();
  const auto& manipulators = record.manipulatorDataVector();
  shape.push_back(manipulators.size());
  for (HxU32 m = 0; m < manipulators.size(); ++m) {
    const HxManipulatorDataStorage& manipulator = manipulators[m];
    const auto& quantities = manipulator.manipulatorLevelData();
    shape.push_back(quantities.size());
    for (HxU32 q = 0; q < quantities.size(); ++q) shape.push_back(quantities[q].size());
    for (const auto* elements : {&manipulator.linkLevelData(), &manipulator.endEffectorData()}) {
      shape.push_back(elements->size());
      for (HxU32 e = 0; e < elements->size(); ++e) {
        const auto& element = (*elements)[e];
        shape.push_back(element.size());
        for (HxU32 q = 0; q < element.size(); ++q) shape.push_back(element[q].size());
      }
    }
  }
}

/// The record's string element written in slot `slot` of `count`: the element writes its
/// values first, then its time and its path-point index.
std::size_t elementOfSlot(std::size_t slot, std::size_t count) {
  if (slot + 2 < count) return slot + 2;
  return slot + 2 - count;
}

/// Positions of the texts between tags (the values), in document order.
void findValueSlots(const std::string& text, std::vector<std::pair<std::size_t, std::size_t>>& slots) {
  slots.clear();
  bool inTag = false;
  for (std::size_t i = 0; i < text.size();) {
    const char c = text[i];
    if (inTag) {
      if (c == '>') inTag = false;
      ++i;
    } else if (c == '<') {
      inTag = true;
      ++i;
    } else if (c == ' ' || c == '\n' || c == '\t' || c == '\r') {
      ++i;
    } else {
      const std::size_t start = i;
      while (i < text.size() && text[i] != '<' && text[i] != ' ' && text[i] != '\n' && text[i] != '\t' &&
             text[i] != '\r') {
        ++i;
      }
      slots.emplace_back(start, i);
    }
  }
}
}  // namespace

const std::string HxXmlOutputWriter::m_theFormatDescriptor("XML");
const std::string HxXmlOutputWriter::m_theFileExtension(".xml");

HxXmlOutputWriter::HxXmlOutputWriter() = default;
HxXmlOutputWriter::HxXmlOutputWriter(const HxXmlOutputWriter& other) : HxBaseOutputWriter(other) {}
HxXmlOutputWriter& HxXmlOutputWriter::operator=(const HxXmlOutputWriter& other) {
  HxBaseOutputWriter::operator=(other);
  return *this;
}
HxXmlOutputWriter::~HxXmlOutputWriter() { discardXmlWriter(); }

HxXmlObject* HxXmlOutputWriter::clone() const { return new HxXmlOutputWriter(*this); }
HxXmlObject* HxXmlOutputWriter::newObject() const { return new HxXmlOutputWriter(); }
HxBoolean HxXmlOutputWriter::equality(const HxXmlObject* other) const {
  const auto* writer = dynamic_cast<const HxXmlOutputWriter*>(other);
  return writer != nullptr && *this == *writer;
}
const HxToken& HxXmlOutputWriter::token() const { return classToken(); }
const HxToken& HxXmlOutputWriter::classToken() { return HxSimAnalysis::HxXmlOutputWriterToken; }
HxXmlObject* HxXmlOutputWriter::creator() { return new HxXmlOutputWriter(); }
HxXmlOutputWriter HxXmlOutputWriter::nullObject() { return HxXmlOutputWriter(); }

const std::string& HxXmlOutputWriter::formatDescriptor() const { return m_theFormatDescriptor; }
const std::string& HxXmlOutputWriter::fileExtension() const { return m_theFileExtension; }

void HxXmlOutputWriter::openFile(const std::string& fileName, std::ofstream& stream) {
  openOutputFile(fileName, stream, false);
}

void HxXmlOutputWriter::discardXmlWriter() {
  // With no buffer, the XML writer's flush on deletion does nothing: the caller's stream may
  // already be gone, and an abandoned document gets no footer.
  m_documentStream.rdbuf(nullptr);
  delete m_xmlWriter;
  m_xmlWriter = nullptr;
}

void HxXmlOutputWriter::initialize(const HxSystemDataVector&, std::ostream& stream) {
  discardXmlWriter();
  m_templateKnown = false;
  m_documentBuffer = stream.rdbuf();

  // Write through the caller's buffer, starting from the caller's stream state, so that a
  // stream that failed to open gets no document.
  m_documentStream.rdbuf(stream.rdbuf());
  m_documentStream.setstate(stream.rdstate());
  m_emptyVector.writeHeaderToStream(m_documentStream, m_xmlWriter, kDocumentName, HxXml::HxDefaultToken);
  if (m_xmlWriter == nullptr) {
    m_documentStream.rdbuf(nullptr);
    m_documentBuffer = nullptr;
  }
}

void HxXmlOutputWriter::finalize(const HxSystemDataVector&, std::ostream&) {
  if (m_xmlWriter == nullptr) return;
  m_emptyVector.writeFooterToStream(m_xmlWriter);
  m_documentStream.flush();
  m_documentStream.rdbuf(nullptr);
  m_documentBuffer = nullptr;
  m_templateKnown = false;
}

void HxXmlOutputWriter::writeComponentOpening(const HxBaseSystemDataComponent&, std::ostream&) const {}
void HxXmlOutputWriter::writeComponentClosing(const HxBaseSystemDataComponent&, std::ostream&) const {}

void HxXmlOutputWriter::writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream&) const {
  if (m_xmlWriter == nullptr) return;
  const auto* record = component.type() == 1 ? dynamic_cast<const HxSystemDataStorage*>(&component) : nullptr;
  if (record == nullptr) {
    m_emptyVector.appendElementToStream(m_xmlWriter, component);
    return;
  }

  // A record of a new shape makes a new template; a record whose template did not hold is
  // written through the framework.
  recordShape(*record, m_shapeProbe);
  if (!m_templateKnown || m_shapeProbe != m_shape) {
    m_shape = m_shapeProbe;  // both keep their capacity
    m_templateKnown = true;
    m_templateUsable = buildTemplate(*record);
    return;
  }
  if (!m_templateUsable) {
    m_emptyVector.appendElementToStream(m_xmlWriter, component);
    return;
  }
  writeFromTemplate(*record);
}

bool HxXmlOutputWriter::buildTemplate(const HxSystemDataStorage& record) const {
  // Write the record through the framework into memory, keeping the stream's state.
  const std::ios::iostate state = m_documentStream.rdstate();
  m_render.str(std::string());
  m_documentStream.rdbuf(&m_render);
  m_emptyVector.appendElementToStream(m_xmlWriter, record);
  const bool rendered = m_documentStream.good();
  m_documentStream.rdbuf(m_documentBuffer);
  m_documentStream.setstate(state);
  m_template = m_render.str();
  put(m_template.data(), m_template.size());
  if (!rendered) return false;

  // Every text between tags is a value; they must be the record's strings, in writing order.
  const HxElementText& text = *record.elementText();
  findValueSlots(m_template, m_slots);
  if (m_slots.size() != text.count) return false;
  // Room for the longest value texts, so that the samples after this one do not allocate.
  const std::size_t needed = m_template.size() + m_slots.size() * HxDoubleTextCapacity;
  if (m_row.size() < needed) m_row.resize(needed);
  for (std::size_t k = 0; k < m_slots.size(); ++k) {
    const auto& slot = m_slots[k];
    const std::string_view value = text.element(elementOfSlot(k, m_slots.size()));
    if (std::string_view(m_template).substr(slot.first, slot.second - slot.first) != value) return false;
  }
  return true;
}

void HxXmlOutputWriter::writeFromTemplate(const HxSystemDataStorage& record) const {
  const HxElementText& text = *record.elementText();
  const std::size_t count = m_slots.size();
  // Room for the longest value texts (already made by buildTemplate).
  const std::size_t needed = m_template.size() + count * HxDoubleTextCapacity;
  if (m_row.size() < needed) m_row.resize(needed);
  const char* const source = m_template.data();
  char* const begin = m_row.data();
  char* out = begin;
  std::size_t done = 0;
  for (std::size_t k = 0; k < count; ++k) {
    out = HxWriterRow::put(out, std::string_view(source + done, m_slots[k].first - done));
    out = HxWriterRow::put(out, text.element(elementOfSlot(k, count)));
    done = m_slots[k].second;
  }
  out = HxWriterRow::put(out, std::string_view(source + done, m_template.size() - done));
  put(begin, static_cast<std::size_t>(out - begin));
}

void HxXmlOutputWriter::put(const char* data, std::size_t size) const {
  if (size == 0 || !m_documentStream.good()) return;
  std::streambuf* buffer = m_documentStream.rdbuf();
  if (buffer == nullptr) {
    m_documentStream.setstate(std::ios::badbit);
    return;
  }
  // In pieces the file buffer takes in (see HxWriterRow::kStreamPiece).
  while (size > 0) {
    const std::size_t piece = size < HxWriterRow::kStreamPiece ? size : HxWriterRow::kStreamPiece;
    const auto length = static_cast<std::streamsize>(piece);
    if (buffer->sputn(data, length) != length) {
      m_documentStream.setstate(std::ios::badbit);
      return;
    }
    data += piece;
    size -= piece;
  }
}
