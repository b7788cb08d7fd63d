#include "message/boundary_prefix.h"

#include <cstdint>

namespace quillcast::message {
namespace {

constexpr std::size_t kLength = 10;

// SplitMix64: neighbouring seeds give unrelated numbers, which two messages within a microsecond need.
class Fractions {
 public:
  explicit Fractions(std::uint64_t seed) : state_(seed) {}

  // From 0 up to 1, which is never reached.
  double Next() {
    std::uint64_t z = state_ += 0x9E3779B97F4A7C15;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    z ^= z >> 31;
    return static_cast<double>(z >> 11) * 0x1.0p-53;
  }

 private:
  std::uint64_t state_;
};

}  // namespace

std::string GetBoundaryMarkPrefix(std::chrono::system_clock::time_point now) {
  Fractions fractions(static_cast<std::uint64_t>(now.time_since_epoch().count()));
  std::string prefix;
  while (prefix.size() < kLength) {
    prefix += static_cast<char>(static_cast<int>(26 * fractions.Next() + 65));
    prefix += static_cast<char>('0' + static_cast<int>(9 * fractions.Next() + 1));
  }
  return prefix;
}

}  // namespace quillcast::message
