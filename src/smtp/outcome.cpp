#include "smtp/outcome.h"

namespace quillcast::smtp {

Outcome VerdictOf(ResultCode code, const ServerReply& reply) {
  return {reply.code / 100 == 4 ? State::kDeferred : State::kRefused, code, reply, {}};
}

Outcome Left() { return {State::kFailed, ResultCode::kCancelled, {}, {}, Whereabouts::kNotOut}; }

void AddSentence(std::string& reason, std::string_view sentence) {
  if (!reason.empty() && !sentence.empty()) reason += ' ';
  reason += sentence;
}

const char* Name(State state) {
  switch (state) {
    case State::kSent:
      return "sent";
    case State::kRefused:
      return "refused";
    case State::kDeferred:
      return "deferred";
    case State::kFailed:
      return "failed";
    case State::kUnknown:
      return "unknown";
  }
  return "failed";
}

}  // namespace quillcast::smtp
