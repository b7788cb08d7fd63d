#include "smtp/sasl/digest.h"

#include <fmt/format.h>
#include <openssl/crypto.h>
#include <openssl/hmac.h>

#include <string>

namespace quillcast::smtp {
namespace {

const unsigned char* Octets(std::string_view text) { return reinterpret_cast<const unsigned char*>(text.data()); }
unsigned char* Octets(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

std::string Room(const EVP_MD* digest) { return std::string(static_cast<std::size_t>(EVP_MD_get_size(digest)), '\0'); }

}  // namespace

platform::Secret Hmac(const EVP_MD* digest, std::string_view key, std::string_view text) {
  std::string out = Room(digest);
  unsigned length = 0;
  if (HMAC(digest, key.data(), static_cast<int>(key.size()), Octets(text), text.size(), Octets(out), &length) ==
      nullptr) {
    return {};
  }
  return platform::Secret(std::move(out));
}

platform::Secret DeriveKey(const EVP_MD* digest, std::string_view password, std::string_view salt, int rounds) {
  std::string out = Room(digest);
  if (PKCS5_PBKDF2_HMAC(password.data(), static_cast<int>(password.size()), Octets(salt), static_cast<int>(salt.size()),
                        rounds, digest, static_cast<int>(out.size()), Octets(out)) != 1) {
    return {};
  }
  return platform::Secret(std::move(out));
}

platform::Secret Hash(const EVP_MD* digest, std::string_view text) {
  std::string out = Room(digest);
  if (EVP_Digest(text.data(), text.size(), Octets(out), nullptr, digest, nullptr) != 1) return {};
  return platform::Secret(std::move(out));
}

std::string CramMd5Response(std::string_view user, std::string_view password, std::string_view challenge) {
  const platform::Secret digest = Hmac(EVP_md5(), password, challenge);
  if (digest.empty()) return {};
  std::string out(user);
  out += ' ';
  for (const char c : digest.view()) out += fmt::format("{:02x}", static_cast<unsigned char>(c));
  return out;
}

bool SameSecret(std::string_view a, std::string_view b) {
  return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

}  // namespace quillcast::smtp
