// HxInfoCommand: hxinfo's command line, parsed by HxCommandLine, and its report as text or JSON.

#include "tools/lib/HxInfoCommand.h"

#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <ostream>

#include "tools/lib/HxCommandLine.h"
#include "tools/lib/HxInfo.h"
#include "tools/lib/HxRepair.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

// What was found: the manifest (when there is one) and the data file the statistics come from.
struct Findings {
  bool haveManifest = false;
  bool manifestGiven = false;
  HxInfoManifest manifest;
  HxInfoData data;
  // With a recording that is not finished: what the repair finds in each of its files.
  std::vector<HxFileRepair> inspected;
};

std::string base(const std::string& path) { return fs::path(path).replace_extension().string(); }

// The file of the manifest's recording to take the statistics from: its CSV, else the first of
// its files there is.
std::string dataFileOf(const HxInfoManifest& manifest) {
  std::error_code code;
  for (const HxInfoManifest::File& file : manifest.files) {
    if (file.extension == ".csv" && fs::is_regular_file(file.path, code)) return file.path;
  }
  for (const HxInfoManifest::File& file : manifest.files) {
    if (fs::is_regular_file(file.path, code)) return file.path;
  }
  return std::string();
}

Json numberOrNull(double value, bool known) { return known && std::isfinite(value) ? Json(value) : Json(nullptr); }
Json textOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

Json columnsJson(const HxInfoData& data) {
  Json columns = Json::array();
  for (std::size_t c = 0; c < data.columns.size(); ++c) {
    const HxInfoColumn& column = data.columns[c];
    columns.push_back({{"index", c},
                       {"label", column.label},
                       {"unit", textOrNull(column.unit)},
                       {"min", numberOrNull(column.minimum, column.count > 0)},
                       {"max", numberOrNull(column.maximum, column.count > 0)},
                       {"mean", numberOrNull(column.mean, column.count > 0)}});
  }
  return columns;
}

// What the repair would do with `file`, or that it is finished.
std::string repairText(const HxFileRepair& file) {
  using Outcome = HxFileRepair::Outcome;
  switch (file.outcome) {
    case Outcome::Finished:
      return "finished";
    case Outcome::Missing:
      return "missing";
    case Outcome::NeedsRepair:
      return "cut short: " + file.action;
    default:
      return "cannot be read: " + file.action;
  }
}

Json reportJson(const std::string& given, const Findings& found, bool columnsOnly) {
  const HxInfoData& data = found.data;
  if (columnsOnly) return Json{{"columns", columnsJson(data)}};
  Json recording(nullptr);
  if (found.manifestGiven) {
    const HxInfoManifest& manifest = found.manifest;
    Json files = Json::array();
    for (std::size_t i = 0; i < manifest.files.size(); ++i) {
      const HxInfoManifest::File& file = manifest.files[i];
      Json entry{{"file", file.path}, {"format", file.format}, {"samples", file.samples}};
      for (const HxFileRepair& inspected : found.inspected) {
        if (inspected.path != file.path) continue;
        entry["status"] = repairText(inspected);
        entry["samplesFound"] = inspected.samples;
      }
      files.push_back(entry);
    }
    recording = Json{{"status", manifest.status},
                     {"statusMessage", manifest.message},
                     {"mode", textOrNull(manifest.mode)},
                     {"model", textOrNull(manifest.model)},
                     {"capture", textOrNull(manifest.capture)},
                     {"writers", textOrNull(manifest.writers)},
                     {"commandLine", manifest.commandLine},
                     {"started", textOrNull(manifest.started)},
                     {"updated", textOrNull(manifest.updated)},
                     {"samples", manifest.samples},
                     {"files", files}};
  }
  return Json{{"file", given},
              {"manifest", found.haveManifest ? Json(found.manifest.path) : Json(nullptr)},
              {"recording", recording},
              {"dataFile", data.path},
              {"format", data.format},
              {"status", data.finished ? "finished" : "cut short"},
              {"repair", textOrNull(data.repair)},
              {"samples", data.samples},
              {"timeRange", data.samples > 0 ? Json{data.firstTime, data.lastTime} : Json(nullptr)},
              {"warnings", data.warnings},
              {"columns", columnsJson(data)}};
}

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", value);
  return text;
}

