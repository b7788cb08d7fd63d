#include "run/pace/file_octets.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/file.h"

namespace quillcast::run {
namespace {

struct flock LockOf(OctetRange range, short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = range.first;
  lock.l_len = range.size;
  return lock;
}

short TypeOf(LockKind kind) {
  if (kind == LockKind::kNone) return F_UNLCK;
  return kind == LockKind::kAlone ? F_WRLCK : F_RDLCK;
}

}  // namespace

Result<std::size_t> ReadAt(int fd, const std::filesystem::path& path, std::int64_t place, std::span<char> octets) {
  std::size_t read = 0;
  while (read < octets.size()) {
    const auto count = ::pread(fd, octets.data() + read, octets.size() - read, place + static_cast<std::int64_t>(read));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return platform::SystemError("read", path, errno);
    if (count == 0) break;
    read += static_cast<std::size_t>(count);
  }
  return read;
}

Result<void> WriteAt(int fd, const std::filesystem::path& path, std::int64_t place, std::string_view octets) {
  while (!octets.empty()) {
    const auto count = ::pwrite(fd, octets.data(), octets.size(), place);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return platform::SystemError("write", path, count < 0 ? errno : ENOSPC);
    octets.remove_prefix(static_cast<std::size_t>(count));
    place += count;
  }
  return {};
}

Result<bool> TryLock(int fd, const std::filesystem::path& path, OctetRange range, LockKind kind) {
  struct flock lock = LockOf(range, TypeOf(kind));
  if (::fcntl(fd, F_OFD_SETLK, &lock) == 0) return true;
  if (errno == EAGAIN || errno == EACCES) return false;
  return platform::SystemError("lock", path, errno);
}

Result<bool> IsLockedByOthers(int fd, const std::filesystem::path& path, OctetRange range) {
  struct flock lock = LockOf(range, F_WRLCK);
  if (::fcntl(fd, F_OFD_GETLK, &lock) != 0) return platform::SystemError("lock", path, errno);
  return lock.l_type != F_UNLCK;
}

}  // namespace quillcast::run
