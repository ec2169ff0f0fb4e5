// HxRecordManifest: the manifest's content, laid out once and refilled at every write, and the
// atomic replacement of its file.

#include "tools/lib/HxRecordManifest.h"

#include <fcntl.h>
#include <nettle/sha2.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>

#include "analysis/hdf5/HxHdf5OutputWriter.h"
#include "analysis/types/HxDataCaptureLevel.h"
#include "framework/HxNumberText.h"
#include "tools/lib/HxRecordDefaultScene.h"
#include "tools/lib/HxRecordSession.h"
#include "tools/lib/HxRepair.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

// The values that change between two writes; each stands in the laid-out text as a marker.
enum Field { Updated, Status, Message, Samples, SimulatedTime, FileSamples };
const char* const kMarkers[] = {"@hxmanifest-updated@", "@hxmanifest-status@", "@hxmanifest-message@",
                                "@hxmanifest-samples@", "@hxmanifest-time@",   "@hxmanifest-file-samples@"};

std::string hexOf(const std::uint8_t* digest, std::size_t size) {
  static const char kDigits[] = "0123456789abcdef";
  std::string hex;
  for (std::size_t i = 0; i < size; ++i) {
    hex += kDigits[digest[i] >> 4];
    hex += kDigits[digest[i] & 15];
  }
  return hex;
}

std::string sha256(const std::string& text) {
  sha256_ctx context;
  sha256_init(&context);
  sha256_update(&context, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
  std::uint8_t digest[SHA256_DIGEST_SIZE];
  sha256_digest(&context, SHA256_DIGEST_SIZE, digest);
  return hexOf(digest, SHA256_DIGEST_SIZE);
}

std::string sha256OfFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::string();
  sha256_ctx context;
  sha256_init(&context);
  char buffer[1 << 16];
  while (in.read(buffer, sizeof buffer) || in.gcount() > 0) {
    sha256_update(&context, static_cast<std::size_t>(in.gcount()), reinterpret_cast<const std::uint8_t*>(buffer));
  }
  if (in.bad()) return std::string();
  std::uint8_t digest[SHA256_DIGEST_SIZE];
  sha256_digest(&context, SHA256_DIGEST_SIZE, digest);
  return hexOf(digest, SHA256_DIGEST_SIZE);
}

// A document given by the user, or the built-in example in its place.
HxManifestDescription::Input inputOf(const std::string& file, const HxRecordEmbeddedFile& builtIn) {
  HxManifestDescription::Input input;
  if (file.empty()) {
    input.name = builtIn.path;
    input.builtIn = true;
    input.sha256 = sha256(builtIn.text);
  } else {
    input.file = input.name = file;
    input.sha256 = sha256OfFile(file);
  }
  return input;
}

// Empty texts are absent values.
Json textOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

Json inputJson(const HxManifestDescription::Input& input) {
  return Json{{"file", textOrNull(input.file)},
              {"name", input.name},
              {"builtIn", input.builtIn},
              {"sha256", textOrNull(input.sha256)}};
}

Json columnJson(HxU32 index, const HxColumnDescription& column) {
  const bool placed = column.level >= 0;
  const bool link = column.level == static_cast<int>(HxDataCaptureLevel::Link);
  const bool endEffector = column.level == static_cast<int>(HxDataCaptureLevel::EndEffector);
  const char* level = !placed ? nullptr : link ? "link" : endEffector ? "endEffector" : "manipulator";
  return Json{{"index", index},
              {"label", column.label},
              {"quantity", column.quantity},
              {"description", column.description},
              {"level", level != nullptr ? Json(level) : Json(nullptr)},
              {"manipulatorIndex", placed ? Json(column.manipulatorIndex) : Json(nullptr)},
              {"manipulatorName", placed ? textOrNull(column.manipulatorName) : Json(nullptr)},
              {"linkIdentifier", link ? textOrNull(column.linkIdentifier) : Json(nullptr)},
              {"endEffectorIndex", endEffector ? Json(column.endEffectorIndex) : Json(nullptr)},
              {"endEffectorName", endEffector ? textOrNull(column.endEffectorName) : Json(nullptr)},
              {"componentIndex", column.componentIndex},
              {"component", column.component},
              {"unit", textOrNull(column.unit)},
              {"frame", textOrNull(column.frame)},
              {"computed", column.computed}};
}

