// Whole numbers in as few octets as they need: seven bits each, the lowest first, the eighth where more follow.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quillcast::run {

inline void AppendVarint(std::uint64_t number, std::string& octets) {
  for (; number >= 0x80; number >>= 7) octets += static_cast<char>(number | 0x80);
  octets += static_cast<char>(number);
}

// Takes one from the front; false where none stands there.
inline bool TakeVarint(std::string_view& octets, std::uint64_t& number) {
  number = 0;
  for (int shift = 0; shift < 63 && !octets.empty(); shift += 7) {
    const auto octet = static_cast<std::uint8_t>(octets.front());
    octets.remove_prefix(1);
    number |= std::uint64_t{octet & 0x7FU} << shift;
    if (octet < 0x80) return true;
  }
  return false;
}

}  // namespace quillcast::run
