#include "analysis/hdf5/HxHdf5OutputWriter.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/hdf5/HxHdf5Support.h"
#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// A module token: the module's namespace followed by `localName`. libhxSimulationAnalysis,
// which holds the namespace, is loaded and initialised before this library.
HxToken moduleToken(const char* localName) {
  HxToken token(HxSimAnalysis::ns);
  token += localName;
  return token;
}

// Chunks hold about this many bytes when the writer chooses, and never more than the maximum.
constexpr std::uint64_t kChosenChunkBytes = std::uint64_t{1} << 20;
constexpr std::uint64_t kMaximumChunkBytes = std::uint64_t{256} << 20;

// A real read from a number's text as strtod reads it in the C locale.
double numberOf(const std::string& text) {
  double value = 0.0;
  const char* end = text.data() + text.size();
  const std::from_chars_result result = std::from_chars(text.data(), end, value);
  if (result.ec == std::errc() && result.ptr == end) return value;
  return std::strtod(text.c_str(), nullptr);
}

// Writes `strings` as the string-array attribute `name` of `object`.
bool writeStrings(hid_t object, const char* name, const std::vector<std::string>& strings) {
  std::vector<const char*> pointers;
  for (const std::string& text : strings) pointers.push_back(text.c_str());
  const hsize_t count = pointers.size();
  HxHdf5::Type type(HxHdf5::stringType());
  HxHdf5::Space space(count == 0 ? H5Screate(H5S_NULL) : H5Screate_simple(1, &count, nullptr));
  if (!type.valid() || !space.valid()) return false;
  HxHdf5::Attribute attribute(H5Acreate2(object, name, type.get(), space.get(), H5P_DEFAULT, H5P_DEFAULT));
  return attribute.valid() && (count == 0 || H5Awrite(attribute.get(), type.get(), pointers.data()) >= 0);
}

// Writes `text` as the scalar string attribute `name` of `object`.
bool writeString(hid_t object, const char* name, const std::string& text) {
  const char* pointer = text.c_str();
  HxHdf5::Type type(HxHdf5::stringType());
  HxHdf5::Space space(H5Screate(H5S_SCALAR));
  if (!type.valid() || !space.valid()) return false;
  HxHdf5::Attribute attribute(H5Acreate2(object, name, type.get(), space.get(), H5P_DEFAULT, H5P_DEFAULT));
  return attribute.valid() && H5Awrite(attribute.get(), type.get(), &pointer) >= 0;
}

// Writes `values` as the 8-bit integer array attribute `name` of `object`.
bool writeFlags(hid_t object, const char* name, const std::vector<std::uint8_t>& values) {
  const hsize_t count = values.size();
  HxHdf5::Space space(count == 0 ? H5Screate(H5S_NULL) : H5Screate_simple(1, &count, nullptr));
  if (!space.valid()) return false;
  HxHdf5::Attribute attribute(H5Acreate2(object, name, H5T_STD_U8LE, space.get(), H5P_DEFAULT, H5P_DEFAULT));
  return attribute.valid() && (count == 0 || H5Awrite(attribute.get(), H5T_NATIVE_UINT8, values.data()) >= 0);
}
}  // namespace

namespace HxSimAnalysis {
const HxToken HxHdf5OutputWriterToken(moduleToken("hdf5OutputWriter"));
const HxToken HxCompressionToken(moduleToken("compression"));
const HxToken HxChunkRowsToken(moduleToken("chunkRows"));
}  // namespace HxSimAnalysis

/// One HDF5 file being written: the file, its dataset once the width is known, and the chunk
/// being gathered. Every failure is kept (the first errno with it); a failed file takes nothing
/// more.
class HxHdf5Recording {
 public:
  /// Makes the file `name`, replacing any; `failed()` tells whether that worked.
  explicit HxHdf5Recording(const std::string& name) {
    const HxHdf5::Quiet quiet;
    HxHdf5::Properties access(HxHdf5::fileAccess(true));
    file_.reset(H5Fcreate(name.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, access.get()));
    check(file_.valid());
  }
  ~HxHdf5Recording() { finish(); }
  HxHdf5Recording(const HxHdf5Recording&) = delete;
  HxHdf5Recording& operator=(const HxHdf5Recording&) = delete;

