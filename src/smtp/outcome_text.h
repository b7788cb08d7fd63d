// An outcome in the words that people read.
#pragma once

#include <string>
#include <string_view>

#include "smtp/outcome.h"

namespace quillcast::smtp {

// "550 5.1.1 no such user", safe to show; empty without a reply.
std::string ReplyText(const ServerReply& reply);
// The reply and our reason, as sentences one after the other; either may be missing.
std::string ReplyAndReason(const ServerReply& reply, std::string_view reason);
// Why a message was not sent, what is known of this one before what holds of all: "550 5.1.1 no such user (Error 8:
// ...)". In a narrow column or a long notice the first words may be all that is read.
std::string WhyText(const Outcome& outcome);
// "refused. 550 5.1.1 no such user (Error 8: ...)".
std::string OutcomeText(const Outcome& outcome);

}  // namespace quillcast::smtp
