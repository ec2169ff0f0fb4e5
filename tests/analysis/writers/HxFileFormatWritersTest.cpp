// What every writer shares (format descriptor, comparison by class, file opening) and the writer
// vector's lookup; and the file formats where the recorder's golden files
// (tests/data/recording_two_arms.*) do not reach: labels with commas and quotes, single-string
// rows, recordings without samples, unfinished saves, components of another kind, and the MRD
// total's 32-bit wrap. (Element names, extensions and the vector's XML form are pinned by the
// golden files and the example configuration's round trip.)

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/xml/HxSimAnalysisTokens.h"
#include "tests/analysis/writers/HxWriterTestSupport.h"
#include "tests/framework/HxFrameworkTestTypes.h"
#include "tests/support/HxScopedTempDir.h"

namespace {

// Each writer names its format, and compares equal to the writers of its class only; the vector
// finds a writer by token (an empty one none). openFile replaces an existing file; on a stream
// already open it changes nothing, not even for another name. (A file that cannot be opened is
// pinned by the recorder's test.)
TEST(HxBaseOutputWriter, DescriptorComparisonAndFileOpening) {
  const HxOutputWriterVector writers = HxWriterTest::allWriters();
  const char* const descriptors[] = {"Comma-Delimited Text", "XML", "MRD", "MATLAB", "Mathematica"};
  for (HxU32 i = 0; i < 5; ++i) {
    EXPECT_EQ(writers[i].formatDescriptor(), descriptors[i]);
    const std::unique_ptr<HxXmlObject> fresh(writers[i].newObject());
    EXPECT_TRUE(writers[i].equality(fresh.get()) && !writers[i].equality(&writers[(i + 1) % 5])) << i;
  }
  EXPECT_TRUE(writers.isWriterIncluded(HxMathematicaOutputWriter::classToken()));
  EXPECT_FALSE(HxOutputWriterVector().isWriterIncluded(HxTextOutputWriter::classToken()) ||
               writers.isWriterIncluded(HxSimAnalysis::HxOutputWriterVectorToken));

  const HxScopedTempDir dir("writer-open");
  dir.write("run.mrd", "old content that must go");
  HxMrdOutputWriter mrd;
  HxTextOutputWriter text;
  std::ofstream stream;
  mrd.openFile(dir.file("run.mrd"), stream);
  ASSERT_TRUE(stream.is_open() && stream.good());
  stream << "a\nb";
  stream.setstate(std::ios::eofbit);  // a state flag that a second open must not clear
  text.openFile(dir.file("second.csv"), stream);
  EXPECT_TRUE(stream.eof() && !std::filesystem::exists(dir.file("second.csv")));
  stream.clear();
  stream.close();
  EXPECT_EQ(HxFrameworkTest::slurp(dir.file("run.mrd")), "a\nb");
}

using namespace HxWriterTest;

std::string mrdHeader(const std::string& fields) { return fields + std::string(80 - fields.size(), ' ') + "\n"; }

// Whole recordings in the recorder's calling order, byte for byte: CSV does not quote a comma
// inside a label; MATLAB writes one string per row without doubling a quote (here unfinished);
// no samples in MATLAB, MRD and Mathematica.
TEST(HxFileFormatWriters, EdgeCasesByteForByte) {
  HxTextOutputWriter text;
  HxMatlabOutputWriter matlab, emptyMatlab;
  HxMrdOutputWriter mrd;
  HxMathematicaOutputWriter notebook;
  const FakeComponent seven = sample({"7"}), one = sample({"1"});
  EXPECT_EQ(recorded(text, labels({"a,b", "c"}), {&seven}), "a,b,c\n7\n");
  EXPECT_EQ(recorded(matlab, labels({"it's"}), {&one}, false), "Description=[\n'it's'\n];\nData=[\n1;\n");
  EXPECT_EQ(recorded(emptyMatlab, labels({"Time", "x"}), {}), "Description=[\n'Time'\t'x'\n];\nData=[\n];\n");
  EXPECT_EQ(recorded(mrd, labels({"Time", "x"}), {}), mrdHeader("0\t2\t0\t1000") + "Time  -  x  -\n\n\n");
  EXPECT_EQ(recorded(notebook, labels({"Time", "Point Path Index"}), {}), HxMathematicaOutputWriter::headerText() +
                                                                              "{\"Time\" ,\"Point Path Index\"}\n" +
                                                                              HxMathematicaOutputWriter::trailerText());
}

// Mathematica closes an empty row or one of another kind with "}"; MATLAB writes nothing for
// another kind but its closing "];". Any kind other than labels counts as an MRD sample but
// writes no bytes; the MRD header's total wraps in 32 bits.
TEST(HxFileFormatWriters, ComponentsOfAnotherKindAndTheMrdCountsWrap) {
  HxMathematicaOutputWriter notebook;
  std::ostringstream rows, matlabRows, mrdRows;
  for (const FakeComponent& c : {labels({}), FakeComponent(7, {"a", "b"}), sample({"9"})}) {
    notebook.writeDataComponent(c, rows);
  }
  EXPECT_EQ(rows.str(), "}\n}\n,{9}\n");
  HxMatlabOutputWriter matlab;
  const FakeComponent other(5, {"a", "b"});
  matlab.writeComponentOpening(other, matlabRows);
  matlab.writeDataComponent(other, matlabRows);
  matlab.writeComponentClosing(other, matlabRows);
  EXPECT_EQ(matlabRows.str(), "];\n");

  HxMrdOutputWriter mrd;
  mrd.writeDataComponent(labels(std::vector<std::string>(65536)), mrdRows);
  const std::string::size_type labelBytes = mrdRows.str().size();
  for (int i = 0; i < 65537; ++i) mrd.writeDataComponent(FakeComponent(9, {"1", "2"}), mrdRows);
  EXPECT_EQ(mrdRows.str().size(), labelBytes);
  std::ostringstream patched(mrdHeader(""));
  mrd.finalize(HxSystemDataVector(), patched);
  EXPECT_EQ(patched.str(), mrdHeader("65536\t65536\t65537\t1000"));  // 65536 x 65537 mod 2^32
}

}  // namespace
