// hxmrd: the loader (unfinished files, disabled columns, the unrecoverable ones) and the command
// (output, warnings on standard error, exit status, what is not a regular file, large files).

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/HxScopedTempDir.h"
#include "tests/tools/HxToolsTestSupport.h"
#include "tools/lib/HxMrdFile.h"

namespace {

using HxToolsTest::readFile;
using HxToolsTest::RunResult;

float fromBits(std::uint32_t bits) {
  float value = 0.0f;
  std::memcpy(&value, &bits, 4);
  return value;
}

// An MRD file as the writer lays it out; an empty `header` leaves the header blank.
std::string mrd(const std::string& header, const std::vector<std::string>& labels, const std::vector<float>& values) {
  std::string bytes = header + std::string(80 - header.size(), ' ') + "\n";
  for (std::size_t i = 0; i < labels.size(); ++i) bytes += (i ? "  " : "") + labels[i] + "  -";
  bytes += "\n\n\n";
  for (const float value : values) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, 4);
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(bits >> shift);
  }
  return bytes;
}

// Where header and data disagree, the values per sample and the sample count are recovered and
// every recovery is said: disabled columns leave the last labels without a column; a blank
// header takes the labels less the empty ones at the end, or else the one layout that keeps
// every sample's time and path-point index; an option decides over the header.
TEST(HxMrdFile, RecoversCountsAndSaysHow) {
  const std::string blank = "header is blank (the recording was never finished); counts recovered from the file";
  const std::string ti[] = {"Time", "Point_Path_Index"};
  auto none = [](int n, int labels) {
    return "each sample holds " + std::to_string(n) + " values for " + std::to_string(labels) + " labels; the last " +
           (labels - n == 1 ? std::string("label has") : std::to_string(labels - n) + " labels have") + " no column";
  };
  const auto expect = [](const std::string& bytes, HxU32 option, HxU32 valuesPerSample, HxU32 samples,
                         const std::vector<std::string>& warnings) {
    HxMrdFile file;
    std::string error;
    ASSERT_TRUE(hxParseMrd(bytes, HxMrdLoadOptions{option}, file, error)) << error;
    EXPECT_EQ(file.valuesPerSample, valuesPerSample);
    EXPECT_EQ(file.sampleCount, samples);
    EXPECT_EQ(file.warnings, warnings);
  };
  // Disabled columns.
  expect(mrd("12\t6\t2\t1000", {ti[0], ti[1], "a", "b", "", ""}, {0, 0, 1, 2, 0.5f, 1, 3, 4}), 0, 4, 2,
         {"header gives 6 channels but each of the 2 samples holds 4 values; the last 2 labels have no column "
          "(columns disabled)"});
  // A blank header, with and without samples.
  expect(mrd("", {ti[0], ti[1], "a", "", ""}, {0, 0, 7, 0.1f, 0, 8, 0.2f, 1, 9}), 0, 3, 3, {blank, none(3, 5)});
  expect(mrd("", {ti[0], ti[1], "x"}, {}), 0, 3, 0, {blank});
  // The one layout keeping time and index.
  expect(mrd("", {ti[0], ti[1], "Manip[1]:Manipulator_Power", "a", "b", ""},
             {0.0f, 0, 0.3f, 0.7f, 0.25f, 1, 0.35f, 0.75f, 0.5f, 1, 0.45f, 0.85f}),
         0, 4, 3, {blank, none(4, 6)});
  // The option over the header, over a blank header, and settling an ambiguous size.
  expect(mrd("8\t4\t2\t1000", {ti[0], ti[1], "a", "b"}, std::vector<float>(8)), 2, 2, 4,
         {"header gives 4 channels; using 2 values per sample as asked", none(2, 4),
          "header gives 2 samples; the file holds 4"});
  expect(mrd("", {ti[0], ti[1], "a", ""}, std::vector<float>(6)), 3, 3, 2, {blank, none(3, 4)});
  expect(mrd("", {ti[0], ti[1], "a", "b", "c", "d", "e"}, std::vector<float>(12)), 4, 4, 3, {blank, none(4, 7)});
}

