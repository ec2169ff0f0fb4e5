// HxRecordSession: loading, checking and recording one hxrecord scene.

#include "tools/lib/HxRecordSession.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/storage/HxSystemStoredData.h"
#include "analysis/writers/HxLabelCheck.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxPrint.h"
#include "tools/lib/HxManifestWatch.h"
#include "tools/lib/HxRecordCaptureAll.h"
#include "tools/lib/HxRecordChecks.h"
#include "tools/lib/HxRecordConfiguration.h"
#include "tools/lib/HxRecordDefaultScene.h"
#include "tools/lib/HxRecordDryCheck.h"
#include "tools/lib/HxRecordManifest.h"
#include "tools/lib/HxRecordPlot.h"
#include "tools/lib/HxRecordQueue.h"
#include "tools/lib/HxRecordSceneFile.h"
#include "tools/lib/HxRecordSignals.h"
#include "tools/lib/HxRecordText.h"
#include "tools/lib/HxRepair.h"

namespace {
// What hxrecord says when a step fails.
std::string unstableMessage(const HxMujocoSimulation& simulation) {
  return "the simulation became unstable at t = " + hxSecondsText(simulation.time()) + " s" +
         (simulation.lastError().empty() ? std::string() : ": " + hxOneLine(simulation.lastError())) +
         "; the files hold the samples before it";
}

// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

namespace fs = std::filesystem;

// The library's warnings and errors of `messages`, one line each, go to `warnings`.
void keepWarnings(const Hx::ScopedPrintCapture& messages, std::vector<std::string>& warnings) {
  for (const Hx::PrintRecord& message : messages.records()) {
    if (message.type >= Hx::Print::Warning) warnings.push_back(hxOneLine(message.text));
  }
}
}  // namespace

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
  status = checkLabels();
  if (status != HxRecordStatus::Success) return status;
  std::string error;
  if (!options_.plotDisplay.empty() && !hxCheckPlotInputs(options_.plotDisplay, writers_, error)) {
    return fail(HxRecordStatus::ConfigurationError, error);
  }
  // The library itself stays silent about files it cannot write: check them first (--check
  // only asks, changing nothing).
  std::vector<std::string> inputs;
  for (const std::string* input : {&options_.modelFile, &options_.captureFile, &options_.writersFile,
                                   &options_.sceneFile, &options_.plotDisplay}) {
    if (!input->empty()) inputs.push_back(*input);
  }
  if (!(options_.check ? hxCheckOutputWouldBeWritable : hxCheckOutputWritable)(options_.outputBase, writers_, inputs,
                                                                               error)) {
    return fail(HxRecordStatus::OutputError, error);
  }
  prepared_ = true;
  return HxRecordStatus::Success;
}

