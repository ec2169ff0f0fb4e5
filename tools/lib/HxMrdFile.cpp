#include "tools/lib/HxMrdFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>

#include "framework/HxNumberText.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

constexpr std::size_t kHeaderWidth = HxMrdHeader::kWidth;
constexpr std::size_t kHeaderLine = kHeaderWidth + 1;
const char* const kLabelTail = "  -";
const char* const kLabelSeparator = "  -  ";
/// Bytes read at a time, for the labels and the samples.
constexpr std::size_t kChunk = 1 << 16;

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

/// "1 byte", "12 bytes".
std::string counted(std::uint64_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

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

/// A byte that no label line holds: blanks were replaced when the file was written, and a label
/// holds no control character but the tab.
bool foreignToLabels(char c) {
  const auto u = static_cast<unsigned char>(c);
  return u == 0x7F || (u < 0x20 && u != '\t');
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
  for (const std::string& label : labels) {
    for (const char c : label) {
      if (c == ' ' || foreignToLabels(c)) return false;
    }
  }
  return true;
}

/// Decodes big-endian IEEE-754 singles.
void decodeValues(const char* data, std::size_t count, float* values) {
  for (std::size_t i = 0; i < count; ++i) {
    const auto* b = reinterpret_cast<const unsigned char*>(data + 4 * i);
    const std::uint32_t bits =
        (std::uint32_t{b[0]} << 24) | (std::uint32_t{b[1]} << 16) | (std::uint32_t{b[2]} << 8) | std::uint32_t{b[3]};
    std::memcpy(&values[i], &bits, sizeof bits);
  }
}

std::size_t trailingEmptyLabels(const std::vector<std::string>& labels) {
  std::size_t count = 0;
  for (auto it = labels.rbegin(); it != labels.rend() && it->empty(); ++it) ++count;
  return count;
}

/// One possible count of values per sample, and whether every whole sample read so far starts as
/// a sample does: a finite time that never decreases, then a whole, non-negative path-point index.
struct HxLayoutCandidate {
  std::uint64_t valuesPerSample = 0;
  /// Values of the whole samples: where the check stops.
  std::uint64_t end = 0;
  /// Next value to check: a time (`atTime`) or a path-point index.
  std::uint64_t next = 0;
  bool atTime = true;
  float lastTime = -INFINITY;
  bool keepsLayout = true;

  /// Checks the values [first, first + count) that fall on a time or an index.
  void check(const float* values, std::uint64_t first, std::uint64_t count) {
    const std::uint64_t stop = std::min(end, first + count);
    while (keepsLayout && next < stop) {
      const float value = values[next - first];
      if (atTime) {
        keepsLayout = std::isfinite(value) && value >= lastTime;
        lastTime = value;
        next += 1;
      } else {
        keepsLayout = std::isfinite(value) && value >= 0.0f && std::floor(value) == value;
        next += valuesPerSample - 1;
      }
      atTime = !atTime;
    }
  }
};
}  // namespace

HxMrdReader::~HxMrdReader() {
  if (fd_ >= 0) ::close(fd_);
}

HxBoolean HxMrdReader::open(const std::string& path, const HxMrdLoadOptions& options, std::string& error) {
  path_ = path;
  // Only a regular file is read: a directory cannot be, a device may never end, and opening a FIFO
  // for reading waits for a writer. The type is checked before opening, and again on what was
  // opened (without waiting), in case the path changed in between.
  auto notRegular = [&error](const struct stat& status) {
    if (S_ISREG(status.st_mode)) return false;
    error = S_ISDIR(status.st_mode) ? "is a directory" : "is not a regular file";
    return true;
  };
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    error = "cannot open " + quoted(path);
    return false;
  }
  if (notRegular(status)) return false;
  fd_ = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd_ < 0 || ::fstat(fd_, &status) != 0) {
    error = "cannot open " + quoted(path);
    return false;
  }
  if (notRegular(status)) return false;
  size_ = static_cast<std::uint64_t>(status.st_size);
  return start(options, error);
}

