// What every writer shares: identity, equality, file opening; and the writer vector.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "analysis/writers/HxXmlOutputWriter.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlWriter.h"

namespace {

namespace fs = std::filesystem;
using namespace HxSimAnalysis;

HxOutputWriterVector allWriters() {
  HxOutputWriterVector writers;
  writers.pushBack(HxTextOutputWriter());
  writers.pushBack(HxXmlOutputWriter());
  writers.pushBack(HxMrdOutputWriter());
  writers.pushBack(HxMatlabOutputWriter());
  writers.pushBack(HxMathematicaOutputWriter());
  return writers;
}

// Each writer names itself, its format and its extension, and clones and compares as one of
// its class: all writers of one class are equal, writers of different classes are not.
TEST(HxBaseOutputWriter, NamesFormatAndComparesByClass) {
  const HxOutputWriterVector writers = allWriters();
  struct Row {
    const HxToken& token;
    const char* descriptor;
    const char* extension;
  } const rows[] = {{HxTextOutputWriterToken, "Comma-Delimited Text", ".csv"},
                    {HxXmlOutputWriterToken, "XML", ".xml"},
                    {HxMrdOutputWriterToken, "MRD", ".mrd"},
                    {HxMatlabOutputWriterToken, "MATLAB", ".m"},
                    {HxMathematicaOutputWriterToken, "Mathematica", ".nb"}};
  for (HxU32 i = 0; i < 5; ++i) {
    const HxBaseOutputWriter& writer = writers[i];
    SCOPED_TRACE(rows[i].descriptor);
    EXPECT_EQ(writer.token(), rows[i].token);
    EXPECT_EQ(writer.formatDescriptor() + writer.fileExtension(), std::string(rows[i].descriptor) + rows[i].extension);
    const std::unique_ptr<HxXmlObject> copy(writer.clone()), fresh(writer.newObject());
    EXPECT_TRUE(writer.equality(copy.get()) && writer.equality(fresh.get()) && !writer.equality(nullptr));
    EXPECT_EQ(fresh->token(), rows[i].token);
    for (HxU32 j = 0; j < 5; ++j) EXPECT_EQ(writer.equality(&writers[j]), i == j) << rows[j].descriptor;
  }
}

std::string slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// openFile replaces an existing file (MRD in binary mode: a line end stays one byte); on a
// stream already open it changes nothing, not even for another name; a path that cannot be
// opened leaves the stream failed, silently.
TEST(HxBaseOutputWriter, OpenFileReplacesKeepsAnOpenStreamAndFailsSilently) {
  const fs::path dir = fs::path(::testing::TempDir()) / ("hx_writer_open_" + std::to_string(::getpid()));
  fs::remove_all(dir);
  fs::create_directories(dir);
  std::ofstream(dir / "run.mrd") << "old content that must go";

  HxMrdOutputWriter mrd;
  HxTextOutputWriter text;
  std::ofstream stream;
  mrd.openFile((dir / "run.mrd").string(), stream);
  ASSERT_TRUE(stream.is_open() && stream.good());
  stream << "a\nb";
  stream.setstate(std::ios::eofbit);  // a state flag that a second open must not clear
  text.openFile((dir / "second.csv").string(), stream);
  EXPECT_TRUE(stream.eof());
  EXPECT_FALSE(fs::exists(dir / "second.csv"));
  stream.clear();
  stream.close();
  EXPECT_EQ(slurp(dir / "run.mrd"), "a\nb");

  Hx::ScopedPrintCapture capture;
  std::ofstream failed;
  text.openFile((dir / "no such dir" / "x.csv").string(), failed);
  EXPECT_TRUE(!failed.is_open() && failed.fail());
  EXPECT_TRUE(capture.records().empty());
  fs::remove_all(dir);
}

// Reads `xml` into `back`; the reader's result.
bool read(const std::string& xml, HxOutputWriterVector& back) {
  HxXmlReader reader;
  return reader.openMemory(xml, "writers.xml") && reader.readObject(back);
}

// A writer vector is written as one empty element per writer under its own name and reads back
// equal; an unknown element name fails the read, naming the tag. isWriterIncluded scans by
// token: an empty list includes nothing, duplicates are fine.
TEST(HxOutputWriterVector, XmlFormAndLookup) {
  const HxOutputWriterVector writers = allWriters();
  std::ostringstream out;
  HxXmlWriter("writers", out).writeObject(writers);
  const std::string ns = HxSimAnalysis::ns.token(), open = "<sm:outputWriterVector xmlns:sm=\"" + ns + "\" count=";
  EXPECT_EQ(out.str(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- writers -->\n" + open +
                           "\"5\">\n  <sm:textOutputWriter/>\n  <sm:xmlOutputWriter/>\n  <sm:mrdOutputWriter/>\n"
                           "  <sm:matlabOutputWriter/>\n  <sm:mathematicaOutputWriter/>\n</sm:outputWriterVector>\n");
  Hx::ScopedPrintCapture capture;
  HxOutputWriterVector back;
  ASSERT_TRUE(read(out.str(), back));
  EXPECT_TRUE(capture.records().empty()) << capture.text();
  EXPECT_TRUE(back == writers);
  back.pushBack(HxTextOutputWriter());
  EXPECT_FALSE(back == writers);

  HxOutputWriterVector unknown;
  EXPECT_FALSE(read(open + "\"2\"><sm:textOutputWriter/><sm:pdfOutputWriter/></sm:outputWriterVector>", unknown));
  EXPECT_NE(capture.text().find("\"" + ns + "pdfOutputWriter\" tag not registered."), std::string::npos);
  ASSERT_EQ(unknown.size(), 1u);
  EXPECT_EQ(unknown[0].token(), HxTextOutputWriter::classToken());

  HxOutputWriterVector some;
  EXPECT_FALSE(some.isWriterIncluded(HxTextOutputWriter::classToken()));
  some.pushBack(HxMrdOutputWriter());
  some.pushBack(HxTextOutputWriter());
  some.pushBack(HxTextOutputWriter());
  EXPECT_TRUE(some.isWriterIncluded(HxTextOutputWriter::classToken()) &&
              some.isWriterIncluded(HxMrdOutputWriter::classToken()));
  EXPECT_FALSE(some.isWriterIncluded(HxXmlOutputWriter::classToken()) ||
               some.isWriterIncluded(HxOutputWriterVectorToken));
}

}  // namespace
