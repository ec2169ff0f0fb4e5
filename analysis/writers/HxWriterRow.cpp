#include "analysis/writers/HxWriterRow.h"

#include <typeinfo>

namespace HxWriterRow {

Row::Row(std::ostream& stream, std::string& buffer, std::size_t capacity, std::size_t reserve) : stream_(stream) {
  std::streambuf* const streamBuffer = stream.rdbuf();
  // The exact class only: a class derived from the recording buffer may count or change what
  // it is given, so it gets the bytes through its own operations.
  if (stream.good() && streamBuffer != nullptr && typeid(*streamBuffer) == typeid(HxRecordingFileBuffer)) {
    file_ = static_cast<HxRecordingFileBuffer*>(streamBuffer);
    begin_ = file_->room(capacity);
    if (begin_ != nullptr) return;
    file_ = nullptr;
  }
  if (buffer.size() < capacity) buffer.resize(reserve > capacity ? reserve : capacity);
  begin_ = buffer.data();
}

void Row::finish(const char* end) {
  if (file_ != nullptr) {
    file_->commit(end);
  } else {
    write(stream_, begin_, static_cast<std::size_t>(end - begin_));
  }
}

}  // namespace HxWriterRow
