#include "run/run_rate.h"

#include <fmt/format.h>

#include <cmath>

#include "platform/text.h"

namespace quillcast::run {
namespace {

constexpr double kEnough = 0.5;  // seconds after which a rate means something

Sentence DescribeTime(double seconds) {
  const auto whole = std::llround(seconds);
  if (whole == 0) return "less than a second";
  if (whole < 60) return SayOf(whole, "{} second", "{} seconds");
  const Sentence minutes = SayOf(whole < 3600 ? (whole + 30) / 60 : whole % 3600 / 60, "{} minute", "{} minutes");
  return whole < 3600 ? minutes : Say("{} and {}", SayOf(whole / 3600, "{} hour", "{} hours"), minutes);
}

}  // namespace

Sentence DescribeRate(const RunRate& rate, const TimeLeft& left) {
  const double seconds = static_cast<double>(rate.within.count()) / 1000;
  if (rate.messages <= 0 || seconds < kEnough) return {};
  const double a_second = static_cast<double>(rate.messages) / seconds;
  const std::string number =
      a_second >= 10 ? platform::WithThousands(static_cast<std::int64_t>(a_second)) : fmt::format("{:.1f}", a_second);
  if (left.messages <= 0) return Say("{} messages a second", number);
  const double seconds_left = static_cast<double>(left.messages) / a_second;
  // Some of them wait: an end that is so near by their number alone is none.
  if (left.certainty == Certainty::kAtLeast && seconds_left < 1) return Say("{} messages a second", number);
  const Sentence time = DescribeTime(seconds_left);
  return left.certainty == Certainty::kAbout ? Say("{} messages a second, {} left", number, time)
                                             : Say("{} messages a second, at least {} left", number, time);
}

}  // namespace quillcast::run
