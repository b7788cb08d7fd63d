#include "smtp/client/opening.h"

#include <utility>

#include "platform/text.h"

namespace quillcast::smtp {
namespace {

constexpr const char* kNoTls =
    "The server does not offer STARTTLS, so the password would travel in clear. Set Security to None only if you trust "
    "the network.";
constexpr const char* kAuthBroken = "The server broke the exchange that signs in.";
constexpr const char* kStartTlsMissing =
    "The server does not offer STARTTLS, which the account asks for. Choose another Security, or another port.";
constexpr const char* kAuthMissing =
    "The server does not offer authentication. Switch signing in off, or allow sending without it, if the server is to "
    "be used without.";
constexpr const char* kAuthMissingInClear =
    "The server does not offer authentication, and the connection is not encrypted, so somebody on the way may have "
    "taken the offer out. Sending without it is done only under TLS or to this computer.";

Outcome Failed(ResultCode code, std::string reason) { return {State::kFailed, code, {}, std::move(reason)}; }

}  // namespace

Opening::Opening(const ClientOptions& options, SessionSetup setup, Wire& wire)
    : options_(options), setup_(std::move(setup)), wire_(wire) {
  HidePassword();
}

// A server that was told on an earlier connection may repeat it from the greeting on.
void Opening::HidePassword() {
  if (!options_.sign_in) return;
  const platform::Secret plain(std::string(1, '\0') + options_.user + '\0' + std::string(options_.password.view()));
  traces_.Begin(options_.user, {}, options_.password.view());
  traces_.AddResponse(plain.view());
  traces_.End();
}

Opening::Step Opening::SayHello(Awaited command) {
  const auto name = SmtpLine::From(setup_.local_name);
  if (!name) return Failed(ResultCode::kException, "The name of this computer cannot be sent.");
  const SmtpLine word = command == Awaited::kEhlo ? SmtpLine("EHLO") : SmtpLine("HELO");
  wire_.Send(command, word.Then(*name));
  return Turn::kGoesOn;
}

Opening::Step Opening::OnAccepted(Awaited command, const ServerReply& reply) {
  switch (command) {
    case Awaited::kGreeting:
      extended_ = options_.extended || platform::AsciiUpper(reply.text).find("ESMTP") != std::string::npos;
      return SayHello(Awaited::kEhlo);
    case Awaited::kEhlo:
      return OnCapabilities(reply);
    case Awaited::kHelo:
      return OnCapabilities({});
    case Awaited::kStartTls:
      handshake_ = true;
      return wire_.HasMore() ? Turn::kInClear : Turn::kHandshake;
    default:  // kAuth
      if (const auto proved = exchange_->Finish(); !proved) {
        return Failed(ResultCode::kAuthProtocolError, proved.error().what.InEnglish());
      }
      return BecomeReady();
  }
}

Opening::Step Opening::OnRefused(Awaited command, const ServerReply& reply) {
  if (command == Awaited::kEhlo && reply.code / 100 == 5) return SayHello(Awaited::kHelo);
  Outcome outcome = Refusal(command, reply);
  if (command == Awaited::kAuth) outcome.reason = AuthRefusal(reply.code);
  return outcome;
}

// What a server offers before TLS is forgotten with the EHLO after it (RFC 3207 4.2).
Opening::Step Opening::OnCapabilities(const ServerReply& reply) {
  capabilities_ = ParseCapabilities(reply.text);
  const bool may_start_tls = options_.security == Security::kAutomatic || options_.security == Security::kStartTls;
  if (may_start_tls && !setup_.encrypted && capabilities_.starttls) {
    wire_.Send(Awaited::kStartTls, "STARTTLS");
    return Turn::kGoesOn;
  }
  if (auto why = WhyInClear()) return *std::move(why);
  if (!extended_) {
    Capabilities kept;
    kept.auth = capabilities_.auth;
    kept.mechanisms = std::move(capabilities_.mechanisms);
    capabilities_ = std::move(kept);
  }
  if (options_.sign_in) return SignIn();
  return BecomeReady();
}

// Why a connection that stays in clear is of no use; nothing where it is encrypted, or may be in clear.
std::optional<Outcome> Opening::WhyInClear() const {
  if (setup_.encrypted) return {};
  if (options_.security == Security::kStartTls) return Failed(ResultCode::kGreetingRefused, kStartTlsMissing);
  if (options_.security == Security::kAutomatic && options_.sign_in && !setup_.loopback) {
    return Failed(ResultCode::kGreetingRefused, kNoTls);
  }
  return {};
}

Opening::Step Opening::OnTlsStarted() {
  handshake_ = false;
  setup_.encrypted = true;
  return SayHello(Awaited::kEhlo);
}

Opening::Step Opening::SignIn() {
  if (capabilities_.auth) {
    auto mechanism = ChooseMechanism(options_.auth_mode, capabilities_,
                                     {options_.user, options_.password.view(), setup_.nonce, setup_.now});
    if (!mechanism) return Failed(ResultCode::kAuthNotOffered, mechanism.error().what.InEnglish());
    traces_.Begin(options_.user, (*mechanism)->Name().text(), options_.password.view());
    exchange_.emplace(*std::move(mechanism), traces_);
    wire_.SendSecret(Awaited::kAuth, exchange_->Begin());
    return Turn::kGoesOn;
  }
  const bool safe = setup_.encrypted || setup_.loopback;
  if (!options_.send_without_auth) return Failed(ResultCode::kAuthNotOffered, kAuthMissing);
  if (!safe) return Failed(ResultCode::kAuthNotOffered, kAuthMissingInClear);
  return BecomeReady();
}

Opening::Step Opening::OnChallenge(const ServerReply& reply) {
  if (reply.code != 334) return Failed(ResultCode::kAuthProtocolError, kAuthBroken);
  const auto response = exchange_->Answer(platform::Trim(reply.text));
  if (!response) given_up_ = Failed(ResultCode::kAuthProtocolError, response.error().what.InEnglish());
  wire_.SendSecret(Awaited::kAuth, response ? *response : CancelSaslExchange());
  return Turn::kGoesOn;
}

Opening::Step Opening::BecomeReady() {
  exchange_.reset();
  traces_.End();
  return Turn::kReady;
}

}  // namespace quillcast::smtp
