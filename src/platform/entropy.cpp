#include "platform/entropy.h"

#include <sys/random.h>

#include <random>

namespace quillcast::platform {

std::uint64_t SystemEntropy::Next() {
  std::uint64_t value = 0;
  if (::getrandom(&value, sizeof value, 0) == sizeof value) return value;
  std::random_device device;  // only where the system call is refused
  return (static_cast<std::uint64_t>(device()) << 32) | device();
}

}  // namespace quillcast::platform
