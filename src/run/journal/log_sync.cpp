#include "run/journal/log_sync.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

namespace quillcast::run {

// A descriptor of its own, which may be closed at any time: SQLite has no locks on the log.
Result<std::unique_ptr<LogSync>> LogSync::Start(const JournalPlace& place) {
  platform::UniqueFd log(::open(place.Log().c_str(), O_RDONLY | O_CLOEXEC));
  if (!log) return platform::SystemError("read", place.Log(), errno);
  return std::unique_ptr<LogSync>(new LogSync(place, std::move(log)));
}

LogSync::LogSync(JournalPlace place, platform::UniqueFd log)
    : place_(std::move(place)), log_(std::move(log)), thread_([this] { Work(); }) {}

LogSync::~LogSync() {
  {
    const std::scoped_lock lock(mutex_);
    ends_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void LogSync::Ask(std::int64_t commit) {
  {
    const std::scoped_lock lock(mutex_);
    asked_ = std::max(asked_, commit);
  }
  changed_.notify_all();
}

Result<void> LogSync::Wait(std::int64_t commit) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return failed_ || durable_ >= commit; });
  return failed_ ? Result<void>(*failed_) : Result<void>();
}

void LogSync::Shorten() {
  {
    const std::scoped_lock lock(mutex_);
    shorten_ = true;
  }
  changed_.notify_all();
}

void LogSync::Work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return ends_ || shorten_ || (asked_ > durable_ && !failed_); });
    if (asked_ > durable_ && !failed_) {
      const std::int64_t commit = asked_;
      lock.unlock();
      const auto synced = place_.TheDisk().Sync(log_.get(), place_.Log());
      lock.lock();
      // After a failure nobody knows what is on the disk, and a second try may succeed without telling.
      if (synced) {
        durable_ = commit;
      } else {
        failed_ = synced.error();
      }
      changed_.notify_all();
    } else if (std::exchange(shorten_, false)) {
      lock.unlock();
      // Where somebody reads in it just then the log stays as it is, and the next time takes it.
      IgnoreErrors(TakeLogIntoFile(place_, std::chrono::milliseconds(10), false));
      lock.lock();
    } else if (ends_) {
      return;
    }
  }
}

}  // namespace quillcast::run
