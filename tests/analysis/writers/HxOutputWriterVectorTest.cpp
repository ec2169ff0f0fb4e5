// What every writer shares: format descriptor, comparison by class, file opening; and the
// writer vector's lookup. (Element names, extensions and the vector's XML form are pinned by the
// golden files and the example configuration's round trip.)

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "analysis/writers/HxXmlOutputWriter.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "tests/support/HxScopedTempDir.h"

namespace {

// Each writer names its format, and compares equal to the writers of its class only; the vector
// finds a writer by token (an empty one none).
TEST(HxBaseOutputWriter, DescriptorAndComparisonByClass) {
  HxOutputWriterVector writers;
  writers.pushBack(HxTextOutputWriter());
  writers.pushBack(HxXmlOutputWriter());
  writers.pushBack(HxMrdOutputWriter());
  writers.pushBack(HxMatlabOutputWriter());
  writers.pushBack(HxMathematicaOutputWriter());
  const char* const descriptors[] = {"Comma-Delimited Text", "XML", "MRD", "MATLAB", "Mathematica"};
  for (HxU32 i = 0; i < 5; ++i) {
    EXPECT_EQ(writers[i].formatDescriptor(), descriptors[i]);
    EXPECT_FALSE(writers[i].equality(nullptr));
    for (HxU32 j = 0; j < 5; ++j) EXPECT_EQ(writers[i].equality(&writers[j]), i == j) << i << " " << j;
  }
  EXPECT_TRUE(writers[2].equality(std::unique_ptr<HxXmlObject>(writers[2].newObject()).get()));
  EXPECT_TRUE(writers.isWriterIncluded(HxMathematicaOutputWriter::classToken()));
  EXPECT_FALSE(HxOutputWriterVector().isWriterIncluded(HxTextOutputWriter::classToken()) ||
               writers.isWriterIncluded(HxSimAnalysis::HxOutputWriterVectorToken));
}

std::string slurp(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// openFile replaces an existing file; on a stream already open it changes nothing, not even for
// another name. (A file that cannot be opened is pinned by the recorder's test.)
TEST(HxBaseOutputWriter, OpenFileReplacesAndKeepsAnOpenStream) {
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
  EXPECT_TRUE(stream.eof());
  EXPECT_FALSE(std::filesystem::exists(dir.file("second.csv")));
  stream.clear();
  stream.close();
  EXPECT_EQ(slurp(dir.file("run.mrd")), "a\nb");
}

}  // namespace
