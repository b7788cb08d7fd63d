// A clock that stands still until it is told to move, and numbers that repeat.
#pragma once

#include "platform/clock.h"
#include "platform/entropy.h"

namespace quillcast::test {

class FakeClock final : public platform::Clock {
 public:
  // 3 July 2026, 09:05:07 UTC
  std::chrono::system_clock::time_point now = std::chrono::system_clock::from_time_t(1783069507);
  platform::Instant monotonic{};
  std::chrono::nanoseconds asleep{};  // the computer was, so long in all

  std::chrono::system_clock::time_point Now() const override { return now; }
  platform::Instant Monotonic() const override { return monotonic; }
  platform::Uptime SinceBoot() const override { return platform::Uptime(monotonic.time_since_epoch() + asleep); }
  std::tm Local(std::chrono::system_clock::time_point moment) const override {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
    std::tm broken_down{};
    ::gmtime_r(&seconds, &broken_down);
    return broken_down;
  }
};

class CountingEntropy final : public platform::Entropy {
 public:
  std::uint64_t Next() override { return ++last_ * 0x9E3779B97F4A7C15; }

 private:
  std::uint64_t last_ = 0;
};

}  // namespace quillcast::test
