// hxrecord's manifest (BASE.json): what it says of a recording's columns and files, the status it
// is left with however the recording ends (a watcher process finishes it when hxrecord is
// killed), and its rewrite inside the sample loop, which must not allocate.

#include <sys/wait.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/HxAllocationCounter.h"
#include "tests/support/HxScopedTempDir.h"
#include "tests/tools/HxToolsTestSupport.h"
#include "tools/lib/HxRecord.h"
#include "tools/lib/HxRecordManifest.h"
#include "tools/lib/HxRepair.h"

namespace {

using namespace HxToolsTest;
using Json = nlohmann::json;

// The manifest of the recording `base`; an empty object while there is none.
Json manifestOf(const std::string& base) {
  const Json manifest = Json::parse(readFile(base + ".json"), nullptr, false);
  return manifest.is_object() ? manifest : Json::object();
}

// The CSV's labels without the empty ones of disabled columns, and its data rows.
std::vector<std::string> csvLabels(const std::string& path, std::size_t& rows) {
  std::istringstream csv(readFile(path));
  std::string line, label;
  std::getline(csv, line);
  std::vector<std::string> labels;
  std::istringstream fields(line);
  while (std::getline(fields, label, ',')) labels.push_back(label);
  while (!labels.empty() && labels.back().empty()) labels.pop_back();
  for (rows = 0; std::getline(csv, line);) ++rows;
  return labels;
}

// True once `condition` holds, polled for at most 30 s.
bool eventually(const std::function<bool()>& condition) {
  for (int i = 0; i < 600; ++i) {
    if (condition()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return false;
}

// Every file's samples in the manifest are what the repair counts in it.
void expectFileSamplesAsHeld(const Json& manifest, const std::string& base) {
  const std::vector<HxFileRepair> held = hxRepairRecording(base, true);
  ASSERT_EQ(manifest["files"].size(), held.size());
  for (std::size_t i = 0; i < held.size(); ++i) {
    EXPECT_EQ(base + manifest["files"][i]["extension"].get<std::string>(), held[i].path);
    EXPECT_EQ(manifest["files"][i]["samples"], held[i].samples) << held[i].path;
  }
}

// The default recording, and one whose capture disables a column: the manifest lists exactly the
// CSV's data columns in order, with units (the arms' hinges in radians), the samples of every file,
// how it was made and that it is finished. The built-in model's digest is that of its example file.
TEST(HxManifestTest, DescribesTheColumnsAndFilesOfARecording) {
  const HxScopedTempDir directory("manifest");
  directory.write("capture.xml", captureOf(typesOf("<sm:centerOfMassDataCaptureType><sm:disableFlags count=\"3\">"
                                                   "<group>false true false</group></sm:disableFlags>"
                                                   "</sm:centerOfMassDataCaptureType>"),
                                           "1"));
  const std::vector<std::string> runs[] = {{"-q", "-d", "0.3", "-o", "default/rec"},
                                           {"-q", "-d", "0.3", "-c", "capture.xml", "-o", "disabled/rec"}};
  for (const std::vector<std::string>& arguments : runs) {
    SCOPED_TRACE(arguments.back());
    const RunResult result = run(HX_RECORD_BINARY, arguments, directory.path());
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const std::string base = directory.file(arguments.back());
    const Json manifest = manifestOf(base);
    ASSERT_TRUE(manifest.is_object());
    std::size_t rows = 0;
    const std::vector<std::string> labels = csvLabels(base + ".csv", rows);
    std::vector<std::string> listed;
    for (const Json& column : manifest["columns"]) {
      EXPECT_EQ(column["index"], listed.size());
      listed.push_back(column["label"]);
    }
    EXPECT_EQ(listed, labels);
    EXPECT_EQ(manifest["samples"], rows);
    EXPECT_EQ(rows, 31u);
    expectFileSamplesAsHeld(manifest, base);
    EXPECT_EQ(manifest["status"], "finished");
    EXPECT_EQ(manifest["statusMessage"], "");
    std::vector<std::string> commandLine{"hxrecord"};
    commandLine.insert(commandLine.end(), arguments.begin(), arguments.end());
    EXPECT_EQ(manifest["commandLine"], commandLine);
    EXPECT_EQ(manifest["workingDirectory"], directory.path().string());
    EXPECT_EQ(manifest["files"][0]["file"], "rec.csv");
    EXPECT_EQ(manifest["columns"][0]["unit"], "s");
  }
  const Json manifest = manifestOf(directory.file("default/rec"));
  const Json& columns = manifest["columns"];
  const auto joint = *std::find_if(columns.begin(), columns.end(), [](const Json& column) {
    return column["quantity"] == "jointPositionDataCaptureType";
  });
  EXPECT_EQ(joint["unit"], "rad");
  EXPECT_EQ(joint["frame"], "joint");
  EXPECT_EQ(joint["level"], "link");
  EXPECT_TRUE(joint["endEffectorIndex"].is_null());
  const RunResult digest = run("sha256sum", {std::string(HX_SOURCE_DIR) + "/examples/models/two_arms_table.xml"}, "/");
  EXPECT_EQ(manifest["model"]["sha256"], words(digest.out).at(0));
  EXPECT_TRUE(manifest["model"]["file"].is_null());
  EXPECT_EQ(manifest["model"]["builtIn"], true);
}

// Killed outright, the recording is marked interrupted by the watcher, with the samples the repair
// then finds in each file; stopped by SIGINT, hxrecord says so itself; an unstable simulation
// fails. In process, the watcher is gone when the run returns: no child is left.
TEST(HxManifestTest, FinalStatusOfEveryEnding) {
  const HxScopedTempDir directory("ending");
  directory.write("small.xml", captureOf(typesOf("<sm:basePositionDataCaptureType/>")));
  const std::string killed = directory.file("kill/rec");
  {
    Process recording(HX_RECORD_BINARY, {"-q", "-c", "small.xml", "-s", "2", "-d", "1e6", "-o", killed},
                      directory.path());
    // Past the first flush, so that the files hold samples.
    ASSERT_TRUE(eventually([&] { return manifestOf(killed).value("samples", 0) > 0; }));
    // The watcher is a program of its own, not a fork sharing the recording's memory.
    const std::string self = "/proc/" + std::to_string(recording.pid());
    std::istringstream children(readFile(self + "/task/" + std::to_string(recording.pid()) + "/children"));
    pid_t watcher = 0;
    ASSERT_TRUE(children >> watcher) << "hxrecord has no watcher";
    std::error_code error;
    EXPECT_NE(std::filesystem::read_symlink("/proc/" + std::to_string(watcher) + "/exe", error),
              std::filesystem::read_symlink(self + "/exe", error));
    EXPECT_EQ(recording.stop(SIGKILL).exitCode, 128 + SIGKILL);
  }
  ASSERT_TRUE(eventually([&] { return manifestOf(killed).value("status", "") != "recording"; }));
  const Json afterKill = manifestOf(killed);
  EXPECT_EQ(afterKill["status"], "interrupted");
  EXPECT_NE(afterKill["statusMessage"].get<std::string>().find("ended without finishing"), std::string::npos);
  expectFileSamplesAsHeld(afterKill, killed);
  std::uint64_t fewest = ~std::uint64_t{0};
  for (const HxFileRepair& file : hxRepairRecording(killed, true)) fewest = std::min(fewest, file.samples);
  EXPECT_EQ(afterKill["samples"], fewest);
  EXPECT_GT(fewest, 0u);

  const std::string stopped = directory.file("int/rec");
  Process recording(HX_RECORD_BINARY, {"-q", "-c", "small.xml", "-d", "1e6", "-o", stopped}, directory.path());
  ASSERT_TRUE(eventually([&] { return manifestOf(stopped).value("samples", 0) > 0; }));
  EXPECT_EQ(recording.stop(SIGINT).exitCode, 7);
  const Json afterInterrupt = manifestOf(stopped);
  EXPECT_EQ(afterInterrupt["status"], "interrupted");
  EXPECT_EQ(afterInterrupt["statusMessage"].get<std::string>().rfind("interrupted by SIGINT at t = ", 0), 0u);
  expectFileSamplesAsHeld(afterInterrupt, stopped);

  directory.write("unstable.xml",
                  "<mujoco><option gravity=\"0 0 -1e12\"/><worldbody><body name=\"base\"><joint type=\"hinge\" "
                  "axis=\"0 1 0\"/><geom type=\"capsule\" fromto=\"0 0 0 0.3 0 0\" size=\"0.02\"/></body>"
                  "</worldbody></mujoco>");
  std::ostringstream out, err;
  EXPECT_EQ(hxRecordMain({"-q", "-m", directory.file("unstable.xml"), "-c", directory.file("small.xml"), "-o",
                          directory.file("unstable/rec")},
                         out, err, false),
            1);
  errno = 0;
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
  const Json failed = manifestOf(directory.file("unstable/rec"));
  EXPECT_EQ(failed["status"], "failed");
  EXPECT_EQ(failed["statusMessage"].get<std::string>().rfind("the simulation became unstable at t = ", 0), 0u);
  EXPECT_EQ(failed["samples"], 1);
}

// The rewrite at every flush allocates nothing and leaves a whole manifest (no temporary file);
// the final one carries the message as JSON text and each file's own count.
TEST(HxManifestTest, UpdateAllocatesNothingAndFinishNamesEachFile) {
  const HxScopedTempDir directory("update");
  HxManifestDescription description;
  description.files = {{"r.csv", "Comma-Delimited Text", "textOutputWriter", ".csv"},
                       {"r.mrd", "MRD", "mrdOutputWriter", ".mrd"}};
  description.columns.resize(3);
  HxRecordManifest manifest(hxManifestPath(directory.file("r")), description);
  ASSERT_TRUE(manifest.begin());
  HxAllocationCounter counter;
  for (std::uint64_t samples = 1; samples <= 3; ++samples) EXPECT_TRUE(manifest.update(samples * 1000000, 12.5));
  EXPECT_EQ(counter.allocations(), 0u);
  Json written = manifestOf(directory.file("r"));
  EXPECT_EQ(written["samples"], 3000000);
  EXPECT_EQ(written["simulatedTime"], 12.5);
  EXPECT_EQ(written["files"][1]["samples"], 3000000);
  EXPECT_EQ(written["status"], "recording");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.path()), {}), 1);

  ASSERT_TRUE(manifest.finish(HxRecordStatus::OutputError, "cannot write 'r.mrd': \"full\"", 3, 13.0, {3, 2}));
  written = manifestOf(directory.file("r"));
  EXPECT_EQ(written["status"], "failed");
  EXPECT_EQ(written["statusMessage"], "cannot write 'r.mrd': \"full\"");
  EXPECT_EQ(written["files"][1]["samples"], 2);
  EXPECT_EQ(written["columns"].size(), 3u);
}

}  // namespace
