// One exchange of signing in as SMTP frames it (RFC 4954): a mechanism's messages in base 64, one a line.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "smtp/sasl/sasl_mechanism.h"
#include "smtp/sasl/secret_line.h"
#include "smtp/sasl/secret_traces.h"

namespace quillcast::smtp {

// Begin once, Answer for each 334, Finish at 235. Known limits: a first message goes into the AUTH command only where
// that stays within 510 octets, and a response of more than 12,286 fails (RFC 5321 4.5.3.1.4, RFC 4954 4).
class SaslExchange {
 public:
  // `traces`, which must outlive the exchange, learns what both sides say.
  SaslExchange(std::unique_ptr<SaslMechanism> mechanism, SecretTraces& traces)
      : mechanism_(std::move(mechanism)), traces_(traces) {}

  // The AUTH command, with the mechanism's first message where it has one that fits into a command.
  SecretLine Begin();
  // The response to the text of a 334. Fails where the challenge makes no sense; the exchange is then to be cancelled.
  Result<SecretLine> Answer(std::string_view challenge);
  // The server has said 235. Fails where it still owes a proof of its own.
  Result<void> Finish() { return mechanism_->Finish(); }

 private:
  std::unique_ptr<SaslMechanism> mechanism_;
  SecretTraces& traces_;
  std::optional<platform::Secret> initial_;
  bool challenged_ = false;
};

// Cancels an exchange (RFC 4954 4).
inline SecretLine CancelSaslExchange() { return SecretLine("*"); }

// What a 4xx or 5xx to AUTH says, in a sentence for people.
const char* AuthRefusal(int code);

}  // namespace quillcast::smtp
