// The summary hxrecord prints at the end of a recording.

#include "tools/lib/HxRecordSummary.h"

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <system_error>

#include "tools/lib/HxRecordText.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

namespace fs = std::filesystem;

const char* modeName(HxMujocoSimulation::Mode mode) {
  return mode == HxMujocoSimulation::Mode::Dynamic ? "dynamic" : "kinematic";
}
}  // namespace

void hxWriteRecordSummary(const HxRecordSummary& summary, std::ostream& out) {
  std::error_code code;
  out << "Recorded " << summary.samples << " samples of " << summary.columns
      << " columns: " << hxSecondsText(summary.simulatedTime) << " s of simulated time, " << modeName(summary.mode)
      << " mode, one sample every " << hxSecondsText(summary.sampleInterval) << " s.\n";
  if (!summary.files.empty()) {
    fs::path directory = fs::path(summary.files.front().path).parent_path();
    if (directory.empty()) directory = ".";
    const fs::path absolute = fs::absolute(directory, code).lexically_normal();
    out << "Files in " << (code ? directory.string() : absolute.string()) << ":\n";
    std::size_t width = 0;
    for (const auto& file : summary.files) width = std::max(width, file.path.size());
    for (const auto& file : summary.files) {
      out << "  " << std::left << std::setw(static_cast<int>(width)) << file.path << "  " << std::right << std::setw(12)
          << file.size << " bytes  " << file.format << "\n";
    }
  } else {
    out << "No file written: the writer list is empty.\n";
  }
  std::ostringstream wall;
  wall << std::fixed << std::setprecision(3) << summary.wallTime;
  out << "Wall time " << wall.str() << " s; simulated/wall time ratio ";
  if (summary.wallTime > 0.0) {
    std::ostringstream ratio;
    ratio << std::fixed << std::setprecision(2) << summary.simulatedTime / summary.wallTime;
    out << ratio.str() << ".\n";
  } else {
    out << "n/a.\n";
  }
}
