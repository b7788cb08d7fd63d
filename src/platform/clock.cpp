#include "platform/clock.h"

#include <charconv>
#include <string>

#include "platform/boot_id.h"

namespace quillcast::platform {

Uptime SystemClock::SinceBoot() const {
  std::timespec time{};
  ::clock_gettime(CLOCK_BOOTTIME, &time);
  return Uptime(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
}

// The first digits of a random number.
std::uint32_t SystemClock::Boot() const {
  static const std::uint32_t boot = [] {
    const std::string digits = BootId().substr(0, 8);
    std::uint32_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    return number;
  }();
  return boot;
}

}  // namespace quillcast::platform