  bool failed() const { return failed_; }
  int error() const { return error_; }
  bool hasDataset() const { return dataset_.valid(); }

  /// The columns as the label component describes them.
  void describe(const HxBaseSystemDataComponent& labels) {
    described_.clear();
    if (const auto* capture = dynamic_cast<const HxSystemDataCapture*>(&labels)) {
      described_ = hxDescribeColumns(*capture);
      return;
    }
    std::vector<std::string> strings;
    labels.getStringElements(strings);
    described_.resize(strings.size());
    for (std::size_t i = 0; i < strings.size(); ++i) described_[i].label = std::move(strings[i]);
  }

  /// Makes the dataset of `columns` columns with its attributes, the file's attributes, and
  /// switches the file to single-writer/multiple-reader mode.
  void createDataset(const HxHdf5OutputWriter& writer, std::size_t columns) {
    if (failed_ || dataset_.valid() || columns == 0) return;
    const HxHdf5::Quiet quiet;
    columns_ = columns;
    chunkRows_ = writer.effectiveChunkRows(static_cast<HxU32>(std::min<std::size_t>(columns, 0xFFFFFFFFu)));
    const hsize_t dimensions[2] = {0, columns_};
    const hsize_t maximum[2] = {H5S_UNLIMITED, columns_};
    const hsize_t chunk[2] = {chunkRows_, columns_};
    HxHdf5::Space space(H5Screate_simple(2, dimensions, maximum));
    HxHdf5::Properties creation(H5Pcreate(H5P_DATASET_CREATE));
    HxHdf5::Properties access(H5Pcreate(H5P_DATASET_ACCESS));
    if (!check(space.valid() && creation.valid() && access.valid() && H5Pset_chunk(creation.get(), 2, chunk) >= 0)) {
      return;
    }
    const HxU32 level = std::min<HxU32>(writer.compression(), 9);
    if (level > 0 && !check(H5Pset_shuffle(creation.get()) >= 0 && H5Pset_deflate(creation.get(), level) >= 0)) return;
    // A whole uncompressed chunk of doubles already in the file's byte order is the chunk's
    // bytes: it goes to the file as it stands, without the copy and clearing of the library's
    // write path.
    directChunks_ = level == 0 && H5Tequal(H5T_NATIVE_DOUBLE, H5T_IEEE_F64LE) > 0;
    // Every row of the extent is written: chunks need no fill before their rows arrive.
    if (!check(H5Pset_fill_time(creation.get(), H5D_FILL_TIME_NEVER) >= 0)) return;
    // Whole chunks are written at once: no chunk cache, so they go to the file without a copy.
    if (!check(H5Pset_chunk_cache(access.get(), 0, 0, 1.0) >= 0)) return;
    dataset_.reset(
        H5Dcreate2(file_.get(), "samples", H5T_IEEE_F64LE, space.get(), H5P_DEFAULT, creation.get(), access.get()));
    if (!check(dataset_.valid())) return;

    // What each column is: the host's descriptions, else the label component's, as wide as the data.
    const std::vector<HxColumnDescription>& given = writer.columnDescriptions();
    std::vector<HxColumnDescription> columnsOf = given.size() == columns_ ? given : described_;
    columnsOf.resize(columns_);
    std::vector<std::string> labels, units, quantities, frames;
    std::vector<std::uint8_t> computed;
    for (const HxColumnDescription& column : columnsOf) {
      labels.push_back(column.label);
      units.push_back(column.unit);
      quantities.push_back(column.quantity);
      frames.push_back(column.frame);
      computed.push_back(column.computed ? 1 : 0);
    }
    const hid_t data = dataset_.get();
    if (!check(writeStrings(data, "labels", labels) && writeStrings(data, "units", units) &&
               writeStrings(data, "quantities", quantities) && writeStrings(data, "frames", frames) &&
               writeFlags(data, "computed", computed))) {
      return;
    }
    for (const auto& [name, value] : writer.fileAttributes()) {
      if (!check(writeString(file_.get(), name.c_str(), value))) return;
    }
    chunkSpace_.reset(H5Screate_simple(2, chunk, nullptr));
    if (!check(chunkSpace_.valid() && H5Fstart_swmr_write(file_.get()) >= 0)) return;
    buffer_.assign(static_cast<std::size_t>(chunkRows_ * columns_), std::numeric_limits<double>::quiet_NaN());
  }

