#pragma once
/// \file
/// HxTextOutputWriter: the recording as comma-delimited text.

#include <string>
#include <vector>

#include "analysis/writers/HxBaseOutputWriter.h"

/// Writes the recording as comma-delimited text ("Comma-Delimited Text", ".csv", text mode):
/// one line of column labels, then one line per sample (time, path-point index, then every
/// value), fields separated by a single "," and lines ended by the single byte 0x0A. Nothing is
/// quoted, escaped or padded: the fields are exactly the components' string elements. The file
/// has no header or trailer, and the components' openings and closings write nothing.
///
/// With disabled columns the label line is longer than the sample lines by the number of
/// disabled columns (the capture's label list keeps empty labels at its end); the writer does
/// not reconcile the two.
class HxTextOutputWriter : public HxBaseOutputWriter {
  HX_XML_SERIALISABLE(HxTextOutputWriter);
  HX_OUTPUT_WRITER_MEMBERS(HxTextOutputWriter);

 private:
  // Reused by every writeDataComponent: the component's strings and the line being built.
  mutable HxScratch<std::vector<std::string>> scratch_;
  mutable HxScratch<std::string> row_;
};
