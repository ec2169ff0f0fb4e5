// HxRecord: hxrecord's run from the command line to the summary.

#include "tools/lib/HxRecord.h"

#include <cerrno>
#include <cstring>
#include <ostream>

#include "tools/lib/HxRecordCaptureAll.h"
#include "tools/lib/HxRecordListing.h"
#include "tools/lib/HxRecordPlot.h"
#include "tools/lib/HxRecordProgress.h"
#include "tools/lib/HxRecordSignals.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

int hxRecordMain(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err, bool progressBar,
                 const std::string& watcherProgram) {
  HxRecordOptions options;
  options.watcherProgram = watcherProgram;
  std::string error;
  if (!hxParseRecordOptions(arguments, options, error)) {
    err << "hxrecord: error: " << error << "\nTry 'hxrecord --help'.\n";
    return static_cast<int>(HxRecordStatus::BadOption);
  }
  options.commandLine.assign(1, "hxrecord");
  options.commandLine.insert(options.commandLine.end(), arguments.begin(), arguments.end());
  if (options.help) {
    out << hxRecordUsage();
    return 0;
  }
  if (options.version) {
    out << hxRecordVersionText();
    return 0;
  }
  if (options.listTypes) {
    hxWriteQuantityTypes(out);
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
  if (!options.writeCaptureFile.empty() && !hxWriteSessionCapture(session, error)) {
    err << "hxrecord: error: " << error << "\n";
    return static_cast<int>(HxRecordStatus::OutputError);
  }
  if (options.check) {
    hxWriteCheckReport(session, out);
    return 0;
  }

  // The bar is wiped before anything else is printed.
  HxRecordProgressBar bar(err);
  HxRecordSession::ProgressObserver progress;
  if (progressBar && !options.quiet) {
    progress = [&bar](double simulated, double total) { bar.update(simulated, total); };
  }
  HxRecordStatus recorded;
  {
    // Ctrl-C, SIGTERM and SIGHUP stop the recording at its next sample; the files are finished.
    HxStopSignals signals;
    session.setStopFlag(HxStopSignals::flag());
    recorded = session.record({}, progress);
    bar.clear();
    warnFrom(warningsShown);
    reportErrors(recorded);
    for (const std::string& notice : session.notices()) err << "hxrecord: " << notice << "\n";
    if (!options.quiet) {
      // A summary that does not reach its reader is a failure of its own.
      errno = 0;
      hxWriteRecordSummary(session.summary(), out);
      out.flush();
      if (!out) {
        const int reason = errno;
        err << "hxrecord: error: cannot print the summary: "
            << (reason != 0 ? std::strerror(reason) : "the output failed") << " (the files are written)\n";
        if (recorded == HxRecordStatus::Success) recorded = HxRecordStatus::OutputError;
      }
    }
  }
  if (!options.plotDisplay.empty() &&
      (recorded == HxRecordStatus::Success || recorded == HxRecordStatus::Interrupted)) {
    // The plotter writes to the same streams: what was printed goes first.
    out.flush();
    err.flush();
    const HxPlotOutcome plot = hxPlotRecording(options.plotDisplay, options.outputBase);
    if (plot.kind == HxPlotOutcome::Kind::Plotted) {
      if (!options.quiet) out << "Plot: " << plot.image << "\n";
    } else {
      err << "hxrecord: warning: no plot: " << plot.reason << "; the recording is finished\n";
    }
  }
  return static_cast<int>(recorded);
}
