// End to end: a scripted two-manipulator recording through all five writers, each file checked
// with what its users read it with (Python's csv module, GNU Octave, xmllint and the framework's
// reader, hxmrd, and a hand-written notebook).

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataVector.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "tests/analysis/storage/test_HxSystemStoredDataSupport.h"

namespace {

using namespace HxRecorderTest;

// Reads the .csv with Python's csv module and checks: a label row of `labels` fields whose last
// `emptyLabels` are empty, one row per expected sample of exactly as many fields as it has
// values, and every field reading back (float()) to exactly the double that was stored.
const char* const kCsvCheck = R"PY(
import csv, sys
path, expected_path, labels, empty_labels = sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4])
with open(path, newline='') as f:
    rows = list(csv.reader(f))
with open(expected_path) as f:
    expected = [[float(x) for x in line.split()] for line in f if line.strip()]
assert len(rows) == 1 + len(expected), 'rows: %d, samples: %d' % (len(rows), len(expected))
header = rows[0]
assert len(header) == labels, 'label row has %d fields' % len(header)
assert header[:2] == ['Time', 'Point Path Index'], header[:2]
assert all(h == '' for h in header[labels - empty_labels:]), header
assert all(h != '' for h in header[:labels - empty_labels]), header
for i, (row, values) in enumerate(zip(rows[1:], expected)):
    assert len(row) == len(values), 'row %d has %d fields, %d values' % (i, len(row), len(values))
    for j, (text, value) in enumerate(zip(row, values)):
        assert float(text) == value, 'row %d field %d: %r != %r' % (i, j, text, value)
print('csv ok: %d labels, %d rows' % (len(header), len(rows) - 1))
)PY";

std::string expectedValuesFile(const TempDir& dir, const TwoArmScene& scene) {
  const std::string path = dir.file("expected.txt");
  std::ofstream out(path);
  for (unsigned int k = 0; k < TwoArmScene::kSamples; ++k) {
    for (const double v : scene.values(k)) {
      char text[40];
      std::snprintf(text, sizeof text, "%.17g ", v);
      out << text;
    }
    out << "\n";
  }
  return path;
}

class HxSystemStoredDataEndToEnd : public ::testing::Test {
 protected:
  void SetUp() override {
    recorder_.setOutputWriterVector(allFiveWriters());
    recorder_.allocateStorage(scene_.capture());
    base_ = dir_.file("run");
    recorder_.beginSaveToFile(base_);
    scene_.recordAll(recorder_);
    recorder_.finishSaveToFile();
  }

  TempDir dir_;
  TwoArmScene scene_;
  HxSystemStoredData recorder_;
  std::string base_;
};

// Python's csv module reads the label row and one row per sample; every value reads back to
// exactly the stored double. With 18 columns disabled the label row is 18 fields longer than
// each data row, and its last 17 fields are empty (the disabled one-column quantity keeps its
// label): the writer does not reconcile labels and values.
TEST_F(HxSystemStoredDataEndToEnd, CsvReadsBackWithPythonsCsvModule) {
  ASSERT_TRUE(onPath("python3")) << "python3 is needed to check the .csv file";
  const std::string script = dir_.file("check_csv.py");
  std::ofstream(script) << kCsvCheck;
  std::string output;
  const int status = run("python3 " + script + " " + base_ + ".csv " + expectedValuesFile(dir_, scene_) + " " +
                             std::to_string(TwoArmScene::kLabels) + " 17",
                         output);
  EXPECT_EQ(status, 0) << output;
  EXPECT_NE(output.find("csv ok: 53 labels, 4 rows"), std::string::npos) << output;
  EXPECT_EQ(TwoArmScene::kLabels - TwoArmScene::kValues, TwoArmScene::kDisabled);
}

// With nothing disabled, every data row is exactly as long as the label row.
TEST(HxSystemStoredDataEndToEndAllColumns, CsvRowsAsLongAsLabelRow) {
  ASSERT_TRUE(onPath("python3")) << "python3 is needed to check the .csv file";
  TempDir dir;
  TwoArmScene scene(false);
  HxOutputWriterVector writers;
  writers.pushBack(HxTextOutputWriter());
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(writers);
  recorder.allocateStorage(scene.capture());
  recorder.beginSaveToFile(dir.file("run"));
  scene.recordAll(recorder);
  recorder.finishSaveToFile();
  ASSERT_EQ(scene.values(0).size(), TwoArmScene::kLabels);

  const std::string script = dir.file("check_csv.py");
  std::ofstream(script) << kCsvCheck;
  std::string output;
  EXPECT_EQ(run("python3 " + script + " " + dir.file("run.csv") + " " + expectedValuesFile(dir, scene) + " 53 0", output),
            0)
      << output;
  EXPECT_NE(output.find("csv ok: 53 labels, 4 rows"), std::string::npos) << output;
}

