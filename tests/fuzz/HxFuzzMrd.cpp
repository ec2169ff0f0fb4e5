// An MRD recording (hxmrd): whatever opens has whole samples of its values per sample that fill
// the file from the data offset (less a partial last sample), streams exactly those values, and
// re-encodes to the same bytes: the labels to the label line, every value to its four
// big-endian bytes. Loading into memory agrees with streaming.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "tools/lib/HxMrdFile.h"

namespace {

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "invariant broken: %s\n", what);
  __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  HxMrdReader reader;
  std::string error;
  if (!reader.openBytes(bytes, HxMrdLoadOptions{}, error)) {
    if (error.empty()) fail("a file was refused without a message");
    return 0;
  }
  const std::uint64_t count = reader.sampleCount() * reader.valuesPerSample();
  if (reader.valuesPerSample() == 0 && reader.sampleCount() != 0) fail("samples of no values");
  if (reader.dataOffset() < 81 || reader.dataOffset() + 4 * count + reader.partialBytes() != size) {
    fail("data offset, samples and partial sample do not add up to the file's size");
  }
  if (reader.partialBytes() >= 4ull * std::max<std::uint64_t>(reader.valuesPerSample(), 1)) {
    fail("a partial sample as long as a whole one");
  }
  if (reader.finished() && (reader.header().samples != reader.sampleCount() || reader.partialBytes() != 0)) {
    fail("a finished header that does not count the samples held");
  }
  std::string labels;
  for (std::size_t i = 0; i < reader.labels().size(); ++i) labels += (i ? "  " : "") + reader.labels()[i] + "  -";
  if (bytes.compare(81, reader.dataOffset() - 81, labels + "\n\n\n") != 0) fail("the labels do not re-encode");

  std::vector<float> values;
  float chunk[7];  // an odd size, so that reads end inside samples
  for (std::size_t got; (got = reader.read(chunk, 7, error)) != 0;) values.insert(values.end(), chunk, chunk + got);
  if (values.size() != count) fail("streaming gave another number of values than the samples hold");
  for (std::size_t i = 0; i < values.size(); ++i) {
    const unsigned char* at = data + reader.dataOffset() + 4 * i;
    const std::uint32_t word =
        std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 | at[3];
    if (std::memcmp(&word, &values[i], 4) != 0) fail("a value does not re-encode to its bytes");
  }

  HxMrdFile file;
  if (!hxParseMrd(bytes, HxMrdLoadOptions{}, file, error)) fail("loading refused what streaming read");
  if (file.valuesPerSample != reader.valuesPerSample() || file.sampleCount != reader.sampleCount() ||
      file.labels != reader.labels() || file.values.size() != values.size() ||
      (!values.empty() && std::memcmp(file.values.data(), values.data(), 4 * values.size()) != 0)) {
    fail("loading and streaming disagree");
  }
  return 0;
}
