#pragma once
/// \file
/// Owning HDF5 identifiers and quiet HDF5 calls, shared by the HDF5 writer and reader (internal
/// to analysis/hdf5: the only header that includes HDF5's).

#include <hdf5.h>

#include <cerrno>
#include <string>

namespace HxHdf5 {

/// Turns HDF5's printing of its error stack off while it lives, and restores what was set; the
/// library's calls report by result, as the rest of the library does.
class Quiet {
 public:
  Quiet() {
    H5Eget_auto2(H5E_DEFAULT, &function_, &data_);
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
  }
  ~Quiet() {
    // Restoring must not change what the caller reads from errno.
    const int error = errno;
    H5Eset_auto2(H5E_DEFAULT, function_, data_);
    errno = error;
  }
  Quiet(const Quiet&) = delete;
  Quiet& operator=(const Quiet&) = delete;

 private:
  H5E_auto2_t function_ = nullptr;
  void* data_ = nullptr;
};

/// One HDF5 identifier, closed with `Close` when replaced or destroyed; negative when none.
template <herr_t (*Close)(hid_t)>
class Id {
 public:
  Id() = default;
  explicit Id(hid_t id) : id_(id) {}
  ~Id() { reset(); }
  Id(const Id&) = delete;
  Id& operator=(const Id&) = delete;

  hid_t get() const { return id_; }
  bool valid() const { return id_ >= 0; }
  /// Closes the identifier held and holds `id`; false when closing failed.
  bool reset(hid_t id = -1) {
    const bool closed = id_ < 0 || Close(id_) >= 0;
    id_ = id;
    return closed;
  }

 private:
  hid_t id_ = -1;
};

using File = Id<H5Fclose>;
using Dataset = Id<H5Dclose>;
using Space = Id<H5Sclose>;
using Type = Id<H5Tclose>;
using Attribute = Id<H5Aclose>;
using Properties = Id<H5Pclose>;

/// File access properties of every file the library makes or opens: HDF5's file locking where
/// the file system offers it, no failure where it does not; with `latest`, the newest file
/// format (which single-writer/multiple-reader mode needs).
inline hid_t fileAccess(bool latest) {
  const hid_t properties = H5Pcreate(H5P_FILE_ACCESS);
  if (properties < 0) return properties;
  if (latest) H5Pset_libver_bounds(properties, H5F_LIBVER_LATEST, H5F_LIBVER_LATEST);
  H5Pset_file_locking(properties, true, true);
  return properties;
}

/// A variable-length UTF-8 string type.
inline hid_t stringType() {
  const hid_t type = H5Tcopy(H5T_C_S1);
  if (type >= 0 && (H5Tset_size(type, H5T_VARIABLE) < 0 || H5Tset_cset(type, H5T_CSET_UTF8) < 0)) {
    H5Tclose(type);
    return -1;
  }
  return type;
}

}  // namespace HxHdf5
