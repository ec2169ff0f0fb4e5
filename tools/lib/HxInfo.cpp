// HxInfo: one streaming reader per format feeding the same statistics.

#include "tools/lib/HxInfo.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "analysis/capture/HxColumnDescription.h"
#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/hdf5/HxHdf5OutputWriter.h"
#include "analysis/hdf5/HxHdf5Reader.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlTokens.h"
#include "tools/lib/HxMrdFile.h"
#include "tools/lib/HxRepairText.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

namespace fs = std::filesystem;

// Bytes read at a time.
constexpr std::size_t kPiece = 1 << 20;

// The statistics of every column, fed one sample at a time. The columns are those of the first
// sample; labels and units are given to them before or after.
class Statistics {
 public:
  explicit Statistics(HxInfoData& data) : data_(data) {}

  // Takes one sample; false (with `error`) when it does not have the first sample's columns.
  bool add(const double* values, std::size_t count, std::string& error) {
    if (data_.samples == 0) {
      data_.columns.resize(count);
      sums_.assign(count, 0.0L);
    } else if (count != data_.columns.size()) {
      error = "sample " + std::to_string(data_.samples + 1) + " holds " + std::to_string(count) +
              " values, the first holds " + std::to_string(data_.columns.size());
      return false;
    }
    for (std::size_t c = 0; c < count; ++c) {
      const double value = values[c];
      if (std::isnan(value)) continue;
      HxInfoColumn& column = data_.columns[c];
      if (column.count == 0 || value < column.minimum) column.minimum = value;
      if (column.count == 0 || value > column.maximum) column.maximum = value;
      ++column.count;
      sums_[c] += value;
    }
    if (count > 0) {
      if (data_.samples == 0) data_.firstTime = values[0];
      data_.lastTime = values[0];
    }
    ++data_.samples;
    return true;
  }

  // Ends the statistics: the means, and the columns named by `labels` (or by the manifest when
  // it has as many columns as the data), as many as there are labels when there was no sample.
  void finish(const std::vector<std::string>& labels, const std::vector<std::string>& units,
              const HxInfoManifest* manifest) {
    if (data_.samples == 0) data_.columns.resize(labels.size());
    for (std::size_t c = 0; c < data_.columns.size(); ++c) {
      HxInfoColumn& column = data_.columns[c];
      if (column.count > 0) column.mean = static_cast<double>(sums_[c] / column.count);
      if (c < labels.size()) column.label = labels[c];
      if (c < units.size()) column.unit = units[c];
    }
    if (manifest == nullptr || manifest->columns.empty()) return;
    if (manifest->columns.size() != data_.columns.size()) {
      data_.warnings.push_back("the manifest '" + manifest->path + "' lists " +
                               std::to_string(manifest->columns.size()) + " columns, the file holds " +
                               std::to_string(data_.columns.size()) + ": its labels and units are not used");
      return;
    }
    for (std::size_t c = 0; c < data_.columns.size(); ++c) {
      data_.columns[c].label = manifest->columns[c].label;
      data_.columns[c].unit = manifest->columns[c].unit;
    }
  }

 private:
  HxInfoData& data_;
  std::vector<long double> sums_;
};

// A reason the repair gives for leaving a file alone, without saying so: hxinfo changes nothing.
std::string withoutRepairNote(std::string reason) {
  const std::string note = "; left unchanged";
  if (reason.size() > note.size() && reason.compare(reason.size() - note.size(), note.size(), note) == 0) {
    reason.resize(reason.size() - note.size());
  }
  return reason;
}

// `labels` without the empty ones at the end (those of disabled columns, which have no values).
void dropTrailingEmpty(std::vector<std::string>& labels) {
  while (!labels.empty() && labels.back().empty()) labels.pop_back();
}

// A file read in pieces, refusing what is not a regular file.
class InputFile {
 public:
  ~InputFile() {
    if (fd_ >= 0) ::close(fd_);
  }
  bool open(const std::string& path, std::string& error) {
    fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status {};
    if (fd_ < 0 || ::fstat(fd_, &status) != 0) {
      error = std::strerror(errno);
      return false;
    }
    if (!S_ISREG(status.st_mode)) {
      error = "is not a regular file";
      return false;
    }
    size_ = static_cast<std::uint64_t>(status.st_size);
    return true;
  }
  std::uint64_t size() const { return size_; }
  // Appends up to `count` bytes at `offset` to `out`; false (with `error`) on a read error.
  bool read(std::uint64_t offset, std::size_t count, std::string& out, std::string& error) {
    const std::size_t old = out.size();
    out.resize(old + count);
    std::size_t done = 0;
    while (done < count) {
      const ssize_t got = ::pread(fd_, &out[old + done], count - done, static_cast<off_t>(offset + done));
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) {
        error = std::strerror(errno);
        out.resize(old + done);
        return false;
      }
      if (got == 0) break;
      done += static_cast<std::size_t>(got);
    }
    out.resize(old + done);
    return true;
  }

 private:
  int fd_ = -1;
  std::uint64_t size_ = 0;
};

