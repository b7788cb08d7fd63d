#include "platform/clock.h"

#include <array>
#include <charconv>

#include "platform/file.h"

namespace quillcast::platform {

Uptime SystemClock::SinceBoot() const {
  std::timespec time{};
  ::clock_gettime(CLOCK_BOOTTIME, &time);
  return Uptime(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
}

// The first digits of a random number. The file says that it has no size.
std::uint32_t SystemClock::Boot() const {
  static const std::uint32_t boot = [] {
    const std::filesystem::path file = "/proc/sys/kernel/random/boot_id";
    std::array<char, 8> digits{};
    std::uint32_t number = 0;
    const auto fd = OpenForReading(file);
    if (!fd || !ReadSome(fd->get(), file, digits.data(), digits.size())) return number;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    return number;
  }();
  return boot;
}

}  // namespace quillcast::platform
