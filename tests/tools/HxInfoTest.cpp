// hxinfo on what the other tests do not meet: files cut short in every format (it must say what
// hxrepair would do and count what hxrepair counts), a manifest left "recording" by a process that
// is gone, and its usage errors.

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/HxScopedTempDir.h"
#include "tests/tools/HxToolsTestSupport.h"
#include "tools/lib/HxInfoCommand.h"
#include "tools/lib/HxRepair.h"

namespace {

using namespace HxToolsTest;
using Json = nlohmann::json;

// hxinfo in process: exit status, output and errors.
RunResult hxinfo(const std::vector<std::string>& arguments) {
  std::ostringstream out, err;
  const int status = hxInfoMain(arguments, out, err);
  return {status, out.str(), err.str()};
}

TEST(HxInfoTest, FilesCutShortSayWhatTheRepairWouldDo) {
  const HxScopedTempDir directory("cut");
  const RunResult recorded = run(HX_RECORD_BINARY, {"-q", "-d", "0.5", "-o", "rec"}, directory.path());
  ASSERT_EQ(recorded.exitCode, 0) << recorded.err;
  const std::string base = directory.file("rec");
  for (const HxFileRepair& file : hxRepairRecording(base, true)) {
    // Cut in the middle, as a recording killed while it ran leaves it.
    std::filesystem::resize_file(file.path, std::filesystem::file_size(file.path) / 2 + 7);
  }
  const std::vector<HxFileRepair> inspected = hxRepairRecording(base, true);
  for (const HxFileRepair& file : inspected) {
    SCOPED_TRACE(file.path);
    ASSERT_EQ(file.outcome, HxFileRepair::Outcome::NeedsRepair);
    const RunResult info = hxinfo({"--json", file.path});
    ASSERT_EQ(info.exitCode, 0) << info.err;
    const Json summary = Json::parse(info.out);
    EXPECT_EQ(summary["status"], "cut short");
    EXPECT_EQ(summary["repair"], file.action);
    EXPECT_EQ(summary["samples"], file.samples);
    EXPECT_EQ(summary["columns"].size(), 432u);
    EXPECT_EQ(summary["columns"][0]["unit"], "s");  // from the manifest beside the file
  }
  const RunResult text = hxinfo({base + ".json"});
  EXPECT_EQ(text.exitCode, 0) << text.err;
  EXPECT_NE(text.out.find("status: finished\n"), std::string::npos) << text.out;
  EXPECT_NE(text.out.find("status: cut short: " + inspected[0].action + " ('hxrepair " + base + "' repairs it)\n"),
            std::string::npos)
      << text.out;

  // A manifest still "recording" whose process is gone from this host counts as interrupted.
  const pid_t gone = ::fork();
  if (gone == 0) ::_exit(0);
  ::waitpid(gone, nullptr, 0);
  Json manifest = Json::parse(readFile(base + ".json"));
  manifest["status"] = "recording";
  manifest["process"]["pid"] = gone;
  directory.write("rec.json", manifest.dump(2));
  const Json summary = Json::parse(hxinfo({"--json", base + ".json"}).out);
  EXPECT_EQ(summary["recording"]["status"], "interrupted");
  EXPECT_NE(summary["recording"]["files"][0]["status"].get<std::string>().find("cut short"), std::string::npos);
}

TEST(HxInfoTest, RefusesWhatItCannotRead) {
  const HxScopedTempDir directory("refuse");
  const struct {
    std::vector<std::string> arguments;
    int status;
    std::string message;
  } cases[] = {
      {{}, 2, "hxinfo: no file given"},
      {{"--bogus", "x.csv"}, 2, "hxinfo: unknown option '--bogus'"},
      {{directory.write("notes.txt", "hello\n")}, 1, "notes.txt: is not a recording's file"},
      {{directory.write("bad.csv", "Time,Point Path Index\n0,0\n0.1,x\n")},
       1,
       "bad.csv: holds something other than a row after its row 1"},
      {{directory.write("other.json", "{\"format\": 1}")}, 1, "other.json: is not a recording's manifest"},
      {{directory.file("missing.mrd")}, 1, "hxinfo: error: " + directory.file("missing.mrd") + ": "},
  };
  for (const auto& c : cases) {
    const RunResult result = hxinfo(c.arguments);
    EXPECT_EQ(result.exitCode, c.status) << result.err;
    EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
    EXPECT_EQ(result.out, "");
  }
}

}  // namespace
