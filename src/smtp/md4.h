// MD4 (RFC 1320), which NTLM makes its keys with and the system's library no longer offers. Not for anything else.
#pragma once

#include <string_view>

#include "smtp/secret.h"

namespace quillcast::smtp {

// 16 octets.
Secret Md4(std::string_view octets);

}  // namespace quillcast::smtp
