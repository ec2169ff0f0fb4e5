// HxRecord: options, loading and checking, the recording loop and the summary of hxrecord.

#include "tools/lib/HxRecord.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <limits>
#include <ostream>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

#include "analysis/storage/HxSystemStoredData.h"
#include "analysis/types/HxDataCaptureType.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxNumberText.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "tools/lib/HxRecordDefaultScene.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

namespace fs = std::filesystem;
using Mode = HxMujocoSimulation::Mode;

const char* modeName(Mode mode) { return mode == Mode::Dynamic ? "dynamic" : "kinematic"; }

// Seconds as short text: "0.01", "8", "1.5e-05".
std::string seconds(double value) {
  std::ostringstream text;
  text << std::setprecision(6) << value;
  return text.str();
}

// Collapses the line breaks and tabs of a library message into single blanks and trims it.
std::string oneLine(const std::string& text) {
  std::string line;
  bool blank = false;
  for (char c : text) {
    if (c == '\n' || c == '\r' || c == '\t' || c == ' ') {
      blank = !line.empty();
      continue;
    }
    if (blank) line += ' ';
    blank = false;
    line += c;
  }
  return line;
}

// The local name of a module token ("...sm#generalCapture" -> "generalCapture"); a token of
// another namespace is shown whole.
std::string displayToken(const HxToken& token) {
  const std::string& text = token.token();
  const std::string& ns = HxSimAnalysis::ns.token();
  if (text.compare(0, ns.size(), ns) == 0) return text.substr(ns.size());
  return text;
}

// Routes Hx::Print messages to a handler for as long as it lives, then restores the sink.
class ScopedPrintSink {
 public:
  explicit ScopedPrintSink(Hx::Print::Sink sink) : previous_(Hx::Print::instance().setSink(std::move(sink))) {}
  ~ScopedPrintSink() { Hx::Print::instance().setSink(std::move(previous_)); }
  ScopedPrintSink(const ScopedPrintSink&) = delete;
  ScopedPrintSink& operator=(const ScopedPrintSink&) = delete;

 private:
  Hx::Print::Sink previous_;
};

// Parses a number of seconds: finite, and positive (or not negative when zero is allowed).
bool parseSeconds(const std::string& text, bool allowZero, double& value) {
  double parsed = 0.0;
  if (!HxSTRING2DOUBLE(text, parsed) || !std::isfinite(parsed)) return false;
  if (parsed < 0.0 || (!allowZero && parsed == 0.0)) return false;
  value = parsed;
  return true;
}

}  // namespace

// ----------------------------------------------------------------------------------------------
// Options

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
      "Exit status: 0 success; 1 the simulation became unstable (the files are finished up to\n"
      "that point); 2 bad option or option value; 3 model missing or invalid; 4 capture or\n"
      "writer configuration missing or invalid; 5 the capture configuration names a\n"
      "manipulator, link or end effector that the model lacks; 6 output cannot be written.\n";
  return usage;
}

HxBoolean hxParseRecordOptions(const std::vector<std::string>& arguments, HxRecordOptions& options,
                               std::string& error) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    std::string name = arguments[i];
    std::string value;
    bool hasValue = false;
    // "--name=value" carries its value; other options with a value take the next argument.
    const std::size_t equals = name.find('=');
    if (name.compare(0, 2, "--") == 0 && equals != std::string::npos) {
      value = name.substr(equals + 1);
      name.erase(equals);
      hasValue = true;
    }
    auto takeValue = [&]() {
      if (hasValue) return true;
      if (i + 1 >= arguments.size()) {
        error = "option '" + name + "' needs a value";
        return false;
      }
      value = arguments[++i];
      return true;
    };
    auto flag = [&]() {
      if (hasValue) error = "option '" + name + "' takes no value";
      return !hasValue;
    };
    auto secondsValue = [&](bool allowZero, double& target) {
      if (!takeValue()) return false;
      if (!parseSeconds(value, allowZero, target)) {
        error = "invalid value '" + value + "' for " + name + ": expected a " +
                (allowZero ? "non-negative" : "positive") + " number of seconds";
        return false;
      }
      return true;
    };
    auto fileValue = [&](std::string& target) {
      if (!takeValue()) return false;
      if (value.empty()) {
        error = "invalid value '' for " + name + ": expected a file name";
        return false;
      }
      target = value;
      return true;
    };

    if (name == "-h" || name == "--help") {
      if (!flag()) return false;
      options.help = true;
    } else if (name == "-q" || name == "--quiet") {
      if (!flag()) return false;
      options.quiet = true;
    } else if (name == "-m" || name == "--model") {
      if (!fileValue(options.modelFile)) return false;
    } else if (name == "-c" || name == "--capture") {
      if (!fileValue(options.captureFile)) return false;
    } else if (name == "-w" || name == "--writers") {
      if (!fileValue(options.writersFile)) return false;
    } else if (name == "-o" || name == "--output") {
      if (!fileValue(options.outputBase)) return false;
    } else if (name == "-d" || name == "--duration") {
      if (!secondsValue(false, options.duration)) return false;
    } else if (name == "-s" || name == "--sample-interval") {
      if (!secondsValue(false, options.sampleInterval)) return false;
    } else if (name == "--dwell") {
      if (!secondsValue(true, options.dwellTime)) return false;
    } else if (name == "--mode") {
      if (!takeValue()) return false;
      if (value == "dynamic") {
        options.mode = Mode::Dynamic;
      } else if (value == "kinematic") {
        options.mode = Mode::Kinematic;
      } else {
        error = "invalid value '" + value + "' for --mode: expected 'dynamic' or 'kinematic'";
        return false;
      }
    } else if (!name.empty() && name[0] == '-') {
      error = "unknown option '" + name + "'";
      return false;
    } else {
      error = "unexpected argument '" + name + "'";
      return false;
    }
  }
  return true;
}

