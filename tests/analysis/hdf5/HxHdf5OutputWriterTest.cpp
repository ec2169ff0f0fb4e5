// The HDF5 writer driven by the recorder: every double back exactly with its columns, no allocation
// per sample, the chunks flushed before a crash readable, failures in the recorder's file states,
// and the writer named in a writer list through the object factory.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "analysis/capture/HxColumnDescription.h"
#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/hdf5/HxHdf5ObjectFactory.h"
#include "analysis/hdf5/HxHdf5OutputWriter.h"
#include "analysis/hdf5/HxHdf5Reader.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/storage/HxSystemStoredData.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxXmlReader.h"
#include "simulation/scripted/HxScriptedSimulation.h"
#include "tests/analysis/types/HxTypesTestSupport.h"
#include "tests/support/HxAllocationCounter.h"
#include "tests/support/HxScopedTempDir.h"

namespace {

// One manipulator of two links: joint positions of both links and the centre of mass with its Y
// disabled (2 + 2 + 2 columns), the values rotated through ones that are easy to lose.
class HxHdf5OutputWriterTest : public ::testing::Test {
 protected:
  HxHdf5OutputWriterTest() : simulation_(1, std::vector<std::string>{"shoulder", "elbow"}, 1) {
    using namespace HxSimAnalysis;
    EXPECT_TRUE(capture_.addLinkDataCaptureType(0, HxJointPositionDataCaptureTypeToken, simulation_.manipulator(0)));
    EXPECT_TRUE(capture_.addManipulatorDataCaptureType(0, HxCenterOfMassDataCaptureTypeToken));
    EXPECT_TRUE(capture_.setDisableFlags(0, HxCenterOfMassDataCaptureTypeToken, HxTypesTest::flags({0, 1})));
    capture_.allocateStorage(expected_);
  }

  // Records `samples` samples through a text writer and `writer` into `base`, finishing when
  // `finish` is true. Every record's reals are kept in `values_`, unless `counter` is given: it
  // then counts from the second sample on.
  void record(const HxHdf5OutputWriter& writer, const std::string& base, unsigned int samples, bool finish = true,
              HxAllocationCounter* counter = nullptr) {
    HxOutputWriterVector writers;
    writers.pushBack(HxTextOutputWriter());
    writers.pushBack(writer);
    recorder_.setOutputWriterVector(writers);
    recorder_.allocateStorage(capture_);
    recorder_.beginSaveToFile(base);
    const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    const double special[] = {0.0, -0.0, 5e-324, 1.0 / 3.0, -1e300, inf, nan, 0.1, 123456789.125};
    std::vector<std::vector<double>> joints;
    for (unsigned int k = 0; k < samples; ++k) joints.push_back({special[k % 9], special[(k + 4) % 9]});
    for (unsigned int k = 0; k < samples; ++k) {
      if (k == 1 && counter != nullptr) counter->restart();
      simulation_.setJointPositions(0, joints[k]);
      simulation_.setCenterOfMass(0, HxVector(special[(k + 2) % 9], 1.5, special[(k + 7) % 9]));
      capture_.captureData(simulation_);
      recorder_.saveCapturedData(0.001 * k, k * 7, capture_);
      if (counter != nullptr) continue;
      expected_.setTime(0.001 * k);
      expected_.setPathPointIndex(k * 7);
      capture_.storeData(expected_);
      const HxElementValues& values = *expected_.elementValues();
      values_.insert(values_.end(), values.values, values.values + values.count);
    }
    if (finish) recorder_.finishSaveToFile();
  }

  // The samples in the file, as the reader gives them; `finished` tells whether the writer closed it.
  std::vector<double> samplesInFile(const std::string& base, bool& finished) {
    HxHdf5Reader reader;
    std::string error;
    EXPECT_TRUE(reader.open(base + ".h5", error)) << error;
    EXPECT_EQ(reader.columns(), 6u);
    std::vector<double> values(reader.samples() * reader.columns());
    EXPECT_TRUE(reader.read(0, reader.samples(), values.data(), error)) << error;
    finished = reader.finished();
    return values;
  }

