// The three messages of NTLM (MS-NLMP 2.2.1) with the responses of its version 2; older responses are not made.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/result.h"
#include "platform/secret.h"

namespace quillcast::smtp {

// What a server asks, checked: nothing in it points beyond its end.
struct NtlmChallenge {
  std::uint32_t flags = 0;
  std::string nonce;        // 8 octets
  std::string target_info;  // attributes up to and with the one that ends them; empty when the server sends none
  std::string timestamp;    // of the server: 8 octets, empty when it sends none
};

// Who signs in: "DOMAIN\user"; or "user@domain", which goes as it is with an empty domain.
struct NtlmIdentity {
  // Both are views into `account`.
  explicit NtlmIdentity(std::string_view account);
  std::string_view domain;
  std::string_view user;
};

// What the answer is made with beside the challenge.
struct NtlmClient {
  std::string_view account;
  std::string_view password;
  std::string_view nonce;  // 8 octets of chance
  std::string time;        // 8 octets, see NtlmTime; the server's own is used where it sends one
};

// Hundreds of nanoseconds since 1601, from seconds since 1970, as its 8 octets.
std::string NtlmTime(std::int64_t unix_seconds);

// The first message, always the same: it names neither domain nor computer.
std::string NtlmNegotiate();

// Fails with kBadData for a message that is cut, points beyond its end or at its own head, has parts that overlap, or
// attributes that do not end or come twice.
Result<NtlmChallenge> ParseNtlmChallenge(std::string_view message);

// NTOWFv2 (3.3.2).
platform::Secret NtlmKey(const NtlmIdentity& identity, std::string_view password);

// The answer to a challenge, `negotiate` and `message` being the two messages before it: where the server sends a
// timestamp all three are sealed with a code (MIC).
Result<platform::Secret> NtlmAuthenticate(const NtlmClient& client, std::string_view negotiate,
                                          std::string_view message);

}  // namespace quillcast::smtp
