// hxrecord under faults and hostile input: a full disk, signals, a kill, labels that would break
// a format, outputs that are inputs. Each is run as a user meets it, on the built programs, and
// the files are checked with the tools users read them with.

#include <signal.h>
#include <sys/mount.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/HxScopedTempDir.h"
#include "tests/tools/HxToolsTestSupport.h"

namespace {

namespace fs = std::filesystem;
using namespace HxToolsTest;

RunResult hxrecord(const std::vector<std::string>& arguments, const HxScopedTempDir& directory) {
  return run(HX_RECORD_BINARY, arguments, directory.path().string());
}

// Waits until `path` holds at least `bytes`, at most 20 s.
bool waitForSize(const std::string& path, std::uintmax_t bytes) {
  std::error_code code;
  for (int i = 0; i < 400; ++i) {
    if (fs::file_size(path, code) >= bytes && !code) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return false;
}

bool have(const char* program) {
  return std::system(("command -v " + std::string(program) + " >/dev/null").c_str()) == 0;
}

// What the readers say of the five files of `base`: xmllint on the XML, Octave on the .m (its
// data matrix must have as many rows as the CSV has samples), hxmrd on the MRD (no recovery
// warning) and the notebook's closing comment. Empty when all are content.
std::string readersComplain(const std::string& base) {
  std::string complaints;
  const std::string csv = readFile(base + ".csv");
  const auto rows = std::count(csv.begin(), csv.end(), '\n') - 1;
  if (csv.empty() || csv.back() != '\n') complaints += "CSV ends mid-row; ";
  if (have("xmllint")) {
    const RunResult xml = run("xmllint", {"--noout", base + ".xml"}, "/");
    if (xml.exitCode != 0) complaints += "xmllint: " + xml.err;
  }
  if (have("octave-cli")) {
    const RunResult m =
        run("octave-cli",
            {"--no-init-file", "--quiet", "--eval", "source('" + base + ".m'); printf('%d\\n', size(Data, 1))"}, "/");
    if (m.exitCode != 0 || m.out != std::to_string(rows) + "\n") complaints += "Octave: " + m.out + m.err;
  }
  const RunResult mrd = run(HX_HXMRD_PATH, {"--header", base + ".mrd"}, "/");
  if (mrd.exitCode != 0 || !mrd.err.empty()) complaints += "hxmrd: " + mrd.err;
  const std::string nb = readFile(base + ".nb");
  if (nb.find("End of Mathematica Notebook file.") == std::string::npos) complaints += "notebook unclosed; ";
  return complaints;
}

RunResult hxrepair(const std::string& base) { return run(HX_REPAIR_BINARY, {base}, "/"); }

// SIGINT, SIGTERM and SIGHUP stop a long recording at a sample, on one thread or two: every file
// is finished, holds the samples the message gives, and the exit status says the recording was
// interrupted.
TEST(HxRecordFaultTest, SignalsFinishTheFiles) {
  const std::pair<int, const char*> cases[] = {{SIGINT, "1"}, {SIGTERM, "2"}, {SIGHUP, "2"}};
  for (const auto& [signal, threads] : cases) {
    SCOPED_TRACE(signal);
    const HxScopedTempDir directory("signal");
    Process recording(HX_RECORD_BINARY, {"-q", "-d", "100000", "--threads", threads, "-o", "run/rec"},
                      directory.path());
    ASSERT_TRUE(waitForSize(directory.file("run/rec.csv"), 200000));
    const RunResult result = recording.stop(signal);
    EXPECT_EQ(result.exitCode, 7) << result.err;
    EXPECT_NE(result.err.find("hxrecord: interrupted by SIG"), std::string::npos) << result.err;
    const std::string csv = readFile(directory.file("run/rec.csv"));
    const auto rows = std::count(csv.begin(), csv.end(), '\n') - 1;
    EXPECT_NE(result.err.find(" hold " + std::to_string(rows) + " samples\n"), std::string::npos) << result.err;
    EXPECT_EQ(readersComplain(directory.file("run/rec")), "");
  }
}

// After SIGKILL the files hold what was flushed: with rows this small, 1 MiB buffers would
// still hold every sample after 2.5 s; the flush once a second put them in the files. hxrepair
// makes every file readable.
TEST(HxRecordFaultTest, RepairAfterKill) {
  const HxScopedTempDir directory("kill");
  directory.write("small.xml", captureOf(typesOf("<sm:basePositionDataCaptureType/>")));
  Process recording(HX_RECORD_BINARY, {"-q", "-c", "small.xml", "-s", "2", "-d", "1e6", "-o", "rec"}, directory.path());
  std::this_thread::sleep_for(std::chrono::milliseconds(2500));
  EXPECT_EQ(recording.stop(SIGKILL).exitCode, 128 + SIGKILL);
  const std::string base = directory.file("rec");
  const std::string csv = readFile(base + ".csv");
  EXPECT_GE(std::count(csv.begin(), csv.end(), '\n'), 4) << csv;
  EXPECT_LT(csv.size(), 65536u);
  EXPECT_NE(readersComplain(base), "");
  const RunResult repaired = hxrepair(base);
  EXPECT_EQ(repaired.exitCode, 0) << repaired.out << repaired.err;
  EXPECT_EQ(readersComplain(base), "");
}

// A full file system, on one thread or two: hxrecord stops with status 6, names the file and
// what each file holds; hxrepair then makes the files readable.
TEST(HxRecordFaultTest, FullDiskIsReported) {
  for (const char* threads : {"1", "2"}) {
    SCOPED_TRACE(threads);
    const HxScopedTempDir directory("full");
    const std::string mountPoint = directory.file("small");
    fs::create_directories(mountPoint);
    if (mount("hxrecord-test", mountPoint.c_str(), "tmpfs", 0, "size=600k") != 0) {
      GTEST_SKIP() << "cannot mount a small tmpfs here (needs root): " << std::strerror(errno);
    }
    const RunResult result = hxrecord({"-q", "-d", "60", "--threads", threads, "-o", mountPoint + "/rec"}, directory);
    EXPECT_EQ(result.exitCode, 6) << result.err;
    EXPECT_NE(result.err.find("No space left on device"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("hxrecord: error: cannot write '" + mountPoint + "/rec."), std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("samples"), std::string::npos) << result.err;
    // Room again: the repair needs space for its temporary copy.
    ASSERT_EQ(mount("hxrecord-test", mountPoint.c_str(), "tmpfs", MS_REMOUNT, "size=8m"), 0);
    const RunResult repaired = hxrepair(mountPoint + "/rec");
    EXPECT_EQ(repaired.exitCode, 0) << repaired.out << repaired.err;
    EXPECT_EQ(readersComplain(mountPoint + "/rec"), "");
    umount2(mountPoint.c_str(), MNT_DETACH);
  }
}

// Refusals before anything is written: a label that would run code in the MATLAB file, an output
// that is an input, "." as a base name, a NaN timestep, a summary that cannot be printed.
TEST(HxRecordFaultTest, HostileInputIsRefused) {
  const HxScopedTempDir directory("refuse");
  const std::string injection = "q'];fid=fopen('X','w');fclose(fid);x=['";
  directory.write("capture.xml",
                  captureOf(typesOf("<sm:basePositionDataCaptureType>\n<sm:dataLabels count=\"7\"><group>a b "
                                    "c d e f " +
                                    injection +
                                    "</group></sm:dataLabels>"
                                    "</sm:basePositionDataCaptureType>")));
  const std::string model = readFile(std::string(HX_SOURCE_DIR) + "/examples/models/two_arms_table.xml");
  directory.write("nan.xml", std::string(model).replace(model.find("timestep=\"0.002\""), 16, "timestep=\"nan\""));
  directory.write("model.xml", model);

  const struct {
    std::vector<std::string> arguments;
    int status;
    std::string message;
  } cases[] = {
      {{"-c", "capture.xml", "-o", "out/rec"},
       4,
       "hxrecord: error: capture.xml:6: column label 6 of 'Base Positions' (manipulator 0) '" + injection +
           "' holds a single quote and a comma, which would corrupt out/rec.csv, out/rec.mrd and out/rec.m"},
      {{"-m", "model.xml", "-o", "model"}, 6, "hxrecord: error: output file 'model.xml' is the input file 'model.xml'"},
      {{"-o", "."}, 6, "names a directory"},
      {{"-o", "out/.."}, 6, "names a directory"},
      {{"-m", "nan.xml"}, 3, "hxrecord: error: model 'nan.xml' has a timestep of nan s"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.arguments.front() + " " + c.arguments[1]);
    const RunResult result = hxrecord(c.arguments, directory);
    EXPECT_EQ(result.exitCode, c.status) << result.err;
    EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
  }
  EXPECT_FALSE(fs::exists(directory.file("X")));
  EXPECT_FALSE(fs::exists(directory.file("out/rec.m")));
  EXPECT_EQ(readFile(directory.file("model.xml")), model);

  const RunResult full =
      run("sh", {"-c", std::string(HX_RECORD_BINARY) + " -d 0.1 -o summary/rec >/dev/full"}, directory.path());
  EXPECT_EQ(full.exitCode, 6);
  EXPECT_NE(full.err.find("hxrecord: error: cannot print the summary: No space left on device"), std::string::npos)
      << full.err;
}

}  // namespace
