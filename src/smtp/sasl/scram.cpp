#include "smtp/sasl/scram.h"

#include "platform/text.h"
#include "smtp/sasl/digest.h"

namespace quillcast::smtp {

std::optional<ScramProofs> ComputeScramProofs(const EVP_MD* digest, const platform::Secret& salted_password,
                                              std::string_view auth_message) {
  const platform::Secret client_key = Hmac(digest, salted_password.view(), "Client Key");
  const platform::Secret stored_key = Hash(digest, client_key.view());
  const platform::Secret signature = Hmac(digest, stored_key.view(), auth_message);
  const platform::Secret server_key = Hmac(digest, salted_password.view(), "Server Key");
  platform::Secret server = Hmac(digest, server_key.view(), auth_message);
  if (client_key.empty() || stored_key.empty() || signature.empty() || server.empty()) return {};
  std::string proof(client_key.view());
  for (std::size_t n = 0; n < proof.size(); ++n) proof[n] = static_cast<char>(proof[n] ^ signature.view()[n]);
  return ScramProofs{platform::Secret(std::move(proof)), std::move(server)};
}

std::optional<std::string_view> ScramAttribute(std::string_view message, std::size_t position, char name) {
  const auto attributes = platform::Split(message, ',');
  if (position >= attributes.size()) return {};
  const std::string_view attribute = attributes[position];
  if (attribute.size() < 2 || attribute[0] != name || attribute[1] != '=') return {};
  return attribute.substr(2);
}

}  // namespace quillcast::smtp