  /// Adds one sample of `count` values: copied into the chunk, which is appended when full.
  void append(const double* values, std::size_t count) {
    if (failed_ || !dataset_.valid()) return;
    double* const row = buffer_.data() + buffered_ * columns_;
    const std::size_t copied = std::min<std::size_t>(count, columns_);
    std::memcpy(row, values, copied * sizeof(double));
    std::fill(row + copied, row + columns_, std::numeric_limits<double>::quiet_NaN());
    if (++buffered_ == chunkRows_) appendChunk();
  }

  /// Appends the samples gathered and closes the file; false when anything failed.
  bool finish() {
    if (!file_.valid()) return !failed_;
    const HxHdf5::Quiet quiet;
    if (buffered_ > 0 && !failed_) appendChunk();
    const bool spaceClosed = chunkSpace_.reset();
    const bool datasetClosed = dataset_.reset();
    check(spaceClosed && datasetClosed);
    check(file_.reset());
    return !failed_;
  }

 private:
  // Notes the first failure (with errno as the failing call left it); returns `ok`.
  bool check(bool ok) {
    if (!ok && !failed_) {
      failed_ = true;
      error_ = errno;
    }
    return ok;
  }

  // Extends the dataset by the rows gathered, writes them there and flushes the dataset, so
  // that readers (and a file whose writer dies) see them.
  void appendChunk() {
    const HxHdf5::Quiet quiet;
    const hsize_t rows = buffered_;
    buffered_ = 0;
    const hsize_t extent[2] = {written_ + rows, columns_};
    const hsize_t start[2] = {written_, 0};
    if (!check(H5Dset_extent(dataset_.get(), extent) >= 0)) return;
    const hid_t data = dataset_.get();
    if (!check(writeRows(data, rows, start) && H5Dflush(data) >= 0)) return;
    written_ += rows;
  }

  // Writes the first `rows` rows of the buffer at `start`, a chunk boundary inside the extent.
  bool writeRows(hid_t data, hsize_t rows, const hsize_t start[2]) {
    if (directChunks_ && rows == chunkRows_) {
      const std::size_t bytes = static_cast<std::size_t>(rows * columns_) * sizeof(double);
      return H5Dwrite_chunk(data, H5P_DEFAULT, 0, start, bytes, buffer_.data()) >= 0;
    }
    const hsize_t count[2] = {rows, columns_};
    HxHdf5::Space fileSpace(H5Dget_space(data));
    HxHdf5::Space partSpace;
    if (rows != chunkRows_) partSpace.reset(H5Screate_simple(2, count, nullptr));
    const hid_t memorySpace = rows == chunkRows_ ? chunkSpace_.get() : partSpace.get();
    return fileSpace.valid() && memorySpace >= 0 &&
           H5Sselect_hyperslab(fileSpace.get(), H5S_SELECT_SET, start, nullptr, count, nullptr) >= 0 &&
           H5Dwrite(data, H5T_NATIVE_DOUBLE, memorySpace, fileSpace.get(), H5P_DEFAULT, buffer_.data()) >= 0;
  }

  HxHdf5::File file_;
  HxHdf5::Dataset dataset_;
  HxHdf5::Space chunkSpace_;
  std::vector<HxColumnDescription> described_;
  std::vector<double> buffer_;
  hsize_t columns_ = 0;
  hsize_t chunkRows_ = 0;
  hsize_t buffered_ = 0;
  hsize_t written_ = 0;
  bool directChunks_ = false;
  bool failed_ = false;
  int error_ = 0;
};

namespace {
// Makes the recorder see a failure of `recording`: the stream goes bad with the failure's errno.
void reportFailure(const HxHdf5Recording& recording, std::ostream& stream) {
  stream.setstate(std::ios::badbit);
  errno = recording.error();
}
}  // namespace

HxHdf5OutputWriter::FileSlot::~FileSlot() { reset(); }

bool HxHdf5OutputWriter::FileSlot::reset(HxHdf5Recording* recording) {
  bool finished = true;
  if (recording_ != nullptr) {
    finished = recording_->finish();
    const int error = recording_->error();
    delete recording_;
    if (!finished) errno = error;
  }
  recording_ = recording;
  return finished;
}

