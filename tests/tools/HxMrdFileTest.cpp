// Loading MRD files: finished, unfinished, with disabled columns, and the unrecoverable ones.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "tools/lib/HxMrdFile.h"

namespace {

std::string bigEndian(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, 4);
  return std::string{static_cast<char>(bits >> 24), static_cast<char>(bits >> 16), static_cast<char>(bits >> 8),
                     static_cast<char>(bits)};
}

float fromBits(std::uint32_t bits) {
  float value = 0.0f;
  std::memcpy(&value, &bits, 4);
  return value;
}

/// An MRD file as the writer lays it out; an empty `header` leaves the header blank.
std::string mrd(const std::string& header, const std::vector<std::string>& labels, const std::vector<float>& values) {
  std::string bytes = header + std::string(80 - header.size(), ' ') + "\n";
  for (std::size_t i = 0; i < labels.size(); ++i) bytes += (i ? "  " : "") + labels[i] + "  -";
  bytes += "\n\n\n";
  for (const float v : values) bytes += bigEndian(v);
  return bytes;
}

struct Parsed {
  bool ok;
  HxMrdFile file;
  std::string error;
};

Parsed parse(const std::string& bytes, HxU32 valuesPerSample = 0) {
  Parsed p;
  HxMrdLoadOptions options;
  options.valuesPerSample = valuesPerSample;
  p.ok = hxParseMrd(bytes, options, p.file, p.error);
  return p;
}

// A finished file: header fields, labels with their underscores, values sample by sample
// (0x0A bytes inside the float data do not end the labels), and no warning.
TEST(HxMrdFile, LoadsAFinishedFile) {
  const float lineEnds = fromBits(0x0A0A0A0Au);  // four 0x0A bytes right after the label line
  const std::vector<float> values = {lineEnds, 0.0f, 1.5f, 0.25f, 1.0f, 1.0e-38f, 0.5f, 2.0f, fromBits(0x3F0A0A0Au)};
  const Parsed p = parse(mrd("9\t3\t3\t1000", {"Time", "Point_Path_Index", "Manip[0]:Center_of_Mass:X"}, values));
  ASSERT_TRUE(p.ok) << p.error;
  EXPECT_FALSE(p.file.header.blank);
  EXPECT_EQ(p.file.header.text, "9\t3\t3\t1000");
  EXPECT_EQ(p.file.header.totalValues, 9u);
  EXPECT_EQ(p.file.header.channels, 3u);
  EXPECT_EQ(p.file.header.samples, 3u);
  EXPECT_EQ(p.file.header.fourthValue, 1000.0);
  EXPECT_EQ(p.file.labels, (std::vector<std::string>{"Time", "Point_Path_Index", "Manip[0]:Center_of_Mass:X"}));
  EXPECT_EQ(p.file.valuesPerSample, 3u);
  EXPECT_EQ(p.file.sampleCount, 3u);
  EXPECT_EQ(p.file.values, values);
  EXPECT_EQ(p.file.value(0, 0), lineEnds);
  EXPECT_EQ(p.file.value(2, 2), fromBits(0x3F0A0A0Au));
  EXPECT_TRUE(p.file.warnings.empty());
}

// A finished file whose header counts one channel per label while disabled columns left fewer
// values per sample: the sample count decides, and the last labels are reported as columnless.
TEST(HxMrdFile, FinishedFileWithDisabledColumns) {
  const Parsed p = parse(mrd("12\t6\t2\t1000", {"Time", "Point_Path_Index", "a", "b", "", ""},
                             {0, 0, 1, 2, 0.5f, 1, 3, 4}));
  ASSERT_TRUE(p.ok) << p.error;
  EXPECT_EQ(p.file.valuesPerSample, 4u);
  EXPECT_EQ(p.file.sampleCount, 2u);
  ASSERT_EQ(p.file.warnings.size(), 1u);
  EXPECT_EQ(p.file.warnings[0],
            "header gives 6 channels but each of the 2 samples holds 4 values; the last 2 labels have no column "
            "(columns disabled)");
}

// A recording never finished: blank header; values per sample from the labels less the empty
// ones at the end, the sample count from the size.
TEST(HxMrdFile, RecoversABlankHeader) {
  const Parsed p = parse(mrd("", {"Time", "Point_Path_Index", "a", "", ""}, {0, 0, 7, 0.1f, 0, 8, 0.2f, 1, 9}));
  ASSERT_TRUE(p.ok) << p.error;
  EXPECT_TRUE(p.file.header.blank);
  EXPECT_EQ(p.file.valuesPerSample, 3u);
  EXPECT_EQ(p.file.sampleCount, 3u);
  EXPECT_EQ(p.file.value(2, 2), 9.0f);
  ASSERT_EQ(p.file.warnings.size(), 2u);
  EXPECT_EQ(p.file.warnings[0], "header is blank (the recording was never finished); counts recovered from the file");
  EXPECT_EQ(p.file.warnings[1], "each sample holds 3 values for 5 labels; the last 2 labels have no column");

  const Parsed empty = parse(mrd("", {"Time", "Point_Path_Index", "x"}, {}));
  ASSERT_TRUE(empty.ok) << empty.error;
  EXPECT_EQ(empty.file.sampleCount, 0u);
  EXPECT_EQ(empty.file.valuesPerSample, 3u);
}

