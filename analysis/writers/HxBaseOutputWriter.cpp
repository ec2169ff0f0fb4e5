#include "analysis/writers/HxBaseOutputWriter.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

HxBaseOutputWriter::HxBaseOutputWriter() = default;

void HxBaseOutputWriter::openOutputFile(const std::string& fileName, std::ofstream& stream, bool binary) {
  // A stream that already holds a file keeps it, its state and its position.
  if (stream.is_open()) return;
  std::ios::openmode mode = std::ios::out | std::ios::trunc;
  if (binary) mode |= std::ios::binary;
  stream.open(fileName, mode);
  if (stream.is_open()) {
    stream.clear();
  } else {
    stream.setstate(std::ios::failbit);
  }
}