  const HxScopedTempDir temp_{"hdf5"};
  const std::string base_ = (temp_.path() / "run").string();
  HxScriptedSimulation simulation_;
  HxSystemDataCapture capture_;
  HxSystemDataStorage expected_;
  HxSystemStoredData recorder_;
  std::vector<double> values_;
};

// Bitwise, so that -0 and NaN count.
bool sameBits(const std::vector<double>& a, const std::vector<double>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

// Uncompressed with the chosen chunk (all samples in the last, partial chunk), uncompressed and
// compressed in chunks of 3 (three whole chunks, written directly when uncompressed, and one
// partial): every double comes back exactly, labels and units are the capture's, the file
// attributes the host's, and the file is finished.
TEST_F(HxHdf5OutputWriterTest, EveryDoubleComesBackExactlyWithItsColumns) {
  for (const auto& [level, rows] : {std::pair(0u, 0u), std::pair(0u, 3u), std::pair(6u, 3u)}) {
    HxHdf5OutputWriter writer;
    writer.setCompression(level);
    writer.setChunkRows(rows);
    writer.setFileAttribute("model", "two links");
    writer.setFileAttribute("model", "two links, \xC3\xA9");
    values_.clear();
    record(writer, base_, 10);
    bool finished = false;
    EXPECT_TRUE(sameBits(samplesInFile(base_, finished), values_) && finished) << level;

    HxHdf5Reader reader;
    std::string error;
    ASSERT_TRUE(reader.open(base_ + ".h5", error)) << error;
    std::vector<std::string> labels, units;
    for (const HxColumnDescription& column : hxDescribeColumns(capture_)) {
      labels.push_back(column.label);
      units.push_back(column.unit);
    }
    EXPECT_TRUE(reader.labels() == labels && reader.units() == units && units[2] == "m")
        << reader.labels()[2] << " " << units[2];
    EXPECT_EQ(reader.fileAttributes(),
              (std::vector<std::pair<std::string, std::string>>{{"model", "two links, \xC3\xA9"}}));
    EXPECT_TRUE(recorder_.failedOutputFile() < 0 && recorder_.outputFileState(1).open &&
                recorder_.outputFileState(1).samples == 10);
  }
}

// Once the first sample is written, samples (whole chunks appended among them) allocate nothing.
TEST_F(HxHdf5OutputWriterTest, WritingSamplesDoesNotAllocate) {
  HxHdf5OutputWriter writer;
  writer.setChunkRows(4);
  HxAllocationCounter counter;
  record(writer, base_, 50, false, &counter);
  EXPECT_EQ(counter.allocations(), 0u);
  recorder_.finishSaveToFile();
  bool finished = false;
  EXPECT_EQ(samplesInFile(base_, finished).size(), 50u * 6u);
}

// A recording killed mid-way keeps its whole chunks: they read back (in SWMR read mode) as
// written, and the file reads as not finished.
TEST_F(HxHdf5OutputWriterTest, AKilledRecordingKeepsItsFlushedChunks) {
  HxHdf5OutputWriter writer;
  writer.setChunkRows(4);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    record(writer, base_, 10, false);
    kill(getpid(), SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  record(writer, (temp_.path() / "whole").string(), 10);  // the same samples, finished
  values_.resize(8 * 6);
  bool finished = true;
  EXPECT_TRUE(sameBits(samplesInFile(base_, finished), values_) && !finished);
}

// A failing HDF5 call (an attribute without a name) fails the HDF5 file in the recorder's file
// states, as a failed stream would; the other file is written whole.
TEST_F(HxHdf5OutputWriterTest, AFailedHdf5CallShowsInTheRecordersFileStates) {
  HxHdf5OutputWriter writer;
  writer.setFileAttribute("", "no name");
  record(writer, base_, 3);
  const HxOutputFileState state = recorder_.outputFileState(1);
  EXPECT_TRUE(recorder_.failedOutputFile() == 1 && state.open && state.failed && state.samples == 0);
  EXPECT_FALSE(recorder_.outputFileState(0).failed);
}

// A writer list names the HDF5 writer, with its settings, through the HDF5 library's object
// factory; the writer vector itself knows its five writers only.
TEST(HxHdf5WriterList, IsReadThroughTheObjectFactory) {
  const std::string list =
      "<sm:outputWriterVector xmlns:sm=\"" + HxSimAnalysis::ns.token() +
      "\" count=\"2\"><sm:textOutputWriter/><sm:hdf5OutputWriter><sm:compression>6</sm:compression>"
      "<sm:chunkRows>500</sm:chunkRows></sm:hdf5OutputWriter></sm:outputWriterVector>";
  const HxHdf5ObjectFactory factory;
  HxOutputWriterVector writers;
  HxXmlReader reader;
  reader.setObjectFactory(&factory);
  ASSERT_TRUE(reader.openMemory(list) && reader.readObject(writers));
  ASSERT_EQ(writers.size(), 2u);
  const auto* hdf5 = dynamic_cast<const HxHdf5OutputWriter*>(&writers[1]);
  ASSERT_NE(hdf5, nullptr);
  EXPECT_TRUE(hdf5->compression() == 6 && hdf5->chunkRows() == 500 && hdf5->fileExtension() == ".h5");
  EXPECT_EQ(HxOutputWriterVector().creatorMap().size(), 5u);
}

}  // namespace
