// The file formats byte for byte: comma-delimited text, MATLAB and Mathematica (the notebook's
// header and trailer are pinned whole by the recorder's hand-written golden file), and MRD
// (blank header patched at the end, label line, big-endian float samples).

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
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

std::string bigEndian(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, 4);
  return std::string{static_cast<char>(bits >> 24), static_cast<char>(bits >> 16), static_cast<char>(bits >> 8),
                     static_cast<char>(bits)};
}

std::string header(const std::string& fields) { return fields + std::string(80 - fields.size(), ' ') + "\n"; }

// Whole files: the header patched over its 80 blanks with total, channels (one per label, the
// empty labels of disabled columns included), samples and 1000; the label line with blanks made
// "_"; each value a big-endian float (1.5 is 3F C0 00 00). A save never finished keeps the blanks.
TEST(HxMrdOutputWriter, FilesByteForByte) {
  HxMrdOutputWriter writer;
  EXPECT_EQ(recorded(writer, {"Time", "Point Path Index", "Manip[0]:Joint Positions:Joint Position"},
                     {{"0", "0", "1.5"}, {"0.01", "2", "-0.25"}}),
            header("6\t3\t2\t1000") + "Time  -  Point_Path_Index  -  Manip[0]:Joint_Positions:Joint_Position  -\n\n\n" +
                bigEndian(0) + bigEndian(0) + std::string("\x3F\xC0\x00\x00", 4) + bigEndian(0.01f) + bigEndian(2) +
                bigEndian(-0.25f));
  EXPECT_EQ(recorded(writer, {"Time", "Point Path Index", "", ""}, {{"1", "0"}}),
            header("4\t4\t1\t1000") + "Time  -  Point_Path_Index  -    -    -\n\n\n" + bigEndian(1) + bigEndian(0));
  EXPECT_EQ(recorded(writer, {"Time", "x"}, {{"1", "0"}}, false),
            header("") + "Time  -  x  -\n\n\n" + bigEndian(1) + bigEndian(0));
  EXPECT_EQ(recorded(writer, {"Time", "x"}, {}), header("0\t2\t0\t1000") + "Time  -  x  -\n\n\n");
}

// Any kind other than labels counts as a sample but writes no bytes; the total wraps in 32
// bits; copies carry the counts; initialize resets the sample count but keeps the channels.
TEST(HxMrdOutputWriter, CountsWrapAndTravelWithCopies) {
  const HxSystemDataVector data;
  HxMrdOutputWriter writer;
  std::ostringstream out;
  writer.writeDataComponent(labels(std::vector<std::string>(65536)), out);
  const std::string::size_type labelBytes = out.str().size();
  for (int i = 0; i < 65537; ++i) writer.writeDataComponent(FakeComponent(9, {"1", "2"}), out);
  EXPECT_EQ(out.str().size(), labelBytes);

  std::ostringstream patched(header(""));
  HxMrdOutputWriter(writer).finalize(data, patched);
  EXPECT_EQ(patched.str(), header("65536\t65536\t65537\t1000"));  // 65536 x 65537 mod 2^32

  HxMrdOutputWriter assigned;
  assigned = writer;
  std::ostringstream again;
  assigned.initialize(data, again);
  EXPECT_EQ(again.str(), header(""));
  EXPECT_EQ(assigned.sampleCount(), 0u);
  EXPECT_EQ(assigned.channelCount(), 65536u);
}

}  // namespace
