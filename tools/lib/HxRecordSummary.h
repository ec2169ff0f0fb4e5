#pragma once
// HxRecordSummary: what a finished recording produced, and the summary hxrecord prints of it.

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "framework/HxTypes.h"
#include "simulation/mujoco/HxMujocoSimulation.h"

/// What a finished recording produced.
struct HxRecordSummary {
  struct File {
    std::string path;    ///< as written (output base plus extension)
    std::string format;  ///< the writer's format descriptor
    std::uintmax_t size = 0;
  };
  HxU32 samples = 0;
  /// Values per sample, time and path-point index included (the columns of a CSV data line).
  HxU32 columns = 0;
  double simulatedTime = 0.0;   ///< seconds
  double wallTime = 0.0;        ///< seconds spent in the recording loop
  double sampleInterval = 0.0;  ///< the interval actually used, seconds
  HxMujocoSimulation::Mode mode = HxMujocoSimulation::Mode::Dynamic;
  std::vector<File> files;
};

/// Writes the summary shown at the end of a recording: samples, columns, every file with its
/// size, wall time and the simulated-to-wall time ratio.
void hxWriteRecordSummary(const HxRecordSummary& summary, std::ostream& out);
