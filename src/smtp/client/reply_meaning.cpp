#include "smtp/client/reply_meaning.h"

#include <fmt/format.h>

namespace quillcast::smtp {

Outcome Refusal(Awaited awaited, const ServerReply& reply) {
  Outcome outcome = VerdictOf(MeaningOf(awaited).refused, reply);
  outcome.reason = fmt::format("The server did not take {}.", MeaningOf(awaited).what);
  return outcome;
}

Outcome NoSense(std::string_view what) {
  return {State::kFailed, ResultCode::kBadResponse, {}, fmt::format("The server's answer makes no sense: {}.", what)};
}

}  // namespace quillcast::smtp
