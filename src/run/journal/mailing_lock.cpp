#include "run/journal/mailing_lock.h"

#include <fcntl.h>

#include <cerrno>
#include <thread>

namespace quillcast::run {
namespace {

constexpr MailingId kNoMailing = 0;  // they count from 1

Result<platform::UniqueFd> OpenLocks(const std::filesystem::path& file) {
  platform::UniqueFd fd(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!fd) return platform::SystemError("open", file, errno);
  return fd;
}

// Of the open file, not of the process: no other descriptor of the file that is closed takes it away.
struct flock OctetOf(MailingId mailing) {
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = mailing;
  lock.l_len = 1;
  return lock;
}

}  // namespace

Result<MailingLock> MailingLock::Take(const std::filesystem::path& file, MailingId mailing) {
  auto fd = OpenLocks(file);
  if (!fd) return fd.error();
  struct flock lock = OctetOf(mailing);
  if (::fcntl(fd->get(), F_OFD_SETLK, &lock) == 0) return MailingLock(*std::move(fd));
  if (errno != EAGAIN && errno != EACCES) return platform::SystemError("lock", file, errno);
  return Error{Failure::kTryAgain, "Another window or command has this mailing in hand.",
               "Wait until its run has ended, or end it there."};
}

Result<MailingLock> MailingLock::Wait(const std::filesystem::path& file, std::chrono::milliseconds patience) {
  constexpr auto kPause = std::chrono::milliseconds(5);
  for (auto waited = std::chrono::milliseconds(0);; waited += kPause) {
    auto lock = Take(file, kNoMailing);
    if (lock || lock.error().failure != Failure::kTryAgain || waited >= patience) return lock;
    std::this_thread::sleep_for(kPause);
  }
}

Result<bool> IsInHand(const std::filesystem::path& file, MailingId mailing) {
  const auto fd = OpenLocks(file);
  if (!fd) return fd.error();
  struct flock lock = OctetOf(mailing);
  if (::fcntl(fd->get(), F_OFD_GETLK, &lock) != 0) return platform::SystemError("lock", file, errno);
  return lock.l_type != F_UNLCK;
}

}  // namespace quillcast::run
