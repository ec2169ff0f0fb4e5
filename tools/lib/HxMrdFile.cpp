#include "tools/lib/HxMrdFile.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

#include "framework/HxNumberText.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

constexpr std::size_t kHeaderWidth = 80;
constexpr std::size_t kHeaderLine = kHeaderWidth + 1;
const char* const kLabelEnd = "\n\n\n";
const char* const kLabelTail = "  -";
const char* const kLabelSeparator = "  -  ";

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

/// "the last label has no column" or "the last N labels have no column".
std::string columnlessLabels(std::size_t count) {
  return count == 1 ? std::string("the last label has no column")
                    : "the last " + std::to_string(count) + " labels have no column";
}

/// Parses a non-blank header; false when it is not four tab-separated fields.
bool parseHeader(const std::string& text, HxMrdHeader& header) {
  std::vector<std::string> fields;
  std::size_t start = 0;
  for (;;) {
    const std::size_t tab = text.find('\t', start);
    fields.push_back(text.substr(start, tab == std::string::npos ? std::string::npos : tab - start));
    if (tab == std::string::npos) break;
    start = tab + 1;
  }
  if (fields.size() != 4) return false;
  return HxSTRING2UINT(fields[0], header.totalValues) && HxSTRING2UINT(fields[1], header.channels) &&
         HxSTRING2UINT(fields[2], header.samples) && HxSTRING2DOUBLE(fields[3], header.fourthValue);
}

/// Splits the label line (without its three line ends); false when it is malformed.
bool parseLabels(const std::string& line, std::vector<std::string>& labels) {
  const std::size_t tail = std::strlen(kLabelTail);
  if (line.size() < tail || line.compare(line.size() - tail, tail, kLabelTail) != 0) return false;
  const std::string body = line.substr(0, line.size() - tail);
  const std::size_t separator = std::strlen(kLabelSeparator);
  std::size_t start = 0;
  for (;;) {
    const std::size_t next = body.find(kLabelSeparator, start);
    labels.push_back(body.substr(start, next == std::string::npos ? std::string::npos : next - start));
    if (next == std::string::npos) break;
    start = next + separator;
  }
  // Blanks were replaced when the file was written, so a label holds none; nor any line end.
  for (const std::string& label : labels) {
    for (const char c : label) {
      const auto u = static_cast<unsigned char>(c);
      if (u == ' ' || u == 0x7F || (u < 0x20 && u != '\t')) return false;
    }
  }
  return true;
}

/// Decodes big-endian IEEE-754 singles.
void decodeValues(const char* data, std::size_t count, std::vector<float>& values) {
  values.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    const auto* b = reinterpret_cast<const unsigned char*>(data + 4 * i);
    const std::uint32_t bits =
        (std::uint32_t{b[0]} << 24) | (std::uint32_t{b[1]} << 16) | (std::uint32_t{b[2]} << 8) | std::uint32_t{b[3]};
    std::memcpy(&values[i], &bits, sizeof bits);
  }
}

/// Whether every sample of `valuesPerSample` values starts as a sample does: a finite time that
/// never decreases, then a whole, non-negative path-point index.
bool keepsSampleLayout(const std::vector<float>& values, std::size_t valuesPerSample) {
  if (valuesPerSample < 2 || values.size() % valuesPerSample != 0) return false;
  float lastTime = -INFINITY;
  for (std::size_t k = 0; k < values.size(); k += valuesPerSample) {
    const float time = values[k];
    const float index = values[k + 1];
    if (!std::isfinite(time) || time < lastTime) return false;
    if (!std::isfinite(index) || index < 0.0f || std::floor(index) != index) return false;
    lastTime = time;
  }
  return true;
}

std::size_t trailingEmptyLabels(const std::vector<std::string>& labels) {
  std::size_t count = 0;
  for (auto it = labels.rbegin(); it != labels.rend() && it->empty(); ++it) ++count;
  return count;
}

/// Values per sample for a header that is blank or contradicts the data (rule 4 of
/// hxParseMrd); 0 with `error` set when no single layout fits.
HxU32 recoverValuesPerSample(const HxMrdFile& file, std::string& error) {
  const std::size_t total = file.values.size();
  const std::size_t labels = file.labels.size();
  const std::size_t known = labels - trailingEmptyLabels(file.labels);

  // Without data any layout fits; keep one column per known label.
  if (total == 0) return static_cast<HxU32>(known > 0 ? known : (labels > 0 ? labels : 1));

  // The first sample's known layout: one value per label, less the disabled columns' empty
  // labels at the end.
  if (known >= 2 && keepsSampleLayout(file.values, known)) return static_cast<HxU32>(known);

  std::vector<std::size_t> fitting;
  for (std::size_t v = 2; v <= labels; ++v) {
    if (keepsSampleLayout(file.values, v)) fitting.push_back(v);
  }
  if (fitting.size() == 1) return static_cast<HxU32>(fitting.front());

  std::ostringstream message;
  if (fitting.empty()) {
    message << "the data (" << total << " values) fits no layout of 2 to " << labels
            << " values per sample starting with time and path-point index; give --channels N";
  } else {
    message << "the data (" << total << " values) fits several layouts (";
    for (std::size_t i = 0; i < fitting.size(); ++i) message << (i ? ", " : "") << fitting[i];
    message << " values per sample); give --channels N";
  }
  error = message.str();
  return 0;
}
}  // namespace