// GNU Octave runs the script: Description is the labels' text, Data has one row per sample
// and its values are exactly those stored.
TEST_F(HxSystemStoredDataEndToEnd, MatlabScriptRunsInOctave) {
  std::string octave;
  if (onPath("octave-cli")) {
    octave = "octave-cli --no-init-file --quiet";
  } else if (onPath("octave")) {
    octave = "octave --no-gui --no-init-file --quiet";
  }
  ASSERT_FALSE(octave.empty()) << "GNU Octave is needed to check the .m file (scripts/install-deps.sh)";

  const std::string eval = "source('" + base_ + ".m'); " +
                           "assert(exist('Description', 'var') == 1 && ischar(Description)); "
                           "assert(exist('Data', 'var') == 1); "
                           "printf('description %s\\n', Description(1:20)); "
                           "printf('size %d %d\\n', size(Data)); "
                           "printf('%.17g\\n', Data');";
  std::string output;
  const int status = run(octave + " --eval \"" + eval + "\"", output);
  ASSERT_EQ(status, 0) << output;

  std::istringstream lines(output);
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line, "description TimePoint Path Index") << output;
  std::getline(lines, line);
  EXPECT_EQ(line, "size 4 35") << output;
  for (unsigned int k = 0; k < TwoArmScene::kSamples; ++k) {
    for (const double value : scene_.values(k)) {
      ASSERT_TRUE(std::getline(lines, line)) << output;
      EXPECT_EQ(std::strtod(line.c_str(), nullptr), value) << "sample " << k << ": " << line;
    }
  }
}

// xmllint accepts the document; the framework reads it back as the configuration followed by
// one record per sample, each equal to what was recorded.
TEST_F(HxSystemStoredDataEndToEnd, XmlIsWellFormedAndReadsBack) {
  ASSERT_TRUE(onPath("xmllint")) << "xmllint (libxml2-utils) is needed to check the .xml file";
  std::string output;
  EXPECT_EQ(run("xmllint --noout " + base_ + ".xml", output), 0) << output;

  Hx::ScopedPrintCapture messages;
  HxXmlReader reader;
  ASSERT_TRUE(reader.openFile(base_ + ".xml"));
  HxSystemDataVector back;
  ASSERT_TRUE(reader.readObject(back)) << messages.text();
  ASSERT_EQ(back.size(), 1 + TwoArmScene::kSamples);
  ASSERT_EQ(back[0].type(), 0u);
  EXPECT_TRUE(dynamic_cast<const HxSystemDataCapture&>(back[0]) == scene_.configuration());
  for (unsigned int k = 0; k < TwoArmScene::kSamples; ++k) {
    auto& record = dynamic_cast<HxSystemDataStorage&>(back[k + 1]);
    record.computeElementSize();  // the element size is not part of the XML
    EXPECT_TRUE(record == scene_.samples()[k]) << "sample " << k;
    EXPECT_EQ(record.pathPointIndex(), TwoArmScene::pathPointIndex(k));
  }
}

// The MRD header gives samples x channels, channels (one per label), samples and 1000; hxmrd
// recovers the 35 values per sample and returns each as the float of the stored value.
TEST_F(HxSystemStoredDataEndToEnd, MrdHeaderAndHxmrdValues) {
  const std::string bytes = slurp(base_ + ".mrd");
  ASSERT_GE(bytes.size(), 81u);
  const std::string header = "212\t53\t4\t1000";
  EXPECT_EQ(bytes.substr(0, 81), header + std::string(80 - header.size(), ' ') + "\n");

#ifndef HX_HXMRD_PATH
  FAIL() << "hxmrd was not built (HX_BUILD_TOOLS is off)";
#else
  std::string output;
  ASSERT_EQ(run(std::string(HX_HXMRD_PATH) + " --csv " + base_ + ".mrd", output), 0) << output;
  EXPECT_NE(output.find("warning: " + base_ + ".mrd: header gives 53 channels but each of the 4 samples holds 35 "
                        "values; the last 18 labels have no column (columns disabled)"),
            std::string::npos)
      << output;
  std::istringstream lines(output);
  std::string line;
  while (std::getline(lines, line) && line.rfind("Time,", 0) != 0) {
  }
  EXPECT_EQ(line.rfind("Time,Point_Path_Index,Manip[0]:Base_Positions:Translation_X,", 0), 0u) << line;
  for (unsigned int k = 0; k < TwoArmScene::kSamples; ++k) {
    ASSERT_TRUE(std::getline(lines, line)) << output;
    const std::vector<double> values = scene_.values(k);
    std::istringstream fields(line);
    std::string field;
    std::size_t column = 0;
    while (std::getline(fields, field, ',')) {
      ASSERT_LT(column, values.size()) << line;
      EXPECT_EQ(std::strtof(field.c_str(), nullptr), static_cast<float>(values[column]))
          << "sample " << k << " column " << column;
      ++column;
    }
    EXPECT_EQ(column, TwoArmScene::kValues);
  }
#endif
}

// The notebook equals, byte for byte, the one written by hand for this recording.
TEST_F(HxSystemStoredDataEndToEnd, NotebookEqualsHandWrittenGolden) {
  const std::string golden = slurp(std::string(HX_TEST_DATA_DIR) + "/recording_two_arms.nb");
  ASSERT_FALSE(golden.empty()) << "missing tests/data/recording_two_arms.nb";
  EXPECT_EQ(slurp(base_ + ".nb"), golden);
}

}  // namespace