// What cannot be recovered is refused with one clear sentence.
TEST(HxMrdFile, RefusesWhatCannotBeRecovered) {
  const std::string blank(80, ' ');
  const std::string malformed = "malformed label line: expected labels joined by \"  -  \" and ending in \"  -\"";
  const std::string noLayout =
      " fits no layout of 2 to 4 values per sample starting with time and path-point index; "
      "give --channels N";
  const struct {
    std::string bytes;
    HxU32 option;
    std::string error;
  } cases[] = {
      {"short", 0, "file too short for an MRD header (5 bytes, at least 81 needed)"},
      {std::string(81, ' '), 0, "no line end at offset 80: not an MRD header"},
      {mrd("hello", {"Time"}, {}), 0, "header is neither blank nor four tab-separated numbers: \"hello\""},
      {mrd("1\t2\t3", {"Time"}, {}), 0, "header is neither blank nor four tab-separated numbers: \"1\t2\t3\""},
      {blank + "\nTime  -  Point_Pa", 0,
       "truncated label line: no end of the labels (three line ends) after offset 81"},
      {blank + "\nTime  -  Point Path Index  -\n\n\n", 0, malformed},
      {blank + "\nTime  -  Point_Path_Index\n\n\n", 0, malformed},
      {mrd("", {"Time", "Point_Path_Index", "a", "b"}, {0, 0.5f, 1, 2, 0.5f}), 0, "the data (5 values)" + noLayout},
      {mrd("20\t4\t5\t1000", {"Time", "Point_Path_Index", "a", "b"}, {0, 0.5f, 1, 2, 0.5f, 0, 1}), 0,
       "the data (7 values)" + noLayout},
      {mrd("", {"Time", "Point_Path_Index", "a", "b", "c"}, {5, 0, 5, 5, 5, 0, 5, 0, 5, 5, 5, 0}), 0,
       "the data (12 values) fits several layouts (2, 3, 4 values per sample); give --channels N"},
  };
  for (const auto& c : cases) {
    HxMrdFile file;
    std::string error;
    EXPECT_FALSE(hxParseMrd(c.bytes, HxMrdLoadOptions{c.option}, file, error)) << c.error;
    EXPECT_EQ(error, c.error);
  }
}

// Runs hxmrd in `directory` with `arguments` (separated by blanks), for at most `seconds`.
RunResult hxmrd(const HxScopedTempDir& directory, const std::string& arguments, unsigned seconds = 10) {
  return HxToolsTest::run(HX_HXMRD_PATH, HxToolsTest::words(arguments), directory.path().string(), seconds);
}

// Each invocation's status, standard output and standard error, exactly: the header fields as
// comment lines, then the CSV, each value the shortest text of its float (0x0A bytes in the data
// do not end the labels); --csv the CSV only, --header every label; recoveries as warnings on
// standard error naming the file, the labels without a column listed; a file that cannot be read
// or recovered gives the loader's sentence and status 1, as does anything but a regular file (a
// FIFO without a writer, too) and an output that is the input; a usage error status 2.
TEST(HxMrdTool, EveryInvocation) {
  const HxScopedTempDir directory("hxmrd");
  const std::string run =
      directory.write("run.mrd", mrd("6\t3\t2\t1000", {"Time", "Point_Path_Index", "x"},
                                     {fromBits(0x0A0A0A0Au), 0, 0.1f, 0.5f, 2, fromBits(0x3F0A0A0Au)}));
  const std::string unfinished =
      directory.write("unfinished.mrd", mrd("", {"Time", "Point_Path_Index", "a", ""}, {0, 0, 1, 0.5f, 1, 2}));
  const std::string noLayout =
      directory.write("nolayout.mrd", mrd("", {"Time", "Point_Path_Index", "a"}, {0, 0.5f, 1, 2, 3}));
  const std::string cut = directory.write("cut.mrd", readFile(unfinished) + "x");
  const std::string missing = directory.file("missing.mrd"), fifo = directory.file("fifo"),
                    here = directory.path().string();
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  const std::string csv = "Time,Point_Path_Index,x\n6.6463464e-33,0,0.1\n0.5,2,0.5392157\n";
  const std::string runHeader = "# file: " + run +
                                "\n# total values: 6\n# channels: 3\n# samples: 2\n# fourth value: 1000\n"
                                "# labels: 3\n# values per sample: 3\n# samples in file: 2\n";
  const auto warnings = [](const std::string& file) {
    const std::string warning = "hxmrd: warning: " + file + ": ";
    return warning + "header is blank (the recording was never finished); counts recovered from the file\n" + warning +
           "each sample holds 3 values for 4 labels; the last label has no column\n";
  };
  const std::string tryHelp = "\nTry 'hxmrd --help'.\n";
  const std::vector<std::pair<std::string, RunResult>> cases = {
      {run, {0, runHeader + csv, ""}},
      {"--csv " + run, {0, csv, ""}},
      {"--header " + run, {0, runHeader + "# label 0: Time\n# label 1: Point_Path_Index\n# label 2: x\n", ""}},
      {unfinished,
       {0,
        "# file: " + unfinished +
            "\n# header: blank\n# labels: 4\n# values per sample: 3\n# samples in file: 2\n"
            "# label without a column: 3: \nTime,Point_Path_Index,a\n0,0,1\n0.5,1,2\n",
        warnings(unfinished)}},
      {"--csv " + cut,
       {0, "Time,Point_Path_Index,a\n0,0,1\n0.5,1,2\n",
        warnings(cut) + "hxmrd: warning: " + cut +
            ": the file was cut short: dropped 1 byte of a partial last sample\n"}},
      {missing, {1, "", "hxmrd: error: " + missing + ": cannot open \"" + missing + "\"\n"}},
      {here, {1, "", "hxmrd: error: " + here + ": is a directory\n"}},
      {"/dev/zero", {1, "", "hxmrd: error: /dev/zero: is not a regular file\n"}},
      {"--csv " + fifo, {1, "", "hxmrd: error: " + fifo + ": is not a regular file\n"}},
      {"-o " + cut + " " + cut, {1, "", "hxmrd: error: " + cut + ": is the file being read\n"}},
      {"", {2, "", "hxmrd: no MRD file given" + tryHelp}},
      {"--bogus " + noLayout, {2, "", "hxmrd: unknown option '--bogus'" + tryHelp}},
      {"--channels x " + noLayout, {2, "", "hxmrd: --channels needs a whole number above 0, not 'x'" + tryHelp}},
      {"--channels", {2, "", "hxmrd: --channels needs a value" + tryHelp}},
      {noLayout + " " + run, {2, "", "hxmrd: one MRD file at a time" + tryHelp}},
  };
  for (const auto& [arguments, expected] : cases) {
    const RunResult r = hxmrd(directory, arguments);
    EXPECT_EQ(r.exitCode, expected.exitCode) << arguments;
    EXPECT_EQ(r.out, expected.out) << arguments;
    EXPECT_EQ(r.err, expected.err) << arguments;
  }
  // -o writes the output to a file; --channels (also as --channels=N) rescues a size no layout fits.
  const std::string written = directory.file("copy.csv");
  EXPECT_EQ(hxmrd(directory, "--csv -o " + written + " " + run).exitCode, 0);
  EXPECT_EQ(readFile(written), csv);
  EXPECT_EQ(hxmrd(directory, noLayout).exitCode, 1);
  EXPECT_EQ(hxmrd(directory, "--csv --channels=5 " + noLayout).out, "Time,Point_Path_Index,a,,\n0,0.5,1,2,3\n");
  const RunResult help = hxmrd(directory, "--help");
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_NE(help.out.find("Values per sample are found in this order"), std::string::npos);
}

