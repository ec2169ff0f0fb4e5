// End to end: a scripted two-manipulator recording through all five writers, each file checked
// with what its users read it with (Python's csv module, GNU Octave, xmllint and the framework's
// reader, hxmrd, and a hand-written notebook). python3, octave-cli and xmllint must be on the
// PATH (scripts/install-deps.sh); a missing one fails its test with the shell's message.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
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

// Records the scene through `writers` into files "run" plus each writer's extension in `dir`,
// and writes the values each sample should hold (time, index, values; %.17g, exact) to
// "expected.txt", one line per sample.
void record(const TempDir& dir, TwoArmScene& scene, const HxOutputWriterVector& writers) {
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(writers);
  recorder.allocateStorage(scene.capture);
  recorder.beginSaveToFile(dir.file("run"));
  scene.recordAll(recorder);
  recorder.finishSaveToFile();
  std::ofstream out(dir.file("expected.txt"));
  for (unsigned int k = 0; k < TwoArmScene::kSamples; ++k) {
    for (const double v : scene.values(k)) {
      char text[40];
      std::snprintf(text, sizeof text, "%.17g ", v);
      out << text;
    }
    out << "\n";
  }
}

// Checks the .csv file with kCsvCheck: 53 labels, of which the last `emptyLabels` are empty.
void expectCsvReadsBackInPython(const TempDir& dir, std::size_t emptyLabels) {
  std::ofstream(dir.file("check_csv.py")) << kCsvCheck;
  std::string output;
  EXPECT_EQ(run("python3 " + dir.file("check_csv.py") + " " + dir.file("run.csv") + " " + dir.file("expected.txt") +
                    " 53 " + std::to_string(emptyLabels),
                output),
            0)
      << output;
  EXPECT_NE(output.find("csv ok: 53 labels, 4 rows"), std::string::npos) << output;
}

// All five writers record the scene once for the checks below.
class HxSystemStoredDataEndToEnd : public ::testing::Test {
 protected:
  void SetUp() override { record(dir_, scene_, writers()); }

  TempDir dir_;
  TwoArmScene scene_;
  const std::string base_ = dir_.file("run");
};

// Python's csv module reads the label row and one row per sample; every value reads back to
// exactly the stored double. With 18 columns disabled the label row is 18 fields longer than
// each data row, and its last 17 fields are empty (the disabled one-column quantity keeps its
// label): the writer does not reconcile labels and values.
TEST_F(HxSystemStoredDataEndToEnd, CsvReadsBackWithPythonsCsvModule) { expectCsvReadsBackInPython(dir_, 17); }

// With nothing disabled, every data row is exactly as long as the label row.
TEST(HxSystemStoredDataEndToEndAllColumns, CsvRowsAsLongAsLabelRow) {
  TempDir dir;
  TwoArmScene scene(false);
  record(dir, scene, writers(false));
  ASSERT_EQ(scene.values(0).size(), TwoArmScene::kLabels);
  expectCsvReadsBackInPython(dir, 0);
}

// GNU Octave runs the script: Description is the labels' text, Data has one row per sample
// and its values are exactly those stored.
TEST_F(HxSystemStoredDataEndToEnd, MatlabScriptRunsInOctave) {
  const std::string eval = "source('" + base_ + ".m'); expected = load('" + dir_.file("expected.txt") +
                           "'); assert(ischar(Description)); assert(isequal(Data, expected)); "
                           "printf('%s|%d %d\\n', Description(1:20), size(Data));";
  std::string output;
  ASSERT_EQ(run("octave-cli --no-init-file --quiet --eval \"" + eval + "\"", output), 0) << output;
  EXPECT_EQ(output.substr(0, output.find('\n')), "TimePoint Path Index|4 35") << output;
}

// xmllint accepts the document; the framework reads it back as the configuration followed by
// one record per sample, each equal to what was recorded.
TEST_F(HxSystemStoredDataEndToEnd, XmlIsWellFormedAndReadsBack) {
  std::string output;
  EXPECT_EQ(run("xmllint --noout " + base_ + ".xml", output), 0) << output;

  Hx::ScopedPrintCapture messages;
  HxXmlReader reader;
  HxSystemDataVector back;
  ASSERT_TRUE(reader.openFile(base_ + ".xml") && reader.readObject(back)) << messages.text();
  ASSERT_EQ(back.size(), 1 + TwoArmScene::kSamples);
  EXPECT_TRUE(dynamic_cast<const HxSystemDataCapture&>(back[0]) == scene_.configuration);
  for (unsigned int k = 0; k < TwoArmScene::kSamples; ++k) {
    auto& record = dynamic_cast<HxSystemDataStorage&>(back[k + 1]);
    record.computeElementSize();  // the element size is not part of the XML
    EXPECT_TRUE(record == scene_.samples[k]) << "sample " << k;
  }
}

// The MRD header gives samples x channels, channels (one per label), samples and 1000; hxmrd
// says that columns were disabled, recovers the 35 values per sample and returns each as the
// float of the stored value.
TEST_F(HxSystemStoredDataEndToEnd, MrdHeaderAndHxmrdValues) {
  const std::string header = "212\t53\t4\t1000";
  EXPECT_EQ(slurp(base_ + ".mrd").substr(0, 81), header + std::string(80 - header.size(), ' ') + "\n");
#ifndef HX_HXMRD_PATH
  FAIL() << "hxmrd was not built (HX_BUILD_TOOLS is off)";
#else
  std::string output;
  ASSERT_EQ(run(std::string(HX_HXMRD_PATH) + " --csv " + base_ + ".mrd", output), 0) << output;
  EXPECT_NE(output.find("warning: " + base_ + ".mrd: header gives 53 channels but each of the 4 samples holds 35 "
                        "values; the last 18 labels have no column (columns disabled)"),
            std::string::npos)
      << output;
  std::istringstream lines(output.substr(output.find("\nTime,") + 1));
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line.rfind("Time,Point_Path_Index,Manip[0]:Base_Positions:Translation_X,", 0), 0u) << line;
  for (unsigned int k = 0; k < TwoArmScene::kSamples; ++k) {
    ASSERT_TRUE(std::getline(lines, line)) << output;
    std::vector<float> read;
    std::istringstream fields(line);
    for (std::string field; std::getline(fields, field, ',');) read.push_back(std::strtof(field.c_str(), nullptr));
    const std::vector<double> values = scene_.values(k);
    EXPECT_EQ(read, std::vector<float>(values.begin(), values.end())) << "sample " << k << ": " << line;
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
