// What a connection test means for the account, in one word.
#pragma once

#include <optional>
#include <string_view>

#include "domain/connection/connection_test.h"

namespace quillcast::domain {

enum class ConnectionVerdict {
  // It works:
  kWantsStartTls,  // signing in is offered behind STARTTLS alone
  kStartTls,
  kTls,  // from the first byte
  kInClear,
  kOpen,           // in clear, and without signing in
  kNoSignIn,       // encrypted, and without signing in
  kUnknownSignIn,  // none of the ways is known here
  kPartsBadly,     // it fails at QUIT
  // It does not:
  kNameUnknown,
  kNameWithoutAddress,
  kNameTimedOut,
  kNoNameServer,
  kNameServersFailed,
  kPortRefused,
  kUnreachable,
  kConnectTimedOut,
  kSpeaksTls,   // where text was expected
  kSpeaksText,  // where TLS was expected
  kTlsTooOld,
  kTlsFailed,
  kExpired,
  kNotYetValid,
  kOtherName,
  kSelfSigned,
  kUnknownIssuer,
  kNotTrusted,
  kNoStartTls,
  kStartTlsRefused,
  kTextAfterStartTls,  // it agreed to STARTTLS and then did not speak TLS
  kTurnedAwayForNow,
  kTurnedAway,
  kFetchesMail,  // POP3 or IMAP
  kNoMailServer,
  kOddAnswer,  // after a greeting
  kHelloRefused,
  kSilent,
  kStoppedAnswering,
  kHungUp,    // in place of a greeting
  kBrokeOff,  // after it
  kCancelled,
  kOther,
};

// What a verdict is about, by which its sentences are found.
enum class VerdictGroup { kWorks, kReaching, kTls, kCertificate, kConversation };
VerdictGroup GroupOf(ConnectionVerdict verdict);

ConnectionVerdict VerdictOf(const ConnectionTest& test);
// What the test means without its end: kWantsStartTls to kUnknownSignIn. It has come as far as QUIT.
ConnectionVerdict VerdictBeforeQuit(const ConnectionTest& test);

// The offer that signing in would go by: that under TLS where there was one.
const Offer& LastOffer(const ConnectionTest& test);
// The account's way of signing in that serves an offer; nothing where none does.
std::optional<std::string_view> ModeFor(const smtp::Capabilities& offered);

// "wants-starttls": for programs, and never changed.
std::string_view WordOf(ConnectionVerdict verdict);

}  // namespace quillcast::domain
