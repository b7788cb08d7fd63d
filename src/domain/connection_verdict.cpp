#include "domain/connection_verdict.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include "account/account_settings.h"
#include "smtp/sasl/sasl_mechanism.h"

namespace quillcast::domain {
namespace {

using smtp::ConnectionStep;
using smtp::ResultCode;
using enum ConnectionVerdict;

ConnectionVerdict OfCertificate(net::CertificateFault fault) {
  constexpr std::array kVerdicts = {kTlsFailed,  kExpired,       kNotYetValid, kOtherName,
                                    kSelfSigned, kUnknownIssuer, kNotTrusted,  kNotTrusted};
  return kVerdicts.at(static_cast<std::size_t>(fault));
}

ConnectionVerdict OfHandshake(const ConnectionTest& test) {
  const net::TlsFacts& tls = *test.tls;
  switch (tls.fault) {
    case net::HandshakeFault::kCertificate:
      return tls.certificate ? OfCertificate(tls.certificate->fault) : kNotTrusted;
    case net::HandshakeFault::kNoTls:
      return test.in_clear ? kTextAfterStartTls : kSpeaksText;
    case net::HandshakeFault::kTooOld:
      return kTlsTooOld;
    default:
      if (test.outcome.code != ResultCode::kReplyTimeout) return kTlsFailed;
      return test.in_clear ? kStoppedAnswering : kSilent;  // behind STARTTLS it has greeted
  }
}

ConnectionVerdict OfOddity(std::string_view odd) {
  return odd.starts_with("+OK") || odd.starts_with("* OK") || odd.starts_with("* PREAUTH") ? kFetchesMail
                                                                                           : kNoMailServer;
}

ConnectionVerdict OfConnecting(const ConnectionTest& test) {
  const bool was_refused = std::any_of(test.addresses.begin(), test.addresses.end(),
                                       [](const auto& address) { return address.error == ECONNREFUSED; });
  return was_refused ? kPortRefused : kUnreachable;
}

// Of a conversation that broke off, where no code of ours says more.
ConnectionVerdict OfConversation(const ConnectionTest& test) {
  const bool is_first = test.last_step() == ConnectionStep::kGreeting;
  if (test.speaks_tls) return kSpeaksTls;
  if (!test.odd.empty()) return is_first ? OfOddity(test.odd) : kNoMailServer;
  if (test.last_step() == ConnectionStep::kStartTls && test.outcome.reply.code != 0) return kStartTlsRefused;
  if (test.outcome.reply.code / 100 == 4) return kTurnedAwayForNow;
  if (test.outcome.reply.code / 100 == 5) return is_first ? kTurnedAway : kHelloRefused;
  if (test.outcome.code == ResultCode::kReplyTimeout) return is_first ? kSilent : kStoppedAnswering;
  if (test.outcome.code == ResultCode::kConnectionLost) return kHungUp;
  if (test.outcome.code == ResultCode::kBadResponse) return kNoMailServer;
  const bool lacks_tls = test.in_clear && !test.in_clear->known.starttls && test.security == smtp::Security::kStartTls;
  return lacks_tls ? kNoStartTls : kOther;
}

struct Named {
  ConnectionVerdict verdict;
  std::string_view name;
};
constexpr std::array kNames{
    Named{kWantsStartTls, "wants-starttls"},
    Named{kStartTls, "starttls"},
    Named{kTls, "tls"},
    Named{kInClear, "in-clear"},
    Named{kOpen, "no-sign-in-in-clear"},
    Named{kNoSignIn, "no-sign-in"},
    Named{kUnknownSignIn, "unknown-sign-in"},
    Named{kPartsBadly, "parts-badly"},
    Named{kNameUnknown, "name-unknown"},
    Named{kNameTimedOut, "name-timed-out"},
    Named{kPortRefused, "port-refused"},
    Named{kUnreachable, "unreachable"},
    Named{kConnectTimedOut, "connect-timed-out"},
    Named{kSpeaksTls, "speaks-tls"},
    Named{kSpeaksText, "speaks-text"},
    Named{kTlsTooOld, "tls-too-old"},
    Named{kTlsFailed, "tls-failed"},
    Named{kExpired, "certificate-expired"},
    Named{kNotYetValid, "certificate-not-yet-valid"},
    Named{kOtherName, "certificate-other-name"},
    Named{kSelfSigned, "certificate-self-signed"},
    Named{kUnknownIssuer, "certificate-unknown-issuer"},
    Named{kNotTrusted, "certificate-not-trusted"},
    Named{kNoStartTls, "no-starttls"},
    Named{kStartTlsRefused, "starttls-refused"},
    Named{kTextAfterStartTls, "text-after-starttls"},
    Named{kTurnedAwayForNow, "turned-away-for-now"},
    Named{kTurnedAway, "turned-away"},
    Named{kFetchesMail, "fetches-mail"},
    Named{kNoMailServer, "no-mail-server"},
    Named{kHelloRefused, "hello-refused"},
    Named{kSilent, "silent"},
    Named{kStoppedAnswering, "stopped-answering"},
    Named{kHungUp, "hung-up"},
    Named{kCancelled, "cancelled"},
    Named{kOther, "other"},
};
static_assert([] {
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if (kNames[i].verdict != static_cast<ConnectionVerdict>(i)) return false;
  }
  return kNames.back().verdict == kOther;
}());

}  // namespace

const Offer& LastOffer(const ConnectionTest& test) {
  static const Offer nothing;
  if (test.under_tls) return *test.under_tls;
  return test.in_clear ? *test.in_clear : nothing;
}

std::optional<std::string_view> ModeFor(const smtp::Capabilities& offered) {
  const auto modes = account::RowOf(account::AccountKey::kAuthMode).choices;
  for (std::size_t mode = 0; mode < modes.size(); ++mode) {
    if (smtp::CanSignIn(static_cast<smtp::AuthMode>(mode), offered)) return modes[mode];
  }
  return {};
}

ConnectionVerdict VerdictBeforeQuit(const ConnectionTest& test) {
  const Offer& last = LastOffer(test);
  const bool signs_in_behind = test.in_clear && test.in_clear->known.starttls && !test.in_clear->known.auth;
  if (signs_in_behind && (last.known.auth || !test.tls)) {
    return last.known.auth && !ModeFor(last.known) ? kUnknownSignIn : kWantsStartTls;
  }
  if (!last.known.auth) return test.tls ? kNoSignIn : kOpen;
  if (!ModeFor(last.known)) return kUnknownSignIn;
  if (!test.tls) return kInClear;
  return test.in_clear ? kStartTls : kTls;
}

ConnectionVerdict VerdictOf(const ConnectionTest& test) {
  switch (test.outcome.code) {
    case ResultCode::kSuccess:
      return VerdictBeforeQuit(test);
    case ResultCode::kQuitFailed:
      return kPartsBadly;
    case ResultCode::kHostNotFound:
      return kNameUnknown;
    case ResultCode::kResolveTimeout:
      return kNameTimedOut;
    case ResultCode::kConnectFailed:
      return OfConnecting(test);
    case ResultCode::kConnectTimeout:
      return kConnectTimedOut;
    case ResultCode::kCancelled:
      return kCancelled;
    default:
      break;
  }
  const bool at_handshake = test.last_step() == ConnectionStep::kTls && test.tls;
  return at_handshake ? OfHandshake(test) : OfConversation(test);
}

std::string_view Name(ConnectionVerdict verdict) { return kNames.at(static_cast<std::size_t>(verdict)).name; }

}  // namespace quillcast::domain
