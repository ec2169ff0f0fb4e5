#include "analysis/writers/HxMatlabOutputWriter.h"

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/writers/HxWriterRow.h"
#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

void writeText(std::ostream& stream, const char* text, std::streamsize size) { stream.write(text, size); }
}  // namespace

const std::string HxMatlabOutputWriter::m_theFormatDescriptor("MATLAB");
const std::string HxMatlabOutputWriter::m_theFileExtension(".m");

HxMatlabOutputWriter::HxMatlabOutputWriter() = default;
HxMatlabOutputWriter::HxMatlabOutputWriter(const HxMatlabOutputWriter& other) : HxBaseOutputWriter(other) {}
HxMatlabOutputWriter& HxMatlabOutputWriter::operator=(const HxMatlabOutputWriter& other) {
  HxBaseOutputWriter::operator=(other);
  return *this;
}
HxMatlabOutputWriter::~HxMatlabOutputWriter() = default;

HxXmlObject* HxMatlabOutputWriter::clone() const { return new HxMatlabOutputWriter(*this); }
HxXmlObject* HxMatlabOutputWriter::newObject() const { return new HxMatlabOutputWriter(); }
HxBoolean HxMatlabOutputWriter::equality(const HxXmlObject* other) const {
  const auto* writer = dynamic_cast<const HxMatlabOutputWriter*>(other);
  return writer != nullptr && *this == *writer;
}
const HxToken& HxMatlabOutputWriter::token() const { return classToken(); }
const HxToken& HxMatlabOutputWriter::classToken() { return HxSimAnalysis::HxMatlabOutputWriterToken; }
HxXmlObject* HxMatlabOutputWriter::creator() { return new HxMatlabOutputWriter(); }
HxMatlabOutputWriter HxMatlabOutputWriter::nullObject() { return HxMatlabOutputWriter(); }

const std::string& HxMatlabOutputWriter::formatDescriptor() const { return m_theFormatDescriptor; }
const std::string& HxMatlabOutputWriter::fileExtension() const { return m_theFileExtension; }

void HxMatlabOutputWriter::openFile(const std::string& fileName, std::ofstream& stream) {
  openOutputFile(fileName, stream, false);
}

void HxMatlabOutputWriter::initialize(const HxSystemDataVector&, std::ostream&) {}
void HxMatlabOutputWriter::finalize(const HxSystemDataVector&, std::ostream&) {}

void HxMatlabOutputWriter::writeComponentOpening(const HxBaseSystemDataComponent& component,
                                                 std::ostream& stream) const {
  switch (component.type()) {
    case 0:
      writeText(stream, "Description=[\n", 14);
      break;
    case 1:
      writeText(stream, "Data=[\n", 7);
      break;
    default:
      break;
  }
}

void HxMatlabOutputWriter::writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream& stream) const {
  const HxWriterRow::Fields fields(component, scratch_);
  const std::size_t n = fields.size();
  const unsigned int type = component.type();
  if (type != 0 && type != 1) return;
  const bool labels = type == 0;

  char* const row = HxWriterRow::prepare(row_, fields, labels ? 3 : 1);
  char* out = row;
  const HxElementText* block = fields.block();
  if (!labels && block != nullptr && n != 0) {
    // A data row is the text block with every separator made a tab and the last one the ";"
    // before the line end.
    const std::size_t size = block->blockSize();
    out = HxWriterRow::put(out, std::string_view(block->chars, size));
    for (std::size_t i = 1; i < n; ++i) row[block->offsets[i] - 1] = '\t';
    row[size - 1] = ';';
    *out++ = '\n';
    HxWriterRow::write(stream, row, static_cast<std::size_t>(out - row));
    return;
  }

  // Every field but the last: quoted labels or bare values, each followed by a tab.
  if (n != 1) {
    for (std::size_t i = 0; i + 1 < n; ++i) {
      if (labels) *out++ = '\'';
      out = HxWriterRow::put(out, fields[i]);
      if (labels) *out++ = '\'';
      *out++ = '\t';
    }
  }
  // The last field ends the line: the label row has no semicolon, each data row has one.
  if (n > 0) {
    if (labels) {
      *out++ = '\'';
      out = HxWriterRow::put(out, fields[n - 1]);
      out = HxWriterRow::put(out, "'\n");
    } else {
      out = HxWriterRow::put(out, fields[n - 1]);
      out = HxWriterRow::put(out, ";\n");
    }
  }
  HxWriterRow::write(stream, row, static_cast<std::size_t>(out - row));
}

void HxMatlabOutputWriter::writeComponentClosing(const HxBaseSystemDataComponent&, std::ostream& stream) const {
  writeText(stream, "];\n", 3);
}