void writeColumns(std::ostream& out, const HxInfoData& data) {
  char line[160];
  std::snprintf(line, sizeof line, "%6s  %-8s %13s %13s %13s  %s\n", "column", "unit", "minimum", "maximum", "mean",
                "label");
  out << line;
  for (std::size_t c = 0; c < data.columns.size(); ++c) {
    const HxInfoColumn& column = data.columns[c];
    const bool any = column.count > 0;
    std::snprintf(line, sizeof line, "%6zu  %-8s %13s %13s %13s  ", c, column.unit.empty() ? "-" : column.unit.c_str(),
                  any ? number(column.minimum).c_str() : "-", any ? number(column.maximum).c_str() : "-",
                  any ? number(column.mean).c_str() : "-");
    out << line << column.label << "\n";
  }
}

void writeReport(std::ostream& out, const Findings& found) {
  const HxInfoData& data = found.data;
  if (found.manifestGiven) {
    const HxInfoManifest& manifest = found.manifest;
    out << "recording: " << manifest.path << "\n";
    out << "status: " << manifest.status << (manifest.message.empty() ? "" : ": " + manifest.message) << "\n";
    if (!manifest.mode.empty()) out << "mode: " << manifest.mode << "\n";
    for (const auto& [what, name] : {std::pair<const char*, const std::string*>{"model", &manifest.model},
                                     {"capture", &manifest.capture},
                                     {"writers", &manifest.writers}}) {
      if (!name->empty()) out << what << ": " << *name << "\n";
    }
    if (!manifest.commandLine.empty()) {
      out << "command line:";
      for (const std::string& argument : manifest.commandLine) out << " " << argument;
      out << "\n";
    }
    if (!manifest.started.empty()) out << "started: " << manifest.started << ", updated: " << manifest.updated << "\n";
    out << "files:\n";
    for (const HxInfoManifest::File& file : manifest.files) {
      out << "  " << file.path << ": " << file.format << ", " << file.samples << " samples";
      for (const HxFileRepair& inspected : found.inspected) {
        if (inspected.path == file.path) out << "; holds " << inspected.samples << ", " << repairText(inspected);
      }
      out << "\n";
    }
    out << "\n";
  }
  out << "file: " << data.path << "\n";
  out << "format: " << data.format << "\n";
  out << "status: "
      << (data.finished ? std::string("finished")
                        : "cut short: " + data.repair +
                              (data.repairable ? " ('hxrepair " + base(data.path) + "' repairs it)" : ""))
      << "\n";
  out << "samples: " << data.samples << "\n";
  out << "columns: " << data.columns.size() << "\n";
  if (data.samples > 0) out << "time: " << number(data.firstTime) << " to " << number(data.lastTime) << " s\n";
  if (found.haveManifest && !found.manifestGiven) out << "manifest: " << found.manifest.path << "\n";
  out << "\n";
  writeColumns(out, data);
}

int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  HxInfoCommandOptions options;
  std::string error;
  if (!hxParseInfoOptions(arguments, options, error)) {
    err << "hxinfo: " << error << "\nTry 'hxinfo --help'.\n";
    return HxInfoUsage;
  }
  if (options.help) {
    out << hxInfoUsage();
    return HxInfoDone;
  }

  Findings found;
  auto fail = [&err](const std::string& file, const std::string& why) {
    err << "hxinfo: error: " << file << ": " << why << "\n";
    return HxInfoFailed;
  };
  std::string dataFile = options.file;
  if (hxIsManifestPath(options.file)) {
    if (!hxReadInfoManifest(options.file, found.manifest, error)) return fail(options.file, error);
    found.haveManifest = found.manifestGiven = true;
    dataFile = dataFileOf(found.manifest);
    if (dataFile.empty()) return fail(options.file, "none of the recording's files is there");
    if (found.manifest.status != "finished") {
      for (const HxFileRepair& file : hxRepairRecording(base(options.file), true)) {
        if (file.outcome != HxFileRepair::Outcome::Missing) found.inspected.push_back(file);
      }
    }
  } else {
    // The manifest beside the file names its columns and their units.
    const std::string manifestPath = base(options.file) + ".json";
    std::error_code code;
    if (fs::exists(manifestPath, code)) {
      found.haveManifest = hxReadInfoManifest(manifestPath, found.manifest, error);
      if (!found.haveManifest) err << "hxinfo: warning: " << manifestPath << ": " << error << "; not used\n";
    }
  }
  if (!hxReadInfoData(dataFile, found.haveManifest ? &found.manifest : nullptr, found.data, error)) {
    return fail(dataFile, error);
  }
  for (const std::string& warning : found.data.warnings)
    err << "hxinfo: warning: " << dataFile << ": " << warning << "\n";
  if (options.json) {
    out << reportJson(options.file, found, options.columnsOnly).dump(2, ' ', false, Json::error_handler_t::replace)
        << "\n";
  } else if (options.columnsOnly) {
    writeColumns(out, found.data);
  } else {
    writeReport(out, found);
  }
  out.flush();
  if (!out) return fail("standard output", "cannot be written");
  return HxInfoDone;
}
}  // namespace

