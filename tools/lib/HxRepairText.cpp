// Repairing the text files of a recording: each format's layout, taken from its writer, and the
// repair they all share, which reads a file in pieces at its start and its end.

#include "tools/lib/HxRepairText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <limits>
#include <sstream>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/capture/HxSystemDataVector.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "analysis/writers/HxXmlOutputWriter.h"
#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

constexpr std::uint64_t kNotFound = std::numeric_limits<std::uint64_t>::max();
// Bytes read at a time when a file is searched or counted.
constexpr std::uint64_t kPiece = 1 << 20;

// A recording of `capture` with one sample, written by a `Writer` into memory, piece by piece.
struct Rendering {
  std::string head, labelRow, labelClosing, opening, sample, trailer;
};

template <class Writer>
Rendering render(const HxSystemDataCapture& capture) {
  HxSystemDataStorage storage;
  capture.allocateStorage(storage);
  const HxSystemDataVector data;
  Writer writer;
  std::ostringstream out;
  std::size_t done = 0;
  auto piece = [&out, &done] {
    std::string text = out.str().substr(done);
    done += text.size();
    return text;
  };
  Rendering rendering;
  writer.initialize(data, out);
  writer.writeComponentOpening(capture, out);
  rendering.head = piece();
  writer.writeDataComponent(capture, out);
  rendering.labelRow = piece();
  writer.writeComponentClosing(capture, out);
  rendering.labelClosing = piece();
  writer.writeComponentOpening(storage, out);
  rendering.opening = piece();
  writer.writeDataComponent(storage, out);
  rendering.sample = piece();
  writer.writeComponentClosing(storage, out);
  writer.finalize(data, out);
  rendering.trailer = piece();
  return rendering;
}

// `text` from its last line break on; empty without one.
std::string lastLine(const std::string& text) {
  const std::size_t at = text.rfind('\n');
  return at == std::string::npos ? std::string() : text.substr(at);
}

// The layout of a `Writer`'s files. Two recordings of different captures (one empty, one with a
// label and a quantity) share only what every recording begins with; the label block, a sample
// and the closing text end as the writer ends them for any capture.
template <class Writer>
HxTextLayout makeLayout(const char* sample) {
  HxSystemDataCapture empty, other;
  other.setLabel("x");
  other.addManipulatorDataCaptureType(0, HxSimAnalysis::HxManipulatorPowerDataCaptureTypeToken);
  const Rendering a = render<Writer>(empty), b = render<Writer>(other);
  const std::string beginA = a.head + a.labelRow, beginB = b.head + b.labelRow;
  HxTextLayout layout;
  layout.format = Writer().formatDescriptor();
  layout.start = beginA.substr(
      0, static_cast<std::size_t>(std::mismatch(beginA.begin(), beginA.end(), beginB.begin(), beginB.end()).first -
                                  beginA.begin()));
  layout.labelEnd = lastLine(a.labelRow) + a.labelClosing;
  layout.opening = a.opening;
  layout.sampleEnd = lastLine(a.sample);
  layout.trailer = a.trailer;
  layout.sample = sample;
  // The empty capture's label row holds the two labels every recording starts with; its sample
  // holds two zeros.
  const std::string row = a.labelRow + a.labelClosing, first = "Time", second = "Point Path Index";
  const std::size_t firstAt = row.find(first), secondAt = row.find(second, firstAt + first.size());
  if (firstAt != std::string::npos && secondAt != std::string::npos) {
    layout.head = a.head;
    layout.labelOpen = row.substr(0, firstAt);
    layout.labelSeparator = row.substr(firstAt + first.size(), secondAt - firstAt - first.size());
    layout.labelClose = row.substr(secondAt + second.size());
  }
  for (const char c : a.sample) {
    if (c != '0' && layout.valueSeparators.find(c) == std::string::npos) layout.valueSeparators += c;
  }
  return layout;
}

// A file read in pieces at any offset. The first read error is kept and ends every later read.
class FileReader {
 public:
  enum class Open { Ok, Missing, Failed };

  FileReader() = default;
  ~FileReader() {
    if (fd_ >= 0) ::close(fd_);
  }
  FileReader(const FileReader&) = delete;
  FileReader& operator=(const FileReader&) = delete;

