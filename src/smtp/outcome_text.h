// An outcome in the words that people read.
#pragma once

#include <string>
#include <string_view>

#include "smtp/outcome.h"

namespace quillcast::smtp {

// "550 5.1.1 no such user", safe to show; empty without a reply.
std::string ReplyText(const ServerReply& reply);
// Why a message was not sent: "Error 8: ... The server said: 550 ...".
std::string WhyText(const Outcome& outcome);
// The same, but what the server said comes first: "550 5.1.1 no such user (Error 8: ...)".
// The reply and our reason, as sentences one after the other; either may be missing.
std::string ReplyAndReason(const ServerReply& reply, std::string_view reason);
std::string ReplyFirst(const Outcome& outcome);
// "refused (Error 8: ...) The server said: 550 ...".
std::string OutcomeText(const Outcome& outcome);

}  // namespace quillcast::smtp
