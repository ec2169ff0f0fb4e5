// Repairing the files of a recording: the rewrite every repair goes through, and the repair of a
// whole recording, file by file.

#include "tools/lib/HxRepair.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "analysis/writers/HxXmlOutputWriter.h"
#include "tools/lib/HxMrdFile.h"
#include "tools/lib/HxRepairText.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// A file descriptor closed when the scope ends.
class HxFileDescriptor {
 public:
  explicit HxFileDescriptor(int fd) : fd_(fd) {}
  ~HxFileDescriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  HxFileDescriptor(const HxFileDescriptor&) = delete;
  HxFileDescriptor& operator=(const HxFileDescriptor&) = delete;
  int get() const { return fd_; }
  // Closes now; false (errno set) when closing fails.
  bool close() {
    const int fd = fd_;
    fd_ = -1;
    return ::close(fd) == 0;
  }

 private:
  int fd_;
};

bool writeAll(int fd, const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t written = ::write(fd, data, size);
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    data += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}
}  // namespace

HxBoolean hxRewriteFile(const std::string& path, const std::string& head, std::uint64_t from, std::uint64_t to,
                        const std::string& tail, std::string& error) {
  const std::string temporary = path + ".hxrepair-tmp";
  auto failWith = [&](const std::string& what) {
    error = what + ": " + std::strerror(errno);
    ::unlink(temporary.c_str());
    return false;
  };
  HxFileDescriptor source(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (source.get() < 0) return failWith("cannot read '" + path + "'");
  struct stat status {};
  if (::fstat(source.get(), &status) != 0) return failWith("cannot read '" + path + "'");
  HxFileDescriptor target(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, status.st_mode & 07777));
  if (target.get() < 0) return failWith("cannot create '" + temporary + "'");
  if (!writeAll(target.get(), head.data(), head.size())) return failWith("cannot write '" + temporary + "'");
  std::vector<char> buffer(1 << 20);
  if (::lseek(source.get(), static_cast<off_t>(from), SEEK_SET) < 0) return failWith("cannot read '" + path + "'");
  std::uint64_t left = to > from ? to - from : 0;
  while (left > 0) {
    const ssize_t got =
        ::read(source.get(), buffer.data(), static_cast<std::size_t>(std::min<std::uint64_t>(left, buffer.size())));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return failWith("cannot read '" + path + "'");
    if (got == 0) {
      errno = 0;
      error = "'" + path + "' became shorter while it was repaired";
      ::unlink(temporary.c_str());
      return false;
    }
    if (!writeAll(target.get(), buffer.data(), static_cast<std::size_t>(got))) {
      return failWith("cannot write '" + temporary + "'");
    }
    left -= static_cast<std::uint64_t>(got);
  }
  if (!writeAll(target.get(), tail.data(), tail.size())) return failWith("cannot write '" + temporary + "'");
  if (::fsync(target.get()) != 0) return failWith("cannot write '" + temporary + "'");
  if (!target.close()) return failWith("cannot write '" + temporary + "'");
  if (::rename(temporary.c_str(), path.c_str()) != 0) return failWith("cannot replace '" + path + "'");
  return true;
}

std::vector<HxFileRepair> hxRepairRecording(const std::string& base, bool inspectOnly) {
  // Each writer's file, in the order the recorder's default writers are listed.
  const std::pair<std::string, HxFileRepair (*)(const std::string&, bool)> files[] = {
      {HxTextOutputWriter().fileExtension(), hxRepairCsvFile},
      {HxXmlOutputWriter().fileExtension(), hxRepairXmlFile},
      {HxMrdOutputWriter().fileExtension(), hxRepairMrdFile},
      {HxMatlabOutputWriter().fileExtension(), hxRepairMatlabFile},
      {HxMathematicaOutputWriter().fileExtension(), hxRepairMathematicaFile},
  };
  std::vector<HxFileRepair> results;
  for (const auto& [extension, repair] : files) results.push_back(repair(base + extension, inspectOnly));
  return results;
}
