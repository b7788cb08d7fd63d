// How fast a run goes, in words.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "platform/sentence.h"

namespace quillcast::run {

struct RunRate {
  std::int64_t messages = 0;
  std::chrono::milliseconds within{0};
};

// What is to come: messages that are known of, and whether there may be more.
enum class Certainty : std::uint8_t { kAbout, kAtLeast };
struct TimeLeft {
  std::int64_t messages = 0;
  Certainty certainty = Certainty::kAbout;
};

// "1,250 messages a second, 2 minutes left", "…, at least 2 minutes left"; without the time where nothing is left.
// Empty before anything can be said.
Sentence DescribeRate(const RunRate& rate, const TimeLeft& left);

}  // namespace quillcast::run
