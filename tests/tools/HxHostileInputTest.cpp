// hxrecord on hostile input: entity bombs, external entities and XInclude, deep or huge documents,
// absurd counts, broken encodings, a label that would inject code.
// Each row is one input given to the built program as --capture, --writers or --model (the files
// in hostile/, or made here when too big or binary to keep); hxrecord must refuse it with the
// row's exit status within 5 s, with a short message whose every line is its own and names no
// internal type, and without the text of a file the input points at (/etc/passwd).

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <ostream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/HxScopedTempDir.h"
#include "tests/tools/HxToolsTestSupport.h"

namespace {

namespace fs = std::filesystem;
using HxToolsTest::readFile;

const std::string kCapture = "<?xml version=\"1.0\"?>\n<sm:generalCapture " + HxToolsTest::kSm;

std::string repeated(const std::string& text, std::size_t times) {
  std::string result;
  while (times-- > 0) result += text;
  return result;
}

std::string deepNesting() {
  return kCapture + ">" + repeated("<a>", 100000) + repeated("</a>", 100000) + "</sm:generalCapture>";
}
std::string unknownElements() { return kCapture + ">" + repeated("<unknown/>", 1000000) + "</sm:generalCapture>"; }
std::string manyAttributes() {
  std::string text = kCapture;
  for (int i = 0; i < 40000; ++i) text += " a" + std::to_string(i) + "=\"1\"";
  return text + "/>";
}
std::string nuls() { return std::string(4096, '\0'); }
std::string invalidUtf8() {
  return kCapture + "><sm:systemDataCaptureLabel>\xff\xfe\xc3\x28</sm:systemDataCaptureLabel></sm:generalCapture>";
}
// Bytes that are no EUC-JP: the conversion fails inside the XML parser.
std::string brokenEucJp() { return "<?xml version=\"1.0\" encoding=\"EUC-JP\"?>\n<a>\xff\xff\xff</a>\n"; }

struct Hostile {
  const char* name;
  const char* option;
  int status;             // 3 model, 4 configuration
  const char* file;       // in tests/tools/hostile/, or
  std::string (*make)();  // made in the test's directory
};

const Hostile kHostile[] = {
    {"BillionLaughs", "--capture", 4, "billion_laughs.xml", nullptr},
    {"ExternalEntity", "--capture", 4, "external_entity.xml", nullptr},
    {"ExternalDtd", "--capture", 4, "external_dtd.xml", nullptr},
    {"ParameterEntity", "--capture", 4, "parameter_entity.xml", nullptr},
    {"NetworkDtd", "--writers", 4, "network_dtd.xml", nullptr},
    {"XInclude", "--capture", 4, "xinclude.xml", nullptr},
    {"CountMax", "--capture", 4, "count_max.xml", nullptr},
    {"CountNegative", "--capture", 4, "count_negative.xml", nullptr},
    {"CountFloat", "--capture", 4, "count_float.xml", nullptr},
    {"WritersCountMax", "--writers", 4, "writers_count_max.xml", nullptr},
    {"WritersUnknownWriter", "--writers", 4, "writers_unknown.xml", nullptr},
    {"Truncated", "--capture", 4, "truncated.xml", nullptr},
    {"UnknownEncoding", "--capture", 4, "unknown_encoding.xml", nullptr},
    {"MatlabInjection", "--capture", 4, "matlab_injection.xml", nullptr},
    {"ModelExternalEntity", "--model", 3, "model_external_entity.xml", nullptr},
    {"DeepNesting", "--capture", 4, nullptr, deepNesting},
    {"UnknownElements", "--capture", 4, nullptr, unknownElements},
    {"ManyAttributes", "--capture", 4, nullptr, manyAttributes},
    {"Nuls", "--capture", 4, nullptr, nuls},
    {"ModelNuls", "--model", 3, nullptr, nuls},
    {"InvalidUtf8", "--capture", 4, nullptr, invalidUtf8},
    {"BrokenEucJp", "--capture", 4, nullptr, brokenEucJp},
};

void PrintTo(const Hostile& row, std::ostream* out) { *out << row.name; }

class HxHostileInputTest : public testing::TestWithParam<Hostile> {};

TEST_P(HxHostileInputTest, RefusedBrieflyAndCleanly) {
  const Hostile& row = GetParam();
  const HxScopedTempDir directory("hostile");
  const std::string input = directory.file("input.xml");
  if (row.file != nullptr) {
    fs::copy_file(fs::path(HX_SOURCE_DIR) / "tests/tools/hostile" / row.file, input);
  } else {
    directory.write("input.xml", row.make());
  }
  // A short duration bounds a run that wrongly records; an alarm one that hangs.
  const auto start = std::chrono::steady_clock::now();
  const HxToolsTest::RunResult result = HxToolsTest::run(
      HX_RECORD_BINARY, {row.option, input, "--duration", "0.02", "-q"}, directory.path().string(), 20);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

  EXPECT_EQ(result.exitCode, row.status) << result.err;
  EXPECT_LT(seconds, 5.0);
  EXPECT_FALSE(result.err.empty());
  EXPECT_LE(result.err.size(), 8192u);
  std::istringstream lines(result.err);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_EQ(line.rfind("hxrecord: ", 0), 0u) << line;
    std::string text = line;  // the input's own path does not count
    for (std::size_t at; (at = text.find(input)) != std::string::npos;) text.erase(at, input.size());
    EXPECT_FALSE(std::regex_search(text, std::regex("::|\\bHx[A-Z]"))) << line;
  }
  EXPECT_LE(count, 25);
  // Nothing of a file outside the directory reached an output or a file the run left.
  std::string outputs = result.out + result.err;
  for (const auto& entry : fs::recursive_directory_iterator(directory.path())) {
    if (entry.is_regular_file() && entry.path() != input) outputs += readFile(entry.path().string());
  }
  std::istringstream passwd(readFile("/etc/passwd"));
  for (std::string line; std::getline(passwd, line);) {
    if (line.size() >= 8) {
      EXPECT_EQ(outputs.find(line), std::string::npos) << line;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, HxHostileInputTest, testing::ValuesIn(kHostile),
                         [](const testing::TestParamInfo<Hostile>& row) { return std::string(row.param.name); });

}  // namespace
