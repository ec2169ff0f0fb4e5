#include "analysis/writers/HxRecordingFileStream.h"

HxRecordingFileBuffer::HxRecordingFileBuffer(std::size_t size) : storage_(new char[size]), size_(size) {
  setp(storage_.get(), storage_.get() + size_);
}

HxRecordingFileBuffer::~HxRecordingFileBuffer() = default;

bool HxRecordingFileBuffer::handOver() {
  if (failed_) return false;
  const std::streamsize pending = pptr() - pbase();
  if (pending > 0 && (target_ == nullptr || target_->sputn(pbase(), pending) != pending)) {
    // What could not be handed over is dropped, and a failed buffer has no room: every later
    // write comes back here and fails, so that the stream reports the loss.
    failed_ = true;
    setp(storage_.get(), storage_.get());
    return false;
  }
  setp(storage_.get(), storage_.get() + size_);
  return true;
}

HxRecordingFileBuffer::int_type HxRecordingFileBuffer::overflow(int_type c) {
  if (!handOver()) return traits_type::eof();
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  *pptr() = traits_type::to_char_type(c);
  pbump(1);
  return c;
}

int HxRecordingFileBuffer::sync() {
  if (!handOver()) return -1;
  return target_ == nullptr ? 0 : target_->pubsync();
}

HxRecordingFileBuffer::pos_type HxRecordingFileBuffer::seekoff(off_type offset, std::ios::seekdir direction,
                                                               std::ios::openmode mode) {
  if (!handOver() || target_ == nullptr) return pos_type(off_type(-1));
  return target_->pubseekoff(offset, direction, mode);
}

HxRecordingFileBuffer::pos_type HxRecordingFileBuffer::seekpos(pos_type position, std::ios::openmode mode) {
  if (!handOver() || target_ == nullptr) return pos_type(off_type(-1));
  return target_->pubseekpos(position, mode);
}

HxRecordingFileStream::HxRecordingFileStream() : buffer_(kBufferBytes) {
  // The file's own buffer is made unbuffered (before a file is open, when that takes effect)
  // and the stream writes through the recording buffer above it.
  std::ofstream::rdbuf()->pubsetbuf(nullptr, 0);
  buffer_.setTarget(std::ofstream::rdbuf());
  std::ostream::rdbuf(&buffer_);
}

HxRecordingFileStream::~HxRecordingFileStream() { close(); }

void HxRecordingFileStream::close() {
  if (!is_open()) return;
  flush();
  std::ofstream::close();
}
