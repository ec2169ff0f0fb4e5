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

// Each writer names itself, its format and its extension, and clones and compares as one of
// its class: all writers of one class are equal, writers of different classes are not.
TEST(HxBaseOutputWriter, NamesFormatAndComparesByClass) {
  const HxTextOutputWriter text;
  const HxXmlOutputWriter xml;
  const HxMrdOutputWriter mrd;
  const HxMatlabOutputWriter matlab;
  const HxMathematicaOutputWriter notebook;
  struct Row {
    const HxBaseOutputWriter* writer;
    const HxToken& token;
    const char* descriptor;
    const char* extension;
  };
  const Row rows[] = {{&text, HxSimAnalysis::HxTextOutputWriterToken, "Comma-Delimited Text", ".csv"},
                      {&xml, HxSimAnalysis::HxXmlOutputWriterToken, "XML", ".xml"},
                      {&mrd, HxSimAnalysis::HxMrdOutputWriterToken, "MRD", ".mrd"},
                      {&matlab, HxSimAnalysis::HxMatlabOutputWriterToken, "MATLAB", ".m"},
                      {&notebook, HxSimAnalysis::HxMathematicaOutputWriterToken, "Mathematica", ".nb"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.descriptor);
    EXPECT_EQ(row.writer->token(), row.token);
    EXPECT_EQ(row.writer->formatDescriptor(), row.descriptor);
    EXPECT_EQ(row.writer->fileExtension(), row.extension);
    const std::unique_ptr<HxXmlObject> copy(row.writer->clone());
    const std::unique_ptr<HxXmlObject> fresh(row.writer->newObject());
    EXPECT_TRUE(row.writer->equality(copy.get()) && row.writer->equality(fresh.get()));
    EXPECT_EQ(fresh->token(), row.token);
    EXPECT_FALSE(row.writer->equality(nullptr));
    for (const Row& other : rows) EXPECT_EQ(row.writer->equality(other.writer), &other == &row) << other.descriptor;
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

// A writer vector written to XML lists each writer as an empty element under its own name and
// reads back equal, every element made by its registered creator.
TEST(HxOutputWriterVector, RoundTripsEveryWriterByElementName) {
  HxOutputWriterVector writers;
  writers.pushBack(HxTextOutputWriter());
  writers.pushBack(HxXmlOutputWriter());
  writers.pushBack(HxMrdOutputWriter());
  writers.pushBack(HxMatlabOutputWriter());
  writers.pushBack(HxMathematicaOutputWriter());
  std::ostringstream out;
  HxXmlWriter("writers", out).writeObject(writers);
  const std::string xml = out.str();
  for (const char* name :
       {"textOutputWriter", "xmlOutputWriter", "mrdOutputWriter", "matlabOutputWriter", "mathematicaOutputWriter"}) {
    EXPECT_NE(xml.find(std::string(":") + name + "/>"), std::string::npos) << name << "\n" << xml;
  }

  Hx::ScopedPrintCapture capture;
  HxXmlReader reader;
  ASSERT_TRUE(reader.openMemory(xml, "writers.xml"));
  HxOutputWriterVector back;
  ASSERT_TRUE(reader.readObject(back));
  EXPECT_TRUE(capture.records().empty()) << capture.text();
  ASSERT_EQ(back.size(), 5u);
  for (HxU32 i = 0; i < 5; ++i) EXPECT_EQ(back[i].token(), writers[i].token());
  EXPECT_TRUE(back == writers);
  back.pushBack(HxTextOutputWriter());
  EXPECT_FALSE(back == writers);
}

// An element name that no writer is registered under fails the read and names the tag.
TEST(HxOutputWriterVector, RefusesAnUnknownWriterName) {
  const std::string ns = HxSimAnalysis::ns.token();
  const std::string xml = "<?xml version=\"1.0\"?>\n<sm:outputWriterVector xmlns:sm=\"" + ns +
                          "\" count=\"2\"><sm:textOutputWriter/><sm:pdfOutputWriter/></sm:outputWriterVector>\n";
  Hx::ScopedPrintCapture capture;
  HxXmlReader reader;
  ASSERT_TRUE(reader.openMemory(xml, "writers.xml"));
  HxOutputWriterVector back;
  EXPECT_FALSE(reader.readObject(back));
  EXPECT_NE(capture.text().find("\"" + ns + "pdfOutputWriter\" tag not registered."), std::string::npos)
      << capture.text();
  ASSERT_EQ(back.size(), 1u);
  EXPECT_EQ(back[0].token(), HxTextOutputWriter::classToken());
}

// isWriterIncluded scans by token; an empty list includes nothing, duplicates are fine.
TEST(HxOutputWriterVector, TellsWhetherAWriterKindIsIncluded) {
  HxOutputWriterVector writers;
  EXPECT_FALSE(writers.isWriterIncluded(HxTextOutputWriter::classToken()));
  writers.pushBack(HxMrdOutputWriter());
  writers.pushBack(HxTextOutputWriter());
  writers.pushBack(HxTextOutputWriter());
  EXPECT_TRUE(writers.isWriterIncluded(HxTextOutputWriter::classToken()));
  EXPECT_TRUE(writers.isWriterIncluded(HxMrdOutputWriter::classToken()));
  EXPECT_FALSE(writers.isWriterIncluded(HxXmlOutputWriter::classToken()));
  EXPECT_FALSE(writers.isWriterIncluded(HxSimAnalysis::HxOutputWriterVectorToken));
}

}  // namespace
