#include "analysis/writers/HxTextOutputWriter.h"

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/writers/HxWriterRow.h"
#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

const std::string HxTextOutputWriter::m_theFormatDescriptor("Comma-Delimited Text");
const std::string HxTextOutputWriter::m_theFileExtension(".csv");

HxTextOutputWriter::HxTextOutputWriter() = default;
HxTextOutputWriter::HxTextOutputWriter(const HxTextOutputWriter& other) : HxBaseOutputWriter(other) {}
HxTextOutputWriter& HxTextOutputWriter::operator=(const HxTextOutputWriter& other) {
  HxBaseOutputWriter::operator=(other);
  return *this;
}
HxTextOutputWriter::~HxTextOutputWriter() = default;

HxXmlObject* HxTextOutputWriter::clone() const { return new HxTextOutputWriter(*this); }
HxXmlObject* HxTextOutputWriter::newObject() const { return new HxTextOutputWriter(); }
HxBoolean HxTextOutputWriter::equality(const HxXmlObject* other) const {
  const auto* writer = dynamic_cast<const HxTextOutputWriter*>(other);
  return writer != nullptr && *this == *writer;
}
const HxToken& HxTextOutputWriter::token() const { return classToken(); }
const HxToken& HxTextOutputWriter::classToken() { return HxSimAnalysis::HxTextOutputWriterToken; }
HxXmlObject* HxTextOutputWriter::creator() { return new HxTextOutputWriter(); }
HxTextOutputWriter HxTextOutputWriter::nullObject() { return HxTextOutputWriter(); }

const std::string& HxTextOutputWriter::formatDescriptor() const { return m_theFormatDescriptor; }
const std::string& HxTextOutputWriter::fileExtension() const { return m_theFileExtension; }

void HxTextOutputWriter::openFile(const std::string& fileName, std::ofstream& stream) {
  openOutputFile(fileName, stream, false);
}

void HxTextOutputWriter::initialize(const HxSystemDataVector&, std::ostream&) {}
void HxTextOutputWriter::finalize(const HxSystemDataVector&, std::ostream&) {}
void HxTextOutputWriter::writeComponentOpening(const HxBaseSystemDataComponent&, std::ostream&) const {}
void HxTextOutputWriter::writeComponentClosing(const HxBaseSystemDataComponent&, std::ostream&) const {}

void HxTextOutputWriter::writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream& stream) const {
  component.getStringElements(m_scratch);
  const std::size_t n = m_scratch.size();

  // The whole line is built first and handed to the stream in one write.
  HxWriterRow::prepare(m_row, m_scratch, 1);
  if (n != 1) {
    for (std::size_t i = 0; i + 1 < n; ++i) {
      m_row += m_scratch[i];
      m_row += ',';
    }
  }
  if (n > 0) m_row += m_scratch[n - 1];
  m_row += '\n';
  stream.write(m_row.data(), static_cast<std::streamsize>(m_row.size()));
}
