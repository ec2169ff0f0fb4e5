// hxmrd on hostile input: what is not a regular file, files cut short, files too large to hold;
// and the repair of a recording killed before it finished.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/HxScopedTempDir.h"
#include "tests/tools/HxToolsTestSupport.h"
#include "tools/lib/HxMrdFile.h"

namespace {

using HxToolsTest::readFile;

struct Outcome {
  int exitCode = -1;
  long peakKilobytes = 0;
  std::string out, err;
};

// Runs hxmrd with `arguments`, killed after `seconds`, and measures its peak memory.
Outcome hxmrd(const HxScopedTempDir& directory, std::vector<std::string> arguments, unsigned seconds = 5) {
  const std::string out = directory.file("out"), err = directory.file("err");
  arguments.insert(arguments.begin(), HX_HXMRD_PATH);
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 1);
    ::dup2(::open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 2);
    ::dup2(::open("/dev/null", O_RDONLY), 0);
    ::alarm(seconds);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  int status = 0;
  struct rusage usage {};
  ::wait4(child, &status, 0, &usage);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, usage.ru_maxrss, readFile(out), readFile(err)};
}

const std::string kBlank = std::string(80, ' ') + "\n";

// A recording as the writer makes it: 34 labels (the last two of disabled columns) and `samples`
// samples of 32 values, 128 bytes each; its header finished, or blank as a recording killed leaves it.
void writeRecording(std::ostream& out, std::uint32_t samples, bool finished) {
  const std::string fields = std::to_string(samples * 34) + "\t34\t" + std::to_string(samples) + "\t1000";
  out << (finished ? fields + kBlank.substr(fields.size()) : kBlank) << "Time  -  Point_Path_Index  -";
  for (int c = 2; c < 32; ++c) out << "  c" << c << "  -";
  out << "    -    -\n\n\n";
  std::string sample, block;
  for (std::uint32_t k = 0; k < samples; ++k) {
    sample.clear();
    for (int c = 0; c < 32; ++c) {
      const float value = c == 0 ? 0.001f * static_cast<float>(k) : c == 1 ? static_cast<float>(k) : 0.25f * c;
      std::uint32_t bits = 0;
      std::memcpy(&bits, &value, 4);
      for (int shift = 24; shift >= 0; shift -= 8) sample += static_cast<char>(bits >> shift);
    }
    block += sample;
    if (block.size() >= (1 << 20) || k + 1 == samples) {
      out.write(block.data(), static_cast<std::streamsize>(block.size()));
      block.clear();
    }
  }
}

std::string recording(std::uint32_t samples, bool finished = true) {
  std::ostringstream out;
  writeRecording(out, samples, finished);
  return out.str();
}

// Anything but a regular file is refused at once (a FIFO without a writer, too); a file cut
// mid-sample gives its whole samples and says what it dropped; the output may not be the input.
TEST(HxMrdSafety, RefusesWhatIsNotARegularFileAndReadsCutFiles) {
  const HxScopedTempDir directory("hxmrd-safety");
  const std::string fifo = directory.file("fifo"), socketPath = directory.file("socket");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  const int listening = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, socketPath.c_str(), sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  const std::string cut =
      directory.write("cut.mrd", recording(2, false) + recording(3).substr(recording(2).size(), 12));
  const std::string warning = "hxmrd: warning: " + cut + ": ";
  const std::vector<std::pair<std::vector<std::string>, Outcome>> cases = {
      {{directory.path().string()}, {1, 0, "", "hxmrd: error: " + directory.path().string() + ": is a directory\n"}},
      {{"/dev/zero"}, {1, 0, "", "hxmrd: error: /dev/zero: is not a regular file\n"}},
      {{"--csv", fifo}, {1, 0, "", "hxmrd: error: " + fifo + ": is not a regular file\n"}},
      {{socketPath}, {1, 0, "", "hxmrd: error: " + socketPath + ": is not a regular file\n"}},
      {{"--csv", cut},
       {0, 0, "",
        warning + "header is blank (the recording was never finished); counts recovered from the file\n" + warning +
            "each sample holds 32 values for 34 labels; the last 2 labels have no column\n" + warning +
            "the file was cut short: dropped 12 bytes of a partial last sample\n"}},
      {{"-o", cut, cut}, {1, 0, "", "hxmrd: error: " + cut + ": is the file being read\n"}},
  };
  const std::string csv = hxmrd(directory, {"--csv", directory.write("two.mrd", recording(2))}).out;
  for (const auto& [arguments, expected] : cases) {
    const Outcome run = hxmrd(directory, arguments);
    EXPECT_EQ(run.exitCode, expected.exitCode) << arguments.back();
    EXPECT_EQ(run.err, expected.err) << arguments.back();
    if (run.exitCode == 0) {
      EXPECT_EQ(run.out, csv);  // the whole samples, as a finished file of them gives them
    }
  }
  ::close(listening);
}

