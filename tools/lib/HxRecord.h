#pragma once
// HxRecord: hxrecord, the host that records a MuJoCo scene through libhxSimulationAnalysis, as a
// function; its parts are the options (HxRecordOptions.h), reading the configurations
// (HxRecordConfiguration.h), the checks (HxRecordChecks.h), the recording (HxRecordSession.h),
// the summary (HxRecordSummary.h) and the progress bar (HxRecordProgress.h).

#include <iosfwd>
#include <string>
#include <vector>

#include "tools/lib/HxRecordChecks.h"
#include "tools/lib/HxRecordConfiguration.h"
#include "tools/lib/HxRecordOptions.h"
#include "tools/lib/HxRecordSession.h"
#include "tools/lib/HxRecordSummary.h"

/// The whole program: parses `arguments` (without the program name), prepares and records,
/// drawing a progress bar on `err` when `progressBar` is true and the run is not quiet, and
/// prints the summary on `out` (unless quiet). Every error goes to `err` as
/// "hxrecord: error: <message>". Returns the exit status. `watcherProgram` is the program that
/// watches the manifest (HxRecordOptions::watcherProgram): the hxrecord program itself.
int hxRecordMain(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err, bool progressBar,
                 const std::string& watcherProgram = std::string());
