// Which servers a client may use, and how.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/secret.h"
#include "smtp/sasl/auth_mode.h"

namespace quillcast::smtp {

// kAutomatic: TLS from the first byte on port 465; else STARTTLS when it is offered, and required when credentials are
// to be sent to any host but a loopback one (net::IsLoopbackHost). Certificates and names are always verified.
enum class Security { kAutomatic, kStartTls, kTls, kNone };

// Where a server is.
struct Server {
  std::string host;  // a name, an IPv4 address, or an IPv6 address without brackets
  std::uint16_t port = 25;
};

// All that an account says about sending.
struct ClientOptions {
  std::vector<Server> servers;  // tried in this order for each connection
  Security security = Security::kAutomatic;
  bool sign_in = false;
  std::string user;
  platform::Secret password;
  AuthMode auth_mode = AuthMode::kLogin;
  bool send_without_auth = false;  // where no authentication is offered; only after TLS or to a loopback host
  bool extended = false;           // use extensions even where the greeting does not say ESMTP
  // Where the server offers PIPELINING: commands that need no reply in between in one write, and with CHUNKING several
  // messages in flight (see ClientSession). Off: one command, one reply.
  bool pipeline = false;
  // So many connections at a time at most, 1 to 50: opened as they are needed, fewer where the server takes fewer.
  std::size_t connections = 1;
  // At most so many messages go over one connection, then QUIT and another one; 0 for as many as the server takes.
  std::size_t per_connection = 0;
  // Of each step: finding the host, connecting, TLS, one command and its whole reply, 64 KiB of a message. The times of
  // RFC 5321 4.5.3.2, from two minutes to ten, hold where they are shorter.
  std::chrono::seconds timeout{60};
  // Where the way to the servers is lost after it was there, messages wait so long for it, and for each loss anew; then
  // nothing more is begun (JobSource::WayGivenUp). Lost it is where no new connection comes about: a server that hangs
  // up, or is silent, over one message and takes the next connection has only that message failed. `way_was_there`:
  // they were reached before this client was made.
  std::chrono::seconds network_wait{0};
  bool way_was_there = false;
  std::string ca_file;  // PEM file of trusted authorities; empty for those of the system
};

}  // namespace quillcast::smtp
