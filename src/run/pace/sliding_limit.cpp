#include "run/pace/sliding_limit.h"

#include <algorithm>

namespace quillcast::run {

void SlidingLimit::WentOut(Uptime when) {
  if (std::ssize(times_) < messages_) {
    times_.push_back(when);
    return;
  }
  times_[oldest_] = when;
  oldest_ = (oldest_ + 1) % times_.size();
}

// What a ring has lost for it counted no more when it went out.
void SlidingLimit::ComesBack(Uptime since) {
  std::rotate(times_.begin(), times_.begin() + static_cast<std::ptrdiff_t>(oldest_), times_.end());
  oldest_ = 0;
  const auto time = std::lower_bound(times_.begin(), times_.end(), since);
  if (time != times_.end()) times_.erase(time);
}

// With n allowed, one more may go out when the n-th last has left the stretch of time behind it.
Uptime SlidingLimit::Due(Uptime now, std::int64_t on_their_way) const {
  const std::int64_t others = messages_ - on_their_way;
  if (others <= 0) return now + within_;
  if (std::ssize(times_) < others) return now;
  return std::max(now, Last(static_cast<std::size_t>(others)) + within_);
}

}  // namespace quillcast::run
