#pragma once
// HxInfo: what hxinfo finds in a recording: the statistics of a data file in any of the six
// formats, read in one pass, and what the manifest beside it says.

#include <cstdint>
#include <string>
#include <vector>

/// One column of a data file.
struct HxInfoColumn {
  std::string label;
  /// From the manifest (or, for the XML file, from its capture configuration); empty when not
  /// known or the column has none.
  std::string unit;
  /// Values that are numbers (NaN left out); minimum, maximum and mean are over them.
  std::uint64_t count = 0;
  double minimum = 0.0;
  double maximum = 0.0;
  double mean = 0.0;
};

/// What one data file holds.
struct HxInfoData {
  std::string path;
  /// The writer's format name ("Comma-Delimited Text", "XML", "MRD", ...).
  std::string format;
  /// True when the file is finished; false when it was cut short (`repair` then says what
  /// hxrepair would do with it).
  bool finished = false;
  std::string repair;
  /// False for a file hxrepair leaves as it is (HDF5: readable as it stands).
  bool repairable = true;
  /// Whole samples; the statistics are over them.
  std::uint64_t samples = 0;
  /// Time of the first and the last sample (when there is one).
  double firstTime = 0.0;
  double lastTime = 0.0;
  std::vector<HxInfoColumn> columns;
  /// What the reader recovered or could not use, one sentence each.
  std::vector<std::string> warnings;
};

/// What a recording's manifest says (see hxrecord's BASE.json).
struct HxInfoManifest {
  struct File {
    std::string path;  ///< resolved against the manifest's folder
    std::string format;
    std::string extension;
    std::uint64_t samples = 0;
  };
  struct Column {
    std::string label;
    std::string unit;
  };
  std::string path;
  /// "recording", "finished", "interrupted" or "failed"; a recording whose process is gone (its
  /// pid on this host) counts as interrupted, `message` saying so.
  std::string status;
  std::string message;
  std::string mode;
  std::string started, updated;
  std::string model, capture, writers;
  std::vector<std::string> commandLine;
  double sampleInterval = 0.0;
  double duration = 0.0;
  std::uint64_t samples = 0;
  std::vector<File> files;
  std::vector<Column> columns;
};

/// True when `path` names a manifest (ends with ".json").
bool hxIsManifestPath(const std::string& path);

/// Reads the manifest at `path`. False, with one sentence in `error`, when it cannot be read or
/// is not an hxrecord manifest.
bool hxReadInfoManifest(const std::string& path, HxInfoManifest& manifest, std::string& error);

/// Reads the data file at `path` (.csv, .xml, .mrd, .m, .nb or .h5, by its extension) in one pass,
/// holding one sample at a time, into `data`; a file cut short is inspected by the repair
/// without being changed. Column labels and units come from `manifest` when it is given and has
/// as many columns as the file. False, with one sentence in `error`, for an unknown extension
/// or a file that cannot be read or understood.
bool hxReadInfoData(const std::string& path, const HxInfoManifest* manifest, HxInfoData& data, std::string& error);