// ----------------------------------------------------------------------------------------------
// Reading and checking

HxBoolean hxReadConfiguration(const std::string& name, const std::string* text, const HxToken& rootToken,
                              HxXmlObject& root, std::vector<std::string>& errors, std::vector<std::string>& warnings) {
  HxXmlReader reader;
  const std::size_t errorsBefore = errors.size();
  // Library messages are placed at the reader's line when they arrive; the reader's own
  // messages already begin with "file:line:".
  auto place = [&](const std::string& message) {
    const std::string line = oneLine(message);
    const std::string prefix = name + ":";
    if (line.compare(0, prefix.size(), prefix) == 0) return line;
    return name + ":" + std::to_string(reader.lineNumber()) + ": " + line;
  };
  // Warnings are kept only when the document reads: after an error they are its echoes.
  std::vector<std::string> documentWarnings;
  ScopedPrintSink sink([&](Hx::Print::PrintType type, const std::string&, const std::string& message) {
    if (type >= Hx::Print::Error) {
      errors.push_back(place(message));
    } else if (type == Hx::Print::Warning) {
      documentWarnings.push_back(place(message));
    }
  });

  const HxBoolean opened = text != nullptr ? reader.openMemory(*text, name) : reader.openFile(name);
  if (!opened) {
    if (errors.size() == errorsBefore) errors.push_back(reader.errorMessage());
    return false;
  }
  // The root element must be the expected one before the object is asked to read it.
  int kind = reader.next();
  while (kind != HxXmlReader::StartElement && kind != HxXmlReader::EmptyElement && kind != HxXmlReader::Error &&
         kind != HxXmlReader::EndOfDocument) {
    kind = reader.next();
  }
  if (kind == HxXmlReader::Error) {
    if (errors.size() == errorsBefore) errors.push_back(reader.errorMessage());
    return false;
  }
  if (kind == HxXmlReader::EndOfDocument) {
    errors.push_back(name + ":" + std::to_string(reader.lineNumber()) + ": the document holds no element");
    return false;
  }
  if (reader.name() != rootToken) {
    errors.push_back(name + ":" + std::to_string(reader.lineNumber()) + ": the root element is '" +
                     displayToken(reader.name()) + "', expected '" + displayToken(rootToken) + "'");
    return false;
  }
  const HxBoolean read = reader.readObject(root);
  if (!read && errors.size() == errorsBefore) {
    errors.push_back(reader.hasError() ? reader.errorMessage()
                                       : name + ":" + std::to_string(reader.lineNumber()) + ": invalid content");
  }
  if (!read || errors.size() != errorsBefore) return false;
  warnings.insert(warnings.end(), documentWarnings.begin(), documentWarnings.end());
  return true;
}