const std::string& hxInfoUsage() {
  static const std::string usage =
      "Usage: hxinfo [--columns] [--json] FILE\n"
      "\n"
      "Summarises a recording. FILE is one of its files (BASE.csv, BASE.xml, BASE.mrd, BASE.m,\n"
      "BASE.nb, BASE.h5) or its manifest (BASE.json, which hxrecord writes beside them). For a\n"
      "file it prints the format, the samples, the columns, the time range, whether the file\n"
      "is finished or was cut short (and then what 'hxrepair BASE' would do with it; an HDF5\n"
      "file needs no repair), and per column its label, unit, minimum, maximum and mean. The\n"
      "units (and the labels) come from the manifest beside the file when there is one;\n"
      "without it the XML and HDF5 files' own descriptions give the units they can, the other\n"
      "files none.\n"
      "\n"
      "For a manifest it prints how the recording was made and its status first: recording,\n"
      "finished, interrupted or failed, with the reason; a recording whose process is gone\n"
      "from this machine without having finished counts as interrupted. When the recording is\n"
      "not finished, each file is inspected as hxrepair would, changing nothing. The\n"
      "statistics then come from the recording's CSV file, else the first of its files there is.\n"
      "\n"
      "Every file is read in one pass, one sample at a time, so a file of any size can be\n"
      "summarised. Values that are not numbers (NaN) are left out of the statistics.\n"
      "\n"
      "Options:\n"
      "  --columns   print only the column table\n"
      "  --json      print the same as JSON: file, manifest, recording (the manifest's\n"
      "              summary, or null), dataFile, format, status (\"finished\" or \"cut short\"),\n"
      "              repair, samples, timeRange ([first, last] or null), warnings, and columns\n"
      "              ([{index, label, unit, min, max, mean}], null where unknown); with\n"
      "              --columns only {\"columns\": [...]}\n"
      "  -h, --help  print this help and exit\n"
      "\n"
      "Exit status: 0 on success (a file cut short included); 1 when the file cannot be read\n"
      "or is of no format hxinfo knows; 2 on a usage error.\n";
  return usage;
}

HxBoolean hxParseInfoOptions(const std::vector<std::string>& arguments, HxInfoCommandOptions& options,
                             std::string& error) {
  HxCommandLine line(HxCommandLineWording::oneFile("one file at a time"));
  line.addFlag({"-h", "--help"}, [&options] { options.help = true; });
  line.addFlag({"--columns"}, [&options] { options.columnsOnly = true; });
  line.addFlag({"--json"}, [&options] { options.json = true; });
  line.addPositional("FILE", [&options](const std::string&, const std::string& value) { options.file = value; });
  if (!line.parse(arguments, error)) return false;
  if (options.file.empty() && !options.help) {
    error = "no file given (a recording's .csv, .xml, .mrd, .m, .nb, .h5 file or its .json manifest)";
    return false;
  }
  return true;
}

int hxInfoMain(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  try {
    return run(arguments, out, err);
  } catch (const std::exception& exception) {
    err << "hxinfo: error: " << exception.what() << "\n";
    return HxInfoFailed;
  }
}
