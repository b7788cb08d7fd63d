#include "run/journal/disk.h"

#include <unistd.h>

#include <cerrno>

#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::run {

Result<void> SystemDisk::Sync(int fd, const std::filesystem::path& path) {
  while (::fdatasync(fd) != 0) {
    if (errno != EINTR) return platform::SystemError("write", path, errno);
  }
  return {};
}

// The file says that it is empty, so that it is read to its end.
std::string ThisBoot() {
  const std::filesystem::path file = "/proc/sys/kernel/random/boot_id";
  const auto fd = platform::OpenForReading(file);
  if (!fd) return {};
  std::string boot(100, '\0');
  boot.resize(IgnoreErrors(platform::ReadSome(fd->get(), file, boot.data(), boot.size()), 0));
  return std::string(platform::Trim(boot));
}

}  // namespace quillcast::run