std::vector<std::string> hxCheckCaptureAgainstModel(const HxSystemDataCapture& capture,
                                                    const HxMujocoSimulation& simulation,
                                                    const std::string& captureName, const std::string& modelName) {
  std::vector<std::string> problems;
  const HxU32 count = simulation.numberOfManipulators();
  auto manipulatorList = [&]() {
    std::string list;
    for (HxU32 m = 0; m < count; ++m) {
      list += (m == 0 ? "" : ", ") + std::to_string(m) + " '" + simulation.manipulatorName(m) + "'";
    }
    return list;
  };
  const auto& captures = capture.manipulatorDataCaptureVector();
  for (HxU32 c = 0; c < captures.size(); ++c) {
    const HxManipulatorDataCapture& entry = captures[c];
    const HxU32 m = entry.manipulatorIndex();
    if (m >= count) {
      problems.push_back("capture configuration '" + captureName + "' names manipulator " + std::to_string(m) +
                         ", but the model '" + modelName + "' has " + std::to_string(count) +
                         " manipulator(s): " + manipulatorList());
      continue;
    }
    const HxIndividualManipulator& manipulator = simulation.manipulators()[m];
    const std::string which = "manipulator " + std::to_string(m) + " ('" + simulation.manipulatorName(m) + "')";
    const auto& links = entry.linkDataCaptureVector();
    for (HxU32 l = 0; l < links.size(); ++l) {
      const std::string& identifier = links[l].linkIdentifier();
      if (manipulator.findLink(identifier) != nullptr) continue;
      std::string known;
      for (HxU32 p = 0; p < manipulator.numberOfLinks(); ++p) {
        if (const HxLink* link = manipulator.link(p)) known += (known.empty() ? "" : ", ") + link->identifier();
      }
      problems.push_back("capture configuration '" + captureName + "' names link '" + identifier + "' of " + which +
                         ", which the model lacks; its links are: " + (known.empty() ? "none" : known));
    }
    const auto& endEffectors = entry.endEffectorDataCaptureVector();
    const HxU32 endEffectorCount = manipulator.numberOfEndEffectors();
    for (HxU32 k = 0; k < endEffectors.size(); ++k) {
      const HxU32 e = endEffectors[k].endEffectorIndex();
      if (e < endEffectorCount) continue;
      std::string known;
      for (HxU32 i = 0; i < endEffectorCount; ++i) {
        known += (i == 0 ? "" : ", ") + std::to_string(i) + " '" + simulation.endEffectorName(m, i) + "'";
      }
      problems.push_back("capture configuration '" + captureName + "' names end effector " + std::to_string(e) +
                         " of " + which + ", which has " + std::to_string(endEffectorCount) + " end effector(s)" +
                         (known.empty() ? std::string() : ": " + known));
    }
  }
  return problems;
}

HxBoolean hxCheckOutputWritable(const std::string& outputBase, const HxOutputWriterVector& writers,
                                std::string& error) {
  const fs::path base(outputBase);
  if (!base.has_filename()) {
    error = "output base name '" + outputBase +
            "' names a directory; add a file name without extension, for example '" + (base / "recording").string() +
            "'";
    return false;
  }
  // The directory: created when missing (with its parents).
  const fs::path directory = base.has_parent_path() ? base.parent_path() : fs::path(".");
  std::error_code code;
  if (!fs::exists(directory, code)) {
    fs::create_directories(directory, code);
    if (code) {
      error = "cannot create output directory '" + directory.string() + "': " + code.message();
      return false;
    }
  }
  if (!fs::is_directory(directory, code)) {
    error = "output directory '" + directory.string() + "' is not a directory";
    return false;
  }
  // Each file: two writers of one extension would write into one file.
  std::set<std::string> seen;
  for (HxU32 i = 0; i < writers.size(); ++i) {
    const std::string path = outputBase + writers[i].fileExtension();
    if (!seen.insert(path).second) {
      error = "two writers would both write '" + path + "'";
      return false;
    }
    if (fs::is_directory(path, code)) {
      error = "cannot write '" + path + "': it is a directory";
      return false;
    }
    const bool existed = fs::exists(path, code);
    errno = 0;
    std::ofstream probe(path, std::ios::out | std::ios::app);
    if (!probe) {
      const int reason = errno;
      error = "cannot write '" + path + "': " + (reason != 0 ? std::strerror(reason) : "cannot open the file");
      return false;
    }
    probe.close();
    if (!existed) fs::remove(path, code);
  }
  return true;
}

// ----------------------------------------------------------------------------------------------
// Summary

