#include "tests/support/HxScopedTempDir.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <vector>

HxScopedTempDir::HxScopedTempDir(const std::string& prefix) {
  std::string pattern = (std::filesystem::temp_directory_path() / ("hx-" + prefix + "-XXXXXX")).string();
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (!::mkdtemp(buffer.data())) throw std::runtime_error("cannot make a temporary directory from " + pattern);
  path_ = buffer.data();
}

HxScopedTempDir::~HxScopedTempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string HxScopedTempDir::write(const std::string& name, const std::string& text) const {
  const std::string target = file(name);
  std::ofstream out(target, std::ios::binary);
  out << text;
  out.close();
  if (!out) throw std::runtime_error("cannot write " + target);
  return target;
}
