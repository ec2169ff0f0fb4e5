#pragma once
/// \file
/// HxRecordingFileStream: the output file stream a recorder writes each file through.

#include <cstddef>
#include <fstream>
#include <ios>
#include <memory>
#include <streambuf>

/// The stream buffer of a recording file. It gathers what is written and hands it to the file's
/// own buffer (the target) in large pieces. The writers put a sample row straight into its free
/// room (`room`, `commit`) when they find it under their stream, instead of building the row
/// apart and copying it in.
///
/// Once handing bytes to the target fails, the buffer stays failed: every later write and flush
/// fails too, so that the stream reports the loss and no bytes follow a gap in the file.
class HxRecordingFileBuffer : public std::streambuf {
 public:
  /// A buffer of `size` bytes (at least one) with no target yet.
  explicit HxRecordingFileBuffer(std::size_t size);
  HxRecordingFileBuffer(const HxRecordingFileBuffer&) = delete;
  HxRecordingFileBuffer& operator=(const HxRecordingFileBuffer&) = delete;
  ~HxRecordingFileBuffer() override;

  /// The buffer the gathered bytes go to; without one, handing them over fails.
  void setTarget(std::streambuf* target) { target_ = target; }
  /// Start of at least `size` free bytes, made by handing what the buffer holds to the target
  /// when it has less room; null when the buffer failed or is smaller than `size`.
  char* room(std::size_t size) {
    if (static_cast<std::size_t>(epptr() - pptr()) >= size) return pptr();
    return handOver() && size <= size_ ? pptr() : nullptr;
  }
  /// Keeps what was written from the start of the last `room` up to `end`.
  void commit(const char* end) { pbump(static_cast<int>(end - pptr())); }

 protected:
  /// Hands the gathered bytes to the target, then takes `c` (unless it is end-of-file); end-of-file
  /// when the buffer failed.
  int_type overflow(int_type c) override;
  /// Hands the gathered bytes to the target and synchronises the target; -1 when either fails.
  int sync() override;
  /// Hands the gathered bytes to the target, then seeks the target; -1 when either fails.
  pos_type seekoff(off_type offset, std::ios::seekdir direction, std::ios::openmode mode) override;
  /// Hands the gathered bytes to the target, then seeks the target; -1 when either fails.
  pos_type seekpos(pos_type position, std::ios::openmode mode) override;

 private:
  // Hands the gathered bytes to the target and empties the buffer; false once that failed.
  bool handOver();

  std::unique_ptr<char[]> storage_;
  std::size_t size_;
  std::streambuf* target_ = nullptr;
  bool failed_ = false;
};

/// An output file stream whose writes gather in a buffer large enough for many sample rows, so
/// that a file is written in a few large system calls instead of one or two per sample. The
/// buffer is an HxRecordingFileBuffer, into which the writers put rows directly; the file
/// stream's own buffer beneath it is unbuffered. The recorder writes every file through one;
/// a host that drives writers itself can do the same.
///
///     HxRecordingFileStream stream;
///     writer.openFile("run.csv", stream);
///     ... the writer's calls on stream ...
///     stream.close();
class HxRecordingFileStream : public std::ofstream {
 public:
  /// Size of the buffer. At 1 MiB the kernel's cost per write call (block reservation,
  /// dirty-page accounting) is spread over enough bytes to vanish beside the copying; with
  /// 64 KiB it was a third of the system time of five writers.
  static constexpr std::size_t kBufferBytes = std::size_t{1} << 20;

  /// A stream with no file open.
  HxRecordingFileStream();
  /// Closes the file, writing what is gathered first.
  ~HxRecordingFileStream() override;

  /// Hands the gathered bytes to the file (a failure sets the badbit), then closes it (a failed
  /// close sets the failbit). Does nothing when no file is open.
  void close();

 private:
  HxRecordingFileBuffer buffer_;
};
