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

}  // namespace quillcast::run
