// The three text formats: comma-delimited text, MATLAB and Mathematica, byte for byte.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "analysis/writers/HxMathematicaContacts.h"
#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "tests/analysis/writers/HxWriterTestSupport.h"

namespace {

using HxWriterTest::FakeComponent;
using HxWriterTest::labels;
using HxWriterTest::record;
using HxWriterTest::sample;

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = text.find('\n', start);
    lines.push_back(text.substr(start, end - start));
    if (end == std::string::npos) break;
    start = end + 1;
  }
  return lines;
}

// Labels and values are written exactly as given, joined by single commas with no blanks,
// one line per component ended by 0x0A; nothing before or after.
TEST(HxTextOutputWriter, WritesOneCommaJoinedLinePerComponent) {
  HxTextOutputWriter writer;
  std::ostringstream out;
  record(writer, out, labels({"Time", "Point Path Index", "Manip[0]:Joint Positions:Joint Position", "", ""}),
         {sample({"0", "0", "0.25"}), sample({"0.01", "3", "-1.5e-07"})});
  EXPECT_EQ(out.str(),
            "Time,Point Path Index,Manip[0]:Joint Positions:Joint Position,,\n"
            "0,0,0.25\n"
            "0.01,3,-1.5e-07\n");
}

// A single string has no comma; a string holding a comma is not quoted (it shifts columns).
TEST(HxTextOutputWriter, WritesSingleStringsAndCommasAsTheyStand) {
  HxTextOutputWriter writer;
  std::ostringstream out;
  writer.writeDataComponent(labels({"only"}), out);
  writer.writeDataComponent(labels({"a,b", "c"}), out);
  EXPECT_EQ(out.str(), "only\na,b,c\n");
}

// The script assigns the quoted, tab-separated labels to Description and one semicolon-ended
// row per sample to Data; "];" closes each block.
TEST(HxMatlabOutputWriter, WritesDescriptionAndDataBlocks) {
  HxMatlabOutputWriter writer;
  std::ostringstream out;
  record(writer, out, labels({"Time", "Point Path Index", "x"}), {sample({"0", "0", "1.5"}), sample({"0.5", "1", "2"})});
  EXPECT_EQ(out.str(),
            "Description=[\n"
            "'Time'\t'Point Path Index'\t'x'\n"
            "];\n"
            "Data=[\n"
            "0\t0\t1.5;\n"
            "0.5\t1\t2;\n"
            "];\n");
}

// No samples: "Data=[" directly followed by "];". An unfinished save has no final "];".
TEST(HxMatlabOutputWriter, EmptyAndUnfinishedRecordings) {
  HxMatlabOutputWriter writer;
  std::ostringstream empty;
  record(writer, empty, labels({"Time", "Point Path Index"}), {});
  EXPECT_EQ(empty.str(), "Description=[\n'Time'\t'Point Path Index'\n];\nData=[\n];\n");

  std::ostringstream unfinished;
  record(writer, unfinished, labels({"Time", "Point Path Index"}), {sample({"1", "2"})}, false);
  EXPECT_EQ(unfinished.str(), "Description=[\n'Time'\t'Point Path Index'\n];\nData=[\n1\t2;\n");
}

// One string takes the final form only; quotes are not doubled; another kind writes no
// opening and no row, but its closing is still "];".
TEST(HxMatlabOutputWriter, SingleStringsQuotesAndOtherKinds) {
  HxMatlabOutputWriter writer;
  std::ostringstream out;
  writer.writeDataComponent(labels({"it's"}), out);
  writer.writeDataComponent(sample({"7"}), out);
  const FakeComponent other(5, {"a", "b"});
  writer.writeComponentOpening(other, out);
  writer.writeDataComponent(other, out);
  writer.writeComponentClosing(other, out);
  EXPECT_EQ(out.str(), "'it's'\n7;\n];\n");
}

// Rows are brace lists with a blank before each separating comma; labels quoted, values bare,
// and every sample row starts with the comma that separates it from the row before.
TEST(HxMathematicaOutputWriter, WritesLabelAndSampleRows) {
  HxMathematicaOutputWriter writer;
  std::ostringstream out;
  writer.writeDataComponent(labels({"Time", "Point Path Index", "Manip[0]:Center of Mass:X"}), out);
  writer.writeDataComponent(sample({"0", "0", "1.25"}), out);
  writer.writeDataComponent(sample({"0.1", "2", "-3"}), out);
  writer.writeDataComponent(labels({}), out);
  writer.writeDataComponent(FakeComponent(7, {"a", "b"}), out);
  writer.writeDataComponent(sample({"9"}), out);
  EXPECT_EQ(out.str(),
            "{\"Time\" ,\"Point Path Index\" ,\"Manip[0]:Center of Mass:X\"}\n"
            ",{0 ,0 ,1.25}\n"
            ",{0.1 ,2 ,-3}\n"
            "}\n"
            "}\n"
            ",{9}\n");
}

// The header is 28 rows ending with the opening of Data, carrying the contact details in
// rows 6-8 and 12-14; the trailer is 31 rows, rows 5, 7, 9, 11 and 12 with one trailing blank.
TEST(HxMathematicaOutputWriter, HeaderAndTrailerRows) {
  using namespace HxMathematicaContacts;
  const std::vector<std::string> header = splitLines(HxMathematicaOutputWriter::headerText());
  ASSERT_EQ(header.size(), 28u);
  EXPECT_EQ(header[5], std::string("  web: ") + kMakerWeb);
  EXPECT_EQ(header[6], std::string("  e-mail: ") + kMakerEmail);
  EXPECT_EQ(header[7], std::string("  U.S. phone: ") + kMakerPhone);
  EXPECT_EQ(header[11], "  web: http://www.wolfram.com");
  EXPECT_EQ(header[12], "  e-mail: info@wolfram.com");
  EXPECT_EQ(header[13], "  U.S. phone: +1-217-398-0700");
  EXPECT_EQ(header[27], "    \\(\\(Data = {");
  for (std::size_t row : {2u, 8u, 15u, 16u, 23u, 24u}) EXPECT_EQ(header[row], "") << "row " << row + 1;

  const std::string& trailerText = HxMathematicaOutputWriter::trailerText();
  ASSERT_EQ(trailerText.back(), '\n');
  const std::vector<std::string> trailer = splitLines(trailerText);
  ASSERT_EQ(trailer.size(), 31u);
  for (std::size_t row = 0; row < trailer.size(); ++row) {
    const bool blankEnded = row == 4 || row == 6 || row == 8 || row == 10 || row == 11;
    const bool endsInBlank = !trailer[row].empty() && trailer[row].back() == ' ';
    EXPECT_EQ(endsInBlank, blankEnded) << "trailer row " << row + 1 << ": " << trailer[row];
  }
  EXPECT_EQ(trailer[1], "CellOpen->False],");
  EXPECT_EQ(trailer[13], "  CellOpen->False],");
  EXPECT_EQ(trailer[30], "");
}

// A recording without samples is the header, the label row and the trailer, nothing else.
TEST(HxMathematicaOutputWriter, RecordingWithoutSamples) {
  HxMathematicaOutputWriter writer;
  std::ostringstream out;
  record(writer, out, labels({"Time", "Point Path Index"}), {});
  EXPECT_EQ(out.str(), HxMathematicaOutputWriter::headerText() + "{\"Time\" ,\"Point Path Index\"}\n" +
                           HxMathematicaOutputWriter::trailerText());
}

}  // namespace