  Open open(const std::string& path) {
    fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd_ < 0) {
      error_ = std::strerror(errno);
      return errno == ENOENT ? Open::Missing : Open::Failed;
    }
    struct stat status {};
    if (::fstat(fd_, &status) != 0) {
      error_ = std::strerror(errno);
      return Open::Failed;
    }
    if (!S_ISREG(status.st_mode)) {
      error_ = "not a regular file";
      return Open::Failed;
    }
    size_ = static_cast<std::uint64_t>(status.st_size);
    return Open::Ok;
  }

  std::uint64_t size() const { return size_; }
  bool failed() const { return !error_.empty(); }
  const std::string& error() const { return error_; }

  // Bytes [from, from + count), fewer at the end of the file.
  std::string read(std::uint64_t from, std::uint64_t count) {
    std::string bytes;
    if (failed() || from >= size_) return bytes;
    bytes.resize(static_cast<std::size_t>(std::min(count, size_ - from)));
    std::size_t done = 0;
    while (done < bytes.size()) {
      const ssize_t got = ::pread(fd_, &bytes[done], bytes.size() - done, static_cast<off_t>(from + done));
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) {
        error_ = got < 0 ? std::strerror(errno) : "the file became shorter while it was read";
        bytes.resize(done);
        break;
      }
      done += static_cast<std::size_t>(got);
    }
    return bytes;
  }

  // The end of the first `text` that starts at or after `from`, or kNotFound.
  std::uint64_t findFirstEnd(const std::string& text, std::uint64_t from) {
    for (std::uint64_t at = from; at < size_ && !failed(); at += kPiece) {
      const std::string piece = read(at, kPiece + text.size() - 1);
      const std::size_t found = piece.find(text);
      if (found != std::string::npos) return at + found + text.size();
    }
    return kNotFound;
  }

  // The end of the last `text` that lies wholly in [from, to), or kNotFound. Reads backwards.
  std::uint64_t findLastEnd(const std::string& text, std::uint64_t from, std::uint64_t to) {
    for (std::uint64_t end = to; end > from && !failed();) {
      const std::uint64_t begin = end - from > kPiece ? end - kPiece : from;
      const std::string piece = read(begin, std::min(to, end + text.size() - 1) - begin);
      const std::size_t found = piece.rfind(text);
      if (found != std::string::npos) return begin + found + text.size();
      end = begin;
    }
    return kNotFound;
  }

  // How many times `text` occurs in [from, to).
  std::uint64_t count(const std::string& text, std::uint64_t from, std::uint64_t to) {
    std::uint64_t count = 0;
    for (std::uint64_t at = from; at < to && !failed(); at += kPiece) {
      // The occurrences that start in this piece.
      const std::string piece = read(at, std::min(to, at + kPiece + text.size() - 1) - at);
      for (std::size_t found = piece.find(text); found != std::string::npos && found < kPiece;
           found = piece.find(text, found + text.size())) {
        ++count;
      }
    }
    return count;
  }

 private:
  int fd_ = -1;
  std::uint64_t size_ = 0;
  std::string error_;
};

