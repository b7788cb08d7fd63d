// Who looks on while a connection is made, so that a person can be told where it stands.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "net/connect.h"
#include "net/resolver.h"
#include "net/tls_facts.h"
#include "smtp/client/client_options.h"
#include "smtp/outcome.h"

namespace quillcast::smtp {

// In the order of the way; some are left out, and kTls and kHello may come once more.
enum class ConnectionStep { kName, kConnect, kTls, kGreeting, kHello, kStartTls, kSignIn, kQuit };

// All calls come from the thread that called Client::Test. What it is told comes from outside: through
// platform::Printable before it is shown.
class ConnectionWatch {
 public:
  virtual ~ConnectionWatch() = default;
  // The next server of the list is tried; what is told from now on is of it.
  virtual void Begins(const Server& server) = 0;
  // This server does not answer as it should, and the next is tried, should there be one and time for it.
  virtual void Failed(const Outcome& outcome) = 0;
  // None of those that were tried answers, and the failure of this one, counted from 0, is the outcome.
  virtual void Told(std::size_t server) = 0;
  // A step begins, and so the one before is over. The last one to begin is where it ended.
  virtual void Begins(ConnectionStep step) = 0;
  // The name of the server leads to no address.
  virtual void NotFound(net::NameFault fault) = 0;
  virtual void Tried(std::span<const net::TriedAddress> addresses) = 0;
  // A handshake is over, well or not.
  virtual void Encrypted(const net::TlsFacts& facts) = 0;
  // The reply to EHLO, its lines joined by "\n": what the server can do.
  virtual void Offered(std::string_view text) = 0;
  // What came is no reply; its beginning.
  virtual void Senseless(std::string_view bytes) = 0;
  // What came of a reply whose end did not.
  virtual void Unfinished(std::string_view bytes) = 0;
  // What came in clear behind the 220 to STARTTLS.
  virtual void InClear(std::string_view bytes) = 0;
};

}  // namespace quillcast::smtp
