// HxRecord: hxrecord's run from the command line to the summary.

#include "tools/lib/HxRecord.h"

#include <ostream>

#include "tools/lib/HxRecordProgress.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

int hxRecordMain(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err, bool progressBar) {
  HxRecordOptions options;
  std::string error;
  if (!hxParseRecordOptions(arguments, options, error)) {
    err << "hxrecord: error: " << error << "\nTry 'hxrecord --help'.\n";
    return static_cast<int>(HxRecordStatus::BadOption);
  }
  if (options.help) {
    out << hxRecordUsage();
    return 0;
  }

  HxRecordSession session(options);
  auto warnFrom = [&](std::size_t first) {
    for (std::size_t i = first; i < session.warnings().size(); ++i) {
      err << "hxrecord: warning: " << session.warnings()[i] << "\n";
    }
    return session.warnings().size();
  };
  auto reportErrors = [&](HxRecordStatus status) {
    for (const std::string& message : session.errors()) err << "hxrecord: error: " << message << "\n";
    return static_cast<int>(status);
  };
  const HxRecordStatus prepared = session.prepare();
  const std::size_t warningsShown = warnFrom(0);
  if (prepared != HxRecordStatus::Success) return reportErrors(prepared);

  // The bar is wiped before anything else is printed.
  HxRecordProgressBar bar(err);
  HxRecordSession::ProgressObserver progress;
  if (progressBar && !options.quiet) {
    progress = [&bar](double simulated, double total) { bar.update(simulated, total); };
  }
  const HxRecordStatus recorded = session.record({}, progress);
  bar.clear();
  warnFrom(warningsShown);
  reportErrors(recorded);
  if (!options.quiet) hxWriteRecordSummary(session.summary(), out);
  return static_cast<int>(recorded);
}
