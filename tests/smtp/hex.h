// Octets written as hexadecimal digits.
#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

namespace quillcast::smtp {

inline std::string FromHex(std::string_view digits) {
  std::string out;
  for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
    out += static_cast<char>(std::stoi(std::string(digits.substr(at, 2)), nullptr, 16));
  }
  return out;
}

inline std::string ToHex(std::string_view octets) {
  std::string out;
  for (const char c : octets) out += fmt::format("{:02x}", static_cast<unsigned char>(c));
  return out;
}

}  // namespace quillcast::smtp