HxBoolean HxMrdReader::openBytes(const std::string& bytes, const HxMrdLoadOptions& options, std::string& error) {
  bytes_ = &bytes;
  size_ = bytes.size();
  return start(options, error);
}

HxBoolean HxMrdReader::readAt(std::uint64_t offset, char* data, std::size_t size, std::string& error) {
  if (bytes_ != nullptr) {
    if (offset + size > bytes_->size()) {
      error = "the data became shorter while it was read";
      return false;
    }
    std::memcpy(data, bytes_->data() + offset, size);
    return true;
  }
  while (size > 0) {
    const ssize_t got = ::pread(fd_, data, size, static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      error = "cannot read " + quoted(path_) + ": " + std::strerror(errno);
      return false;
    }
    if (got == 0) {
      error = "the file became shorter while it was read";
      return false;
    }
    data += got;
    size -= static_cast<std::size_t>(got);
    offset += static_cast<std::uint64_t>(got);
  }
  return true;
}

HxBoolean HxMrdReader::start(const HxMrdLoadOptions& options, std::string& error) {
  // Header line: 80 characters and a line end.
  if (size_ < kHeaderLine) {
    error = "file too short for an MRD header (" + std::to_string(size_) + " bytes, at least 81 needed)";
    return false;
  }
  char line[kHeaderLine];
  if (!readAt(0, line, kHeaderLine, error)) return false;
  if (line[kHeaderWidth] != '\n') {
    error = "no line end at offset 80: not an MRD header";
    return false;
  }
  const std::string headerText(line, kHeaderWidth);
  header_.blank = headerText.find_first_not_of(' ') == std::string::npos;
  if (!header_.blank) {
    header_.text = headerText.substr(0, headerText.find_last_not_of(' ') + 1);
    if (!parseHeader(header_.text, header_)) {
      error = "header is neither blank nor four tab-separated numbers: " + quoted(header_.text);
      return false;
    }
  }
  return readLabels(error) && findLayout(options, error);
}

HxBoolean HxMrdReader::readLabels(std::string& error) {
  // The label line ends at the first three line ends in a row. Its bytes are kept only while they
  // can be labels: past a byte no label holds, the line is known to be malformed and is only
  // followed to its end, to tell a malformed line from a truncated one.
  std::string line;
  bool malformed = false;
  int lineEnds = 0;
  buffer_.resize(kChunk);
  for (std::uint64_t offset = kHeaderLine; offset < size_;) {
    const std::size_t size = static_cast<std::size_t>(std::min<std::uint64_t>(kChunk, size_ - offset));
    if (!readAt(offset, buffer_.data(), size, error)) return false;
    for (std::size_t i = 0; i < size; ++i) {
      const char c = buffer_[i];
      if (c == '\n') {
        if (++lineEnds < 3) continue;
        dataOffset_ = offset + i + 1;
        if (malformed || !parseLabels(line, labels_)) {
          labels_.clear();
          error = "malformed label line: expected labels joined by \"  -  \" and ending in \"  -\"";
          return false;
        }
        return true;
      }
      // One or two line ends inside the line are foreign to it.
      malformed = malformed || lineEnds != 0 || foreignToLabels(c);
      lineEnds = 0;
      if (!malformed) line += c;
    }
    offset += size;
  }
  error = "truncated label line: no end of the labels (three line ends) after offset 81";
  return false;
}

