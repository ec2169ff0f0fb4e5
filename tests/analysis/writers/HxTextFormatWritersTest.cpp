// The three text formats: comma-delimited text, MATLAB and Mathematica, byte for byte. The
// notebook's header and trailer are pinned whole by the recorder's hand-written golden file.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "tests/analysis/writers/HxWriterTestSupport.h"

namespace {

using namespace HxWriterTest;

// Whole recordings in the recorder's calling order, byte for byte: the CSV joins texts by
// single commas (a comma inside a label is not quoted and shifts the columns); MATLAB quotes
// labels without doubling quotes, ends each row with ";" and each block with "];"; every line
// ends in 0x0A; an unfinished save lacks its closing.
TEST(HxTextFormatWriters, RecordingsByteForByte) {
  HxTextOutputWriter text;
  EXPECT_EQ(recorded(text, {"Time", "Point Path Index", "Manip[0]:Joint Positions:Joint Position", "", ""},
                     {{"0", "0", "0.25"}, {"0.01", "3", "-1.5e-07"}}),
            "Time,Point Path Index,Manip[0]:Joint Positions:Joint Position,,\n0,0,0.25\n0.01,3,-1.5e-07\n");
  EXPECT_EQ(recorded(text, {"a,b", "c"}, {{"7"}}), "a,b,c\n7\n");

  HxMatlabOutputWriter matlab;
  EXPECT_EQ(recorded(matlab, {"Time", "Point Path Index", "x"}, {{"0", "0", "1.5"}, {"0.5", "1", "2"}}),
            "Description=[\n'Time'\t'Point Path Index'\t'x'\n];\nData=[\n0\t0\t1.5;\n0.5\t1\t2;\n];\n");
  EXPECT_EQ(recorded(matlab, {"Time", "x"}, {}), "Description=[\n'Time'\t'x'\n];\nData=[\n];\n");
  EXPECT_EQ(recorded(matlab, {"it's"}, {{"1"}}, false), "Description=[\n'it's'\n];\nData=[\n1;\n");

  HxMathematicaOutputWriter notebook;
  EXPECT_EQ(recorded(notebook, {"Time", "Point Path Index"}, {}), HxMathematicaOutputWriter::headerText() +
                                                                      "{\"Time\" ,\"Point Path Index\"}\n" +
                                                                      HxMathematicaOutputWriter::trailerText());
}

// Component by component: Mathematica rows are brace lists with a blank before each separating
// comma, labels quoted, values bare, each sample row led by its comma, and an empty label row or
// another kind closes with "}"; in MATLAB another kind writes no opening and no row, yet its
// closing is "];".
TEST(HxTextFormatWriters, RowsOfEveryKind) {
  HxMathematicaOutputWriter notebook;
  std::ostringstream rows;
  for (const FakeComponent& c :
       {labels({"Time", "Point Path Index", "Manip[0]:Center of Mass:X"}), sample({"0", "0", "1.25"}),
        sample({"0.1", "2", "-3"}), labels({}), FakeComponent(7, {"a", "b"}), sample({"9"})}) {
    notebook.writeDataComponent(c, rows);
  }
  EXPECT_EQ(
      rows.str(),
      "{\"Time\" ,\"Point Path Index\" ,\"Manip[0]:Center of Mass:X\"}\n,{0 ,0 ,1.25}\n,{0.1 ,2 ,-3}\n}\n}\n,{9}\n");

  HxMatlabOutputWriter matlab;
  std::ostringstream out;
  const FakeComponent other(5, {"a", "b"});
  matlab.writeComponentOpening(other, out);
  matlab.writeDataComponent(other, out);
  matlab.writeComponentClosing(other, out);
  EXPECT_EQ(out.str(), "];\n");
}

}  // namespace
