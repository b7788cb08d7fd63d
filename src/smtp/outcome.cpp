#include "smtp/outcome.h"

#include <algorithm>
#include <array>

namespace quillcast::smtp {

Outcome VerdictOf(ResultCode code, const ServerReply& reply) {
  return {reply.code / 100 == 4 ? State::kDeferred : State::kRefused, code, reply, {}};
}

Outcome Left() { return {State::kFailed, ResultCode::kCancelled, {}, {}, Whereabouts::kNotOut}; }

bool IsOfWay(const Outcome& outcome) {
  constexpr std::array kCodes = {ResultCode::kConnectFailed, ResultCode::kConnectTimeout, ResultCode::kHostNotFound,
                                 ResultCode::kResolveTimeout, ResultCode::kConnectionLost};
  constexpr int kServiceCloses = 421;
  if (outcome.state == State::kDeferred)
    return outcome.code == ResultCode::kGreetingRefused || outcome.reply.code == kServiceCloses;
  return outcome.state == State::kFailed && std::find(kCodes.begin(), kCodes.end(), outcome.code) != kCodes.end();
}

bool IsOfSender(const Outcome& outcome) {
  if (outcome.code == ResultCode::kSenderRefused) return outcome.state == State::kRefused;
  const bool is_verdict = outcome.is_decided() && outcome.state != State::kUnknown;
  return outcome.code == ResultCode::kGreetingRefused && is_verdict && !IsOfWay(outcome);
}

bool IsOfSignIn(const Outcome& outcome) {
  return outcome.is_decided() && outcome.state != State::kUnknown &&
         (outcome.code == ResultCode::kAuthRefused || outcome.code == ResultCode::kAuthNotOffered);
}

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