// The samples are streamed: a 64 MB recording (blank header, cut mid-sample, so that its layout
// is checked over every sample too) is printed in little memory; --header reads no sample, even
// of a sparse file of 400 GB that reading would take minutes.
TEST(HxMrdTool, StreamsLargeFilesInLittleMemory) {
  const HxScopedTempDir directory("hxmrd-large");
  {  // written a sample at a time: hxmrd's peak memory counts what this process held when it started
    std::vector<std::string> labels = {"Time", "Point_Path_Index"};
    for (int c = 2; c < 34; ++c) labels.push_back(c < 32 ? "c" + std::to_string(c) : "");
    std::ofstream out(directory.write("large.mrd", mrd("", labels, {})), std::ios::app | std::ios::binary);
    std::vector<float> sample(32);
    for (std::uint32_t k = 0; k < (1u << 19); ++k) {
      for (int c = 0; c < 32; ++c) sample[c] = c == 0 ? 0.001f * k : c == 1 ? static_cast<float>(k) : 0.25f * c;
      out << mrd("", {}, sample).substr(84);  // past the blank header and the empty label line
    }
    out << "cut at";
  }
  const RunResult run = hxmrd(directory, "--csv -o /dev/null large.mrd", 30);
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NE(run.err.find("dropped 6 bytes of a partial last sample"), std::string::npos) << run.err;
#if !defined(__SANITIZE_ADDRESS__)
  EXPECT_LT(run.peakKilobytes, 32 * 1024);
#endif

  std::vector<std::string> labels;
  for (int c = 0; c < 100; ++c) labels.push_back("c" + std::to_string(c));
  const std::string sparse = directory.write(
      "sparse.mrd",
      mrd(std::to_string(static_cast<HxU32>(100u * 1000000000u)) + "\t100\t1000000000\t1000", labels, {}));
  if (::truncate(sparse.c_str(), static_cast<off_t>(std::filesystem::file_size(sparse) + 400000000000ull)) != 0) {
    GTEST_SKIP() << "no sparse file of 400 GB here";
  }
  const RunResult header = hxmrd(directory, "--header " + sparse, 5);
  EXPECT_EQ(header.exitCode, 0) << header.err;
  EXPECT_NE(header.out.find("# values per sample: 100\n# samples in file: 1000000000\n"), std::string::npos);
}

}  // namespace
