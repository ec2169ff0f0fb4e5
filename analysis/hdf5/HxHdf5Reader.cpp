#include "analysis/hdf5/HxHdf5Reader.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "analysis/hdf5/HxHdf5Support.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// The strings of the string attribute `attribute` (fixed or variable length); false when it
// holds no strings.
bool readStrings(hid_t attribute, std::vector<std::string>& strings) {
  strings.clear();
  HxHdf5::Type stored(H5Aget_type(attribute));
  HxHdf5::Space space(H5Aget_space(attribute));
  if (!stored.valid() || !space.valid() || H5Tget_class(stored.get()) != H5T_STRING) return false;
  const hssize_t count = H5Sget_simple_extent_npoints(space.get());
  if (count < 0) return false;
  if (H5Tis_variable_str(stored.get()) > 0) {
    HxHdf5::Type type(HxHdf5::stringType());
    std::vector<char*> pointers(static_cast<std::size_t>(count), nullptr);
    if (!type.valid() || (count > 0 && H5Aread(attribute, type.get(), pointers.data()) < 0)) return false;
    for (const char* text : pointers) strings.emplace_back(text != nullptr ? text : "");
    if (count > 0) H5Dvlen_reclaim(type.get(), space.get(), H5P_DEFAULT, pointers.data());
    return true;
  }
  const std::size_t size = H5Tget_size(stored.get());
  std::vector<char> bytes(size * static_cast<std::size_t>(count));
  if (size == 0 || (count > 0 && H5Aread(attribute, stored.get(), bytes.data()) < 0)) return false;
  for (hssize_t i = 0; i < count; ++i) {
    const char* text = bytes.data() + static_cast<std::size_t>(i) * size;
    strings.emplace_back(text, strnlen(text, size));
  }
  return true;
}

// The attribute `name` of `object` as strings, when it exists and holds `count` of them.
std::vector<std::string> columnStrings(hid_t object, const char* name, std::uint64_t count) {
  std::vector<std::string> strings;
  if (H5Aexists(object, name) <= 0) return strings;
  HxHdf5::Attribute attribute(H5Aopen(object, name, H5P_DEFAULT));
  if (!attribute.valid() || !readStrings(attribute.get(), strings) || strings.size() != count) strings.clear();
  return strings;
}

// Collects the root group's attributes that hold one string.
herr_t collectAttribute(hid_t object, const char* name, const H5A_info_t*, void* data) {
  auto& attributes = *static_cast<std::vector<std::pair<std::string, std::string>>*>(data);
  HxHdf5::Attribute attribute(H5Aopen(object, name, H5P_DEFAULT));
  std::vector<std::string> strings;
  if (attribute.valid() && readStrings(attribute.get(), strings) && strings.size() == 1) {
    attributes.emplace_back(name, strings.front());
  }
  return 0;
}
}  // namespace

struct HxHdf5Reader::Impl {
  HxHdf5::File file;
  HxHdf5::Dataset dataset;
  bool finished = false;
  std::uint64_t samples = 0;
  std::uint64_t columns = 0;
  std::vector<std::string> labels, units, quantities, frames;
  std::vector<std::pair<std::string, std::string>> attributes;
};

HxHdf5Reader::HxHdf5Reader() : impl_(std::make_unique<Impl>()) {}
HxHdf5Reader::~HxHdf5Reader() {
  const HxHdf5::Quiet quiet;
  impl_.reset();
}

