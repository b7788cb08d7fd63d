// The mechanisms of signing in (RFC 4422). A new one is a file beside sasl_plain.cpp, a line at the end of this header
// and a row in sasl_mechanism.cpp. Known limits: SCRAM goes without channel binding, NTLM in its version 2 alone.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/result.h"
#include "platform/secret.h"
#include "smtp/capabilities.h"
#include "smtp/sasl/auth_mode.h"
#include "smtp/smtp_line.h"

namespace quillcast::smtp {

// One exchange. What goes in and out is plain bytes; the session puts base 64 around them.
class SaslMechanism {
 public:
  virtual ~SaslMechanism() = default;
  // As the AUTH command has it: "SCRAM-SHA-256".
  virtual SmtpLine Name() const = 0;
  // What goes out together with the mechanism's name; nothing when the server speaks first.
  virtual std::optional<platform::Secret> Start() = 0;
  // The response to a challenge. Fails when the challenge makes no sense, or the mechanism has nothing more to say.
  virtual Result<platform::Secret> Step(std::string_view challenge) = 0;
  // Whether the server's challenges only say what is to come, in words that its verdict may well have too.
  virtual bool OnlyPrompted() const { return false; }
  // The server says that the exchange went well. Fails where it had to prove something first and did not.
  virtual Result<void> Finish() { return {}; }
};

// Who signs in, in UTF-8, and what a mechanism needs of the world. The views must outlive the mechanism.
struct Credentials {
  std::string_view user;
  std::string_view password;
  std::string_view nonce = {};  // 24 octets of chance that no other exchange gets
  std::chrono::system_clock::time_point now = {};
};

// The mechanism for a mode among those that the server offers. Fails with a reason for people when there is none.
Result<std::unique_ptr<SaslMechanism>> ChooseMechanism(AuthMode mode, const Capabilities& capabilities,
                                                       const Credentials& credentials);

// Whether there is one.
bool CanSignIn(AuthMode mode, const Capabilities& capabilities);

// Known limit: a server that asks for more than 2,000,000 rounds of SCRAM is refused.
std::unique_ptr<SaslMechanism> MakePlain(const Credentials& credentials);        // RFC 4616
std::unique_ptr<SaslMechanism> MakeLogin(const Credentials& credentials);        // draft-murchison-sasl-login
std::unique_ptr<SaslMechanism> MakeCramMd5(const Credentials& credentials);      // RFC 2195
std::unique_ptr<SaslMechanism> MakeScramSha1(const Credentials& credentials);    // RFC 5802
std::unique_ptr<SaslMechanism> MakeScramSha256(const Credentials& credentials);  // RFC 7677
std::unique_ptr<SaslMechanism> MakeNtlm(const Credentials& credentials);         // NTLMv2

}  // namespace quillcast::smtp
