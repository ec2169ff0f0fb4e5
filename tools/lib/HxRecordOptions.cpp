// HxRecordOptions: hxrecord's command line, parsed by HxCommandLine, and its usage text.

#include "tools/lib/HxRecordOptions.h"

#include <algorithm>
#include <cmath>
#include <thread>
#include <utility>

#include "framework/HxNumberText.h"
#include "tools/lib/HxCommandLine.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

using Mode = HxMujocoSimulation::Mode;

// Parses a number of seconds: finite, and positive (or not negative when zero is allowed).
bool parseSeconds(const std::string& text, bool allowZero, double& value) {
  double parsed = 0.0;
  if (!HxSTRING2DOUBLE(text, parsed) || !std::isfinite(parsed)) return false;
  if (parsed < 0.0 || (!allowZero && parsed == 0.0)) return false;
  value = parsed;
  return true;
}

// The formats of a --formats list, each as its writer's extension without the dot; false with
// `error` set for an empty or unknown name or one given twice.
bool parseFormats(const std::string& name, const std::string& list, std::vector<std::string>& formats,
                  std::string& error) {
  static const std::pair<const char*, const char*> kNames[] = {
      {"csv", "csv"},  {"text", "csv"}, {"xml", "xml"},        {"mrd", "mrd"}, {"m", "m"},
      {"matlab", "m"}, {"nb", "nb"},    {"mathematica", "nb"}, {"h5", "h5"},   {"hdf5", "h5"}};
  std::vector<std::string> parsed;
  std::size_t start = 0;
  for (;;) {
    const std::size_t comma = list.find(',', start);
    const std::string item = list.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
    const char* format = nullptr;
    for (const auto& [spelling, extension] : kNames) {
      if (item == spelling) format = extension;
    }
    const std::string prefix = "invalid value '" + list + "' for " + name + ": ";
    if (format == nullptr) {
      error = prefix + (item.empty() ? std::string("an empty format name") : "unknown format '" + item + "'") +
              "; expected a comma-separated list of csv, xml, mrd, m, nb, h5 (or text, matlab, mathematica, "
              "hdf5)";
      return false;
    }
    if (std::find(parsed.begin(), parsed.end(), format) != parsed.end()) {
      error = prefix + "format '" + format + "' is named twice";
      return false;
    }
    parsed.push_back(format);
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  formats = parsed;
  return true;
}

}  // namespace

unsigned hxDefaultRecordThreads() { return std::thread::hardware_concurrency() >= 2 ? 2 : 1; }

