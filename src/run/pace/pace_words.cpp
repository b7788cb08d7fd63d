#include "run/pace/pace_words.h"

#include <fmt/format.h>

namespace quillcast::run {
namespace {

using namespace std::chrono_literals;

Sentence StretchOf(std::chrono::seconds length) {
  if (length == std::chrono::seconds(1)) return "a second";
  if (length == std::chrono::minutes(1)) return "a minute";
  return length == std::chrono::hours(1) ? "an hour" : "a day";
}

Sentence LimitReached(const std::optional<MessageLimit>& limit) {
  return SayOf(limit->messages, "{} message has gone out within {}, which is the limit.",
               "{} messages have gone out within {}, which is the limit.", StretchOf(limit->within));
}

std::string TimeOf(std::chrono::minutes of_day) {
  return fmt::format("{}:{:02}", of_day.count() / 60, of_day.count() % 60);
}

// In the largest unit that it is a whole number of, which is how people write it.
Sentence WaitForNetworkOf(std::chrono::seconds wait) {
  if (wait % 1h == 0s) {
    return SayOf(wait / 1h, "a wait of {} hour for a lost network", "a wait of {} hours for a lost network");
  }
  if (wait % 1min == 0s) {
    return SayOf(wait / 1min, "a wait of {} minute for a lost network", "a wait of {} minutes for a lost network");
  }
  return SayOf(wait.count(), "a wait of {} second for a lost network", "a wait of {} seconds for a lost network");
}

}  // namespace

Sentence WhyOf(const Wait& wait, const PaceRules& rules) {
  switch (*wait.why) {
    case PaceRule::kBegin:
      return "It is to begin then.";
    case PaceRule::kRate:
      return LimitReached(rules.rate);
    case PaceRule::kHour:
      return LimitReached(rules.per_hour);
    case PaceRule::kDay:
      return LimitReached(rules.per_day);
    case PaceRule::kDomain:
      return Say("The domains of those who are next have had their {} within {}.",
                 NumberValue(rules.per_domain->messages), StretchOf(rules.per_domain->within));
    case PaceRule::kPause:
      return SayOf(rules.pause->messages, "A pause after {} message.", "A pause after {} messages.");
    case PaceRule::kHours:
      return Say("Messages go out from {} to {}.", TimeOf(rules.hours->from), TimeOf(rules.hours->until));
  }
  return {};
}

std::vector<Sentence> WordsOf(const RunPace& pace) {
  const PaceRules& rules = pace.rules;
  std::vector<Sentence> words;
  for (const auto& limit : {rules.rate, rules.per_hour, rules.per_day}) {
    if (limit) words.push_back(Say("{} {}", NumberValue(limit->messages), StretchOf(limit->within)));
  }
  if (rules.per_domain) {
    words.push_back(
        Say("{} {} to each domain", NumberValue(rules.per_domain->messages), StretchOf(rules.per_domain->within)));
  }
  if (rules.hours) words.push_back(Say("from {} to {}", TimeOf(rules.hours->from), TimeOf(rules.hours->until)));
  if (rules.pause) {
    words.push_back(SayOf(rules.pause->messages, "a pause after {} message", "a pause after {} messages"));
  }
  if (pace.connections > 1) words.push_back(Say("{} connections", pace.connections));
  if (pace.per_connection > 0) {
    words.push_back(SayOf(pace.per_connection, "{} message over each connection", "{} messages over each connection"));
  }
  if (pace.retries.times > 0) words.push_back(SayOf(pace.retries.times, "{} retry", "{} retries"));
  if (pace.network_wait > 0s) words.push_back(WaitForNetworkOf(pace.network_wait));
  if (pace.slow_down) words.emplace_back("slower where the server asks for it");
  return words;
}

std::optional<Sentence> BeginsAtOnce(const PaceRules& rules, const platform::Clock& clock) {
  if (!rules.begin || *rules.begin > clock.Now()) return {};
  return "That time is over; it begins now.";
}

Sentence WaitForRetries(std::int64_t recipients) {
  return SayOf(recipients, "{} recipient was deferred and is tried again then.",
               "{} recipients were deferred and are tried again from then on.");
}

Sentence WaitForNetwork(const std::string& reason) {
  return Say("The way to the server is lost, and is tried again then. {}", reason);
}

Error NetworkStaysAway(const std::string& reason) {
  return {
      Failure::kUnavailable,
      Say("The way to the server was lost, and did not come back in the time that the run waits for it. {}", reason),
      "Go on with those who were not tried once the network is there again."};
}

std::string TimeText(Moment moment, const platform::Clock& clock) {
  const std::tm then = clock.Local(std::chrono::ceil<std::chrono::seconds>(moment));
  const std::tm now = clock.Local(clock.Now());
  std::string time = fmt::format("{:02}:{:02}:{:02}", then.tm_hour, then.tm_min, then.tm_sec);
  if (then.tm_yday == now.tm_yday && then.tm_year == now.tm_year) return time;
  return fmt::format("{}-{:02}-{:02} {}", then.tm_year + 1900, then.tm_mon + 1, then.tm_mday, time);
}

}  // namespace quillcast::run