HxBoolean hxParseMrd(const std::string& bytes, const HxMrdLoadOptions& options, HxMrdFile& file, std::string& error) {
  file = HxMrdFile();

  // Header line: 80 characters and a line end.
  if (bytes.size() < kHeaderLine) {
    error = "file too short for an MRD header (" + std::to_string(bytes.size()) + " bytes, at least 81 needed)";
    return false;
  }
  if (bytes[kHeaderWidth] != '\n') {
    error = "no line end at offset 80: not an MRD header";
    return false;
  }
  const std::string headerText = bytes.substr(0, kHeaderWidth);
  file.header.blank = headerText.find_first_not_of(' ') == std::string::npos;
  if (!file.header.blank) {
    file.header.text = headerText.substr(0, headerText.find_last_not_of(' ') + 1);
    if (!parseHeader(file.header.text, file.header)) {
      error = "header is neither blank nor four tab-separated numbers: " + quoted(file.header.text);
      return false;
    }
  }

  // Label line, closed by three line ends.
  const std::size_t labelEnd = bytes.find(kLabelEnd, kHeaderLine);
  if (labelEnd == std::string::npos) {
    error = "truncated label line: no end of the labels (three line ends) after offset 81";
    return false;
  }
  if (!parseLabels(bytes.substr(kHeaderLine, labelEnd - kHeaderLine), file.labels)) {
    error = "malformed label line: expected labels joined by \"  -  \" and ending in \"  -\"";
    return false;
  }

  // Samples: whole big-endian 32-bit floats.
  const std::size_t dataStart = labelEnd + std::strlen(kLabelEnd);
  const std::size_t dataBytes = bytes.size() - dataStart;
  if (dataBytes % 4 != 0) {
    error = "data size (" + std::to_string(dataBytes) + " bytes) is not a whole number of 4-byte values";
    return false;
  }
  const std::size_t total = dataBytes / 4;
  decodeValues(bytes.data() + dataStart, total, file.values);

  const HxMrdHeader& header = file.header;
  const std::size_t labels = file.labels.size();
  HxU32 valuesPerSample = 0;
  if (options.valuesPerSample != 0) {
    // The caller knows best.
    valuesPerSample = options.valuesPerSample;
    if (total % valuesPerSample != 0) {
      error = "the data (" + std::to_string(total) + " values) is not a whole number of samples of " +
              std::to_string(valuesPerSample) + " values";
      return false;
    }
    if (header.blank) {
      file.warnings.push_back("header is blank (the recording was never finished); counts recovered from the file");
    } else if (header.channels != valuesPerSample) {
      file.warnings.push_back("header gives " + std::to_string(header.channels) + " channels; using " +
                              std::to_string(valuesPerSample) + " values per sample as asked");
    }
    if (valuesPerSample < labels) {
      file.warnings.push_back("each sample holds " + std::to_string(valuesPerSample) + " values for " +
                              std::to_string(labels) + " labels; " + columnlessLabels(labels - valuesPerSample));
    }
  } else if (!header.blank && std::uint64_t{header.channels} * header.samples == total && header.channels != 0) {
    valuesPerSample = header.channels;
  } else if (!header.blank && header.samples != 0 && total % header.samples == 0 && total != 0) {
    // A finished file whose channel count (one per label) exceeds what each sample holds:
    // columns were disabled.
    valuesPerSample = static_cast<HxU32>(total / header.samples);
    file.warnings.push_back(
        "header gives " + std::to_string(header.channels) + " channels but each of the " +
        std::to_string(header.samples) + " samples holds " + std::to_string(valuesPerSample) + " values; " +
        (valuesPerSample < labels ? columnlessLabels(labels - valuesPerSample) + " (columns disabled)"
                                  : std::string("the extra columns have no label")));
  } else {
    if (header.blank) {
      file.warnings.push_back("header is blank (the recording was never finished); counts recovered from the file");
    } else {
      file.warnings.push_back("header (" + std::to_string(header.channels) + " channels, " +
                              std::to_string(header.samples) + " samples) does not match the data (" +
                              std::to_string(total) + " values); counts recovered from the file");
    }
    valuesPerSample = recoverValuesPerSample(file, error);
    if (valuesPerSample == 0) return false;
    if (valuesPerSample < labels) {
      file.warnings.push_back("each sample holds " + std::to_string(valuesPerSample) + " values for " +
                              std::to_string(labels) + " labels; " + columnlessLabels(labels - valuesPerSample));
    }
  }

  file.valuesPerSample = valuesPerSample;
  file.sampleCount = static_cast<HxU32>(total / valuesPerSample);

  // A finished header whose total disagrees with its own counts is reported, not trusted.
  if (!header.blank && header.totalValues != static_cast<HxU32>(header.channels * header.samples)) {
    file.warnings.push_back("header total " + std::to_string(header.totalValues) + " is not channels x samples (" +
                            std::to_string(header.channels) + " x " + std::to_string(header.samples) + ")");
  }
  if (!header.blank && header.samples != file.sampleCount) {
    file.warnings.push_back("header gives " + std::to_string(header.samples) + " samples; the file holds " +
                            std::to_string(file.sampleCount));
  }
  return true;
}

HxBoolean hxLoadMrdFile(const std::string& path, const HxMrdLoadOptions& options, HxMrdFile& file, std::string& error) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) {
    error = "cannot open " + quoted(path);
    return false;
  }
  const std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  if (stream.bad()) {
    error = "cannot read " + quoted(path);
    return false;
  }
  return hxParseMrd(bytes, options, file, error);
}