// The values of one sample of a text file: the runs of characters that are not separators.
// False when a run is not a number (the sample is not one: the closing text, say).
bool parseValues(const char* begin, const char* end, const bool* separator, std::vector<double>& values) {
  values.clear();
  for (const char* at = begin; at < end;) {
    if (separator[static_cast<unsigned char>(*at)]) {
      ++at;
      continue;
    }
    const char* runEnd = at;
    while (runEnd < end && !separator[static_cast<unsigned char>(*runEnd)]) ++runEnd;
    double value = 0.0;
    const char* from = at != runEnd && *at == '+' ? at + 1 : at;
    const std::from_chars_result result = std::from_chars(from, runEnd, value);
    if (result.ec != std::errc() || result.ptr != runEnd) {
      // Out of range still reads as a number: the writers print what they were given.
      if (result.ec != std::errc::result_out_of_range || result.ptr != runEnd) return false;
    }
    values.push_back(value);
    at = runEnd;
  }
  return !values.empty();
}

// The CSV, MATLAB and Mathematica files: the label row, then one sample per row.
bool readTextFile(const HxTextLayout& layout, const std::string& path, HxInfoData& data, const HxInfoManifest* manifest,
                  HxFileRepair (*repair)(const std::string&, bool), std::string& error) {
  InputFile file;
  std::string why;
  if (!file.open(path, why)) {
    error = "cannot be read: " + why;
    return false;
  }
  // The label block, read until its end.
  std::string block;
  std::size_t labelsEnd = std::string::npos;
  for (std::uint64_t at = 0; labelsEnd == std::string::npos && at < file.size(); at += kPiece) {
    if (!file.read(at, kPiece, block, why)) {
      error = "cannot be read: " + why;
      return false;
    }
    if (block.compare(0, std::min(block.size(), layout.start.size()), layout.start, 0,
                      std::min(block.size(), layout.start.size())) != 0) {
      error = "does not begin as a recording's " + layout.format + " file does";
      return false;
    }
    const std::size_t found = block.find(layout.labelEnd, layout.start.size());
    if (found != std::string::npos) labelsEnd = found + layout.labelEnd.size();
  }
  if (labelsEnd == std::string::npos) {
    error = "was cut inside its labels: it holds no sample";
    return false;
  }
  const std::size_t rowBegin = layout.head.size() + layout.labelOpen.size();
  if (block.compare(layout.head.size(), layout.labelOpen.size(), layout.labelOpen) != 0 ||
      labelsEnd < rowBegin + layout.labelClose.size() ||
      block.compare(labelsEnd - layout.labelClose.size(), layout.labelClose.size(), layout.labelClose) != 0) {
    error = "holds a label row that is not laid out as a " + layout.format + " file's";
    return false;
  }
  std::vector<std::string> labels;
  const std::size_t rowEnd = labelsEnd - layout.labelClose.size();
  for (std::size_t at = rowBegin;;) {
    const std::size_t next = block.find(layout.labelSeparator, at);
    if (next == std::string::npos || next >= rowEnd) {
      labels.push_back(block.substr(at, rowEnd - at));
      break;
    }
    labels.push_back(block.substr(at, next - at));
    at = next + layout.labelSeparator.size();
  }
  dropTrailingEmpty(labels);
  block.clear();
  block.shrink_to_fit();

  // The samples, row after row, up to the first row that is not one (the closing text) or the end.
  bool separator[256] = {};
  for (const char c : layout.valueSeparators) separator[static_cast<unsigned char>(c)] = true;
  Statistics statistics(data);
  const std::uint64_t dataBegin = labelsEnd + layout.opening.size();
  std::string buffer;
  if (!file.read(labelsEnd, layout.opening.size(), buffer, why)) {
    error = "cannot be read: " + why;
    return false;
  }
  bool stopped = buffer != layout.opening;
  buffer.clear();
  std::uint64_t bufferAt = dataBegin;  // the offset in the file of buffer[0]
  std::vector<double> values;
  for (std::uint64_t readAt = dataBegin; !stopped;) {
    std::size_t begin = 0;
    for (std::size_t end; (end = buffer.find(layout.sampleEnd, begin)) != std::string::npos;) {
      if (!parseValues(buffer.data() + begin, buffer.data() + end, separator, values) ||
          (data.samples > 0 && values.size() != data.columns.size())) {
        stopped = true;
        break;
      }
      if (!statistics.add(values.data(), values.size(), error)) return false;
      begin = end + layout.sampleEnd.size();
    }
    buffer.erase(0, begin);
    bufferAt += begin;
    if (stopped || readAt >= file.size()) break;
    if (!file.read(readAt, kPiece, buffer, why)) {
      error = "cannot be read: " + why;
      return false;
    }
    readAt += kPiece;
  }
  statistics.finish(labels, {}, manifest);

  // Finished: what follows the last sample is the closing text, whole. Otherwise the repair says
  // what it would do, and must find the same samples.
  std::string closing;
  if (bufferAt <= file.size() && file.size() - bufferAt == layout.trailer.size() &&
      file.read(bufferAt, layout.trailer.size(), closing, why) && closing == layout.trailer) {
    data.finished = true;
    return true;
  }
  const HxFileRepair inspected = repair(path, true);
  if (inspected.outcome == HxFileRepair::Outcome::Failed) {
    error = withoutRepairNote(inspected.action);
    return false;
  }
  if (inspected.outcome != HxFileRepair::Outcome::NeedsRepair || inspected.samples != data.samples) {
    error = "holds something other than a " + layout.sample + " after its " +
            (data.samples == 0 ? std::string("labels") : layout.sample + " " + std::to_string(data.samples));
    return false;
  }
  data.finished = false;
  data.repair = inspected.action;
  return true;
}
// The MRD file, through its streaming reader: labels as stored (blanks as "_").
bool readMrdFile(const std::string& path, HxInfoData& data, const HxInfoManifest* manifest, std::string& error) {
  HxMrdReader reader;
  if (!reader.open(path, HxMrdLoadOptions(), error)) return false;
  data.warnings = reader.warnings();
  const std::size_t perSample = reader.valuesPerSample();
  Statistics statistics(data);
  std::vector<float> values(perSample * std::max<std::size_t>(1, (1 << 16) / std::max<std::size_t>(1, perSample)));
  std::vector<double> sample(perSample);
  std::size_t filled = 0;
  error.clear();
  for (std::size_t got; perSample > 0 && (got = reader.read(values.data(), values.size(), error)) > 0;) {
    for (std::size_t i = 0; i < got; ++i) {
      sample[filled++] = values[i];
      if (filled == perSample) {
        if (!statistics.add(sample.data(), perSample, error)) return false;
        filled = 0;
      }
    }
  }
  if (!error.empty()) return false;
  std::vector<std::string> labels = reader.labels();
  if (data.samples == 0) labels.resize(std::min<std::size_t>(labels.size(), perSample));
  statistics.finish(labels, {}, manifest);
  data.finished = reader.finished();
  if (!data.finished) data.repair = hxRepairMrdFile(path, true).action;
  return true;
}