std::string hostName() {
  char name[256] = {};
  if (::gethostname(name, sizeof name - 1) != 0) return std::string();
  return name;
}

// A number as JSON text, into `out` (whose capacity is kept): a double always with a point or an
// exponent, so that it reads back as a floating-point number.
void numberText(double value, std::string& out) {
  char buffer[HxDoubleTextCapacity + 2];
  char* end = HxDOUBLE2STRING(std::isfinite(value) ? value : 0.0, buffer);
  if (std::find_if(buffer, end, [](char c) { return c == '.' || c == 'e'; }) == end) {
    *end++ = '.';
    *end++ = '0';
  }
  out.assign(buffer, end);
}

void numberText(std::uint64_t value, std::string& out) {
  char buffer[24];
  const int size = std::snprintf(buffer, sizeof buffer, "%" PRIu64, value);
  out.assign(buffer, static_cast<std::size_t>(size));
}
}  // namespace

std::string hxManifestPath(const std::string& base) { return base + ".json"; }

void hxUtcTimestamp(char (&out)[21]) {
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  ::gmtime_r(&now, &utc);
  if (std::strftime(out, sizeof out, "%Y-%m-%dT%H:%M:%SZ", &utc) == 0) out[0] = '\0';
}

bool hxReplaceFile(const char* path, const char* temporary, const char* data, std::size_t size) {
  const int fd = ::open(temporary, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) return false;
  bool ok = true;
  while (ok && size > 0) {
    const ssize_t written = ::write(fd, data, size);
    if (written < 0 && errno == EINTR) continue;
    ok = written > 0;
    if (ok) {
      data += written;
      size -= static_cast<std::size_t>(written);
    }
  }
  int error = ok ? 0 : errno;
  if (::close(fd) != 0 && ok) {
    ok = false;
    error = errno;
  }
  // Exchanged with the old file, which is then removed, rather than renamed over it: ext4 writes
  // a file renamed over another out to the disk first, and after a recording's files were just
  // closed that waits for them too (about 15 ms at the end of a run of the default scene). A
  // first write (no old file) or a file system that cannot exchange takes the plain rename.
  if (ok && ::renameat2(AT_FDCWD, temporary, AT_FDCWD, path, RENAME_EXCHANGE) == 0) {
    ::unlink(temporary);
  } else if (ok && ::rename(temporary, path) != 0) {
    ok = false;
    error = errno;
  }
  if (!ok) {
    ::unlink(temporary);
    errno = error;
  }
  return ok;
}

HxManifestDescription hxDescribeRecording(const HxRecordSession& session) {
  const HxRecordOptions& options = session.options();
  const HxMujocoSimulation& simulation = session.simulation();
  HxManifestDescription description;
  description.commandLine = options.commandLine;
  std::error_code code;
  description.workingDirectory = fs::current_path(code).string();
  description.model = inputOf(options.modelFile, hxRecordDefaultModel());
  if (options.captureAll) {
    description.capture.name = session.captureName();
  } else {
    description.capture = inputOf(options.captureFile, hxRecordDefaultCapture());
  }
  if (!options.formats.empty()) {
    description.writers.name = session.writersName();
  } else {
    description.writers = inputOf(options.writersFile, hxRecordDefaultWriters());
  }
  for (const std::string* input :
       {&options.modelFile, &options.captureFile, &options.writersFile, &options.sceneFile}) {
    if (!input->empty()) description.inputs.push_back(*input);
  }
  description.mode = simulation.mode() == HxMujocoSimulation::Mode::Kinematic ? "kinematic" : "dynamic";
  description.timestep = simulation.timestep();
  description.sampleInterval = session.stepsPerSample() * simulation.timestep();
  description.duration = options.duration;
  const std::string name = fs::path(options.outputBase).filename().string();
  const HxOutputWriterVector& writers = session.writers();
  for (HxU32 i = 0; i < writers.size(); ++i) {
    description.files.push_back({name + writers[i].fileExtension(), writers[i].formatDescriptor(),
                                 std::string(writers[i].token().localName()), writers[i].fileExtension()});
  }
  for (HxU32 m = 0; m < simulation.numberOfManipulators(); ++m) {
    const HxIndividualManipulator& manipulator = simulation.manipulators()[m];
    HxManifestDescription::Manipulator entry{m, manipulator.name(), manipulator.jointCount(), {}};
    for (HxU32 e = 0; e < manipulator.numberOfEndEffectors(); ++e) {
      entry.endEffectors.push_back(simulation.endEffectorName(m, e));
    }
    description.manipulators.push_back(entry);
  }
  description.columns = hxDescribeColumns(session.capture(), &simulation);
  return description;
}