// The one repair: find the label block from the start and the last whole sample from the end,
// count the samples, and rewrite the file as the writer would have finished it.
HxFileRepair repairTextFile(const HxTextLayout& layout, const std::string& path, bool inspectOnly) {
  using Outcome = HxFileRepair::Outcome;
  HxFileRepair result;
  result.path = path;
  result.format = layout.format;
  auto failWith = [&result](const std::string& why) {
    result.outcome = Outcome::Failed;
    result.action = why;
    return result;
  };

  const std::string readError = "cannot be read: ";
  FileReader file;
  switch (file.open(path)) {
    case FileReader::Open::Missing:
      result.outcome = Outcome::Missing;
      result.action = "no such file";
      return result;
    case FileReader::Open::Failed:
      return failWith(readError + file.error());
    case FileReader::Open::Ok:
      break;
  }
  const std::uint64_t size = file.size();
  if (size == 0) return failWith("is empty; nothing to keep");

  // The label block: the writer's beginning, then up to the first end of a label block.
  const std::string begin = file.read(0, layout.start.size());
  if (file.failed()) return failWith(readError + file.error());
  if (layout.start.compare(0, begin.size(), begin) != 0) {
    return failWith("does not begin as a recording's " + layout.format + " file does; left unchanged");
  }
  const std::uint64_t labelsEnd = file.findFirstEnd(layout.labelEnd, layout.start.size());
  if (file.failed()) return failWith(readError + file.error());
  if (labelsEnd == kNotFound) return failWith("was cut inside its labels; nothing to keep");

  // Between the labels and the first sample: the writer's opening, or a start of it.
  const std::uint64_t dataBegin = labelsEnd + layout.opening.size();
  const std::string opening = file.read(labelsEnd, layout.opening.size());
  if (file.failed()) return failWith(readError + file.error());
  if (layout.opening.compare(0, opening.size(), opening) != 0) {
    return failWith("holds something else than samples after its labels; left unchanged");
  }

  // What is kept of the file and what follows it; how much of the closing text it ends with.
  std::uint64_t keep = labelsEnd;
  std::string tail = layout.opening + layout.trailer;
  constexpr std::size_t kNoClosing = std::numeric_limits<std::size_t>::max();
  std::size_t closing = size == labelsEnd ? 0 : kNoClosing;
  if (size >= dataBegin) {
    // A file that ends with a whole sample followed by all or a start of the closing text; the
    // longest such start is the closing text (a sample never begins as it does).
    tail = layout.trailer;
    auto sampleEndsAt = [&](std::uint64_t at) {
      return at == dataBegin || (at >= dataBegin + layout.sampleEnd.size() &&
                                 file.read(at - layout.sampleEnd.size(), layout.sampleEnd.size()) == layout.sampleEnd);
    };
    const std::size_t most = static_cast<std::size_t>(std::min<std::uint64_t>(layout.trailer.size(), size - dataBegin));
    const std::string last = file.read(size - most, most);
    closing = kNoClosing;
    for (std::size_t m = most + 1; m-- > 0 && !file.failed();) {
      if (last.compare(most - m, m, layout.trailer, 0, m) == 0 && sampleEndsAt(size - m)) {
        closing = m;
        break;
      }
    }
    if (closing != kNoClosing) {
      keep = size - closing;
    } else {
      // The file ends inside a sample: back to the end of the last whole one.
      keep = file.findLastEnd(layout.sampleEnd, dataBegin, size);
      if (keep == kNotFound) keep = dataBegin;
    }
    result.samples = file.count(layout.sampleEnd, dataBegin, keep);
    if (file.failed()) return failWith(readError + file.error());
  }

  if (size >= dataBegin && closing == layout.trailer.size()) {
    result.outcome = Outcome::Finished;
    result.action = "finished, left unchanged";
    return result;
  }
  // What is done, in the user's words.
  std::string action = inspectOnly ? "would be " : "";
  if (closing == kNoClosing) {
    action += keep <= dataBegin ? "cut back to its labels" : "cut back to its last whole " + layout.sample;
    if (!tail.empty()) action += " and given its closing text";
  } else {
    action += closing == 0 ? "given its closing text" : "given the rest of its closing text";
  }
  result.action = action;
  if (inspectOnly) {
    result.outcome = Outcome::NeedsRepair;
    return result;
  }
  std::string error;
  if (!hxRewriteFile(path, "", 0, keep, tail, error)) return failWith("cannot be repaired: " + error);
  result.outcome = Outcome::Repaired;
  return result;
}

// The layout of `Writer`'s files, worked out once; `unit` names what one sample is in them.
template <class Writer>
const HxTextLayout& layoutOf(const char* unit) {
  static const HxTextLayout layout = makeLayout<Writer>(unit);
  return layout;
}
}  // namespace

const HxTextLayout* hxTextLayout(const std::string& extension) {
  if (extension == HxTextOutputWriter().fileExtension()) return &layoutOf<HxTextOutputWriter>("row");
  if (extension == HxXmlOutputWriter().fileExtension()) return &layoutOf<HxXmlOutputWriter>("sample");
  if (extension == HxMatlabOutputWriter().fileExtension()) return &layoutOf<HxMatlabOutputWriter>("row");
  if (extension == HxMathematicaOutputWriter().fileExtension()) return &layoutOf<HxMathematicaOutputWriter>("row");
  return nullptr;
}

HxFileRepair hxRepairCsvFile(const std::string& path, bool inspectOnly) {
  return repairTextFile(layoutOf<HxTextOutputWriter>("row"), path, inspectOnly);
}

HxFileRepair hxRepairXmlFile(const std::string& path, bool inspectOnly) {
  return repairTextFile(layoutOf<HxXmlOutputWriter>("sample"), path, inspectOnly);
}

HxFileRepair hxRepairMatlabFile(const std::string& path, bool inspectOnly) {
  return repairTextFile(layoutOf<HxMatlabOutputWriter>("row"), path, inspectOnly);
}

HxFileRepair hxRepairMathematicaFile(const std::string& path, bool inspectOnly) {
  return repairTextFile(layoutOf<HxMathematicaOutputWriter>("row"), path, inspectOnly);
}