const std::string& hxRecordUsage() {
  static const std::string usage =
      "Usage: hxrecord [options]\n"
      "\n"
      "Records a MuJoCo simulation of one or more manipulators through libhxSimulationAnalysis.\n"
      "Without options it records the built-in default scene (two 6-joint arms beside a table,\n"
      "reaching their path points; the files of examples/ built into the program) with every\n"
      "quantity the scene supports, into all five formats: hxrecord-out/recording.csv, .xml,\n"
      ".mrd, .m and .nb.\n"
      "\n"
      "Options:\n"
      "  -m, --model FILE            MuJoCo model (MJCF or URDF); default: the built-in\n"
      "                              examples/models/two_arms_table.xml\n"
      "  -c, --capture FILE          capture configuration XML (a generalCapture element);\n"
      "                              default: the built-in examples/config/default_capture.xml\n"
      "  -w, --writers FILE          output writer list XML (an outputWriterVector element);\n"
      "                              default: the built-in examples/config/default_writers.xml\n"
      "      --formats LIST          write these formats instead of a writer list: a comma-\n"
      "                              separated list of csv, xml, mrd, m, nb, h5 (also text,\n"
      "                              matlab, mathematica, hdf5), written in that order; not\n"
      "                              with --writers; h5 is an HDF5 file of the exact doubles,\n"
      "                              readable while it is written and after a crash\n"
      "      --capture-all           capture every quantity the model and the mode support\n"
      "                              (see below) instead of a capture configuration; not with\n"
      "                              --capture\n"
      "      --write-capture FILE    save the capture configuration in use (the built-in one,\n"
      "                              --capture's or --capture-all's) to FILE, to edit and pass\n"
      "                              back with --capture; also with --check\n"
      "      --scene FILE            scene side file (JSON): motors and path points added to\n"
      "                              the model, for example a URDF arm's (see below)\n"
      "      --plot DISPLAY.xml      after recording, draw it with 'hxplot DISPLAY.xml BASE.csv\n"
      "                              -o BASE.png' (needs the csv format); hxplot is looked for\n"
      "                              beside hxrecord, then on PATH\n"
      "      --check                 load and check everything, then print the columns the\n"
      "                              recording would have (unit, whether the mode computes\n"
      "                              them); record nothing, write no file, create no directory\n"
      "  -d, --duration SECONDS      simulated time to record (default 8)\n"
      "  -s, --sample-interval SECONDS\n"
      "                              simulated time between samples, rounded to whole engine\n"
      "                              timesteps (default 0.01); a sample is also taken at time 0\n"
      "  -o, --output BASE           output base name; each file is BASE plus the writer's\n"
      "                              extension (default hxrecord-out/recording); the directory\n"
      "                              is created when missing\n"
      "      --mode dynamic|kinematic\n"
      "                              dynamic: the engine integrates the dynamics and the arms\n"
      "                              are driven through their motors (default); kinematic: the\n"
      "                              state follows the controller's output, kinematics only\n"
      "      --dwell SECONDS         time a reached path point is held before the next one\n"
      "                              (default 0.25)\n"
      "      --threads 1|2           1: step, capture and write on one thread; 2: write the\n"
      "                              files on a second thread while the simulation runs\n"
      "                              (default 2 when the machine has two processors or more);\n"
      "                              the files are the same either way\n"
      "  -q, --quiet                 no progress bar and no summary\n"
      "      --list-types            print the quantity types (token, level, columns, units,\n"
      "                              whether a capture file can name them) and exit\n"
      "      --version               print the versions of hxrecord, the library and MuJoCo\n"
      "                              and exit\n"
      "  -h, --help                  print this help and exit\n"
      "\n"
      "Path points come from the model: world-body sites named path:<root body>:<n> (see\n"
      "simulation/mujoco/README.md, which also gives the frames and units of every quantity).\n"
      "The path-point index of a sample is the smallest index of the manipulators that follow\n"
      "a path.\n"
      "\n"
      "--capture-all captures for every manipulator each quantity type a capture file can\n"
      "name: manipulator-level types once, link-level types for every link, end-effector-\n"
      "level types for every end effector. Types the mode cannot compute are left out (in\n"
      "kinematic mode those that need the dynamics), and motor power is captured only for\n"
      "joints driven by a DC motor.\n"
      "\n"
      "Warnings, once each: a path: site that names no manipulator's root body; a\n"
      "manipulator without path points (it stands still); a joint whose actuator is not\n"
      "declared as a motor, or that has none (its motor power records zeros).\n"
      "\n"
      "Scene side file (--scene), JSON:\n"
      "  {\"motors\": [{\"joint\": \"shoulder\", \"gear\": 50, \"efficiency\": 0.85,\n"
      "               \"ctrlrange\": [-1, 1]}],\n"
      "   \"pathPoints\": {\"arm_base\": [{\"position\": [0.3, 0, 0.4],\n"
      "                                 \"orientation\": [1, 0, 0, 0]}]}}\n"
      "Each motor becomes a MuJoCo motor actuator, a DC motor, on a joint that has no\n"
      "actuator (gear: default 1; efficiency in (0, 1]: default 1; ctrlrange: the control's\n"
      "limits, none when left out). pathPoints replaces the path of the manipulator named\n"
      "by its root body: world positions (m) and orientations (quaternion w, x, y, z;\n"
      "default 1, 0, 0, 0). A fault in the file is an error (status 4).\n"
      "\n"
      "The configuration files are read strictly: an unknown element or attribute (the message\n"
      "names the closest known one), an element given twice, a quantity listed twice or at the\n"
      "wrong level, a 'count' that differs from what the element holds, a value not of its type\n"
      "and a reach-target tolerance that is not a finite number >= 0 are errors (status 4), each\n"
      "named at its file and line; after 20 messages of one kind the rest are counted. So is a\n"
      "label or link identifier that would corrupt an output file (a comma, a quote, a control\n"
      "character or \"  -  \" in the text, MATLAB or MRD files; a double quote or backslash in\n"
      "the notebook).\n"
      "\n"
      "Interrupting hxrecord (Ctrl-C, SIGTERM or SIGHUP) stops it at the next sample and\n"
      "finishes every file; the files are flushed at least once a second, so that after a\n"
      "crash or SIGKILL 'hxrepair BASE' gives readable files that lack at most that second.\n"
      "\n"
      "Beside the files hxrecord writes BASE.json, the recording's manifest: each column with\n"
      "its unit, frame and whether the mode computes it, each file with its samples, how the\n"
      "recording was made (command line, inputs with their SHA-256, mode, timing) and its\n"
      "status: recording, finished, interrupted or failed. It is replaced whole at the start,\n"
      "at every flush and at the end; a small watcher process marks it interrupted, with what\n"
      "each file holds, should hxrecord be killed. 'hxinfo BASE.json' summarises it.\n"
      "\n"
      "Exit status: 0 success; 1 the simulation became unstable (the files are finished up to\n"
      "that point); 2 bad option or option value; 3 model missing or invalid; 4 capture or\n"
      "writer configuration, scene file or display description missing or invalid, or a label\n"
      "that would corrupt a file; 5 the capture configuration names a manipulator, link or end\n"
      "effector that the model lacks; 6 output cannot be written (an output would overwrite an\n"
      "input, or writing failed while recording: the other files are finished) or the summary\n"
      "cannot be printed; 7 interrupted by a signal (the files are finished up to that point).\n"
      "A plot that cannot be made is a warning: the status is the recording's.\n";
  return usage;
}

