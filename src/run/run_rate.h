// How fast a run goes, in words.
#pragma once

#include <chrono>
#include <cstdint>

#include "platform/sentence.h"

namespace quillcast::run {

// "1,250 messages a second, 2 minutes left"; empty before anything can be said.
Sentence DescribeRate(std::int64_t done, std::int64_t total, std::chrono::milliseconds elapsed);

}  // namespace quillcast::run