HX_XML_SERIALISABLE_DEFINITIONS(HxHdf5OutputWriter, HxSimAnalysis::HxHdf5OutputWriterToken)

const std::string HxHdf5OutputWriter::m_theFormatDescriptor("HDF5");
const std::string HxHdf5OutputWriter::m_theFileExtension(".h5");

HxHdf5OutputWriter::HxHdf5OutputWriter() = default;

bool HxHdf5OutputWriter::operator==(const HxHdf5OutputWriter& other) const {
  return HxBaseOutputWriter::operator==(other) && compression_ == other.compression_ && chunkRows_ == other.chunkRows_;
}

void HxHdf5OutputWriter::registerComponents() {
  registerComponent(HxSimAnalysis::HxCompressionToken, &compression_);
  registerComponent(HxSimAnalysis::HxChunkRowsToken, &chunkRows_);
}

const std::string& HxHdf5OutputWriter::formatDescriptor() const { return m_theFormatDescriptor; }
const std::string& HxHdf5OutputWriter::fileExtension() const { return m_theFileExtension; }

HxU32 HxHdf5OutputWriter::effectiveChunkRows(HxU32 columns) const {
  const std::uint64_t rowBytes = sizeof(double) * std::max<std::uint64_t>(columns, 1);
  std::uint64_t rows = chunkRows() != 0 ? chunkRows() : kChosenChunkBytes / rowBytes;
  rows = std::min(rows, kMaximumChunkBytes / rowBytes);
  return static_cast<HxU32>(std::max<std::uint64_t>(rows, 1));
}

void HxHdf5OutputWriter::setFileAttribute(const std::string& name, const std::string& value) {
  for (auto& attribute : attributes_) {
    if (attribute.first == name) {
      attribute.second = value;
      return;
    }
  }
  attributes_.emplace_back(name, value);
}

void HxHdf5OutputWriter::openFile(const std::string& fileName, std::ofstream& stream) {
  if (stream.is_open()) return;
  // A file of an abandoned save is ended as a closed stream would end it: what it took is kept.
  file_.reset();
  // The stream stands for the file in the recorder's eyes; HDF5 writes it through its own handle.
  openOutputFile(fileName, stream, true);
  if (!stream.is_open()) return;
  auto* recording = new HxHdf5Recording(fileName);
  file_.reset(recording);
  if (recording->failed()) reportFailure(*recording, stream);
}

void HxHdf5OutputWriter::initialize(const HxSystemDataVector&, std::ostream&) {}

void HxHdf5OutputWriter::finalize(const HxSystemDataVector&, std::ostream& stream) {
  if (file_.get() == nullptr) return;
  if (!file_.reset()) stream.setstate(std::ios::badbit);
}

void HxHdf5OutputWriter::writeComponentOpening(const HxBaseSystemDataComponent& component, std::ostream& stream) const {
  HxHdf5Recording* recording = file_.get();
  if (recording == nullptr || component.type() != HxSystemDataComponentKind::Record || recording->hasDataset()) return;
  const HxElementValues* values = component.elementValues();
  std::size_t columns = 0;
  if (values != nullptr) {
    columns = values->count;
  } else {
    component.getStringElements(strings_);
    columns = strings_.size();
  }
  recording->createDataset(*this, columns);
  if (recording->failed()) reportFailure(*recording, stream);
}

void HxHdf5OutputWriter::writeDataComponent(const HxBaseSystemDataComponent& component, std::ostream& stream) const {
  HxHdf5Recording* recording = file_.get();
  if (recording == nullptr) return;
  const unsigned int type = component.type();
  if (type == HxSystemDataComponentKind::Record) {
    if (!recording->hasDataset()) writeComponentOpening(component, stream);
    if (const HxElementValues* values = component.elementValues()) {
      recording->append(values->values, values->count);
    } else {
      component.getStringElements(strings_);
      parsed_.resize(strings_.size());
      for (std::size_t i = 0; i < strings_.size(); ++i) parsed_[i] = numberOf(strings_[i]);
      recording->append(parsed_.data(), parsed_.size());
    }
  } else if (type == HxSystemDataComponentKind::Capture) {
    recording->describe(component);
  }
  if (recording->failed()) reportFailure(*recording, stream);
}

void HxHdf5OutputWriter::writeComponentClosing(const HxBaseSystemDataComponent&, std::ostream&) const {}
