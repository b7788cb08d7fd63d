// The clocks of the system, behind a port so that tests own the time.
#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>

namespace quillcast::platform {

using Instant = std::chrono::steady_clock::time_point;
using Duration = std::chrono::steady_clock::duration;

// Of the time since the computer was started, its sleep included: nobody sets it, and it is the same in all programs.
struct UptimeClock {
  using duration = std::chrono::nanoseconds;
};
using Uptime = std::chrono::time_point<UptimeClock, std::chrono::nanoseconds>;

// The time of day jumps when somebody sets it, so that nothing waits by it; instants mean nothing outside this process,
// so that nothing shows or keeps them; an uptime means nothing without the number of the start that it counts from.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual std::chrono::system_clock::time_point Now() const = 0;
  virtual Instant Monotonic() const = 0;
  virtual Uptime SinceBoot() const { return Uptime(Monotonic().time_since_epoch()); }
  // Which start of the computer it was; 0 where nobody knows.
  virtual std::uint32_t Boot() const { return 0; }
  // The broken-down local time of a moment.
  virtual std::tm Local(std::chrono::system_clock::time_point moment) const = 0;
};

// Local time is that of TZ, else of the system's setup.
class SystemClock final : public Clock {
 public:
  std::chrono::system_clock::time_point Now() const override { return std::chrono::system_clock::now(); }
  Instant Monotonic() const override { return std::chrono::steady_clock::now(); }
  Uptime SinceBoot() const override;
  std::uint32_t Boot() const override;
  std::tm Local(std::chrono::system_clock::time_point moment) const override {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    return local;
  }
};

}  // namespace quillcast::platform
