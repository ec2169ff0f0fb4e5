// The file formats where the recorder's golden files (tests/data/recording_two_arms.*) do not
// reach: labels with commas and quotes, single-string rows, recordings without samples,
// unfinished saves, components of another kind, and the MRD total's 32-bit wrap.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "tests/analysis/writers/HxWriterTestSupport.h"

namespace {

using namespace HxWriterTest;

std::string mrdHeader(const std::string& fields) { return fields + std::string(80 - fields.size(), ' ') + "\n"; }

// Whole recordings in the recorder's calling order, byte for byte.
TEST(HxFileFormatWriters, EdgeCasesByteForByte) {
  const struct {
    const char* what;
    std::function<std::unique_ptr<HxBaseOutputWriter>()> make;
    std::vector<std::string> labels;
    std::vector<std::vector<std::string>> samples;
    bool finish;
    std::string expected;
  } rows[] = {
      {"CSV: a comma inside a label is not quoted",
       [] { return std::make_unique<HxTextOutputWriter>(); },
       {"a,b", "c"},
       {{"7"}},
       true,
       "a,b,c\n7\n"},
      {"MATLAB: one string per row, a quote not doubled, unfinished",
       [] { return std::make_unique<HxMatlabOutputWriter>(); },
       {"it's"},
       {{"1"}},
       false,
       "Description=[\n'it's'\n];\nData=[\n1;\n"},
      {"MATLAB: no samples",
       [] { return std::make_unique<HxMatlabOutputWriter>(); },
       {"Time", "x"},
       {},
       true,
       "Description=[\n'Time'\t'x'\n];\nData=[\n];\n"},
      {"MRD: no samples",
       [] { return std::make_unique<HxMrdOutputWriter>(); },
       {"Time", "x"},
       {},
       true,
       mrdHeader("0\t2\t0\t1000") + "Time  -  x  -\n\n\n"},
      {"Mathematica: no samples",
       [] { return std::make_unique<HxMathematicaOutputWriter>(); },
       {"Time", "Point Path Index"},
       {},
       true,
       HxMathematicaOutputWriter::headerText() + "{\"Time\" ,\"Point Path Index\"}\n" +
           HxMathematicaOutputWriter::trailerText()},
  };
  for (const auto& row : rows) {
    const std::unique_ptr<HxBaseOutputWriter> writer = row.make();
    EXPECT_EQ(recorded(*writer, row.labels, row.samples, row.finish), row.expected) << row.what;
  }
}

// Mathematica closes an empty row or one of another kind with "}"; MATLAB writes nothing for
// another kind but its closing "];".
TEST(HxFileFormatWriters, ComponentsOfAnotherKind) {
  HxMathematicaOutputWriter notebook;
  std::ostringstream rows;
  for (const FakeComponent& c : {labels({}), FakeComponent(7, {"a", "b"}), sample({"9"})}) {
    notebook.writeDataComponent(c, rows);
  }
  EXPECT_EQ(rows.str(), "}\n}\n,{9}\n");

  HxMatlabOutputWriter matlab;
  std::ostringstream out;
  const FakeComponent other(5, {"a", "b"});
  matlab.writeComponentOpening(other, out);
  matlab.writeDataComponent(other, out);
  matlab.writeComponentClosing(other, out);
  EXPECT_EQ(out.str(), "];\n");
}

// Any kind other than labels counts as an MRD sample but writes no bytes; the header's total
// wraps in 32 bits.
TEST(HxFileFormatWriters, MrdCountsWrap) {
  const HxSystemDataVector data;
  HxMrdOutputWriter writer;
  std::ostringstream out;
  writer.writeDataComponent(labels(std::vector<std::string>(65536)), out);
  const std::string::size_type labelBytes = out.str().size();
  for (int i = 0; i < 65537; ++i) writer.writeDataComponent(FakeComponent(9, {"1", "2"}), out);
  EXPECT_EQ(out.str().size(), labelBytes);
  std::ostringstream patched(mrdHeader(""));
  writer.finalize(data, patched);
  EXPECT_EQ(patched.str(), mrdHeader("65536\t65536\t65537\t1000"));  // 65536 x 65537 mod 2^32
}

}  // namespace