HxBoolean HxMrdReader::findLayout(const HxMrdLoadOptions& options, std::string& error) {
  const HxMrdHeader& header = header_;
  const std::uint64_t dataBytes = size_ - dataOffset_;
  const std::uint64_t total = dataBytes / 4;
  const bool wholeValues = dataBytes % 4 == 0;
  const std::size_t labels = labels_.size();
  auto warnColumnless = [this, labels](HxU32 valuesPerSample) {
    if (valuesPerSample < labels) {
      warnings_.push_back("each sample holds " + std::to_string(valuesPerSample) + " values for " +
                          std::to_string(labels) + " labels; " + columnlessLabels(labels - valuesPerSample));
    }
  };
  const std::string blank = "header is blank (the recording was never finished); counts recovered from the file";

  HxU32 valuesPerSample = 0;
  if (options.valuesPerSample != 0) {
    // The caller knows best.
    valuesPerSample = options.valuesPerSample;
    if (header.blank) {
      warnings_.push_back(blank);
    } else if (header.channels != valuesPerSample) {
      warnings_.push_back("header gives " + std::to_string(header.channels) + " channels; using " +
                          std::to_string(valuesPerSample) + " values per sample as asked");
    }
    warnColumnless(valuesPerSample);
  } else if (!header.blank && wholeValues && std::uint64_t{header.channels} * header.samples == total &&
             header.channels != 0) {
    valuesPerSample = header.channels;
    finished_ = true;
  } else if (!header.blank && wholeValues && header.samples != 0 && total % header.samples == 0 && total != 0 &&
             total / header.samples <= std::numeric_limits<HxU32>::max()) {
    // A finished file whose channel count (one per label) exceeds what each sample holds:
    // columns were disabled.
    valuesPerSample = static_cast<HxU32>(total / header.samples);
    finished_ = true;
    warnings_.push_back("header gives " + std::to_string(header.channels) + " channels but each of the " +
                        std::to_string(header.samples) + " samples holds " + std::to_string(valuesPerSample) +
                        " values; " +
                        (valuesPerSample < labels ? columnlessLabels(labels - valuesPerSample) + " (columns disabled)"
                                                  : std::string("the extra columns have no label")));
  } else {
    if (header.blank) {
      warnings_.push_back(blank);
    } else {
      warnings_.push_back("header (" + std::to_string(header.channels) + " channels, " +
                          std::to_string(header.samples) + " samples) does not match the data (" +
                          std::to_string(total) + " values); counts recovered from the file");
    }
    valuesPerSample = recoverValuesPerSample(error);
    if (valuesPerSample == 0) return false;
    warnColumnless(valuesPerSample);
  }

  valuesPerSample_ = valuesPerSample;
  sampleCount_ = dataBytes / (std::uint64_t{4} * valuesPerSample);
  partialBytes_ = dataBytes - sampleCount_ * 4 * valuesPerSample;
  if (partialBytes_ != 0) {
    warnings_.push_back("the file was cut short: dropped " + counted(partialBytes_, "byte") +
                        " of a partial last sample");
  }

  // A finished header whose total disagrees with its own counts is reported, not trusted.
  if (!header.blank && header.totalValues != static_cast<HxU32>(header.channels * header.samples)) {
    finished_ = false;
    warnings_.push_back("header total " + std::to_string(header.totalValues) + " is not channels x samples (" +
                        std::to_string(header.channels) + " x " + std::to_string(header.samples) + ")");
  }
  if (!header.blank && header.samples != sampleCount_) {
    finished_ = false;
    warnings_.push_back("header gives " + std::to_string(header.samples) + " samples; the file holds " +
                        std::to_string(sampleCount_));
  }
  return true;
}

