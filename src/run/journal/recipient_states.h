// Where a recipient of a run is.
#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "smtp/outcome.h"

namespace quillcast::run {

// The states of an outcome, those whose message is on its way, and those whom the run did not come to.
enum class ResultState : std::uint8_t { kSent, kRefused, kDeferred, kFailed, kUnknown, kNotTried, kInFlight };
inline constexpr std::size_t kResultStates = 7;
// "sent", "not tried", "in flight".
const char* Name(ResultState state);
ResultState StateOf(smtp::State state);

using StateSet = std::bitset<kResultStates>;
inline StateSet SetOf(std::initializer_list<ResultState> states) {
  StateSet set;
  for (const ResultState state : states) set.set(static_cast<std::size_t>(state));
  return set;
}
inline bool Holds(const StateSet& set, ResultState state) { return set[static_cast<std::size_t>(state)]; }

using StateCounts = std::array<std::int64_t, kResultStates>;
// How many are in one of these states.
std::int64_t CountIn(const StateCounts& counts, const StateSet& states);

}  // namespace quillcast::run
