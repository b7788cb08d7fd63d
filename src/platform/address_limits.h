// How long a mail address may be (RFC 5321 4.5.3.1, and RFC 3696 errata 1690 for the whole).
#pragma once

#include <string_view>

namespace quillcast::platform {

// In octets: 64 before the last "@", 254 in all.
constexpr bool AddressIsTooLong(std::string_view address) {
  const auto at = address.rfind('@');
  return address.size() > 254 || (at != std::string_view::npos && at > 64);
}

}  // namespace quillcast::platform