HxBoolean hxParseRecordOptions(const std::vector<std::string>& arguments, HxRecordOptions& options,
                               std::string& error) {
  HxCommandLine line({[](const std::string& name) { return "option '" + name + "' needs a value"; },
                      [](const std::string& name) { return "option '" + name + "' takes no value"; },
                      [](const std::string& name) { return "unknown option '" + name + "'"; },
                      [](const std::string& argument) { return "unexpected argument '" + argument + "'"; }});
  auto file = [&line](const std::vector<std::string>& spellings, std::string& target) {
    line.addValue(spellings, [&target](const std::string& name, const std::string& value) {
      if (value.empty()) HxCommandLine::reject("invalid value '' for " + name + ": expected a file name");
      target = value;
    });
  };
  auto seconds = [&line](const std::vector<std::string>& spellings, bool allowZero, double& target) {
    line.addValue(spellings, [allowZero, &target](const std::string& name, const std::string& value) {
      if (!parseSeconds(value, allowZero, target)) {
        HxCommandLine::reject("invalid value '" + value + "' for " + name + ": expected a " +
                              (allowZero ? "non-negative" : "positive") + " number of seconds");
      }
    });
  };
  line.addFlag({"-h", "--help"}, [&options] { options.help = true; });
  line.addFlag({"-q", "--quiet"}, [&options] { options.quiet = true; });
  line.addFlag({"--version"}, [&options] { options.version = true; });
  line.addFlag({"--list-types"}, [&options] { options.listTypes = true; });
  line.addFlag({"--check"}, [&options] { options.check = true; });
  line.addFlag({"--capture-all"}, [&options] { options.captureAll = true; });
  file({"-m", "--model"}, options.modelFile);
  file({"-c", "--capture"}, options.captureFile);
  file({"-w", "--writers"}, options.writersFile);
  file({"-o", "--output"}, options.outputBase);
  file({"--scene"}, options.sceneFile);
  file({"--write-capture"}, options.writeCaptureFile);
  file({"--plot"}, options.plotDisplay);
  line.addValue({"--formats"}, [&options](const std::string& name, const std::string& value) {
    std::string message;
    if (!parseFormats(name, value, options.formats, message)) HxCommandLine::reject(message);
  });
  seconds({"-d", "--duration"}, false, options.duration);
  seconds({"-s", "--sample-interval"}, false, options.sampleInterval);
  seconds({"--dwell"}, true, options.dwellTime);
  line.addValue({"--mode"}, [&options](const std::string& name, const std::string& value) {
    if (value != "dynamic" && value != "kinematic") {
      HxCommandLine::reject("invalid value '" + value + "' for " + name + ": expected 'dynamic' or 'kinematic'");
    }
    options.mode = value == "dynamic" ? Mode::Dynamic : Mode::Kinematic;
  });
  line.addValue({"--threads"}, [&options](const std::string& name, const std::string& value) {
    if (value != "1" && value != "2") {
      HxCommandLine::reject("invalid value '" + value + "' for " + name + ": expected 1 or 2");
    }
    options.threads = value == "1" ? 1 : 2;
  });
  if (!line.parse(arguments, error)) return false;
  if (!options.formats.empty() && !options.writersFile.empty()) {
    error = "--formats and --writers cannot be given together: --formats replaces the writer list";
    return false;
  }
  if (options.captureAll && !options.captureFile.empty()) {
    error = "--capture-all and --capture cannot be given together: --capture-all replaces the capture configuration";
    return false;
  }
  return true;
}
