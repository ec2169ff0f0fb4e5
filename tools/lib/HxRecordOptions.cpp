// HxRecordOptions: hxrecord's command line, parsed by HxCommandLine, and its usage text.

#include "tools/lib/HxRecordOptions.h"

#include <cmath>

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

}  // namespace

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
      "  -q, --quiet                 no progress bar and no summary\n"
      "  -h, --help                  print this help and exit\n"
      "\n"
      "Path points come from the model: world-body sites named path:<root body>:<n> (see\n"
      "simulation/mujoco/README.md, which also gives the frames and units of every quantity).\n"
      "The path-point index of a sample is the smallest index of the manipulators that follow\n"
      "a path.\n"
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
      "Exit status: 0 success; 1 the simulation became unstable (the files are finished up to\n"
      "that point); 2 bad option or option value; 3 model missing or invalid; 4 capture or\n"
      "writer configuration missing or invalid, or a label that would corrupt a file; 5 the\n"
      "capture configuration names a manipulator, link or end effector that the model lacks;\n"
      "6 output cannot be written (an output would overwrite an input, or writing failed while\n"
      "recording: the other files are finished) or the summary cannot be printed;\n"
      "7 interrupted by a signal (the files are finished up to that point).\n";
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
  file({"-m", "--model"}, options.modelFile);
  file({"-c", "--capture"}, options.captureFile);
  file({"-w", "--writers"}, options.writersFile);
  file({"-o", "--output"}, options.outputBase);
  seconds({"-d", "--duration"}, false, options.duration);
  seconds({"-s", "--sample-interval"}, false, options.sampleInterval);
  seconds({"--dwell"}, true, options.dwellTime);
  line.addValue({"--mode"}, [&options](const std::string& name, const std::string& value) {
    if (value != "dynamic" && value != "kinematic") {
      HxCommandLine::reject("invalid value '" + value + "' for " + name + ": expected 'dynamic' or 'kinematic'");
    }
    options.mode = value == "dynamic" ? Mode::Dynamic : Mode::Kinematic;
  });
  return line.parse(arguments, error);
}
