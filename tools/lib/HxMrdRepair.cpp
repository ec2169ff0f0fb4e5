// Repairing an MRD recording that was never finished: its header written from what it holds.

#include <sys/stat.h>

#include <cstdint>
#include <limits>
#include <string>

#include "tools/lib/HxMrdFile.h"
#include "tools/lib/HxRepair.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

constexpr std::size_t kHeaderWidth = HxMrdHeader::kWidth;
constexpr std::size_t kHeaderLine = kHeaderWidth + 1;

/// "1 byte", "12 bytes".
std::string counted(std::uint64_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}
}  // namespace

HxFileRepair hxRepairMrdFile(const std::string& path, bool inspectOnly) {
  HxFileRepair repair;
  repair.path = path;
  repair.format = "MRD";
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0 && errno == ENOENT) {
    repair.outcome = HxFileRepair::Outcome::Missing;
    repair.action = "no such file";
    return repair;
  }
  HxMrdReader reader;
  std::string error;
  if (!reader.open(path, HxMrdLoadOptions(), error)) {
    repair.outcome = HxFileRepair::Outcome::Failed;
    repair.action = error;
    return repair;
  }
  const std::uint64_t samples = reader.sampleCount();
  repair.samples = samples;
  if (reader.finished()) {
    repair.outcome = HxFileRepair::Outcome::Finished;
    repair.action = "finished, left unchanged";
    return repair;
  }
  if (samples > std::numeric_limits<HxU32>::max()) {
    repair.outcome = HxFileRepair::Outcome::Failed;
    repair.action = "too many samples (" + std::to_string(samples) + ") for an MRD header";
    return repair;
  }

  // The header as the writer finishes it: samples × channels (one channel per label, wrapping in
  // 32 bits), the channels, the samples and the fourth value 1000, padded with blanks.
  const auto sampleCount = static_cast<HxU32>(samples);
  const auto channels = static_cast<HxU32>(reader.labels().size());
  const HxU32 total = sampleCount * channels;
  std::string head =
      std::to_string(total) + '\t' + std::to_string(channels) + '\t' + std::to_string(sampleCount) + '\t' + "1000";
  head.resize(kHeaderWidth, ' ');
  head += '\n';

  // Worded as the other formats' repairs: what the file is given, whole samples counted by the caller.
  const std::string action =
      (reader.partialBytes() != 0 ? "cut back to its last whole sample (" + counted(reader.partialBytes(), "byte") +
                                        " of a partial sample dropped) and given its header"
                                  : std::string("given its header")) +
      " for " + counted(reader.valuesPerSample(), "value") + " per sample";
  if (inspectOnly) {
    repair.outcome = HxFileRepair::Outcome::NeedsRepair;
    repair.action = "would be " + action;
    return repair;
  }
  const std::uint64_t end = reader.dataOffset() + samples * 4 * reader.valuesPerSample();
  if (!hxRewriteFile(path, head, kHeaderLine, end, "", error)) {
    repair.outcome = HxFileRepair::Outcome::Failed;
    repair.action = "cannot be repaired: " + error;
    return repair;
  }
  repair.outcome = HxFileRepair::Outcome::Repaired;
  repair.action = action;
  return repair;
}