void hxDescribeToHdf5Writers(const HxManifestDescription& description, HxOutputWriterVector& writers) {
  for (HxU32 i = 0; i < writers.size(); ++i) {
    auto* writer = dynamic_cast<HxHdf5OutputWriter*>(&writers[i]);
    if (writer == nullptr) continue;
    writer->setColumnDescriptions(description.columns);
    writer->setFileAttribute("tool", std::string("hxrecord ") + HX_PROJECT_VERSION);
    writer->setFileAttribute("model", description.model.name);
    writer->setFileAttribute("capture", description.capture.name);
    writer->setFileAttribute("writers", description.writers.name);
    writer->setFileAttribute("mode", description.mode);
    writer->setFileAttribute("timestep", HxDOUBLE2STRING(description.timestep));
    writer->setFileAttribute("sampleInterval", HxDOUBLE2STRING(description.sampleInterval));
  }
}

HxRecordManifest::HxRecordManifest(std::string path, const HxManifestDescription& description)
    : path_(std::move(path)), temporary_(path_ + ".tmp"), inputs_(description.inputs) {
  char started[21];
  hxUtcTimestamp(started);
  const auto marker = [](Field field) { return Json(kMarkers[field]); };
  Json files = Json::array();
  for (const HxManifestDescription::File& file : description.files) {
    files.push_back({{"file", file.file},
                     {"format", file.format},
                     {"writer", file.writer},
                     {"extension", file.extension},
                     {"samples", marker(FileSamples)}});
  }
  Json manipulators = Json::array();
  for (const HxManifestDescription::Manipulator& manipulator : description.manipulators) {
    Json endEffectors = Json::array();
    for (const std::string& name : manipulator.endEffectors) endEffectors.push_back(textOrNull(name));
    manipulators.push_back({{"index", manipulator.index},
                            {"name", textOrNull(manipulator.name)},
                            {"joints", manipulator.joints},
                            {"endEffectors", endEffectors}});
  }
  Json columns = Json::array();
  for (HxU32 i = 0; i < description.columns.size(); ++i) columns.push_back(columnJson(i, description.columns[i]));
  const Json manifest{
      {"format", "hxrecord-manifest"},
      {"formatVersion", 1},
      {"library", {{"name", "libhxSimulationAnalysis"}, {"version", HX_PROJECT_VERSION}}},
      {"tool", {{"name", "hxrecord"}, {"version", HX_PROJECT_VERSION}}},
      {"commandLine", description.commandLine.empty() ? Json(nullptr) : Json(description.commandLine)},
      {"workingDirectory", textOrNull(description.workingDirectory)},
      {"process", {{"pid", static_cast<std::int64_t>(::getpid())}, {"host", textOrNull(hostName())}}},
      {"started", started},
      {"updated", marker(Updated)},
      {"status", marker(Status)},
      {"statusMessage", marker(Message)},
      {"model", inputJson(description.model)},
      {"capture", inputJson(description.capture)},
      {"writers", inputJson(description.writers)},
      {"mode", description.mode},
      {"timestep", description.timestep},
      {"sampleInterval", description.sampleInterval},
      {"duration", description.duration},
      {"samples", marker(Samples)},
      {"simulatedTime", marker(SimulatedTime)},
      {"quaternionOrder", {"w", "x", "y", "z"}},
      {"files", files},
      {"manipulators", manipulators},
      {"columns", columns},
  };
  // The laid-out text, cut at each marker (with its quotes): the values are filled in between.
  const std::string text = manifest.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
  // One pass: every marker starts with the same prefix.
  const std::string prefix = "\"@hxmanifest-";
  std::size_t done = 0;
  for (std::size_t next = text.find(prefix); next != std::string::npos; next = text.find(prefix, next + 1)) {
    for (int f = Updated; f <= FileSamples; ++f) {
      const std::size_t length = std::strlen(kMarkers[f]);
      if (text.compare(next + 1, length, kMarkers[f]) != 0 || text.compare(next + 1 + length, 1, "\"") != 0) continue;
      pieces_.push_back(text.substr(done, next - done));
      fields_.push_back(f);
      done = next + length + 2;
      break;
    }
  }
  pieces_.push_back(text.substr(done));
  fileSamples_.resize(description.files.size());
  // Room for every value an update() writes, so that it never allocates.
  for (std::string* value : {&updated_, &status_, &samples_, &simulatedTime_}) value->reserve(40);
  for (std::string& value : fileSamples_) value.reserve(24);
  text_.reserve(text.size() + 40 * (fields_.size() + 1));
}

