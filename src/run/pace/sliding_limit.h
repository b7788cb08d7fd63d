// Keeps to so many messages in any stretch of time.
#pragma once

#include <chrono>
#include <cstddef>
#include <vector>

#include "run/pace/pace_rules.h"

namespace quillcast::run {

class SlidingLimit {
 public:
  // A message's first octet is out so much later, at most, than the time that is told of it. One may be late and the
  // next be not, so any stretch is so much longer.
  static constexpr auto kFirstOctet = std::chrono::milliseconds(5);

  explicit SlidingLimit(const MessageLimit& limit) : messages_(limit.messages), within_(limit.within + kFirstOctet) {}

  // One went out, not before those that were told already.
  void WentOut(Uptime when);
  // The first that went out then or later did not, after all.
  void ComesBack(Uptime since);
  // When one more may go out, `now` at the earliest, where so many are on their way, each of which may go out at any
  // moment. While those alone are enough nobody knows: it is given as the longest that it can take.
  Uptime Due(Uptime now, std::int64_t on_their_way) const;
  // What went out counts no more.
  bool IsEmptyAt(Uptime now) const { return times_.empty() || Last(1) + within_ <= now; }

 private:
  const Uptime& Last(std::size_t nth) const { return times_[(oldest_ + times_.size() - nth) % times_.size()]; }

  std::int64_t messages_;
  std::chrono::milliseconds within_;
  std::vector<Uptime> times_;  // of the last ones, as many as the limit counts: a ring once it has so many
  std::size_t oldest_ = 0;
};

}  // namespace quillcast::run
