// What both sides of SCRAM compute (RFC 5802 3, RFC 7677).
#pragma once

#include <openssl/evp.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/secret.h"

namespace quillcast::smtp {

// As long as the digest; compared by SameSecret alone.
struct ScramProofs {
  platform::Secret client;  // what the client shows
  platform::Secret server;  // what the server shows: its signature
};

// `auth_message`: the client's first message without its "n,,", the server's first, and the client's last without its
// proof, joined by commas. Nothing where the system's policy has taken the digest away.
std::optional<ScramProofs> ComputeScramProofs(const EVP_MD* digest, const platform::Secret& salted_password,
                                              std::string_view auth_message);

// The value of the attribute that stands at `position` among those between commas; nothing when another one stands
// there.
std::optional<std::string_view> ScramAttribute(std::string_view message, std::size_t position, char name);

}  // namespace quillcast::smtp
