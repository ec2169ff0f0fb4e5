// The hxmrd command: output, warnings on standard error, and exit codes.

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct Result {
  int status = -1;
  std::string out;
  std::string err;
};

std::string slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

class HxMrdTool : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() /
           ("hx_hxmrd_" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) + "_" +
            std::to_string(::getpid()));
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  /// Runs hxmrd with `arguments`, standard output and error kept apart.
  Result hxmrd(const std::string& arguments) {
    Result r;
#ifndef HX_HXMRD_PATH
    ADD_FAILURE() << "hxmrd was not built (HX_BUILD_TOOLS is off)";
    return r;
#else
    const fs::path out = dir_ / "stdout.txt";
    const fs::path err = dir_ / "stderr.txt";
    const std::string command = std::string(HX_HXMRD_PATH) + " " + arguments + " >" + out.string() + " 2>" + err.string();
    const int status = std::system(command.c_str());
    r.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    r.out = slurp(out);
    r.err = slurp(err);
    return r;
#endif
  }

  std::string writeFile(const std::string& name, const std::string& bytes) {
    const fs::path path = dir_ / name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path.string();
  }

  fs::path dir_;
};

std::string bigEndian(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, 4);
  return std::string{static_cast<char>(bits >> 24), static_cast<char>(bits >> 16), static_cast<char>(bits >> 8),
                     static_cast<char>(bits)};
}

std::string mrd(const std::string& header, const std::vector<std::string>& labels, const std::vector<float>& values) {
  std::string bytes = header + std::string(80 - header.size(), ' ') + "\n";
  for (std::size_t i = 0; i < labels.size(); ++i) bytes += (i ? "  " : "") + labels[i] + "  -";
  bytes += "\n\n\n";
  for (const float v : values) bytes += bigEndian(v);
  return bytes;
}

// Default output: the header fields as comment lines, then the CSV of labels and samples, each
// value the shortest text of its float.
TEST_F(HxMrdTool, PrintsHeaderFieldsAndCsv) {
  const std::string path =
      writeFile("run.mrd", mrd("6\t3\t2\t1000", {"Time", "Point_Path_Index", "x"}, {0, 0, 0.1f, 0.5f, 2, -1e-20f}));
  const Result r = hxmrd(path);
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(r.out, "# file: " + path +
                       "\n"
                       "# total values: 6\n# channels: 3\n# samples: 2\n# fourth value: 1000\n"
                       "# labels: 3\n# values per sample: 3\n# samples in file: 2\n"
                       "Time,Point_Path_Index,x\n"
                       "0,0,0.1\n"
                       "0.5,2,-1e-20\n");

  const Result csv = hxmrd("--csv " + path);
  EXPECT_EQ(csv.out, "Time,Point_Path_Index,x\n0,0,0.1\n0.5,2,-1e-20\n");
  const Result header = hxmrd("--header " + path);
  EXPECT_NE(header.out.find("# label 1: Point_Path_Index\n"), std::string::npos) << header.out;
  EXPECT_EQ(header.out.find("0.5,2"), std::string::npos);

  const std::string written = (dir_ / "copy.csv").string();
  EXPECT_EQ(hxmrd("--csv -o " + written + " " + path).status, 0);
  EXPECT_EQ(slurp(written), csv.out);
}

// A blank header is recovered from the file's size, with a warning on standard error only.
TEST_F(HxMrdTool, RecoversBlankHeaderWithWarning) {
  const std::string path = writeFile("unfinished.mrd", mrd("", {"Time", "Point_Path_Index", "a", ""}, {0, 0, 1, 0.5f, 1, 2}));
  const Result r = hxmrd("--csv " + path);
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "hxmrd: warning: " + path +
                       ": header is blank (the recording was never finished); counts recovered from the file\n"
                       "hxmrd: warning: " +
                       path + ": each sample holds 3 values for 4 labels; the last label has no column\n");
  EXPECT_EQ(r.out, "Time,Point_Path_Index,a\n0,0,1\n0.5,1,2\n");
}

// A finished file with disabled columns: more labels than values; the labels without a column
// are listed, the CSV has one column per value.
TEST_F(HxMrdTool, DisabledColumnsMismatch) {
  const std::string path =
      writeFile("disabled.mrd", mrd("10\t5\t2\t1000", {"Time", "Point_Path_Index", "a", "", ""}, {0, 0, 1, 0.5f, 1, 2}));
  const Result r = hxmrd(path);
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.err.find("header gives 5 channels but each of the 2 samples holds 3 values; the last 2 labels have no "
                       "column (columns disabled)"),
            std::string::npos)
      << r.err;
  EXPECT_NE(r.out.find("# label without a column: 3: \n"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("Time,Point_Path_Index,a\n0,0,1\n0.5,1,2\n"), std::string::npos) << r.out;
}

// Unrecoverable files end with a clear error and status 1; usage errors with status 2.
TEST_F(HxMrdTool, ErrorsAndExitStatus) {
  const std::string truncated = writeFile("truncated.mrd", std::string(80, ' ') + "\nTime  -  Point_Pa");
  Result r = hxmrd(truncated);
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "hxmrd: error: " + truncated +
                       ": truncated label line: no end of the labels (three line ends) after offset 81\n");
  EXPECT_EQ(r.out, "");

  const std::string noLayout = writeFile("nolayout.mrd", mrd("", {"Time", "Point_Path_Index", "a"}, {0, 0, 1, 2, 3}));
  r = hxmrd(noLayout);
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("fits no layout of 2 to 3 values per sample"), std::string::npos) << r.err;
  EXPECT_EQ(hxmrd("--channels 5 " + noLayout).status, 0);

  EXPECT_EQ(hxmrd((dir_ / "missing.mrd").string()).status, 1);
  EXPECT_EQ(hxmrd("").status, 2);
  EXPECT_EQ(hxmrd("--bogus " + noLayout).status, 2);
  EXPECT_EQ(hxmrd("--channels x " + noLayout).status, 2);
  EXPECT_EQ(hxmrd("--channels").status, 2);

  r = hxmrd("--help");
  EXPECT_EQ(r.status, 0);
  EXPECT_NE(r.out.find("--channels N"), std::string::npos);
  EXPECT_NE(r.out.find("Values per sample are found in this order"), std::string::npos);
}

}  // namespace
