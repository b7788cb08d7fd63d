// What comes before the first message: the greeting, EHLO, STARTTLS and EHLO again, AUTH.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "smtp/capabilities.h"
#include "smtp/client/client_options.h"
#include "smtp/client/wire.h"
#include "smtp/sasl/sasl_exchange.h"

namespace quillcast::smtp {

// What is known of the connection before the first byte.
struct SessionSetup {
  std::string local_name;  // for EHLO: "[127.0.0.1]"
  bool loopback = false;   // the server is this computer by its name: what a name leads to is no proof
  bool encrypted = false;  // TLS stands already
  std::string nonce = {};  // for signing in, see Credentials
  std::chrono::system_clock::time_point now = {};
};

class Opening {
 public:
  // What a reply led to: another command, whose reply is awaited; a handshake that has to be made, or may not be as
  // more has come in clear; a server that is ready for messages; or the end.
  enum class Turn { kGoesOn, kHandshake, kInClear, kReady };
  using Step = std::variant<Turn, Outcome>;

  // `options` and `wire` must outlive it.
  Opening(const ClientOptions& options, SessionSetup setup, Wire& wire);

  // The reply to a command of the opening, no longer awaited.
  Step OnAccepted(Awaited command, const ServerReply& reply);
  Step OnRefused(Awaited command, const ServerReply& reply);
  // A 3xx to AUTH.
  Step OnChallenge(const ServerReply& reply);
  Step OnTlsStarted();

  // Between the 220 to STARTTLS and OnTlsStarted nothing in clear may be believed (RFC 3207 4.2): it is not the
  // server's.
  bool handshake() const { return handshake_; }
  // Why it is over whatever is replied: an exchange that signs in was broken, and the server is told so.
  const std::optional<Outcome>& given_up() const { return given_up_; }
  // Whether a text of the server's tells a secret and may not be shown.
  bool Hides(std::string_view text) const { return traces_.In(text); }
  // What the server offers, of what is used.
  const Capabilities& capabilities() const { return capabilities_; }

 private:
  void HidePassword();
  Step SayHello(Awaited command);
  Step OnCapabilities(const ServerReply& reply);
  std::optional<Outcome> WhyInClear() const;
  Step SignIn();
  Step BecomeReady();

  const ClientOptions& options_;
  SessionSetup setup_;
  Wire& wire_;
  Capabilities capabilities_;
  bool extended_ = false;  // the greeting, or the account, allows extensions
  bool handshake_ = false;
  SecretTraces traces_;  // of signing in, to the end of the session
  std::optional<SaslExchange> exchange_;
  std::optional<Outcome> given_up_;
};

}  // namespace quillcast::smtp
