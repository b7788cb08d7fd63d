// The mailbox's side of the mechanisms of signing in. A new one is a class and a row in server_mechanism.cpp.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "smtp/server_reply.h"

namespace quillcast::smtp {

// Another challenge, or the reply that ends the exchange: 235 when the client is who it says it is.
struct ServerStep {
  std::optional<std::string> challenge;
  ServerReply reply{};
};

// One exchange. What goes in and out is plain octets; the session puts base 64 around them.
class ServerMechanism {
 public:
  virtual ~ServerMechanism() = default;
  // What is asked of a client that said nothing beside the mechanism's name.
  virtual std::string Begin() { return {}; }
  virtual ServerStep Step(std::string_view response) = 0;
};

// Who may sign in; the views must outlive the mechanism.
struct ServerAccount {
  std::string_view user;
  std::string_view password;
  std::string_view nonce;  // 24 octets of chance
};

// Nothing when it is not known.
std::unique_ptr<ServerMechanism> MakeServerMechanism(std::string_view name, const ServerAccount& account);

// "PLAIN LOGIN ...", joined by `separator`, in the order in which they are offered.
std::string ServerMechanismNames(std::string_view separator);

}  // namespace quillcast::smtp
