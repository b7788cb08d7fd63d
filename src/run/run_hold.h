// Whether a person holds a run, and for how long that was in all.
#pragma once

#include <mutex>
#include <optional>

#include "platform/clock.h"

namespace quillcast::run {

// Any thread may call it.
class RunHold {
 public:
  explicit RunHold(const platform::Clock& clock) : clock_(clock) {}

  void Hold() {
    const std::lock_guard lock(mutex_);
    if (!since_) since_ = clock_.Monotonic();
  }
  void LetGo() {
    const std::lock_guard lock(mutex_);
    if (since_) before_ += clock_.Monotonic() - *since_;
    since_.reset();
  }
  bool is_held() const {
    const std::lock_guard lock(mutex_);
    return since_.has_value();
  }
  platform::Duration HeldFor() const {
    const std::lock_guard lock(mutex_);
    return since_ ? before_ + (clock_.Monotonic() - *since_) : before_;
  }

 private:
  const platform::Clock& clock_;
  mutable std::mutex mutex_;
  std::optional<platform::Instant> since_;
  platform::Duration before_{};
};

}  // namespace quillcast::run
