#pragma once
/// \file
/// HxHdf5OutputWriter: the recording as an HDF5 file (libhxSimulationHdf5, target hx::hdf5).

#include <fstream>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "analysis/capture/HxColumnDescription.h"
#include "analysis/writers/HxBaseOutputWriter.h"
#include "framework/HxToken.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlBasicType.h"

namespace HxSimAnalysis {
/// "hdf5OutputWriter", the HDF5 writer's element name.
extern const HxToken HxHdf5OutputWriterToken;
/// "compression", the HDF5 writer's deflate level.
extern const HxToken HxCompressionToken;
/// "chunkRows", the HDF5 writer's samples per chunk.
extern const HxToken HxChunkRowsToken;
}  // namespace HxSimAnalysis

class HxHdf5Recording;

/// Writes the recording as an HDF5 file ("HDF5", ".h5"): every value as the double it is, so a
/// file reads back exactly, chunked and optionally compressed, and readable while it is being
/// written and after a crash.
///
/// The file holds one dataset, "samples": float64, samples × columns, the columns those of a
/// sample record (time, path-point index, then the active data columns: disabled columns take
/// no column). It is chunked, `chunkRows` samples per chunk, and extendible in its first
/// dimension. The dataset's attributes, one string per column: "labels", "units" (the
/// quantity catalogue's SI texts, "" when not known), "quantities" (the quantity's local token
/// name) and "frames"; "computed" holds one 8-bit integer per column (0 for a column the
/// simulation does not compute). They come from `setColumnDescriptions` when the host gave as
/// many as there are columns, else from the capture configuration itself (`hxDescribeColumns`
/// without a simulation: joint units unknown), else from the label component's strings. The
/// root group carries the host's `setFileAttribute` pairs as string attributes.
///
/// The file is made with the newest file format and switched to single-writer/multiple-reader
/// mode once the dataset and its attributes are written: readers may open it (HDF5's SWMR
/// read mode, `h5py.File(path, "r", swmr=True)`) while it is written, and a file whose writer
/// was killed keeps every chunk flushed before. Samples are gathered into a buffer of one
/// chunk, allocated when the dataset is made; a full chunk is appended (the dataset extended,
/// the chunk written and flushed) at once, so writing a sample copies its values and does not
/// allocate. `finalize` appends the last partial chunk and closes the file; a file closed that
/// way opens in HDF5's ordinary read mode, while one whose writer died (or still writes) opens
/// only in SWMR read mode.
///
/// The recorder's output stream: `openFile` opens it (binary, replacing the file) exactly as
/// the other writers do, so that a file that cannot be made fails the stream as theirs do, and
/// then makes the HDF5 file under the same name through HDF5's own file handle. Nothing is ever
/// written to the stream; the recorder only flushes and closes it, which writes nothing. An
/// HDF5 call that fails sets the stream's badbit, with `errno` as the failing call left it, so
/// the recorder's file states see the failure; the file is then left as it is and later
/// samples are dropped. HDF5's own error printing is turned off around each of its calls.
///
/// A second `openFile` while a file is still open (a save abandoned without `finalize`)
/// appends the buffered samples and closes that file first; so does the destructor. Copies
/// carry the settings, descriptions and attributes, not the open file.
///
/// Values of a sample are taken from the sample record's reals (`elementValues`); a component
/// without reals is read from its strings (parsed as the toolkit's number texts, allocating).
/// A sample of another width than the dataset fills what it has and leaves the rest NaN.
///
/// HDF5 (serial) is not thread-safe: use HDF5 from one thread at a time.
class HxHdf5OutputWriter : public HxBaseOutputWriter {
  HX_XML_SERIALISABLE(HxHdf5OutputWriter);

 public:
  /// Uncompressed, chunk size chosen from the width (`chunkRows` 0).
  HxHdf5OutputWriter();

  /// Compares the settings ("compression", "chunkRows"); descriptions, attributes and the open
  /// file are not compared.
  bool operator==(const HxHdf5OutputWriter& other) const;

  /// Registers "compression" and "chunkRows".
  void registerComponents() override;

  const std::string& formatDescriptor() const override;
  const std::string& fileExtension() const override;
  void openFile(const std::string& fileName, std::ofstream& stream) override;
  void initialize(const HxSystemDataVector& data, std::ostream& stream) override;
  void finalize(const HxSystemDataVector& data, std::ostream& stream) override;
  void writeComponentOpening(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;
  void writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;
  void writeComponentClosing(const HxBaseSystemDataComponent& component, std::ostream& stream) const override;

  /// Deflate level of the chunks, 0 (none) to 9; levels above 9 write as 9. A level above 0
  /// also shuffles the bytes of the doubles before deflating them, which compresses them
  /// better. Serialised as "compression".
  HxU32 compression() const { return compression_.value(); }
  /// Sets the deflate level (see `compression`).
  void setCompression(HxU32 level) { compression_ = level; }
  /// Samples per chunk: a chunk is what a reader sees at a time after a crash and what is
  /// written at once. 0 (the default) chooses about 256 KiB per chunk; a chunk holds at most
  /// 256 MiB. Serialised as "chunkRows".
  HxU32 chunkRows() const { return chunkRows_.value(); }
  /// Sets the samples per chunk (see `chunkRows`).
  void setChunkRows(HxU32 rows) { chunkRows_ = rows; }
  /// The samples per chunk a file of `columns` columns gets with the settings.
  HxU32 effectiveChunkRows(HxU32 columns) const;

  /// What each column is (`hxDescribeColumns(capture, &simulation)`), written as the dataset's
  /// attributes by the next file whose width matches. An empty list (the default) leaves it to
  /// the capture configuration.
  void setColumnDescriptions(const std::vector<HxColumnDescription>& columns) { columns_ = columns; }
  /// The descriptions `setColumnDescriptions` gave.
  const std::vector<HxColumnDescription>& columnDescriptions() const { return columns_; }
  /// Adds (or replaces) a string attribute of the file's root group, written by the next file:
  /// what the recording is (model, configuration, mode, ...).
  void setFileAttribute(const std::string& name, const std::string& value);
  /// The file attributes, name and value, in the order they were first set.
  const std::vector<std::pair<std::string, std::string>>& fileAttributes() const { return attributes_; }

 private:
  /// Owns the file being written; a copy starts without one and assignment keeps the target's.
  class FileSlot {
   public:
    FileSlot() = default;
    FileSlot(const FileSlot&) {}
    FileSlot& operator=(const FileSlot&) { return *this; }
    ~FileSlot();
    HxHdf5Recording* get() const { return recording_; }
    /// Ends the file held (appending its buffered samples) and holds `recording`; false when
    /// ending the old one failed.
    bool reset(HxHdf5Recording* recording = nullptr);

   private:
    HxHdf5Recording* recording_ = nullptr;
  };

  static const std::string m_theFormatDescriptor;
  static const std::string m_theFileExtension;

  HxXmlBasicType<HxU32> compression_{0u};
  HxXmlBasicType<HxU32> chunkRows_{0u};
  std::vector<HxColumnDescription> columns_;
  std::vector<std::pair<std::string, std::string>> attributes_;
  mutable FileSlot file_;
  // Used only for components that give no reals: their strings and the values parsed from them.
  mutable HxScratch<std::vector<std::string>> strings_;
  mutable HxScratch<std::vector<double>> parsed_;
};
