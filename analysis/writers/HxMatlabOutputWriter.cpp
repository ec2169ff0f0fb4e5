#include "analysis/writers/HxMatlabOutputWriter.h"

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/writers/HxWriterRow.h"
#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

void writeText(std::ostream& stream, const char* text, std::streamsize size) { stream.write(text, size); }
}  // namespace

HX_OUTPUT_WRITER_DEFINITIONS(HxMatlabOutputWriter, HxSimAnalysis::HxMatlabOutputWriterToken, "MATLAB", ".m", false)

void HxMatlabOutputWriter::initialize(const HxSystemDataVector&, std::ostream&) {}
void HxMatlabOutputWriter::finalize(const HxSystemDataVector&, std::ostream&) {}

void HxMatlabOutputWriter::writeComponentOpening(const HxBaseSystemDataComponent& component,
                                                 std::ostream& stream) const {
  switch (component.type()) {
    case HxSystemDataComponentKind::Capture:
      writeText(stream, "Description=[\n", 14);
      break;
    case HxSystemDataComponentKind::Record:
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
  if (type != HxSystemDataComponentKind::Capture && type != HxSystemDataComponentKind::Record) return;
  const bool labels = type == HxSystemDataComponentKind::Capture;

  const HxElementText* block = fields.block();
  if (!labels && block != nullptr && n != 0) {
    // A data row is the text block with every separator made a tab and the last one the ";"
    // before the line end.
    const std::size_t size = block->blockSize();
    HxWriterRow::Row row(stream, row_, size + 1);
    char* const begin = row.begin();
    char* out = HxWriterRow::put(begin, std::string_view(block->chars, size));
    for (std::size_t i = 1; i < n; ++i) begin[block->offsets[i] - 1] = '\t';
    begin[size - 1] = ';';
    *out++ = '\n';
    row.finish(out);
    return;
  }

  HxWriterRow::Row row(stream, row_, fields, labels ? 3 : 1);
  char* out = row.begin();

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
  row.finish(out);
}

void HxMatlabOutputWriter::writeComponentClosing(const HxBaseSystemDataComponent&, std::ostream& stream) const {
  writeText(stream, "];\n", 3);
}
