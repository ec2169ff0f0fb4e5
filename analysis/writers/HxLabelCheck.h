#pragma once
/// \file
/// Finding the texts of a capture configuration that would corrupt a writer's file.

#include <string>
#include <vector>

#include "framework/HxTypes.h"

class HxSystemDataCapture;
class HxOutputWriterVector;

/// One text of a capture configuration that one writer cannot write as it stands.
///
/// The writers write labels and identifiers exactly as they are given; a text that holds the
/// format's own separators or quotes shifts columns, splits rows or, in a MATLAB file, turns the
/// rest of the label into code that runs when the file is opened. The host checks a
/// configuration with `hxFindUnsafeLabels` before it records.
struct HxUnsafeLabel {
  /// Where the text lives in the configuration.
  enum class Source {
    SystemLabel,     ///< the configuration's own label (`label()`)
    LinkIdentifier,  ///< a link capture's identifier: part of its columns' labels
    DataLabel,       ///< a column label of a data capture type
  };
  /// Where the text lives.
  Source source = Source::DataLabel;
  /// The text as the configuration holds it.
  std::string text;
  /// Position of the manipulator capture in the configuration.
  HxU32 capture = 0;
  /// The manipulator index of that capture.
  HxU32 manipulatorIndex = 0;
  /// The `HxDataCaptureLevel` code of the entry the text belongs to (link identifiers: link).
  HxU32 level = 0;
  /// The link identifier of that entry, at link level.
  std::string linkIdentifier;
  /// The end-effector index of that entry, at end-effector level.
  HxU32 endEffectorIndex = 0;
  /// For a column label: the type's description.
  std::string quantity;
  /// For a column label: the column's index in the type.
  HxU32 column = 0;
  /// The format descriptor of the writer whose format the text would corrupt.
  std::string format;
  /// That writer's file extension.
  std::string extension;
  /// What in the text breaks that format ("a comma", "a control character (U+000A)", ...).
  std::string reason;
};

/// Lists every text of `capture` that would corrupt the file of one of `writers`, once per
/// text, writer and reason, in flat order (the configuration's label first). Only texts that
/// reach a file are checked: the column labels of enabled columns of types wider than one
/// column, the identifiers of captured links, and (for the XML format, which writes the whole
/// configuration) the configuration's label.
///
/// What breaks a format:
/// - comma-delimited text, MATLAB and MRD: a comma, a quote of either kind, the MRD label
///   separator "  -  ", a control character;
/// - Mathematica: a double quote, a backslash, a control character;
/// - XML, and HDF5 (".h5": labels are string attributes): a control character other than tab,
///   line feed and carriage return;
/// - every format: bytes that are not UTF-8.
///
/// A writer of another class is checked as the strictest of these.
std::vector<HxUnsafeLabel> hxFindUnsafeLabels(const HxSystemDataCapture& capture, const HxOutputWriterVector& writers);