HxU32 HxMrdReader::recoverValuesPerSample(std::string& error) {
  const std::uint64_t dataBytes = size_ - dataOffset_;
  const std::uint64_t total = dataBytes / 4;
  const std::size_t labels = labels_.size();
  const std::size_t known = labels - trailingEmptyLabels(labels_);

  // Without a whole value any layout fits; keep one column per known label.
  if (total == 0) return static_cast<HxU32>(known > 0 ? known : (labels > 0 ? labels : 1));

  // Every count from 2 to the number of labels, and the header's channel count, checked against
  // every whole sample in one pass over the data.
  std::vector<HxLayoutCandidate> candidates;
  auto addCandidate = [&candidates, dataBytes](std::uint64_t valuesPerSample) {
    HxLayoutCandidate candidate;
    candidate.valuesPerSample = valuesPerSample;
    candidate.end = dataBytes / (4 * valuesPerSample) * valuesPerSample;
    candidates.push_back(candidate);
  };
  for (std::size_t v = 2; v <= labels; ++v) addCandidate(v);
  const HxU32 channels = header_.blank ? 0 : header_.channels;
  if (channels >= 2 && channels > labels) addCandidate(channels);
  std::uint64_t end = 0;
  for (const HxLayoutCandidate& candidate : candidates) end = std::max(end, candidate.end);
  std::vector<float> values(kChunk / 4);
  buffer_.resize(kChunk);
  for (std::uint64_t first = 0; first < end;) {
    const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(values.size(), end - first));
    if (!readAt(dataOffset_ + 4 * first, buffer_.data(), 4 * count, error)) return 0;
    decodeValues(buffer_.data(), count, values.data());
    bool anyLeft = false;
    for (HxLayoutCandidate& candidate : candidates) {
      candidate.check(values.data(), first, count);
      anyLeft = anyLeft || (candidate.keepsLayout && candidate.next < candidate.end);
    }
    if (!anyLeft) break;
    first += count;
  }
  auto fits = [&candidates](std::uint64_t valuesPerSample) {
    for (const HxLayoutCandidate& candidate : candidates) {
      if (candidate.valuesPerSample == valuesPerSample) return candidate.keepsLayout;
    }
    return false;
  };
  auto divides = [dataBytes](std::uint64_t valuesPerSample) { return dataBytes % (4 * valuesPerSample) == 0; };

  // The first sample's known layout: one value per label, less the disabled columns' empty
  // labels at the end, with a partial last sample if the recording was killed; else the one count
  // that divides the data.
  if (known >= 2 && fits(known)) return static_cast<HxU32>(known);
  std::vector<std::size_t> fitting;
  for (std::size_t v = 2; v <= labels; ++v) {
    if (divides(v) && fits(v)) fitting.push_back(v);
  }
  // None divides it: the file was cut short. The header's channel count, or the one count that
  // gives at least one whole sample, with the partial last sample dropped.
  if (fitting.empty()) {
    if (channels >= 2 && fits(channels)) return channels;
    for (std::size_t v = 2; v <= labels; ++v) {
      if (total >= v && fits(v)) fitting.push_back(v);
    }
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

std::size_t HxMrdReader::read(float* values, std::size_t capacity, std::string& error) {
  const std::uint64_t left = sampleCount_ * valuesPerSample_ - nextValue_;
  const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>({left, capacity, kChunk / 4}));
  if (count == 0) return 0;
  buffer_.resize(kChunk);
  if (!readAt(dataOffset_ + 4 * nextValue_, buffer_.data(), 4 * count, error)) return 0;
  decodeValues(buffer_.data(), count, values);
  nextValue_ += count;
  return count;
}

namespace {
/// Reads everything `reader` holds into `file`.
HxBoolean loadAll(HxMrdReader& reader, HxMrdFile& file, std::string& error) {
  file.header = reader.header();
  file.labels = reader.labels();
  file.warnings = reader.warnings();
  file.valuesPerSample = reader.valuesPerSample();
  file.sampleCount = static_cast<HxU32>(reader.sampleCount());
  file.values.resize(reader.sampleCount() * reader.valuesPerSample());
  for (std::size_t done = 0; done < file.values.size();) {
    const std::size_t got = reader.read(file.values.data() + done, file.values.size() - done, error);
    if (got == 0) return false;
    done += got;
  }
  return true;
}
}  // namespace

HxBoolean hxParseMrd(const std::string& bytes, const HxMrdLoadOptions& options, HxMrdFile& file, std::string& error) {
  file = HxMrdFile();
  HxMrdReader reader;
  return reader.openBytes(bytes, options, error) && loadAll(reader, file, error);
}

HxBoolean hxLoadMrdFile(const std::string& path, const HxMrdLoadOptions& options, HxMrdFile& file, std::string& error) {
  file = HxMrdFile();
  HxMrdReader reader;
  return reader.open(path, options, error) && loadAll(reader, file, error);
}
