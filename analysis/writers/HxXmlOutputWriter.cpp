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
  documentStream_.rdbuf(nullptr);
  delete xmlWriter_;
  xmlWriter_ = nullptr;
}

void HxXmlOutputWriter::initialize(const HxSystemDataVector&, std::ostream& stream) {
  discardXmlWriter();
  templateKnown_ = false;
  documentBuffer_ = stream.rdbuf();

  // Write through the caller's buffer, starting from the caller's stream state, so that a
  // stream that failed to open gets no document.
  documentStream_.rdbuf(stream.rdbuf());
  documentStream_.setstate(stream.rdstate());
  emptyVector_.writeHeaderToStream(documentStream_, xmlWriter_, kDocumentName, HxXml::HxDefaultToken);
  if (xmlWriter_ == nullptr) {
    documentStream_.rdbuf(nullptr);
    documentBuffer_ = nullptr;
  }
}

void HxXmlOutputWriter::finalize(const HxSystemDataVector&, std::ostream&) {
  if (xmlWriter_ == nullptr) return;
  emptyVector_.writeFooterToStream(xmlWriter_);
  documentStream_.flush();
  documentStream_.rdbuf(nullptr);
  documentBuffer_ = nullptr;
  templateKnown_ = false;
}

void HxXmlOutputWriter::writeComponentOpening(const HxBaseSystemDataComponent&, std::ostream&) const {}
void HxXmlOutputWriter::writeComponentClosing(const HxBaseSystemDataComponent&, std::ostream&) const {}

void HxXmlOutputWriter::writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream&) const {
  if (xmlWriter_ == nullptr) return;
  const auto* record = component.type() == 1 ? dynamic_cast<const HxSystemDataStorage*>(&component) : nullptr;
  if (record == nullptr) {
    emptyVector_.appendElementToStream(xmlWriter_, component);
    return;
  }

  // A record of a new shape makes a new template; a record whose template did not hold is
  // written through the framework.
  recordShape(*record, shapeProbe_);
  if (!templateKnown_ || shapeProbe_ != shape_) {
    shape_ = shapeProbe_;  // both keep their capacity
    templateKnown_ = true;
    templateUsable_ = buildTemplate(*record);
    return;
  }
  if (!templateUsable_) {
    emptyVector_.appendElementToStream(xmlWriter_, component);
    return;
  }
  writeFromTemplate(*record);
}

bool HxXmlOutputWriter::buildTemplate(const HxSystemDataStorage& record) const {
  // Write the record through the framework into memory, keeping the stream's state.
  const std::ios::iostate state = documentStream_.rdstate();
  render_.str(std::string());
  documentStream_.rdbuf(&render_);
  emptyVector_.appendElementToStream(xmlWriter_, record);
  const bool rendered = documentStream_.good();
  documentStream_.rdbuf(documentBuffer_);
  documentStream_.setstate(state);
  template_ = render_.str();
  put(template_.data(), template_.size());
  if (!rendered) return false;

  // Every text between tags is a value; they must be the record's strings, in writing order.
  const HxElementText& text = *record.elementText();
  findValueSlots(template_, slots_);
  if (slots_.size() != text.count) return false;
  // Room for the longest value texts, so that the samples after this one do not allocate.
  const std::size_t needed = template_.size() + slots_.size() * HxDoubleTextCapacity;
  if (row_.size() < needed) row_.resize(needed);
  for (std::size_t k = 0; k < slots_.size(); ++k) {
    const auto& slot = slots_[k];
    const std::string_view value = text.element(elementOfSlot(k, slots_.size()));
    if (std::string_view(template_).substr(slot.first, slot.second - slot.first) != value) return false;
  }
  return true;
}

void HxXmlOutputWriter::writeFromTemplate(const HxSystemDataStorage& record) const {
  const HxElementText& text = *record.elementText();
  const std::size_t count = slots_.size();
  // Room for the longest value texts (already made by buildTemplate).
  const std::size_t needed = template_.size() + count * HxDoubleTextCapacity;
  if (row_.size() < needed) row_.resize(needed);
  const char* const source = template_.data();
  char* const begin = row_.data();
  char* out = begin;
  std::size_t done = 0;
  for (std::size_t k = 0; k < count; ++k) {
    out = HxWriterRow::put(out, std::string_view(source + done, slots_[k].first - done));
    out = HxWriterRow::put(out, text.element(elementOfSlot(k, count)));
    done = slots_[k].second;
  }
  out = HxWriterRow::put(out, std::string_view(source + done, template_.size() - done));
  put(begin, static_cast<std::size_t>(out - begin));
}

void HxXmlOutputWriter::put(const char* data, std::size_t size) const {
  if (size == 0 || !documentStream_.good()) return;
  std::streambuf* buffer = documentStream_.rdbuf();
  if (buffer == nullptr) {
    documentStream_.setstate(std::ios::badbit);
    return;
  }
  // In pieces the file buffer takes in (see HxWriterRow::kStreamPiece).
  while (size > 0) {
    const std::size_t piece = size < HxWriterRow::kStreamPiece ? size : HxWriterRow::kStreamPiece;
    const auto length = static_cast<std::streamsize>(piece);
    if (buffer->sputn(data, length) != length) {
      documentStream_.setstate(std::ios::badbit);
      return;
    }
    data += piece;
    size -= piece;
  }
}
