// What a run waits for, in words.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/result.h"
#include "platform/sentence.h"
#include "run/pace/pace.h"
#include "run/pace/pace_rules.h"

namespace quillcast::run {

// Why nothing may go out: a whole sentence.
Sentence WhyOf(const Wait& wait, const PaceRules& rules);

// "30 a minute", "4 connections", "3 retries": what differs from a run that goes as fast as it can, over one
// connection, and tries everybody once.
std::vector<Sentence> WordsOf(const RunPace& pace);

// Whoever named a time at which a run is to begin, and it is over; nothing where it is not.
std::optional<Sentence> BeginsAtOnce(const PaceRules& rules, const platform::Clock& clock);

// Why a run that is through with its list has not ended.
Sentence WaitForRetries(std::int64_t recipients);

// Why nothing goes out where the network is lost; `reason` is what was met last, a whole sentence.
Sentence WaitForNetwork(const std::string& reason);
// It was waited for in vain.
Error NetworkStaysAway(const std::string& reason);

// "14:05:30" in local time, with the day before it where it is not today.
std::string TimeText(Moment moment, const platform::Clock& clock);

}  // namespace quillcast::run
