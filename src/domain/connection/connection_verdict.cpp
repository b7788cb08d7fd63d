#include "domain/connection/connection_verdict.h"

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

ConnectionVerdict OfFault(net::CertificateFault fault) {
  constexpr std::array kVerdicts = {kTlsFailed,  kExpired,       kNotYetValid, kOtherName,
                                    kSelfSigned, kUnknownIssuer, kNotTrusted,  kNotTrusted};
  static_assert(kVerdicts.size() == static_cast<std::size_t>(net::CertificateFault::kOther) + 1);  // in its order
  return kVerdicts.at(static_cast<std::size_t>(fault));
}

ConnectionVerdict OfHandshake(const ConnectionTest& test) {
  const net::TlsFacts& tls = *test.tls;
  switch (tls.fault) {
    case net::HandshakeFault::kCertificate:
      return tls.certificate ? OfFault(tls.certificate->fault) : kNotTrusted;
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

// Whether a reply may have begun so.
bool BeginsReply(std::string_view text) {
  const std::string_view code = text.substr(0, 3);
  return code.front() >= '2' && code.front() <= '5' &&
         std::all_of(code.begin(), code.end(), [](char c) { return c >= '0' && c <= '9'; });
}

ConnectionVerdict OfName(net::NameFault fault) {
  switch (fault) {
    case net::NameFault::kNoAddress:
      return kNameWithoutAddress;
    case net::NameFault::kNoServer:
      return kNoNameServer;
    case net::NameFault::kServersFailed:
      return kNameServersFailed;
    default:
      return kNameUnknown;
  }
}

ConnectionVerdict OfConnecting(const ConnectionTest& test) {
  const bool was_refused = std::any_of(test.addresses.begin(), test.addresses.end(),
                                       [](const auto& address) { return address.error == ECONNREFUSED; });
  return was_refused ? kPortRefused : kUnreachable;
}

// Of a conversation that broke off, where no code of ours says more.
ConnectionVerdict OfBreakingOff(const ConnectionTest& test) {
  const bool is_first = test.last_step() == ConnectionStep::kGreeting;
  if (test.speaks_tls) return kSpeaksTls;
  if (test.in_clear_after_starttls) return kTextAfterStartTls;
  if (!test.odd.empty()) return is_first ? OfOddity(test.odd) : kOddAnswer;
  if (is_first && !test.unfinished.empty() && !BeginsReply(test.unfinished)) return OfOddity(test.unfinished);
  if (test.last_step() == ConnectionStep::kStartTls && test.outcome.reply.code != 0) return kStartTlsRefused;
  if (test.outcome.reply.code / 100 == 4) return kTurnedAwayForNow;
  if (test.outcome.reply.code / 100 == 5) return is_first ? kTurnedAway : kHelloRefused;
  if (test.outcome.code == ResultCode::kReplyTimeout) return is_first ? kSilent : kStoppedAnswering;
  if (test.outcome.code == ResultCode::kConnectionLost)
    return is_first && test.unfinished.empty() ? kHungUp : kBrokeOff;
  if (test.outcome.code == ResultCode::kBadResponse) return is_first ? kNoMailServer : kOddAnswer;
  const bool lacks_tls = test.in_clear && !test.in_clear->known.starttls && test.security == smtp::Security::kStartTls;
  return lacks_tls ? kNoStartTls : kOther;
}

struct VerdictRow {
  ConnectionVerdict verdict;
  std::string_view word;
  VerdictGroup group;
};
constexpr std::array kRows{
    VerdictRow{kWantsStartTls, "wants-starttls", VerdictGroup::kWorks},
    VerdictRow{kStartTls, "starttls", VerdictGroup::kWorks},
    VerdictRow{kTls, "tls", VerdictGroup::kWorks},
    VerdictRow{kInClear, "in-clear", VerdictGroup::kWorks},
    VerdictRow{kOpen, "no-sign-in-in-clear", VerdictGroup::kWorks},
    VerdictRow{kNoSignIn, "no-sign-in", VerdictGroup::kWorks},
    VerdictRow{kUnknownSignIn, "unknown-sign-in", VerdictGroup::kWorks},
    VerdictRow{kPartsBadly, "parts-badly", VerdictGroup::kWorks},
    VerdictRow{kNameUnknown, "name-unknown", VerdictGroup::kReaching},
    VerdictRow{kNameWithoutAddress, "name-without-address", VerdictGroup::kReaching},
    VerdictRow{kNameTimedOut, "name-timed-out", VerdictGroup::kReaching},
    VerdictRow{kNoNameServer, "no-name-server", VerdictGroup::kReaching},
    VerdictRow{kNameServersFailed, "name-servers-failed", VerdictGroup::kReaching},
    VerdictRow{kPortRefused, "port-refused", VerdictGroup::kReaching},
    VerdictRow{kUnreachable, "unreachable", VerdictGroup::kReaching},
    VerdictRow{kConnectTimedOut, "connect-timed-out", VerdictGroup::kReaching},
    VerdictRow{kSpeaksTls, "speaks-tls", VerdictGroup::kTls},
    VerdictRow{kSpeaksText, "speaks-text", VerdictGroup::kTls},
    VerdictRow{kTlsTooOld, "tls-too-old", VerdictGroup::kTls},
    VerdictRow{kTlsFailed, "tls-failed", VerdictGroup::kTls},
    VerdictRow{kExpired, "certificate-expired", VerdictGroup::kCertificate},
    VerdictRow{kNotYetValid, "certificate-not-yet-valid", VerdictGroup::kCertificate},
    VerdictRow{kOtherName, "certificate-other-name", VerdictGroup::kCertificate},
    VerdictRow{kSelfSigned, "certificate-self-signed", VerdictGroup::kCertificate},
    VerdictRow{kUnknownIssuer, "certificate-unknown-issuer", VerdictGroup::kCertificate},
    VerdictRow{kNotTrusted, "certificate-not-trusted", VerdictGroup::kCertificate},
    VerdictRow{kNoStartTls, "no-starttls", VerdictGroup::kTls},
    VerdictRow{kStartTlsRefused, "starttls-refused", VerdictGroup::kTls},
    VerdictRow{kTextAfterStartTls, "text-after-starttls", VerdictGroup::kTls},
    VerdictRow{kTurnedAwayForNow, "turned-away-for-now", VerdictGroup::kConversation},
    VerdictRow{kTurnedAway, "turned-away", VerdictGroup::kConversation},
    VerdictRow{kFetchesMail, "fetches-mail", VerdictGroup::kConversation},
    VerdictRow{kNoMailServer, "no-mail-server", VerdictGroup::kConversation},
    VerdictRow{kOddAnswer, "odd-answer", VerdictGroup::kConversation},
    VerdictRow{kHelloRefused, "hello-refused", VerdictGroup::kConversation},
    VerdictRow{kSilent, "silent", VerdictGroup::kConversation},
    VerdictRow{kStoppedAnswering, "stopped-answering", VerdictGroup::kConversation},
    VerdictRow{kHungUp, "hung-up", VerdictGroup::kConversation},
    VerdictRow{kBrokeOff, "broke-off", VerdictGroup::kConversation},
    VerdictRow{kCancelled, "cancelled", VerdictGroup::kConversation},
    VerdictRow{kOther, "other", VerdictGroup::kConversation},
};
static_assert([] {
  for (std::size_t i = 0; i < kRows.size(); ++i) {
    if (kRows[i].verdict != static_cast<ConnectionVerdict>(i)) return false;
  }
  return kRows.back().verdict == kOther;
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
      return OfName(test.name_fault);
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
  return at_handshake ? OfHandshake(test) : OfBreakingOff(test);
}

std::string_view WordOf(ConnectionVerdict verdict) { return kRows.at(static_cast<std::size_t>(verdict)).word; }

VerdictGroup GroupOf(ConnectionVerdict verdict) { return kRows.at(static_cast<std::size_t>(verdict)).group; }

}  // namespace quillcast::domain
