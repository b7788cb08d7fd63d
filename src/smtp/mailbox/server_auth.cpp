// Signing in to the mailbox, as RFC 4954 frames it.
#include <utility>

#include "platform/base64.h"
#include "smtp/mailbox/server_session.h"

namespace quillcast::smtp {

void ServerSession::Auth(std::string_view argument) {
  if (helo_.empty()) return Refuse({503, "5.5.1", "Say EHLO first"});
  if (!options_.user.empty() && AuthNeedsTls()) return Refuse({538, "5.7.11", "Say STARTTLS first"});
  if ((features_ & kAuth) == 0) return Refuse({502, "5.5.1", "Signing in is not offered"});
  if (!user_.empty()) return Refuse({503, "5.5.1", "You are signed in already"});
  if (has_sender_) return Refuse({503, "5.5.1", "Not within a message"});

  const auto [name, initial] = SplitCommand(argument);
  mechanism_ = MakeServerMechanism(name, {options_.user, options_.password, peer_.nonce});
  if (!mechanism_) return Refuse({504, "5.5.4", "Choose one of " + ServerMechanismNames(", ")});
  phase_ = Phase::kAuth;
  if (initial == "=") return TakeAuthLine("");  // how an empty response is written in the command (RFC 4954 4)
  if (!initial.empty()) return TakeAuthLine(initial);
  Challenge(mechanism_->Begin());
}

void ServerSession::Challenge(std::string_view text) { Say(334, "", platform::Base64(text)); }

void ServerSession::TakeAuthLine(std::string_view line) {
  if (line == "*") return EndAuth({501, "5.7.0", "Signing in was given up"});
  const auto text = platform::DecodeBase64(line);
  if (!text) return EndAuth({501, "5.5.2", "That is not base64"});
  const ServerStep step = mechanism_->Step(*text);
  if (step.challenge) return Challenge(*step.challenge);
  EndAuth(step.reply);
}

void ServerSession::EndAuth(const ServerReply& reply) {
  phase_ = Phase::kCommand;
  mechanism_.reset();
  if (reply.code != 235) return Refuse(reply);
  user_ = options_.user;
  Say(reply);
}

}  // namespace quillcast::smtp
