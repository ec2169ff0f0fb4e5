// HxRecordDryCheck: whether a recording could write its files, asked of the file system
// without changing it.

#include "tools/lib/HxRecordDryCheck.h"

#include "tools/lib/HxRecordChecks.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <system_error>

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

namespace fs = std::filesystem;

// Empty when this process may write into `path` (a file, or a directory to add files to), else why not.
std::string writeRefusal(const fs::path& path, bool directory) {
  errno = 0;
  if (::access(path.c_str(), directory ? (W_OK | X_OK) : W_OK) == 0) return {};
  return std::strerror(errno != 0 ? errno : EACCES);
}
}  // namespace

HxBoolean hxCheckOutputWouldBeWritable(const std::string& outputBase, const HxOutputWriterVector& writers,
                                       const std::vector<std::string>& inputs, std::string& error) {
  const fs::path base(outputBase);
  if (!base.has_filename() || base.filename() == "." || base.filename() == "..") {
    error = "output base name '" + outputBase +
            "' names a directory; add a file name without extension, for example '" + (base / "recording").string() +
            "'";
    return false;
  }
  const fs::path directory = base.has_parent_path() ? base.parent_path() : fs::path(".");
  std::error_code code;
  const bool directoryExists = fs::exists(directory, code);
  if (!directoryExists) {
    // It would be created with its parents: the nearest ancestor there is must take them.
    fs::path ancestor = directory;
    while (!ancestor.empty() && !fs::exists(ancestor, code)) ancestor = ancestor.parent_path();
    if (ancestor.empty()) ancestor = directory.is_absolute() ? fs::path("/") : fs::path(".");
    const std::string refusal =
        fs::is_directory(ancestor, code) ? writeRefusal(ancestor, true) : std::string(std::strerror(ENOTDIR));
    if (!refusal.empty()) {
      error = "cannot create output directory '" + directory.string() + "': " + refusal;
      return false;
    }
  } else if (!fs::is_directory(directory, code)) {
    error = "output directory '" + directory.string() + "' is not a directory";
    return false;
  }
  std::set<std::string> seen;
  for (HxU32 i = 0; i < writers.size(); ++i) {
    const std::string path = outputBase + writers[i].fileExtension();
    if (!hxCheckOutputFileName(path, inputs, seen, error)) return false;
    if (!directoryExists) continue;
    const std::string refusal = fs::exists(path, code) ? writeRefusal(path, false) : writeRefusal(directory, true);
    if (!refusal.empty()) {
      error = "cannot write '" + path + "': " + refusal;
      return false;
    }
  }
  return true;
}
