#include "analysis/writers/HxXmlOutputWriter.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "analysis/capture/HxBaseSystemDataComponent.h"
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
}  // namespace

HX_OUTPUT_WRITER_DEFINITIONS(HxXmlOutputWriter, HxSimAnalysis::HxXmlOutputWriterToken, "XML", ".xml", false)

HxXmlOutputWriter::HxXmlOutputWriter(const HxXmlOutputWriter& other) : HxBaseOutputWriter(other) {}
HxXmlOutputWriter& HxXmlOutputWriter::operator=(const HxXmlOutputWriter& other) {
  HxBaseOutputWriter::operator=(other);
  return *this;
}
HxXmlOutputWriter::~HxXmlOutputWriter() { discardXmlWriter(); }
HxXmlOutputWriter HxXmlOutputWriter::nullObject() { return HxXmlOutputWriter(); }

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
  documentHasElement_ = false;
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
  const HxElementSource* source = component.elementSource();
  if (source != nullptr) {
    // The layout is described again only when the component cannot vouch that it is the one
    // described last.
    const std::uint64_t stamp = source->layoutStamp();
    if (stamp == 0 || stamp != describedStamp_) source->describeLayout(layoutAtHand_);
    describedStamp_ = stamp;
  }
  // The document's first element (which also closes the root's start tag) and components
  // without a layout are written through the framework.
  if (source == nullptr || layoutAtHand_.empty() || !documentHasElement_) {
    emptyVector_.appendElementToStream(xmlWriter_, component);
    documentHasElement_ = true;
    return;
  }

  // A component of a new layout makes a new template; one whose template did not hold, or
  // whose text does not fill it, is written through the framework.
  if (!templateKnown_ || layoutAtHand_ != layout_) {
    layout_ = layoutAtHand_;  // both keep their capacity
    templateKnown_ = true;
    templateUsable_ = buildTemplate(component, *source);
    return;
  }
  const HxElementText* text = templateUsable_ ? source->elementText() : nullptr;
  if (text == nullptr || text->count != slotElements_.size()) {
    emptyVector_.appendElementToStream(xmlWriter_, component);
    return;
  }
  HxWriterRow::Row row(documentStream_, row_, templateSize_ + text->blockSize() + HxWriterRow::kCopySlack);
  row.finish(fillTemplate(*text, row.begin()));
}

bool HxXmlOutputWriter::render(const HxBaseSystemDataComponent& component, std::string& text,
                               std::vector<HxXmlScalarSpan>* spans) const {
  // Into memory through the XML writer, keeping the document stream's state.
  const std::ios::iostate state = documentStream_.rdstate();
  render_.str(std::string());
  documentStream_.rdbuf(&render_);
  xmlWriter_->reportScalars(spans);
  emptyVector_.appendElementToStream(xmlWriter_, component);
  xmlWriter_->reportScalars(nullptr);
  const bool rendered = documentStream_.good();
  documentStream_.rdbuf(documentBuffer_);
  documentStream_.setstate(state);
  text = render_.str();
  return rendered;
}

bool HxXmlOutputWriter::buildTemplate(const HxBaseSystemDataComponent& component, const HxElementSource& source) const {
  // The component itself goes to the document as the framework writes it.
  const bool rendered = render(component, rendered_, nullptr);
  put(rendered_.data(), rendered_.size());
  const HxElementText* text = source.elementText();
  if (!rendered || text == nullptr) return false;

  // Its layout probe, written into memory, is the template; since the probe's elements all
  // differ, the text in each slot names the element that goes there.
  const std::unique_ptr<HxBaseSystemDataComponent> probe(source.newLayoutProbe());
  const HxElementText* probeText = probe ? probe->elementText() : nullptr;
  if (probeText == nullptr || !render(*probe, template_, &slots_)) return false;
  // The template is padded so that its pieces may be copied as whole kCopySlack bytes.
  templateSize_ = template_.size();
  template_.append(HxWriterRow::kCopySlack, '\0');
  const std::size_t count = slots_.size();
  if (count != probeText->count || count != text->count) return false;
  std::vector<std::pair<std::string_view, std::size_t>> elements(count);
  for (std::size_t i = 0; i < count; ++i) elements[i] = {probeText->element(i), i};
  const auto byText = [](const auto& a, const auto& b) { return a.first < b.first; };
  std::sort(elements.begin(), elements.end(), byText);
  constexpr std::size_t kTaken = static_cast<std::size_t>(-1);
  slotElements_.assign(count, 0);
  for (std::size_t k = 0; k < count; ++k) {
    const std::string_view slot(template_.data() + slots_[k].begin, slots_[k].end - slots_[k].begin);
    const auto found = std::lower_bound(elements.begin(), elements.end(), std::make_pair(slot, count), byText);
    if (found == elements.end() || found->first != slot || found->second == kTaken) return false;
    slotElements_[k] = found->second;
    found->second = kTaken;
  }

  // Room for the longest value texts, so that later samples do not allocate; and the template
  // filled with this component's texts must be what the framework wrote for it.
  // The texts of the elements are at most the block, separators included.
  const std::size_t longest = templateSize_ + count * (HxDoubleTextCapacity + 1) + HxWriterRow::kCopySlack;
  const std::size_t needed = templateSize_ + text->blockSize() + HxWriterRow::kCopySlack;
  if (row_.size() < needed || row_.size() < longest) row_.resize(needed > longest ? needed : longest);
  const char* const end = fillTemplate(*text, row_.data());
  return std::string_view(row_.data(), static_cast<std::size_t>(end - row_.data())) == rendered_;
}

char* HxXmlOutputWriter::fillTemplate(const HxElementText& text, char* out) const {
  const char* const source = template_.data();
  std::size_t done = 0;
  for (std::size_t k = 0; k < slots_.size(); ++k) {
    out = HxWriterRow::putPadded(out, std::string_view(source + done, slots_[k].begin - done));
    const std::string_view element = text.element(slotElements_[k]);
    out = text.padded ? HxWriterRow::putPadded(out, element) : HxWriterRow::put(out, element);
    done = slots_[k].end;
  }
  return HxWriterRow::put(out, std::string_view(source + done, templateSize_ - done));
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
