// Reads a writer list naming the HDF5 writer through its object factory, records ten samples of
// an empty capture (time and path-point index) and reads them back; exit status 0 when all of it
// works.
#include <cstdio>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/hdf5/HxHdf5ObjectFactory.h"
#include "analysis/hdf5/HxHdf5Reader.h"
#include "analysis/storage/HxSystemStoredData.h"
#include "framework/HxXmlReader.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: hdf5_host BASE\n", stderr);
    return 2;
  }
  const std::string list =
      "<sm:outputWriterVector xmlns:sm=\"http://www.hxtoolkit.org/namespace/sm#\" count=\"1\">"
      "<sm:hdf5OutputWriter><sm:compression>1</sm:compression></sm:hdf5OutputWriter></sm:outputWriterVector>";
  const HxHdf5ObjectFactory factory;
  HxXmlReader reader;
  reader.setObjectFactory(&factory);
  HxOutputWriterVector writers;
  if (!reader.openMemory(list) || !reader.readObject(writers)) return 1;

  HxSystemDataCapture capture;
  HxSystemStoredData recorder;
  recorder.setOutputWriterVector(writers);
  recorder.allocateStorage(capture);
  recorder.beginSaveToFile(argv[1]);
  for (unsigned int k = 0; k < 10; ++k) recorder.saveCapturedData(0.5 * k, k, capture);
  recorder.finishSaveToFile();
  if (recorder.failedOutputFile() >= 0) return 1;

  HxHdf5Reader file;
  std::string error;
  std::vector<double> values(20);
  if (!file.open(std::string(argv[1]) + ".h5", error) || file.samples() != 10 || file.columns() != 2 ||
      !file.read(0, 10, values.data(), error) || values[18] != 4.5 || values[19] != 9.0 || !file.finished()) {
    std::fprintf(stderr, "hdf5_host: %s\n", error.c_str());
    return 1;
  }
  std::puts("10 samples written and read back");
  return 0;
}
