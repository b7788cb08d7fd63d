#include "run/run_rate.h"

#include <fmt/format.h>

#include <cmath>

#include "platform/text.h"

namespace quillcast::run {
namespace {

constexpr double kEnough = 0.5;  // seconds after which a rate means something

std::string DescribeTime(double seconds) {
  const auto whole = std::llround(seconds);
  if (whole < 60) return platform::Counted(whole, "second", "seconds");
  if (whole < 3600) return platform::Counted((whole + 30) / 60, "minute", "minutes");
  return fmt::format("{} and {}", platform::Counted(whole / 3600, "hour", "hours"),
                     platform::Counted(whole % 3600 / 60, "minute", "minutes"));
}

}  // namespace

std::string DescribeRate(std::int64_t done, std::int64_t total, std::chrono::milliseconds elapsed) {
  const double seconds = static_cast<double>(elapsed.count()) / 1000;
  if (done <= 0 || seconds < kEnough) return {};
  const double rate = static_cast<double>(done) / seconds;
  std::string text = rate >= 10
                         ? fmt::format("{} messages a second", platform::WithThousands(static_cast<std::int64_t>(rate)))
                         : fmt::format("{:.1f} messages a second", rate);
  if (done < total) text += fmt::format(", {} left", DescribeTime(static_cast<double>(total - done) / rate));
  return text;
}

}  // namespace quillcast::run
