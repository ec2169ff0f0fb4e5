#pragma once
// Repairing the files of a recording that was killed or crashed before it was finished.

#include <cstdint>
#include <string>
#include <vector>

#include "framework/HxTypes.h"

/// What repairing (or inspecting) one file of a recording found and did.
struct HxFileRepair {
  enum class Outcome {
    Finished,     ///< the file was finished by its writer: nothing to do, nothing changed
    Repaired,     ///< the file was cut short and has been given what it lacked
    NeedsRepair,  ///< inspection only: the file was cut short and would be repaired
    Missing,      ///< no such file
    Failed,       ///< the file cannot be understood or rewritten; `action` says why
  };
  std::string path;
  /// The writer's format name ("Comma-Delimited Text", "XML", ...).
  std::string format;
  Outcome outcome = Outcome::Failed;
  /// Whole samples the file holds (after the repair when one was made).
  std::uint64_t samples = 0;
  /// One sentence: what was done (or would be done), or why it failed.
  std::string action;
};

/// Writes `head`, then bytes [from, to) of the file at `path`, then `tail` into a temporary
/// file beside it, flushes it to the disk and renames it over `path`, so that the file is either
/// the old one or the new one whatever happens. Returns false with `error` set on failure (the
/// original file is then untouched and the temporary file removed).
HxBoolean hxRewriteFile(const std::string& path, const std::string& head, std::uint64_t from, std::uint64_t to,
                        const std::string& tail, std::string& error);

/// Repairs (or, when `inspectOnly`, only inspects) every file of the recording `base`: `base`
/// plus each writer's extension, one entry per extension in the writers' order, a file that
/// does not exist reported as Missing. Reads each file as a stream, never whole.
std::vector<HxFileRepair> hxRepairRecording(const std::string& base, bool inspectOnly);

/// Repairs every file of the recording `base` (the path without extension), or with
/// `inspectOnly` only says what a repair would do, changing nothing: BASE.csv, BASE.xml,
/// BASE.mrd, BASE.m and BASE.nb, one result each in that order (Outcome::Missing for a file
/// that is not there). Each file is read in pieces from its start and its end, and its samples
/// counted in one streaming pass, so that inspecting large files is cheap.
std::vector<HxFileRepair> hxRepairRecording(const std::string& base, bool inspectOnly);
