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
  const HxWriterRow::Fields fields(component, scratch_);
  const std::size_t n = fields.size();

  // A text block already holds the elements joined by commas: the line is the block with its
  // last separator made the line end.
  if (const HxElementText* block = fields.block()) {
    if (n != 0) HxWriterRow::write(stream, block->chars, block->blockSize() - 1);
    stream.write("\n", 1);
    return;
  }

  // Otherwise the whole line is built first and handed to the stream in one write.
  char* const row = HxWriterRow::prepare(row_, fields, 1);
  char* out = row;
  if (n != 1) {
    for (std::size_t i = 0; i + 1 < n; ++i) {
      out = HxWriterRow::put(out, fields[i]);
      *out++ = ',';
    }
  }
  if (n > 0) out = HxWriterRow::put(out, fields[n - 1]);
  *out++ = '\n';
  HxWriterRow::write(stream, row, static_cast<std::size_t>(out - row));
}
