#include "analysis/writers/HxXmlOutputWriter.h"

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxXmlTokens.h"
#include "framework/HxXmlWriter.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// Name given to the XML writer of every recording.
const char* const kDocumentName = "capturedDataStream";
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

  // Write through the caller's buffer, starting from the caller's stream state, so that a
  // stream that failed to open gets no document.
  m_documentStream.rdbuf(stream.rdbuf());
  m_documentStream.setstate(stream.rdstate());
  m_emptyVector.writeHeaderToStream(m_documentStream, m_xmlWriter, kDocumentName, HxXml::HxDefaultToken);
  if (m_xmlWriter == nullptr) m_documentStream.rdbuf(nullptr);
}

void HxXmlOutputWriter::finalize(const HxSystemDataVector&, std::ostream&) {
  if (m_xmlWriter == nullptr) return;
  m_emptyVector.writeFooterToStream(m_xmlWriter);
  m_documentStream.flush();
  m_documentStream.rdbuf(nullptr);
}

void HxXmlOutputWriter::writeComponentOpening(const HxBaseSystemDataComponent&, std::ostream&) const {}
void HxXmlOutputWriter::writeComponentClosing(const HxBaseSystemDataComponent&, std::ostream&) const {}

void HxXmlOutputWriter::writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream&) const {
  if (m_xmlWriter == nullptr) return;
  m_emptyVector.appendElementToStream(m_xmlWriter, component);
}