// When the labels' count does not fit (a disabled one-column quantity keeps its label), the
// one layout that keeps every sample's time and path-point index is taken.
TEST(HxMrdFile, RecoversTheOnlyLayoutThatKeepsTimeAndIndex) {
  // Labels: time, index, a disabled power column (label kept), a, b. Samples hold 4 values.
  const std::vector<float> values = {0.0f, 0, 0.3f, 0.7f, 0.25f, 1, 0.35f, 0.75f, 0.5f, 1, 0.45f, 0.85f};
  const Parsed p = parse(mrd("", {"Time", "Point_Path_Index", "Manip[1]:Manipulator_Power", "a", "b", ""}, values));
  ASSERT_TRUE(p.ok) << p.error;
  EXPECT_EQ(p.file.valuesPerSample, 4u);
  EXPECT_EQ(p.file.sampleCount, 3u);
}

// An option sets the values per sample whatever the header says, and is checked against the
// size.
TEST(HxMrdFile, OptionSetsValuesPerSample) {
  const std::string bytes = mrd("", {"Time", "Point_Path_Index", "a", "b", "c", "d", "e"}, std::vector<float>(12, 0.0f));
  const Parsed ambiguous = parse(bytes);
  EXPECT_FALSE(ambiguous.ok);
  EXPECT_EQ(ambiguous.error, "the data (12 values) fits several layouts (2, 3, 4, 6 values per sample); give --channels N");

  const Parsed chosen = parse(bytes, 4);
  ASSERT_TRUE(chosen.ok) << chosen.error;
  EXPECT_EQ(chosen.file.sampleCount, 3u);

  const Parsed wrong = parse(bytes, 5);
  EXPECT_FALSE(wrong.ok);
  EXPECT_EQ(wrong.error, "the data (12 values) is not a whole number of samples of 5 values");

  const Parsed overriding = parse(mrd("8\t4\t2\t1000", {"Time", "Point_Path_Index", "a", "b"}, std::vector<float>(8)), 2);
  ASSERT_TRUE(overriding.ok) << overriding.error;
  EXPECT_EQ(overriding.file.sampleCount, 4u);
  EXPECT_EQ(overriding.file.warnings.front(), "header gives 4 channels; using 2 values per sample as asked");
}

// What cannot be recovered is refused with one clear sentence.
TEST(HxMrdFile, RefusesWhatCannotBeRecovered) {
  struct Case {
    std::string bytes;
    std::string error;
  };
  const std::string blank(80, ' ');
  const std::vector<Case> cases = {
      {"short", "file too short for an MRD header (5 bytes, at least 81 needed)"},
      {std::string(81, ' '), "no line end at offset 80: not an MRD header"},
      {mrd("hello", {"Time"}, {}), "header is neither blank nor four tab-separated numbers: \"hello\""},
      {mrd("1\t2\t3", {"Time"}, {}), "header is neither blank nor four tab-separated numbers: \"1\t2\t3\""},
      {blank + "\nTime  -  Point_Pa", "truncated label line: no end of the labels (three line ends) after offset 81"},
      {blank + "\nTime  -  Point Path Index  -\n\n\n",
       "malformed label line: expected labels joined by \"  -  \" and ending in \"  -\""},
      {blank + "\nTime  -  Point_Path_Index\n\n\n",
       "malformed label line: expected labels joined by \"  -  \" and ending in \"  -\""},
      {mrd("", {"Time", "Point_Path_Index"}, {0, 0}) + "xy",
       "data size (10 bytes) is not a whole number of 4-byte values"},
      {mrd("", {"Time", "Point_Path_Index", "a", "b"}, {0, 0, 1, 2, 0.5f}),
       "the data (5 values) fits no layout of 2 to 4 values per sample starting with time and path-point index; give "
       "--channels N"},
      {mrd("20\t4\t5\t1000", {"Time", "Point_Path_Index", "a", "b"}, {0, 0, 1, 2, 0.5f, 0, 1}),
       "the data (7 values) fits no layout of 2 to 4 values per sample starting with time and path-point index; give "
       "--channels N"},
  };
  for (const Case& c : cases) {
    const Parsed p = parse(c.bytes);
    EXPECT_FALSE(p.ok) << c.error;
    EXPECT_EQ(p.error, c.error);
  }
}

// Loading a file that does not exist names it.
TEST(HxMrdFile, MissingFile) {
  HxMrdFile file;
  std::string error;
  EXPECT_FALSE(hxLoadMrdFile("/nonexistent/run.mrd", HxMrdLoadOptions(), file, error));
  EXPECT_EQ(error, "cannot open \"/nonexistent/run.mrd\"");
}

}  // namespace
