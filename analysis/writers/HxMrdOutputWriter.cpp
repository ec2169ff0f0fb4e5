#include "analysis/writers/HxMrdOutputWriter.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/writers/HxWriterRow.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxNumberText.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

/// The text of a value read back as a double, as strtod reads it in the C locale.
double textToDouble(const std::string& text) {
  double value = 0.0;
  const char* begin = text.c_str();
  const char* end = begin + text.size();
  // from_chars is strtod's grammar in the C locale (without leading blanks or hex), and is
  // independent of the process locale; anything it leaves is handed to strtod itself.
  const std::from_chars_result result = std::from_chars(begin, end, value);
  if (result.ec == std::errc() && result.ptr == end) return value;
  return std::strtod(begin, nullptr);
}

/// The float that the text of `value` reads back to, narrowed: every value but NaN reads back
/// exactly (its text is the shortest that does), and every NaN is written "nan".
float narrowAsText(double value) {
  static const float nanAsText = static_cast<float>(textToDouble("nan"));
  return std::isnan(value) ? nanAsText : static_cast<float>(value);
}

/// Writes the float's IEEE-754 bytes at `out`, most significant first; returns the end.
char* putBigEndian(char* out, float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  bits = __builtin_bswap32(bits);
  std::memcpy(out, &bits, sizeof bits);
  return out + 4;
}

/// `narrowAsText` of `count` values, each put by `putBigEndian` from `out` on; returns the end. A
/// loop without branches, which the compiler turns into vector code.
char* putBigEndian(char* out, const double* values, std::size_t count) {
  const float nan = narrowAsText(std::numeric_limits<double>::quiet_NaN());
  for (std::size_t i = 0; i < count; ++i) {
    const double value = values[i];
    putBigEndian(out + 4 * i, value != value ? nan : static_cast<float>(value));
  }
  return out + 4 * count;
}
}  // namespace

HX_OUTPUT_WRITER_DEFINITIONS(HxMrdOutputWriter, HxSimAnalysis::HxMrdOutputWriterToken, "MRD", ".mrd", true)

void HxMrdOutputWriter::initialize(const HxSystemDataVector&, std::ostream& stream) {
  char blankHeader[kHeaderTextWidth + 1];
  std::memset(blankHeader, ' ', kHeaderTextWidth);
  blankHeader[kHeaderTextWidth] = '\n';
  stream.write(blankHeader, sizeof blankHeader);
  sampleCount_ = 0;
}

void HxMrdOutputWriter::finalize(const HxSystemDataVector&, std::ostream& stream) {
  // The header text, formatted as the stream's default formatting of the classic locale
  // would: unsigned decimals and the float as a double with six significant digits ("1000").
  const HxU32 total = sampleCount_ * channelCount_;  // wraps in 32 bits, as the file format has it
  char number[HxDoubleTextCapacity];
  std::string header;
  header.append(number, std::to_chars(number, number + sizeof number, total).ptr);
  header += '\t';
  header.append(number, std::to_chars(number, number + sizeof number, channelCount_).ptr);
  header += '\t';
  header.append(number, std::to_chars(number, number + sizeof number, sampleCount_).ptr);
  header += '\t';
  header.append(number, std::to_chars(number, number + sizeof number, static_cast<double>(fourthHeaderValue_),
                                      std::chars_format::general, 6)
                            .ptr);
  // At most three 10-digit counts, three tabs and a short real: within the 80 columns.
  if (header.size() > kHeaderTextWidth) header.resize(kHeaderTextWidth);

  // Overwrite the start of the blank header, then return to where the samples ended.
  const std::ostream::pos_type position = stream.tellp();
  stream.seekp(0);
  stream.write(header.data(), static_cast<std::streamsize>(header.size()));
  stream.seekp(position);
}

void HxMrdOutputWriter::writeComponentOpening(const HxBaseSystemDataComponent&, std::ostream&) const {}
void HxMrdOutputWriter::writeComponentClosing(const HxBaseSystemDataComponent&, std::ostream&) const {}

void HxMrdOutputWriter::writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream& stream) const {
  const unsigned int type = component.type();

  // A sample whose component gives its reals is narrowed without going through its text.
  const HxElementValues* values = type == HxSystemDataComponentKind::Record ? component.elementValues() : nullptr;
  if (values != nullptr) {
    HxWriterRow::Row row(stream, bytes_, 4 * values->count);
    row.finish(putBigEndian(row.begin(), values->values, values->count));
    ++sampleCount_;
    return;
  }

  const HxWriterRow::Fields fields(component, scratch_);
  const std::size_t n = fields.size();
  char* out = nullptr;
  if (type == HxSystemDataComponentKind::Capture) {
    // Label line: each label with its blanks made "_", followed by "  -", separated by two
    // blanks, and closed by three line ends.
    channelCount_ = static_cast<HxU32>(n);
    out = HxWriterRow::prepare(bytes_, fields, 5);
    for (std::size_t i = 0; i < n; ++i) {
      if (i != 0) out = HxWriterRow::put(out, "  ");
      const std::string_view label = fields[i];
      for (const char c : label) *out++ = c == ' ' ? '_' : c;
      out = HxWriterRow::put(out, "  -");
    }
    out = HxWriterRow::put(out, "\n\n\n");
  } else if (type == HxSystemDataComponentKind::Record) {
    if (bytes_.size() < 4 * n) bytes_.resize(4 * n);
    out = bytes_.data();
    for (std::size_t i = 0; i < n; ++i) {
      const std::string_view text = fields[i];
      number_.assign(text.data(), text.size());
      out = putBigEndian(out, static_cast<float>(textToDouble(number_)));
    }
  }
  if (out != nullptr && out != bytes_.data()) {
    HxWriterRow::write(stream, bytes_.data(), static_cast<std::size_t>(out - bytes_.data()));
  }
  if (type != HxSystemDataComponentKind::Capture) ++sampleCount_;
}
