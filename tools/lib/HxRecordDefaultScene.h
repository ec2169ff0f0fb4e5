#pragma once
// The built-in default scene of hxrecord: the example files, embedded into the program when it
// is built (see tools/hxrecord.cmake), so that hxrecord without arguments works anywhere.

#include <string>

/// One embedded file: its path in the source tree and its whole text.
struct HxRecordEmbeddedFile {
  const char* path;  ///< for example "examples/models/two_arms_table.xml"
  const std::string& text;
};

/// The default scene's model (examples/models/two_arms_table.xml).
const HxRecordEmbeddedFile& hxRecordDefaultModel();
/// The default capture configuration (examples/config/default_capture.xml).
const HxRecordEmbeddedFile& hxRecordDefaultCapture();
/// The default writer list (examples/config/default_writers.xml).
const HxRecordEmbeddedFile& hxRecordDefaultWriters();
