// The progress bar hxrecord draws on a terminal while it records.

#include "tools/lib/HxRecordProgress.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>

#include "tools/lib/HxRecordText.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

void HxRecordProgressBar::update(double simulated, double total) {
  const int percent = total > 0.0 ? static_cast<int>(std::clamp(simulated / total, 0.0, 1.0) * 100.0) : 100;
  if (percent == percent_) return;
  percent_ = percent;
  const int filled = percent * kWidth / 100;
  std::ostringstream line;
  line << "\rhxrecord [" << std::string(filled, '#') << std::string(kWidth - filled, '.') << "] " << std::setw(3)
       << percent << "%  " << std::fixed << std::setprecision(2) << simulated << " / " << hxSecondsText(total) << " s";
  out_ << line.str() << std::flush;
  drawn_ = true;
}

void HxRecordProgressBar::clear() {
  if (drawn_) out_ << '\r' << std::string(72, ' ') << '\r' << std::flush;
  drawn_ = false;
}
