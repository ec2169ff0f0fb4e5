#pragma once
// Repairing the text files of a recording (CSV, XML, MATLAB, Mathematica) that was cut short.
//
// A recording that is killed leaves its files cut anywhere: mid-row, mid-element, without the
// text its writer adds when the recording is finished. Each function here reads its file from
// both ends only (the label block from the start, the last whole sample from the end) and
// counts the samples in one streaming pass, so that it is cheap on large files. It then cuts the
// file back to its last whole sample and appends what the writer would have written to finish
// it, rewriting it through `hxRewriteFile`: the result is byte for byte the file of a finished
// recording of those samples. A finished file is left untouched.
//
// The layout of each format (how its label block, its samples and its closing text end) is
// taken from the library's writer itself, by writing a small recording into memory.
//
// A file cut before its label block is whole holds nothing to keep: the result is then
// `Outcome::Failed`, and so it is for a file that does not begin as the writer begins it. A file
// whose label block is whole but that holds no whole sample becomes the file of a recording
// without samples.

#include <string>

#include "tools/lib/HxRepair.h"

/// How the files of one text format are laid out, as its writer writes them.
struct HxTextLayout {
  /// The writer's format name.
  std::string format;
  /// What every recording's file begins with, whatever was captured.
  std::string start;
  /// Its first occurrence after `start` ends the label block.
  std::string labelEnd;
  /// Written after the label block, before the first sample.
  std::string opening;
  /// Ends every sample.
  std::string sampleEnd;
  /// Follows the last sample in a finished file.
  std::string trailer;
  /// What a sample is called in messages.
  std::string sample;
  /// The label row: it starts after `head` and is `labelOpen`, the labels joined by
  /// `labelSeparator`, then `labelClose`, which ends the label block.
  std::string head, labelOpen, labelSeparator, labelClose;
  /// The characters that stand between and around the values of a sample (the values are the
  /// runs of other characters).
  std::string valueSeparators;
};

/// The layout of the text files with extension `extension` (".csv", ".xml", ".m", ".nb"), taken
/// from their writer once; null for any other extension.
const HxTextLayout* hxTextLayout(const std::string& extension);

/// The comma-delimited text file (.csv): cut back to its last whole row. It has no closing text,
/// so a file that ends with a whole row is finished.
HxFileRepair hxRepairCsvFile(const std::string& path, bool inspectOnly);

/// The XML file (.xml): cut back to its last whole sample element and given the end of its root
/// element.
HxFileRepair hxRepairXmlFile(const std::string& path, bool inspectOnly);

/// The MATLAB script (.m): cut back to its last whole row of `Data` and given the "];" that closes
/// it (and the "Data=[" line itself, when the file was cut inside it).
HxFileRepair hxRepairMatlabFile(const std::string& path, bool inspectOnly);

/// The Mathematica notebook (.nb): cut back to its last whole row of `Data` and given the
/// notebook's closing text (the end of the first cell, the other two cells and the options).
HxFileRepair hxRepairMathematicaFile(const std::string& path, bool inspectOnly);
