// How fast a run was told to go, frozen with it for the runs that go on with it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "platform/result.h"
#include "run/pace/pace_rules.h"

namespace quillcast::run {

// By the run's own options, and by the account, which counts where they say nothing.
struct FrozenPace {
  PaceTexts options;
  PaceTexts account;
  std::optional<Moment> begin = {};  // nothing was to go out before; options.at is a time of the day it was told
};

// For NewRun, as JSON. Of options.at nothing is kept but `begin`.
std::string FrozenPaceText(const FrozenPace& pace);
// Nothing for a run that was begun by a version that kept none. kBadData for what FrozenPaceText does not write.
Result<std::optional<FrozenPace>> ReadFrozenPace(std::string_view text, const platform::Clock& clock);
// The options in it; none where it cannot be read, which whoever goes on with the run is told.
PaceTexts OptionsIn(std::string_view text, const platform::Clock& clock);

// The names of the account's settings that ask for something else now than `then`, and that the run goes by.
std::vector<std::string> ChangedSince(const PaceTexts& then, const PaceTexts& options, const PaceTexts& account);

}  // namespace quillcast::run
