// Keeps to so many messages in any stretch of time.
#pragma once

#include <cstddef>
#include <vector>

#include "run/pace/pace_rules.h"

namespace quillcast::run {

class SlidingLimit {
 public:
  explicit SlidingLimit(const MessageLimit& limit) : limit_(limit) {}

  // One went out, not before those that were told already.
  void WentOut(Uptime when);
  // The first that went out then or later did not, after all.
  void ComesBack(Uptime since);
  // When one more may go out, `now` at the earliest, where so many are on their way, each of which may go out at any
  // moment. While those alone are enough nobody knows: it is given as the longest that it can take.
  Uptime Due(Uptime now, std::int64_t on_their_way) const;
  // What went out counts no more.
  bool IsEmptyAt(Uptime now) const { return times_.empty() || Last(1) + limit_.within <= now; }

 private:
  const Uptime& Last(std::size_t nth) const { return times_[(oldest_ + times_.size() - nth) % times_.size()]; }

  MessageLimit limit_;
  std::vector<Uptime> times_;  // of the last ones, as many as the limit counts: a ring once it has so many
  std::size_t oldest_ = 0;
};

}  // namespace quillcast::run
