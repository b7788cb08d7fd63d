// How fast messages may go out, as a person asks for it.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/result.h"

namespace quillcast::run {

// Of the time of day, which a person means, and which is kept over the end of the computer's session.
using Moment = std::chrono::system_clock::time_point;
// What has gone out is counted by this one, which stays right when somebody sets the time of day.
using platform::Uptime;

// At most so many messages in any stretch of time of this length, wherever it begins.
struct MessageLimit {
  std::int64_t messages = 0;
  std::chrono::seconds within{0};

  bool operator==(const MessageLimit&) const = default;
};

// From one time of the day until right before the other, over midnight where it ends before it begins.
struct HoursOfDay {
  std::chrono::minutes from{0};
  std::chrono::minutes until{0};

  bool operator==(const HoursOfDay&) const = default;
};

// Among so many messages and one more that follow each other there is such a pause.
struct PauseAfter {
  std::int64_t messages = 0;
  std::chrono::seconds pause{0};

  bool operator==(const PauseAfter&) const = default;
};

// Each holds beside the others; none means: as fast as the server takes them.
struct PaceRules {
  std::optional<MessageLimit> rate = {};
  std::optional<MessageLimit> per_hour = {};
  std::optional<MessageLimit> per_day = {};
  std::optional<MessageLimit> per_domain = {};  // of the recipients, for each by itself
  std::optional<HoursOfDay> hours = {};         // local time
  std::optional<PauseAfter> pause = {};
  std::optional<Moment> begin = {};  // nothing before it

  bool empty() const { return !rate && !per_hour && !per_day && !per_domain && !hours && !pause && !begin; }
  bool operator==(const PaceRules&) const = default;
};

// Who was deferred is tried again so many times, the first time after so long, and each time after twice as long as the
// time before, up to an hour, or up to the first where that is longer.
struct RetryRules {
  int times = 0;
  std::chrono::seconds after = std::chrono::minutes(5);

  // Behind so many tries.
  std::chrono::seconds DelayAfter(int tries) const;
  bool operator==(const RetryRules&) const = default;
};

// No rule looks further back.
inline constexpr std::chrono::seconds kLongestRule = std::chrono::days(1);

// The rules out of what a person wrote; nothing for an empty text and for "none". Errors: kUsage, with the text and
// what to write.
Result<std::optional<MessageLimit>> ReadRate(std::string_view text);                                // "30/min"
Result<std::optional<MessageLimit>> ReadQuota(std::string_view text, std::chrono::seconds within);  // "500"
Result<std::optional<HoursOfDay>> ReadHours(std::string_view text);                                 // "9-17", "22:30-6"
Result<std::optional<PauseAfter>> ReadPause(std::string_view text);                                 // "100:60"
Result<std::optional<std::int64_t>> ReadCount(std::string_view text);                               // of messages
Result<std::optional<std::int64_t>> ReadConnections(std::string_view text);                         // 1 to the most
Result<std::optional<std::int64_t>> ReadRetries(std::string_view text);                             // "3", and "0"
Result<std::optional<std::chrono::seconds>> ReadDuration(std::string_view text);                    // "90s", "5 min"
Result<std::optional<bool>> ReadSwitch(std::string_view text);                                      // "yes", "0"
// A time of the day, which is the next such, or "YYYY-MM-DD HH:MM", which may be over. Local time.
Result<std::optional<Moment>> ReadMoment(std::string_view text, const platform::Clock& clock);
// Such a text of that minute, the day in it.
std::string MomentAsWritten(Moment moment, const platform::Clock& clock);

// As a person writes them, in settings and options. Each may be "none", too, which is what an empty one is to ReadPace.
struct PaceTexts {
  std::string rate = {};
  std::string quota_hour = {};
  std::string quota_day = {};
  std::string domain_rate = {};
  std::string hours = {};
  std::string pause_after = {};
  std::string per_connection = {};
  std::string connections = {};
  std::string at = {};
  std::string retries = {};
  std::string retry_after = {};
  std::string slow_down = {};
  std::string network_wait = {};

  bool operator==(const PaceTexts&) const = default;
};

// These, and in place of the empty ones the others.
PaceTexts Or(PaceTexts texts, const PaceTexts& others);

// Servers take no more of one client, most of them fewer.
inline constexpr std::int64_t kMostConnections = 50;

struct RunPace {
  PaceRules rules;
  std::int64_t per_connection = 0;  // messages at most; 0 for any number
  std::int64_t connections = 1;     // at a time, at most
  RetryRules retries = {};
  bool slow_down = false;
  std::chrono::seconds network_wait{0};  // for a network that is lost under way
};

// All of them; the first complaint where there is one.
Result<RunPace> ReadPace(const PaceTexts& texts, const platform::Clock& clock);

}  // namespace quillcast::run
