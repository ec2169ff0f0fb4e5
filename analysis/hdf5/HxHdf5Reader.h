#pragma once
/// \file
/// HxHdf5Reader: the samples of an HDF5 file that HxHdf5OutputWriter wrote.

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Reads an HDF5 recording (see HxHdf5OutputWriter): its dataset "samples", the dataset's
/// column attributes and the file's string attributes, also while the file is being written or
/// after its writer died (through HDF5's single-writer/multiple-reader read mode: then the
/// samples are those flushed when the file was opened).
///
///     HxHdf5Reader reader;
///     std::string error;
///     if (!reader.open("out/run.h5", error)) ...;
///     std::vector<double> rows(reader.columns() * reader.samples());
///     reader.read(0, reader.samples(), rows.data(), error);
///
/// Nothing is printed; every failure is a result with one sentence in `error`.
class HxHdf5Reader {
 public:
  HxHdf5Reader();
  ~HxHdf5Reader();
  HxHdf5Reader(const HxHdf5Reader&) = delete;
  HxHdf5Reader& operator=(const HxHdf5Reader&) = delete;

  /// Opens `path` (closing any file open before). False, with `error`, when it is not an HDF5
  /// file or holds no two-dimensional dataset "samples" of reals.
  bool open(const std::string& path, std::string& error);
  /// True when the file's writer closed it; false when it opened only in SWMR read mode (its
  /// writer still writes it, or died).
  bool finished() const;
  /// Samples (rows) of "samples".
  std::uint64_t samples() const;
  /// Columns of "samples".
  std::uint64_t columns() const;
  /// The column labels (attribute "labels"), one per column; empty when the file has none (or
  /// not one per column). The same holds for the three below.
  const std::vector<std::string>& labels() const;
  /// The columns' units (attribute "units").
  const std::vector<std::string>& units() const;
  /// The columns' quantities (attribute "quantities": local token names).
  const std::vector<std::string>& quantities() const;
  /// The columns' frames (attribute "frames").
  const std::vector<std::string>& frames() const;
  /// The string attributes of the file's root group, in HDF5's order of their names.
  const std::vector<std::pair<std::string, std::string>>& fileAttributes() const;
  /// Reads `count` samples from sample `first` on into `out` (count × columns() doubles, row
  /// after row). False, with `error`, when they are not there or reading fails.
  bool read(std::uint64_t first, std::uint64_t count, double* out, std::string& error) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};
