#include "run/journal/disk.h"

#include <unistd.h>

#include <cerrno>

#include "platform/file.h"

namespace quillcast::run {

Result<void> SystemDisk::Sync(int fd, const std::filesystem::path& path) {
  while (::fdatasync(fd) != 0) {
    if (errno != EINTR) return platform::SystemError("write", path, errno);
  }
  return {};
}

}  // namespace quillcast::run
