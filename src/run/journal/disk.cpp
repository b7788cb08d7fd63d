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

std::string ThisBoot() {
  constexpr std::uint64_t kMostOctets = 100;
  std::string boot = IgnoreErrors(platform::ReadFile("/proc/sys/kernel/random/boot_id", kMostOctets), {});
  while (!boot.empty() && boot.back() == '\n') boot.pop_back();
  return boot;
}

}  // namespace quillcast::run
