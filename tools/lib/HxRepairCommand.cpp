// HxRepairCommand: hxrepair's command line, parsed by HxCommandLine, and its report.

#include "tools/lib/HxRepairCommand.h"

#include <algorithm>
#include <exception>
#include <ostream>

#include "tools/lib/HxCommandLine.h"
#include "tools/lib/HxRepair.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

bool allMissing(const std::vector<HxFileRepair>& results) {
  return std::all_of(results.begin(), results.end(),
                     [](const HxFileRepair& file) { return file.outcome == HxFileRepair::Outcome::Missing; });
}

// The recording's files, or those of the recording `base` names by one of its files ("run.csv").
std::vector<HxFileRepair> repairRecording(std::string& base, bool inspectOnly) {
  std::vector<HxFileRepair> results = hxRepairRecording(base, inspectOnly);
  if (!allMissing(results)) return results;
  for (const HxFileRepair& file : results) {
    const std::string extension = file.path.substr(base.size());
    if (base.size() > extension.size() &&
        base.compare(base.size() - extension.size(), extension.size(), extension) == 0) {
      std::string named = base.substr(0, base.size() - extension.size());
      std::vector<HxFileRepair> namedResults = hxRepairRecording(named, inspectOnly);
      if (allMissing(namedResults)) break;
      base = named;
      return namedResults;
    }
  }
  return results;
}

int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  HxRepairCommandOptions options;
  std::string error;
  if (!hxParseRepairOptions(arguments, options, error)) {
    err << "hxrepair: " << error << "\nTry 'hxrepair --help'.\n";
    return HxRepairUsage;
  }
  if (options.help) {
    out << hxRepairUsage();
    return HxRepairDone;
  }

  const std::vector<HxFileRepair> results = repairRecording(options.base, options.check);
  if (allMissing(results)) {
    std::string names;
    for (const HxFileRepair& file : results) names += (names.empty() ? "" : ", ") + file.path;
    err << "hxrepair: error: " << options.base << ": the recording has no file (none of " << names << ")\n";
    return HxRepairFailed;
  }
  int status = HxRepairDone;
  for (const HxFileRepair& file : results) {
    using Outcome = HxFileRepair::Outcome;
    switch (file.outcome) {
      case Outcome::Failed:
        err << "hxrepair: error: " << file.path << ": " << file.action << "\n";
        status = HxRepairFailed;
        break;
      case Outcome::Missing:
        out << "hxrepair: " << file.path << ": " << file.action << "\n";
        break;
      case Outcome::NeedsRepair:
        if (status == HxRepairDone) status = HxRepairNeeded;
        [[fallthrough]];
      case Outcome::Finished:
      case Outcome::Repaired:
        out << "hxrepair: " << file.path << ": " << file.action << " (" << file.samples
            << (file.samples == 1 ? " sample)\n" : " samples)\n");
        break;
    }
  }
  out.flush();
  return status;
}
}  // namespace

const std::string& hxRepairUsage() {
  static const std::string usage =
      "Usage: hxrepair [--check] BASE\n"
      "\n"
      "Finishes the files of a recording that was cut short (its program was killed, crashed or\n"
      "lost its power): BASE.csv, BASE.xml, BASE.mrd, BASE.m and BASE.nb, as hxrecord and the\n"
      "library's writers write them. Each file is cut back to its last whole sample and given\n"
      "what a finished file ends with, so that it is the file of a finished recording of those\n"
      "samples:\n"
      "  .csv  cut back to its last whole row\n"
      "  .xml  cut back to its last whole sample element, then its root element closed\n"
      "  .mrd  cut back to its last whole sample, then its blank header filled in\n"
      "  .m    cut back to its last whole row of Data, then Data closed with \"];\"\n"
      "  .nb   cut back to its last whole row of Data, then given the notebook's closing cells\n"
      "A file that holds its labels but no whole sample becomes that of a recording without\n"
      "samples; a file cut inside its labels (or the MRD header line) holds nothing to keep and\n"
      "cannot be repaired. A finished file is left unchanged, so a second run changes nothing.\n"
      "A missing file is skipped. BASE may also name one of the files (run.csv for run).\n"
      "\n"
      "One line per file says what was done and how many whole samples the file holds:\n"
      "  hxrepair: run.csv: cut back to its last whole row (105 samples)\n"
      "  hxrepair: run.xml: finished, left unchanged (801 samples)\n"
      "A file is rewritten into a temporary file beside it that then replaces it, so that it is\n"
      "either the old file or the repaired one whatever happens. Run hxrepair only on a recording\n"
      "that no program is writing any more.\n"
      "\n"
      "Options:\n"
      "  --check     only say what would be done (\"would be cut back ...\"); change nothing\n"
      "  -h, --help  print this help and exit\n"
      "\n"
      "Exit status: 0 when every file is finished or has been repaired (with --check: when\n"
      "nothing needs a repair); 1 when a file cannot be read, understood or rewritten, or the\n"
      "recording has no file at all; 2 on a usage error; 3 with --check when some file needs a\n"
      "repair and every file can be repaired.\n";
  return usage;
}

HxBoolean hxParseRepairOptions(const std::vector<std::string>& arguments, HxRepairCommandOptions& options,
                               std::string& error) {
  HxCommandLine line(HxCommandLineWording::oneFile("one recording at a time"));
  line.addFlag({"-h", "--help"}, [&options] { options.help = true; });
  line.addFlag({"--check"}, [&options] { options.check = true; });
  line.addPositional("BASE", [&options](const std::string&, const std::string& value) { options.base = value; });
  if (!line.parse(arguments, error)) return false;
  if (options.base.empty() && !options.help) {
    error = "no recording given (the path of its files without extension)";
    return false;
  }
  return true;
}

int hxRepairMain(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  try {
    return run(arguments, out, err);
  } catch (const std::exception& exception) {
    err << "hxrepair: error: " << exception.what() << "\n";
    return HxRepairFailed;
  }
}
