#pragma once
// HxRecordManifest: BASE.json, the manifest hxrecord writes beside the files of a recording. It
// says what each column is and how the recording was made, and whether it is still under way,
// finished, interrupted or failed.

#include <cstdint>
#include <string>
#include <vector>

#include "analysis/capture/HxColumnDescription.h"
#include "framework/HxTypes.h"
#include "tools/lib/HxRecordOptions.h"

class HxOutputWriterVector;
class HxRecordSession;

/// The manifest's file for the recording whose files are `base` plus an extension: `base`.json.
std::string hxManifestPath(const std::string& base);

/// What a recording is, for its manifest: everything that does not change while it runs.
struct HxManifestDescription {
  /// One input document: a file the user named, or a built-in example (or neither: made by the
  /// program, e.g. a capture of every quantity).
  struct Input {
    std::string file;  ///< the path as given; empty when none was
    std::string name;  ///< the file as given, the built-in example's path, or what made it
    bool builtIn = false;
    std::string sha256;  ///< hex digest of its text; empty when there is no text
  };
  struct File {
    std::string file;  ///< the file's name, relative to the manifest's folder
    std::string format;
    std::string writer;  ///< the writer's element name, e.g. "textOutputWriter"
    std::string extension;
  };
  struct Manipulator {
    HxU32 index = 0;
    std::string name;
    HxU32 joints = 0;
    std::vector<std::string> endEffectors;
  };
  /// The program's name, then its arguments.
  std::vector<std::string> commandLine;
  std::string workingDirectory;
  Input model, capture, writers;
  std::string mode;  ///< "dynamic" or "kinematic"
  double timestep = 0.0;
  double sampleInterval = 0.0;
  double duration = 0.0;
  std::vector<File> files;
  std::vector<Manipulator> manipulators;
  std::vector<HxColumnDescription> columns;
  /// Input files the manifest must never replace.
  std::vector<std::string> inputs;
};

/// The description of the recording `session` is about to make (after a successful prepare()).
HxManifestDescription hxDescribeRecording(const HxRecordSession& session);

/// Gives every HDF5 writer of `writers` the columns of `description` and, as the file's
/// attributes, how the recording is made: "tool", "model", "capture", "writers", "mode",
/// "timestep" and "sampleInterval" (seconds).
void hxDescribeToHdf5Writers(const HxManifestDescription& description, HxOutputWriterVector& writers);

/// The manifest of one recording, always replaced whole: its text goes into BASE.json.tmp, which
/// is renamed over BASE.json, so that a reader never sees half of it. Like the recording's files,
/// which a flush hands to the kernel, it is not forced to the disk: a manifest forced there
/// before its files could, after a power cut, claim samples they lost; and forcing costs the
/// recording tens of milliseconds at every write.
///
///     HxRecordManifest manifest(hxManifestPath(base), hxDescribeRecording(session));
///     manifest.begin();                       // status "recording", 0 samples
///     manifest.update(samples, time);         // at every flush: allocates nothing
///     manifest.finish(status, message, samples, time, fileSamples);
///
/// The text is laid out once, in begin(); update() only fills the numbers that change into a
/// buffer large enough for them, so that it can run inside the sample loop.
class HxRecordManifest {
 public:
  HxRecordManifest(std::string path, const HxManifestDescription& description);
  ~HxRecordManifest();
  HxRecordManifest(const HxRecordManifest&) = delete;
  HxRecordManifest& operator=(const HxRecordManifest&) = delete;

  const std::string& path() const { return path_; }
  /// True once begin() has written the manifest.
  bool active() const { return active_; }

  /// Writes the manifest of a recording just started. False, with error(), when it cannot be
  /// written or would replace one of the inputs; the other calls then write nothing.
  bool begin();
  /// Rewrites it with `samples` taken so far (in every file) and the simulated time reached.
  /// Allocates nothing. False when the write failed (error() says why after finish()).
  bool update(std::uint64_t samples, double simulatedTime);
  /// Writes the final status: "finished" for Success, "interrupted" for Interrupted, "failed"
  /// for any other status, with `message` (one line; empty when finished), the samples of the
  /// recording, the simulated time and the samples each file holds (in the files' order; empty:
  /// `samples` for every file). False, with error(), when it cannot be written.
  bool finish(HxRecordStatus status, const std::string& message, std::uint64_t samples, double simulatedTime,
              const std::vector<std::uint64_t>& fileSamples);

  /// Why the last write failed, one line naming the file; empty when none did.
  const std::string& error() const { return error_; }

 private:
  bool write();

  std::string path_;
  std::string temporary_;
  std::vector<std::string> inputs_;
  bool active_ = false;
  int lastErrno_ = 0;
  std::string error_;
  // The manifest's text between the values that change, and which value follows each piece.
  std::vector<std::string> pieces_;
  std::vector<int> fields_;
  std::string text_;
  // The values that change, as JSON texts.
  std::string updated_, status_, message_, samples_, simulatedTime_;
  std::vector<std::string> fileSamples_;
};

/// Writes the final status of the recording `session` made: `status` as record() returns it,
/// `samples` taken, the message of the first error after `errorsBefore` (or the notice of an
/// interruption), the samples each file holds (counted by the repair after a write failure) and
/// the simulated time of the session's summary.
/// False when the manifest is not written (see HxRecordManifest::finish).
bool hxFinishRecordManifest(HxRecordManifest& manifest, const HxRecordSession& session, HxRecordStatus status,
                            std::uint64_t samples, std::size_t errorsBefore);

/// The current time in UTC as "2026-11-24T10:00:03Z", into `out` (21 characters with the final
/// NUL); allocates nothing.
void hxUtcTimestamp(char (&out)[21]);

/// Replaces the file at `path` with `size` bytes of `data` through `temporary` (written, then
/// renamed over `path`): a reader sees the old text or the new one. Not forced to the disk (see
/// HxRecordManifest). Allocates nothing. False with `errno` set on failure (the
/// temporary file is then removed).
bool hxReplaceFile(const char* path, const char* temporary, const char* data, std::size_t size);
