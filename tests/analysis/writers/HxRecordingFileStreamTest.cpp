// The recording file stream, which the writers fill directly: its files must hold what any other
// stream is given, across many refills of its buffer, and a failed file must stay failed.

#include "analysis/writers/HxRecordingFileStream.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/writers/HxWriterRow.h"
#include "tests/analysis/writers/HxWriterTestSupport.h"
#include "tests/analysis/xml/HxXmlTestTypes.h"
#include "tests/support/HxScopedTempDir.h"

namespace {

using namespace HxWriterTest;

std::string contentsOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/// Sample records of `columns` values each, all different, with texts of varying length.
std::vector<std::unique_ptr<HxSystemDataStorage>> sampleRecords(std::size_t count, std::size_t columns) {
  std::vector<std::unique_ptr<HxSystemDataStorage>> records;
  for (std::size_t s = 0; s < count; ++s) {
    std::vector<double> values(columns);
    for (std::size_t c = 0; c < columns; ++c) values[c] = (c % 3 == 0 ? 1e-7 : 12.5) * static_cast<double>(s * 31 + c);
    HxManipulatorDataStorage manipulator;
    manipulator.setManipulatorLevelData(HxManipulatorDataStorage::QuantityVector(1, HxXmlTest::xmlVector(values)));
    auto record = std::make_unique<HxSystemDataStorage>();
    record->setManipulatorDataVector(HxSystemDataStorage::ManipulatorDataVector(1, manipulator));
    record->computeElementSize();
    record->setTime(0.01 * static_cast<double>(s));
    record->setPathPointIndex(static_cast<unsigned int>(s / 10));
    records.push_back(std::move(record));
  }
  return records;
}

template <class Writer>
class HxRecordingFileStreamTest : public ::testing::Test {};
using Writers = ::testing::Types<HxTextOutputWriter, HxXmlOutputWriter, HxMrdOutputWriter, HxMatlabOutputWriter,
                                 HxMathematicaOutputWriter>;
TYPED_TEST_SUITE(HxRecordingFileStreamTest, Writers);

// Rows put straight into the recording buffer, several megabytes of them (the buffer is refilled
// many times, with rows split by nothing), give the bytes that a string stream is given; the
// MRD header, patched at the end by seeking back, included.
TYPED_TEST(HxRecordingFileStreamTest, AFileHoldsWhatAStringStreamIsGiven) {
  const auto records = sampleRecords(64, 48);
  std::vector<const HxBaseSystemDataComponent*> samples;
  for (std::size_t i = 0; i < 6000; ++i) samples.push_back(records[i % records.size()].get());
  const FakeComponent labels(0, std::vector<std::string>(50, "a b"));

  TypeParam reference;
  const std::string expected = recorded(reference, labels, samples);
  ASSERT_GT(expected.size(), HxRecordingFileStream::kBufferBytes);

  const HxScopedTempDir directory("recording-stream");
  TypeParam writer;
  HxRecordingFileStream stream;
  writer.openFile(directory.file("run"), stream);
  ASSERT_TRUE(stream.is_open());
  record(writer, labels, samples, stream);
  stream.close();
  EXPECT_FALSE(stream.is_open());
  EXPECT_TRUE(stream.good());
  EXPECT_TRUE(contentsOf(directory.file("run")) == expected);
}

// What the buffer gathers reaches its target only when room runs out, on a flush or before a
// seek; a row larger than the buffer gets no room and goes through the stream instead.
TEST(HxRecordingFileBuffer, GathersUntilRoomRunsOutAndSeeksAfterHandingOver) {
  std::stringbuf target(std::ios::out);
  HxRecordingFileBuffer buffer(16);
  buffer.setTarget(&target);
  std::ostream stream(&buffer);

  char* room = buffer.room(10);
  ASSERT_NE(room, nullptr);
  std::memcpy(room, "0123456789", 10);
  buffer.commit(room + 10);
  EXPECT_EQ(target.str(), "");
  room = buffer.room(10);  // 6 bytes left: the first row goes to the target
  ASSERT_NE(room, nullptr);
  EXPECT_EQ(target.str(), "0123456789");
  std::memcpy(room, "abcdefghij", 10);
  buffer.commit(room + 4);  // only what the row used is kept
  EXPECT_EQ(buffer.room(17), nullptr);
  EXPECT_EQ(target.str(), "0123456789abcd");

  std::string scratch;
  {
    HxWriterRow::Row row(stream, scratch, 40);
    EXPECT_EQ(row.begin(), scratch.data());
    std::memset(row.begin(), 'x', 40);
    row.finish(row.begin() + 40);
  }
  {
    HxWriterRow::Row row(stream, scratch, 3);
    EXPECT_NE(row.begin(), scratch.data());
    std::memcpy(row.begin(), "end", 3);
    row.finish(row.begin() + 3);
  }
  EXPECT_EQ(stream.tellp(), std::streampos(14 + 40 + 3));
  stream.seekp(0);
  stream.write("Z", 1);
  stream.flush();
  EXPECT_TRUE(stream.good());
  EXPECT_EQ(target.str(), "Z123456789abcd" + std::string(40, 'x') + "end");
}

// A file that refuses its bytes fails the stream with the system's error, and stays failed:
// neither a later write, a direct row nor a flush succeeds after the stream is cleared.
TEST(HxRecordingFileStream, AFailedFileStaysFailed) {
  HxRecordingFileStream stream;
  stream.open("/dev/full", std::ios::out | std::ios::binary);
  ASSERT_TRUE(stream.is_open());
  const std::string block(HxRecordingFileStream::kBufferBytes / 3, 'v');
  errno = 0;
  for (int i = 0; i < 4 && stream.good(); ++i) stream.write(block.data(), static_cast<std::streamsize>(block.size()));
  EXPECT_TRUE(stream.bad());
  EXPECT_EQ(errno, ENOSPC);

  stream.clear();
  std::string scratch;
  {
    HxWriterRow::Row row(stream, scratch, 8);
    EXPECT_EQ(row.begin(), scratch.data());
    row.finish(row.begin() + 8);
  }
  EXPECT_TRUE(stream.bad());
  stream.clear();
  stream.write("x", 1);
  stream.flush();
  EXPECT_TRUE(stream.bad());
  stream.close();
  EXPECT_FALSE(stream.is_open());
}

}  // namespace
