// hxrecord with its files written on a second thread: the same files as on one thread, and no
// allocation per sample on either thread.

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/hdf5/HxHdf5Reader.h"
#include "tests/support/HxAllocationCounter.h"
#include "tests/support/HxScopedTempDir.h"
#include "tests/tools/HxToolsTestSupport.h"
#include "tools/lib/HxRecord.h"

namespace {

using HxToolsTest::readFile;

// Everything an HDF5 recording holds that a reader sees: its attributes, labels, units and every
// sample. (Its bytes differ from run to run: HDF5 stamps its objects with the time.)
std::string hdf5Content(const std::string& path) {
  HxHdf5Reader reader;
  std::string error;
  if (!reader.open(path, error)) return error;
  std::ostringstream content;
  content << reader.samples() << " x " << reader.columns() << "\n";
  for (const auto& [name, value] : reader.fileAttributes()) content << name << "=" << value << "\n";
  for (const auto* texts : {&reader.labels(), &reader.units(), &reader.quantities(), &reader.frames()}) {
    for (const std::string& text : *texts) content << text << ";";
    content << "\n";
  }
  std::vector<double> values(reader.samples() * reader.columns());
  if (!reader.read(0, reader.samples(), values.data(), error)) return error;
  content.write(reinterpret_cast<const char*>(values.data()), static_cast<std::streamsize>(values.size() * 8));
  return content.str();
}

// The default scene in both modes, into all six formats: two threads write what one writes.
TEST(HxRecordThreadsTest, TwoThreadsWriteTheFilesOfOne) {
  const HxScopedTempDir directory("threads");
  for (const char* mode : {"dynamic", "kinematic"}) {
    SCOPED_TRACE(mode);
    for (const char* threads : {"1", "2"}) {
      std::ostringstream out, err;
      ASSERT_EQ(hxRecordMain({"-q", "--mode", mode, "--formats", "csv,xml,mrd,m,nb,h5", "--threads", threads, "-o",
                              directory.file(std::string(mode) + threads + "/rec")},
                             out, err, false),
                0)
          << err.str();
      EXPECT_EQ(out.str() + err.str(), "");
    }
    const std::string one = directory.file(std::string(mode) + "1/rec");
    const std::string two = directory.file(std::string(mode) + "2/rec");
    for (const char* extension : {".csv", ".xml", ".mrd", ".m", ".nb"}) {
      const std::string bytes = readFile(one + extension);
      EXPECT_GT(bytes.size(), 100000u) << extension;
      EXPECT_TRUE(bytes == readFile(two + extension)) << extension << " differs";
    }
    const std::string hdf5 = hdf5Content(one + ".h5");
    EXPECT_GT(hdf5.size(), 801u * 432u * 8u);
    EXPECT_TRUE(hdf5 == hdf5Content(two + ".h5")) << ".h5 differs";
  }
}

// Once the files are under way nothing allocates per sample, on either thread: a recording of
// twice as many samples allocates no more than the shorter one. (The first recording of the
// process is left out: it also makes what the library keeps for good.)
TEST(HxRecordThreadsTest, SamplesDoNotAllocate) {
  const HxScopedTempDir directory("allocations");
  auto allocations = [&](unsigned threads, double seconds) {
    HxRecordOptions options;
    options.duration = seconds;
    options.threads = threads;
    options.outputBase = directory.file("run");
    HxRecordSession session(options);
    EXPECT_EQ(session.prepare(), HxRecordStatus::Success);
    const HxAllocationCounter counter;
    EXPECT_EQ(session.record(), HxRecordStatus::Success);
    const std::uint64_t count = counter.allocations();
    EXPECT_EQ(session.summary().samples, static_cast<HxU32>(seconds * 100.0 + 1.5));
    EXPECT_EQ(session.summary().files.size(), 5u);
    return count;
  };
  allocations(1, 0.1);
  for (const unsigned threads : {1u, 2u}) {
    SCOPED_TRACE(threads);
    const std::uint64_t shorter = allocations(threads, 1.0);
    EXPECT_GT(shorter, 0u);
    EXPECT_EQ(allocations(threads, 2.0), shorter);
  }
}

}  // namespace
