#include "run/run_rate.h"

#include <fmt/format.h>

#include <cmath>

#include "platform/text.h"

namespace quillcast::run {
namespace {

constexpr double kEnough = 0.5;  // seconds after which a rate means something

Sentence DescribeTime(double seconds) {
  const auto whole = std::llround(seconds);
  if (whole < 60) return SayOf(whole, "{} second", "{} seconds");
  const Sentence minutes = SayOf(whole < 3600 ? (whole + 30) / 60 : whole % 3600 / 60, "{} minute", "{} minutes");
  return whole < 3600 ? minutes : Say("{} and {}", SayOf(whole / 3600, "{} hour", "{} hours"), minutes);
}

}  // namespace

Sentence DescribeRate(std::int64_t done, std::int64_t total, std::chrono::milliseconds elapsed) {
  const double seconds = static_cast<double>(elapsed.count()) / 1000;
  if (done <= 0 || seconds < kEnough) return {};
  const double rate = static_cast<double>(done) / seconds;
  const std::string number =
      rate >= 10 ? platform::WithThousands(static_cast<std::int64_t>(rate)) : fmt::format("{:.1f}", rate);
  if (done >= total) return Say("{} messages a second", number);
  return Say("{} messages a second, {} left", number, DescribeTime(static_cast<double>(total - done) / rate));
}

}  // namespace quillcast::run
