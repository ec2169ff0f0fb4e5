#include "analysis/writers/HxTextOutputWriter.h"

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/writers/HxWriterRow.h"
#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

HX_OUTPUT_WRITER_DEFINITIONS(HxTextOutputWriter, HxSimAnalysis::HxTextOutputWriterToken, "Comma-Delimited Text", ".csv",
                             false)

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
    const std::size_t size = block->blockSize();
    HxWriterRow::Row row(stream, row_, size + 1);
    char* out = row.begin();
    if (n != 0) out = HxWriterRow::put(out, std::string_view(block->chars, size - 1));
    *out++ = '\n';
    row.finish(out);
    return;
  }

  // Otherwise the line is built from the fields.
  HxWriterRow::Row row(stream, row_, fields, 1);
  char* out = row.begin();
  if (n != 1) {
    for (std::size_t i = 0; i + 1 < n; ++i) {
      out = HxWriterRow::put(out, fields[i]);
      *out++ = ',';
    }
  }
  if (n > 0) out = HxWriterRow::put(out, fields[n - 1]);
  *out++ = '\n';
  row.finish(out);
}
