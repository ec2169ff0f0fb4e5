// What every writer shares: identity, equality, file opening; and the writer vector.

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <ostream>
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

struct WriterIdentity {
  const char* name;
  std::unique_ptr<HxBaseOutputWriter> (*make)();
  const HxToken* token;
  const char* descriptor;
  const char* extension;
};

// Names the parameter in test listings.
void PrintTo(const WriterIdentity& id, std::ostream* os) { *os << id.name; }

template <class W>
std::unique_ptr<HxBaseOutputWriter> makeWriter() {
  return std::make_unique<W>();
}

class HxOutputWriterIdentityTest : public ::testing::TestWithParam<WriterIdentity> {};

// Each writer names itself, its format and its extension, and clones and compares as one of
// its class: all writers of one class are equal, writers of different classes are not.
TEST_P(HxOutputWriterIdentityTest, NamesFormatAndComparesByClass) {
  const WriterIdentity& id = GetParam();
  const std::unique_ptr<HxBaseOutputWriter> writer = id.make();
  EXPECT_EQ(writer->token(), *id.token);
  EXPECT_EQ(writer->formatDescriptor(), id.descriptor);
  EXPECT_EQ(writer->fileExtension(), id.extension);

  const std::unique_ptr<HxXmlObject> copy(writer->clone());
  const std::unique_ptr<HxXmlObject> fresh(writer->newObject());
  EXPECT_TRUE(writer->equality(copy.get()));
  EXPECT_TRUE(writer->equality(fresh.get()));
  EXPECT_EQ(fresh->token(), *id.token);
  EXPECT_FALSE(writer->equality(nullptr));

  const HxTextOutputWriter text;
  const HxMrdOutputWriter mrd;
  const HxBaseOutputWriter& foreign = (*id.token == HxTextOutputWriter::classToken())
                                          ? static_cast<const HxBaseOutputWriter&>(mrd)
                                          : static_cast<const HxBaseOutputWriter&>(text);
  EXPECT_FALSE(writer->equality(&foreign));
}

INSTANTIATE_TEST_SUITE_P(
    AllWriters, HxOutputWriterIdentityTest,
    ::testing::Values(
        WriterIdentity{"text", &makeWriter<HxTextOutputWriter>, &HxSimAnalysis::HxTextOutputWriterToken,
                       "Comma-Delimited Text", ".csv"},
        WriterIdentity{"xml", &makeWriter<HxXmlOutputWriter>, &HxSimAnalysis::HxXmlOutputWriterToken, "XML", ".xml"},
        WriterIdentity{"mrd", &makeWriter<HxMrdOutputWriter>, &HxSimAnalysis::HxMrdOutputWriterToken, "MRD", ".mrd"},
        WriterIdentity{"matlab", &makeWriter<HxMatlabOutputWriter>, &HxSimAnalysis::HxMatlabOutputWriterToken,
                       "MATLAB", ".m"},
        WriterIdentity{"mathematica", &makeWriter<HxMathematicaOutputWriter>,
                       &HxSimAnalysis::HxMathematicaOutputWriterToken, "Mathematica", ".nb"}),
    [](const ::testing::TestParamInfo<WriterIdentity>& param) { return std::string(param.param.name); });

class HxBaseOutputWriterFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() /
           ("hx_writer_open_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "_" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  static std::string slurp(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  fs::path dir_;
};

// openFile replaces an existing file; on a stream already open it changes nothing, not even
// for another name; a path that cannot be opened leaves the stream failed, silently.
TEST_F(HxBaseOutputWriterFileTest, OpensReplacesKeepsOpenStreamAndFailsSilently) {
  HxTextOutputWriter writer;
  const fs::path first = dir_ / "first.csv";
  const fs::path second = dir_ / "second.csv";
  {
    std::ofstream old(first);
    old << "old content that must go";
  }

  std::ofstream stream;
  writer.openFile(first.string(), stream);
  ASSERT_TRUE(stream.is_open());
  EXPECT_TRUE(stream.good());
  stream << "new";
  stream.setstate(std::ios::eofbit);  // a state flag that a second open must not clear
  writer.openFile(second.string(), stream);
  EXPECT_TRUE(stream.eof());
  EXPECT_FALSE(fs::exists(second));
  stream.clear();
  stream.close();
  EXPECT_EQ(slurp(first), "new");

  Hx::ScopedPrintCapture capture;
  std::ofstream failed;
  writer.openFile((dir_ / "no such dir" / "x.csv").string(), failed);
  EXPECT_FALSE(failed.is_open());
  EXPECT_TRUE(failed.fail());
  EXPECT_TRUE(capture.records().empty());
}

// The MRD writer opens in binary mode: a line end stays one byte 0x0A.
TEST_F(HxBaseOutputWriterFileTest, MrdWriterOpensBinary) {
  HxMrdOutputWriter writer;
  std::ofstream stream;
  writer.openFile((dir_ / "run.mrd").string(), stream);
  ASSERT_TRUE(stream.is_open());
  stream << "a\nb";
  stream.close();
  EXPECT_EQ(slurp(dir_ / "run.mrd"), std::string("a\nb"));
}

HxOutputWriterVector allFiveWriters() {
  HxOutputWriterVector writers;
  writers.pushBack(HxTextOutputWriter());
  writers.pushBack(HxXmlOutputWriter());
  writers.pushBack(HxMrdOutputWriter());
  writers.pushBack(HxMatlabOutputWriter());
  writers.pushBack(HxMathematicaOutputWriter());
  return writers;
}

std::string writeToXml(const HxXmlObject& object) {
  std::ostringstream out;
  {
    HxXmlWriter writer("writers", out);
    writer.writeObject(object);
  }
  return out.str();
}

// A writer vector written to XML lists each writer as an empty element under its own name and
// reads back equal, every element made by its registered creator.
TEST(HxOutputWriterVector, RoundTripsEveryWriterByElementName) {
  const HxOutputWriterVector writers = allFiveWriters();
  const std::string xml = writeToXml(writers);
  for (const char* name :
       {"textOutputWriter", "xmlOutputWriter", "mrdOutputWriter", "matlabOutputWriter", "mathematicaOutputWriter"}) {
    EXPECT_NE(xml.find(std::string(":") + name + "/>"), std::string::npos) << name << "\n" << xml;
  }
  EXPECT_NE(xml.find("outputWriterVector"), std::string::npos);

  Hx::ScopedPrintCapture capture;
  HxXmlReader reader;
  ASSERT_TRUE(reader.openMemory(xml, "writers.xml"));
  HxOutputWriterVector back;
  ASSERT_TRUE(reader.readObject(back));
  EXPECT_TRUE(capture.records().empty()) << capture.text();
  ASSERT_EQ(back.size(), 5u);
  EXPECT_TRUE(back == writers);
  for (HxU32 i = 0; i < 5; ++i) EXPECT_EQ(back[i].token(), writers[i].token());
  EXPECT_EQ(back[2].fileExtension(), ".mrd");
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

  const HxOutputWriterVector copy(writers);
  EXPECT_TRUE(copy == writers);
  HxOutputWriterVector other;
  other.pushBack(HxMrdOutputWriter());
  other.pushBack(HxTextOutputWriter());
  other.pushBack(HxXmlOutputWriter());
  EXPECT_FALSE(other == writers);
  EXPECT_EQ(writers.token(), HxSimAnalysis::HxOutputWriterVectorToken);
}

}  // namespace