// The XML file, through the framework's pull reader: the capture configuration (which gives
// labels and units), then one element per sample whose groups hold the values and whose time
// and path-point index come last.
bool readXmlFile(const std::string& path, HxInfoData& data, const HxInfoManifest* manifest, std::string& error) {
  InputFile check;
  std::string why;
  if (!check.open(path, why)) {
    error = "cannot be read: " + why;
    return false;
  }
  // Parse errors are taken from the reader, nothing is printed.
  const Hx::ScopedPrintCapture quiet([](Hx::Print::PrintType, const std::string&, const std::string&) {});
  HxXmlReader reader;
  if (!reader.openFile(path)) {
    error = "cannot be read";
    return false;
  }
  std::vector<std::string> labels, units;
  Statistics statistics(data);
  std::vector<double> values, parsed;
  bool blank[256] = {};
  for (const char c : {' ', '\t', '\r', '\n'}) blank[static_cast<unsigned char>(c)] = true;
  bool readCapture = false;
  int kind = 0;
  while ((kind = reader.next()) != HxXmlReader::EndOfDocument && kind != HxXmlReader::Error) {
    if (kind != HxXmlReader::StartElement || reader.depth() != 1) continue;
    if (reader.name() == HxSimAnalysis::HxGeneralCaptureToken && !readCapture) {
      HxSystemDataCapture capture;
      if (!reader.readChild(capture)) {
        error = reader.hasError() ? reader.errorMessage() : "its capture configuration cannot be read";
        return false;
      }
      readCapture = true;
      for (const HxColumnDescription& column : hxDescribeColumns(capture)) {
        labels.push_back(column.label);
        units.push_back(column.unit);
      }
    } else if (reader.name() == HxSimAnalysis::HxGeneralStorageToken) {
      // Time and path-point index first, as in the other formats.
      values.assign(2, 0.0);
      enum { Other, Group, Time, Index } in = Other;
      bool whole = false;
      while ((kind = reader.next()) != HxXmlReader::EndOfDocument && kind != HxXmlReader::Error) {
        if (kind == HxXmlReader::EndElement && reader.depth() == 1) {
          whole = true;
          break;
        }
        if (kind == HxXmlReader::StartElement) {
          const HxToken& name = reader.name();
          in = name == HxXml::HxGroupToken                    ? Group
               : name == HxSimAnalysis::HxTimeToken           ? Time
               : name == HxSimAnalysis::HxPathPointIndexToken ? Index
                                                              : Other;
        } else if (kind == HxXmlReader::Text && in != Other) {
          const std::string& text = reader.text();
          if (!parseValues(text.data(), text.data() + text.size(), blank, parsed)) {
            error = "line " + std::to_string(reader.lineNumber()) + ": '" + text.substr(0, 40) + "' is not a number";
            return false;
          }
          if (in == Group) values.insert(values.end(), parsed.begin(), parsed.end());
          if (in == Time || in == Index) values[in == Time ? 0 : 1] = parsed.front();
        } else if (kind == HxXmlReader::EndElement) {
          in = Other;
        }
      }
      if (!whole) break;
      if (!statistics.add(values.data(), values.size(), error)) {
        error = "line " + std::to_string(reader.lineNumber()) + ": " + error;
        return false;
      }
    }
  }
  statistics.finish(labels, units, manifest);
  if (kind == HxXmlReader::EndOfDocument && !reader.hasError()) {
    data.finished = true;
    return true;
  }
  const HxFileRepair inspected = hxRepairXmlFile(path, true);
  if (inspected.outcome == HxFileRepair::Outcome::Failed) {
    error = withoutRepairNote(inspected.action);
    return false;
  }
  if (inspected.outcome != HxFileRepair::Outcome::NeedsRepair || inspected.samples != data.samples) {
    error = reader.hasError() ? reader.errorMessage() : "holds something other than samples";
    return false;
  }
  data.repair = inspected.action;
  return true;
}

