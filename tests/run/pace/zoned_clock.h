// A clock whose time of day a test sets, as it does the start of the computer, in a zone of which the clocks are
// changed.
#pragma once

#include <cstdlib>
#include <ctime>
#include <string>

#include "platform/clock.h"

namespace quillcast::test {

class ZonedClock final : public platform::Clock {
 public:
  // Central European time: one hour ahead, two from the last Sunday of March to that of October, written out so that no
  // zone has to be installed.
  explicit ZonedClock(const char* zone = "CET-1CEST,M3.5.0,M10.5.0/3") {
    if (const char* before = std::getenv("TZ")) before_ = before;
    ::setenv("TZ", zone, 1);
    ::tzset();
  }
  ~ZonedClock() override {
    before_ ? ::setenv("TZ", before_->c_str(), 1) : ::unsetenv("TZ");
    ::tzset();
  }
  ZonedClock(const ZonedClock&) = delete;
  ZonedClock& operator=(const ZonedClock&) = delete;

  // "2026-03-29 00:30" in UTC, with seconds where wanted.
  static std::chrono::system_clock::time_point At(const std::string& utc) {
    std::tm broken_down{};
    const char* rest = ::strptime(utc.c_str(), "%Y-%m-%d %H:%M", &broken_down);
    if (rest != nullptr) ::strptime(rest, ":%S", &broken_down);
    return std::chrono::system_clock::from_time_t(::timegm(&broken_down));
  }

  // It passes for all clocks; `set` is how far somebody has set the time of day meanwhile.
  std::chrono::system_clock::time_point now = At("2026-07-03 09:05:07");
  std::chrono::nanoseconds set{};
  std::uint32_t boot = 1;
  std::chrono::system_clock::time_point booted = At("2026-07-01 00:00");
  std::chrono::system_clock::time_point Now() const override { return now + set; }
  platform::Instant Monotonic() const override { return platform::Instant(now.time_since_epoch()); }
  platform::Uptime SinceBoot() const override { return platform::Uptime(now - booted); }
  std::uint32_t Boot() const override { return boot; }
  std::tm Local(std::chrono::system_clock::time_point moment) const override {
    return platform::SystemClock().Local(moment);
  }

 private:
  std::optional<std::string> before_;
};

}  // namespace quillcast::test