// A recording killed before it finished (blank header), cut at any offset: the file reads as its
// whole samples; inspection changes nothing; the repair makes exactly the finished file of those
// samples, which a second repair leaves alone; a file cut inside its header or labels is left as it
// is.
TEST(HxMrdSafety, RepairsRecordingsCutAnywhere) {
  const HxScopedTempDir directory("hxmrd-repair");
  const std::string path = directory.file("run.mrd");
  const std::string finished = recording(4);
  const std::size_t data = recording(0).size(), sample = 128;
  HxMrdFile whole, file;
  std::string error;
  ASSERT_TRUE(hxParseMrd(finished, {}, whole, error)) << error;
  std::vector<std::size_t> cuts = {0, 80, 81, data / 2, data - 1};
  for (std::size_t k = 0; k <= 4; ++k) {
    for (std::size_t d : {std::size_t{0}, std::size_t{1}, std::size_t{4}, std::size_t{5}, sample - 1}) {
      if (data + k * sample + d <= finished.size()) cuts.push_back(data + k * sample + d);
    }
  }
  for (const std::size_t cut : cuts) {
    const std::string bytes = cut < 81 ? finished.substr(0, cut) : kBlank + finished.substr(81, cut - 81);
    directory.write("run.mrd", bytes);
    SCOPED_TRACE("cut at " + std::to_string(cut));
    if (cut < data) {
      EXPECT_EQ(hxRepairMrdFile(path, false).outcome, HxFileRepair::Outcome::Failed);
      EXPECT_EQ(readFile(path), bytes);
      continue;
    }
    const std::size_t samples = (cut - data) / sample, dropped = cut - data - samples * sample;
    const std::string bytesDropped = std::to_string(dropped) + (dropped == 1 ? " byte" : " bytes");
    const std::string partial = dropped ? " " + bytesDropped + " of a partial last sample" : "";
    const std::string action = (dropped ? "cut back to its last whole sample (" + bytesDropped +
                                              " of a partial sample dropped) and given its header"
                                        : std::string("given its header")) +
                               " for 32 values per sample";
    ASSERT_TRUE(hxLoadMrdFile(path, {}, file, error)) << error;
    EXPECT_EQ(file.values, std::vector<float>(whole.values.begin(), whole.values.begin() + samples * 32));
    EXPECT_EQ(file.warnings.back() == "the file was cut short: dropped" + partial, dropped != 0);

    const HxFileRepair inspection = hxRepairMrdFile(path, true);
    EXPECT_EQ(inspection.outcome, HxFileRepair::Outcome::NeedsRepair);
    EXPECT_EQ(inspection.action, "would be " + action);
    EXPECT_EQ(readFile(path), bytes);
    const HxFileRepair repair = hxRepairMrdFile(path, false);
    EXPECT_EQ(repair.outcome, HxFileRepair::Outcome::Repaired);
    EXPECT_EQ(repair.samples, samples);
    EXPECT_EQ(repair.action, action);
    EXPECT_EQ(readFile(path), recording(static_cast<std::uint32_t>(samples)));
    const HxFileRepair again = hxRepairMrdFile(path, false);
    EXPECT_EQ(again.outcome, HxFileRepair::Outcome::Finished);
    EXPECT_EQ(again.samples, samples);
    EXPECT_EQ(readFile(path), recording(static_cast<std::uint32_t>(samples)));
  }
  EXPECT_EQ(hxRepairMrdFile(directory.file("none.mrd"), false).outcome, HxFileRepair::Outcome::Missing);
}

// The samples are streamed: a 64 MB recording (blank header, cut mid-sample, so that its layout
// is checked over every sample too) is printed in little memory; --header reads no sample, even
// of a sparse file of 400 GB that reading would take minutes.
TEST(HxMrdSafety, StreamsLargeFilesInLittleMemory) {
  const HxScopedTempDir directory("hxmrd-large");
  const std::string path = directory.file("large.mrd");
  {
    std::ofstream out(path, std::ios::binary);
    writeRecording(out, 1 << 19, false);
    out << "cut at";
  }
  const Outcome run = hxmrd(directory, {"--csv", "-o", "/dev/null", path}, 30);
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NE(run.err.find("dropped 6 bytes of a partial last sample"), std::string::npos) << run.err;
#if !defined(__SANITIZE_ADDRESS__)
  EXPECT_LT(run.peakKilobytes, 32 * 1024);
#endif

  const std::string fields = std::to_string(static_cast<HxU32>(100u * 1000000000u)) + "\t100\t1000000000\t1000";
  const std::string sparse = directory.write("sparse.mrd", fields + kBlank.substr(fields.size()));
  std::string labels;
  for (int c = 0; c < 100; ++c) labels += (c ? "  c" : "c") + std::to_string(c) + "  -";
  std::ofstream(sparse, std::ios::app) << labels << "\n\n\n";
  if (::truncate(sparse.c_str(), static_cast<off_t>(std::filesystem::file_size(sparse) + 400000000000ull)) != 0) {
    GTEST_SKIP() << "no sparse file of 400 GB here";
  }
  const Outcome header = hxmrd(directory, {"--header", sparse}, 5);
  EXPECT_EQ(header.exitCode, 0) << header.err;
  EXPECT_NE(header.out.find("# values per sample: 100\n# samples in file: 1000000000\n"), std::string::npos);
}

}  // namespace
