// Signing in to the mailbox: AUTH PLAIN (RFC 4616) and AUTH LOGIN, as RFC 4954 frames them.
#include <utility>

#include "platform/base64.h"
#include "platform/text.h"
#include "smtp/server_session.h"

namespace quillcast::smtp {
namespace {

// Takes as long for any text of that length.
bool SameSecret(std::string_view a, std::string_view b) {
  unsigned difference = a.size() == b.size() ? 0 : 1;
  for (std::size_t i = 0; i < a.size(); ++i) {
    difference |= static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(i < b.size() ? b[i] : 0);
  }
  return difference == 0;
}

const Answer kBadBase64{501, "5.5.2", "That is not base64"};

}  // namespace

void ServerSession::Auth(std::string_view argument) {
  if (helo_.empty()) return Complain({503, "5.5.1", "Say EHLO first"});
  if (!options_.user.empty() && AuthNeedsTls()) return Complain({538, "5.7.11", "Say STARTTLS first"});
  if ((features_ & kAuth) == 0) return Complain({502, "5.5.1", "Signing in is not offered"});
  if (!user_.empty()) return Complain({503, "5.5.1", "You are signed in already"});
  if (has_sender_) return Complain({503, "5.5.1", "Not within a message"});

  const auto [mechanism, initial] = SplitCommand(argument);
  const bool plain = platform::EqualsIgnoringAsciiCase(mechanism, "PLAIN");
  if (!plain && !platform::EqualsIgnoringAsciiCase(mechanism, "LOGIN")) {
    return Complain({504, "5.5.4", "Choose PLAIN or LOGIN"});
  }
  phase_ = plain ? Phase::kAuthResponse : Phase::kAuthUser;
  if (initial == "=") return TakeAuthLine("");  // how an empty response is written in the command (RFC 4954 4)
  if (!initial.empty()) return TakeAuthLine(initial);
  Say(334, "", plain ? "" : "VXNlcm5hbWU6");
}

void ServerSession::TakeAuthLine(std::string_view line) {
  const Phase phase = std::exchange(phase_, Phase::kCommand);
  if (line == "*") return Complain({501, "5.7.0", "Signing in was given up"});
  const auto text = platform::DecodeBase64(line);
  if (!text) return Complain(kBadBase64);
  if (phase == Phase::kAuthResponse) return TakePlain(*text);
  if (phase == Phase::kAuthPassword) return FinishAuth(auth_user_, *text);
  auth_user_ = *text;
  phase_ = Phase::kAuthPassword;
  Say(334, "", "UGFzc3dvcmQ6");
}

// authorization-id NUL user NUL password (RFC 4616 2). Nobody may act for somebody else here.
void ServerSession::TakePlain(std::string_view response) {
  const auto parts = platform::Split(response, '\0');
  if (parts.size() != 3) return Complain({501, "5.5.2", "That is not a PLAIN response"});
  if (!parts[0].empty() && parts[0] != parts[1]) return Complain({535, "5.7.8", "Sign in as yourself"});
  FinishAuth(parts[1], parts[2]);
}

void ServerSession::FinishAuth(std::string_view user, std::string_view password) {
  const bool same_user = SameSecret(user, options_.user);
  if (!SameSecret(password, options_.password) || !same_user) {
    return Complain({535, "5.7.8", "User name or password not right"});
  }
  user_ = options_.user;
  Say(235, "2.7.0", "Welcome");
}

}  // namespace quillcast::smtp
