// Times of the day where the person is, over the days on which the clock is changed.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "run/pace/pace_rules.h"

namespace quillcast::run {

// "2026-11-27 09:05:07", as the clock on the wall has it.
std::string MomentText(std::chrono::sys_seconds moment, const platform::Clock& clock);

// "9", "09:30", up to "23:59".
std::optional<std::chrono::minutes> TimeOfDay(std::string_view text);

// "14:30", the next time that it is so late, or "2026-12-24 14:30", also with a "T" between; the first where it is so
// late twice; nothing for a time that there is not, as in the hour that a change of the clock leaves out.
std::optional<Moment> MomentOf(std::string_view text, const platform::Clock& clock);

// Whether it is within these hours then; of a clock that is put on over their beginning, from its first minute on.
bool IsWithin(const HoursOfDay& hours, Moment moment, const platform::Clock& clock);
// The first moment from this one on that is.
Moment NextWithin(const HoursOfDay& hours, Moment moment, const platform::Clock& clock);

}  // namespace quillcast::run