// The HDF5 file, through its reader, a block of samples at a time: labels and units are the
// file's own. A file its writer did not close holds the chunks flushed before.
bool readHdf5File(const std::string& path, HxInfoData& data, const HxInfoManifest* manifest, std::string& error) {
  HxHdf5Reader reader;
  if (!reader.open(path, error)) return false;
  const std::size_t columns = reader.columns();
  const std::uint64_t perBlock =
      std::max<std::uint64_t>(1, kPiece / sizeof(double) / std::max<std::size_t>(1, columns));
  std::vector<double> block(static_cast<std::size_t>(perBlock) * columns);
  Statistics statistics(data);
  for (std::uint64_t first = 0; first < reader.samples(); first += perBlock) {
    const std::uint64_t count = std::min(perBlock, reader.samples() - first);
    if (!reader.read(first, count, block.data(), error)) return false;
    for (std::uint64_t row = 0; row < count; ++row) {
      if (!statistics.add(block.data() + row * columns, columns, error)) return false;
    }
  }
  std::vector<std::string> labels = reader.labels();
  if (labels.empty()) labels.resize(columns);
  statistics.finish(labels, reader.units(), manifest);
  data.finished = reader.finished();
  if (!data.finished) {
    data.repairable = false;
    data.repair = "its writer did not close it (it still writes, or was killed): it holds the samples flushed before";
  }
  return true;
}

}  // namespace

bool hxReadInfoData(const std::string& path, const HxInfoManifest* manifest, HxInfoData& data, std::string& error) {
  data = HxInfoData();
  data.path = path;
  const std::string extension = fs::path(path).extension().string();
  if (extension == ".mrd") {
    data.format = HxMrdOutputWriter().formatDescriptor();
    return readMrdFile(path, data, manifest, error);
  }
  if (extension == HxHdf5OutputWriter().fileExtension()) {
    data.format = HxHdf5OutputWriter().formatDescriptor();
    return readHdf5File(path, data, manifest, error);
  }
  const HxTextLayout* layout = hxTextLayout(extension);
  if (layout == nullptr) {
    error = "is not a recording's file (.csv, .xml, .mrd, .m, .nb, .h5) nor its manifest (.json)";
    return false;
  }
  data.format = layout->format;
  if (extension == ".xml") return readXmlFile(path, data, manifest, error);
  HxFileRepair (*repair)(const std::string&, bool) = extension == ".csv" ? hxRepairCsvFile
                                                     : extension == ".m" ? hxRepairMatlabFile
                                                                         : hxRepairMathematicaFile;
  return readTextFile(*layout, path, data, manifest, repair, error);
}
