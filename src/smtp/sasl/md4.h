// MD4 (RFC 1320), which NTLM makes its keys with and the system's library no longer offers. Not for anything else.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/secret.h"

namespace quillcast::smtp {

// The lowest `octets` octets of the value, the lowest first.
inline void AppendLittleEndian(std::string& out, std::uint64_t value, int octets) {
  for (int n = 0; n < octets; ++n) out += static_cast<char>(value >> (8 * n));
}

// 16 octets.
platform::Secret Md4(std::string_view octets);

}  // namespace quillcast::smtp