bool HxHdf5Reader::open(const std::string& path, std::string& error) {
  const HxHdf5::Quiet quiet;
  impl_ = std::make_unique<Impl>();
  Impl& file = *impl_;
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    error = std::strerror(errno);
    return false;
  }
  if (!S_ISREG(status.st_mode)) {
    error = "is not a regular file";
    return false;
  }
  if (H5Fis_hdf5(path.c_str()) <= 0) {
    error = "is not an HDF5 file";
    return false;
  }
  // A file its writer closed opens as usual; one still marked as being written only for SWMR reading.
  HxHdf5::Properties access(HxHdf5::fileAccess(false));
  file.file.reset(H5Fopen(path.c_str(), H5F_ACC_RDONLY, access.get()));
  file.finished = file.file.valid();
  if (!file.finished) file.file.reset(H5Fopen(path.c_str(), H5F_ACC_RDONLY | H5F_ACC_SWMR_READ, access.get()));
  if (!file.file.valid()) {
    error = "cannot be opened as an HDF5 file";
    return false;
  }
  const hid_t root = file.file.get();
  if (H5Lexists(root, "samples", H5P_DEFAULT) <= 0 ||
      (file.dataset.reset(H5Dopen2(root, "samples", H5P_DEFAULT)), !file.dataset.valid())) {
    error = "holds no dataset 'samples'";
    return false;
  }
  HxHdf5::Space space(H5Dget_space(file.dataset.get()));
  HxHdf5::Type type(H5Dget_type(file.dataset.get()));
  hsize_t dimensions[2] = {0, 0};
  if (!space.valid() || !type.valid() || H5Sget_simple_extent_ndims(space.get()) != 2 ||
      H5Sget_simple_extent_dims(space.get(), dimensions, nullptr) < 0 || H5Tget_class(type.get()) != H5T_FLOAT) {
    error = "its dataset 'samples' is not a two-dimensional array of reals";
    return false;
  }
  file.samples = dimensions[0];
  file.columns = dimensions[1];
  const hid_t data = file.dataset.get();
  file.labels = columnStrings(data, "labels", file.columns);
  file.units = columnStrings(data, "units", file.columns);
  file.quantities = columnStrings(data, "quantities", file.columns);
  file.frames = columnStrings(data, "frames", file.columns);
  hsize_t index = 0;
  H5Aiterate2(root, H5_INDEX_NAME, H5_ITER_INC, &index, collectAttribute, &file.attributes);
  return true;
}

bool HxHdf5Reader::finished() const { return impl_->finished; }
std::uint64_t HxHdf5Reader::samples() const { return impl_->samples; }
std::uint64_t HxHdf5Reader::columns() const { return impl_->columns; }
const std::vector<std::string>& HxHdf5Reader::labels() const { return impl_->labels; }
const std::vector<std::string>& HxHdf5Reader::units() const { return impl_->units; }
const std::vector<std::string>& HxHdf5Reader::quantities() const { return impl_->quantities; }
const std::vector<std::string>& HxHdf5Reader::frames() const { return impl_->frames; }
const std::vector<std::pair<std::string, std::string>>& HxHdf5Reader::fileAttributes() const {
  return impl_->attributes;
}

bool HxHdf5Reader::read(std::uint64_t first, std::uint64_t count, double* out, std::string& error) const {
  const Impl& file = *impl_;
  if (!file.dataset.valid() || first > file.samples || count > file.samples - first) {
    error = "holds no samples " + std::to_string(first + 1) + " to " + std::to_string(first + count);
    return false;
  }
  if (count == 0 || file.columns == 0) return true;
  const HxHdf5::Quiet quiet;
  const hsize_t start[2] = {first, 0};
  const hsize_t size[2] = {count, file.columns};
  HxHdf5::Space fileSpace(H5Dget_space(file.dataset.get()));
  HxHdf5::Space memorySpace(H5Screate_simple(2, size, nullptr));
  if (!fileSpace.valid() || !memorySpace.valid() ||
      H5Sselect_hyperslab(fileSpace.get(), H5S_SELECT_SET, start, nullptr, size, nullptr) < 0 ||
      H5Dread(file.dataset.get(), H5T_NATIVE_DOUBLE, memorySpace.get(), fileSpace.get(), H5P_DEFAULT, out) < 0) {
    error = "its samples " + std::to_string(first + 1) + " to " + std::to_string(first + count) + " cannot be read";
    return false;
  }
  return true;
}
