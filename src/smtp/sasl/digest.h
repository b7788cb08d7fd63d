// Keyed digests of secrets, whose values are secrets too.
#pragma once

#include <openssl/evp.h>

#include <string>
#include <string_view>

#include "platform/secret.h"

namespace quillcast::smtp {

// HMAC (RFC 2104) over the octets of `text`. Empty where the system's policy has taken the digest away.
platform::Secret Hmac(const EVP_MD* digest, std::string_view key, std::string_view text);

// PBKDF2 (RFC 8018 5.2) with that digest's HMAC, as many octets as the digest has; empty as above.
platform::Secret DeriveKey(const EVP_MD* digest, std::string_view password, std::string_view salt, int rounds);

// The digest itself; empty as above.
platform::Secret Hash(const EVP_MD* digest, std::string_view text);

// What CRAM-MD5 answers to a challenge (RFC 2195 2): the user and the digest in hexadecimal. Empty as above.
std::string CramMd5Response(std::string_view user, std::string_view password, std::string_view challenge);

// Takes as long for any two texts of that length.
bool SameSecret(std::string_view a, std::string_view b);

}  // namespace quillcast::smtp
