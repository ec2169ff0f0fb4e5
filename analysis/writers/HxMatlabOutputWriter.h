#pragma once
/// \file
/// HxMatlabOutputWriter: the recording as a MATLAB script.

#include <string>
#include <vector>

#include "analysis/writers/HxBaseOutputWriter.h"

/// Writes the recording as a MATLAB script ("MATLAB", ".m", text mode) that assigns the labels
/// to `Description` and the samples, one row each, to `Data`:
///
///     Description=[
///     'Time'<TAB>'Point Path Index'<TAB>...'<last label>'
///     ];
///     Data=[
///     0<TAB>0<TAB>...<last value>;
///     ...
///     ];
///
/// The file has no header or trailer. A component's opening is "Description=[\n" for labels
/// (type 0), "Data=[\n" for a sample (type 1) and nothing for another type; its closing is
/// "];\n" whatever the type, so the final "];" of `Data` is written when the recording is
/// finished. A label line ends "'\n", a sample line ";\n"; a component of another type writes
/// no line. Strings are written as they stand (a quote in a label is not doubled).
class HxMatlabOutputWriter : public HxBaseOutputWriter {
  HX_XML_SERIALISABLE(HxMatlabOutputWriter);
  HX_OUTPUT_WRITER_MEMBERS(HxMatlabOutputWriter);

 private:
  // Reused by every writeDataComponent: the component's strings and the line being built.
  mutable HxScratch<std::vector<std::string>> scratch_;
  mutable HxScratch<std::string> row_;
};