HxRecordStatus HxRecordSession::loadModel() {
  Hx::ScopedPrintCapture messages;
  HxBoolean loaded = false;
  // The scene side file's motors go into the model as it is loaded, its paths after.
  HxRecordScene scene;
  std::string sceneError;
  if (!options_.sceneFile.empty() && !hxReadRecordScene(options_.sceneFile, scene, sceneError)) {
    return fail(HxRecordStatus::ConfigurationError, sceneError);
  }
  if (options_.modelFile.empty()) {
    modelName_ = std::string("built-in ") + hxRecordDefaultModel().path;
    loaded = simulation_->loadString(hxRecordDefaultModel().text, scene.extras, options_.mode);
  } else {
    modelName_ = options_.modelFile;
    std::error_code code;
    if (!fs::exists(options_.modelFile, code)) {
      return fail(HxRecordStatus::ModelError, "model file '" + options_.modelFile + "' does not exist");
    }
    if (!fs::is_regular_file(options_.modelFile, code)) {
      return fail(HxRecordStatus::ModelError, "model file '" + options_.modelFile + "' is not a regular file");
    }
    loaded = simulation_->loadFile(options_.modelFile, scene.extras, options_.mode);
  }
  if (!loaded && !simulation_->lastExtrasError().empty()) {
    return fail(HxRecordStatus::ConfigurationError,
                "scene file '" + options_.sceneFile + "': " + hxOneLine(simulation_->lastExtrasError()));
  }
  if (!loaded) {
    return fail(HxRecordStatus::ModelError, simulation_->lastError().empty() ? "cannot load model '" + modelName_ + "'"
                                                                             : hxOneLine(simulation_->lastError()));
  }
  keepWarnings(messages, warnings_);
  if (simulation_->numberOfManipulators() == 0) {
    return fail(HxRecordStatus::ModelError, "model '" + modelName_ +
                                                "' holds no manipulator: no tree under the world body carries a "
                                                "hinge or slide joint");
  }
  if (!hxApplyRecordScenePaths(scene, *simulation_, options_.sceneFile, modelName_, sceneError)) {
    return fail(HxRecordStatus::ConfigurationError, sceneError);
  }
  const std::vector<std::string> sceneWarnings = hxRecordSceneWarnings(*simulation_);
  warnings_.insert(warnings_.end(), sceneWarnings.begin(), sceneWarnings.end());
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
  // --formats' writer list is read as the built-in one is.
  const HxFormatsWriterList formats = hxFormatsWriterList(options_.formats);
  const HxRecordEmbeddedFile formatsList{formats.name.c_str(), formats.text};
  const Document documents[] = {
      {options_.captureFile, hxRecordDefaultCapture(), "capture configuration", capture_,
       HxSimAnalysis::HxGeneralCaptureToken, captureName_},
      {options_.writersFile, options_.formats.empty() ? hxRecordDefaultWriters() : formatsList, "writer list", writers_,
       HxSimAnalysis::HxOutputWriterVectorToken, writersName_},
  };
  for (const Document& document : documents) {
    if (&document.root == &capture_ && options_.captureAll) {
      captureName_ = "--capture-all";
      hxCaptureAll(*simulation_, capture_);
      continue;
    }
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
  if (!std::isfinite(timestep) || timestep <= 0.0) {
    return fail(HxRecordStatus::ModelError, "model '" + modelName_ + "' has a timestep of " + hxSecondsText(timestep) +
                                                " s; expected a positive, finite number of seconds");
  }
  const double steps = std::round(options_.duration / timestep);
  if (steps < 1.0) {
    return fail(HxRecordStatus::BadOption, "duration " + hxSecondsText(options_.duration) +
                                               " s is shorter than the model's timestep (" + hxSecondsText(timestep) +
                                               " s)");
  }
  if (steps > static_cast<double>(std::numeric_limits<HxU32>::max())) {
    return fail(HxRecordStatus::BadOption, "duration " + hxSecondsText(options_.duration) +
                                               " s is too long for a timestep of " + hxSecondsText(timestep) + " s");
  }
  const double stride = std::max(1.0, std::round(options_.sampleInterval / timestep));
  if (options_.sampleInterval < timestep * (1.0 - 1e-9)) {
    return fail(HxRecordStatus::BadOption, "sample interval " + hxSecondsText(options_.sampleInterval) +
                                               " s is shorter than the model's timestep (" + hxSecondsText(timestep) +
                                               " s)");
  }
  totalSteps_ = static_cast<HxU32>(steps);
  stepsPerSample_ = static_cast<HxU32>(std::min(stride, steps));
  const double used = stepsPerSample_ * timestep;
  if (std::fabs(used - options_.sampleInterval) > 1e-9 * options_.sampleInterval) {
    warnings_.push_back("sample interval " + hxSecondsText(options_.sampleInterval) + " s rounded to " +
                        hxSecondsText(used) + " s (" + std::to_string(stepsPerSample_) + " timestep(s) of " +
                        hxSecondsText(timestep) + " s)");
  }
  return HxRecordStatus::Success;
}

HxRecordStatus HxRecordSession::checkLabels() {
  const std::vector<HxUnsafeLabel> unsafe = hxFindUnsafeLabels(capture_, writers_);
  if (unsafe.empty()) return HxRecordStatus::Success;
  const std::string captureText = options_.captureAll            ? std::string()
                                  : options_.captureFile.empty() ? hxRecordDefaultCapture().text
                                                                 : hxReadTextFile(options_.captureFile);
  // One message per text, naming every reason and every file it would break.
  for (std::size_t first = 0; first < unsafe.size();) {
    const HxUnsafeLabel& label = unsafe[first];
    std::size_t last = first;
    std::vector<std::string> reasons, files;
    auto addOnce = [](std::vector<std::string>& list, const std::string& item) {
      if (std::find(list.begin(), list.end(), item) == list.end()) list.push_back(item);
    };
    for (; last < unsafe.size() && unsafe[last].source == label.source && unsafe[last].text == label.text &&
           unsafe[last].capture == label.capture && unsafe[last].level == label.level &&
           unsafe[last].linkIdentifier == label.linkIdentifier &&
           unsafe[last].endEffectorIndex == label.endEffectorIndex && unsafe[last].column == label.column &&
           unsafe[last].quantity == label.quantity;
         ++last) {
      addOnce(reasons, unsafe[last].reason);
      addOnce(files, options_.outputBase + unsafe[last].extension);
    }
    const HxU32 line = hxLineOfXmlText(captureText, label.text);
    std::string where = captureName_ + (line != 0 ? ":" + std::to_string(line) : std::string()) + ": ";
    std::string what;
    const std::string manipulator = "manipulator " + std::to_string(label.manipulatorIndex);
    switch (label.source) {
      case HxUnsafeLabel::Source::SystemLabel:
        what = "the configuration's label";
        break;
      case HxUnsafeLabel::Source::LinkIdentifier:
        what = "the link identifier of " + manipulator + " (the model's body of that name)";
        break;
      case HxUnsafeLabel::Source::DataLabel:
        what = "column label " + std::to_string(label.column) + " of '" + label.quantity + "' (" + manipulator +
               (label.level == HxDataCaptureLevel::Link ? ", link '" + label.linkIdentifier + "'"
                : label.level == HxDataCaptureLevel::EndEffector
                    ? ", end effector " + std::to_string(label.endEffectorIndex)
                    : std::string()) +
               ")";
        break;
    }
    errors_.push_back(where + what + " " + hxQuotedForMessage(label.text) + " holds " + hxJoinedList(reasons) +
                      ", which would corrupt " + hxJoinedList(files) + "; change the label");
    first = last;
  }
  return HxRecordStatus::ConfigurationError;
}

HxU32 HxRecordSession::systemPathPointIndex() const {
  HxU32 index = std::numeric_limits<HxU32>::max();
  for (HxU32 m = 0; m < simulation_->numberOfManipulators(); ++m) {
    if (!simulation_->pathPoints(m).empty()) index = std::min(index, simulation_->pathPointIndex(m));
  }
  return index == std::numeric_limits<HxU32>::max() ? 0 : index;
}

// What one recording's sample loop records into, and what happened in it.
struct HxRecordSession::Run {
  HxSystemStoredData& recorder;
  HxRecordManifest& manifest;
  const SampleObserver& sampleObserver;
  const ProgressObserver& progressObserver;
  HxRecordStatus status = HxRecordStatus::Success;
  // Samples saved (handed to the writers) and the time of the last of them.
  HxU32 samples = 0;
  double lastTime = 0.0;
};

HxRecordStatus HxRecordSession::record(const SampleObserver& sampleObserver, const ProgressObserver& progressObserver) {
  if (!prepared_) return fail(HxRecordStatus::SimulationFailed, "nothing to record: the session is not prepared");
  using Clock = std::chrono::steady_clock;
  // The library's messages while recording, from either thread.
  std::mutex messagesMutex;
  std::vector<Hx::PrintRecord> messages;
  const Hx::ScopedPrintCapture capturedMessages(
      [&](Hx::Print::PrintType type, const std::string& context, const std::string& text) {
        const std::lock_guard<std::mutex> lock(messagesMutex);
        messages.push_back(Hx::PrintRecord{type, context, text});
      });
  // HDF5 files carry what the manifest says of their columns and of the recording.
  const HxManifestDescription description = hxDescribeRecording(*this);
  hxDescribeToHdf5Writers(description, writers_);
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(writers_);
  recorder.allocateStorage(capture_);
  // The manifest says what is being recorded; the watcher process marks it interrupted should
  // this process die before it writes the final status. It starts before any thread does.
  const std::size_t errorsBefore = errors_.size();
  HxRecordManifest manifest(hxManifestPath(options_.outputBase), description);
  HxManifestWatch watch;
  if (manifest.begin()) {
    watch.start(manifest.path(), options_.outputBase, options_.watcherProgram);
  } else {
    warnings_.push_back(manifest.error());
  }

  Run run{recorder, manifest, sampleObserver, progressObserver};
  const auto start = Clock::now();
  if (options_.threads >= 2) {
    recordOnTwoThreads(run);
  } else {
    recordOnOneThread(run);
  }
  const auto end = Clock::now();
  for (const Hx::PrintRecord& message : messages) {
    if (message.type >= Hx::Print::Warning) warnings_.push_back(hxOneLine(message.text));
  }
  HxRecordStatus status = run.status;
  // After a write failure the simulation may have gone on beyond the last sample saved.
  const bool writeFailed = recorder.failedOutputFile() >= 0;
  const double reached = writeFailed ? run.lastTime : simulation_->time();
  if (writeFailed) {
    reportWriteFailure(recorder, run.samples, reached);
    status = HxRecordStatus::OutputError;
  } else if (stopFlag_ != nullptr && *stopFlag_ != 0 && status == HxRecordStatus::Success) {
    notices_.push_back("interrupted by " + std::string(hxSignalName(*stopFlag_)) + " at t = " + hxSecondsText(reached) +
                       " s: the files are finished and hold " + std::to_string(run.samples) + " samples");
    status = HxRecordStatus::Interrupted;
  }
  status = summarize(status, run.samples, reached, std::chrono::duration<double>(end - start).count());
  const bool written = hxFinishRecordManifest(manifest, *this, status, run.samples, errorsBefore);
  if (!written && manifest.active()) warnings_.push_back(manifest.error());
  watch.release(written);
  return status;
}

void HxRecordSession::recordOnOneThread(Run& run) {
  using Clock = std::chrono::steady_clock;
  HxMujocoSimulation& simulation = *simulation_;
  HxSystemStoredData& recorder = run.recorder;
  const double total = totalSteps_ * simulation.timestep();
  recorder.beginSaveToFile(options_.outputBase);
  auto takeSample = [&]() {
    capture_.captureData(simulation);
    recorder.saveCapturedData(simulation.time(), systemPathPointIndex(), capture_);
    if (run.sampleObserver) run.sampleObserver(run.samples, simulation);
    ++run.samples;
    run.lastTime = simulation.time();
    if (run.progressObserver) run.progressObserver(simulation.time(), total);
  };
  // Whatever stops the recording, it stops after a whole sample, so that every file ends with it.
  auto stopRequested = [&]() { return recorder.failedOutputFile() >= 0 || (stopFlag_ != nullptr && *stopFlag_ != 0); };

  // A sample at the start, then one every stepsPerSample_ steps; the files reach the disk at
  // least once a second, so that a recording killed outright loses no more than that.
  auto lastFlush = Clock::now();
  takeSample();
  for (HxU32 step = 1; step <= totalSteps_ && !stopRequested(); ++step) {
    if (!simulation.step()) {
      run.status = fail(HxRecordStatus::SimulationFailed, unstableMessage(simulation));
      break;
    }
    if (step % stepsPerSample_ != 0) continue;
    takeSample();
    const auto now = Clock::now();
    if (now - lastFlush >= std::chrono::seconds(1)) {
      recorder.flushOutputFiles();
      run.manifest.update(run.samples, simulation.time());
      lastFlush = now;
    }
  }
  recorder.finishSaveToFile();
}

std::size_t HxRecordSession::queueSlots(std::size_t values) {
  const std::size_t slots = kQueueBytes / ((values + 1) * sizeof(double));
  return std::clamp<std::size_t>(slots, 64, 8192);
}

void HxRecordSession::recordOnTwoThreads(Run& run) {
  using Clock = std::chrono::steady_clock;
  HxMujocoSimulation& simulation = *simulation_;
  HxSystemStoredData& recorder = run.recorder;
  const double total = totalSteps_ * simulation.timestep();
  // The recording thread saves from a copy of the configuration, into which each sample's
  // capture buffers are copied: the capture itself, with the history some quantities keep
  // between samples, stays on this thread.
  HxSystemDataCapture recordingCapture(capture_);
  const HxCaptureBuffers captured(capture_);
  const HxCaptureBuffers saved(recordingCapture);
  HxSampleQueue queue(queueSlots(captured.size()), captured.size());

  // The recording thread owns the recorder from here to its end: it opens the files, saves
  // every sample in order, flushes the files (and rewrites the manifest) at least once a
  // second and finishes them. After a write failure it takes no more samples, which stops the
  // stepping.
  auto recordSamples = [&]() {
    recorder.beginSaveToFile(options_.outputBase);
    auto lastFlush = Clock::now();
    while (const HxQueuedSample* sample = queue.next()) {
      saved.copyFrom(sample->values.data());
      recorder.saveCapturedData(sample->time, sample->pathPointIndex, recordingCapture);
      ++run.samples;
      run.lastTime = sample->time;
      queue.release();
      const auto now = Clock::now();
      if (recorder.failedOutputFile() < 0 && now - lastFlush >= std::chrono::seconds(1)) {
        recorder.flushOutputFiles();
        run.manifest.update(run.samples, run.lastTime);
        lastFlush = now;
      }
      if (recorder.failedOutputFile() >= 0) {
        queue.stop();
        break;
      }
    }
    recorder.finishSaveToFile();
  };
  // The stop signals are handled on this thread, where the stop flag is read: the recording
  // thread starts with them blocked.
  sigset_t stopSignals, previousMask;
  sigemptyset(&stopSignals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&stopSignals, signal);
  pthread_sigmask(SIG_BLOCK, &stopSignals, &previousMask);
  std::thread recording;
  try {
    recording = std::thread(recordSamples);
  } catch (const std::system_error&) {
    // No thread to be had (a limit on threads or memory): the recording is made on this one.
    pthread_sigmask(SIG_SETMASK, &previousMask, nullptr);
    recordOnOneThread(run);
    return;
  }
  pthread_sigmask(SIG_SETMASK, &previousMask, nullptr);
  // So that top, ps and perf show which thread is which.
  pthread_setname_np(recording.native_handle(), "hxrecord-write");

  // False when the recording thread takes no more samples.
  HxU32 taken = 0;
  auto takeSample = [&]() {
    HxQueuedSample* const slot = queue.acquire();
    if (slot == nullptr) return false;
    capture_.captureData(simulation);
    captured.copyTo(slot->values.data());
    slot->time = simulation.time();
    slot->pathPointIndex = systemPathPointIndex();
    queue.publish();
    if (run.sampleObserver) run.sampleObserver(taken, simulation);
    ++taken;
    if (run.progressObserver) run.progressObserver(simulation.time(), total);
    return true;
  };
  bool taking = takeSample();
  // As with one thread, stepping stops at a stop signal and at a write failure.
  for (HxU32 step = 1; taking && step <= totalSteps_ && !queue.stopped() && !(stopFlag_ != nullptr && *stopFlag_ != 0);
       ++step) {
    if (!simulation.step()) {
      run.status = fail(HxRecordStatus::SimulationFailed, unstableMessage(simulation));
      break;
    }
    if (step % stepsPerSample_ == 0) taking = takeSample();
  }
  queue.close();
  recording.join();
}

void HxRecordSession::reportWriteFailure(const HxSystemStoredData& recorder, HxU32 samples, double time) {
  const HxU32 failed = static_cast<HxU32>(recorder.failedOutputFile());
  const HxOutputFileState state = recorder.outputFileState(failed);
  const std::string path = options_.outputBase + writers_[failed].fileExtension();
  errors_.push_back("cannot write '" + path +
                    "': " + (state.error != 0 ? std::strerror(state.error) : std::string("the write failed")) +
                    "; recording stopped at t = " + hxSecondsText(time) + " s after " + std::to_string(samples) +
                    " samples");
  // What each file really holds: a file cut short holds fewer whole samples than were handed to it.
  bool cut = false;
  for (const HxFileRepair& file : hxRepairRecording(options_.outputBase, true)) {
    if (file.outcome == HxFileRepair::Outcome::Missing) continue;
    const bool whole = file.outcome == HxFileRepair::Outcome::Finished;
    cut = cut || !whole;
    errors_.push_back("'" + file.path + "' holds " + std::to_string(file.samples) + " samples" +
                      (whole ? " and is finished" : ", cut short: " + file.action));
  }
  if (cut)
    errors_.push_back("once there is room again, 'hxrepair " + options_.outputBase + "' repairs the files cut short");
}

HxRecordStatus HxRecordSession::summarize(HxRecordStatus status, HxU32 samples, double simulatedTime, double wallTime) {
  summary_ = HxRecordSummary();
  summary_.samples = samples;
  // The columns of a data line are the sample record's elements, as the library shapes it.
  HxSystemDataStorage record;
  capture_.allocateStorage(record);
  summary_.columns = record.elementSize();
  summary_.simulatedTime = simulatedTime;
  summary_.wallTime = wallTime;
  summary_.sampleInterval = stepsPerSample_ * simulation_->timestep();
  summary_.mode = simulation_->mode();
  // Every file must have been written after all.
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
