#pragma once
/// \file
/// Row buffers and stream output shared by the writers (internal to analysis/writers).

#include <cstddef>
#include <cstring>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/writers/HxRecordingFileStream.h"
#include "framework/HxNumberText.h"

/// Row buffers and stream output shared by the writers.
namespace HxWriterRow {

/// Longest text of one sample value: a real (HxDOUBLE2STRING) or the path-point index.
constexpr std::size_t kValueTextCapacity = HxDoubleTextCapacity;

/// Largest piece handed to a stream in one call. libstdc++'s file buffer sends every write of
/// 1 KiB or more straight to the file, one system call each, past its buffer; smaller pieces
/// fill the buffer, so a recorder's 1 MiB buffers reach the file in a few large writes
/// instead of one per sample and writer.
constexpr std::size_t kStreamPiece = 1000;

/// Writes `size` bytes to `stream` in pieces of at most `kStreamPiece`, as `stream.write`
/// would write them at once (a failed stream takes nothing; a short write sets badbit).
inline void write(std::ostream& stream, const char* data, std::size_t size) {
  while (size > kStreamPiece) {
    stream.write(data, static_cast<std::streamsize>(kStreamPiece));
    data += kStreamPiece;
    size -= kStreamPiece;
  }
  stream.write(data, static_cast<std::streamsize>(size));
}

/// Writes `text` to `stream` as the overload above does.
inline void write(std::ostream& stream, const std::string& text) { write(stream, text.data(), text.size()); }

/// A component's string elements, read either from its text block (`elementText`, no copy) or,
/// for a component without one, from `getStringElements` into the writer's scratch vector.
class Fields {
 public:
  /// Reads `component`'s elements; `scratch` is used only when the component has no block.
  Fields(const HxBaseSystemDataComponent& component, std::vector<std::string>& scratch)
      : text_(component.elementText()), scratch_(scratch) {
    if (text_ == nullptr) component.getStringElements(scratch_);
  }

  /// The component's text block, or null when the fields come from `getStringElements`.
  const HxElementText* block() const { return text_; }
  /// Number of fields.
  std::size_t size() const { return text_ != nullptr ? text_->count : scratch_.size(); }
  /// Field `i` (below `size()`), valid while the component and the scratch vector are unchanged.
  std::string_view operator[](std::size_t i) const {
    if (text_ != nullptr) return text_->element(i);
    return std::string_view(scratch_[i]);
  }
  /// Total size of the fields' texts.
  std::size_t textSize() const {
    if (text_ != nullptr) return text_->blockSize() - text_->count;
    std::size_t total = 0;
    for (const std::string& field : scratch_) total += field.size();
    return total;
  }

 private:
  const HxElementText* text_;
  std::vector<std::string>& scratch_;
};

/// Size of a row of `fields` with `extraPerField` characters of decoration each and four more.
inline std::size_t rowCapacity(const Fields& fields, std::size_t extraPerField) {
  return fields.textSize() + fields.size() * extraPerField + 4;
}

/// Size a writer's row buffer grows to for such rows: the first sample sizes it for the longest
/// values a sample can hold, so later samples never grow it (no allocation per sample once
/// recording runs).
inline std::size_t rowReserve(const Fields& fields, std::size_t extraPerField) {
  const std::size_t needed = rowCapacity(fields, extraPerField);
  const std::size_t longestSample = fields.size() * (kValueTextCapacity + extraPerField) + 4;
  return needed > longestSample ? needed : longestSample;
}

/// One row of a writer's output, written where it costs least: straight into the free room of a
/// recording file buffer (HxRecordingFileBuffer) when that is the stream's buffer, else into the
/// writer's own row buffer, which `finish` hands to the stream (as `write` would).
///
///     HxWriterRow::Row row(stream, row_, capacity);
///     char* out = row.begin();
///     ... at most `capacity` bytes through out ...
///     row.finish(out);
class Row {
 public:
  /// Room for at most `capacity` bytes. `buffer` is the writer's row buffer, grown to
  /// `reserve` (at least `capacity`) when it is too small and the file buffer is not at hand.
  Row(std::ostream& stream, std::string& buffer, std::size_t capacity, std::size_t reserve = 0);
  /// Room for a row of `fields` with `extraPerField` characters of decoration each, four more
  /// and `slack` (see rowCapacity and rowReserve).
  Row(std::ostream& stream, std::string& buffer, const Fields& fields, std::size_t extraPerField, std::size_t slack = 0)
      : Row(stream, buffer, rowCapacity(fields, extraPerField) + slack, rowReserve(fields, extraPerField) + slack) {}
  Row(const Row&) = delete;
  Row& operator=(const Row&) = delete;

  /// Where the row starts.
  char* begin() const { return begin_; }
  /// Keeps the row, which ends at `end`.
  void finish(const char* end);

 private:
  std::ostream& stream_;
  HxRecordingFileBuffer* file_ = nullptr;
  char* begin_ = nullptr;
};

/// Makes `row` at least large enough for the fields plus `extraPerField` characters of
/// decoration each and four more, and returns where to write. The first sample sizes the row
/// for the longest values a sample can hold, so later samples never grow it (no allocation
/// per sample once recording runs). The caller writes through the pointer and hands the
/// stream only the part it wrote.
inline char* prepare(std::string& row, const Fields& fields, std::size_t extraPerField) {
  if (row.size() < rowCapacity(fields, extraPerField)) row.resize(rowReserve(fields, extraPerField));
  return row.data();
}

/// Copies `text` to `out` and returns the end of the copy.
inline char* put(char* out, std::string_view text) {
  text.copy(out, text.size());
  return out + text.size();
}

/// Bytes that `putPadded` may read past its text and write past its copy.
constexpr std::size_t kCopySlack = HxElementTextPadding;

/// Copies `text` to `out` as `put` does, but a short text as a whole kCopySlack bytes, which is
/// one fixed-size copy instead of a call of memcpy: for texts that may be read, and
/// destinations that may be written, kCopySlack bytes past their ends (a padded text block).
inline char* putPadded(char* out, std::string_view text) {
  if (text.size() > kCopySlack) return put(out, text);
  std::memcpy(out, text.data(), kCopySlack);
  return out + text.size();
}

}  // namespace HxWriterRow
