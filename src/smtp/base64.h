// Base 64 (RFC 4648 4) for the exchange that signs in; on one line.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillcast::smtp {

std::string EncodeBase64(std::string_view bytes);

// Nothing for what is not base 64: odd length, foreign characters, padding elsewhere than at the end.
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace quillcast::smtp
