#include "run/journal/recipient_states.h"

namespace quillcast::run {
namespace {

constexpr std::array<const char*, kResultStates> kNames = {"sent",    "refused",   "deferred", "failed",
                                                           "unknown", "not tried", "in flight"};

}  // namespace

const char* Name(ResultState state) { return kNames.at(static_cast<std::size_t>(state)); }

ResultState StateOf(smtp::State state) {
  switch (state) {
    case smtp::State::kSent:
      return ResultState::kSent;
    case smtp::State::kRefused:
      return ResultState::kRefused;
    case smtp::State::kDeferred:
      return ResultState::kDeferred;
    case smtp::State::kFailed:
      return ResultState::kFailed;
    case smtp::State::kUnknown:
      break;
  }
  return ResultState::kUnknown;
}

std::int64_t CountIn(const StateCounts& counts, const StateSet& states) {
  std::int64_t count = 0;
  for (std::size_t n = 0; n < kResultStates; ++n) count += states[n] ? counts[n] : 0;
  return count;
}

}  // namespace quillcast::run
