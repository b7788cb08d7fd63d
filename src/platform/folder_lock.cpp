#include "platform/folder_lock.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>

#include <cerrno>

namespace quillcast::platform {

std::optional<FolderLock> FolderLock::Take(const std::filesystem::path& folder, std::chrono::milliseconds patience,
                                           const CancelToken& cancel) {
  constexpr int kUntilNextLook = 20;  // milliseconds
  UniqueFd fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const auto until = std::chrono::steady_clock::now() + patience;
  while (fd && ::flock(fd.get(), LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR)) {
    if (cancel.Requested() != Stop::kNone || std::chrono::steady_clock::now() >= until) return std::nullopt;
    pollfd stop{cancel.PollFd(), POLLIN, 0};
    IgnoreErrors(::poll(&stop, 1, kUntilNextLook));
  }
  return FolderLock(std::move(fd));
}

}  // namespace quillcast::platform
