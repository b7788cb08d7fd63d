#include "run/pace/local_time.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "platform/text.h"

namespace quillcast::run {
namespace {

using namespace std::chrono_literals;

// As far as the hours of a day are looked for: a change of the clock may leave them out of a day altogether.
constexpr auto kSearched = std::chrono::days(3);

using LocalMinutes = std::chrono::local_time<std::chrono::minutes>;

LocalMinutes LocalAt(Moment moment, const platform::Clock& clock) {
  const std::tm local = clock.Local(moment);
  const std::chrono::year_month_day day(std::chrono::year(local.tm_year + 1900),
                                        std::chrono::month(static_cast<unsigned>(local.tm_mon + 1)),
                                        std::chrono::day(static_cast<unsigned>(local.tm_mday)));
  return std::chrono::local_days(day) + std::chrono::hours(local.tm_hour) + std::chrono::minutes(local.tm_min);
}

// How far the clock on the wall is ahead: east of Greenwich, and in summer.
std::chrono::minutes AheadAt(Moment moment, const platform::Clock& clock) {
  return LocalAt(moment, clock).time_since_epoch() -
         std::chrono::floor<std::chrono::minutes>(moment).time_since_epoch();
}

// The first moment at which the clock on the wall shows this. What it is ahead by a day before and a day after are the
// two that it can be ahead by.
std::optional<Moment> MomentAt(LocalMinutes local, const platform::Clock& clock) {
  const Moment about(local.time_since_epoch());
  std::array found = {about - AheadAt(about - 24h, clock), about - AheadAt(about + 24h, clock)};
  std::ranges::sort(found);
  for (const Moment& moment : found) {
    if (LocalAt(moment, clock) == local) return moment;
  }
  return {};
}

std::optional<std::chrono::local_days> DayOf(std::string_view text) {
  const auto parts = platform::Split(text, '-');
  if (parts.size() != 3 || parts[0].size() != 4 || parts[1].size() != 2 || parts[2].size() != 2) return {};
  const auto year = platform::WholeNumberBetween(parts[0], 1970, 2100);
  const auto month = platform::WholeNumberBetween(parts[1], 1, 12);
  const auto day = platform::WholeNumberBetween(parts[2], 1, 31);
  if (!year || !month || !day) return {};
  const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(*year)),
                                         std::chrono::month(static_cast<unsigned>(*month)),
                                         std::chrono::day(static_cast<unsigned>(*day)));
  return date.ok() ? std::optional(std::chrono::local_days(date)) : std::nullopt;
}

}  // namespace

std::string MomentText(std::chrono::sys_seconds moment, const platform::Clock& clock) {
  const std::tm local = clock.Local(moment);
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                     local.tm_hour, local.tm_min, local.tm_sec);
}

std::optional<std::chrono::minutes> TimeOfDay(std::string_view text) {
  const auto parts = platform::Split(text, ':');
  if (parts.size() > 2 || parts[0].size() > 2 || (parts.size() == 2 && parts[1].size() != 2)) return {};
  const auto hour = platform::WholeNumberBetween(parts[0], 0, 23);
  const auto minute = parts.size() == 2 ? platform::WholeNumberBetween(parts[1], 0, 59) : 0;
  if (!hour || !minute) return {};
  return std::chrono::hours(*hour) + std::chrono::minutes(*minute);
}

std::optional<Moment> MomentOf(std::string_view text, const platform::Clock& clock) {
  const auto between = text.find_first_of(" T");
  const auto time = TimeOfDay(between == std::string_view::npos ? text : text.substr(between + 1));
  if (!time || text.find(':') == std::string_view::npos) return {};
  if (between != std::string_view::npos) {
    const auto day = DayOf(text.substr(0, between));
    return day ? MomentAt(*day + *time, clock) : std::nullopt;
  }
  const Moment now = clock.Now();
  const auto today = std::chrono::floor<std::chrono::days>(LocalAt(now, clock));
  for (auto day = today; day <= today + kSearched; day += std::chrono::days(1)) {
    if (const auto moment = MomentAt(day + *time, clock); moment && *moment >= now) return moment;
  }
  return {};
}

bool IsWithin(const HoursOfDay& hours, Moment moment, const platform::Clock& clock) {
  const auto local = LocalAt(moment, clock);
  const auto time = local - std::chrono::floor<std::chrono::days>(local);
  if (hours.from < hours.until) return hours.from <= time && time < hours.until;
  return hours.from <= time || time < hours.until;
}

// Minute by minute, because what a change of the clock does to a day is the system's to know: some microseconds for
// each hour that is looked over.
Moment NextWithin(const HoursOfDay& hours, Moment moment, const platform::Clock& clock) {
  if (IsWithin(hours, moment, clock)) return moment;
  Moment next = std::chrono::floor<std::chrono::minutes>(moment) + 1min;
  while (next < moment + kSearched && !IsWithin(hours, next, clock)) next += 1min;
  return next;
}

}  // namespace quillcast::run
