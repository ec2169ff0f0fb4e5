#pragma once
// HxRecordPlot: hxrecord --plot, which draws a finished recording with the Python plotter
// hxplot.

#include <string>
#include <vector>

#include "analysis/writers/HxOutputWriterVector.h"
#include "framework/HxTypes.h"

/// Checks what --plot needs before anything is recorded: the display description `display`
/// must be a readable file and `writers` must write the CSV file hxplot reads. Returns false
/// with a message in `error` otherwise.
HxBoolean hxCheckPlotInputs(const std::string& display, const HxOutputWriterVector& writers, std::string& error);

/// How a run of the plotter ended.
struct HxPlotOutcome {
  enum class Kind { Plotted, NoPlotter, Failed };
  Kind kind = Kind::Failed;
  std::string plotter;  ///< the program run, when one was found
  std::string image;    ///< the image written (outputBase + ".png")
  std::string reason;   ///< why there is no plot: where the plotter was looked for, or how it failed
};

/// Runs `hxplot DISPLAY BASE.csv -o BASE.png` (no shell) and waits for it. hxplot is looked for
/// beside the running program (/proc/self/exe) first, then on PATH. The plotter writes to this
/// process's standard output and error.
HxPlotOutcome hxPlotRecording(const std::string& display, const std::string& outputBase);