HxRecordManifest::~HxRecordManifest() = default;

bool HxRecordManifest::begin() {
  std::error_code code;
  for (const std::string& input : inputs_) {
    if (fs::equivalent(input, path_, code)) {
      error_ = "the manifest '" + path_ + "' would replace the input file '" + input + "'; it is not written";
      return false;
    }
  }
  active_ = true;
  message_ = "\"\"";
  if (!update(0, 0.0)) {
    active_ = false;
    error_ = "cannot write the manifest '" + path_ + "': " + std::strerror(lastErrno_);
    return false;
  }
  return true;
}

bool HxRecordManifest::update(std::uint64_t samples, double simulatedTime) {
  if (!active_) return false;
  status_ = "\"recording\"";
  numberText(samples, samples_);
  numberText(simulatedTime, simulatedTime_);
  for (std::string& file : fileSamples_) file = samples_;
  return write();
}

bool HxRecordManifest::finish(HxRecordStatus status, const std::string& message, std::uint64_t samples,
                              double simulatedTime, const std::vector<std::uint64_t>& fileSamples) {
  if (!active_) return false;
  status_ = status == HxRecordStatus::Success       ? "\"finished\""
            : status == HxRecordStatus::Interrupted ? "\"interrupted\""
                                                    : "\"failed\"";
  message_ = Json(status == HxRecordStatus::Success ? std::string() : message)
                 .dump(-1, ' ', false, Json::error_handler_t::replace);
  numberText(samples, samples_);
  numberText(simulatedTime, simulatedTime_);
  for (std::size_t i = 0; i < fileSamples_.size(); ++i) {
    numberText(i < fileSamples.size() ? fileSamples[i] : samples, fileSamples_[i]);
  }
  if (write()) return true;
  error_ = "cannot write the manifest '" + path_ + "': " + std::strerror(lastErrno_);
  return false;
}

bool HxRecordManifest::write() {
  char updated[21];
  hxUtcTimestamp(updated);
  updated_.assign(1, '"');
  updated_.append(updated);
  updated_.push_back('"');
  text_.clear();
  std::size_t file = 0;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    text_ += pieces_[i];
    switch (fields_[i]) {
      case Updated:
        text_ += updated_;
        break;
      case Status:
        text_ += status_;
        break;
      case Message:
        text_ += message_;
        break;
      case Samples:
        text_ += samples_;
        break;
      case SimulatedTime:
        text_ += simulatedTime_;
        break;
      case FileSamples:
        text_ += fileSamples_[file++];
        break;
    }
  }
  text_ += pieces_.back();
  if (hxReplaceFile(path_.c_str(), temporary_.c_str(), text_.data(), text_.size())) return true;
  lastErrno_ = errno;
  return false;
}

bool hxFinishRecordManifest(HxRecordManifest& manifest, const HxRecordSession& session, HxRecordStatus status,
                            std::uint64_t samples, std::size_t errorsBefore) {
  std::string message;
  if (status == HxRecordStatus::Interrupted && !session.notices().empty()) {
    message = session.notices().back();
  } else if (session.errors().size() > errorsBefore) {
    message = session.errors()[errorsBefore];
  }
  // After a write failure the files hold what reached the disk, which the repair counts.
  std::vector<std::uint64_t> fileSamples;
  if (status == HxRecordStatus::OutputError) {
    const std::vector<HxFileRepair> held = hxRepairRecording(session.options().outputBase, true);
    const HxOutputWriterVector& writers = session.writers();
    for (HxU32 i = 0; i < writers.size(); ++i) {
      const std::string path = session.options().outputBase + writers[i].fileExtension();
      std::uint64_t count = 0;
      for (const HxFileRepair& file : held) {
        if (file.path == path && file.outcome != HxFileRepair::Outcome::Missing) count = file.samples;
      }
      fileSamples.push_back(count);
    }
  }
  return manifest.finish(status, message, samples, session.summary().simulatedTime, fileSamples);
}
