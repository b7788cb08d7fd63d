// A number of 32 bits for some octets, the same in every version and on every machine (FNV-1a).
#pragma once

#include <cstdint>
#include <string_view>

namespace quillcast::run {

constexpr std::uint32_t ShortHash(std::string_view octets) {
  std::uint32_t hash = 2166136261U;
  for (const char octet : octets) hash = (hash ^ static_cast<std::uint8_t>(octet)) * 16777619U;
  return hash;
}

}  // namespace quillcast::run