void hxWriteRecordSummary(const HxRecordSummary& summary, std::ostream& out) {
  std::error_code code;
  out << "Recorded " << summary.samples << " samples of " << summary.columns
      << " columns: " << seconds(summary.simulatedTime) << " s of simulated time, " << modeName(summary.mode)
      << " mode, one sample every " << seconds(summary.sampleInterval) << " s.\n";
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

// ----------------------------------------------------------------------------------------------
// Session

HxRecordSession::HxRecordSession(HxRecordOptions options)
    : options_(std::move(options)), simulation_(std::make_unique<HxMujocoSimulation>()) {}

HxRecordSession::~HxRecordSession() = default;

HxRecordStatus HxRecordSession::fail(HxRecordStatus status, const std::string& message) {
  errors_.push_back(message);
  return status;
}

HxRecordStatus HxRecordSession::prepare() {
  prepared_ = false;
  errors_.clear();
  warnings_.clear();
  HxRecordStatus status = loadModel();
  if (status != HxRecordStatus::Success) return status;
  status = loadConfigurations();
  if (status != HxRecordStatus::Success) return status;
  status = checkTiming();
  if (status != HxRecordStatus::Success) return status;

  // Everything the capture names must exist in the model before anything is recorded.
  const std::vector<std::string> problems =
      hxCheckCaptureAgainstModel(capture_, *simulation_, captureName_, modelName_);
  if (!problems.empty()) {
    errors_.insert(errors_.end(), problems.begin(), problems.end());
    return HxRecordStatus::ConfigurationMismatch;
  }
  // The library itself stays silent about files it cannot write: check them first.
  std::string error;
  if (!hxCheckOutputWritable(options_.outputBase, writers_, error)) return fail(HxRecordStatus::OutputError, error);
  prepared_ = true;
  return HxRecordStatus::Success;
}

HxRecordStatus HxRecordSession::loadModel() {
  std::vector<std::string> messages;
  ScopedPrintSink sink([&](Hx::Print::PrintType type, const std::string&, const std::string& text) {
    if (type >= Hx::Print::Warning) messages.push_back(oneLine(text));
  });
  HxBoolean loaded = false;
  if (options_.modelFile.empty()) {
    modelName_ = std::string("built-in ") + hxRecordDefaultModel().path;
    loaded = simulation_->loadString(hxRecordDefaultModel().text, options_.mode);
  } else {
    modelName_ = options_.modelFile;
    std::error_code code;
    if (!fs::exists(options_.modelFile, code)) {
      return fail(HxRecordStatus::ModelError, "model file '" + options_.modelFile + "' does not exist");
    }
    if (!fs::is_regular_file(options_.modelFile, code)) {
      return fail(HxRecordStatus::ModelError, "model file '" + options_.modelFile + "' is not a regular file");
    }
    loaded = simulation_->loadFile(options_.modelFile, options_.mode);
  }
  if (!loaded) {
    return fail(HxRecordStatus::ModelError, simulation_->lastError().empty() ? "cannot load model '" + modelName_ + "'"
                                                                             : oneLine(simulation_->lastError()));
  }
  warnings_.insert(warnings_.end(), messages.begin(), messages.end());
  if (simulation_->numberOfManipulators() == 0) {
    return fail(HxRecordStatus::ModelError, "model '" + modelName_ +
                                                "' holds no manipulator: no tree under the world body carries a "
                                                "hinge or slide joint");
  }
  simulation_->setDwellTime(options_.dwellTime);
  return HxRecordStatus::Success;
}

HxRecordStatus HxRecordSession::loadConfigurations() {
  struct Document {
    const std::string& file;
    const HxRecordEmbeddedFile& builtIn;
    const char* what;
    HxXmlObject& root;
    const HxToken& rootToken;
    std::string& name;
  };
  const Document documents[] = {
      {options_.captureFile, hxRecordDefaultCapture(), "capture configuration", capture_,
       HxSimAnalysis::HxGeneralCaptureToken, captureName_},
      {options_.writersFile, hxRecordDefaultWriters(), "writer list", writers_,
       HxSimAnalysis::HxOutputWriterVectorToken, writersName_},
  };
  for (const Document& document : documents) {
    std::vector<std::string> errors;
    HxBoolean read = false;
    if (document.file.empty()) {
      document.name = document.builtIn.path;
      read = hxReadConfiguration(document.name, &document.builtIn.text, document.rootToken, document.root, errors,
                                 warnings_);
    } else {
      document.name = document.file;
      std::error_code code;
      if (!fs::is_regular_file(document.file, code)) {
        return fail(HxRecordStatus::ConfigurationError,
                    std::string(document.what) + " file '" + document.file + "' " +
                        (fs::exists(document.file, code) ? "is not a regular file" : "does not exist"));
      }
      read = hxReadConfiguration(document.file, nullptr, document.rootToken, document.root, errors, warnings_);
    }
    if (!read) {
      for (const std::string& error : errors) errors_.push_back("invalid " + std::string(document.what) + ": " + error);
      return HxRecordStatus::ConfigurationError;
    }
  }
  if (writers_.size() == 0) {
    return fail(HxRecordStatus::ConfigurationError,
                "writer list '" + writersName_ + "' holds no writer: nothing would be recorded");
  }
  if (capture_.manipulatorDataCaptureVector().size() == 0) {
    warnings_.push_back("capture configuration '" + captureName_ +
                        "' captures nothing: only time and path-point index are recorded");
  }
  return HxRecordStatus::Success;
}

HxRecordStatus HxRecordSession::checkTiming() {
  const double timestep = simulation_->timestep();
  const double steps = std::round(options_.duration / timestep);
  if (steps < 1.0) {
    return fail(HxRecordStatus::BadOption, "duration " + seconds(options_.duration) +
                                               " s is shorter than the model's timestep (" + seconds(timestep) + " s)");
  }
  if (steps > static_cast<double>(std::numeric_limits<HxU32>::max())) {
    return fail(HxRecordStatus::BadOption, "duration " + seconds(options_.duration) +
                                               " s is too long for a timestep of " + seconds(timestep) + " s");
  }
  const double stride = std::max(1.0, std::round(options_.sampleInterval / timestep));
  if (options_.sampleInterval < timestep * (1.0 - 1e-9)) {
    return fail(HxRecordStatus::BadOption, "sample interval " + seconds(options_.sampleInterval) +
                                               " s is shorter than the model's timestep (" + seconds(timestep) + " s)");
  }
  totalSteps_ = static_cast<HxU32>(steps);
  stepsPerSample_ = static_cast<HxU32>(std::min(stride, steps));
  const double used = stepsPerSample_ * timestep;
  if (std::fabs(used - options_.sampleInterval) > 1e-9 * options_.sampleInterval) {
    warnings_.push_back("sample interval " + seconds(options_.sampleInterval) + " s rounded to " + seconds(used) +
                        " s (" + std::to_string(stepsPerSample_) + " timestep(s) of " + seconds(timestep) + " s)");
  }
  return HxRecordStatus::Success;
}

HxU32 HxRecordSession::systemPathPointIndex() const {
  HxU32 index = std::numeric_limits<HxU32>::max();
  for (HxU32 m = 0; m < simulation_->numberOfManipulators(); ++m) {
    if (!simulation_->pathPoints(m).empty()) index = std::min(index, simulation_->pathPointIndex(m));
  }
  return index == std::numeric_limits<HxU32>::max() ? 0 : index;
}

HxRecordStatus HxRecordSession::record(const SampleObserver& sampleObserver, const ProgressObserver& progressObserver) {
  if (!prepared_) return fail(HxRecordStatus::SimulationFailed, "nothing to record: the session is not prepared");
  HxMujocoSimulation& simulation = *simulation_;
  std::vector<std::string> messages;
  ScopedPrintSink sink([&](Hx::Print::PrintType type, const std::string&, const std::string& text) {
    if (type >= Hx::Print::Warning) messages.push_back(oneLine(text));
  });

  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(writers_);
  recorder.allocateStorage(capture_);
  recorder.beginSaveToFile(options_.outputBase);

  const double total = totalSteps_ * simulation.timestep();
  HxU32 samples = 0;
  auto takeSample = [&]() {
    capture_.captureData(simulation);
    recorder.saveCapturedData(simulation.time(), systemPathPointIndex(), capture_);
    if (sampleObserver) sampleObserver(samples, simulation);
    ++samples;
    if (progressObserver) progressObserver(simulation.time(), total);
  };

  // A sample at the start, then one every stepsPerSample_ steps.
  HxRecordStatus status = HxRecordStatus::Success;
  const auto start = std::chrono::steady_clock::now();
  takeSample();
  for (HxU32 step = 1; step <= totalSteps_; ++step) {
    if (!simulation.step()) {
      status = fail(HxRecordStatus::SimulationFailed,
                    "the simulation became unstable at t = " + seconds(simulation.time()) + " s" +
                        (simulation.lastError().empty() ? std::string() : ": " + oneLine(simulation.lastError())) +
                        "; the files hold the samples before it");
      break;
    }
    if (step % stepsPerSample_ == 0) takeSample();
  }
  recorder.finishSaveToFile();
  const auto end = std::chrono::steady_clock::now();
  warnings_.insert(warnings_.end(), messages.begin(), messages.end());

  // The summary, and a check that every file was written after all.
  summary_ = HxRecordSummary();
  summary_.samples = samples;
  summary_.columns = 2;
  const auto& captures = capture_.manipulatorDataCaptureVector();
  for (HxU32 c = 0; c < captures.size(); ++c) {
    auto addTypes = [&](const HxDataCaptureTypeVector& types) {
      for (HxU32 t = 0; t < types.size(); ++t) summary_.columns += types[t].activeDataSize();
    };
    addTypes(captures[c].dataCaptureVector());
    for (HxU32 l = 0; l < captures[c].linkDataCaptureVector().size(); ++l) {
      addTypes(captures[c].linkDataCaptureVector()[l].dataCaptureVector());
    }
    for (HxU32 e = 0; e < captures[c].endEffectorDataCaptureVector().size(); ++e) {
      addTypes(captures[c].endEffectorDataCaptureVector()[e].dataCaptureVector());
    }
  }
  summary_.simulatedTime = simulation.time();
  summary_.wallTime = std::chrono::duration<double>(end - start).count();
  summary_.sampleInterval = stepsPerSample_ * simulation.timestep();
  summary_.mode = options_.mode;
  for (HxU32 i = 0; i < writers_.size(); ++i) {
    HxRecordSummary::File file;
    file.path = options_.outputBase + writers_[i].fileExtension();
    file.format = writers_[i].formatDescriptor();
    std::error_code code;
    file.size = fs::file_size(file.path, code);
    if (code) {
      if (status == HxRecordStatus::Success) status = HxRecordStatus::OutputError;
      errors_.push_back("file '" + file.path + "' was not written: " + code.message());
      file.size = 0;
    }
    summary_.files.push_back(file);
  }
  return status;
}

// ----------------------------------------------------------------------------------------------
// The program

namespace {

// Draws "hxrecord [#####.....]  42%  3.36 / 8 s" on a terminal, redrawn when the percentage
// changes.
class ProgressBar {
 public:
  explicit ProgressBar(std::ostream& out) : out_(out) {}
  void update(double simulated, double total) {
    const int percent = total > 0.0 ? static_cast<int>(std::clamp(simulated / total, 0.0, 1.0) * 100.0) : 100;
    if (percent == percent_) return;
    percent_ = percent;
    const int filled = percent * kWidth / 100;
    std::ostringstream line;
    line << "\rhxrecord [" << std::string(filled, '#') << std::string(kWidth - filled, '.') << "] " << std::setw(3)
         << percent << "%  " << std::fixed << std::setprecision(2) << simulated << " / " << seconds(total) << " s";
    out_ << line.str() << std::flush;
    drawn_ = true;
  }
  // Removes the bar so that the next output starts on a clean line.
  void clear() {
    if (drawn_) out_ << '\r' << std::string(72, ' ') << '\r' << std::flush;
    drawn_ = false;
  }

 private:
  static constexpr int kWidth = 40;
  std::ostream& out_;
  int percent_ = -1;
  bool drawn_ = false;
};

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
  auto report = [&](HxRecordStatus status) {
    for (const std::string& warning : session.warnings()) err << "hxrecord: warning: " << warning << "\n";
    for (const std::string& message : session.errors()) err << "hxrecord: error: " << message << "\n";
    return static_cast<int>(status);
  };
  const HxRecordStatus prepared = session.prepare();
  if (prepared != HxRecordStatus::Success) return report(prepared);
  for (const std::string& warning : session.warnings()) err << "hxrecord: warning: " << warning << "\n";
  const std::size_t warningsShown = session.warnings().size();

  ProgressBar bar(err);
  HxRecordSession::ProgressObserver progress;
  if (progressBar && !options.quiet)
    progress = [&bar](double simulated, double total) { bar.update(simulated, total); };
  const HxRecordStatus recorded = session.record({}, progress);
  bar.clear();
  for (std::size_t i = warningsShown; i < session.warnings().size(); ++i) {
    err << "hxrecord: warning: " << session.warnings()[i] << "\n";
  }
  for (const std::string& message : session.errors()) err << "hxrecord: error: " << message << "\n";
  if (!options.quiet) hxWriteRecordSummary(session.summary(), out);
  return static_cast<int>(recorded);
}
