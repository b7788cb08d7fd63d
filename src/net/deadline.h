// The moment by which something must have happened, or none.
#pragma once

#include <algorithm>
#include <chrono>
#include <limits>
#include <optional>

#include "platform/clock.h"

namespace quillcast::net {

// A moment of Clock::Monotonic. A moment and no length, so that many waits one after the other take no longer than one.
class Deadline {
 public:
  static Deadline Never() { return Deadline({}); }
  static Deadline At(platform::Instant moment) { return Deadline(moment); }
  // What would lie beyond the end of the clock is never.
  static Deadline After(platform::Instant now, platform::Duration delay) {
    if (delay > platform::Instant::max() - now) return Never();
    return Deadline(now + delay);
  }

  // The moment itself has passed.
  bool Passed(platform::Instant now) const { return moment_ && now >= *moment_; }

  // The wait that poll(2) is to be asked for: milliseconds rounded up, so that a wait never ends just before the
  // moment and spins; -1 for never.
  int PollTimeout(platform::Instant now) const {
    if (!moment_) return -1;
    if (now >= *moment_) return 0;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*moment_ - now).count();
    return static_cast<int>(std::min<std::int64_t>(left, std::numeric_limits<int>::max()));
  }

  // The earlier of two.
  friend Deadline Earlier(const Deadline& a, const Deadline& b) {
    if (!a.moment_) return b;
    if (!b.moment_) return a;
    return *a.moment_ < *b.moment_ ? a : b;
  }

 private:
  explicit Deadline(std::optional<platform::Instant> moment) : moment_(moment) {}
  std::optional<platform::Instant> moment_;
};

}  // namespace quillcast::net
