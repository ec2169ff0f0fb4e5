// The checks hxrecord makes before it records: names of the capture against the model, output
// files against the file system.

#include "tools/lib/HxRecordChecks.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <system_error>

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

namespace fs = std::filesystem;
}  // namespace

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

HxBoolean hxCheckOutputFileName(const std::string& path, const std::vector<std::string>& inputs,
                                std::set<std::string>& seen, std::string& error) {
  std::error_code code;
  if (!seen.insert(path).second) {
    error = "two writers would both write '" + path + "'";
    return false;
  }
  if (fs::is_directory(path, code)) {
    error = "cannot write '" + path + "': it is a directory";
    return false;
  }
  for (const std::string& input : inputs) {
    if (fs::exists(path, code) && fs::equivalent(path, input, code)) {
      error = "output file '" + path + "' is the input file '" + input +
              "'; recording would overwrite it: choose another output base name with --output";
      return false;
    }
  }
  return true;
}

HxBoolean hxCheckOutputWritable(const std::string& outputBase, const HxOutputWriterVector& writers,
                                const std::vector<std::string>& inputs, std::string& error) {
  const fs::path base(outputBase);
  if (!base.has_filename() || base.filename() == "." || base.filename() == "..") {
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
    if (!hxCheckOutputFileName(path, inputs, seen, error)) return false;
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
