// A fresh directory under the temporary directory, removed with everything in it when the scope
// ends, also when the test that made it fails.
#ifndef HX_SCOPED_TEMP_DIR_H
#define HX_SCOPED_TEMP_DIR_H

#include <filesystem>
#include <string>

class HxScopedTempDir {
 public:
  /// Makes `<temp>/hx-<prefix>-XXXXXX` (unique, mode 0700). Throws std::runtime_error when the
  /// directory cannot be made.
  explicit HxScopedTempDir(const std::string& prefix = "test");
  ~HxScopedTempDir();

  HxScopedTempDir(const HxScopedTempDir&) = delete;
  HxScopedTempDir& operator=(const HxScopedTempDir&) = delete;

  const std::filesystem::path& path() const { return path_; }

  /// The path of `name` inside the directory, as text.
  std::string file(const std::string& name) const { return (path_ / name).string(); }

  /// Writes `text` to `name` inside the directory and returns its path.
  std::string write(const std::string& name, const std::string& text) const;

 private:
  std::filesystem::path path_;
};

#endif  // HX_SCOPED_TEMP_DIR_H
