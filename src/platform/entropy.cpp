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

std::string RandomOctets(std::size_t count) {
  SystemEntropy entropy;
  std::string out;
  while (out.size() < count) {
    const std::uint64_t value = entropy.Next();
    out.append(reinterpret_cast<const char*>(&value), sizeof value);
  }
  out.resize(count);
  return out;
}

}  // namespace quillcast::platform
