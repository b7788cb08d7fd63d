#include "run/pace/pace_rules.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/text.h"
#include "run/pace/local_time.h"

namespace quillcast::run {
namespace {

using namespace std::chrono_literals;

// More is no pace, and each message that a rule counts takes memory.
constexpr std::int64_t kMostMessages = 1'000'000;

// The journal counts the tries of a recipient up to 255.
constexpr std::int64_t kMostRetries = 100;
constexpr std::chrono::seconds kLongestDelay = 1h;
constexpr std::string_view kUpToTheMinute = "YYYY-MM-DD HH:MM";

struct Unit {
  std::string_view name;
  std::chrono::seconds length;
};
constexpr std::array kUnits = {
    Unit{"s", 1s},   Unit{"sec", 1s},  Unit{"second", 1s}, Unit{"min", 1min}, Unit{"minute", 1min},
    Unit{"m", 1min}, Unit{"hour", 1h}, Unit{"h", 1h},      Unit{"day", 24h},  Unit{"d", 24h},
};

constexpr std::array kTexts = {&PaceTexts::rate,           &PaceTexts::quota_hour,  &PaceTexts::quota_day,
                               &PaceTexts::domain_rate,    &PaceTexts::hours,       &PaceTexts::pause_after,
                               &PaceTexts::per_connection, &PaceTexts::connections, &PaceTexts::at,
                               &PaceTexts::retries,        &PaceTexts::retry_after, &PaceTexts::slow_down,
                               &PaceTexts::network_wait};
static_assert(sizeof(PaceTexts) == kTexts.size() * sizeof(std::string), "each text has its place");

Error NoSuch(SentencePattern<1> what, std::string_view text, Sentence remedy) {
  return {Failure::kUsage, Sentence(what.text(), {ValueOf(platform::Printable(text, 100))}), std::move(remedy)};
}

// The two sides of a separator that stands once, without blanks around them.
std::optional<std::pair<std::string_view, std::string_view>> Sides(std::string_view text, char separator) {
  const auto pieces = platform::Split(text, separator);
  if (pieces.size() != 2) return {};
  return std::pair(platform::Trim(pieces[0]), platform::Trim(pieces[1]));
}

std::optional<MessageLimit> RateOf(std::string_view text) {
  const auto sides = Sides(text, '/');
  if (!sides) return {};
  const auto messages = platform::WholeNumberBetween(sides->first, 1, kMostMessages);
  const std::string name = platform::AsciiLower(sides->second);
  const auto* unit = std::ranges::find(kUnits, name, &Unit::name);
  if (!messages || unit == kUnits.end()) return {};
  return MessageLimit{*messages, unit->length};
}

// "90s", "5 min".
std::optional<std::chrono::seconds> DurationOf(std::string_view text) {
  const auto digits = text.find_first_not_of("0123456789");
  if (digits == std::string_view::npos) return {};
  const auto number = platform::WholeNumberBetween(text.substr(0, digits), 1, kLongestRule.count());
  const std::string name = platform::AsciiLower(platform::Trim(text.substr(digits)));
  const auto* unit = std::ranges::find(kUnits, name, &Unit::name);
  if (!number || unit == kUnits.end() || *number > kLongestRule / unit->length) return {};
  return *number * unit->length;
}

std::optional<bool> SwitchOf(std::string_view text) {
  const std::string lower = platform::AsciiLower(text);
  if (lower == "yes" || lower == "1" || lower == "true") return true;
  if (lower == "no" || lower == "0" || lower == "false") return false;
  return {};
}

std::optional<PauseAfter> PauseOf(std::string_view text) {
  const auto sides = Sides(text, ':');
  if (!sides) return {};
  const auto messages = platform::WholeNumberBetween(sides->first, 1, kMostMessages);
  const auto seconds = platform::WholeNumberBetween(sides->second, 1, kLongestRule.count());
  if (!messages || !seconds) return {};
  return PauseAfter{*messages, std::chrono::seconds(*seconds)};
}

// "24" may end the day, and not begin it.
std::optional<HoursOfDay> HoursOf(std::string_view text) {
  const auto sides = Sides(text, '-');
  if (!sides) return {};
  const auto from = TimeOfDay(sides->first);
  const auto until = sides->second == "24" || sides->second == "24:00" ? std::optional(std::chrono::minutes(24h))
                                                                       : TimeOfDay(sides->second);
  if (!from || !until || *from == *until || *until - *from == 24h) return {};
  return HoursOfDay{*from, *until};
}

template <typename Rule>
Result<std::optional<Rule>> OrNone(std::string_view text, const std::optional<Rule>& rule, SentencePattern<1> what,
                                   const char* remedy) {
  const auto written = platform::Trim(text);
  if (written.empty() || platform::EqualsIgnoringAsciiCase(written, "none") || rule) return rule;
  return NoSuch(what, text, remedy);
}

}  // namespace

Result<std::optional<MessageLimit>> ReadRate(std::string_view text) {
  return OrNone(text, RateOf(text), "\"{}\" is no rate.",
                "Write a number of messages from 1 to 1,000,000, \"/\", and s, min, h or day, for example 30/min.");
}

Result<std::optional<std::int64_t>> ReadCount(std::string_view text) {
  return OrNone(text, platform::WholeNumberBetween(platform::Trim(text), 1, kMostMessages),
                "\"{}\" is no number of messages.", "Write a whole number from 1 to 1,000,000.");
}

Result<std::optional<std::int64_t>> ReadConnections(std::string_view text) {
  static_assert(kMostConnections == 50, "the remedy says so");
  return OrNone(text, platform::WholeNumberBetween(platform::Trim(text), 1, kMostConnections),
                "\"{}\" is no number of connections.", "Write a whole number from 1 to 50.");
}

Result<std::optional<std::int64_t>> ReadRetries(std::string_view text) {
  return OrNone(text, platform::WholeNumberBetween(platform::Trim(text), 0, kMostRetries),
                "\"{}\" is no number of retries.", "Write a whole number from 0 to 100.");
}

Result<std::optional<std::chrono::seconds>> ReadDuration(std::string_view text) {
  return OrNone(text, DurationOf(platform::Trim(text)), "\"{}\" is no time to wait.",
                "Write a number and s, min or h, up to a day, for example 90s, 5min or 1h.");
}

Result<std::optional<bool>> ReadSwitch(std::string_view text) {
  return OrNone(text, SwitchOf(platform::Trim(text)), "\"{}\" is neither yes nor no.", "Write yes or no.");
}

Result<std::optional<MessageLimit>> ReadQuota(std::string_view text, std::chrono::seconds within) {
  const auto messages = ReadCount(text);
  if (!messages) return messages.error();
  return *messages ? std::optional(MessageLimit{**messages, within}) : std::nullopt;
}

Result<std::optional<HoursOfDay>> ReadHours(std::string_view text) {
  return OrNone(text, HoursOf(text), "\"{}\" are no hours of the day.",
                "Write when they begin and when they end, from 0 to 24, for example 9-17, 8:30-17:30 or 22-6. The "
                "whole day is none.");
}

Result<std::optional<PauseAfter>> ReadPause(std::string_view text) {
  return OrNone(text, PauseOf(text), "\"{}\" is no pause.",
                "Write after how many messages, \":\", and how many seconds up to 86,400, for example 100:60.");
}

Result<std::optional<Moment>> ReadMoment(std::string_view text, const platform::Clock& clock) {
  return OrNone(text, MomentOf(platform::Trim(text), clock), "There is no time \"{}\".",
                "Write HH:MM for the next time that it is so late, or YYYY-MM-DD HH:MM.");
}

std::string MomentAsWritten(Moment moment, const platform::Clock& clock) {
  return MomentText(std::chrono::floor<std::chrono::seconds>(moment), clock).substr(0, kUpToTheMinute.size());
}

std::chrono::seconds RetryRules::DelayAfter(int tries) const {
  const std::chrono::seconds longest = std::max(kLongestDelay, after);
  std::chrono::seconds delay = after;
  for (int n = 1; n < tries && delay < longest; ++n) delay = std::min(2 * delay, longest);
  return delay;
}

PaceTexts Or(PaceTexts texts, const PaceTexts& others) {
  for (const auto field : kTexts) {
    if (platform::Trim(texts.*field).empty()) texts.*field = others.*field;
  }
  return texts;
}

Result<RunPace> ReadPace(const PaceTexts& texts, const platform::Clock& clock) {
  RunPace pace;
  std::optional<Error> complaint;
  const auto take = [&complaint](auto& rule, auto read) {
    if (!read && !complaint) complaint = read.error();
    if (read) rule = *read;
  };
  std::optional<std::int64_t> per_connection;
  std::optional<std::int64_t> connections;
  take(pace.rules.rate, ReadRate(texts.rate));
  take(pace.rules.per_hour, ReadQuota(texts.quota_hour, 1h));
  take(pace.rules.per_day, ReadQuota(texts.quota_day, 24h));
  take(pace.rules.per_domain, ReadRate(texts.domain_rate));
  take(pace.rules.hours, ReadHours(texts.hours));
  take(pace.rules.pause, ReadPause(texts.pause_after));
  take(per_connection, ReadCount(texts.per_connection));
  take(connections, ReadConnections(texts.connections));
  take(pace.rules.begin, ReadMoment(texts.at, clock));
  std::optional<std::int64_t> retries;
  std::optional<std::chrono::seconds> retry_after;
  take(retries, ReadRetries(texts.retries));
  take(retry_after, ReadDuration(texts.retry_after));
  std::optional<bool> slow_down;
  take(slow_down, ReadSwitch(texts.slow_down));
  std::optional<std::chrono::seconds> network_wait;
  take(network_wait, ReadDuration(texts.network_wait));
  if (complaint) return *complaint;
  pace.per_connection = per_connection.value_or(0);
  pace.connections = connections.value_or(1);
  pace.retries.times = static_cast<int>(retries.value_or(0));
  pace.retries.after = retry_after.value_or(pace.retries.after);
  pace.slow_down = slow_down.value_or(false);
  pace.network_wait = network_wait.value_or(pace.network_wait);
  return pace;
}

}  // namespace quillcast::run
